// SPDX-License-Identifier: MIT
#include "searchrun.h"

#include "sensoropener.h"

#include <SondixQt/interfaceparameters.h>

#include <QTimer>

using namespace SondixQt;

namespace SondixApp {

SearchRun::SearchRun(const Plan &plan, QObject *parent)
    : QObject(parent)
    , m_plan(plan)
{
    m_finder.setSearchInterface(SensorInterfaces(~0), false);
    m_finder.setSearchInterface(plan.interfaces, true);
    m_finder.setSearchBaudrates(plan.baudrates);
    m_finder.setSearchSimilarSensors(plan.similar);
    m_finder.setQuickScanRS485(plan.quick);

    connect(&m_finder, &SensorFinder::sensorFound, this, &SearchRun::onSensorFound);
    connect(&m_finder, &SensorFinder::progressChanged, this, &SearchRun::progressChanged);
    connect(&m_finder, &SensorFinder::updateSensorFinderStatus, this, &SearchRun::statusText);
    connect(&m_finder, &SensorFinder::statusChanged, this, &SearchRun::onStatusChanged);
    connect(&m_finder, &SensorFinder::searchFinished, this, [this] { end(m_stopping ? Stopped : Completed); });
}

void SearchRun::setLogFile(const QString &file)
{
    if (!file.isEmpty())
        m_finder.enableLogging(file);
}

void SearchRun::start()
{
    m_running = true;
    const QString problem = creationProblemOfAll();
    if (!problem.isEmpty()) {
        end(Refused, problem);
        return;
    }
    // A search for a single type includes its companion types, a search for a list does not.
    if (m_plan.types.size() == 1)
        m_finder.startSearch(m_plan.types.first());
    else
        m_finder.startSearch(m_plan.types, true);
}

void SearchRun::stop()
{
    if (!m_running)
        return;
    m_stopping = true;
    m_finder.stopSearch();
}

void SearchRun::onStatusChanged(SensorFinder::Status status)
{
    if (status != SensorFinder::Error)
        return;
    // The finder also enters this state briefly when it skips a model: check whether it stays in it.
    QTimer::singleShot(0, this, [this] {
        if (m_finder.status() == SensorFinder::Error)
            end(Refused, QStringLiteral("the sensor-access library refused the search"));
    });
}

void SearchRun::onSensorFound(const SensorInfo &info)
{
    // Ethernet and USB are scanned even if they are not requested.
    if (!m_plan.interfaces.testFlag(info.interfaceType()))
        return;
    if (!m_plan.announced.isEmpty() && !m_plan.announced.contains(info.sensorType()))
        return;
    // Searches for different families may report the same sensor with different details; the finder announces both.
    const QString sensor = SensorAddress::of(info).toString() + QLatin1Char(' ') +
                           info.getParameter(InterfaceParameter::SerialNumber).toString();
    if (m_announced.contains(sensor))
        return;
    m_announced += sensor;
    Q_EMIT sensorFound(info);
}

void SearchRun::end(End end, const QString &problem)
{
    if (!m_running)
        return;
    m_running = false;
    m_problem = problem;
    Q_EMIT finished(end);
}

QString SearchRun::creationProblemOfAll() const
{
    QString problem;
    for (const SensorType type : m_plan.types) {
        const SensorInstance instance(type);
        if (instance.isValid())
            return QString();
        problem = creationProblem(instance);
    }
    return problem;
}

} // namespace SondixApp
