// SPDX-License-Identifier: MIT
#include "faults.h"

#include "random.h"

#include <algorithm>
#include <chrono>

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
           (!fault.handle || *fault.handle == details.handle) && details.time >= fault.begin &&
           (!fault.duration || details.time < fault.begin + *fault.duration);
}

} // namespace

std::string faultProblem(const Fault &fault)
{
    if (!(fault.probability >= 0.0 && fault.probability <= 1.0))
        return "the probability of a fault must be from 0 to 1";
    constexpr double maxDelay = 3600.0;
    if (!(fault.delay >= 0.0 && fault.delay <= maxDelay))
        return "the delay of a fault must be from 0 to 3600 seconds";
    if (fault.from < 1)
        return "the first call that a fault hits has a number from 1 on";
    if (fault.times < 1 && fault.times != -1)
        return "a fault hits 1 call or more";
    const bool isAnswered = fault.answer || fault.damage != Damage::None;
    if (isAnswered && !fault.function.empty() && fault.function != "SensorCommand" &&
        fault.function != "OpenSensor")
        return "only SensorCommand and OpenSensor have an answer";
    if (fault.code == 0 && !(fault.delay > 0.0) && !fault.hang && !isAnswered && !fault.count)
        return "a fault needs a \"code\" other than 0, a \"delay\", \"hang\", \"answer\" or \"damage\"";
    const bool isForOne = !fault.sensor.empty() || !fault.command.empty() || fault.handle;
    if (fault.function == "CreateSensorInstance" && isForOne)
        return "CreateSensorInstance is called before there is a handle, a sensor or a command";
    return {};
}

std::string damaged(std::string answer, Damage damage)
{
    if (damage == Damage::Empty)
        return {};
    if (damage == Damage::Cut)
        return answer.substr(0, answer.size() / 2);
    constexpr std::size_t distance = 7; // of the wrong characters
    for (std::size_t i = distance / 2; damage == Damage::Garbled && i < answer.size(); i += distance)
        answer[i] = static_cast<char>(1 + mix(i, answer.size()) % 255); // never the end of a text
    return answer;
}

int Faults::add(const Fault &fault)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_entries.push_back({++m_lastNumber, ++m_lastStream, fault, std::make_shared<FaultCounter>()});
    m_any.store(true, std::memory_order_release);
    return m_lastNumber;
}

void Faults::add(const Fault &fault, int number, std::shared_ptr<FaultCounter> counter)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_entries.push_back({number, static_cast<std::uint64_t>(number), fault, std::move(counter)});
    m_any.store(true, std::memory_order_release);
}

void Faults::remove(int number)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto isIt = [number](const Entry &entry) { return entry.number == number; };
    // A call that hangs because of another fault hangs again when it is made again.
    if (std::any_of(m_entries.begin(), m_entries.end(),
                    [&](const Entry &entry) { return isIt(entry) && entry.fault.hang; })) {
        ++m_releases;
        m_released.notify_all();
    }
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

bool Faults::hits(const Entry &entry) const
{
    const Fault &fault = entry.fault;
    FaultCounter &counter = *entry.counter;
    const std::int64_t seen = ++counter.seen;
    if (seen < fault.from)
        return false;
    if (uniform(mix(mix(m_seed, entry.stream), static_cast<std::uint64_t>(seen))) >= fault.probability)
        return false;
    // Another process may be hit at the same time.
    if (++counter.hits <= fault.times || fault.times < 0)
        return true;
    --counter.hits;
    return false;
}

FaultEffect Faults::match(const CallDetails &details)
{
    FaultEffect hit;
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (const Entry &entry : m_entries) {
        if (!matches(entry.fault, details) || !hits(entry))
            continue;
        const Fault &fault = entry.fault;
        hit.numbers.push_back(entry.number);
        if (hit.code == 0 && fault.code != 0) {
            hit.code = fault.code;
            hit.text = fault.text;
            hit.silent = fault.silent;
        }
        hit.delay += fault.delay;
        hit.hang = hit.hang || fault.hang;
        if (!hit.answer)
            hit.answer = fault.answer;
        if (hit.damage == Damage::None)
            hit.damage = fault.damage;
        if (!hit.count)
            hit.count = fault.count;
    }
    return hit;
}

void Faults::hang(const std::function<void()> &whileHanging)
{
    constexpr std::chrono::milliseconds pause(20);
    std::unique_lock<std::mutex> lock(m_mutex);
    const std::uint64_t before = m_releases;
    while (!m_released.wait_for(lock, pause, [&] { return m_releases != before; })) {
        lock.unlock();
        whileHanging();
        lock.lock();
    }
}

void Faults::releaseHangs()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    ++m_releases;
    m_released.notify_all();
}

} // namespace sondixsim::model
