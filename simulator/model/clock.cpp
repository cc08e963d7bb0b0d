// SPDX-License-Identifier: MIT
#include "clock.h"

#include <algorithm>
#include <chrono>

namespace sondixsim::model {

std::int64_t Clock::steadyNanoseconds()
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

double Clock::timeOf(const State &state)
{
    if (state.isVirtual)
        return state.base;
    return state.base + static_cast<double>(steadyNanoseconds() - state.start) * 1e-9 * state.speed;
}

Clock::State Clock::read() const
{
    while (true) {
        const std::uint32_t before = m_sequence.load(std::memory_order_acquire);
        State state;
        state.isVirtual = m_virtual.load(std::memory_order_acquire);
        state.base = m_base.load(std::memory_order_acquire);
        state.speed = m_speed.load(std::memory_order_acquire);
        state.start = m_start.load(std::memory_order_acquire);
        if (before % 2 == 0 && m_sequence.load(std::memory_order_relaxed) == before)
            return state;
    }
}

void Clock::write(const State &state)
{
    const std::uint32_t before = m_sequence.load(std::memory_order_relaxed);
    m_sequence.store(before + 1, std::memory_order_relaxed);
    m_virtual.store(state.isVirtual, std::memory_order_release);
    m_base.store(state.base, std::memory_order_release);
    m_speed.store(state.speed, std::memory_order_release);
    m_start.store(state.start, std::memory_order_release);
    m_sequence.store(before + 2, std::memory_order_release);
    m_changed.notify_all();
}

double Clock::now() const
{
    return timeOf(read());
}

void Clock::useReal(double speed)
{
    const std::lock_guard<std::mutex> lock(m_writer);
    write({false, timeOf(read()), speed, steadyNanoseconds()});
}

void Clock::useVirtual()
{
    const std::lock_guard<std::mutex> lock(m_writer);
    State state = read();
    state.base = timeOf(state);
    state.isVirtual = true;
    write(state);
}

void Clock::advance(double seconds)
{
    const std::lock_guard<std::mutex> lock(m_writer);
    State state = read();
    state.base += seconds;
    write(state);
}

void Clock::reset()
{
    const std::lock_guard<std::mutex> lock(m_writer);
    State state = read();
    state.base = 0.0;
    state.start = steadyNanoseconds();
    write(state);
}

void Clock::waitUntil(double time, double start)
{
    constexpr double longest = 3600.0; // of one wait: a duration that every clock can express
    std::unique_lock<std::mutex> lock(m_writer);
    while (true) {
        const State state = read();
        const double now = timeOf(state);
        const double missing = (time - now) / state.speed;
        if (state.isVirtual || now < start || !(missing > 0.0))
            return;
        const std::chrono::duration<double> wait(std::min(missing, longest));
        m_changed.wait_for(lock, std::chrono::ceil<std::chrono::nanoseconds>(wait));
    }
}

} // namespace sondixsim::model
