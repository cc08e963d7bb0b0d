// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <deque>
#include <mutex>
#include <vector>

namespace sondixsim::model {

/// The time of a serial line. The sensors at it share it: what their values need, and how long commands keep the line
/// busy, decides which part of the frames of each sensor arrives.
///
/// The sensors of a bus are not advanced at the same time, so each of them takes the changes of its part in the order of
/// their times. Every function may be called from any thread. Its mutex is never held while another one is locked.
class LineTime
{
public:
    std::size_t join(); ///< one more sensor, while the bench is made; returns its number
    bool isShared() const { return m_users.size() > 1; }

    /// From \a now on the values of a sensor need \a part of the time of the line. All together may need more than there
    /// is: then each sensor gets an equal part, and what one does not need is left to the others.
    void setDemand(std::size_t user, double now, double part);

    /// When the next change of the part that arrives begins; infinite without one. Does not lock.
    double nextChange(std::size_t user) const { return m_users[user].nextChange.load(std::memory_order_acquire); }
    struct Change
    {
        double time = 0.0;
        double arriving = 1.0; ///< the part of the frames that arrives from then on
    };
    Change takeChange(std::size_t user); ///< only when there is one

    /// A command keeps the line busy for \a seconds. With \a inTurn it begins when those under way have ended. Returns
    /// the bench time at which it ends.
    double reserve(double now, double seconds, bool inTurn);
    /// The values that a shared line has carried at \a now were measured up to this time: values wait for the end of a
    /// command.
    double carriedUpTo(double now) const;

private:
    struct User
    {
        std::atomic<double> nextChange{0.0};
        double demand = 0.0;
        std::deque<Change> changes;
    };
    struct Command
    {
        double begin = 0.0;
        double end = 0.0;
    };
    void plan(double now);
    double equalPart() const;

    mutable std::mutex m_mutex;
    std::deque<User> m_users; ///< not a vector: a user cannot be moved
    std::deque<Command> m_commands;
};

} // namespace sondixsim::model
