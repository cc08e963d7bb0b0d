// SPDX-License-Identifier: MIT
#include "diskthread.h"

#include "threadend.h"

#include <QMutex>
#include <QThread>

#include <atomic>

namespace Explorer {

namespace {

std::atomic<int> writesUnderWay{0};

struct Delay
{
    QMutex mutex;
    std::function<void()> wait;
};

Delay &testDelay()
{
    static Delay delay;
    return delay;
}

} // namespace

UnfinishedWrite::UnfinishedWrite()
{
    ++writesUnderWay;
}

UnfinishedWrite::~UnfinishedWrite()
{
    --writesUnderWay;
}

DiskThread::DiskThread(QObject *parent)
    : QObject(parent)
{
}

DiskThread::~DiskThread()
{
    if (!m_thread)
        return;
    // Behind the work that waits: QThread::quit() at once would leave it undone.
    QMetaObject::invokeMethod(
        m_worker, [thread = m_thread] { thread->quit(); }, Qt::QueuedConnection);
    constexpr unsigned long endWaitMs = 50;
    finishThread(m_thread, endWaitMs);
}

void DiskThread::run(Purpose purpose, const std::function<void()> &work, const std::function<void()> &done)
{
    if (!m_thread) {
        auto *const worker = new DiskWorker;
        m_thread = new QThread;
        m_worker = worker;
        worker->moveToThread(m_thread);
        connect(m_thread, &QThread::finished, worker, &QObject::deleteLater);
        connect(worker, &DiskWorker::ended, this, [this] {
            const std::function<void()> next = m_done.front();
            m_done.pop_front();
            if (next)
                next();
        });
        m_thread->start();
    }
    m_done.push_back(done);
    const int writes = purpose == Writing ? 1 : 0;
    writesUnderWay += writes;
    QMetaObject::invokeMethod(
        m_worker,
        [worker = static_cast<DiskWorker *>(m_worker), work = std::function<void()>(work), writes]() mutable {
            waitForTest();
            work();
            work = nullptr; // the end of what it owns may write as well
            writesUnderWay -= writes;
            Q_EMIT worker->ended();
        },
        Qt::QueuedConnection);
}

int DiskThread::unfinishedWrites()
{
    return writesUnderWay;
}

void DiskThread::setDelay(const std::function<void()> &wait)
{
    const QMutexLocker lock(&testDelay().mutex);
    testDelay().wait = wait;
}

void DiskThread::waitForTest()
{
    std::function<void()> wait;
    {
        const QMutexLocker lock(&testDelay().mutex);
        wait = testDelay().wait;
    }
    if (wait)
        wait();
}

} // namespace Explorer
