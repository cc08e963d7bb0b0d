// SPDX-License-Identifier: MIT
#include "sensorfinder_p.h"

#include "catalogue/searchtables_p.h"
#include "searchplan_p.h"

namespace SondixQt {

Q_LOGGING_CATEGORY(sensorFinderLog, "SondixQt.SensorFinder")

namespace {

/// The types that are always searched together with \a type, \a type first; empty if it is searched alone.
QList<SensorType> typesSearchedTogether(SensorType type)
{
    const ConstantList<SensorType> types = searchRow(type).companions;
    return QList<SensorType>(types.begin(), types.end());
}

void registerFinderTypes()
{
    static const bool registered = [] {
        qRegisterMetaType<SensorType>("SondixQt::SensorType");
        qRegisterMetaType<QList<SensorType>>("QList<SondixQt::SensorType>");
        qRegisterMetaType<SensorInfo>("SondixQt::SensorInfo");
        qRegisterMetaType<SensorFinder::Status>("SondixQt::SensorFinder::Status");
        qRegisterMetaType<SensorInterfaces>("SondixQt::SensorInterfaces");
        qRegisterMetaType<SensorGroups>("SondixQt::SensorGroups");
        return true;
    }();
    Q_UNUSED(registered)
}

} // namespace

SensorFinder::SensorFinder(QObject *parent)
    : QObject(parent)
    , d_ptr(new SensorFinderPrivate(this))
{
    registerFinderTypes();
}

SensorFinder::~SensorFinder()
{
    Q_D(SensorFinder);
    if (d->status != Ready) {
        blockSignals(true);
        d->stopSearch();
    }
}

void SensorFinder::setSearchInterface(SensorInterfaces interfaces, bool enable)
{
    Q_D(SensorFinder);
    if (enable)
        d->searchInterfaces |= interfaces;
    else
        d->searchInterfaces &= ~interfaces;
}

void SensorFinder::setSearchBaudrates(const QString &baudrates)
{
    d_func()->searchBaudrates = baudrates;
}

void SensorFinder::setQuickScanRS485(bool enable)
{
    d_func()->quickScanRS485 = enable;
}

bool SensorFinder::quickScanRS485() const
{
    return d_func()->quickScanRS485;
}

bool SensorFinder::quickScanRS485Supported(SensorType type) const
{
    return searchRow(type).quickScan;
}

void SensorFinder::setSearchSimilarSensors(bool enable)
{
    d_func()->searchSimilarSensors = enable;
}

bool SensorFinder::searchSimilarSensors() const
{
    return d_func()->searchSimilarSensors;
}

void SensorFinder::setForceScanXA200ETH(bool enable)
{
    d_func()->forceScanXA200ETH = enable;
}

void SensorFinder::setSensorType(SensorType) {}

void SensorFinder::setOutputFoundSensorBlacklist(const QList<SensorInfo> &blacklist)
{
    d_func()->setBlacklist(blacklist);
}

void SensorFinder::enableLogging()
{
    d_func()->loggingEnabled = true;
}

void SensorFinder::enableLogging(const QString &file)
{
    Q_D(SensorFinder);
    d->logFile = file;
    d->loggingEnabled = true;
}

void SensorFinder::disableLogging()
{
    d_func()->loggingEnabled = false;
}

void SensorFinder::setTimeLimit(std::chrono::milliseconds limit)
{
    d_func()->timeLimit = limit;
}

std::chrono::milliseconds SensorFinder::timeLimit() const
{
    return d_func()->timeLimit;
}

SensorFinder::Status SensorFinder::status() const
{
    return d_func()->status;
}

ErrorCode SensorFinder::error() const
{
    return d_func()->error;
}

QString SensorFinder::errorString() const
{
    return d_func()->errorString;
}

void SensorFinder::startSearch(SensorType type)
{
    Q_D(SensorFinder);
    if (type != NoSensor)
        d->beginRequest();
    const Interruption interruption(d);
    Q_EMIT updateSensorFinderStatus(QStringLiteral("Sensor scan started..."));
    if (interruption.happened())
        return;
    Q_EMIT searchStarted();
    if (interruption.happened())
        return;

    if (type == NoSensor) {
        d->emitFinished();
        return;
    }
    const QList<SensorType> types = typesSearchedTogether(type);
    if (!types.isEmpty()) {
        startSearch(types, true);
        return;
    }
    d->begin({type}, true);
}

void SensorFinder::startSearch(QList<SensorType> sensorTypeList, bool showSondixQtType)
{
    // startSearchInternal() does nothing for NoSensor: such an entry in the queue would stall the search.
    sensorTypeList.removeAll(NoSensor);
    d_func()->start(sensorTypeList, showSondixQtType);
}

void SensorFinder::startSearch(SensorGroups groups)
{
    startSearch(sensorsInGroup(groups), false);
}

void SensorFinder::startFullSearch(SensorInterfaces interfaces, SensorGroups groups)
{
    QList<SensorType> wanted = sensorsInGroup(groups, true);
    if (groups == SensorGroups(AllGroups))
        wanted += MultiSensor; // it belongs to no group
    const SearchPlan plan = fewestSearches(wanted);
    d_func()->start(plan.types, true, FullSearch{interfaces, wanted, plan.similar, {}});
}

void SensorFinder::stopSearch()
{
    Q_D(SensorFinder);
    if (d->isStopUnderWay())
        return;
    ++d->request;
    d->stopSearch();
}

void SensorFinder::stopSensorFinderScan()
{
    Q_D(SensorFinder);
    if (d->isStopUnderWay())
        return;
    ++d->request;
    const Interruption interruption(d);
    d->stopSearch();
    if (interruption.happened())
        return;
    d->sensorInstance.disableLogging();
    d->emitFinished();
}

} // namespace SondixQt
