// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

namespace sondixsim::model {

/// The values of a sensor that were not fetched yet. Whole frames are appended; the oldest ones are dropped when the
/// ring is full. Any number of values can be taken.
class Ring
{
public:
    /// The timing of a block. Blocks of one sequence follow each other without a gap.
    struct Timing
    {
        std::uint64_t sequence = 0;
        double period = 0.0; ///< seconds from frame to frame
    };

    void reset(std::size_t frames, std::size_t valuesPerFrame);
    void clear();
    std::size_t size() const { return static_cast<std::size_t>(m_tail - m_head); }
    std::size_t capacity() const { return m_raw.size(); }

    /// Appends \a count values whose first frame has the time \a timestamp. Returns the number of frames that were
    /// dropped.
    std::uint64_t append(const std::int32_t *raw, const double *scaled, std::size_t count, double timestamp,
                         Timing timing);

    /// Removes up to \a maxCount values and copies them to the buffers, each of which may be null. The timestamp is that
    /// of the frame of the first value.
    std::size_t take(std::int32_t *raw, double *scaled, std::size_t maxCount, double *timestamp);

private:
    struct Segment
    {
        std::uint64_t first = 0; ///< position of its first value
        double timestamp = 0.0;
        Timing timing;
    };
    void skip(std::uint64_t values);

    std::size_t m_valuesPerFrame = 1;
    std::vector<std::int32_t> m_raw;
    std::vector<double> m_scaled;
    std::uint64_t m_head = 0; ///< counts all values ever taken; the index is this modulo the capacity
    std::uint64_t m_tail = 0;
    std::deque<Segment> m_segments;
};

} // namespace sondixsim::model
