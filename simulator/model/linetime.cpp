// SPDX-License-Identifier: MIT
#include "linetime.h"

#include <algorithm>
#include <limits>

namespace sondixsim::model {

namespace {

const double noChange = std::numeric_limits<double>::infinity();

} // namespace

std::size_t LineTime::join()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_users.emplace_back().nextChange.store(noChange);
    return m_users.size() - 1;
}

void LineTime::setDemand(std::size_t user, double now, double part)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_users[user].demand == part)
        return;
    m_users[user].demand = part;
    plan(now);
}

/// The largest part of the line's time that one sensor gets; sensors that need more get exactly this. Infinite when
/// all get what they need.
double LineTime::equalPart() const
{
    std::vector<double> demands;
    for (const User &user : m_users)
        demands.push_back(user.demand);
    std::sort(demands.begin(), demands.end());
    double left = 1.0;
    for (std::size_t i = 0; i < demands.size(); ++i) {
        const double part = left / static_cast<double>(demands.size() - i);
        if (demands[i] > part)
            return part;
        left -= demands[i];
    }
    return noChange;
}

/// Replaces the changes from \a now on.
void LineTime::plan(double now)
{
    const double part = equalPart();
    const bool isFull = part != noChange;
    const double busyUntil = m_commands.empty() ? now : m_commands.back().end;
    for (User &user : m_users) {
        if (user.demand == 0.0) { // nothing to carry, and its changes may never be fetched
            user.changes.clear();
            user.nextChange.store(noChange, std::memory_order_release);
            continue;
        }
        while (!user.changes.empty() && user.changes.back().time >= now)
            user.changes.pop_back();
        const double arriving = user.demand > part ? part / user.demand : 1.0;
        // A line that has no time left cannot carry later what was measured during a command.
        const bool isBusy = isFull && isShared() && busyUntil > now;
        user.changes.push_back({now, isBusy ? 0.0 : arriving});
        if (isBusy)
            user.changes.push_back({busyUntil, arriving});
        user.nextChange.store(user.changes.front().time, std::memory_order_release);
    }
}

LineTime::Change LineTime::takeChange(std::size_t user)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    User &waiting = m_users[user];
    if (waiting.changes.empty())
        return {};
    const Change change = waiting.changes.front();
    waiting.changes.pop_front();
    const double next = waiting.changes.empty() ? noChange : waiting.changes.front().time;
    waiting.nextChange.store(next, std::memory_order_release);
    return change;
}

double LineTime::reserve(double now, double seconds, bool inTurn)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    while (!m_commands.empty() && m_commands.front().end <= now)
        m_commands.pop_front();
    const double busyUntil = m_commands.empty() ? now : m_commands.back().end;
    if (inTurn) {
        m_commands.push_back({busyUntil, busyUntil + seconds});
    } else { // what was measured before it has its turn first
        if (!m_commands.empty())
            m_commands.back().end = now;
        m_commands.push_back({now, std::max(busyUntil, now + seconds)});
    }
    if (isShared() && m_commands.back().end > busyUntil)
        plan(now);
    return m_commands.back().end;
}

double LineTime::carriedUpTo(double now) const
{
    if (!isShared())
        return now;
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (const Command &command : m_commands) {
        if (command.begin <= now && now < command.end)
            return command.begin;
    }
    return now;
}

} // namespace sondixsim::model
