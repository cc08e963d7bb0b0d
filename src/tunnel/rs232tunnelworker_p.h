// SPDX-License-Identifier: MIT
#pragma once

#include "requestlog_p.h"
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
class QAbstractSocket;
QT_END_NAMESPACE

namespace SondixQt {

class LoopbackServer;
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
    void onSocketDataAvailable(QAbstractSocket &socket);
    void onSocketDisconnected(QAbstractSocket &socket);
    void onBytesWritten(QAbstractSocket &socket);
    void dropClients();
    void removeInactiveClients();
    bool isActive(QAbstractSocket *socket);
    int socketCount();
    std::array<QTimer *, 5> timers();

    // Requests.
    void handleRequestFromSocket(QAbstractSocket &socket);
    bool receive(QAbstractSocket &socket);
    void serve(const RequestQueue::Request &request);
    void handleSensorCommandFromProxy(const RequestQueue::Request &request);
    void relay(const RequestQueue::Request &request);
    void serveNext();
    bool isTurnDue() const;
    void expireQuietClients();
    bool getHTTPResponse(RequestQueue::Response &response, QAbstractSocket *&socket);
    void writeResponses();
    void watchSending(QAbstractSocket &socket);
    void finish(QAbstractSocket &socket);
    void write(QAbstractSocket &socket, const RequestQueue::Response &response);
    void update();
    qint64 now() const;

    // The serial link.
    ErrorCode openSerialCommunication();
    ErrorCode changeBaudrate(int baudrate, QString *errorText);
    void disableRS422Output();
    void enableRS422Output();
    ErrorCode switchRS422Output(bool on, QString *errorText);
    void startSensorLog();
    void logAnswer(const RequestQueue::Request &request, int status, qint64 begun,
                   const QString &problem = QString());
    void log(const char *function, const QString &text);

    bool listening = false;
    LoopbackServer *server = nullptr;
    std::unique_ptr<RequestQueue> requests;
    SensorInstance *sensor;
    QMap<QAbstractSocket *, bool> clients; ///< and whether answers still reach them
    QSet<QAbstractSocket *> finishing;     ///< clients whose last answer is on its way
    QSet<QAbstractSocket *> lingering;     ///< clients that have got it
    RequestLog requestLog;
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
