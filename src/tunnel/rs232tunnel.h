// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/errorcode.h>

#include <QObject>
#include <QUrl>

QT_BEGIN_NAMESPACE
class QThread;
QT_END_NAMESPACE

namespace SondixQt {

class RS232TunnelPrivate;
class RS232TunnelWorker;
class SensorInstance;

/// Lets a browser on this computer reach the web interface of a sensor that hangs on a serial line.
///
/// \par Use
/// Construct it on the sensor's SensorInstance, call openTunnel() and hand the URL to a browser. The
/// tunnel serves HTTP on the loopback address at a port that the operating system chooses. GET requests
/// are answered by the sensor's web interface, POST requests carry commands for the sensor.
///
/// \par The sensor meanwhile
/// The sensor may be open already; otherwise the tunnel opens it with
/// SensorInstance::storedInterfaceParameters() and closes it again. While the tunnel is open, the
/// sensor's RS422 output is off, since the web interface shares the line with it: no measured values
/// arrive over that line meanwhile. A sensor that the
/// application lent open gets it back when the tunnel closes. A command from the browser that changes
/// the baud rate closes the sensor and opens it at the new one. When the application closes the sensor,
/// the next connection of a browser opens it again.
///
/// \par Who may use it
/// Every program on this computer can reach the port, and so could every web page that its user visits. Commands of
/// pages of other origins, and everything that is asked for under another host name, are refused and never reach the
/// sensor. Of what such pages fetch only a link that the user follows passes; of a browser so old that it does not say
/// for whom it asks, whatever a page fetches without a command.
///
/// \par What it logs
/// With the logging category "SondixQt.RS232Tunnel.Requests" switched on: a line for each request that was answered or
/// refused. "SondixQt.RS232Tunnel" tells what went wrong.
///
/// \par Threads
/// All network and sensor traffic of the tunnel runs in a thread of its own. The functions may be called from any
/// other thread; each blocks until that thread has answered, which takes as long as the request that is being served.
/// From a slot of SensorInstance::errorMessage() call them only if its connection is queued: such a slot runs while
/// its thread keeps the sensor for itself, and the tunnel would wait for it for ever.
/// The application may go on sending commands and reading values meanwhile: each sequence of commands is kept
/// together, and waits while the tunnel opens or closes the sensor. It may close the sensor. What the instance tells
/// without asking the sensor (its info parameters, modes and flags) may change whenever the tunnel opens it, which a
/// new connection or a new baud rate brings about: read that while the tunnel is closed. The instance must not be
/// released, moved from or destroyed while the tunnel lives.
///
/// \par Ownership
/// The instance is borrowed and must outlive the tunnel. Destroying the tunnel closes it and waits at most two
/// seconds. Where the sensor has not answered by then, the thread is let go of: it ends by itself when the sensor's
/// library returns, and the instance must live until then. An application that cannot promise this calls
/// closeTunnel() first, which returns when the sensor has answered.
class SONDIXQT_EXPORT RS232Tunnel : public QObject
{
    Q_OBJECT
public:
    explicit RS232Tunnel(SensorInstance &sensor, QObject *parent = nullptr);
    ~RS232Tunnel() override;

    /// Opens the sensor where it is not open, starts the server and writes its address to \a outUrl. An
    /// open tunnel starts afresh: its connections are dropped and the port may change. Fails with the
    /// error of opening the sensor. Where the server finds no port, the result is 0 and \a outUrl empty.
    Q_INVOKABLE SondixQt::ErrorCode openTunnel(QUrl &outUrl);
    /// Whether the server listens.
    Q_INVOKABLE bool isTunnelOpen() const;
    /// Whether the sensor is open, no matter who opened it.
    Q_INVOKABLE bool isSerialCommunicationOpen() const;
    /// The server's address, such as http://127.0.0.1:49152; empty while it does not listen.
    Q_INVOKABLE QUrl url();
    /// Drops all connections and stops the server; closes the sensor if the tunnel opened it.
    Q_INVOKABLE void closeTunnel();

Q_SIGNALS:
    /// The sensor was closed by the tunnel, or the tunnel was closed on a sensor that stays open.
    void forwardTunnelClosed();
    /// The sensor is open for the tunnel; its server may not listen yet.
    void forwardTunnelOpened();
    /// Emit it to have the sensor-access library write a log of the tunnel, or to end that: ten files in
    /// turn, in the folder that the application's QSettings name "logFileDir", else in the temporary one.
    void enableLogging(bool enable);

private:
    QThread *thread;
    RS232TunnelWorker *worker;
    RS232TunnelPrivate *d = nullptr; // room to grow without a change of size
};

} // namespace SondixQt
