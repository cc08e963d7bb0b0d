// SPDX-License-Identifier: MIT
#include "faults.h"

#include "random.h"

#include <algorithm>

namespace sondixsim::model {

namespace {

bool matches(const Fault &fault, const CallDetails &details)
{
    const std::string function =
        fault.function.empty() && !fault.command.empty() ? "SensorCommand" : fault.function;
    return (function.empty() || function == details.function) &&
           (fault.command.empty() || fault.command == details.command) &&
           (fault.parameter.empty() || fault.parameter == details.parameter) &&
           (fault.sensor.empty() || fault.sensor == details.sensor) &&
           (!fault.sensorType || *fault.sensorType == details.sensorType) &&
           (!fault.handle || *fault.handle == details.handle);
}

} // namespace

int Faults::add(const Fault &fault)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_entries.push_back({++m_lastNumber, ++m_lastStream, fault, 0, 0});
    m_any.store(true, std::memory_order_release);
    return m_lastNumber;
}

void Faults::remove(int number)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto isIt = [number](const Entry &entry) { return entry.number == number; };
    m_entries.erase(std::remove_if(m_entries.begin(), m_entries.end(), isIt), m_entries.end());
    m_any.store(!m_entries.empty(), std::memory_order_release);
}

void Faults::clear()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_entries.clear();
    m_any.store(false, std::memory_order_release);
}

std::vector<std::pair<int, Fault>> Faults::list()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<std::pair<int, Fault>> all;
    for (const Entry &entry : m_entries)
        all.emplace_back(entry.number, entry.fault);
    return all;
}

void Faults::reset(std::uint64_t seed)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_entries.clear();
    m_any.store(false, std::memory_order_release);
    m_seed = seed;
    m_lastStream = 0;
}

bool Faults::hits(Entry &entry)
{
    const Fault &fault = entry.fault;
    ++entry.seen;
    if (entry.seen < fault.from || (fault.times >= 0 && entry.hits >= fault.times))
        return false;
    const auto draw = mix(mix(m_seed, entry.stream), static_cast<std::uint64_t>(entry.seen));
    if (uniform(draw) >= fault.probability)
        return false;
    ++entry.hits;
    return true;
}

FaultEffect Faults::match(const CallDetails &details)
{
    FaultEffect hit;
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (Entry &entry : m_entries) {
        if (!matches(entry.fault, details) || !hits(entry))
            continue;
        const Fault &fault = entry.fault;
        if (hit.code == 0 && fault.code != 0) {
            hit.code = fault.code;
            hit.text = fault.text;
            hit.silent = fault.silent;
        }
        hit.delay += fault.delay;
        hit.hang = hit.hang || fault.hang;
        if (!hit.answer)
            hit.answer = fault.answer;
        if (!hit.count)
            hit.count = fault.count;
    }
    return hit;
}

void Faults::hang()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    const std::uint64_t before = m_releases;
    m_released.wait(lock, [&] { return m_releases != before; });
}

void Faults::releaseHangs()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    ++m_releases;
    m_released.notify_all();
}

} // namespace sondixsim::model
