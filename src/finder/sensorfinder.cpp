// SPDX-License-Identifier: MIT
#include "sensorfinder_p.h"

#include "catalogue/basetype_p.h"
#include "catalogue/interfaceparameters.h"
#include "catalogue/searchtables_p.h"
#include "sondix/latin1literal_p.h"

#include <QSet>

#include <algorithm>
#include <cmath>
#include <utility>

namespace SondixQt {

Q_LOGGING_CATEGORY(sensorFinderLog, "SondixQt.SensorFinder")

namespace {

using namespace std::chrono_literals;

constexpr auto progressInterval = 250ms;
constexpr auto statusLineLifetime = 15s;

/// The maximum number of results for one type. A larger count is a corrupt answer and must not block the finder.
constexpr int maxResultCount = 10000;

constexpr QLatin1String progressCommand = "Get_FindSensorProgress"_latin1;
constexpr QLatin1String progressAnswer = "IA_Progress"_latin1;

/// Replaces infinity and NaN in the answer of the library by 0.
double finiteProgress(double progress)
{
    return std::isfinite(progress) ? progress : 0.0;
}

/// The types that are always searched together with \a type, \a type first; empty if it is searched alone.
QList<SensorType> typesSearchedTogether(SensorType type)
{
    const ConstantList<SensorType> types = searchRow(type).companions;
    return QList<SensorType>(types.begin(), types.end());
}

double progressPerBaseType(const QList<SensorType> &types)
{
    QSet<SensorType> baseTypes;
    for (SensorType type : types)
        baseTypes.insert(baseType(type));
    return 1.0 / baseTypes.size();
}

void registerMetaTypes()
{
    static const bool registered = [] {
        qRegisterMetaType<SensorType>("SondixQt::SensorType");
        qRegisterMetaType<QList<SensorType>>("QList<SondixQt::SensorType>");
        qRegisterMetaType<SensorInfo>("SondixQt::SensorInfo");
        qRegisterMetaType<SensorFinder::Status>("SondixQt::SensorFinder::Status");
        return true;
    }();
    Q_UNUSED(registered)
}

} // namespace

SensorFinderPrivate::SensorFinderPrivate(SensorFinder *finder)
    : progressTimer(new QTimer(finder))
    , q_ptr(finder)
{
    progressTimer->setInterval(progressInterval);
    QObject::connect(progressTimer, &QTimer::timeout, finder, [this] { updateProgress(); });
}

SensorFinder::SensorFinder(QObject *parent)
    : QObject(parent)
    , d_ptr(new SensorFinderPrivate(this))
{
    registerMetaTypes();
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

SensorFinder::Status SensorFinder::status() const
{
    return d_func()->status;
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
    d->showSondixQtType = true;
    d->foundIdentities.clear();
    d->pendingTypes.clear();
    d->progressOffset = 0.0;
    d->progressScale = 1.0;
    d->startSearchInternal(type);
}

void SensorFinder::startSearch(QList<SensorType> sensorTypeList, bool showSondixQtType)
{
    Q_D(SensorFinder);
    // startSearchInternal() does nothing for NoSensor: such an entry in the queue would stall the search.
    sensorTypeList.removeAll(NoSensor);
    if (!sensorTypeList.isEmpty())
        d->beginRequest();
    const Interruption interruption(d);
    Q_EMIT updateSensorFinderStatus(QStringLiteral("Multiple device scan started..."));
    if (interruption.happened())
        return;
    Q_EMIT searchStarted();
    if (interruption.happened())
        return;

    d->pendingTypes = sensorTypeList;
    if (sensorTypeList.isEmpty()) {
        d->emitFinished();
        return;
    }
    d->showSondixQtType = showSondixQtType;
    d->foundIdentities.clear();
    d->progressOffset = 0.0;
    d->progressScale = progressPerBaseType(sensorTypeList);
    d->startSearchInternal(d->pendingTypes.takeFirst());
}

void SensorFinder::startSearch(SensorGroups groups)
{
    startSearch(sensorsInGroup(groups), false);
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

void SensorFinderPrivate::beginRequest()
{
    ++request;
    progressTimer->stop(); // or the previous search would go on inside a slot's nested event loop
}

void SensorFinderPrivate::startSearchInternal(SensorType type)
{
    Q_Q(SensorFinder);
    if (type == NoSensor)
        return;

    const Interruption interruption(this);
    const RequestMark busy(this, &SensorFinderPrivate::busyRequest);
    sensorInstance.release();
    currentSearchType = type;
    sensorInstance = SensorInstance(type);

    const bool showRequestedType = pendingTypes.isEmpty() || showSondixQtType;
    const QString name = sensorName(showRequestedType ? type : sensorInstance.sensorType());
    qCDebug(sensorFinderLog).noquote() << QStringLiteral("searching: ") + name + QStringLiteral("\r\n");
    progressTimer->start();

    if (!sensorInstance.isValid()) {
        skipType(name);
        return;
    }
    Q_EMIT q->updateSensorFinderStatus(QStringLiteral("Searching for device:  %1 ...").arg(name));
    if (interruption.happened())
        return;

    if (loggingEnabled)
        sensorInstance.enableLogging(logFile);
    else
        sensorInstance.disableLogging();

    const ErrorCode result = sendStartCommand(type);
    if (result == NoError)
        processedResultCount = 0;
    updateStatus(result == NoError ? SensorFinder::Searching : SensorFinder::Error);
}

void SensorFinderPrivate::skipType(const QString &name)
{
    Q_Q(SensorFinder);
    const Interruption interruption(this);
    Q_EMIT q->updateSensorFinderStatus(QStringLiteral("Skipping device scan for:  %1 ...").arg(name));
    if (interruption.happened())
        return;
    updateStatus(SensorFinder::Error);
    if (interruption.happened())
        return;

    if (!pendingTypes.isEmpty()) {
        updateStatus(SensorFinder::Searching); // updateProgress() starts the next type
        return;
    }
    stopSearch();
    if (interruption.happened())
        return;
    sensorInstance.disableLogging();
    emitFinished();
}

ErrorCode SensorFinderPrivate::sendStartCommand(SensorType type)
{
    const SensorInterface card = searchRow(type).card;
    const auto scans = [&](SensorInterface iface) { return searchInterfaces.testFlag(iface) || card == iface; };
    const bool findSimilar = isVariant(sensorInstance.sensorTypeFull()) || searchSimilarSensors;

    // Ethernet and USB scans are fast and therefore always enabled, whatever interfaces are selected.
    const QMap<QString, QVariant> parameters = {
        {InterfaceParameter::SensorType, int(type)},
        {QStringLiteral("IP_FindSimilarSensors"), findSimilar},
        {QStringLiteral("IP_ForceScanUsedChannel"), forceScanXA200ETH},
        {QStringLiteral("IP_ScanHWTCPIP"), true},
        {QStringLiteral("IP_ScanHWRS232"), scans(RS232) && card == NoInterface},
        {QStringLiteral("IP_ScanHWXA100_USB"), scans(XA100_USB)},
        {QStringLiteral("IP_ScanHWXA100"), scans(XA100)},
        {QStringLiteral("IP_ScanHWXA200"), scans(XA200)},
        {QStringLiteral("IP_ScanHWXA200_ETH"), scans(XA200_ETH)},
        {QStringLiteral("IP_ScanHWDriverX_USB"), true},
        {QStringLiteral("IP_ScanHWUSBIO"), true},
        {QStringLiteral("IP_ScanHWWinUSB"), true},
        {QStringLiteral("IP_QuickScanRS485"), quickScanRS485},
        {QStringLiteral("IP_Baudrates"), searchBaudrates},
    };
    return sensorInstance.sendCommand(QStringLiteral("Start_FindSensor"), parameters, nullptr);
}

void SensorFinderPrivate::updateProgress()
{
    Q_Q(SensorFinder);
    // Re-entered from a nested event loop in one of our own slots: skip this tick.
    if (busyRequest == request)
        return;
    if (status != SensorFinder::Searching) {
        progressTimer->stop();
        return;
    }

    const Interruption interruption(this);
    const RequestMark busy(this, &SensorFinderPrivate::busyRequest);
    double progress = 0.0;
    if (sensorInstance.isValid()) {
        int found = 0;
        if (readProgress(progress, found))
            updateResults(found);
    } else if (pendingTypes.isEmpty()) {
        stopSearch();
    } else {
        startSearchInternal(pendingTypes.takeFirst());
    }
    if (interruption.happened())
        return;

    const double total = progress * progressScale + progressOffset;
    Q_EMIT q->progressChanged(int(qBound(0.0, total, 100.0)));
    if (interruption.happened() || !qFuzzyCompare(progress, 100.0))
        return;

    progressTimer->stop();
    if (pendingTypes.isEmpty()) {
        stopSearch();
        return;
    }
    progressOffset = total;
    if (status == SensorFinder::Searching)
        startSearchInternal(pendingTypes.takeFirst());
}

bool SensorFinderPrivate::readProgress(double &progress, int &found)
{
    const QMap<QString, QVariant> results = {
        {progressAnswer, SensorInstance::resultPointer(&progress)},
        {QStringLiteral("IA_Found"), SensorInstance::resultPointer(&found)},
    };
    const ErrorCode result = sensorInstance.sendCommand(progressCommand, QMap<QString, QVariant>(), results,
                                                        nullptr, SensorInstance::ReadAfterSuccess);
    progress = result == NoError ? finiteProgress(progress) : 0.0;
    return result == NoError;
}

void SensorFinderPrivate::updateResults(int found)
{
    const int count = qBound(0, found, maxResultCount);
    const int first = std::exchange(processedResultCount, count);
    const Interruption interruption(this);
    for (int i = first; i < count; ++i) {
        const SensorInfo result = getResultInfo(i);
        if (!isWanted(result.sensorType()))
            continue;
        const QList<SensorInfo> records = AnalyseScanResult(result);
        for (auto record = records.crbegin(); record != records.crend(); ++record) {
            AddScanResult(*record);
            if (interruption.happened())
                return;
        }
    }
    if (sensorInstance.isValid())
        dropCoveredTypes();
}

bool SensorFinderPrivate::isWanted(SensorType found) const
{
    return found % 1000 == currentSearchType || pendingTypes.contains(found) || found == currentSearchType ||
           (found != NoSensor && found == searchRow(currentSearchType).alsoFinds) || searchSimilarSensors;
}

/// When the search is complete, removes the pending types that it has covered: those of the same base type.
void SensorFinderPrivate::dropCoveredTypes()
{
    double progress = 0.0;
    sensorInstance.sendCommandGetDouble(progressCommand, progressAnswer, progress, nullptr);
    if (finiteProgress(progress) < 100.0)
        return;
    const auto isCovered = [this](SensorType type) { return baseType(type) == baseType(currentSearchType); };
    pendingTypes.erase(std::remove_if(pendingTypes.begin(), pendingTypes.end(), isCovered), pendingTypes.end());
}

void SensorFinderPrivate::stopSearch()
{
    Q_Q(SensorFinder);
    const Interruption interruption(this);
    const RequestMark stopping(this, &SensorFinderPrivate::stoppingRequest);
    if (status == SensorFinder::Searching && !abortSearch())
        return;

    sensorInstance.disableLogging();
    progressTimer->stop();
    processedResultCount = 0;
    QTimer::singleShot(statusLineLifetime, q, [q] { Q_EMIT q->updateSensorFinderStatus(QStringLiteral(" ")); });
    Q_EMIT q->searchFinished();
}

/// Returns false if a slot interrupted the step.
bool SensorFinderPrivate::abortSearch()
{
    Q_Q(SensorFinder);
    const Interruption interruption(this);
    updateStatus(SensorFinder::Ready);
    if (interruption.happened())
        return false;

    const bool aborted =
        sensorInstance.isValid() && sensorInstance.sendCommand(QStringLiteral("Abort_FindSensor")) == NoError;
    updateStatus(aborted ? SensorFinder::Ready : SensorFinder::Error);
    if (interruption.happened())
        return false;

    if (foundIdentities.empty()) {
        Q_EMIT q->showNothingFoundMsg();
        if (interruption.happened())
            return false;
    }
    Q_EMIT q->updateSensorFinderStatus(
        QStringLiteral("Scan finished, devices found: %1").arg(foundIdentities.size()));
    return !interruption.happened();
}

void SensorFinderPrivate::updateStatus(SensorFinder::Status newStatus)
{
    Q_Q(SensorFinder);
    status = newStatus;
    Q_EMIT q->statusChanged(newStatus);
}

void SensorFinderPrivate::emitFinished()
{
    Q_Q(SensorFinder);
    const RequestMark stopping(this, &SensorFinderPrivate::stoppingRequest);
    Q_EMIT q->searchFinished();
}

} // namespace SondixQt
