// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sensorfinder.h>

#include <QList>
#include <QObject>
#include <QSet>
#include <QString>

namespace SondixApp {

/// Runs one search and emits finished() exactly once, however the search ends.
///
/// Threads: one, with a running event loop.
class SearchRun : public QObject
{
    Q_OBJECT
public:
    enum End {
        Completed, ///< the search is complete
        Stopped,   ///< stop() was called
        Refused,   ///< the sensor-access library refused the search, see problem()
    };
    Q_ENUM(End)

    struct Plan
    {
        QList<SondixQt::SensorType> types;
        QList<SondixQt::SensorType> announced; ///< announce only sensors of these models; empty: all
        SondixQt::SensorInterfaces interfaces;
        QString baudrates; ///< comma-separated list; empty: defaults of the sensor-access library
        bool similar = false;
        bool quick = true;
    };

    explicit SearchRun(const Plan &plan, QObject *parent = nullptr);

    /// Makes the sensor-access library log the search to \a file. Does nothing if \a file is empty.
    void setLogFile(const QString &file);
    void start();
    /// Aborts the search in the sensor-access library.
    void stop();

    QString problem() const { return m_problem; }

Q_SIGNALS:
    void sensorFound(const SondixQt::SensorInfo &info);
    void progressChanged(int percent);
    void statusText(const QString &text);
    void finished(SondixApp::SearchRun::End end);

private:
    void onStatusChanged(SondixQt::SensorFinder::Status status);
    void onSensorFound(const SondixQt::SensorInfo &info);
    void end(End end, const QString &problem = QString());
    QString creationProblemOfAll() const;

    Plan m_plan;
    SondixQt::SensorFinder m_finder;
    QSet<QString> m_announced;
    QString m_problem;
    bool m_running = false;
    bool m_stopping = false;
};

} // namespace SondixApp
