// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/errorcode.h>
#include <SondixQt/sensorinfo.h>
#include <SondixQt/sensortypes.h>

#include <QList>
#include <QObject>
#include <QScopedPointer>

#include <chrono>

namespace SondixQt {

class SensorFinderPrivate;

/// Searches the selected connection interfaces for sensors and emits a signal for each sensor found.
///
/// \par Use
/// Connect to sensorFound(), searchFinished() and errorOccurred(), and call startFullSearch(), which finds
/// everything. To search for certain types, select the interfaces and call startSearch() with one type, a list of
/// types or a set of groups. Several types are searched one after another; the progress covers all of them. Stop
/// the search before you open a sensor with SensorInstance, because the search occupies the interfaces.
///
/// \par End
/// A search ends with searchFinished() when the sensor-access library reports that it is complete, when it is
/// stopped, or at the time limit; and without searchFinished() when the library refuses to start it. In both cases
/// status() is not Searching any more. error() shows whether a part of the search has failed. While the query of the
/// progress fails, the search continues without results: if this matters, use setTimeLimit().
///
/// \par Threads
/// All functions must be called in the thread that owns the finder. That thread needs a running event loop: a
/// timer queries the sensor-access library every 250 ms, and each query blocks until it is answered. The finder
/// has no other threads and no locks. From another thread, invoke the slots through the event queue, for example
/// \code
/// QMetaObject::invokeMethod(finder, "startSearch", Qt::QueuedConnection,
///                           Q_ARG(SondixQt::SensorType, SondixQt::TX270));
/// \endcode
/// The parameter types of the signals and slots are registered as meta-types when the first finder is constructed.
///
/// \par What slots may do
/// A slot connected to any signal of the finder may start or stop a search, run a nested event loop (the search
/// waits meanwhile) and even delete the finder. The later request wins: the search or the call that emitted the
/// signal ends without further signals. If a slot stops the search while its end is being announced, the end is
/// not announced again. The application must avoid two endless recursions: starting a search from every
/// searchStarted(), and restarting from searchFinished() with a direct connection if the search cannot be
/// started, because searchFinished() is then emitted within startSearch(). Use a queued connection there.
///
/// \par Ownership
/// The finder owns the SensorInstance that performs the search. Destroying the finder aborts a running search
/// without a signal.
class SONDIXQT_EXPORT SensorFinder : public QObject
{
    Q_OBJECT
public:
    enum Status : qint32 {
        Ready = 0,     ///< no search is running
        Searching = 1, ///< a search is running
        /// The last search could not be started or aborted; a new one can be started. If Searching follows
        /// immediately, a type was skipped.
        Error = 2,
    };
    Q_ENUM(Status)

    explicit SensorFinder(QObject *parent = nullptr);
    /// Aborts a running search; no signal is emitted.
    ~SensorFinder() override;

    /// \name Options
    /// The options are not validated here but by the sensor-access library. They take effect with the next type
    /// that is searched; the blacklist and setSearchSimilarSensors() also affect further results at once.
    /// \{

    /// Adds \a interfaces to the scanned interfaces (\a enable) or removes them. Ethernet and USB are always
    /// scanned. An interface card is always searched on its own interface and never on RS232. Default: TCPIP and
    /// WinUSB.
    void setSearchInterface(SondixQt::SensorInterfaces interfaces, bool enable);
    /// Sets the baud rates to try on serial lines, in the format of the sensor-access library. If empty (default),
    /// the library chooses them.
    void setSearchBaudrates(const QString &baudrates);
    /// Whether the quick scan is used on RS485 buses. Default: true.
    void setQuickScanRS485(bool enable);
    bool quickScanRS485() const;
    /// Whether the quick scan applies to sensors of \a type.
    bool quickScanRS485Supported(SondixQt::SensorType type) const;
    /// Whether sensors of other types than the requested ones are reported, too. Default: false. Enable it to find
    /// every model on a bus.
    void setSearchSimilarSensors(bool enable);
    bool searchSimilarSensors() const;
    /// Whether channels that are in use are scanned, too. Default: false.
    void setForceScanXA200ETH(bool enable);
    /// Has no effect: the type to search is a parameter of startSearch().
    void setSensorType(SondixQt::SensorType type);
    /// Sets the sensors that are not reported, for example because the application knows them already. Sensors are
    /// compared by interface, address on that interface and identity (such as the serial number).
    void setOutputFoundSensorBlacklist(const QList<SondixQt::SensorInfo> &blacklist);
    /// Ends a search of any kind after \a limit: what has been found is reported, then errorOccurred() with
    /// TimeLimitError, and the search is aborted as by stopSearch(). The limit is for all types together and is
    /// checked every 250 ms; it also applies to a running search. It does not interrupt a call that blocks. 0, the
    /// default, and negative values mean no limit.
    void setTimeLimit(std::chrono::milliseconds limit);
    std::chrono::milliseconds timeLimit() const;
    /// Enables the log of the sensor-access library for searches, into the file that was set last.
    void enableLogging();
    /// Enables the log of the sensor-access library for searches, into \a file.
    void enableLogging(const QString &file);
    void disableLogging();
    /// \}

    Status status() const;
    /// The last error since the last search was started; NoError if there was none. It is the code of the
    /// sensor-access library, TimeLimitError or SkippedError.
    ErrorCode error() const;
    /// The text for error(), for users, with the reason that the sensor-access library gives; empty if there was no
    /// error.
    QString errorString() const;

    /// Searches all types of the families \a groups that are not hidden, in display order. Sensors of other types
    /// are not reported, except variants of a base type that is searched. An MV420 is not found in the group
    /// KVBus, because another bus type is searched there in place of GenericKVBus, unless
    /// setSearchSimilarSensors() is enabled.
    void startSearch(SondixQt::SensorGroups groups);

    /// Whether the parameter \a name has equal values in \a a and \a b according to QVariant::operator== with the
    /// value of \a a on the left. True if both lack the parameter. Thread-safe.
    static bool isParamEqual(const SensorInfo &a, const SensorInfo &b, const QString &name);

public Q_SLOTS:
    /// Searches \a interfaces for all sensors of \a groups, in as few searches as possible: one for each family of bus
    /// sensors and of colour sensors, and one for all other models. A search for everything takes four.
    ///
    /// The interfaces of setSearchInterface() are not used. Hidden variants are found as well, and a MultiSensor if
    /// \a groups is AllGroups. Sensors on other interfaces are not reported, and sensors of other types only if
    /// setSearchSimilarSensors() is enabled. A sensor that several of the searches find is reported once. If a sensor
    /// does not answer the search for a similar model, only startSearch() with its own type finds it. If \a groups
    /// contains no model, the search finishes at once.
    void startFullSearch(SondixQt::SensorInterfaces interfaces = SondixQt::SensorInterfaces(~0),
                         SondixQt::SensorGroups groups = SondixQt::AllGroups);
    /// Searches for sensors of \a sensorType and, if it is a base type, of its variants. Some bus sensors are
    /// searched together with the types that the same models report behind a converter; searchStarted() is then
    /// emitted twice. A running search is replaced without searchFinished(). For NoSensor only searchStarted()
    /// and searchFinished() are emitted.
    void startSearch(SondixQt::SensorType sensorType);
    /// Searches for the types of \a sensorTypeList in this order; NoSensor entries are ignored. A type is skipped
    /// if the search for another type with the same base type (value modulo 10000) has been completed. Status
    /// texts contain the name of the type if \a showSondixQtType is set or if it is the last one, otherwise the
    /// name of its base type. An empty list removes the types that are still pending.
    void startSearch(QList<SondixQt::SensorType> sensorTypeList, bool showSondixQtType);
    /// Aborts the search. searchFinished() is emitted even if no search is running.
    void stopSearch();
    /// Aborts the search like stopSearch(), but emits searchFinished() twice.
    void stopSensorFinderScan();

Q_SIGNALS:
    /// Emitted at the start of every search, even if there is nothing to search.
    void searchStarted();
    /// Emitted when a search is complete, was stopped or had nothing to search. Emitted twice if the last type of
    /// a search cannot be searched, and by stopSensorFinderScan(). Not emitted if the sensor-access library
    /// refuses to start a search: this ends with statusChanged(Error) and errorOccurred(), and the pending types are
    /// not searched. May be emitted before startSearch() returns.
    void searchFinished();
    /// Emitted when a search or a part of it fails, with error() and errorString(): a search is refused or cannot be
    /// aborted (after statusChanged(Error)), a type is skipped (after the statusChanged() that reports whether the
    /// search goes on), the progress could not be read for two seconds (once, until it can be read again), or the
    /// time limit is reached (before the search ends). The search continues if status() is Searching, except at the
    /// time limit. A search whose progress can never be read does not end by itself.
    void errorOccurred(SondixQt::ErrorCode code, const QString &text);
    /// Emitted for each sensor that is not on the blacklist, once per search. Its type is NoSensor if similar
    /// sensors are searched and the answer contains no type. A sensor whose description cannot be read is left
    /// out; if similar sensors are searched and the search is not a full one, it is emitted once, empty. At most 10,000
    /// results are read for each type that is searched.
    void sensorFound(const SondixQt::SensorInfo &resultInfo);
    /// Emitted at every tick of the search with the \a progress over all types, in percent (0 to 100, rounded
    /// down). Skipped types do not count, so that 100 may never be reached: use searchFinished() to detect the
    /// end.
    void progressChanged(int progress);
    /// Emitted whenever the status is set, even to the same value.
    void statusChanged(SondixQt::SensorFinder::Status status);
    /// Emitted when a running search ends or is stopped and no sensor was found.
    void showNothingFoundMsg();
    /// Emitted with an English text for a status bar. 15 s after each end of a search the text is a single space,
    /// even if another search is running by then.
    void updateSensorFinderStatus(QString sensorFinderStatus);

private:
    Q_DECLARE_PRIVATE(SensorFinder)
    QScopedPointer<SensorFinderPrivate> d_ptr;
};

} // namespace SondixQt
