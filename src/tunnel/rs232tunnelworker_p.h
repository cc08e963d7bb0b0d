// SPDX-License-Identifier: MIT
#pragma once

#include "requestqueue_p.h"

#include <SondixQt/errorcode.h>

#include <QElapsedTimer>
#include <QMap>
#include <QObject>
#include <QSet>
#include <QTimer>
#include <QUrl>

#include <array>
#include <memory>
#include <mutex>

QT_BEGIN_NAMESPACE
class QTcpServer;
class QTcpSocket;
QT_END_NAMESPACE

namespace SondixQt {

class SensorInstance;

/// Does the tunnel's work in the tunnel's thread: serves the browser's connections out of the sensor. Exported for
/// the tests only: the header is not installed.
class SONDIXQT_EXPORT RS232TunnelWorker : public QObject
{
    Q_OBJECT
public:
    explicit RS232TunnelWorker(SensorInstance &sensor);
    ~RS232TunnelWorker() override;

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
    // Connections.
    void onNewConnection();
    void onAcceptError();
    void onSocketDataAvailable(QTcpSocket &socket);
    void onSocketDisconnected(QTcpSocket &socket);
    void onBytesWritten(QTcpSocket &socket);
    void dropClients();
    void removeInactiveClients();
    bool isActive(QTcpSocket *socket);
    int socketCount();
    std::array<QTimer *, 5> timers();

    // Requests.
    void handleRequestFromSocket(QTcpSocket &socket);
    void handleSensorCommandFromProxy(const RequestQueue::Request &request);
    void relay(const RequestQueue::Request &request);
    void serveNext();
    bool isTurnDue() const;
    void expireQuietClients();
    bool getHTTPResponse(QByteArray &bytes, QTcpSocket *&socket, RequestQueue::Afterwards &afterwards);
    void writeResponses();
    void watchSending(QTcpSocket &socket);
    void finish(QTcpSocket &socket);
    void write(QTcpSocket &socket, const QByteArray &bytes, RequestQueue::Afterwards afterwards);
    void update();
    qint64 now() const;

    // The serial link.
    ErrorCode openSerialCommunication();
    ErrorCode changeBaudrate(int baudrate, QString *errorText);
    void disableRS422Output();
    void enableRS422Output();
    ErrorCode switchRS422Output(bool on, QString *errorText);
    void startSensorLog();
    void logAnswer(const RequestQueue::Request &request, int status, int bytes, qint64 begin,
                   const QString &problem = QString());
    void log(const char *function, const QString &text);

    bool listening = false;
    QTcpServer *server = nullptr;
    std::unique_ptr<RequestQueue> requests;
    SensorInstance *sensor;
    QMap<QTcpSocket *, bool> clients; ///< and whether answers still reach them
    QSet<QTcpSocket *> finishing;     ///< clients whose last answer is on its way
    std::mutex clientsMutex;
    bool loggingEnabled = false;
    bool logBegun = false;
    bool serialOpenedByTunnel = false;
    bool rs422SwitchedOff = false;

    QTimer nextTurn;     ///< between two requests the thread looks after everything else
    QTimer nextAccept;   ///< between two connections: each may have to open the sensor
    QTimer nextDeadline; ///< when a client will have been quiet for too long
    // A timer may fire before a socket tells of what happened earlier. These give the sockets one round of the event
    // loop to do so.
    QTimer turnAfterSockets;
    QTimer deadlineAfterSockets;
    QElapsedTimer uptime;
};

} // namespace SondixQt
