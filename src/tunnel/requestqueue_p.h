// SPDX-License-Identifier: MIT
#pragma once

#include "requestcutter_p.h"

#include <QByteArray>

#include <deque>
#include <map>
#include <mutex>

namespace SondixQt {

/// The requests of all connections and the answers to them, each connection's in the order in which it asked. It has
/// no sockets and no clock: bytes, times and answers are given to it.
///
/// Times are milliseconds. Whoever was kept from listening to the clients feeds what has come meanwhile before they
/// expire(). Every operation is guarded, so that any thread may call it.
class RequestQueue
{
public:
    /// Names a connection; what it points to is the caller's affair.
    using Client = void *;

    struct Request
    {
        quint64 number = 0;
        Client client = nullptr; ///< null: it has left
        RequestCutter::Kind kind = RequestCutter::Get;
        QByteArray method;
        QByteArray path;
        QByteArray entityTag;
        QByteArray text; ///< of a command
    };

    enum class Afterwards {
        Goes,    ///< the connection stays
        Ends,    ///< the connection ends when all bytes are sent
        Refuses, ///< it ends too, and what the client is still sending is to be discarded
        Aborts,  ///< the connection ends at once
    };

    struct Response
    {
        quint64 number = 0; ///< of the request that it answers, 0: of none that was taken
        Client client = nullptr;
        QByteArray bytes;
        Afterwards afterwards = Afterwards::Goes;
    };

    /// \a patience: seconds that a request that has begun may wait for its next bytes.
    explicit RequestQueue(int patience);

    /// Forgets everything.
    void reset();

    /// A new connection. Unless \a welcome it is refused at once.
    void addClient(Client client, qint64 now, bool welcome = true);
    /// The client has left: forgets the connection, its pages and what was to be sent to it. Commands that were
    /// complete are given out all the same.
    void removeClient(Client client);

    /// How many connections may still ask for something.
    int openConnections() const;

    /// \a bytes came from \a client.
    void feed(Client client, const QByteArray &bytes, qint64 now);
    /// \a client sends nothing more, but reads on. Its connection ends when all that it asked for is answered.
    void endInput(Client client, qint64 now);
    /// Whether bytes of \a client may be fed: not while enough of its requests wait.
    bool wantsBytes(Client client) const;
    /// Says whether \a client fetches its answers: while it does not, its requests wait.
    void setFetching(Client client, bool fetching, qint64 now);
    /// Deals with the clients that have been quiet for too long.
    void expire(qint64 now);
    /// When expire() has something to do next, -1: never.
    qint64 nextDeadline() const;

    /// Whether takeRequest() would give out a request.
    bool hasRequest() const;
    /// The next request to serve, the clients by turns. A client's next one is given out when it is answered.
    bool takeRequest(Request &request);

    /// \name Answers to a request that was taken
    /// They are dropped when its connection is gone.
    /// \{
    void answer(const Request &request, const QByteArray &header, const QByteArray &body, qint64 now);
    void answerCommand(const Request &request, const QByteArray &answer, qint64 now);
    void answerOtherMethod(const Request &request, qint64 now);
    /// \a errorText in Latin-1. The connection ends when it \a closes.
    void fail(const Request &request, const QByteArray &errorText, bool closes, qint64 now);
    /// \}

    bool takeResponse(Response &response);

    /// How many times bytes that fit no request were dropped since the last call.
    int takeDropped();

private:
    struct Connection
    {
        RequestCutter cutter;
        std::deque<RequestCutter::Piece> waiting;
        quint64 serving = 0; ///< the number of the request that was given out, 0: none
        bool servingCloses = false;
        bool fetching = true;
        bool inputEnded = false;
        bool over = false; ///< the response that ends the connection is under way
        qint64 lastActivity = 0;
    };
    using Connections = std::map<Client, Connection>;

    void cut(Client client, Connection &connection);
    void answerDirectly(Client client, Connection &connection);
    void end(Connection &connection, const Response &response);
    bool takeLeft(Request &request);
    void respond(const Request &request, const QByteArray &bytes, bool closes, qint64 now);
    static bool isServable(const Connection &connection);
    static bool isFull(const Connection &connection);
    qint64 deadlineOf(const Connection &connection) const;
    void expire(Client client, Connection &connection);

    const qint64 patienceMs;
    mutable std::mutex mutex;
    Connections connections;
    Client lastServed = nullptr;
    quint64 lastNumber = 0;
    std::deque<RequestCutter::Piece> left; ///< commands of clients that have left
    std::deque<Response> responses;
    int dropped = 0;
};

} // namespace SondixQt
