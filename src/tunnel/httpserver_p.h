// SPDX-License-Identifier: MIT
#pragma once

#include "requestlog_p.h"
#include "requestqueue_p.h"

#include <QElapsedTimer>
#include <QMap>
#include <QObject>
#include <QSet>
#include <QTimer>
#include <QUrl>

#include <array>
#include <memory>
#include <mutex>

namespace SondixQt {

class ClientSocket;
class LoopbackServer;

/// The answer to a request.
struct HttpReply
{
    enum Kind { Page, CommandAnswer, Failure };

    Kind kind = Page;
    QByteArray header; ///< of a page; if empty, a header is composed
    QByteArray body;   ///< of a page, or the answer of the sensor to a command
    QString errorText; ///< of a failure
    bool closes = false;
};

/// The sockets and timers of the tunnel: accepts connections on the loopback address, passes their input to
/// the request queue, lets the handler answer one request at a time, and writes the responses.
class HttpServer : public QObject
{
    Q_OBJECT
public:
    class Handler
    {
    public:
        /// Called for each new connection that is not refused.
        virtual void connectionAccepted() = 0;
        virtual HttpReply reply(const RequestQueue::Request &request) = 0;
        virtual void log(const char *function, const QString &text) = 0;

    protected:
        ~Handler() = default;
    };

    explicit HttpServer(Handler &handler, QObject *parent);
    ~HttpServer() override;

    /// Listens on a new port; existing connections are dropped. False if the server cannot listen.
    bool listen();
    /// Drops all connections and stops listening.
    void close();
    QUrl url() const;

private:
    // Connections.
    void onNewConnection();
    void onAcceptError();
    void onSocketDataAvailable(ClientSocket &socket);
    void onSocketDisconnected(ClientSocket &socket);
    void onBytesWritten(ClientSocket &socket);
    void dropClients();
    void removeInactiveClients();
    bool isActive(ClientSocket *socket);
    int socketCount();

    // Requests.
    void handleRequestFromSocket(ClientSocket &socket);
    bool receive(ClientSocket &socket);
    void receiveFromLeavingClient(ClientSocket &socket);
    void serveNext();
    void serve(const RequestQueue::Request &request);
    bool isServingScheduled() const;
    void expireQuietClients();

    // Responses.
    bool getHTTPResponse(RequestQueue::Response &response, ClientSocket *&socket);
    void writeResponses();
    void write(ClientSocket &socket, const RequestQueue::Response &response);
    void watchSending(ClientSocket &socket);
    void finish(ClientSocket &socket);

    void update();
    std::array<QTimer *, 5> timers();
    qint64 now() const;

    Handler &handler;
    LoopbackServer *server = nullptr;
    std::unique_ptr<RequestQueue> requests;
    QMap<ClientSocket *, bool> clients; ///< value: whether the client is still connected
    QSet<ClientSocket *> finishing;     ///< clients whose last response is being sent
    QSet<ClientSocket *> lingering;     ///< clients whose last response has been sent
    std::mutex clientsMutex;
    RequestLog requestLog;

    QTimer nextRequest;  ///< runs the event loop between two requests
    QTimer nextAccept;   ///< between two connections, because each may have to open the sensor
    QTimer nextDeadline; ///< for RequestQueue::expire()
    // A timer may fire before the sockets have reported input that arrived earlier. These timers let the event
    // loop run once in between.
    QTimer requestAfterSockets;
    QTimer deadlineAfterSockets;
    QElapsedTimer uptime;
};

} // namespace SondixQt
