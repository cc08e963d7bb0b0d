// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sensorfinder.h>

#include <QList>
#include <QObject>
#include <QSet>
#include <QString>

namespace SondixApp {

/// One search from start to end, with a single signal for its end however it came about.
///
/// Needs a running event loop on its thread.
class SearchRun : public QObject
{
    Q_OBJECT
public:
    enum End {
        Completed, ///< everything that was asked for has been searched
        Stopped,   ///< stop() was called
        Refused,   ///< the sensor-access library refused: problem() says what
    };
    Q_ENUM(End)

    struct Plan
    {
        QList<SondixQt::SensorType> types;
        QList<SondixQt::SensorType> announced; ///< only sensors of these models; empty: all that answer
        SondixQt::SensorInterfaces interfaces;
        QString baudrates; ///< as the sensor-access library takes them; empty: its own choice
        bool similar = false;
        bool quick = true;
    };

    explicit SearchRun(const Plan &plan, QObject *parent = nullptr);

    /// Has the sensor-access library log the search into \a file; without effect when that is empty.
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
