// SPDX-License-Identifier: MIT
#pragma once

#include "requestparser_p.h"

#include <QByteArray>

#include <deque>
#include <map>
#include <mutex>

namespace SondixQt {

/// The requests of all connections and the responses to them, in order within each connection. It has no sockets and
/// no clock: it is given bytes, times (in milliseconds) and answers.
///
/// Before expire(), feed everything that has arrived: a client is not quiet because it was not read. All functions may
/// be called from any thread.
class RequestQueue
{
public:
    /// Identifies a connection. Never dereferenced.
    using Client = void *;

    struct Request
    {
        quint64 number = 0;
        Client client = nullptr; ///< null: it has left
        ParsedRequest::Kind kind = ParsedRequest::Get;
        QByteArray method;
        QByteArray path;
        QByteArray entityTag;
        QByteArray text; ///< of a command
    };

    /// What becomes of the connection after a response.
    enum class ConnectionAction {
        KeepAlive,
        Close,           ///< when everything is sent
        CloseDiscarding, ///< the same, after a refusal: the client may still be sending
        Abort,           ///< at once
    };

    struct Response
    {
        quint64 number = 0; ///< of the request that it answers; 0 if that was never taken
        Client client = nullptr;
        QByteArray bytes;
        ConnectionAction action = ConnectionAction::KeepAlive;
    };

    /// An incomplete request may wait \a timeout seconds for its next bytes.
    explicit RequestQueue(int timeout);

    /// Forgets everything.
    void reset();

    /// Adds a connection. If it is not \a accepted, it is refused with 503.
    void addClient(Client client, qint64 now, bool accepted = true);
    /// The client has left: forgets the connection, its GETs and its responses. Its complete commands stay.
    void removeClient(Client client);

    /// Number of connections that may still send requests.
    int openConnections() const;

    /// Parses \a bytes of \a client.
    void feed(Client client, const QByteArray &bytes, qint64 now);
    /// \a client has shut down its sending side. Its connection is closed when all its requests are answered.
    void endInput(Client client, qint64 now);
    /// Whether to read from \a client: false while the maximum of its requests waits.
    bool wantsBytes(Client client) const;
    /// While \a client is not \a reading its responses, its requests wait.
    void setReading(Client client, bool reading, qint64 now);
    /// Handles pauses, timeouts and idle connections.
    void expire(qint64 now);
    /// When to call expire() next, -1: never.
    qint64 nextDeadline() const;

    /// Whether takeRequest() would succeed.
    bool hasRequest() const;
    /// The next request to serve, the connections in turn. The next one of a connection follows when this one is
    /// answered.
    bool takeRequest(Request &request);

    /// \name Answers to a request that was taken
    /// Dropped if its client has left.
    /// \{
    void answer(const Request &request, const QByteArray &header, const QByteArray &body, qint64 now);
    void answerCommand(const Request &request, const QByteArray &answer, qint64 now);
    void answerOtherMethod(const Request &request, qint64 now);
    /// \a errorText is Latin-1. If it \a closes, the connection ends.
    void fail(const Request &request, const QByteArray &errorText, bool closes, qint64 now);
    /// \}

    bool takeResponse(Response &response);

    /// How many times bytes that are no request were dropped since the last call.
    int takeDropped();

private:
    struct Connection
    {
        RequestParser parser;
        std::deque<ParsedRequest> waiting;
        quint64 serving = 0; ///< number of the request that was taken, 0: none
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
    std::deque<ParsedRequest> left; ///< commands of clients that have left
    std::deque<Response> responses;
    int dropped = 0;
};

} // namespace SondixQt
