// SPDX-License-Identifier: MIT
#include "rs232tunnelworker_p.h"

#include "threadfences_p.h"

namespace SondixQt {

RS232TunnelWorker::RS232TunnelWorker(SensorInstance &instance)
    : link(instance)
    , server(*this, this)
{
}

RS232TunnelWorker::~RS232TunnelWorker()
{
    closeTunnelPrivate();
}

bool RS232TunnelWorker::event(QEvent *event)
{
    const CalleeFence fence(this);
    return QObject::event(event);
}

ErrorCode RS232TunnelWorker::openTunnel(QUrl &outUrl)
{
    outUrl = QUrl();
    const ErrorCode result = link.openSerialCommunication();
    if (result != NoError)
        return result;
    Q_EMIT tunnelOpened();
    listening = server.listen();
    outUrl = url();
    return NoError;
}

bool RS232TunnelWorker::isTunnelOpen() const
{
    return listening;
}

bool RS232TunnelWorker::isSerialCommunicationOpen() const
{
    return link.isOpen();
}

QUrl RS232TunnelWorker::url() const
{
    return server.url();
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
}

void RS232TunnelWorker::shutdownTCPSeverPrivate()
{
    server.close();
}

void RS232TunnelWorker::closeSerialCommunicationPrivate()
{
    const SerialLink::Closing closing = link.close();
    for (int i = 0; i < closing.closed; ++i)
        Q_EMIT tunnelClosed();
    if (listening && closing.closed == 0 && !closing.failed)
        Q_EMIT tunnelClosed();
}

void RS232TunnelWorker::onEnableLogging(bool enable)
{
    link.enableLogging(enable);
}

void RS232TunnelWorker::connectionAccepted()
{
    if (!link.isOpen() && link.openSerialCommunication() == NoError)
        Q_EMIT tunnelOpened();
}

HttpReply RS232TunnelWorker::reply(const RequestQueue::Request &request)
{
    HttpReply reply = request.kind == ParsedRequest::Get ? relay(request) : handleSensorCommandFromProxy(request);
    // If the sensor is closed, close the connection: a new one opens the sensor again.
    if (reply.kind == HttpReply::Failure)
        reply.closes = !link.isOpen();
    return reply;
}

HttpReply RS232TunnelWorker::relay(const RequestQueue::Request &request)
{
    const QString path = QString::fromLatin1(request.path);
    const QString tag = QString::fromLatin1(request.entityTag);
    HttpReply reply;
    if (link.fetchPage(path, tag, reply.header, reply.body, &reply.errorText) != NoError) {
        reply.kind = HttpReply::Failure;
        log("handleRequestFromSocket",
            QStringLiteral(
                "Get_HTTP error:'%1' RS232TunnelWorker::handleRequestFromSocket SP_HTTPPath: %2 SP_HTTPeTag: %3")
                .arg(reply.errorText, path, tag));
    }
    return reply;
}

HttpReply RS232TunnelWorker::handleSensorCommandFromProxy(const RequestQueue::Request &request)
{
    HttpReply reply;
    reply.kind = HttpReply::CommandAnswer;
    const bool isImport = request.kind == ParsedRequest::Import;
    if (link.sendCommand(QString::fromLatin1(request.text), isImport, reply.body, &reply.errorText) != NoError) {
        reply.kind = HttpReply::Failure;
        log("handleSensorCommandFromProxy", QStringLiteral("Cmd_Generic error:'%1'").arg(reply.errorText));
    }
    if (link.takeLost())
        Q_EMIT tunnelClosed();
    return reply;
}

void RS232TunnelWorker::log(const char *function, const QString &text)
{
    link.log(function, text);
}

} // namespace SondixQt
