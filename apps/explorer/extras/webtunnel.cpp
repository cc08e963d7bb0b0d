// SPDX-License-Identifier: MIT
#include "webtunnel.h"

#include "explorer/sensor/sensorsession.h"
#include "explorer/sensor/threadend.h"
#include "tunnelworker.h"

#include <SondixQt/sensorinfo.h>

#include <QAction>
#include <QDesktopServices>
#include <QThread>

#include <utility>

using namespace SondixQt;

namespace Explorer {

namespace {

constexpr unsigned long tunnelEndMs = 3000;

bool isEnded(SensorReader::State state)
{
    return state == SensorReader::Stopped || state == SensorReader::Failed;
}

} // namespace

WebTunnel::WebTunnel(SensorSession &session, QObject *parent)
    : QObject(parent)
    , m_session(session)
    , m_action(new QAction(tr("&Web interface"), this))
    , m_thread(new QThread)
    , m_worker(new TunnelWorker)
    , m_browser([](const QUrl &url) { return QDesktopServices::openUrl(url); })
{
    qRegisterMetaType<SensorAddress>();
    m_action->setObjectName(QStringLiteral("webAction"));
    m_action->setCheckable(true);
    m_action->setToolTip(tr("Show the web interface of the sensor in the browser; reading pauses meanwhile"));
    connect(m_action, &QAction::triggered, this, [this](bool on) { on ? open() : close(); });
    connect(&session.reader(), &SensorReader::stateChanged, this, &WebTunnel::takeReaderState);
    connect(&session, &SensorSession::reopening, this, [this](bool *isTaken) {
        if (m_state == Closed)
            return;
        *isTaken = m_wasRead = true;
        close();
    });
    m_worker->moveToThread(m_thread);
    connect(m_worker, &TunnelWorker::opened, this, &WebTunnel::takeUrl);
    connect(m_worker, &TunnelWorker::failed, this, &WebTunnel::takeFailure);
    connect(m_worker, &TunnelWorker::closed, this, &WebTunnel::takeEnd);
    connect(m_worker, &TunnelWorker::sensorLost, this, [this](bool isLost) {
        if (m_state == Open && isLost != std::exchange(m_isLost, isLost))
            Q_EMIT happened(isLost ? tr("web interface: the sensor is lost; the next page tries to open it")
                                   : tr("web interface: the sensor is open"),
                            isLost);
    });
    m_thread->start();
}

WebTunnel::~WebTunnel()
{
    QMetaObject::invokeMethod(m_worker, [worker = m_worker, thread = m_thread] {
        delete worker;
        thread->quit();
    });
    finishThread(m_thread, tunnelEndMs);
}

bool WebTunnel::isOffered(const SensorAddress &address)
{
    return SensorInfo(address.parameters, address.type).getWebInterfaceSupport() == SerialWebInterface &&
           address.interfaceType() != TCPIP;
}

QString WebTunnel::stateText() const
{
    switch (m_state) {
    case Closed:
        break;
    case Waiting:
    case Opening:
        return tr("web interface is being opened");
    case Open:
        return tr("web interface at %1; reading pauses").arg(m_url.toString());
    case Closing:
        return tr("web interface is being closed");
    }
    return {};
}

void WebTunnel::setState(State state)
{
    m_state = state;
    m_action->setChecked(state == Waiting || state == Opening || state == Open);
    m_action->setEnabled(state != Closing);
    Q_EMIT changed();
}

void WebTunnel::setBrowser(std::function<bool(const QUrl &)> browser)
{
    m_browser = std::move(browser);
}

void WebTunnel::open()
{
    if (m_state != Closed) {
        setState(m_state);
        return;
    }
    m_closesSoon = m_isLost = false;
    m_wasRead = !isEnded(m_session.state());
    if (!m_wasRead) {
        openTunnel();
        return;
    }
    setState(Waiting);
    m_session.reader().stop();
}

void WebTunnel::takeReaderState(SensorReader::State state)
{
    if (m_state == Waiting && isEnded(state))
        openTunnel();
}

void WebTunnel::openTunnel()
{
    setState(Opening);
    QMetaObject::invokeMethod(m_worker,
                              [worker = m_worker, address = m_session.address()] { worker->open(address); });
}

void WebTunnel::takeUrl(const QUrl &url)
{
    m_url = url;
    setState(Open);
    Q_EMIT happened(stateText(), false);
    if (m_closesSoon)
        close();
    else
        showBrowser();
}

void WebTunnel::showBrowser()
{
    if (m_state == Open && !m_browser(m_url))
        Q_EMIT happened(tr("no browser could be started; open the address yourself: %1").arg(m_url.toString()),
                        true);
}

void WebTunnel::close()
{
    switch (m_state) {
    case Closed:
    case Closing:
        break;
    case Waiting:
    case Opening:
        m_closesSoon = true; // when it is open
        break;
    case Open:
        setState(Closing);
        QMetaObject::invokeMethod(m_worker, &TunnelWorker::close);
        break;
    }
}

void WebTunnel::takeFailure(const QString &problem)
{
    setState(Closed);
    Q_EMIT happened(tr("the web interface cannot be opened: %1").arg(problem), true);
    resume();
}

void WebTunnel::takeEnd(const SensorAddress &address)
{
    m_url.clear();
    setState(Closed);
    if (address != m_session.address()) {
        Q_EMIT happened(tr("the sensor is now reached as %1").arg(address.toString()), false);
        Q_EMIT moved(address);
        return;
    }
    Q_EMIT happened(tr("web interface closed"), false);
    resume();
}

void WebTunnel::resume()
{
    if (std::exchange(m_wasRead, false))
        m_session.open();
}

} // namespace Explorer
