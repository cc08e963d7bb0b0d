// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace sondixsim::model {

/// Seconds of bench time: real time at a stated speed, or standing still until it is stepped.
/// Reading takes no lock: it stands on the path of every transfer.
class Clock
{
public:
    double now() const;
    bool isVirtual() const { return m_virtual.load(std::memory_order_acquire); }

    void useReal(double speed);
    void useVirtual();
    void advance(double seconds);
    void reset(); ///< back to 0, running on as before

    /// Returns when it is \a time, or at once when the clock is virtual, becomes so or is set back before \a start.
    void waitUntil(double time, double start);

private:
    struct State
    {
        bool isVirtual = false;
        double base = 0.0; ///< bench time at \a start, or the standing bench time
        double speed = 1.0;
        std::int64_t start = 0; ///< nanoseconds of the steady clock
    };
    State read() const;
    void write(const State &state);
    static std::int64_t steadyNanoseconds();
    static double timeOf(const State &state);

    std::mutex m_writer;
    std::condition_variable m_changed;
    std::atomic<std::uint32_t> m_sequence{0}; ///< odd while the fields below change
    std::atomic<bool> m_virtual{false};
    std::atomic<double> m_base{0.0};
    std::atomic<double> m_speed{1.0};
    std::atomic<std::int64_t> m_start{steadyNanoseconds()};
};

} // namespace sondixsim::model
