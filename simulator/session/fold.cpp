// SPDX-License-Identifier: MIT
#include "fold.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>

namespace sondixsim::session {

namespace {

constexpr const char *baudrateKey = " baudrate"; // no setting has a blank

/// The events with the same subject replace each other; empty: each event counts.
std::string subjectOf(const Journal::Event &event)
{
    auto action = event.value("do", std::string());
    const auto sensor = event.value("sensor", std::string());
    if (action == "clock" || (action == "clear" && !event.contains("fault")))
        return action;
    if (action == "plug" || action == "unplug")
        return "plug " + sensor;
    if (action == "silent")
        return action + ' ' + sensor;
    return {};
}

/// Leaves out the values that later events set again. The others keep their time: the sensor's timeline may have changed
/// the same setting before or after them. False if nothing is left.
bool keepLastValues(Journal::Event &event, std::set<std::string> &later)
{
    Journal::Event kept = Journal::Event::object();
    for (const auto &[key, value] : event.at("values").items()) {
        if (later.insert(key).second)
            kept[key] = value;
    }
    event["values"] = std::move(kept);
    if (event.contains("baudrate") && !later.insert(baudrateKey).second)
        event.erase("baudrate");
    return !event["values"].empty() || event.contains("baudrate");
}

/// New processes need the last clock before the first event: they would take the times of all events before it for later
/// than now. It gets the number of the first one, because processes skip numbers that they have read.
void beginWithTheLastClock(const Journal::Event &first, std::vector<Journal::Event> &kept)
{
    const auto isClock = [](const Journal::Event &event) { return event.value("do", std::string()) == "clock"; };
    const auto last = std::find_if(kept.begin(), kept.end(), isClock);
    if (!isClock(first) || last == kept.end() ||
        last->value("seq", std::uint64_t(0)) == first.value("seq", std::uint64_t(0)))
        return;
    Journal::Event clock = *last;
    clock["seq"] = first.value("seq", std::uint64_t(0));
    kept.insert(kept.begin(), std::move(clock));
}

} // namespace

std::vector<Journal::Event> folded(std::vector<Journal::Event> events)
{
    std::vector<Journal::Event> kept; // backwards
    std::set<std::string> later;
    std::map<std::string, std::set<std::string>> laterValues; // by sensor
    std::set<std::uint64_t> cleared;
    bool allCleared = false;
    for (auto event = events.rbegin(); event != events.rend(); ++event) {
        const auto action = event->value("do", std::string());
        if (action == "trigger" || action == "release")
            continue; // it is over
        if (action == "clear") {
            if (event->contains("fault"))
                cleared.insert(event->at("fault").get<std::uint64_t>());
            else
                allCleared = true; // also the faults of the bench file, which are not in the journal
        }
        if (action == "inject" && (allCleared || cleared.count(event->value("fault", std::uint64_t(0))) > 0))
            continue;
        const std::string subject = subjectOf(*event);
        const bool isReplaced = !subject.empty() && !later.insert(subject).second;
        if (isReplaced ||
            (action == "set" && !keepLastValues(*event, laterValues[event->value("sensor", std::string())])))
            continue;
        kept.push_back(*event);
    }
    std::reverse(kept.begin(), kept.end());
    if (!events.empty())
        beginWithTheLastClock(events.front(), kept);
    return kept;
}

} // namespace sondixsim::session
