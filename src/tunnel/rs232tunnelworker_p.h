// SPDX-License-Identifier: MIT
#pragma once

#include "httpserver_p.h"
#include "seriallink_p.h"
#include "testexport_p.h"

#include <SondixQt/errorcode.h>

#include <QObject>
#include <QUrl>

namespace SondixQt {

/// Does the tunnel's work in the tunnel's thread: answers the requests of the HTTP server through the serial link.
class SONDIXQT_TEST_EXPORT RS232TunnelWorker : public QObject, private HttpServer::Handler
{
    Q_OBJECT
public:
    explicit RS232TunnelWorker(SensorInstance &sensor);
    ~RS232TunnelWorker() override;
    RS232TunnelWorker(const RS232TunnelWorker &) = delete;
    RS232TunnelWorker &operator=(const RS232TunnelWorker &) = delete;

    Q_INVOKABLE SondixQt::ErrorCode openTunnel(QUrl &outUrl);
    Q_INVOKABLE bool isTunnelOpen() const;
    Q_INVOKABLE bool isSerialCommunicationOpen() const;
    Q_INVOKABLE QUrl url() const;
    Q_INVOKABLE void closeTunnel();

    bool event(QEvent *event) override;

public Q_SLOTS:
    void onEnableLogging(bool enable);

Q_SIGNALS:
    void tunnelOpened();
    void tunnelClosed();

private Q_SLOTS:
    void closeTunnelPrivate();
    void closeSerialCommunicationPrivate();
    void shutdownTCPSeverPrivate();

private:
    void connectionAccepted() override;
    HttpReply reply(const RequestQueue::Request &request) override;
    void log(const char *function, const QString &text) override;

    HttpReply relay(const RequestQueue::Request &request);
    HttpReply handleSensorCommandFromProxy(const RequestQueue::Request &request);

    bool listening = false;
    SerialLink link;
    HttpServer server;
};

} // namespace SondixQt
