// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>

namespace sondixsim::model {

/// Bench time in seconds: real time at a given speed, or virtual time, which stands still until it is stepped. Every
/// function may be called from any thread.
class Clock
{
public:
    Clock();

    double now() const;
    bool isVirtual() const;

    void useReal(double speed);
    void useVirtual(double step = 0.0);
    void advance(double seconds);
    void reset();                            ///< to 0, at the present speed
    void setReal(double time, double speed); ///< shows \a time now
    /// Virtual time that others may step as well, in nanoseconds. It must live as long as this object.
    void useShared(std::atomic<std::int64_t> &nanoseconds, double step = 0.0);
    /// The seconds by which a virtual clock is to be stepped when all wait; 0 if it is not.
    double step() const { return m_step.load(); }

    /// Call it when a program asks for what only comes with time. True once after each reset: when a program has asked
    /// for 5 real seconds while the virtual clock stood still.
    bool isAskedInVain();

    /// Returns at the bench time \a time, or at once when the clock is or becomes virtual or is reset: it then shows
    /// less than \a start.
    void waitUntil(double time, double start);

private:
    // These expect the mutex to be locked.
    double time() const;
    void setTime(double time); ///< the clock goes on from there

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_virtual = false;
    std::atomic<double> m_step{0.0};
    std::atomic<std::int64_t> *m_shared = nullptr; ///< virtual time of several processes
    double m_base = 0.0;                           ///< bench time at m_start; of a virtual clock the present time
    double m_speed = 1.0;                          ///< bench seconds in one real second
    std::int64_t m_start;                          ///< nanoseconds of the steady clock
    std::optional<double> m_askedAt;               ///< bench time of the last isAskedInVain()
    std::int64_t m_askedSince = 0; ///< nanoseconds of the steady clock at the first one at that time
    bool m_toldOfStandstill = false;
};

} // namespace sondixsim::model
