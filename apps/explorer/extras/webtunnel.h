// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sensoraddress.h>
#include <SondixQt/sensorreader.h>

#include <QObject>
#include <QUrl>

#include <functional>

class QAction;
class QThread;

namespace Explorer {

class SensorSession;
class TunnelWorker;

/// The web interface of a sensor on a serial line, shown by the browser through a tunnel.
///
/// The tunnel needs the line for itself: reading ends when the web interface is opened and begins again when it is closed,
/// if the sensor was being read. Threads: that of the window.
class WebTunnel : public QObject
{
    Q_OBJECT
public:
    enum State {
        Closed,
        Waiting, ///< for the reader to end
        Opening,
        Open,
        Closing,
    };

    /// \a session must outlive the object.
    explicit WebTunnel(SensorSession &session, QObject *parent = nullptr);
    /// Closes the tunnel; waits for the sensor for three seconds at most.
    ~WebTunnel() override;

    /// Whether the sensor at \a address has a web interface on its serial line.
    static bool isOffered(const SondixQt::SensorAddress &address);

    State state() const { return m_state; }
    /// The address for the browser; empty unless the state is Open.
    QUrl url() const { return m_url; }
    /// What is going on, for users; empty if the state is Closed.
    QString stateText() const;
    /// Opens and closes the web interface; checked while it is open.
    QAction *action() const { return m_action; }
    /// Shows the page in the browser once more.
    void showBrowser();
    void open();
    void close();
    /// Replaces what starts the browser, which is QDesktopServices::openUrl() otherwise. It returns false if that fails.
    void setBrowser(std::function<bool(const QUrl &)> browser);

Q_SIGNALS:
    void changed();
    /// For the log. \a isProblem: it is an error.
    void happened(const QString &text, bool isProblem);
    /// The sensor is now reached in another way, because a browser has changed the baud rate. It is not read again.
    void moved(const SondixQt::SensorAddress &address);

private:
    void setState(State state);
    void takeReaderState(SondixQt::SensorReader::State state);
    void openTunnel();
    void takeUrl(const QUrl &url);
    void takeFailure(const QString &problem);
    void takeEnd(const SondixQt::SensorAddress &address);
    void resume();

    SensorSession &m_session;
    QAction *m_action;
    QThread *m_thread;
    TunnelWorker *m_worker; // lives in the thread
    std::function<bool(const QUrl &)> m_browser;
    State m_state = Closed;
    bool m_wasRead = false;
    bool m_closesSoon = false;
    bool m_isLost = false;
    QUrl m_url;
};

} // namespace Explorer
