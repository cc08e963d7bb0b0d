// SPDX-License-Identifier: MIT
#pragma once

#include "SondixSimulator/control.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

namespace sondixsim::model {

/// The values of a sensor that were not fetched yet. Whole frames are appended; the oldest ones are lost when the ring is
/// full. Any number of values can be taken: the rest of a frame that was taken in part is kept, so that the values that
/// follow belong to the same frame.
///
/// It counts what becomes of the frames. One that was appended in part (by a test) counts as soon as it begins.
class Ring
{
public:
    /// The timing of a block. Blocks of one sequence follow each other without a gap.
    struct Timing
    {
        std::uint64_t sequence = 0;
        double period = 0.0; ///< seconds from frame to frame
    };

    explicit Ring(FrameCounts &counts)
        : m_counts(counts)
    {
    }

    void reset(std::size_t frames, std::size_t valuesPerFrame);
    void clear(); ///< discards all values
    std::size_t size() const { return stored() + m_started.raw.size(); }
    std::size_t capacity() const { return m_raw.size(); }

    /// Appends \a count values whose first frame has the time \a timestamp.
    void append(const std::int32_t *raw, const double *scaled, std::size_t count, double timestamp, Timing timing);
    /// Loses all frames that are stored, and \a frames that would have followed them.
    void lose(std::uint64_t frames);

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
    /// The rest of a frame whose first values were taken before the ring lost the frames after it.
    struct Started
    {
        std::vector<std::int32_t> raw;
        std::vector<double> scaled;
        double timestamp = 0.0;
    };

    std::size_t stored() const { return static_cast<std::size_t>(m_tail - m_head); }
    double timestampOf(std::uint64_t position) const;
    void copy(std::int32_t *raw, double *scaled, std::size_t count) const; ///< from the head
    std::size_t takeStarted(std::int32_t *raw, double *scaled, std::size_t maxCount);
    void keepStartedFrame();
    void skip(std::uint64_t values);

    FrameCounts &m_counts;
    std::size_t m_valuesPerFrame = 1;
    std::vector<std::int32_t> m_raw;
    std::vector<double> m_scaled;
    std::uint64_t m_head = 0; ///< counts all values ever taken; the index is this modulo the capacity
    std::uint64_t m_tail = 0;
    std::deque<Segment> m_segments;
    Started m_started;
};

} // namespace sondixsim::model
