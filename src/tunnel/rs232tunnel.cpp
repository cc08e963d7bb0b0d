// SPDX-License-Identifier: MIT
#include "rs232tunnel.h"

#include "rs232tunnelworker_p.h"
#include "threadhandover_p.h"

#include <QMetaObject>
#include <QThread>

namespace SondixQt {

namespace {

constexpr unsigned long patienceMs = 2000;

/// The calls into the thread of the worker name these types by their text.
void registerMetaTypes()
{
    qRegisterMetaType<QUrl>("QUrl&");
    qRegisterMetaType<ErrorCode>("SondixQt::ErrorCode");
}
Q_CONSTRUCTOR_FUNCTION(registerMetaTypes)

/// Calls a function of the worker in the worker's thread.
template<typename... Arguments>
void call(RS232TunnelWorker *worker, const char *function, Arguments... arguments)
{
    const HandOver handOver(worker);
    QMetaObject::invokeMethod(worker, function, Qt::BlockingQueuedConnection, arguments...);
}

} // namespace

RS232Tunnel::RS232Tunnel(SensorInstance &sensor, QObject *parent)
    : QObject(parent)
    , thread(new QThread(this))
    , worker(new RS232TunnelWorker(sensor))
{
    const HandOver handOver(worker);
    thread->start(QThread::InheritPriority);
    worker->moveToThread(thread);
    connect(thread, SIGNAL(finished()), worker, SLOT(deleteLater()));
    connect(worker, &RS232TunnelWorker::tunnelOpened, this, &RS232Tunnel::forwardTunnelOpened);
    connect(worker, &RS232TunnelWorker::tunnelClosed, this, &RS232Tunnel::forwardTunnelClosed);
    connect(this, &RS232Tunnel::enableLogging, worker, &RS232TunnelWorker::onEnableLogging);
    Q_UNUSED(d)
}

RS232Tunnel::~RS232Tunnel()
{
    {
        const HandOver quitting(worker);
        thread->quit();
    }
    if (thread->wait(patienceMs)) {
        const HandOver ended(worker);
        return;
    }
    // The sensor holds the thread up. Deleting its object now would bring the program down.
    thread->setParent(nullptr);
    connect(thread, &QThread::finished, thread, &QObject::deleteLater);
    if (thread->isFinished())
        thread->deleteLater();
}

ErrorCode RS232Tunnel::openTunnel(QUrl &outUrl)
{
    ErrorCode result = NoError;
    call(worker, "openTunnel", QReturnArgument<ErrorCode>("SondixQt::ErrorCode", result),
         QArgument<QUrl &>("QUrl &", outUrl));
    return result;
}

bool RS232Tunnel::isTunnelOpen() const
{
    bool result = false;
    call(worker, "isTunnelOpen", Q_RETURN_ARG(bool, result));
    return result;
}

bool RS232Tunnel::isSerialCommunicationOpen() const
{
    bool result = false;
    call(worker, "isSerialCommunicationOpen", Q_RETURN_ARG(bool, result));
    return result;
}

QUrl RS232Tunnel::url()
{
    QUrl result;
    call(worker, "url", Q_RETURN_ARG(QUrl, result));
    return result;
}

void RS232Tunnel::closeTunnel()
{
    call(worker, "closeTunnel");
}

} // namespace SondixQt
