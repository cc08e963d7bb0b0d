// SPDX-License-Identifier: MIT
#include "timeline.h"

#include "objectreader.h"
#include "random.h"
#include "speccheck.h"
#include "specreader.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace sondixsim::model {

namespace {

using Kind = TimelineEvent::Kind;

const struct
{
    const char *name;
    Kind kind;
    const char *description;
} eventRows[] = {
    {"unplug", Kind::Unplug, "it is not found and cannot be opened, and calls to it fail"},
    {"silence", Kind::Silence, "it sends no frames"},
    {"inUse", Kind::InUse, "another program uses it: it cannot be opened"},
    {"freeze", Kind::Freeze, "all frames have the values of the moment at which it began"},
    {"drift", Kind::Drift, "the zero of all signals moves, and stays there"},
    {"lose", Kind::Lose, "the next frames are lost on their way"},
    {"factorySettings", Kind::FactorySettings, "all settings are those of the bench file again"},
    {"set", Kind::Set, "settings are changed at the sensor itself"},
    {"trigger", Kind::Trigger, "one trigger"},
};

std::vector<Choice> eventKinds()
{
    std::vector<Choice> choices;
    for (const auto &row : eventRows)
        choices.push_back({row.name, row.description});
    return choices;
}

constexpr double longest = 1.0e9;
constexpr double shortest = 0.001;

TimelineEvent readEvent(const Node &node)
{
    ObjectReader reader(node, eventRules());
    TimelineEvent event;
    event.line = node.line;
    const std::string kind = reader.readKind();
    for (const auto &row : eventRows) {
        if (kind == row.name)
            event.kind = row.kind;
    }
    const bool hasTime = reader.read("at", event.at);
    Fault call;
    const bool hasFunction = reader.read("function", call.function);
    const bool hasCommand = reader.read("command", call.command);
    reader.read("parameter", call.parameter);
    reader.read("call", call.from);
    if (hasFunction || hasCommand) {
        checkFault(node, call);
        call.begin = event.at;
        call.times = 1;
        event.call = call;
    } else if (!hasTime) {
        throw ParseError(node.line, "an event needs \"at\", or \"function\" or \"command\" for a call");
    }
    if (reader.read("every", event.every))
        event.times = 0;
    std::int32_t times = 0;
    if (reader.read("times", times))
        event.times = times;
    reader.read("within", event.within);
    // Each kind has only some of these keys.
    reader.read("for", event.duration);
    reader.read("by", event.by);
    reader.read("frames", event.frames);
    if (const Node *settings = reader.optional("settings")) {
        for (const Member &setting : readObject(*settings, "\"settings\""))
            event.settings.set(setting.key, readValue(setting.value, '"' + setting.key + '"'));
    }
    reader.finish();
    // Otherwise repetitions would overlap, or change their order.
    const double length = event.within + event.duration.value_or(0.0);
    if (event.every > 0.0 && length >= event.every)
        throw ParseError(node.line, "\"within\" and \"for\" together must be shorter than \"every\"");
    return event;
}

} // namespace

const ObjectRules &eventRules()
{
    using namespace keys;
    // clang-format off
    static const auto &rules = *new ObjectRules{"event", "an event", {
        {"do",       required, oneOf(eventKinds, "event"),         "What happens"},
        {"at",       optional, number(0.0, longest),      "Seconds of bench time; for a call: before which no call counts (0)"},
        {"function", optional, oneOf(functionChoices, "function"), "Function of the C interface at whose call it happens"},
        {"command",  optional, usually(word(), commandChoices),    "Command at whose call it happens; alone it means SensorCommand"},
        {"parameter", optional, word(),                   "Parameter that the function sets or gets", nullptr, "function command"},
        {"call",     optional, whole(1),                  "Number of the call at which it happens (1)", nullptr, "function command"},
        {"for",      optional, number(shortest, longest), "Seconds after which it ends (it does not end)", "unplug silence inUse freeze"},
        {"for",      required, number(shortest, longest), "Seconds in which the zero moves",              "drift"},
        {"by",       required, number(-1.0, 1.0),         "Share of the measuring range",                 "drift"},
        {"frames",   required, whole(1),                  "How many frames are lost",                     "lose"},
        {"settings", required, mapOf(value()),            "The new values of settings",                   "set"},
        {"every",    optional, number(shortest, longest), "Seconds from one repetition to the next; longer than \"for\" and \"within\" together (it happens once)"},
        {"times",    optional, whole(1),                  "How often it happens (without end)", nullptr, "every"},
        {"within",   optional, number(0.0, longest),      "Each repetition comes later by a random time from 0 to this one, in seconds (0)"},
    }, "do", {{"at", "function", "command"}}};
    // clang-format on
    return rules;
}

std::vector<TimelineEvent> readTimeline(const Node &node)
{
    std::vector<TimelineEvent> events;
    for (const Node &event : readArray(node, "\"timeline\""))
        events.push_back(readEvent(event));
    return events;
}

Timeline::Timeline(const std::vector<TimelineEvent> &events, std::uint64_t seed)
    : m_events(events)
    , m_seed(mix(seed, std::string_view("timeline")))
{
    for (std::size_t i = 0; i < m_events.size(); ++i) {
        if (!m_events[i].call)
            plan(i, 0, m_events[i].at);
    }
}

void Timeline::plan(std::size_t event, std::int64_t repetition, double start)
{
    const TimelineEvent &planned = m_events[event];
    const std::uint64_t draw = mix(mix(m_seed, event), static_cast<std::uint64_t>(repetition));
    const double time = start + planned.every * static_cast<double>(repetition) + planned.within * uniform(draw);
    m_planned.emplace(time, Planned{event, repetition, false, start});
}

double Timeline::nextTime() const
{
    return m_planned.empty() ? std::numeric_limits<double>::infinity() : m_planned.begin()->first;
}

Timeline::Moment Timeline::take()
{
    if (m_planned.empty())
        return {};
    const auto node = m_planned.extract(m_planned.begin());
    const Planned &planned = node.mapped();
    const TimelineEvent &event = m_events[planned.event];
    if (!planned.isEnd) {
        if (event.duration && event.kind != Kind::Drift)
            m_planned.emplace(node.key() + *event.duration,
                              Planned{planned.event, planned.repetition, true, planned.start});
        if (event.every > 0.0 && (event.times == 0 || planned.repetition + 1 < event.times))
            plan(planned.event, planned.repetition + 1, planned.start);
    }
    return {&event, planned.isEnd, node.key()};
}

double Timeline::nextTimeOfOthers(TimelineEvent::Kind kind) const
{
    const auto isOther = [&](const auto &planned) { return m_events[planned.second.event].kind != kind; };
    const auto found = std::find_if(m_planned.begin(), m_planned.end(), isOther);
    return found != m_planned.end() ? found->first : std::numeric_limits<double>::infinity();
}

/// Leaves out the repetitions of an event from the planned one on, except the last ones that have ended at \a time.
std::int64_t Timeline::skip(Entry entry, double time, std::int64_t remaining)
{
    const Planned planned = entry->second;
    const TimelineEvent &event = m_events[planned.event];
    constexpr double maxRepetitions = 1.0e15;
    const double length = event.within + event.duration.value_or(0.0);
    const double ended = std::floor(std::min((time - length - planned.start) / event.every, maxRepetitions));
    const auto last = static_cast<std::int64_t>(ended) - remaining;
    if (!(ended > 0.0) || last <= planned.repetition || (event.times != 0 && last >= event.times))
        return 0;
    m_planned.erase(entry);
    plan(planned.event, last, planned.start);
    return last - planned.repetition;
}

std::vector<Timeline::Skipped> Timeline::skipTo(double time)
{
    std::vector<Skipped> skipped;
    constexpr std::int64_t remaining = 2;
    for (auto entry = m_planned.begin(); entry != m_planned.end();) {
        const auto present = entry++;
        const TimelineEvent &event = m_events[present->second.event];
        if (present->second.isEnd || !(event.every > 0.0))
            continue;
        if (const std::int64_t times = skip(present, time, remaining))
            skipped.push_back({&event, times});
    }
    return skipped;
}

std::int64_t Timeline::skipTo(double time, TimelineEvent::Kind kind, std::int64_t remaining, double minDistance)
{
    const auto isOfKind = [&](const auto &planned) { return m_events[planned.second.event].kind == kind; };
    const auto entry = std::find_if(m_planned.begin(), m_planned.end(), isOfKind);
    // Several of them would have to be left out in their common order.
    if (entry == m_planned.end() || std::count_if(m_planned.begin(), m_planned.end(), isOfKind) != 1)
        return 0;
    const TimelineEvent &event = m_events[entry->second.event];
    return event.every - event.within > minDistance ? skip(entry, time, remaining) : 0;
}

} // namespace sondixsim::model
