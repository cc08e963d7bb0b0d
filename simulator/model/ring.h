// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

namespace sondixsim::model {

/// The values that a sensor has measured and nobody has fetched yet. Whole frames go in, the oldest are
/// lost when it is full; single values come out.
class Ring
{
public:
    /// Where values stand in time. Blocks of one origin follow each other without a gap.
    struct Origin
    {
        std::uint64_t number = 0;
        double period = 0.0; ///< seconds from frame to frame
    };

    void reset(std::size_t frames, std::size_t valuesPerFrame);
    void clear();
    std::size_t size() const { return static_cast<std::size_t>(m_tail - m_head); }
    std::size_t capacity() const { return m_raw.size(); }

    /// Appends \a count values whose first frame has the time \a timestamp; returns how many frames were
    /// lost for it.
    std::uint64_t append(const std::int32_t *raw, const double *scaled, std::size_t count, double timestamp,
                         Origin origin);

    /// Moves up to \a most values out; either buffer may be null. The timestamp is that of the first one's frame.
    std::size_t take(std::int32_t *raw, double *scaled, std::size_t most, double *timestamp);

private:
    struct Segment
    {
        std::uint64_t first = 0; ///< position of its first value
        double timestamp = 0.0;
        Origin origin;
    };
    void skip(std::uint64_t values);

    std::size_t m_valuesPerFrame = 1;
    std::vector<std::int32_t> m_raw;
    std::vector<double> m_scaled;
    std::uint64_t m_head = 0; ///< positions count all values ever; modulo the capacity they are indices
    std::uint64_t m_tail = 0;
    std::deque<Segment> m_segments;
};

} // namespace sondixsim::model
