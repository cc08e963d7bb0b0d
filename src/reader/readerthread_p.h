// SPDX-License-Identifier: MIT
#pragma once

#include "blockcollector_p.h"
#include "clockmapping_p.h"
#include "frameaccount_p.h"
#include "readerqueue_p.h"
#include "reconnectplan_p.h"

#include <QThread>

#include <atomic>
#include <climits>
#include <condition_variable>
#include <memory>
#include <optional>
#include <vector>

namespace SondixQt {

class SensorInstance;

/// A command with its parameters.
struct ReaderCommand
{
    quint64 number = 0; ///< identifies it, and its answer
    QString command;
    QMap<QString, QVariant> parameters;
    bool isSetting = false;
    SensorReader::Work work; ///< instead of a command
    SensorReader::WorkEffect workEffect = SensorReader::MayChange;

    bool operator==(const ReaderCommand &other) const { return number == other.number; }
};

/// Not a QVector: the object and the thread change their copies, which must not share memory.
using ReaderCommands = std::vector<ReaderCommand>;

/// Removes the settings of the same kind that stand before \a setting.
void replaceEarlier(ReaderCommands &settings, const ReaderCommand &setting);

/// \a text; if it is empty, because the sensor-access library has no text for \a code, a text with the number.
QString failureText(ErrorCode code, const QString &text);

/// What a thread reads and how.
struct ReaderTask
{
    SensorAddress address;
    SensorInstance *instance = nullptr; ///< the caller's; null: the thread opens the address
    std::chrono::milliseconds interval{50};
    std::optional<Reconnect> reconnect;
    ReaderCommands settings;
};

/// Reads a sensor until it is stopped or fails.
class ReaderThread : public QThread
{
    Q_OBJECT
public:
    ReaderThread(const ReaderTask &task, std::shared_ptr<ReaderQueue> queue);
    ~ReaderThread() override;

    // These may be called from any thread.
    void requestStop();
    /// Waits for the end of the thread; false if it has not ended after \a milliseconds.
    bool join(unsigned long milliseconds = ULONG_MAX);
    void post(const ReaderCommand &command);
    void forgetSettings();

protected:
    void run() override;

private:
    using Clock = std::chrono::steady_clock;
    using Time = Clock::time_point;

    enum class Result { Done, Lost, Failed };

    bool isStopping() const { return stopping.load(std::memory_order_relaxed); }
    void waitUntil(Time time);
    void forgetSettingsIfRequested();
    bool hasCommand();
    ReaderCommand takeCommand();

    bool read();
    Result openSensor(ReaderError &error);
    Result applySettings(ReaderError &error);
    ErrorCode describe(QString *errorText);
    bool reopen(ReaderError &loss);
    void closeSensor();
    void report();
    void resumeAccount(bool wasOpen);
    Result checkIdentity(ReaderError &error);

    Result poll(ReaderError &error);
    Result transfer(bool &drained, ReaderError &error);
    Result lossOf(ErrorCode code, ReaderError &error) const;
    void collect(int count, double time);
    int waitingValues();
    void discard(int values);
    void queryRate();
    bool isSilent(ReaderError &error);
    void runCommand();
    CommandResult send(const ReaderCommand &command);
    void followCommand(int waiting);

    void deliver();
    void setState(SensorReader::State state);
    void updateTriggerState();
    void fail(ReaderError error);
    std::chrono::nanoseconds pollInterval() const;
    FrameAccount::Timing timing() const;
    static double usable(double hertz);
    static double computerTime(); ///< the clock of the computer in seconds since 1970
    bool isSpecial() const;
    bool isOpening() const { return state == SensorReader::Opening || state == SensorReader::Reconnecting; }

    ReaderTask task;
    const std::shared_ptr<ReaderQueue> queue;

    std::mutex mutex;
    std::condition_variable woken;
    std::deque<ReaderCommand> commands;
    bool settingsForgotten = false;
    std::atomic<bool> stopping{false};

    // Used by the thread alone.
    std::unique_ptr<SensorInstance> owned;
    SensorInstance *instance = nullptr;
    bool closes = false; ///< the sensor was not open before
    QStringList identity;
    QHash<int, QString> errorTexts;
    SensorReader::State state = SensorReader::Stopped;
    TransmittedDataInfo frame;
    double rateHz = 0.0;
    bool rateFailed = false;    ///< the sensor could not be asked for its rate
    bool isUndescribed = false; ///< \a frame may be out of date: the description could not be read after a command
    Time nextDescription;
    std::optional<ReconnectPlan> plan; ///< from a loss to the first frame after it
    Time lostAt;
    bool triggered = false;
    bool polled = false;
    FrameAccount account;
    BlockCollector collector;
    ClockMapping wallClock;
    double drainedAt = 0.0; ///< when nothing was left to transfer, on the clock of the computer
    double countedAt = 0.0; ///< when the values that waited at the start were counted; 0: they were not
    qint64 waitingAtStart = 0;
    int unsettled = 0; ///< steps until all values that were measured before the last command have been read
    qint64 framesRead = 0;
    Time lastFrame;
    Time lastLook; ///< when isSilent() was called last
    Time lastRateQuery;
    Time nextDelivery;
};

} // namespace SondixQt
