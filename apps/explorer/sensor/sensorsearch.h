// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sensorfinder.h>

#include <QObject>
#include <QSet>

class QThread;

namespace Explorer {

class SearchWorker;

/// What to search for, and where.
struct SearchScope
{
    SondixQt::SensorInterfaces interfaces{~0};
    SondixQt::SensorGroup group = SondixQt::AllGroups;
    SondixQt::SensorType model = SondixQt::NoSensor; ///< NoSensor: all models of the group
};

/// Searches for sensors in a thread of its own, because every query of the progress blocks the thread of a
/// SensorFinder until it is answered.
///
/// Threads: that of the window. No function waits; the destructor waits for two seconds at most. If a call is still
/// hanging in the sensor-access library then, the thread ends when the call returns.
class SensorSearch : public QObject
{
    Q_OBJECT
public:
    explicit SensorSearch(QObject *parent = nullptr);
    ~SensorSearch() override;

    bool isRunning() const { return m_isRunning; }
    /// Begins a search. Does nothing while one is running.
    void start(const SearchScope &scope);
    /// Ends the search as soon as the sensor-access library answers; finished() follows.
    void cancel();

Q_SIGNALS:
    void started();
    /// A sensor within the scope that this search had not found before.
    void sensorFound(const SondixQt::SensorInfo &info);
    void progressChanged(int percent);
    void statusChanged(const QString &text);
    /// A part of the search has failed; \a text is for users.
    void problemOccurred(const QString &text);
    /// The search is complete, was cancelled or has failed.
    void finished();

private:
    void startThread();
    void takeSensor(const SondixQt::SensorInfo &info);
    void end();

    QThread *m_thread = nullptr;
    SearchWorker *m_worker = nullptr; // lives in the thread
    SearchScope m_scope;
    QSet<QString> m_known;
    bool m_isRunning = false;
};

} // namespace Explorer
