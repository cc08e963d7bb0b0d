// SPDX-License-Identifier: MIT
#include "sensorsearch.h"

#include "threadend.h"

#include <SondixQt/sensoraddress.h>

#include <QThread>

using namespace SondixQt;

namespace Explorer {

/// Owns the finder and lives in its thread. It does not know the SensorSearch, which may be gone when a call returns.
class SearchWorker : public QObject
{
    Q_OBJECT
public:
    SearchWorker()
        : m_finder(new SensorFinder(this))
    {
        connect(m_finder, &SensorFinder::sensorFound, this, &SearchWorker::sensorFound);
        connect(m_finder, &SensorFinder::progressChanged, this, &SearchWorker::progressChanged);
        connect(m_finder, &SensorFinder::updateSensorFinderStatus, this, &SearchWorker::statusChanged);
        connect(m_finder, &SensorFinder::searchFinished, this, &SearchWorker::ended);
        connect(m_finder, &SensorFinder::errorOccurred, this, [this](ErrorCode, const QString &text) {
            Q_EMIT problemOccurred(text);
            // A search that the library refuses ends without searchFinished().
            if (m_finder->status() != SensorFinder::Searching)
                Q_EMIT ended();
        });
    }

    void start(const SearchScope &scope)
    {
        m_finder->setSearchInterface(SensorInterfaces(~0), false);
        m_finder->setSearchInterface(scope.interfaces, true);
        if (scope.model != NoSensor)
            m_finder->startSearch(scope.model);
        else
            m_finder->startFullSearch(scope.interfaces, scope.group);
    }

    void stop() { m_finder->stopSearch(); }

Q_SIGNALS:
    void sensorFound(const SondixQt::SensorInfo &info);
    void progressChanged(int percent);
    void statusChanged(const QString &text);
    void problemOccurred(const QString &text);
    void ended();

private:
    SensorFinder *const m_finder;
};

SensorSearch::SensorSearch(QObject *parent)
    : QObject(parent)
{
}

SensorSearch::~SensorSearch()
{
    constexpr unsigned long longestWait = 2000;
    if (!m_thread)
        return;
    m_worker->disconnect(this);
    m_thread->quit(); // the worker is deleted at the end of the thread, which aborts its search
    finishThread(m_thread, longestWait);
}

void SensorSearch::startThread()
{
    if (m_thread)
        return;
    m_thread = new QThread;
    m_thread->setObjectName(QStringLiteral("SensorSearch"));
    m_worker = new SearchWorker;
    m_worker->moveToThread(m_thread);
    connect(m_thread, &QThread::finished, m_worker, &QObject::deleteLater);
    connect(m_worker, &SearchWorker::sensorFound, this, &SensorSearch::takeSensor);
    connect(m_worker, &SearchWorker::progressChanged, this, &SensorSearch::progressChanged);
    connect(m_worker, &SearchWorker::problemOccurred, this, &SensorSearch::problemOccurred);
    connect(m_worker, &SearchWorker::ended, this, &SensorSearch::end);
    connect(m_worker, &SearchWorker::statusChanged, this,
            [this](const QString &text) { Q_EMIT statusChanged(text.trimmed()); });
    m_thread->start();
}

void SensorSearch::start(const SearchScope &scope)
{
    if (m_isRunning)
        return;
    startThread();
    m_isRunning = true;
    m_scope = scope;
    m_known.clear();
    Q_EMIT started();
    Q_EMIT progressChanged(0);
    SearchWorker *const worker = m_worker;
    QMetaObject::invokeMethod(
        worker, [worker, scope] { worker->start(scope); }, Qt::QueuedConnection);
}

void SensorSearch::cancel()
{
    SearchWorker *const worker = m_worker;
    if (m_isRunning)
        QMetaObject::invokeMethod(
            worker, [worker] { worker->stop(); }, Qt::QueuedConnection);
}

void SensorSearch::takeSensor(const SensorInfo &info)
{
    // The search for a single model scans Ethernet and USB as well, and may find a sensor several times.
    const bool isInScope = m_scope.interfaces.testFlag(info.interfaceType());
    const QString key = SensorAddress::of(info).toString();
    if (!m_isRunning || !isInScope || m_known.contains(key))
        return;
    m_known.insert(key);
    Q_EMIT sensorFound(info);
}

void SensorSearch::end()
{
    if (!m_isRunning)
        return;
    m_isRunning = false;
    Q_EMIT finished();
}

} // namespace Explorer

#include "sensorsearch.moc"
