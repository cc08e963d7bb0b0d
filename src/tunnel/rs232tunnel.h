// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/errorcode.h>

#include <QObject>
#include <QScopedPointer>
#include <QUrl>

namespace SondixQt {

class RS232TunnelPrivate;
class SensorInstance;

/// Lets a browser on this computer use the web interface of a sensor that is connected to a serial line.
///
/// \par Use
/// Construct it for the sensor's SensorInstance, call openTunnel() and open the URL in a browser. The tunnel
/// serves HTTP on the loopback address at a port that the operating system chooses. GET requests are answered by
/// the sensor's web interface; POST requests contain commands for the sensor.
///
/// \par Effects on the sensor
/// The sensor may be open already; otherwise the tunnel opens it with SensorInstance::storedInterfaceParameters()
/// and closes it again. While the tunnel is open, the RS422 output of the sensor is switched off, because the web
/// interface uses the same line: no measured values arrive over it. If the tunnel switched the output off, it
/// switches it on again when it is closed, provided that the sensor is still open. If a command from the browser
/// changes the baud rate, the tunnel closes the sensor and opens it at the new one. If the application closes the
/// sensor, the next connection of a browser opens it again.
///
/// \par Access control
/// Every program on this computer can reach the port, and so can every web page that the user visits. Requests
/// with a foreign host name and commands from pages of another origin are refused with 403 and never reach the
/// sensor. A page of another origin can still make the browser navigate to a page of the sensor, with or without
/// a click: by a link, a form, a script or a refresh header. The browser then shows the sensor's page (fetched by
/// a GET, which executes no command), but the other page cannot read it. All other requests from foreign pages
/// are refused if the browser reports their source (Sec-Fetch-Site or Origin). WebSockets and pages that a
/// browser fetches in advance are refused, too. With a browser that does not send Sec-Fetch-Site, a foreign page
/// can fetch pages of the sensor, but cannot send commands: the browser reports their source in Origin. A browser
/// that does not send Origin with a POST either is not protected.
///
/// \par Execution of requests
/// A command that has arrived completely is executed even if its client has disconnected in the meantime. A
/// client that has only shut down its write side receives its answer. Methods other than GET and POST are
/// answered with 501.
///
/// \par Logging
/// If the logging category "SondixQt.RS232Tunnel.Requests" is enabled, a line is logged for each request that was
/// refused or answered, with the number of bytes written. Failures are logged in "SondixQt.RS232Tunnel".
///
/// \par Threads
/// All network and sensor traffic of the tunnel runs in a separate thread. The functions may be called from any
/// other thread. Each blocks until the tunnel's thread has answered, which can take as long as the request in
/// progress. Do not call them from a slot that is connected directly to SensorInstance::errorMessage(), but use a
/// queued connection: the slot runs while the mutex of the instance is locked, and the tunnel's thread would wait
/// for it forever.
///
/// The application may continue to send commands and to read values: a sequence of commands is not interrupted by
/// other threads, and waits while the tunnel opens or closes the sensor. The application may also close the
/// sensor. The functions of the instance that do not query the sensor (info parameters, modes and flags) may be
/// called only while the tunnel is closed: their values change whenever the tunnel opens the sensor, which it
/// does for a new connection or a new baud rate. The instance must not be released, moved from or destroyed while
/// the tunnel exists.
///
/// \par Ownership
/// The tunnel does not own the instance, which must outlive it. Destroying the tunnel closes it and waits at most
/// two seconds. If the sensor has not answered by then, the thread continues until the sensor-access library
/// returns, and the instance must exist until then. If the application cannot guarantee this, it calls
/// closeTunnel() first, which returns when the sensor has answered.
class SONDIXQT_EXPORT RS232Tunnel : public QObject
{
    Q_OBJECT
public:
    explicit RS232Tunnel(SensorInstance &sensor, QObject *parent = nullptr);
    ~RS232Tunnel() override;

    /// Opens the sensor if it is closed, starts the server and writes its address to \a outUrl. If the tunnel is
    /// already open, it is restarted: its connections are dropped and the port may change. Returns the error of
    /// opening the sensor. If the server cannot listen on any port, the result is NoError and \a outUrl is empty.
    Q_INVOKABLE SondixQt::ErrorCode openTunnel(QUrl &outUrl);
    /// Whether the server is listening.
    Q_INVOKABLE bool isTunnelOpen() const;
    /// Whether the sensor is open, regardless of whether the tunnel or the application opened it.
    Q_INVOKABLE bool isSerialCommunicationOpen() const;
    /// The server's address, such as http://127.0.0.1:49152; empty while it is not listening.
    Q_INVOKABLE QUrl url();
    /// Drops all connections and stops the server; closes the sensor if the tunnel opened it.
    Q_INVOKABLE void closeTunnel();

Q_SIGNALS:
    /// Emitted when the tunnel has closed the sensor, when the tunnel is closed without having to close the
    /// sensor, and when the sensor is lost because a change of the baud rate failed. Not emitted if the sensor
    /// cannot be closed.
    void forwardTunnelClosed();
    /// Emitted when the sensor is open for the tunnel; the server may not be listening yet.
    void forwardTunnelOpened();
    /// Emit this signal to start or stop the log of the sensor-access library for the tunnel. The log rotates
    /// over ten files in the folder "logFileDir" of the application's QSettings, or in the temporary folder if
    /// that is not set.
    void enableLogging(bool enable);

private:
    Q_DECLARE_PRIVATE(RS232Tunnel)
    const QScopedPointer<RS232TunnelPrivate> d_ptr;
};

} // namespace SondixQt
