// SPDX-License-Identifier: MIT
#pragma once

#include "json.h"
#include "rules.h"
#include "SondixSimulator/control.h"
#include "value.h"

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace sondixsim::model {

/// Something that happens to a sensor at certain bench times, or at a certain call and then at times after it.
struct TimelineEvent
{
    enum class Kind { Unplug, Silence, InUse, Freeze, Drift, Lose, FactorySettings, Set, Trigger };

    Kind kind = Kind::Unplug;
    double at = 0.0;                ///< seconds of bench time
    std::optional<Fault> call;      ///< it happens when this hits a call; its texts are windows-1250
    std::optional<double> duration; ///< seconds after which it ends; of a drift: until it has reached its end
    double every = 0.0;             ///< seconds from one repetition to the next
    std::int64_t times = 1;         ///< how often it happens; 0: without end
    double within = 0.0;            ///< each repetition is delayed by a random time up to this one
    double by = 0.0;                ///< of a drift: the share of the measuring range by which the zero moves
    std::uint64_t frames = 0;       ///< how many are lost
    ParameterList settings;         ///< "SA_" keys; checked against those of the sensor by the reader of the bench
    int line = 0;                   ///< in the bench file
};

const ObjectRules &eventRules();
/// Throws ParseError.
std::vector<TimelineEvent> readTimeline(const Node &node);

/// The moments at which the events of a sensor begin and end, in their order. They depend on the events and the seed alone.
class Timeline
{
public:
    /// \a events must outlive this object.
    Timeline(const std::vector<TimelineEvent> &events, std::uint64_t seed);

    /// The call of an event was made at this bench time.
    void start(std::size_t event, double time) { plan(event, 0, time); }

    double nextTime() const;                                 ///< infinite at its end
    double nextTimeOfOthers(TimelineEvent::Kind kind) const; ///< of all events that are not of this kind
    struct Moment
    {
        const TimelineEvent *event = nullptr;
        bool isEnd = false;
        double time = 0.0;
    };
    Moment take(); ///< the next one, if there is one

    /// Repetitions of an event that are left out.
    struct Skipped
    {
        const TimelineEvent *event = nullptr;
        std::int64_t times = 0;
    };
    /// Leaves out repetitions that have ended at \a time, but for each event the last ones.
    std::vector<Skipped> skipTo(double time);
    /// Leaves out the repetitions of events of \a kind before \a time, except the last \a remaining. Leaves out none if
    /// there are several such events, or if two repetitions can be less than \a minDistance seconds apart. Returns how many
    /// were left out.
    std::int64_t skipTo(double time, TimelineEvent::Kind kind, std::int64_t remaining, double minDistance);

private:
    struct Planned
    {
        std::size_t event = 0;
        std::int64_t repetition = 0;
        bool isEnd = false;
        double start = 0.0; ///< time of the first repetition, without its delay
    };
    void plan(std::size_t event, std::int64_t repetition, double start);
    using Entry = std::multimap<double, Planned>::iterator;
    std::int64_t skip(Entry entry, double time, std::int64_t remaining);

    const std::vector<TimelineEvent> &m_events;
    std::uint64_t m_seed;
    std::multimap<double, Planned> m_planned;
};

} // namespace sondixsim::model
