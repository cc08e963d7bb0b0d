// SPDX-License-Identifier: MIT
#include "signalhistory.h"

#include "computermemory.h"

#include <algorithm>
#include <cmath>
#include <limits>

using namespace SondixQt;

namespace Explorer {

namespace {

// Frames that are appended between two checks for old ones.
constexpr int appendedAtOnce = 16 * SignalPyramid::chunkSize;

std::vector<SignalHistory *> &allHistories()
{
    static std::vector<SignalHistory *> histories;
    return histories;
}

std::optional<qint64> &sharedBytesOfTest()
{
    static std::optional<qint64> bytes;
    return bytes;
}

} // namespace

SignalHistory::SignalHistory(double keepSeconds)
    : m_keepSeconds(keepSeconds)
{
    allHistories().push_back(this);
}

SignalHistory::~SignalHistory()
{
    std::vector<SignalHistory *> &all = allHistories();
    all.erase(std::remove(all.begin(), all.end(), this), all.end());
}

qint64 SignalHistory::sharedBytes()
{
    constexpr qint64 share = 2; // the rest is for the other programs
    static const qint64 ofComputer = computerMemory() / share;
    const qint64 bytes = sharedBytesOfTest().value_or(ofComputer);
    return bytes > 0 ? bytes : std::numeric_limits<qint64>::max();
}

void SignalHistory::setSharedBytes(std::optional<qint64> bytes)
{
    sharedBytesOfTest() = bytes;
}

void SignalHistory::begin(const TransmittedDataInfo &frame)
{
    m_frame = frame;
    m_signals.clear();
    m_signals.resize(static_cast<std::size_t>(frame.signals.size()));
    m_timeLine.clear();
    m_cutFrames = 0;
    ++m_revision;
    ++m_generation;
}

void SignalHistory::clear()
{
    for (SignalPyramid &signal : m_signals)
        signal.clear();
    m_timeLine.clear();
    m_cutFrames = 0;
    ++m_revision;
    ++m_generation;
}

// Where the sensor reports no interval with its blocks the rate of the description is the best guess.
double SignalHistory::assumedInterval() const
{
    return m_frame.datarate > 0.0 ? 1.0 / m_frame.datarate : 0.0;
}

void SignalHistory::append(const DataBlock &block)
{
    if (block.isEmpty() || m_signals.empty())
        return;
    m_timeLine.append(block, assumedInterval());
    for (int first = 0; first < block.frameCount(); first += appendedAtOnce) {
        appendValues(block, first, std::min(appendedAtOnce, block.frameCount() - first));
        drop();
    }
    ++m_revision;
}

void SignalHistory::appendValues(const DataBlock &block, int first, int count)
{
    const int perFrame = block.valuesPerFrame();
    const double *values = block.scaledData().constData() + static_cast<std::ptrdiff_t>(first) * perFrame;
    for (int signal = 0; signal < signalCount(); ++signal) {
        constexpr double missing = std::numeric_limits<double>::quiet_NaN();
        if (signal < perFrame)
            m_signals[static_cast<std::size_t>(signal)].append(values + signal, perFrame, count);
        else
            m_signals[static_cast<std::size_t>(signal)].append(&missing, 0, count);
    }
}

void SignalHistory::append(const DataGap &gap)
{
    m_timeLine.append(gap);
    ++m_revision;
}

void SignalHistory::setKeepSeconds(double seconds)
{
    m_keepSeconds = seconds;
    m_cutFrames = 0; // whether the memory suffices for this time shows from now on
    drop();
    ++m_revision;
}

void SignalHistory::setMaximumBytes(qint64 bytes)
{
    m_maximumBytes = bytes;
    drop();
    ++m_revision;
}

void SignalHistory::drop()
{
    if (m_signals.empty() || isEmpty())
        return;
    const double interval = assumedInterval();
    const bool isInSeconds = m_timeLine.kind() == TimeLine::Seconds;
    if (isInSeconds || interval > 0.0) {
        const double kept = isInSeconds ? m_keepSeconds : m_keepSeconds / interval;
        dropBefore(m_timeLine.indexAt(endPosition() - kept));
    }
    cutTo(m_maximumBytes);
    shareMemory();
}

void SignalHistory::cutTo(qint64 bytes)
{
    if (m_signals.empty())
        return;
    const qint64 first = firstFrame();
    while (this->bytes() > bytes && m_signals.front().end() - firstFrame() > SignalPyramid::chunkSize)
        dropBefore(firstFrame() - firstFrame() % SignalPyramid::chunkSize + SignalPyramid::chunkSize);
    if (firstFrame() == first)
        return;
    m_cutFrames += firstFrame() - first;
    ++m_revision;
}

// Only when the memory does not suffice for all: what one of them does not need, others may use.
void SignalHistory::shareMemory()
{
    const std::vector<SignalHistory *> &all = allHistories();
    const qint64 limit = sharedBytes();
    const auto count = static_cast<qint64>(
        std::count_if(all.begin(), all.end(), [](const SignalHistory *history) { return !history->isEmpty(); }));
    qint64 sum = 0;
    for (const SignalHistory *history : all)
        sum += history->bytes();
    for (SignalHistory *history : all) {
        if (sum <= limit)
            return;
        const qint64 before = history->bytes();
        history->cutTo(std::max(limit / std::max<qint64>(1, count), before - (sum - limit)));
        sum -= before - history->bytes();
    }
}

void SignalHistory::dropBefore(qint64 index)
{
    if (index < firstFrame() + SignalPyramid::chunkSize)
        return;
    for (SignalPyramid &signal : m_signals)
        signal.dropBefore(index);
    m_timeLine.dropBefore(m_signals.front().first());
}

qint64 SignalHistory::bytesFor(double seconds, double rateHz, int signalCount)
{
    // More than any computer has, and little enough to calculate with.
    constexpr double maxFrames = 1.0e15;
    constexpr double stretchesPerSecond = 200.0; // see TimeLine: stretches are not shorter than 5 ms
    const double frames = std::clamp(std::ceil(seconds * rateHz), 0.0, maxFrames);
    const double stretches = std::min(frames, std::ceil(std::max(0.0, seconds) * stretchesPerSecond)) + 16.0;
    const qint64 values = static_cast<qint64>(frames) + appendedAtOnce + SignalPyramid::chunkSize;
    const double sum = static_cast<double>(SignalPyramid::bytesFor(values)) * std::max(0, signalCount) +
                       stretches * static_cast<double>(sizeof(TimeLine::Stretch));
    return static_cast<qint64>(std::min(sum, 9.0e18));
}

qint64 SignalHistory::bytes() const
{
    // All signals have the same number of values.
    return m_signals.empty()
               ? 0
               : m_signals.front().bytes() * static_cast<qint64>(m_signals.size()) + m_timeLine.bytes();
}

FrameRange SignalHistory::framesBetween(double from, double to) const
{
    const double after = std::nextafter(to, std::numeric_limits<double>::infinity());
    return {m_timeLine.indexAt(from), m_timeLine.indexAt(after)};
}

std::optional<qint64> SignalHistory::nearestFrame(double position) const
{
    if (isEmpty())
        return std::nullopt;
    const qint64 after = std::min(m_timeLine.indexAt(position), endFrame() - 1);
    if (after == firstFrame())
        return after;
    const bool isBefore = position - m_timeLine.position(after - 1) < m_timeLine.position(after) - position;
    return isBefore ? after - 1 : after;
}

std::vector<qint64> SignalHistory::columnLimits(double from, double to, int columns) const
{
    const FrameRange range = framesBetween(from, to);
    const auto count = static_cast<std::size_t>(std::max(1, columns));
    qint64 unit = 1;
    while (unit * SignalPyramid::factor * 4 * static_cast<qint64>(count) <= range.count())
        unit *= SignalPyramid::factor;
    std::vector<qint64> limits(count + 1, range.begin);
    limits.back() = range.end;
    for (std::size_t i = 1; i < count; ++i) {
        const double share = static_cast<double>(i) / static_cast<double>(count);
        const qint64 index = m_timeLine.indexAt(from + (to - from) * share);
        // Not rounded where the values end: the last ones would be drawn at the right edge of the plot.
        limits[i] = index >= range.end ? range.end : std::clamp(index - index % unit, limits[i - 1], range.end);
    }
    return limits;
}

Extremes SignalHistory::extremes(int signal, FrameRange range) const
{
    return m_signals[static_cast<std::size_t>(signal)].extremes(range.begin, range.end);
}

Moments SignalHistory::moments(int signal, FrameRange range) const
{
    return m_signals[static_cast<std::size_t>(signal)].moments(range.begin, range.end);
}

std::optional<double> SignalHistory::rate(FrameRange range) const
{
    if (m_timeLine.kind() != TimeLine::Seconds || range.count() < 2)
        return std::nullopt;
    double duration = m_timeLine.position(range.end - 1) - m_timeLine.position(range.begin);
    qint64 distances = range.count() - 1;
    for (const qint64 index : m_timeLine.breaks(range.begin + 1, range.end - 1)) {
        duration -= m_timeLine.position(index) - m_timeLine.position(index - 1);
        --distances;
    }
    return duration > 0.0 && distances > 0 ? std::optional(static_cast<double>(distances) / duration)
                                           : std::nullopt;
}

qint64 SignalHistory::missingFrames(FrameRange range) const
{
    qint64 sum = 0;
    for (auto mark = m_timeLine.gapAfter(range.begin); mark != m_timeLine.gaps().end() && mark->index < range.end;
         ++mark)
        sum += mark->gap.frames.value_or(0);
    return sum;
}

Histogram SignalHistory::histogram(int signal, FrameRange range, int classes) const
{
    const Moments sum = moments(signal, range);
    Histogram histogram;
    if (sum.count == 0)
        return histogram;
    histogram.available = sum.count;
    histogram.minimum = sum.minimum;
    histogram.maximum = sum.maximum;
    if (sum.minimum == sum.maximum) {
        // One value alone: a class around it that can be seen.
        const double width = std::max(std::abs(sum.minimum) * 1.0e-6, std::numeric_limits<double>::min());
        histogram.minimum -= width;
        histogram.maximum += width;
    }
    const auto last = static_cast<std::size_t>(std::max(1, classes) - 1);
    histogram.counts.resize(last + 1);
    const double scale = static_cast<double>(last + 1) / (histogram.maximum - histogram.minimum);
    // Pieces of a chunk each, evenly distributed.
    constexpr qint64 piece = SignalPyramid::chunkSize;
    const qint64 pieces = std::max<qint64>(1, (range.count() + piece - 1) / piece);
    const qint64 step = std::max<qint64>(1, (pieces * piece + histogramValues - 1) / histogramValues);
    for (qint64 begin = range.begin; begin < range.end; begin += step * piece)
        for (qint64 index = begin; index < std::min(begin + piece, range.end); ++index) {
            const double measured = value(signal, index);
            if (!isMeasured(measured))
                continue;
            const double place = (measured - histogram.minimum) * scale;
            ++histogram.counts[std::min(last, static_cast<std::size_t>(std::max(0.0, place)))];
            ++histogram.counted;
        }
    return histogram;
}

Spectrum SignalHistory::spectrum(int signal, FrameRange range) const
{
    Spectrum spectrum;
    const auto fail = [&spectrum](Spectrum::Problem problem) {
        spectrum.problem = problem;
        return spectrum;
    };
    qint64 count = Spectrum::maxCount;
    while (count > range.count())
        count /= 2;
    if (count < Spectrum::fewest)
        return fail(Spectrum::TooShort);
    const FrameRange part{range.end - count, range.end};
    if (!m_timeLine.breaks(part.begin + 1, part.end - 1).empty())
        return fail(Spectrum::HasGap);
    const std::optional<double> told = rate(part);
    const bool isRegular = !std::isnan(m_timeLine.stretchOf(part.begin).interval) &&
                           !std::isnan(m_timeLine.stretchOf(part.end - 1).interval);
    if (!told || !isRegular)
        return fail(Spectrum::NoRate);
    if (extremes(signal, part).errors > 0)
        return fail(Spectrum::HasErrors);
    std::vector<double> values(static_cast<std::size_t>(count));
    m_signals[static_cast<std::size_t>(signal)].copy(part.begin, count, values.data());
    spectrum.step = *told / static_cast<double>(count);
    spectrum.amplitudes = amplitudesOf(values);
    return spectrum;
}

DataBlock SignalHistory::block(FrameRange range, int maxCount) const
{
    if (range.isEmpty() || m_signals.empty())
        return DataBlock();
    const TimeLine::Stretch &stretch = m_timeLine.stretchOf(range.begin);
    const qint64 end = m_timeLine.blockEnd(range.begin, std::min(range.end, range.begin + maxCount));
    const auto frames = static_cast<int>(end - range.begin);
    QVector<double> scaled(frames * signalCount());
    for (int frame = 0; frame < frames; ++frame)
        for (int signal = 0; signal < signalCount(); ++signal)
            scaled[frame * signalCount() + signal] = value(signal, range.begin + frame);
    const QVector<qint32> raw(scaled.size(), 0);
    const qint64 number = stretch.number + range.begin - stretch.index;
    if (stretch.isSpread) {
        QVector<double> times;
        times.reserve(frames);
        for (qint64 frame = range.begin; frame < end; ++frame)
            times.append(m_timeLine.timeOf(frame));
        return DataBlock::withTimes(stretch.run, number, signalCount(), scaled, raw, times);
    }
    const double time = m_timeLine.timeOf(range.begin);
    return DataBlock(stretch.run, number, signalCount(), scaled, raw,
                     std::isnan(time) ? std::nullopt : std::optional(time),
                     std::isnan(stretch.interval) ? std::nullopt : std::optional(stretch.interval));
}

} // namespace Explorer
