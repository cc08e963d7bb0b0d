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

namespace sondixsim::model {

class Sensor;
struct CommandCall;

/// What a sensor consists of, as its commands see it. All but the line is guarded by the sensor's mutex, which is held
/// while a command runs.
struct SensorParts
{
    SensorParts(const SensorSpec &sensorSpec, std::uint64_t sensorSeed,
                const std::vector<std::shared_ptr<Sensor>> &sensorMembers);
    SensorParts(const SensorParts &) = delete;
    SensorParts &operator=(const SensorParts &) = delete;

    const SensorSpec &spec;
    const std::uint64_t seed;
    const std::vector<std::shared_ptr<Sensor>> &members;
    Settings settings;
    SerialLine line;
    Sampler sampler;
    Pages pages;

    void change(const ParameterList &changes, double now); ///< of settings
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
    Sensor(SensorSpec spec, std::uint64_t seed, std::vector<std::shared_ptr<Sensor>> members);

    const SensorSpec &spec() const { return m_spec; }
    const std::vector<std::shared_ptr<Sensor>> &members() const { return m_members; }
    SerialLine &line() { return m_parts.line; }
    const SerialLine &line() const { return m_parts.line; }

    bool isPlugged(double now); ///< a sensor that stands for several is plugged in when all of them are
    void setPlugged(bool plugged, double now); ///< use Bench::setPlugged()
    void followMembers(double now);            ///< after one of them was plugged in or unplugged
    void setSilent(bool silent, double now);
    bool isSilent(double now);

    /// The handle that has opened the sensor, 0 when none has.
    std::uint32_t owner() const { return m_owner.load(std::memory_order_acquire); }
    bool claim(std::uint32_t handle); ///< false when another handle has opened it or one of its members

    void open(double now, std::int32_t baudrate);
    void close(double now);

    Outcome available(double now, std::int32_t *count);
    Outcome transfer(double now, std::int32_t *raw, double *scaled, std::int32_t maxCount, std::int32_t *read,
                     double *timestamp);
    Outcome command(const CommandCall &call);

    /// False when the sensor is not open. One of \a raw and \a scaled may be empty: it follows from the other.
    bool push(double now, const std::vector<std::int32_t> &raw, const std::vector<double> &scaled,
              double timestamp);
    FrameCounts frameCounts(double now);
    FrameCounts totalFrameCounts(double now);
    void trigger(double now); ///< at its trigger input
    /// Answers a page with exactly these bytes; false for a sensor without a web interface.
    bool setPage(const std::string &path, HttpAnswer answer);

    ParameterList foundParameters() const; ///< "Get_FoundSensor"
    std::string information() const;       ///< "SA_SensorInformation"

private:
    enum class Event { FallSilent, Unplug, Plug };

    std::unique_lock<std::mutex> lockAt(double now); ///< locks, and applies the events up to now
    void planEvents(double now);
    void apply(Event event, double time);
    void connect(bool plugged, double now);

    const SensorSpec m_spec;
    const std::vector<std::shared_ptr<Sensor>> m_members;
    std::atomic<bool> m_plugged;
    std::multimap<double, Event> m_events; ///< by bench time
    std::atomic<double> m_nextEvent;       ///< time of the first one, to look at without the lock
    std::atomic<std::uint32_t> m_owner{0};
    mutable std::mutex m_mutex;
    SensorParts m_parts;
};

} // namespace sondixsim::model
