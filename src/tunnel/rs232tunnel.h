// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/errorcode.h>

#include <QObject>
#include <QScopedPointer>
#include <QUrl>

namespace SondixQt {

class RS232TunnelPrivate;
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
/// arrive over that line meanwhile. If the tunnel switched it off, it switches it on again when it closes, provided
/// that the sensor is still open. A command from the browser that changes
/// the baud rate closes the sensor and opens it at the new one. When the application closes the sensor,
/// the next connection of a browser opens it again.
///
/// \par Who may use it
/// Every program on this computer can reach the port, and so could every web page that its user visits. Requests under
/// another host name, and commands from pages of another origin, are refused with 403 and never reach the sensor. A
/// page of another origin can still make the browser leave for a page of the sensor, with or without a click: by a
/// link, a form, a script or a refresh header. The sensor then sends that page (a GET, which commands nothing) and the
/// browser shows it; the other page cannot read it. Everything else that a page fetches from the sensor is refused
/// when the browser says where the request comes from (Sec-Fetch-Site or Origin), as are WebSockets and pages that a
/// browser fetches in advance. A browser older than these headers can be made to fetch pages, though not to command.
///
/// \par What is carried out
/// A command that has arrived whole is carried out, also when its client has left meanwhile. A client that has only
/// ended sending gets its answer. Requests other than GET and POST get 501.
///
/// \par What it logs
/// With the logging category "SondixQt.RS232Tunnel.Requests" switched on: a line for each request that was refused,
/// or answered, with the bytes that were written. "SondixQt.RS232Tunnel" tells what went wrong.
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
    /// The tunnel has closed the sensor, or was closed on a sensor that the application had opened. Not emitted when
    /// the sensor could not be closed.
    void forwardTunnelClosed();
    /// The sensor is open for the tunnel; its server may not listen yet.
    void forwardTunnelOpened();
    /// Emit it to have the sensor-access library write a log of the tunnel, or to end that: ten files in
    /// turn, in the folder that the application's QSettings name "logFileDir", else in the temporary one.
    void enableLogging(bool enable);

private:
    Q_DECLARE_PRIVATE(RS232Tunnel)
    const QScopedPointer<RS232TunnelPrivate> d_ptr;
};

} // namespace SondixQt
