// SPDX-License-Identifier: MIT
#include "frameaccount_p.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace SondixQt {

namespace {

/// Sensors report rounded rates.
constexpr double reportedRateError = 1.0e-3;
/// The clock of a sensor drifts: no estimate is better than this.
constexpr double smallestRateError = 1.0e-8;
/// The deviation of a single time is a few times the recent ones at most.
constexpr double jitterFactor = 4.0;
/// The span of frames from which the period is estimated.
constexpr qint64 maxSpan = qint64(1) << 20;
/// The error of a prediction over one transfer, in frames. A lost frame deviates by 1.
constexpr double transferError = 0.2;
constexpr double tolerance = 0.5;
/// The same while the period is expected to change.
constexpr double pendingTolerance = 0.05;
constexpr double maxCountedFrames = 1.0e15;
/// Times that are early by no more than this are imprecise; otherwise the clock has been set back.
constexpr double maxEarlySeconds = 0.1;
constexpr int minTransferFrames = 16;
constexpr int maxTransferFrames = 8192;

double periodOf(double rateHz)
{
    return std::isfinite(rateHz) && rateHz > 0.0 && std::isfinite(1.0 / rateHz) ? 1.0 / rateHz : 0.0;
}

} // namespace

void FramePeriod::reset(double seconds)
{
    value = seconds;
    relativeError = reportedRateError;
    jitter = 0.0;
    origin.reset();
}

void FramePeriod::observe(qint64 frame, double time)
{
    if (!isKnown())
        return;
    if (!origin) {
        origin = checkpoint = Point{frame, time};
        return;
    }
    const auto span = static_cast<double>(frame - origin->frame);
    const double measured = span > 0.0 ? (time - origin->time) / span : 0.0;
    if (!(measured > 0.0))
        return;
    const double deviation = std::fabs(measured - value) / value * span;
    jitter = std::max(jitter / 2.0, deviation);
    value = measured;
    relativeError = std::clamp(jitterFactor * jitter / span, smallestRateError, reportedRateError);
    if (frame - checkpoint.frame > maxSpan) {
        origin = checkpoint;
        checkpoint = {frame, time};
    }
}

void FrameAccount::start(const Timing &newTiming)
{
    *this = FrameAccount();
    timing = newTiming;
    period.reset(timing.regular ? periodOf(timing.rateHz) : 0.0);
}

DataGap FrameAccount::breakOff(DataGap::Reason reason)
{
    const DataGap gap = missing(std::nullopt, reason, std::nullopt);
    const int nextRun = run;
    start(timing);
    run = nextRun;
    return gap;
}

void FrameAccount::resume(const Timing &newTiming)
{
    timing = newTiming;
    forgetTimes();
}

void FrameAccount::commandSent(const Timing &newTiming, bool mayPause)
{
    paused = paused || mayPause;
    const double wanted = newTiming.regular ? periodOf(newTiming.rateHz) : 0.0;
    const double reported = timing.regular ? periodOf(timing.rateHz) : 0.0;
    timing = newTiming;
    if (wanted == reported) // not period.seconds(), which is more exact
        return;
    if (period.isKnown() && wanted > 0.0 && hasLast)
        nextPeriod = wanted;
    else
        forgetTimes();
}

void FrameAccount::settle()
{
    paused = false;
    if (nextPeriod > 0.0) {
        period.reset(nextPeriod);
        nextPeriod = 0.0;
    }
}

void FrameAccount::setRate(double rateHz)
{
    Timing changed = timing;
    changed.rateHz = rateHz;
    commandSent(changed, false);
}

void FrameAccount::forgetTimes()
{
    period.reset(timing.regular ? periodOf(timing.rateHz) : 0.0);
    nextPeriod = 0.0;
    slack = 0.0;
    hasLast = false;
}

double FrameAccount::frameExcess(double time, double seconds) const
{
    return (time - lastTime) / seconds - static_cast<double>(next - lastFrame);
}

FrameAccount::Fit FrameAccount::fit(double time) const
{
    if (!std::isfinite(time) || (hasLast && timing.regular && time == lastTime && next > lastFrame))
        return Fit::Standing;
    if (!hasLast)
        return Fit::Continues;
    if (!period.isKnown())
        return time < lastTime ? Fit::Behind : Fit::Continues;
    const double excess = frameExcess(time, period.seconds());
    const bool continues = std::fabs(excess) <= toleratedExcess();
    if (nextPeriod > 0.0) {
        const double newExcess = std::fabs(frameExcess(time, nextPeriod));
        if (newExcess <= tolerance && newExcess < std::fabs(excess))
            return Fit::NewPeriod;
        // The period has changed after the last frame, which began a new period of measurement.
        const double afterLast = time - lastTime - static_cast<double>(next - 1 - lastFrame) * period.seconds();
        if (std::fabs(excess) > pendingTolerance && afterLast >= nextPeriod * (1.0 - tolerance) &&
            afterLast <= (period.seconds() + nextPeriod) * (1.0 + reportedRateError))
            return Fit::NewPeriod;
    }
    if (continues)
        return Fit::Continues;
    if (excess > 0.0)
        return Fit::Ahead;
    return time >= lastTime && -excess * period.seconds() <= maxEarlySeconds ? Fit::Early : Fit::Behind;
}

double FrameAccount::toleratedExcess() const
{
    return std::max(tolerance, 2.0 * slack);
}

bool FrameAccount::fits(double time) const
{
    const Fit result = fit(time);
    return result != Fit::Ahead && result != Fit::Behind && result != Fit::Early;
}

DataGap FrameAccount::gapHere(DataGap::Reason reason) const
{
    DataGap gap;
    gap.run = run;
    gap.firstFrame = next;
    gap.reason = reason;
    if (hasLast && next > 0 && (period.isKnown() || next - 1 == lastFrame))
        gap.beginTime = lastTime + static_cast<double>(next - 1 - lastFrame) * period.seconds();
    return gap;
}

/// Reports a gap at the next frame and advances the numbers.
DataGap FrameAccount::missing(std::optional<qint64> frames, DataGap::Reason reason, std::optional<double> endTime)
{
    DataGap gap = gapHere(reason);
    gap.frames = frames;
    gap.endTime = endTime;
    if (frames) {
        next += *frames;
    } else {
        ++run;
        next = 0;
    }
    return gap;
}

FrameAccount::Frames FrameAccount::add(int values, double time)
{
    Frames result;
    if (values <= 0)
        return result;
    const int perFrame = timing.valuesPerFrame;
    // Such a transfer begins in a frame whose beginning is lost, and its time is that of this frame.
    if (toSkip > 0)
        time = period.isKnown() ? time + period.seconds() : std::numeric_limits<double>::quiet_NaN();
    const Fit kind = fit(time);
    std::optional<double> firstTime;
    if (kind != Fit::Standing)
        firstTime = time;

    if (kind == Fit::NewPeriod) {
        period.reset(nextPeriod);
        nextPeriod = 0.0;
        result.continues = false;
    } else if (kind == Fit::Early) {
        slack = std::max(slack, -frameExcess(time, period.seconds()));
    } else if (kind == Fit::Ahead || kind == Fit::Behind) {
        // The frame that contains the first value is not the one whose beginning was transferred before.
        const bool skips = incomplete > 0;
        if (skips) {
            result.discardedEarlier = incomplete;
            toSkip = perFrame - incomplete;
            incomplete = 0;
            firstTime = period.isKnown() ? std::optional<double>(time + period.seconds()) : std::nullopt;
        }
        const double excess = period.isKnown() ? frameExcess(time, period.seconds()) : 0.0;
        const double error = (static_cast<double>(next - lastFrame) + excess) * period.uncertainty();
        const bool counted = kind == Fit::Ahead && nextPeriod == 0.0 && !paused && slack < tolerance &&
                             error < tolerance && excess < maxCountedFrames;
        if (counted) {
            result.gap = missing(qRound64(excess) + (skips ? 1 : 0), DataGap::LibraryOverrun, firstTime);
        } else {
            DataGap::Reason reason = DataGap::Unknown;
            if (paused)
                reason = DataGap::Restarted;
            else if (kind == Fit::Ahead)
                reason = DataGap::LibraryOverrun;
            result.gap = missing(std::nullopt, reason, firstTime);
            forgetTimes();
        }
        paused = false;
        result.continues = false;
    }

    const int skipped = std::min(toSkip, values);
    toSkip -= skipped;
    result.discardedNow = skipped;
    const int total = incomplete + values - skipped;
    result.run = run;
    result.first = next;
    result.count = total / perFrame;
    incomplete = total % perFrame;
    result.time = firstTime;
    if (firstTime) {
        period.observe(next, *firstTime);
        hasLast = true;
        lastFrame = next;
        lastTime = *firstTime;
    } else {
        result.continues = false;
    }
    if (period.isKnown())
        result.interval = period.seconds();
    next += result.count;
    return result;
}

int FrameAccount::maxFrames() const
{
    if (!timing.regular || nextPeriod > 0.0 || paused)
        return 1; // each frame has a time of its own
    if (!period.isKnown())
        return maxTransferFrames;
    return std::clamp(static_cast<int>(transferError / period.uncertainty()), minTransferFrames,
                      maxTransferFrames);
}

} // namespace SondixQt
