// SPDX-License-Identifier: MIT
#include "timeline.h"

#include <algorithm>
#include <cmath>
#include <limits>

using namespace SondixQt;

namespace Explorer {

namespace {

constexpr double unknown = std::numeric_limits<double>::quiet_NaN();
// A difference between the clocks of a sensor and of the computer that is no jitter of the delivery, in seconds.
constexpr double otherZero = 1.0;
// Blocks that follow each other faster than this, in seconds, are one stretch, which bounds the memory.
constexpr double shortestStretch = 0.005;

} // namespace

void TimeLine::append(const DataBlock &block, double interval)
{
    if (block.isEmpty())
        return;
    if (m_end == 0)
        m_kind = block.time() ? Seconds : Frames;
    beginBlock(block);
    if (m_kind == Frames)
        appendNumbered(block);
    else if (block.time() && !block.frameInterval())
        appendIrregular(block, interval);
    else
        appendRegular(block, interval);
    settleGaps();
}

bool TimeLine::continues(const DataBlock &block) const
{
    if (m_stretches.empty())
        return true;
    const Stretch &last = m_stretches.back();
    return last.run == block.run() && last.number + (m_end - last.index) == block.firstFrame() && m_openGaps == 0;
}

void TimeLine::beginBlock(const DataBlock &block)
{
    m_blockWallClock = block.wallClockMicroseconds();
    if (!continues(block))
        m_breaks.push_back(m_end);
}

void TimeLine::appendNumbered(const DataBlock &block)
{
    const auto number = static_cast<double>(block.firstFrame());
    if (m_stretches.empty())
        m_offset = 0.0;
    else if (const double follows = position(m_end - 1) + 1.0;
             block.run() != m_stretches.back().run || number + m_offset < follows)
        m_offset = follows - number;
    add({m_end, block.firstFrame(), number + m_offset, 1.0, unknown, unknown, block.run(), false},
        block.frameCount());
}

// The position of the first frame of a block with a time. Decides whether the clock has another zero.
double TimeLine::startOf(const DataBlock &block, double time, double step)
{
    const auto wallClock =
        m_blockWallClock ? std::optional(static_cast<double>(*m_blockWallClock) * 1.0e-6) : std::nullopt;
    if (m_end == 0) {
        m_offset = -time;
    } else {
        const double last = position(m_end - 1);
        const bool isBack = time + m_offset < last - otherZero ||
                            (block.run() != m_stretches.back().run && time + m_offset < last);
        const bool isOther = wallClock && m_wallClockOffset && block.run() != m_stretches.back().run &&
                             std::abs(*wallClock - *m_wallClockOffset - (time + m_offset)) > otherZero;
        if (isBack || isOther) {
            const double follows = last + step;
            const double told = wallClock && m_wallClockOffset ? *wallClock - *m_wallClockOffset : follows;
            m_offset = std::max(told, follows) - time;
        }
    }
    if (wallClock)
        m_wallClockOffset = *wallClock - (time + m_offset);
    return m_end == 0 ? 0.0 : std::max(time + m_offset, position(m_end - 1));
}

void TimeLine::appendRegular(const DataBlock &block, double interval)
{
    Stretch stretch;
    stretch.index = m_end;
    stretch.number = block.firstFrame();
    stretch.run = block.run();
    stretch.time = block.time().value_or(unknown);
    stretch.interval = block.frameInterval().value_or(unknown);
    stretch.step = std::max(0.0, block.frameInterval().value_or(interval));
    if (block.time()) {
        stretch.position = startOf(block, *block.time(), stretch.step);
        const bool isShort =
            !m_stretches.empty() && continues(block) && !m_stretches.back().isSpread &&
            static_cast<double>(m_end - m_stretches.back().index) * m_stretches.back().step < shortestStretch &&
            m_stretches.back().interval > 0.0 &&
            std::abs(position(m_end) - stretch.position) < m_stretches.back().interval;
        if (isShort) {
            m_end += block.frameCount();
            return;
        }
    } else {
        stretch.position = position(m_end - 1) + stretch.step;
    }
    add(stretch, block.frameCount());
}

// Each frame with a time begins a stretch.
void TimeLine::appendIrregular(const DataBlock &block, double interval)
{
    for (int frame = 0; frame < block.frameCount();) {
        int next = frame + 1;
        while (next < block.frameCount() && !block.frameTime(next))
            ++next;
        Stretch stretch;
        stretch.index = m_end;
        stretch.number = block.firstFrame() + frame;
        stretch.run = block.run();
        stretch.time = *block.frameTime(frame);
        stretch.interval = unknown;
        stretch.isSpread = true;
        stretch.position = startOf(block, stretch.time, interval);
        m_blockWallClock.reset(); // it is that of the first frame
        add(stretch, next - frame);
        frame = next;
    }
}

void TimeLine::add(Stretch stretch, qint64 count)
{
    // Now that the next time is known, the frames before it are spread evenly, except across a break.
    if (!m_stretches.empty() && m_stretches.back().isSpread) {
        Stretch &last = m_stretches.back();
        if (m_breaks.empty() || m_breaks.back() != m_end)
            last.step = (stretch.position - last.position) / static_cast<double>(m_end - last.index);
    }
    m_stretches.push_back(stretch);
    m_end += count;
}

void TimeLine::append(const DataGap &gap)
{
    GapMark mark;
    mark.gap = gap;
    mark.index = m_end;
    mark.begin = mark.end = isEmpty() ? 0.0 : position(m_end - 1);
    m_gaps.push_back(mark);
    ++m_openGaps;
}

void TimeLine::settleGaps()
{
    for (; m_openGaps > 0; --m_openGaps) {
        GapMark &mark = m_gaps[m_gaps.size() - m_openGaps];
        mark.end = std::max(mark.begin, position(mark.index));
    }
}

void TimeLine::dropBefore(qint64 index)
{
    m_first = std::max(m_first, std::min(index, m_end));
    while (m_stretches.size() > 1 && m_stretches[1].index <= m_first)
        m_stretches.pop_front();
    while (m_gaps.size() > m_openGaps && m_gaps.front().index <= m_first)
        m_gaps.pop_front();
    while (!m_breaks.empty() && m_breaks.front() <= m_first)
        m_breaks.pop_front();
}

void TimeLine::clear()
{
    *this = TimeLine();
}

std::size_t TimeLine::stretchIndex(qint64 index) const
{
    const auto after =
        std::upper_bound(m_stretches.begin(), m_stretches.end(), index,
                         [](qint64 value, const Stretch &stretch) { return value < stretch.index; });
    return static_cast<std::size_t>(std::max<std::ptrdiff_t>(0, after - m_stretches.begin() - 1));
}

const TimeLine::Stretch &TimeLine::stretchOf(qint64 index) const
{
    return m_stretches[stretchIndex(index)];
}

qint64 TimeLine::blockEnd(qint64 index, qint64 limit) const
{
    std::size_t next = stretchIndex(index) + 1;
    if (m_stretches[next - 1].isSpread) {
        const auto gap = std::upper_bound(m_breaks.begin(), m_breaks.end(), index);
        const qint64 end = gap != m_breaks.end() ? std::min(*gap, limit) : limit;
        while (next < m_stretches.size() && m_stretches[next].isSpread && m_stretches[next].index < end)
            ++next;
        limit = end;
    }
    return std::min(next < m_stretches.size() ? m_stretches[next].index : m_end, limit);
}

double TimeLine::timeOf(qint64 index) const
{
    const Stretch &stretch = stretchOf(index);
    return index == stretch.index ? stretch.time
                                  : stretch.time + static_cast<double>(index - stretch.index) * stretch.interval;
}

// A stretch must not reach beyond the next one, although its interval may be a little too long.
double TimeLine::position(qint64 index) const
{
    if (m_stretches.empty())
        return 0.0;
    const std::size_t at = stretchIndex(index);
    const Stretch &stretch = m_stretches[at];
    const double position = stretch.position + static_cast<double>(index - stretch.index) * stretch.step;
    return at + 1 < m_stretches.size() ? std::min(position, m_stretches[at + 1].position) : position;
}

qint64 TimeLine::indexAt(double position) const
{
    const auto after =
        std::lower_bound(m_stretches.begin(), m_stretches.end(), position,
                         [](const Stretch &stretch, double value) { return stretch.position < value; });
    if (after == m_stretches.begin())
        return m_first;
    const Stretch &stretch = *(after - 1);
    const qint64 end = after == m_stretches.end() ? m_end : after->index;
    if (stretch.step <= 0.0)
        return std::max(m_first, stretch.position >= position ? stretch.index : end);
    const double steps = std::min(std::ceil((position - stretch.position) / stretch.step),
                                  static_cast<double>(end - stretch.index));
    qint64 index = stretch.index + static_cast<qint64>(std::max(0.0, steps));
    // Rounding may be off by one.
    while (index > stretch.index && this->position(index - 1) >= position)
        --index;
    while (index < end && this->position(index) < position)
        ++index;
    return std::max(m_first, index);
}

std::vector<qint64> TimeLine::breaks(qint64 begin, qint64 end) const
{
    const auto from = std::lower_bound(m_breaks.begin(), m_breaks.end(), begin);
    return {from, std::upper_bound(from, m_breaks.end(), end)};
}

// Positions never decrease, hence neither do the ends of the gaps.
std::vector<GapMark> TimeLine::gapsBetween(double from, double to) const
{
    const auto begin = std::lower_bound(m_gaps.begin(), m_gaps.end(), from,
                                        [](const GapMark &mark, double value) { return mark.end < value; });
    const auto end = std::upper_bound(begin, m_gaps.end(), to,
                                      [](double value, const GapMark &mark) { return value < mark.begin; });
    return {begin, end};
}

std::deque<GapMark>::const_iterator TimeLine::gapAfter(qint64 index) const
{
    return std::upper_bound(m_gaps.begin(), m_gaps.end(), index,
                            [](qint64 value, const GapMark &mark) { return value < mark.index; });
}

qint64 TimeLine::bytes() const
{
    const auto sizeOf = [](const auto &list) {
        return static_cast<qint64>(list.size()) * qint64(sizeof(list[0]));
    };
    return sizeOf(m_stretches) + sizeOf(m_gaps) + sizeOf(m_breaks);
}

} // namespace Explorer
