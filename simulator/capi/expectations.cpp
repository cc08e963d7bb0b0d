// SPDX-License-Identifier: MIT
#include "expectations.h"

#include "model/text.h"

#include <algorithm>

namespace sondixsim::capi {

std::vector<Expectations::Entry> Expectations::entriesOf(const model::Bench &bench)
{
    std::vector<Entry> entries;
    for (const model::SpecExpectation &spec : bench.expectations)
        entries.push_back({spec, nullptr, {}, nullptr});
    for (const auto &sensor : bench.sensors) {
        for (const model::SpecExpectation &spec : sensor->spec().expectations) {
            entries.push_back({spec, sensor, {}, nullptr});
            entries.back().spec.calls.sensor = sensor->spec().serialNumber;
        }
    }
    return entries;
}

std::size_t Expectations::countOf(const model::Bench &bench)
{
    return entriesOf(bench).size();
}

void Expectations::use(const std::shared_ptr<const model::Bench> &bench, const CounterAt &counterAt)
{
    std::vector<Entry> entries = entriesOf(*bench);
    m_calls.reset(bench->seed);
    for (std::size_t i = 0; i < entries.size(); ++i) {
        Entry &entry = entries[i];
        entry.counter = counterAt(i);
        const std::shared_ptr<std::atomic<std::int64_t>> count(entry.counter, &entry.counter->seen);
        if (entry.spec.isOfCalls()) {
            m_calls.add(entry.spec.calls, static_cast<int>(i) + 1, entry.counter);
        } else if (entry.spec.frames != nullptr) {
            entry.countedSensors = entry.sensor ? std::vector{entry.sensor} : bench->sensors;
            for (const auto &sensor : entry.countedSensors)
                sensor->countFrames(entry.spec.frames, count);
        }
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_entries = std::move(entries);
}

std::vector<Expectation> Expectations::check(double now)
{
    std::vector<Entry> entries;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        entries = m_entries;
    }
    for (const Entry &entry : entries) {
        for (const auto &sensor : entry.countedSensors)
            sensor->totalFrameCounts(now); // brings its counters up to date
    }
    std::vector<Expectation> found;
    for (const Entry &entry : entries) {
        const model::SpecExpectation &spec = entry.spec;
        Expectation result;
        result.name = model::fromWindows1250(spec.name);
        result.expected = model::fromWindows1250(spec.expected());
        result.line = spec.line;
        if (entry.sensor) {
            result.sensor = model::fromWindows1250(entry.sensor->spec().serialNumber);
            result.model = entry.sensor->spec().model;
        }
        if (spec.setting.empty()) {
            const std::int64_t count = entry.counter->seen.load();
            result.found = std::to_string(count);
            result.isMet = spec.isMetBy(count);
        } else {
            const model::Value value = entry.sensor->setting(spec.setting, now);
            result.found = model::fromWindows1250(model::toText(value));
            result.isMet = value == spec.value;
        }
        found.push_back(std::move(result));
    }
    const auto isBefore = [](const Expectation &a, const Expectation &b) { return a.line < b.line; };
    std::stable_sort(found.begin(), found.end(), isBefore);
    return found;
}

} // namespace sondixsim::capi
