// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sensorinfo.h>
#include <SondixQt/sensortypes.h>

#include <QList>
#include <QObject>
#include <QScopedPointer>

namespace SondixQt {

class SensorFinderPrivate;

/// Searches the selected connection interfaces for sensors and announces each one as it is found.
///
/// \par Use
/// Choose the interfaces, connect to sensorFound() and searchFinished(), call startSearch() with one
/// type, a list of types or a set of groups. Several types are searched one after another; progress
/// counts over all of them. A search ends when the sensor-access library reports that it is complete. As
/// long as the question for the progress fails, the search goes on and finds nothing: where that matters,
/// call stopSearch() after a time limit of your own. An application that hands sensors to a
/// SensorInstance should stop the search first: it occupies the interfaces.
///
/// \par Threads
/// All functions belong to the thread that owns the finder, which needs a running event loop: a timer
/// asks the sensor-access library for news every 250 ms, and each of these calls blocks until it is
/// answered. There are no other threads and no locks. From another thread the slots are invoked
/// through the event queue, for example
/// \code
/// QMetaObject::invokeMethod(finder, "startSearch", Qt::QueuedConnection,
///                           Q_ARG(SondixQt::SensorType, SondixQt::TX270));
/// \endcode
/// The types that the signals and slots carry are registered meta-types once a finder exists.
///
/// \par What slots may do
/// A slot connected to any signal of the finder may start or stop a search, run an event loop of its
/// own (the search waits meanwhile) and even delete the finder. The later request wins: the search, or
/// the call, whose signal it was says no more. A stop that is being announced is not announced again
/// when a slot stops once more. Two things are for the application to avoid, because they never end: starting a search from
/// every searchStarted(), and restarting from searchFinished() with a direct connection when the search
/// cannot start at all, since that is finished within the call; use a queued connection there.
///
/// \par Ownership
/// The finder owns the SensorInstance that carries the search. Destroying the finder during a search
/// aborts it without a signal.
class SONDIXQT_EXPORT SensorFinder : public QObject
{
    Q_OBJECT
public:
    enum Status : qint32 {
        Ready = 0,     ///< nothing is being searched
        Searching = 1, ///< a search is under way
        /// The last search could not be started or aborted; a new one may be started. Followed at once by
        /// Searching it means that a type was skipped.
        Error = 2,
    };
    Q_ENUM(Status)

    explicit SensorFinder(QObject *parent = nullptr);
    /// Aborts a search that is under way; no signal is emitted.
    ~SensorFinder() override;

    /// \name Options
    /// Taken as they are, checked by the sensor-access library alone. They hold from the next type that
    /// is searched; the blacklist and the choice of what is announced hold at once.
    /// \{

    /// Adds \a interfaces to those that are scanned (\a enable) or removes them. Ethernet and USB devices
    /// are looked for in any case; an interface card is looked for on its own interface in any case and
    /// never on RS232. At first TCPIP and WinUSB are selected.
    void setSearchInterface(SondixQt::SensorInterfaces interfaces, bool enable);
    /// The baud rates to try on serial lines, in the form that the sensor-access library expects;
    /// empty (as at first) leaves the choice to it.
    void setSearchBaudrates(const QString &baudrates);
    /// Whether RS485 buses are scanned the quick way; at first true.
    void setQuickScanRS485(bool enable);
    bool quickScanRS485() const;
    /// Whether the quick scan makes a difference for \a type.
    bool quickScanRS485Supported(SondixQt::SensorType type) const;
    /// Whether sensors of other types than those asked for are announced as well; at first false. Switch it
    /// on to find every model on a bus.
    void setSearchSimilarSensors(bool enable);
    bool searchSimilarSensors() const;
    /// Whether channels that are in use are scanned as well; at first false.
    void setForceScanXA200ETH(bool enable);
    /// Stored only: what is searched is told to startSearch().
    void setSensorType(SondixQt::SensorType type);
    /// The sensors that are never announced, because the application knows them already. A sensor is
    /// recognised by its interface, its place there and its identity (serial number and the like).
    void setOutputFoundSensorBlacklist(const QList<SondixQt::SensorInfo> &blacklist);
    /// Lets the sensor-access library log the searches, into the file that was given last.
    void enableLogging();
    /// Lets the sensor-access library log the searches into \a file.
    void enableLogging(const QString &file);
    void disableLogging();
    /// \}

    Status status() const;

    /// Searches all types of the families \a groups that are not hidden, in display order. A sensor that
    /// reports itself under a type that is not searched is not announced. That concerns the bus models which
    /// lists leave out: an MV420 is not found in the group KVBus. With setSearchSimilarSensors() it is.
    void startSearch(SondixQt::SensorGroups groups);

    /// Whether \a a and \a b have equal values of the parameter \a name, as QVariant's equality has it
    /// with the value of \a a on the left; a parameter that both lack is equal. Any thread.
    static bool isParamEqual(const SensorInfo &a, const SensorInfo &b, const QString &name);

public Q_SLOTS:
    /// Searches sensors of \a sensorType, for some bus sensors together with the types under which the
    /// same models answer behind a converter; searchStarted() is then emitted twice. A search that is
    /// under way is replaced without searchFinished(). NoSensor searches nothing: started, finished.
    void startSearch(SondixQt::SensorType sensorType);
    /// Searches the types of \a sensorTypeList in this order; NoSensor entries are left out. Types that
    /// share their base type (value modulo 10000) with one whose search is complete are covered by it.
    /// Status texts name the type searched when \a showSondixQtType is set, else its base type, except
    /// for the last one. An empty list drops the types that still wait.
    void startSearch(QList<SondixQt::SensorType> sensorTypeList, bool showSondixQtType);
    /// Aborts the search. searchFinished() is emitted also when there was none.
    void stopSearch();
    /// Aborts the search as stopSearch() does, with a second searchFinished().
    void stopSensorFinderScan();

Q_SIGNALS:
    /// At the start of every search, also when nothing will be searched.
    void searchStarted();
    /// A search has come to its end, was stopped, or had nothing to search. When the last type of a
    /// search cannot be searched at all, and after stopSensorFinderScan(), it comes twice. A search that
    /// the library refuses to start ends with statusChanged(Error) alone: the types that still wait are
    /// not searched. It may come before startSearch() returns.
    void searchFinished();
    /// A sensor that was not announced since the search started and is not on the blacklist. Its type is
    /// NoSensor where similar sensors are searched and the answer tells none.
    void sensorFound(const SondixQt::SensorInfo &resultInfo);
    /// At every tick of the search: \a progress over all types, in percent, 0 to 100, rounded down. Types
    /// that are skipped add nothing, so do not wait for 100: the end is searchFinished().
    void progressChanged(int progress);
    /// The status was set, be it to the same value.
    void statusChanged(SondixQt::SensorFinder::Status status);
    /// A running search has ended or was stopped without any sensor found.
    void showNothingFoundMsg();
    /// A line in English for a status bar. 15 s after each end of a search it is a single blank, also
    /// when a new search is under way by then.
    void updateSensorFinderStatus(QString sensorFinderStatus);

private:
    Q_DECLARE_PRIVATE(SensorFinder)
    QScopedPointer<SensorFinderPrivate> d_ptr;
};

} // namespace SondixQt
