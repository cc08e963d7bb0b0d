// SPDX-License-Identifier: MIT
#include "clock.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace sondixsim::model {

namespace {

std::int64_t steadyNanoseconds()
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

} // namespace

Clock::Clock()
    : m_start(steadyNanoseconds())
{
}

double Clock::time() const
{
    if (m_shared != nullptr)
        return static_cast<double>(m_shared->load()) * 1e-9;
    if (m_virtual)
        return m_base;
    return m_base + static_cast<double>(steadyNanoseconds() - m_start) * 1e-9 * m_speed;
}

void Clock::setTime(double time)
{
    m_shared = nullptr;
    m_base = time;
    m_start = steadyNanoseconds();
    m_changed.notify_all();
}

double Clock::now() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return time();
}

bool Clock::isVirtual() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_virtual;
}

void Clock::useReal(double speed)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    setTime(time());
    m_virtual = false;
    m_step.store(0.0);
    m_speed = speed;
}

void Clock::useVirtual(double step)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    setTime(time());
    m_virtual = true;
    m_step.store(step);
}

void Clock::advance(double seconds)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_shared != nullptr)
        m_shared->fetch_add(std::llround(seconds * 1e9));
    else
        m_base += seconds;
    m_changed.notify_all();
}

void Clock::reset()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    setTime(0.0);
    m_askedAt.reset();
    m_toldOfStandstill = false;
}

bool Clock::isAskedInVain()
{
    constexpr std::int64_t patience = 5'000'000'000;
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_virtual || m_toldOfStandstill)
        return false;
    const std::int64_t now = steadyNanoseconds();
    if (m_askedAt != time()) { // it was stepped, perhaps by another process
        m_askedAt = time();
        m_askedSince = now;
    }
    m_toldOfStandstill = now - m_askedSince >= patience;
    return m_toldOfStandstill;
}

void Clock::setReal(double time, double speed)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    setTime(time);
    m_virtual = false;
    m_step.store(0.0);
    m_speed = speed;
}

void Clock::useShared(std::atomic<std::int64_t> &nanoseconds, double step)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_virtual = true;
    m_step.store(step);
    m_shared = &nanoseconds;
    m_changed.notify_all();
}

void Clock::waitUntil(double time, double start)
{
    constexpr double maxWait = 3600.0; // seconds at a time: a duration that every clock can express
    std::unique_lock<std::mutex> lock(m_mutex);
    while (true) {
        const double now = this->time();
        const double missing = (time - now) / m_speed;
        if (m_virtual || now < start || !(missing > 0.0))
            return;
        const std::chrono::duration<double> wait(std::min(missing, maxWait));
        m_changed.wait_for(lock, std::chrono::ceil<std::chrono::nanoseconds>(wait));
    }
}

} // namespace sondixsim::model
