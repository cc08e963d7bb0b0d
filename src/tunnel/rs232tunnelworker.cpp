// SPDX-License-Identifier: MIT
#include "rs232tunnelworker_p.h"

#include "httpstatus_p.h"
#include "instance/sensorinstance.h"
#include "loopbackserver_p.h"
#include "peersocket_p.h"
#include "threadhandover_p.h"
#include "tunnellimits_p.h"
#include "tunnellog_p.h"

#include <QAbstractSocket>
#include <QHostAddress>

#include <algorithm>
#include <utility>

namespace SondixQt {

using Lock = std::lock_guard<std::mutex>;

namespace {

/// With those that are told that there are too many; beyond that there is not even an answer.
constexpr int maxSockets = TunnelLimits::connections + 256;

constexpr int acceptPauseMs = 100;

} // namespace

RS232TunnelWorker::RS232TunnelWorker(SensorInstance &instance)
    : sensor(&instance)
    , nextTurn(this)
    , nextAccept(this)
    , nextDeadline(this)
    , turnAfterSockets(this)
    , deadlineAfterSockets(this)
{
    for (QTimer *timer : timers()) {
        timer->setSingleShot(true);
        timer->setInterval(0);
    }
    const auto restart = QOverload<>::of(&QTimer::start);
    connect(&nextTurn, &QTimer::timeout, &turnAfterSockets, restart);
    connect(&turnAfterSockets, &QTimer::timeout, this, &RS232TunnelWorker::serveNext);
    connect(&nextAccept, &QTimer::timeout, this, &RS232TunnelWorker::onNewConnection);
    connect(&nextDeadline, &QTimer::timeout, &deadlineAfterSockets, restart);
    connect(&deadlineAfterSockets, &QTimer::timeout, this, &RS232TunnelWorker::expireQuietClients);
    uptime.start();
}

std::array<QTimer *, 5> RS232TunnelWorker::timers()
{
    return {&nextTurn, &nextAccept, &nextDeadline, &turnAfterSockets, &deadlineAfterSockets};
}

RS232TunnelWorker::~RS232TunnelWorker()
{
    closeTunnelPrivate();
}

bool RS232TunnelWorker::event(QEvent *event)
{
    const TakeOver takeOver(this);
    return QObject::event(event);
}

ErrorCode RS232TunnelWorker::openTunnel(QUrl &outUrl)
{
    outUrl = QUrl();
    const ErrorCode result = openSerialCommunication();
    if (result != NoError)
        return result;
    Q_EMIT tunnelOpened();

    if (!server)
        server = new LoopbackServer(this);
    if (!requests)
        requests = std::make_unique<RequestQueue>(TunnelLimits::incompleteRequestSeconds);
    server->close();
    requests->reset();
    dropClients();
    connect(server, &QTcpServer::newConnection, this, &RS232TunnelWorker::onNewConnection, Qt::UniqueConnection);
    connect(server, &QTcpServer::acceptError, this, &RS232TunnelWorker::onAcceptError, Qt::UniqueConnection);
    listening = server->listen(QHostAddress::LocalHost, 0);
    outUrl = url();
    return NoError;
}

bool RS232TunnelWorker::isTunnelOpen() const
{
    return listening;
}

bool RS232TunnelWorker::isSerialCommunicationOpen() const
{
    return sensor->isOpen();
}

QUrl RS232TunnelWorker::url() const
{
    if (!listening)
        return QUrl();
    return QUrl(QStringLiteral("http://%1:%2").arg(server->serverAddress().toString()).arg(server->serverPort()));
}

void RS232TunnelWorker::closeTunnel()
{
    closeTunnelPrivate();
}

void RS232TunnelWorker::closeTunnelPrivate()
{
    shutdownTCPSeverPrivate();
    closeSerialCommunicationPrivate();
    listening = false;
    logBegun = false;
}

void RS232TunnelWorker::shutdownTCPSeverPrivate()
{
    for (QTimer *timer : timers())
        timer->stop();
    dropClients();
    const Lock lock(clientsMutex);
    delete std::exchange(server, nullptr);
    requests.reset();
}

void RS232TunnelWorker::dropClients()
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

void RS232TunnelWorker::onNewConnection()
{
    if (nextAccept.isActive() || !server || !server->hasPendingConnections())
        return;
    nextAccept.start();
    QAbstractSocket *const socket = server->takeConnection();
    if (!socket)
        return;

    const bool welcome = requests->openConnections() < TunnelLimits::connections;
    if (socketCount() >= maxSockets) {
        delete socket;
        return;
    }
    if (welcome && !sensor->isOpen() && openSerialCommunication() == NoError)
        Q_EMIT tunnelOpened();
    {
        const Lock lock(clientsMutex);
        clients.insert(socket, true);
    }
    requestLog.connected(socket);
    requests->addClient(socket, now(), welcome);
    connect(socket, &QAbstractSocket::readyRead, this, [this, socket] { onSocketDataAvailable(*socket); });
    connect(socket, &QAbstractSocket::disconnected, this, [this, socket] { onSocketDisconnected(*socket); });
    connect(socket, &QAbstractSocket::bytesWritten, this, [this, socket] { onBytesWritten(*socket); });
    if (socket->state() != QAbstractSocket::ConnectedState)
        onSocketDisconnected(*socket);
    else
        onSocketDataAvailable(*socket);
}

/// The server stops accepting when the system cannot give it a connection, which may be over in a moment.
void RS232TunnelWorker::onAcceptError()
{
    log("onAcceptError", QStringLiteral("cannot accept a connection: %1").arg(server->errorString()));
    QTimer::singleShot(acceptPauseMs, server, &QTcpServer::resumeAccepting);
}

int RS232TunnelWorker::socketCount()
{
    const Lock lock(clientsMutex);
    return clients.size();
}

bool RS232TunnelWorker::isActive(QAbstractSocket *socket)
{
    const Lock lock(clientsMutex);
    return clients.value(socket, false);
}

void RS232TunnelWorker::onSocketDataAvailable(QAbstractSocket &socket)
{
    handleRequestFromSocket(socket);
    serveNext();
}

void RS232TunnelWorker::onSocketDisconnected(QAbstractSocket &socket)
{
    if (!isActive(&socket))
        return;
    finishing.remove(&socket);
    lingering.remove(&socket);
    requestLog.left(&socket, now());
    requests->removeClient(&socket);
    const Lock lock(clientsMutex);
    clients[&socket] = false;
    QTimer::singleShot(0, this, &RS232TunnelWorker::removeInactiveClients);
}

void RS232TunnelWorker::removeInactiveClients()
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

void RS232TunnelWorker::onBytesWritten(QAbstractSocket &socket)
{
    watchSending(socket);
    update();
}

/// Takes what has come. A client that goes on sending is heard again by its next readyRead().
void RS232TunnelWorker::handleRequestFromSocket(QAbstractSocket &socket)
{
    if (requests->wantsBytes(&socket))
        receive(socket);
}

/// Takes one chunk, or notes that there will be none. False when there is nothing more for now.
bool RS232TunnelWorker::receive(QAbstractSocket &socket)
{
    switch (pendingInput(socket)) {
    case SocketInput::Data:
    case SocketInput::Nothing: {
        // Also when there is nothing: reading is what makes the socket tell of the next bytes.
        const QByteArray bytes = socket.read(TunnelLimits::readChunk);
        if (!bytes.isEmpty())
            requests->feed(&socket, bytes, now());
        return !bytes.isEmpty();
    }
    case SocketInput::Ended:
        if (lingering.contains(&socket))
            socket.abort();
        else
            requests->endInput(&socket, now());
        return false;
    case SocketInput::Failed:
        onSocketDisconnected(socket);
        return false;
    }
    return false;
}

/// Serves one request. The next one has to wait for its turn: a slow sensor must hold up neither the calls of the
/// application nor the end of the tunnel for longer than one answer takes.
void RS232TunnelWorker::serveNext()
{
    RequestQueue::Request request;
    if (!isTurnDue() && requests->takeRequest(request)) {
        nextTurn.start();
        serve(request);
        // Bytes that had to wait while enough of its requests did.
        auto *const socket = static_cast<QAbstractSocket *>(request.client);
        if (isActive(socket))
            handleRequestFromSocket(*socket);
    }
    update();
}

void RS232TunnelWorker::serve(const RequestQueue::Request &request)
{
    switch (request.kind) {
    case RequestCutter::Import:
    case RequestCutter::Command:
        handleSensorCommandFromProxy(request);
        break;
    case RequestCutter::OtherMethod:
    case RequestCutter::HeadMethod:
        requests->answerOtherMethod(request, now());
        logAnswer(request, HttpStatus::notImplemented, now());
        break;
    default:
        relay(request);
    }
}

void RS232TunnelWorker::expireQuietClients()
{
    requests->expire(now());
    update();
}

bool RS232TunnelWorker::isTurnDue() const
{
    return nextTurn.isActive() || turnAfterSockets.isActive();
}

/// After anything that may have changed what there is to do.
void RS232TunnelWorker::update()
{
    writeResponses();
    if (requests->takeDropped() > 0)
        log("handleRequestFromSocket", QStringLiteral("Unknown HTTP request"));
    if (requests->hasRequest() && !isTurnDue())
        nextTurn.start();
    const qint64 deadline = requests->nextDeadline();
    if (deadline < 0)
        nextDeadline.stop();
    else
        nextDeadline.start(int(std::max<qint64>(0, deadline - now())));
}

qint64 RS232TunnelWorker::now() const
{
    return uptime.elapsed();
}

bool RS232TunnelWorker::getHTTPResponse(RequestQueue::Response &response, QAbstractSocket *&socket)
{
    if (!requests->takeResponse(response))
        return false;
    socket = static_cast<QAbstractSocket *>(response.client);
    return true;
}

void RS232TunnelWorker::writeResponses()
{
    RequestQueue::Response response;
    QAbstractSocket *socket = nullptr;
    while (getHTTPResponse(response, socket)) {
        if (isActive(socket))
            write(*socket, response);
    }
}

void RS232TunnelWorker::write(QAbstractSocket &socket, const RequestQueue::Response &response)
{
    using Afterwards = RequestQueue::Afterwards;
    if (response.afterwards == Afterwards::Aborts) {
        socket.abort();
        return;
    }
    const QByteArray &bytes = response.bytes;
    if (response.afterwards == Afterwards::Refuses)
        qCInfo(tunnelRequestLog).noquote()
            << "refused:" << bytes.mid(bytes.indexOf(' ') + 1, bytes.indexOf('\r') - bytes.indexOf(' ') - 1);
    requestLog.writes(&socket, response.number, bytes);
    // A client that has left answers what is written with a reset, and what it had sent before would be lost.
    const bool mayHaveLeft = hasPeerEndedSending(socket);
    while (mayHaveLeft && isActive(&socket) && receive(socket)) {
    }
    if (!isActive(&socket))
        return;
    if (!bytes.isEmpty() && socket.write(bytes) < 0) {
        onSocketDisconnected(socket);
        return;
    }
    if (response.afterwards != Afterwards::Goes)
        finishing.insert(&socket);
    watchSending(socket);
    if (mayHaveLeft && isActive(&socket))
        receive(socket); // notes the reset, so that no further page is fetched for it
}

void RS232TunnelWorker::watchSending(QAbstractSocket &socket)
{
    const bool ends = finishing.contains(&socket);
    const qint64 unsent = socket.bytesToWrite();
    requestLog.wrote(&socket, unsent, now());
    requests->setFetching(&socket, unsent <= (ends ? 0 : TunnelLimits::unsentAnswers), now());
    if (ends && unsent == 0)
        finish(socket);
}

/// Ends the connection of a client that has got its last answer. It is told at once that no more comes, but what it
/// is still sending is read for a while: a socket that is closed with unread bytes takes the answer along.
void RS232TunnelWorker::finish(QAbstractSocket &socket)
{
    finishing.remove(&socket);
    lingering.insert(&socket);
    endSending(socket);
    receive(socket);
    QTimer::singleShot(TunnelLimits::lingerMs, &socket, &QAbstractSocket::abort);
}

} // namespace SondixQt
