// SPDX-License-Identifier: MIT
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

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
    void useVirtual();
    void advance(double seconds);
    void reset(); ///< to 0, at the present speed

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
    double m_base = 0.0;  ///< bench time at m_start; of a virtual clock the present time
    double m_speed = 1.0; ///< bench seconds in one real second
    std::int64_t m_start; ///< nanoseconds of the steady clock
};

} // namespace sondixsim::model
