// SPDX-License-Identifier: MIT
#include "ring.h"

#include <algorithm>

namespace sondixsim::model {

void Ring::reset(std::size_t frames, std::size_t valuesPerFrame)
{
    m_valuesPerFrame = std::max<std::size_t>(1, valuesPerFrame);
    m_raw.assign(frames * m_valuesPerFrame, 0);
    m_scaled.assign(frames * m_valuesPerFrame, 0.0);
    clear();
}

void Ring::clear()
{
    m_head = m_tail = 0;
    m_segments.clear();
}

void Ring::skip(std::uint64_t values)
{
    m_head += values;
    while (m_segments.size() > 1 && m_segments[1].first <= m_head)
        m_segments.pop_front();
    if (m_head == m_tail)
        m_segments.clear();
}

std::uint64_t Ring::append(const std::int32_t *raw, const double *scaled, std::size_t count, double timestamp,
                           Timing timing)
{
    const auto wholeFrames = [this](std::size_t values) {
        return (values + m_valuesPerFrame - 1) / m_valuesPerFrame;
    };
    std::uint64_t lost = 0;
    if (count > capacity()) {
        const std::size_t frames = wholeFrames(count - capacity());
        const std::size_t skipped = std::min(count, frames * m_valuesPerFrame);
        lost += frames;
        raw += skipped;
        scaled += skipped;
        count -= skipped;
        timestamp += static_cast<double>(frames) * timing.period;
        timing.sequence = 0;
    }
    if (size() + count > capacity()) {
        const std::size_t frames = wholeFrames(size() + count - capacity());
        lost += frames;
        skip(std::min<std::uint64_t>(size(), frames * m_valuesPerFrame));
    }
    if (count == 0)
        return lost;
    const bool continues =
        !m_segments.empty() && timing.sequence != 0 && m_segments.back().timing.sequence == timing.sequence;
    if (!continues)
        m_segments.push_back({m_tail, timestamp, timing});
    const std::size_t start = m_tail % capacity();
    const std::size_t first = std::min(count, capacity() - start);
    std::copy_n(raw, first, m_raw.data() + start);
    std::copy_n(scaled, first, m_scaled.data() + start);
    std::copy_n(raw + first, count - first, m_raw.data());
    std::copy_n(scaled + first, count - first, m_scaled.data());
    m_tail += count;
    return lost;
}

std::size_t Ring::take(std::int32_t *raw, double *scaled, std::size_t maxCount, double *timestamp)
{
    const std::size_t count = std::min(maxCount, size());
    if (count == 0)
        return 0;
    if (timestamp != nullptr) {
        const Segment &segment = m_segments.front();
        const std::uint64_t frames = (m_head - segment.first) / m_valuesPerFrame;
        *timestamp = segment.timestamp + static_cast<double>(frames) * segment.timing.period;
    }
    const std::size_t start = m_head % capacity();
    const std::size_t first = std::min(count, capacity() - start);
    if (raw != nullptr) {
        std::copy_n(m_raw.data() + start, first, raw);
        std::copy_n(m_raw.data(), count - first, raw + first);
    }
    if (scaled != nullptr) {
        std::copy_n(m_scaled.data() + start, first, scaled);
        std::copy_n(m_scaled.data(), count - first, scaled + first);
    }
    skip(count);
    return count;
}

} // namespace sondixsim::model
