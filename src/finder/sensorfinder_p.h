// SPDX-License-Identifier: MIT
#pragma once

#include "sensorfinder.h"

#include <SondixQt/sensorinstance.h>

#include <QList>
#include <QLoggingCategory>
#include <QPointer>
#include <QTimer>
#include <QVariant>

#include <array>
#include <limits>
#include <vector>

namespace SondixQt {

Q_DECLARE_LOGGING_CATEGORY(sensorFinderLog)

/// The values by which two answers are recognised as one sensor, the most telling ones first.
using SensorIdentity = std::array<QVariant, 13>;

/// The state of a SensorFinder and the steps of a search.
class SensorFinderPrivate
{
public:
    explicit SensorFinderPrivate(SensorFinder *finder);

    void beginRequest();
    void startSearchInternal(SensorType type);
    void stopSearch();
    void updateProgress();
    void updateResults(int found);
    void updateStatus(SensorFinder::Status newStatus);

    SensorInfo getResultInfo(int index);
    QList<SensorInfo> AnalyseScanResult(const SensorInfo &result) const;
    bool AddScanResult(const SensorInfo &result);

    void clearFoundSensors();
    void setBlacklist(const QList<SensorInfo> &blacklist);
    void emitFinished();

    /// Whether a slot asks to stop what is being stopped already.
    bool isStopUnderWay() const { return status != SensorFinder::Searching && stoppingRequest == request; }

    SensorType sensorType = NoSensor;
    SensorType currentSearchType = NoSensor;
    SensorInstance sensorInstance{NoSensor};
    bool searchSimilarSensors = false;
    bool forceScanXA200ETH = false;
    bool quickScanRS485 = true;
    SensorInterfaces searchInterfaces = SensorInterfaces(TCPIP | WinUSB);
    SensorFinder::Status status = SensorFinder::Ready;
    QTimer *progressTimer = nullptr;
    int processedResultCount = 0;
    QList<SensorType> pendingTypes;
    double progressOffset = 0.0;
    double progressScale = 1.0;
    QList<SensorInfo> foundSensors;
    QList<SensorInfo> outputFoundSensorBlacklist;
    bool loggingEnabled = false;
    QString logFile;
    QString searchBaudrates;
    bool showSondixQtType = false;

    // One for each entry of foundSensors and of outputFoundSensorBlacklist.
    std::vector<SensorIdentity> foundIdentities;
    std::vector<SensorIdentity> blacklistIdentities;

    // Counts the starts and stops that the application asks for. The other two name the request during
    // which a stop is announced, or a step of the search is taken that no timer tick may enter again.
    static constexpr quint64 noRequest = std::numeric_limits<quint64>::max();
    quint64 request = 0;
    quint64 stoppingRequest = noRequest;
    quint64 busyRequest = noRequest;

    SensorFinder *q_ptr;
    Q_DECLARE_PUBLIC(SensorFinder)

private:
    void skipType(const QString &name);
    ErrorCode sendStartCommand(SensorType type);
    bool abortSearch();
    bool readProgress(double &progress, int &found);
    void dropCoveredTypes();
    bool isWanted(SensorType found) const;
    bool isKnown(const SensorIdentity &identity, bool ignoreChannel) const;
};

/// Tells a step that has just emitted a signal whether a slot has meanwhile started or stopped a
/// search or has destroyed the finder. The step must then return at once.
class Interruption
{
public:
    explicit Interruption(SensorFinderPrivate *d)
        : finder(d->q_ptr)
        , priv(d)
        , request(d->request)
    {
    }

    bool finderGone() const { return finder.isNull(); }
    bool happened() const { return finderGone() || priv->request != request; }

private:
    QPointer<SensorFinder> finder;
    SensorFinderPrivate *priv;
    quint64 request;
};

/// Notes in one of the finder's marks that a request is being served, as long as this object lives.
class RequestMark
{
public:
    RequestMark(SensorFinderPrivate *d, quint64 SensorFinderPrivate::*member)
        : finder(d->q_ptr)
        , priv(d)
        , mark(member)
        , outer(d->*member)
    {
        priv->*mark = priv->request;
    }

    ~RequestMark()
    {
        if (finder)
            priv->*mark = outer;
    }

    Q_DISABLE_COPY(RequestMark)

private:
    QPointer<SensorFinder> finder;
    SensorFinderPrivate *priv;
    quint64 SensorFinderPrivate::*mark;
    quint64 outer;
};

} // namespace SondixQt
