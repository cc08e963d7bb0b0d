// SPDX-License-Identifier: MIT
#pragma once

#include "requestparser_p.h"

#include <QByteArray>

#include <deque>
#include <map>
#include <mutex>

namespace SondixQt {

/// The requests of all connections and the responses to them, in order within each connection. It uses no
/// sockets and no clock: the caller passes in the bytes, the times (in milliseconds) and the answers.
///
/// Before expire(), pass everything that has arrived to feed(): otherwise a client whose input has not been read
/// is taken for a quiet one. All functions may be called from any thread.
class RequestQueue
{
public:
    /// Identifies a connection. Never dereferenced.
    using Client = void *;

    struct Request
    {
        quint64 number = 0;
        Client client = nullptr; ///< null: it has disconnected
        ParsedRequest::Kind kind = ParsedRequest::Get;
        QByteArray method;
        QByteArray path;
        QByteArray entityTag;
        QByteArray text; ///< of a command
    };

    /// What to do with the connection after a response.
    enum class ConnectionAction {
        KeepAlive,
        Close,           ///< when everything has been sent
        CloseDiscarding, ///< the same, after a refusal: the client may still be sending
        Abort,           ///< at once
    };

    struct Response
    {
        quint64 number = 0; ///< of the request that it answers; 0 if no request was taken for it
        Client client = nullptr;
        QByteArray bytes;
        ConnectionAction action = ConnectionAction::KeepAlive;
    };

    /// \a timeout is the time in seconds that an incomplete request may wait for its next bytes.
    explicit RequestQueue(int timeout);

    /// Forgets everything.
    void reset();

    /// Adds a connection. If it is not \a accepted, it is refused with 503.
    void addClient(Client client, qint64 now, bool accepted = true);
    /// Removes the connection of a client that has disconnected, with its GETs and responses. Its complete
    /// commands are still served.
    void removeClient(Client client);

    /// Number of connections that may still send requests.
    int openConnections() const;

    /// Parses \a bytes of \a client.
    void feed(Client client, const QByteArray &bytes, qint64 now);
    /// \a client has shut down its write side. Its connection is closed when all its requests are answered.
    void endInput(Client client, qint64 now);
    /// Whether to read from \a client: false while the maximum number of its requests is waiting.
    bool wantsBytes(Client client) const;
    /// Sets whether \a client reads its responses. While it does not, its requests are not served.
    void setReading(Client client, bool reading, qint64 now);
    /// Handles pauses, timeouts and idle connections.
    void expire(qint64 now);
    /// The time at which to call expire() next; -1 if no deadline is pending.
    qint64 nextDeadline() const;

    /// Whether takeRequest() would succeed.
    bool hasRequest() const;
    /// Takes the next request to serve; false if there is none. The connections are served in turn. The next
    /// request of a connection is not available before this one is answered.
    bool takeRequest(Request &request);

    /// \name Answers to a request that was taken
    /// They are dropped if the client has disconnected.
    /// \{
    void answer(const Request &request, const QByteArray &header, const QByteArray &body, qint64 now);
    void answerCommand(const Request &request, const QByteArray &answer, qint64 now);
    void answerOtherMethod(const Request &request, qint64 now);
    /// \a errorText is Latin-1. If \a closes is set, the connection is closed afterwards.
    void fail(const Request &request, const QByteArray &errorText, bool closes, qint64 now);
    /// \}

    bool takeResponse(Response &response);

    /// How many times since the last call input was dropped or a method was not supported.
    int takeDropped();

private:
    struct Connection
    {
        RequestParser parser;
        std::deque<ParsedRequest> waiting;
        quint64 serving = 0; ///< number of the request that was taken; 0: none
        bool servingCloses = false;
        bool reading = true;
        bool inputEnded = false;
        bool over = false; ///< the response that ends the connection is queued
        qint64 lastActivity = 0;
    };
    using Connections = std::map<Client, Connection>;

    void parse(Client client, Connection &connection);
    void answerDirectly(Client client, Connection &connection);
    void end(Connection &connection, const Response &response);
    bool takeLeft(Request &request);
    void respond(const Request &request, const QByteArray &bytes, bool closes, qint64 now);
    static bool isServable(const Connection &connection);
    static bool isFull(const Connection &connection);
    qint64 deadlineOf(const Connection &connection) const;
    void expire(Client client, Connection &connection);

    const qint64 timeoutMs;
    mutable std::mutex mutex;
    Connections connections;
    Client lastServed = nullptr;
    quint64 lastNumber = 0;
    std::deque<ParsedRequest> left; ///< commands of clients that have disconnected
    std::deque<Response> responses;
    int dropped = 0;
};

} // namespace SondixQt
