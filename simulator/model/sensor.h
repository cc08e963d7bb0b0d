// SPDX-License-Identifier: MIT
#pragma once

#include "pages.h"
#include "sampler.h"
#include "serialline.h"
#include "settings.h"

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>

namespace sondixsim::model {

class Sensor;
struct CommandCall;

/// Lets one of several processes use a sensor.
class Reservation
{
public:
    virtual ~Reservation() = default;
    virtual bool acquire() = 0; ///< false while another process has it
    virtual void release() = 0;
    virtual bool isTaken() = 0; ///< by another process; only while this one has not acquired it
};

/// What was set on a sensor.
struct SensorChanges
{
    ParameterList settings;
    std::optional<std::int32_t> baudrate;

    bool empty() const { return settings.empty() && !baudrate; }
};

/// What a sensor consists of, as its commands see it. All but the line is guarded by the sensor's mutex, which is held
/// while a command runs.
struct SensorParts
{
    SensorParts(const SensorSpec &sensorSpec, std::uint64_t sensorSeed,
                const std::vector<std::shared_ptr<Sensor>> &sensorMembers, std::shared_ptr<LineTime> lineTime);
    SensorParts(const SensorParts &) = delete;
    SensorParts &operator=(const SensorParts &) = delete;

    const SensorSpec &spec;
    const std::uint64_t seed;
    const std::vector<std::shared_ptr<Sensor>> &members;
    Settings settings;
    SerialLine line;
    Sampler sampler;
    Pages pages;
    SensorChanges changes; ///< since Sensor::takeChanges()

    void change(const ParameterList &changed, double now); ///< of settings
    void changeBaudrate(std::int32_t baudrate, double now);
};

/// One sensor of a bench. Every function may be called from any thread.
///
/// This class alone locks: each public function that needs the parts locks the mutex once and passes the call on. The
/// exceptions can be read while a command runs: who owns the sensor, whether it is plugged in, and its line.
///
/// What happens to it at a certain time is applied by the next call that comes later, with its own time.
class Sensor
{
public:
    /// \a lineTime is that of the line at the sensor's place.
    Sensor(SensorSpec spec, std::uint64_t seed, std::vector<std::shared_ptr<Sensor>> members,
           std::shared_ptr<LineTime> lineTime);

    const SensorSpec &spec() const { return m_spec; }
    const std::vector<std::shared_ptr<Sensor>> &members() const { return m_members; }
    SerialLine &line() { return m_parts.line; }
    const SerialLine &line() const { return m_parts.line; }

    bool knows(const std::string &command) const; ///< also those that the library answers
    bool isPlugged(double now); ///< a sensor that stands for several is plugged in when all of them are
    void setPlugged(bool plugged, double now);  ///< use Bench::setPlugged()
    void followMembers(double now);             ///< after one of them was plugged in or unplugged
    void happen(std::size_t event, double now); ///< a call was made at which this event of the timeline happens
    void setSilent(bool silent, double now);
    bool isSilent(double now);
    void limitByLine(bool limited,
                     double now); ///< whether its frames arrive only as fast as the line carries them

    /// The handle that has opened the sensor, 0 when none has.
    std::uint32_t owner() const { return m_owner.load(std::memory_order_acquire); }
    /// False when another program uses it, or another handle has opened it or one of its members.
    bool claim(std::uint32_t handle);
    /// Whether another handle or another program has opened it.
    bool isHeldByOther(std::uint32_t handle, double now);
    /// For a bench that other processes use as well. Call it before the first claim().
    void share(std::unique_ptr<Reservation> reservation) { m_reservation = std::move(reservation); }

    void open(double now, std::int32_t baudrate);
    void close(double now);

    Outcome available(double now, std::int32_t *count);
    Outcome transfer(double now, std::int32_t *raw, double *scaled, std::int32_t maxCount, std::int32_t *read,
                     double *timestamp);
    Outcome command(const CommandCall &call);

    /// False when the sensor is not open. One of \a raw and \a scaled may be empty: it follows from the other.
    bool push(double now, const std::vector<std::int32_t> &raw, const std::vector<double> &scaled,
              double timestamp);
    /// What commands have set since the last call.
    SensorChanges takeChanges();
    /// Changes that were taken and could not be passed on; what was set since then holds.
    void returnChanges(SensorChanges changes);
    /// Sets what was set elsewhere, without further checks.
    void apply(const SensorChanges &changes, double now);
    /// Checks settings by their "SA_" or "SP_" names, and converts them to the types that they have.
    Outcome check(const ParameterList &wanted, SensorChanges &changes) const;

    FrameCounts frameCounts(double now);
    FrameCounts totalFrameCounts(double now);
    /// Adds the frames that \a member of the counts has from now on to \a counter, which other processes may share.
    void countFrames(std::uint64_t FrameCounts::*member, std::shared_ptr<std::atomic<std::int64_t>> counter);
    Value setting(const std::string &key, double now); ///< one that the sensor has
    void trigger(double now);                          ///< at its trigger input
    /// Answers a page with exactly these bytes; false for a sensor without a web interface.
    bool setPage(const std::string &path, HttpAnswer answer);

    ParameterList foundParameters() const; ///< "Get_FoundSensor"
    std::string information() const;       ///< "SA_SensorInformation"

private:
    enum class Event { FallSilent, Unplug, Plug };
    /// When a member was plugged in (true) or unplugged, for a sensor that stands for several.
    struct PlugLog
    {
        std::mutex mutex;
        std::vector<std::pair<double, bool>> changes;
    };

    /// Locks the sensor and applies the events up to now. Its end passes the frames on to the counters.
    class Lock
    {
    public:
        Lock(Sensor &sensor, double now);
        ~Lock();
        Lock(const Lock &) = delete;
        Lock &operator=(const Lock &) = delete;

    private:
        Sensor &m_sensor;
        const std::lock_guard<std::mutex> m_lock;
    };
    /// A state that lasts, such as being unplugged, as long as anything causes it.
    struct Lasting
    {
        bool byHand = false; ///< or planned since the opening
        std::set<const TimelineEvent *> events;

        bool holds() const { return byHand || !events.empty(); }
    };
    struct FrameCounter
    {
        std::uint64_t FrameCounts::*member = nullptr;
        std::shared_ptr<std::atomic<std::int64_t>> counter;
        std::uint64_t passedOn = 0;
    };

    Lock lockAt(double now) { return Lock(*this, now); }
    void applyEventsUpTo(double now);
    void catchUp(double now); ///< applies the events up to now, if there are any
    void collectMemberChanges(double now);
    void applyMemberChange();
    void skipEvents(double now);
    void passFramesOn();
    void planEvents(double now);
    /// What the other programs of a session know already: changes of the timeline, which each of them plays itself, and
    /// those that others have published.
    void changeUnpublished(const SensorChanges &changes, double now);
    void apply(Event event, double time);
    void apply(const Timeline::Moment &moment);
    bool follow(const Timeline::Moment &moment);
    bool changeByHand(TimelineEvent::Kind kind, bool holds);
    double nextEvent() const;
    void connect(bool plugged, double now);
    void giveUp(); ///< what claim() has taken, without the members
    Sensor *memberMeantBy(const CommandCall &call) const;
    Outcome execute(const CommandCall &call); ///< with the lock
    double secondsOnBus(const CommandCall &call, const Outcome &outcome) const;

    const SensorSpec m_spec;
    const std::vector<std::shared_ptr<Sensor>> m_members;
    std::atomic<bool> m_plugged;
    std::atomic<bool> m_usedElsewhere{false}; ///< by a program that the timeline pretends
    std::multimap<double, Event> m_events;    ///< after opening, by bench time
    std::map<TimelineEvent::Kind, Lasting> m_lasting;
    Timeline m_timeline;
    std::atomic<double> m_nextEvent; ///< time of the first one, to look at without the lock
    std::atomic<std::uint32_t> m_owner{0};
    std::unique_ptr<Reservation> m_reservation; ///< null: no other process uses the bench
    mutable std::mutex m_mutex;
    std::vector<FrameCounter> m_frameCounters;          ///< guarded by the mutex
    std::vector<std::shared_ptr<PlugLog>> m_followers;  ///< of the sensors that this one is a member of
    std::vector<std::shared_ptr<PlugLog>> m_memberLogs; ///< of the members, in their order
    std::vector<bool> m_pluggedMembers;
    std::multimap<double, std::pair<std::size_t, bool>>
        m_memberChanges; ///< by time: which member, whether plugged in
    SensorParts m_parts;
};

} // namespace sondixsim::model
