// SPDX-License-Identifier: MIT
#include "httpserver_p.h"

#include "httpstatus_p.h"
#include "loopbackserver_p.h"
#include "peersocket_p.h"
#include "tunnellimits_p.h"
#include "tunnellog_p.h"

#include <QHostAddress>

#include <algorithm>
#include <utility>

namespace SondixQt {

using Lock = std::lock_guard<std::mutex>;

namespace {

/// Includes sockets that are being refused with 503; beyond this they are closed without an answer.
constexpr int maxSockets = TunnelLimits::connections + 256;

constexpr int acceptPauseMs = 100;

int statusOf(const HttpReply &reply)
{
    if (reply.kind == HttpReply::Failure)
        return HttpStatus::badGateway;
    if (reply.kind == HttpReply::CommandAnswer || reply.header.isEmpty())
        return HttpStatus::ok;
    return reply.header.mid(reply.header.indexOf(' ') + 1, 3).toInt();
}

} // namespace

HttpServer::HttpServer(Handler &requestHandler, QObject *parent)
    : QObject(parent)
    , handler(requestHandler)
    , nextRequest(this)
    , nextAccept(this)
    , nextDeadline(this)
    , requestAfterSockets(this)
    , deadlineAfterSockets(this)
{
    for (QTimer *timer : timers()) {
        timer->setSingleShot(true);
        timer->setInterval(0);
    }
    const auto restart = QOverload<>::of(&QTimer::start);
    connect(&nextRequest, &QTimer::timeout, &requestAfterSockets, restart);
    connect(&requestAfterSockets, &QTimer::timeout, this, &HttpServer::serveNext);
    connect(&nextAccept, &QTimer::timeout, this, &HttpServer::onNewConnection);
    connect(&nextDeadline, &QTimer::timeout, &deadlineAfterSockets, restart);
    connect(&deadlineAfterSockets, &QTimer::timeout, this, &HttpServer::expireQuietClients);
    uptime.start();
}

HttpServer::~HttpServer()
{
    close();
}

std::array<QTimer *, 5> HttpServer::timers()
{
    return {&nextRequest, &nextAccept, &nextDeadline, &requestAfterSockets, &deadlineAfterSockets};
}

bool HttpServer::listen()
{
    if (!server)
        server = new LoopbackServer(this);
    if (!requests)
        requests = std::make_unique<RequestQueue>(TunnelLimits::incompleteRequestSeconds);
    server->stop();
    requests->reset();
    dropClients();
    connect(server, &QTcpServer::newConnection, this, &HttpServer::onNewConnection, Qt::UniqueConnection);
    connect(server, &QTcpServer::acceptError, this, &HttpServer::onAcceptError, Qt::UniqueConnection);
    return server->listen(QHostAddress::LocalHost, 0);
}

QUrl HttpServer::url() const
{
    if (!server || !server->isListening())
        return QUrl();
    return QUrl(QStringLiteral("http://%1:%2").arg(server->serverAddress().toString()).arg(server->serverPort()));
}

void HttpServer::close()
{
    for (QTimer *timer : timers())
        timer->stop();
    dropClients();
    const Lock lock(clientsMutex);
    delete std::exchange(server, nullptr);
    requests.reset();
}

void HttpServer::dropClients()
{
    const Lock lock(clientsMutex);
    for (auto it = clients.keyBegin(); it != clients.keyEnd(); ++it) {
        (*it)->disconnect();
        requestLog.left(*it, now());
        delete *it;
    }
    clients.clear();
    finishing.clear();
    lingering.clear();
}

void HttpServer::onNewConnection()
{
    if (nextAccept.isActive() || !server || !server->hasPendingConnections())
        return;
    nextAccept.start();
    ClientSocket *const socket = server->takeConnection();
    if (!socket)
        return;

    const bool accepted = requests->openConnections() < TunnelLimits::connections;
    if (socketCount() >= maxSockets) {
        delete socket;
        return;
    }
    if (accepted)
        handler.connectionAccepted();
    {
        const Lock lock(clientsMutex);
        clients.insert(socket, true);
    }
    requestLog.connected(socket);
    requests->addClient(socket, now(), accepted);
    connect(socket, &QAbstractSocket::readyRead, this, [this, socket] { onSocketDataAvailable(*socket); });
    connect(socket, &QAbstractSocket::disconnected, this, [this, socket] {
        onSocketDisconnected(*socket);
        update();
    });
    connect(socket, &QAbstractSocket::bytesWritten, this, [this, socket] { onBytesWritten(*socket); });
    connect(&socket->peerCheck, &QTimer::timeout, this, [this, socket] {
        receiveFromLeavingClient(*socket);
        update();
    });
    if (socket->state() != QAbstractSocket::ConnectedState)
        onSocketDisconnected(*socket);
    else
        onSocketDataAvailable(*socket);
}

/// Qt stops accepting connections after an error such as too many open files, which may be temporary.
void HttpServer::onAcceptError()
{
    handler.log("onAcceptError", QStringLiteral("cannot accept a connection: %1").arg(server->errorString()));
    QTimer::singleShot(acceptPauseMs, server, &QTcpServer::resumeAccepting);
}

int HttpServer::socketCount()
{
    const Lock lock(clientsMutex);
    return clients.size();
}

bool HttpServer::isActive(ClientSocket *socket)
{
    const Lock lock(clientsMutex);
    return clients.value(socket, false);
}

void HttpServer::onSocketDataAvailable(ClientSocket &socket)
{
    handleRequestFromSocket(socket);
    serveNext();
}

void HttpServer::onSocketDisconnected(ClientSocket &socket)
{
    if (!isActive(&socket))
        return;
    finishing.remove(&socket);
    lingering.remove(&socket);
    requestLog.left(&socket, now());
    requests->removeClient(&socket);
    const Lock lock(clientsMutex);
    clients[&socket] = false;
    QTimer::singleShot(0, this, &HttpServer::removeInactiveClients);
}

void HttpServer::removeInactiveClients()
{
    const Lock lock(clientsMutex);
    for (auto it = clients.begin(); it != clients.end();) {
        if (it.value()) {
            ++it;
        } else {
            it.key()->disconnect();
            it.key()->deleteLater();
            it = clients.erase(it);
        }
    }
}

void HttpServer::onBytesWritten(ClientSocket &socket)
{
    watchSending(socket);
    update();
}

/// Reads what there is, up to a limit that leaves time for other connections. The system may report the end of the
/// input together with the last bytes.
void HttpServer::handleRequestFromSocket(ClientSocket &socket)
{
    constexpr int maxChunks = 16;
    for (int i = 0; i < maxChunks && requests->wantsBytes(&socket) && receive(socket); ++i) {
    }
}

/// Reads one chunk, or handles the end of the input. False if there is nothing more to read for now.
bool HttpServer::receive(ClientSocket &socket)
{
    switch (pendingInput(socket)) {
    case SocketInput::Data: {
        const QByteArray bytes = socket.read(TunnelLimits::readChunk);
        requests->feed(&socket, bytes, now());
        if (socket.state() == QAbstractSocket::ConnectedState)
            return !bytes.isEmpty();
        onSocketDisconnected(socket);
        return false;
    }
    case SocketInput::Nothing:
        socket.expectInput();
        return false;
    case SocketInput::Ended:
        if (lingering.contains(&socket)) {
            socket.abort();
        } else {
            requests->endInput(&socket, now());
            socket.ignoreInput();
            socket.peerCheck.start();
        }
        return false;
    case SocketInput::Failed:
        onSocketDisconnected(socket);
        return false;
    }
    return false;
}

/// If the peer has ended sending or the connection, reads all that is left or detects the reset. Windows may not report
/// a reset of a connection with unsent output, so it is also called from time to time.
void HttpServer::receiveFromLeavingClient(ClientSocket &socket)
{
    const bool mayHaveLeft = hasPeerEndedSending(socket);
    while (mayHaveLeft && isActive(&socket) && receive(socket)) {
    }
    if (isActive(&socket) && socket.bytesToWrite() > 0)
        socket.peerCheck.start();
}

/// Serves one request, then returns to the event loop: with a slow sensor, the application's calls and the
/// end of the tunnel must not wait for more than one answer.
void HttpServer::serveNext()
{
    RequestQueue::Request request;
    if (!isServingScheduled() && requests->takeRequest(request)) {
        nextRequest.start();
        auto *const socket = static_cast<ClientSocket *>(request.client);
        // Detects a reset, so that no further page is fetched for a client that has left.
        if (request.kind == ParsedRequest::Get && isActive(socket) && hasPeerEndedSending(*socket))
            receive(*socket);
        if (request.kind != ParsedRequest::Get || isActive(socket))
            serve(request);
        // There is room again: its input is not read while the maximum number of its requests is waiting.
        if (isActive(socket))
            handleRequestFromSocket(*socket);
    }
    update();
}

void HttpServer::serve(const RequestQueue::Request &request)
{
    RequestLog::Entry entry{request.number, request.method, request.path, HttpStatus::notImplemented, {}, now()};
    if (request.kind == ParsedRequest::OtherMethod || request.kind == ParsedRequest::HeadMethod) {
        requests->answerOtherMethod(request, now());
    } else {
        const HttpReply reply = handler.reply(request);
        entry.status = statusOf(reply);
        entry.problem = reply.errorText;
        if (reply.kind == HttpReply::Page)
            requests->answer(request, reply.header, reply.body, now());
        else if (reply.kind == HttpReply::CommandAnswer)
            requests->answerCommand(request, reply.body, now());
        else
            requests->fail(request, reply.errorText.toLatin1(), reply.closes, now());
    }
    requestLog.answered(request.client, entry, now());
}

void HttpServer::expireQuietClients()
{
    requests->expire(now());
    update();
}

bool HttpServer::isServingScheduled() const
{
    return nextRequest.isActive() || requestAfterSockets.isActive();
}

/// Must be called after every operation that may have queued requests or responses or changed deadlines.
void HttpServer::update()
{
    writeResponses();
    if (requests->takeDropped() > 0)
        handler.log("handleRequestFromSocket", QStringLiteral("Unknown HTTP request"));
    if (requests->hasRequest() && !isServingScheduled())
        nextRequest.start();
    const qint64 deadline = requests->nextDeadline();
    if (deadline < 0)
        nextDeadline.stop();
    else
        nextDeadline.start(int(std::max<qint64>(0, deadline - now())));
}

qint64 HttpServer::now() const
{
    return uptime.elapsed();
}

bool HttpServer::getHTTPResponse(RequestQueue::Response &response, ClientSocket *&socket)
{
    if (!requests->takeResponse(response))
        return false;
    socket = static_cast<ClientSocket *>(response.client);
    return true;
}

void HttpServer::writeResponses()
{
    RequestQueue::Response response;
    ClientSocket *socket = nullptr;
    while (getHTTPResponse(response, socket)) {
        if (isActive(socket))
            write(*socket, response);
    }
}

void HttpServer::write(ClientSocket &socket, const RequestQueue::Response &response)
{
    using ConnectionAction = RequestQueue::ConnectionAction;
    if (response.action == ConnectionAction::Abort) {
        socket.abort();
        return;
    }
    const QByteArray &bytes = response.bytes;
    if (response.action == ConnectionAction::CloseDiscarding)
        qCInfo(tunnelRequestLog).noquote()
            << "refused:" << bytes.mid(bytes.indexOf(' ') + 1, bytes.indexOf('\r') - bytes.indexOf(' ') - 1);
    requestLog.writes(&socket, response.number, bytes);
    // If the client has closed its socket, it answers the response with a reset, which discards unread input.
    receiveFromLeavingClient(socket);
    if (!isActive(&socket))
        return;
    if (!bytes.isEmpty() && socket.write(bytes) < 0) {
        onSocketDisconnected(socket);
        return;
    }
    if (response.action != ConnectionAction::KeepAlive)
        finishing.insert(&socket);
    watchSending(socket);
}

void HttpServer::watchSending(ClientSocket &socket)
{
    const bool ends = finishing.contains(&socket);
    const qint64 unsent = socket.bytesToWrite();
    requestLog.wrote(&socket, unsent, now());
    if (unsent > 0)
        socket.peerCheck.start();
    requests->setReading(&socket, unsent <= (ends ? 0 : TunnelLimits::unsentAnswers), now());
    if (ends && unsent == 0)
        finish(socket);
}

/// Ends the connection of a client whose last response has been sent. Shuts down the write side at once, but reads
/// input for a while: closing a socket that has unread input would discard the response.
void HttpServer::finish(ClientSocket &socket)
{
    finishing.remove(&socket);
    lingering.insert(&socket);
    endSending(socket);
    receive(socket);
    QTimer::singleShot(TunnelLimits::lingerMs, &socket, &QAbstractSocket::abort);
}

} // namespace SondixQt
