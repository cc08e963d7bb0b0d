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

namespace {

using namespace std::chrono_literals;

constexpr auto progressInterval = 250ms;
constexpr auto statusLineLifetime = 15s;

/// The maximum number of results for one type. A larger count is a corrupt answer and must not block the finder.
constexpr int maxResultCount = 10000;

constexpr QLatin1String progressCommand = "Get_FindSensorProgress"_latin1;
constexpr QLatin1String progressAnswer = "IA_Progress"_latin1;

/// The number of queries of the progress that fail in a row, two seconds of them, before this is reported as an error.
constexpr int reportedFailureCount = 8;

/// Replaces infinity and NaN in the answer of the library by 0.
double finiteProgress(double progress)
{
    return std::isfinite(progress) ? progress : 0.0;
}

double progressPerBaseType(const QList<SensorType> &types)
{
    QSet<SensorType> baseTypes;
    for (SensorType type : types)
        baseTypes.insert(baseType(type));
    return 1.0 / baseTypes.size();
}

/// The text of a failure: \a what, and the reason that the sensor-access library gives, or \a otherwise if it gives none.
QString explained(const QString &what, const QString &reason, const QString &otherwise)
{
    return QStringLiteral("%1: %2").arg(what, reason.isEmpty() ? otherwise : reason);
}

QString explained(const QString &what, const QString &reason, ErrorCode code)
{
    return explained(what, reason, QStringLiteral("error %1").arg(code));
}

} // namespace

SensorFinderPrivate::SensorFinderPrivate(SensorFinder *finder)
    : progressTimer(new QTimer(finder))
    , q_ptr(finder)
{
    progressTimer->setInterval(progressInterval);
    QObject::connect(progressTimer, &QTimer::timeout, finder, [this] { updateProgress(); });
}

void SensorFinderPrivate::beginRequest()
{
    ++request;
    progressTimer->stop(); // or the previous search would go on inside a slot's nested event loop
    error = NoError;
    errorString.clear();
}

void SensorFinderPrivate::start(const QList<SensorType> &types, bool showType,
                                const std::optional<FullSearch> &full)
{
    Q_Q(SensorFinder);
    if (!types.isEmpty())
        beginRequest();
    const Interruption interruption(this);
    Q_EMIT q->updateSensorFinderStatus(QStringLiteral("Multiple device scan started..."));
    if (interruption.happened())
        return;
    Q_EMIT q->searchStarted();
    if (interruption.happened())
        return;

    if (types.isEmpty()) {
        pendingTypes.clear();
        emitFinished();
    } else {
        begin(types, showType, full);
    }
}

void SensorFinderPrivate::begin(const QList<SensorType> &types, bool showType,
                                const std::optional<FullSearch> &full)
{
    pendingTypes = types;
    showSondixQtType = showType;
    fullSearch = full;
    foundIdentities.clear();
    progressOffset = 0.0;
    progressScale = progressPerBaseType(types);
    progressProblem.clear();
    failedQueries = 0;
    searchTime.start();
    startSearchInternal(pendingTypes.takeFirst());
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

    QString errorText;
    const ErrorCode result = sendStartCommand(type, &errorText);
    if (result == NoError) {
        processedResultCount = 0;
        updateStatus(SensorFinder::Searching);
        return;
    }
    setError(result, explained(QStringLiteral("the search for %1 was refused").arg(name), errorText, result));
    updateStatus(SensorFinder::Error);
    if (!interruption.happened())
        emitError();
}

void SensorFinderPrivate::skipType(const QString &name)
{
    Q_Q(SensorFinder);
    const Interruption interruption(this);
    Q_EMIT q->updateSensorFinderStatus(QStringLiteral("Skipping device scan for:  %1 ...").arg(name));
    if (interruption.happened())
        return;
    QString errorText;
    sensorInstance.checkError(SkippedError, &errorText, false);
    setError(SkippedError, explained(QStringLiteral("%1 cannot be searched for").arg(name), errorText,
                                     QStringLiteral("the sensor-access library does not support it")));
    updateStatus(SensorFinder::Error);
    if (interruption.happened())
        return;

    if (!pendingTypes.isEmpty()) {
        updateStatus(SensorFinder::Searching); // updateProgress() starts the next type
        if (!interruption.happened())
            emitError();
        return;
    }
    emitError();
    if (interruption.happened())
        return;
    stopSearch();
    if (interruption.happened())
        return;
    sensorInstance.disableLogging();
    emitFinished();
}

ErrorCode SensorFinderPrivate::sendStartCommand(SensorType type, QString *errorText)
{
    const SensorInterface card = searchRow(type).card;
    const SensorInterfaces interfaces = fullSearch ? fullSearch->interfaces : searchInterfaces;
    const auto scans = [&](SensorInterface iface) { return interfaces.testFlag(iface) || card == iface; };
    const bool findSimilar = isVariant(sensorInstance.sensorTypeFull()) || acceptsSimilarSensors();

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
    return sensorInstance.sendCommand(QStringLiteral("Start_FindSensor"), parameters, errorText);
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
    if (interruption.happened())
        return;
    if (failedQueries == reportedFailureCount) {
        setError(progressError, QStringLiteral("the search goes on") + progressProblem);
        emitError();
        if (interruption.happened())
            return;
    }
    const bool isComplete = qFuzzyCompare(progress, 100.0);
    if (isTimeOver() && !(isComplete && pendingTypes.isEmpty())) {
        endAtTimeLimit();
        return;
    }
    if (!isComplete)
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
    QString errorText;
    const ErrorCode result = sensorInstance.sendCommand(progressCommand, QMap<QString, QVariant>(), results,
                                                        &errorText, SensorInstance::ReadAfterSuccess);
    progressError = result;
    progressProblem.clear();
    if (result == NoError) {
        failedQueries = 0;
    } else {
        ++failedQueries;
        progressProblem = explained(QStringLiteral("; its progress cannot be read"), errorText, result);
    }
    progress = result == NoError ? finiteProgress(progress) : 0.0;
    return result == NoError;
}

bool SensorFinderPrivate::isTimeOver() const
{
    return status == SensorFinder::Searching && timeLimit.count() > 0 && searchTime.elapsed() >= timeLimit.count();
}

void SensorFinderPrivate::endAtTimeLimit()
{
    const Interruption interruption(this);
    setError(TimeLimitError,
             QStringLiteral("the search did not end within %1 s").arg(double(timeLimit.count()) / 1000.0) +
                 progressProblem);
    emitError();
    if (!interruption.happened())
        stopSearch();
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
           (found != NoSensor && found == searchRow(currentSearchType).alsoFinds) || acceptsSimilarSensors();
}

bool SensorFinderPrivate::acceptsSimilarSensors() const
{
    return searchSimilarSensors || (fullSearch && fullSearch->similar);
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
    // Last, because a slot may start the next search here.
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

    QString errorText;
    const ErrorCode result = sensorInstance.isValid()
                                 ? sensorInstance.sendCommand(QStringLiteral("Abort_FindSensor"), &errorText)
                                 : NoError;
    if (result != NoError)
        setError(result, explained(QStringLiteral("the search could not be aborted"), errorText, result));
    updateStatus(sensorInstance.isValid() && result == NoError ? SensorFinder::Ready : SensorFinder::Error);
    if (interruption.happened())
        return false;
    if (result != NoError)
        emitError();
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

/// Set before the status, so that the slots of statusChanged() see it.
void SensorFinderPrivate::setError(ErrorCode code, const QString &text)
{
    error = code;
    errorString = text;
}

void SensorFinderPrivate::emitError()
{
    Q_Q(SensorFinder);
    Q_EMIT q->errorOccurred(error, errorString);
}

void SensorFinderPrivate::emitFinished()
{
    Q_Q(SensorFinder);
    const RequestMark stopping(this, &SensorFinderPrivate::stoppingRequest);
    Q_EMIT q->searchFinished();
}

} // namespace SondixQt
