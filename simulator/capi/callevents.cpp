// SPDX-License-Identifier: MIT
#include "callevents.h"

#include "model/text.h"

namespace sondixsim::capi {

std::vector<CallEvents::Entry> CallEvents::entriesOf(const model::Bench &bench)
{
    std::vector<Entry> entries;
    for (const auto &sensor : bench.sensors) {
        const std::vector<model::TimelineEvent> &events = sensor->spec().timeline;
        for (std::size_t i = 0; i < events.size(); ++i) {
            if (!events[i].call)
                continue;
            entries.push_back({sensor->spec().serialNumber, i, *events[i].call});
            entries.back().call.sensor = sensor->spec().serialNumber;
        }
    }
    return entries;
}

std::size_t CallEvents::countOf(const model::Bench &bench)
{
    return entriesOf(bench).size();
}

void CallEvents::use(const model::Bench &bench, const Expectations::CounterAt &counterAt)
{
    std::vector<Entry> entries = entriesOf(bench);
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_calls.reset(bench.seed);
    for (std::size_t i = 0; i < entries.size(); ++i)
        m_calls.add(entries[i].call, static_cast<int>(i) + 1, counterAt(i));
    m_entries = std::move(entries);
}

std::vector<nlohmann::json> CallEvents::at(const model::CallDetails &call)
{
    std::vector<nlohmann::json> happening;
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (const int number : m_calls.match(call).numbers) {
        const Entry &entry = m_entries[static_cast<std::size_t>(number) - 1];
        happening.push_back(
            {{"do", "happen"}, {"sensor", model::fromWindows1250(entry.sensor)}, {"event", entry.event}});
    }
    return happening;
}

} // namespace sondixsim::capi
