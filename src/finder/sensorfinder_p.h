// SPDX-License-Identifier: MIT
#pragma once

#include "sensorfinder.h"

#include <SondixQt/sensorinstance.h>

#include <QElapsedTimer>
#include <QList>
#include <QLoggingCategory>
#include <QPointer>
#include <QSet>
#include <QTimer>
#include <QVariant>

#include <array>
#include <limits>
#include <optional>
#include <vector>

namespace SondixQt {

Q_DECLARE_LOGGING_CATEGORY(sensorFinderLog)

/// The parameter values that identify a sensor. Those that differ most often come first, for fast comparison.
using SensorIdentity = std::array<QVariant, 13>;

/// What a full search reports.
struct FullSearch
{
    SensorInterfaces interfaces;
    QList<SensorType> types;
    bool similar = false;    ///< the types are found by a search for a similar type
    QSet<QString> addresses; ///< of the sensors reported so far
};

/// The state of a SensorFinder and the steps of a search.
class SensorFinderPrivate
{
public:
    explicit SensorFinderPrivate(SensorFinder *finder);

    void beginRequest();
    void start(const QList<SensorType> &types, bool showType,
               const std::optional<FullSearch> &full = std::nullopt);
    void begin(const QList<SensorType> &types, bool showType,
               const std::optional<FullSearch> &full = std::nullopt);
    void startSearchInternal(SensorType type);
    void stopSearch();
    void updateProgress();
    void updateResults(int found);
    void updateStatus(SensorFinder::Status newStatus);
    void setError(ErrorCode code, const QString &text);
    void emitError();

    SensorInfo getResultInfo(int index);
    QList<SensorInfo> AnalyseScanResult(const SensorInfo &result) const;
    void AddScanResult(const SensorInfo &result);

    void setBlacklist(const QList<SensorInfo> &blacklist);
    void emitFinished();

    /// Whether the stop that a slot requests is already being announced.
    bool isStopUnderWay() const { return status != SensorFinder::Searching && stoppingRequest == request; }

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
    std::vector<SensorIdentity> foundIdentities;
    std::vector<SensorIdentity> blacklistIdentities;
    bool loggingEnabled = false;
    QString logFile;
    QString searchBaudrates;
    bool showSondixQtType = false;
    std::optional<FullSearch> fullSearch; // empty: another kind of search
    std::chrono::milliseconds timeLimit{0};
    QElapsedTimer searchTime;
    ErrorCode error = NoError;
    QString errorString;
    ErrorCode progressError = NoError; // of the last query of the progress
    QString progressProblem;           // the end of a message if it failed
    int failedQueries = 0;             // of the progress, in a row

    static constexpr quint64 noRequest = std::numeric_limits<quint64>::max();
    quint64 request = 0;                 // the number of starts and stops requested by the application
    quint64 stoppingRequest = noRequest; // the request during which the end of a search is being announced
    quint64 busyRequest = noRequest;     // the request during which a step of the search is running: no re-entry

    SensorFinder *q_ptr;
    Q_DECLARE_PUBLIC(SensorFinder)

private:
    void skipType(const QString &name);
    ErrorCode sendStartCommand(SensorType type, QString *errorText);
    bool abortSearch();
    bool readProgress(double &progress, int &found);
    bool isTimeOver() const;
    void endAtTimeLimit();
    void dropCoveredTypes();
    bool acceptsSimilarSensors() const;
    bool isWanted(SensorType found) const;
    bool isKnown(const SensorIdentity &identity, bool ignoreChannel) const;
    bool isReportedByFullSearch(const SensorInfo &result);
};

/// Detects that a slot has started or stopped a search or has destroyed the finder since this object was
/// constructed. A step checks this after each signal that it emits and returns at once if it happened.
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

/// Sets one of the finder's request members to the current request for the lifetime of this object.
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
