// SPDX-License-Identifier: MIT
#include "rs232tunnel.h"

#include "rs232tunnelworker_p.h"
#include "threadfences_p.h"

#include <QMetaObject>
#include <QThread>

namespace SondixQt {

namespace {

constexpr unsigned long timeoutMs = 2000;

/// Registers the type names that call() passes to QMetaObject::invokeMethod().
void registerTunnelTypes()
{
    qRegisterMetaType<QUrl>("QUrl&");
    qRegisterMetaType<ErrorCode>("SondixQt::ErrorCode");
}
Q_CONSTRUCTOR_FUNCTION(registerTunnelTypes)

template<typename... Arguments>
void call(RS232TunnelWorker *worker, const char *function, Arguments... arguments)
{
    const CallerFence fence(worker);
    QMetaObject::invokeMethod(worker, function, Qt::BlockingQueuedConnection, arguments...);
}

} // namespace

class RS232TunnelPrivate
{
public:
    RS232TunnelPrivate(RS232Tunnel *tunnel, SensorInstance &sensor)
        : thread(new QThread(tunnel))
        , worker(new RS232TunnelWorker(sensor))
    {
    }

    QThread *const thread;
    RS232TunnelWorker *const worker; ///< lives in the thread, which deletes it at its end
};

RS232Tunnel::RS232Tunnel(SensorInstance &sensor, QObject *parent)
    : QObject(parent)
    , d_ptr(new RS232TunnelPrivate(this, sensor))
{
    Q_D(RS232Tunnel);
    const CallerFence fence(d->worker);
    d->thread->start(QThread::InheritPriority);
    d->worker->moveToThread(d->thread);
    connect(d->thread, SIGNAL(finished()), d->worker, SLOT(deleteLater()));
    connect(d->worker, &RS232TunnelWorker::tunnelOpened, this, &RS232Tunnel::forwardTunnelOpened);
    connect(d->worker, &RS232TunnelWorker::tunnelClosed, this, &RS232Tunnel::forwardTunnelClosed);
    connect(this, &RS232Tunnel::enableLogging, d->worker, &RS232TunnelWorker::onEnableLogging);
}

RS232Tunnel::~RS232Tunnel()
{
    Q_D(RS232Tunnel);
    {
        const CallerFence quitting(d->worker);
        d->thread->quit();
    }
    if (d->thread->wait(timeoutMs)) {
        const CallerFence ended(d->worker);
        return;
    }
    // The thread is still waiting for the sensor. Deleting a running QThread would terminate the program.
    d->thread->setParent(nullptr);
    connect(d->thread, &QThread::finished, d->thread, &QObject::deleteLater);
    if (d->thread->isFinished())
        d->thread->deleteLater();
}

ErrorCode RS232Tunnel::openTunnel(QUrl &outUrl)
{
    Q_D(RS232Tunnel);
    ErrorCode result = NoError;
    call(d->worker, "openTunnel", QReturnArgument<ErrorCode>("SondixQt::ErrorCode", result),
         QArgument<QUrl &>("QUrl &", outUrl));
    return result;
}

bool RS232Tunnel::isTunnelOpen() const
{
    Q_D(const RS232Tunnel);
    bool result = false;
    call(d->worker, "isTunnelOpen", Q_RETURN_ARG(bool, result));
    return result;
}

bool RS232Tunnel::isSerialCommunicationOpen() const
{
    Q_D(const RS232Tunnel);
    bool result = false;
    call(d->worker, "isSerialCommunicationOpen", Q_RETURN_ARG(bool, result));
    return result;
}

QUrl RS232Tunnel::url()
{
    Q_D(RS232Tunnel);
    QUrl result;
    call(d->worker, "url", Q_RETURN_ARG(QUrl, result));
    return result;
}

void RS232Tunnel::closeTunnel()
{
    Q_D(RS232Tunnel);
    call(d->worker, "closeTunnel");
}

} // namespace SondixQt
