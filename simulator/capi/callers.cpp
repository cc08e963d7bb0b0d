// SPDX-License-Identifier: MIT
#include "callers.h"

#include <algorithm>

namespace sondixsim::capi {

namespace {

// Two timers of a program, one of 1 ms and one of 1 s.
constexpr std::uint64_t patience = 1000;

} // namespace

void Callers::wait(std::uint32_t handle, double time, model::Clock &clock)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    // A call that was made before the last step may have an answer now.
    m_callers[handle] = {time >= clock.now(), ++m_calls};
    const bool allWait = std::all_of(m_callers.begin(), m_callers.end(), [this](const auto &entry) {
        return entry.second.isWaiting || m_calls - entry.second.lastCall > patience;
    });
    if (!allWait)
        return;
    for (auto &[other, caller] : m_callers)
        caller.isWaiting = false;
    clock.advance(clock.step());
}

void Callers::goOn(std::uint32_t handle)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_callers[handle] = {false, m_calls};
}

void Callers::forget(std::uint32_t handle)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_callers.erase(handle);
}

void Callers::clear()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_callers.clear();
}

} // namespace sondixsim::capi
