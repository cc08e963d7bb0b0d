// SPDX-License-Identifier: MIT
#include "ring.h"

#include <algorithm>
#include <utility>

namespace sondixsim::model {

void Ring::reset(std::size_t frames, std::size_t valuesPerFrame)
{
    // Both buffers exist before anything changes: they must never differ in size.
    const std::size_t perFrame = std::max<std::size_t>(1, valuesPerFrame);
    std::vector<std::int32_t> raw(frames * perFrame, 0);
    std::vector<double> scaled(frames * perFrame, 0.0);
    clear();
    m_valuesPerFrame = perFrame;
    m_raw.swap(raw);
    m_scaled.swap(scaled);
}

void Ring::clear()
{
    m_counts.discarded +=
        m_counts.generated - m_counts.fetched - m_counts.lost - m_counts.unsent - m_counts.discarded;
    m_head = m_tail = 0;
    m_segments.clear();
    m_started = {};
}

void Ring::skip(std::uint64_t values)
{
    m_head += values;
    while (m_segments.size() > 1 && m_segments[1].first <= m_head)
        m_segments.pop_front();
    if (m_head == m_tail)
        m_segments.clear();
}

void Ring::append(const std::int32_t *raw, const double *scaled, std::size_t count, double timestamp,
                  Timing timing)
{
    const auto framesUpTo = [this](std::uint64_t values) {
        return (values + m_valuesPerFrame - 1) / m_valuesPerFrame;
    };
    m_counts.generated += framesUpTo(m_tail + count) - framesUpTo(m_tail);
    if (stored() + count > capacity())
        keepStartedFrame();
    if (stored() + count > capacity()) {
        const std::uint64_t frames = framesUpTo(stored() + count - capacity());
        const std::uint64_t old = std::min<std::uint64_t>(frames, stored() / m_valuesPerFrame);
        m_counts.lost += frames;
        skip(old * m_valuesPerFrame);
        if (frames > old) { // the block alone is larger than the ring
            const std::size_t skipped = std::min<std::size_t>(count, (frames - old) * m_valuesPerFrame);
            raw += skipped;
            scaled += skipped;
            count -= skipped;
            timestamp += static_cast<double>(frames - old) * timing.period;
            timing.sequence = 0;
        }
    }
    if (count == 0)
        return;
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
}

void Ring::lose(std::uint64_t frames)
{
    keepStartedFrame();
    const std::uint64_t old = stored() / m_valuesPerFrame;
    m_counts.generated += frames;
    m_counts.lost += old + frames;
    skip(old * m_valuesPerFrame);
}

void Ring::keepStartedFrame()
{
    const std::uint64_t taken = m_head % m_valuesPerFrame;
    const std::size_t rest = std::min<std::size_t>(taken > 0 ? m_valuesPerFrame - taken : 0, stored());
    if (rest == 0)
        return;
    Started started{std::vector<std::int32_t>(rest), std::vector<double>(rest), timestampOf(m_head)};
    copy(started.raw.data(), started.scaled.data(), rest);
    m_started = std::move(started);
    skip(rest);
}

double Ring::timestampOf(std::uint64_t position) const
{
    const Segment &segment = m_segments.front();
    const std::uint64_t frames = (position - segment.first) / m_valuesPerFrame;
    return segment.timestamp + static_cast<double>(frames) * segment.timing.period;
}

void Ring::copy(std::int32_t *raw, double *scaled, std::size_t count) const
{
    const std::size_t start = m_head % std::max<std::size_t>(1, capacity());
    const std::size_t first = std::min(count, capacity() - start);
    if (raw != nullptr) {
        std::copy_n(m_raw.data() + start, first, raw);
        std::copy_n(m_raw.data(), count - first, raw + first);
    }
    if (scaled != nullptr) {
        std::copy_n(m_scaled.data() + start, first, scaled);
        std::copy_n(m_scaled.data(), count - first, scaled + first);
    }
}

std::size_t Ring::takeStarted(std::int32_t *raw, double *scaled, std::size_t maxCount)
{
    const std::size_t count = std::min(maxCount, m_started.raw.size());
    if (count == 0)
        return 0;
    const auto end = static_cast<std::ptrdiff_t>(count);
    if (raw != nullptr)
        std::copy_n(m_started.raw.begin(), end, raw);
    if (scaled != nullptr)
        std::copy_n(m_started.scaled.begin(), end, scaled);
    m_started.raw.erase(m_started.raw.begin(), m_started.raw.begin() + end);
    m_started.scaled.erase(m_started.scaled.begin(), m_started.scaled.begin() + end);
    if (m_started.raw.empty())
        ++m_counts.fetched;
    return count;
}

std::size_t Ring::take(std::int32_t *raw, double *scaled, std::size_t maxCount, double *timestamp)
{
    const std::size_t count = std::min(maxCount, size());
    if (count == 0)
        return 0;
    if (timestamp != nullptr)
        *timestamp = m_started.raw.empty() ? timestampOf(m_head) : m_started.timestamp;
    const std::size_t first = takeStarted(raw, scaled, count);
    const std::size_t rest = count - first;
    copy(raw != nullptr ? raw + first : nullptr, scaled != nullptr ? scaled + first : nullptr, rest);
    m_counts.fetched += (m_head + rest) / m_valuesPerFrame - m_head / m_valuesPerFrame;
    skip(rest);
    return count;
}

} // namespace sondixsim::model
