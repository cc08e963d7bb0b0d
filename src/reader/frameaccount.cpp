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
/// The times of this many frames are as exact as the reported rate.
constexpr double reportedSpan = 128.0;
/// The span of frames from which the period is estimated.
constexpr qint64 maxSpan = qint64(1) << 20;
/// The error of a prediction over one transfer, in frames. A lost frame deviates by 1.
constexpr double transferError = 0.2;
constexpr double tolerance = 0.5;
/// The same while the period is expected to change, and while a new one is to be confirmed.
constexpr double pendingTolerance = 0.05;
constexpr double confirmingTolerance = 0.25;
/// Times are no more precise than this, in frames.
constexpr double smallestImprecision = 1.0e-3;
/// The imprecision of early times is forgotten by this factor per transfer.
constexpr double slackDecay = 63.0 / 64.0;
/// The same for the stretch: one loss does not keep transfers small for long.
constexpr double stretchDecay = 0.5;
constexpr double maxStretch = 1.0e6;
constexpr double maxCountedFrames = 1.0e15;
/// Times that are early by no more than this are imprecise; otherwise the clock has been set back.
constexpr double maxEarlySeconds = 0.1;
constexpr int maxTransferFrames = 8192;

double periodOf(double rateHz)
{
    return std::isfinite(rateHz) && rateHz > 0.0 && std::isfinite(1.0 / rateHz) ? 1.0 / rateHz : 0.0;
}

} // namespace

void FramePeriod::reset(double seconds)
{
    reported = value = seconds;
    relativeError = reportedRateError;
    jitter = 0.0;
    measuredOnce = false;
    origin.reset();
}

void FramePeriod::restart()
{
    reported = value;
    origin.reset();
}

void FramePeriod::shift(double seconds)
{
    if (origin)
        origin->time += seconds;
    checkpoint.time += seconds;
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
    measuredOnce = true;
    const double deviation = std::fabs(measured - value) / value * span;
    jitter = std::max(jitter / 2.0, deviation);
    const double weight = span * span / (span * span + reportedSpan * reportedSpan);
    value = reported + weight * (measured - reported);
    relativeError = std::clamp(jitterFactor * jitter / span + std::fabs(value - measured) / value,
                               smallestRateError, reportedRateError);
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

void FrameAccount::resumeWith(int values, bool restarted, const Timing &newTiming)
{
    resume(newTiming);
    hasEarlier = values > 0;
    earlier = values;
    isRestarted = restarted;
    hasRhythm = false;
}

void FrameAccount::commandSent(const Timing &newTiming)
{
    const double wanted = newTiming.regular ? periodOf(newTiming.rateHz) : 0.0;
    const double reported = timing.regular ? periodOf(timing.rateHz) : 0.0;
    timing = newTiming;
    if (wanted > 0.0) {
        pending = true;
        if (wanted != reported || !period.isKnown()) // not period.seconds(), which is more exact
            nextPeriod = wanted;
    } else if (wanted != reported) {
        forgetTimes();
    }
}

void FrameAccount::settle()
{
    if (pending && nextPeriod > 0.0)
        period.reset(nextPeriod);
    pending = false;
    nextPeriod = 0.0;
}

void FrameAccount::setRate(double rateHz)
{
    Timing changed = timing;
    changed.rateHz = rateHz;
    commandSent(changed);
}

void FrameAccount::forgetTimes()
{
    period.reset(timing.regular ? periodOf(timing.rateHz) : 0.0);
    pending = unconfirmed = false;
    nextPeriod = 0.0;
    slack = 0.0;
    stretch = 1.0;
    probes = maxProbes;
    hasLast = false;
}

/// A frame has begun the period that a command has set, or has restarted the present one.
void FrameAccount::beginPeriod()
{
    if (nextPeriod > 0.0)
        period.reset(nextPeriod);
    else
        period.restart();
    pending = false;
    nextPeriod = 0.0;
    unconfirmed = true;
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
    if (pending && std::fabs(excess) > pendingTolerance) {
        const double expected = nextPeriod > 0.0 ? nextPeriod : period.seconds();
        const double newExcess = std::fabs(frameExcess(time, expected));
        if (newExcess <= tolerance && newExcess < std::fabs(excess))
            return Fit::NewPeriod;
        // The command was carried out after the last frame and has restarted the measurement. If it has instead discarded
        // a frame, the times follow the same rhythm.
        const double afterLast = time - lastTime - static_cast<double>(next - 1 - lastFrame) * period.seconds();
        const bool sameRhythm = nextPeriod == 0.0 && std::fabs(excess - 1.0) <= imprecision();
        if (!sameRhythm && afterLast >= expected * (1.0 - tolerance) &&
            afterLast <= (period.seconds() + expected) * (1.0 + reportedRateError))
            return Fit::NewPeriod;
    }
    if (unconfirmed && std::fabs(excess) > std::max(confirmingTolerance, 2.0 * slack))
        return excess > 0.0 ? Fit::Ahead : Fit::Behind;
    if (std::fabs(excess) <= toleratedExcess())
        return Fit::Continues;
    if (excess > 0.0)
        return Fit::Ahead;
    return time >= lastTime && -excess * period.seconds() <= maxEarlySeconds ? Fit::Early : Fit::Behind;
}

double FrameAccount::toleratedExcess() const
{
    return std::max(tolerance, 2.0 * slack);
}

/// How much the time of the next frame may deviate from its rhythm, in frames.
double FrameAccount::imprecision() const
{
    const double drift = static_cast<double>(next - lastFrame) * period.uncertainty();
    return std::min(smallestImprecision + jitterFactor * period.recentJitter() + drift, tolerance);
}

void FrameAccount::followImprecision(double excess)
{
    slack *= slackDecay;
    if (-excess > tolerance)
        slack = std::max(slack, -excess);
}

/// \a periods have passed during the last transfer.
void FrameAccount::followStretch(double periods)
{
    const auto frames = static_cast<double>(next - lastFrame);
    const double latest = frames > 0.0 ? std::min(periods / frames, maxStretch) : 1.0;
    stretch = std::max(latest, 1.0 + (stretch - 1.0) * stretchDecay);
}

/// Follows the values of resumeWith() and the first transfer after them.
/// \return whether the transfer continues the rhythm of those before
bool FrameAccount::followEarlier(int values, double time)
{
    const bool isKnown = hasLast && period.isKnown();
    const double excess = isKnown ? frameExcess(time, period.seconds()) : 0.0;
    // A measurement that has begun again has another phase, too. Whole periods are frames that were lost.
    const bool isInPhase = isKnown && std::fabs(excess - std::nearbyint(excess)) <= pendingTolerance;
    const bool isNext = isInPhase && std::fabs(excess) < tolerance;
    const bool follows = isNext || (isInPhase && hasRhythm && !isRestarted);
    if (!follows)
        forgetTimes();
    hasRhythm = follows;
    hasEarlier = earlier > 0;
    earlier -= values;
    return follows;
}

bool FrameAccount::fits(double time) const
{
    if (hasEarlier)
        return true;
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
    if (hasEarlier)
        result.continues = followEarlier(values, time);
    const Fit kind = fit(time);
    std::optional<double> firstTime;
    if (kind != Fit::Standing)
        firstTime = time;

    const double excess = hasLast && firstTime && period.isKnown() ? frameExcess(time, period.seconds()) : 0.0;
    followStretch(static_cast<double>(next - lastFrame) + (kind == Fit::Ahead ? excess : 0.0));
    if (kind == Fit::NewPeriod) {
        beginPeriod();
        result.continues = false;
    } else if (kind == Fit::Continues || kind == Fit::Early) {
        followImprecision(excess);
        unconfirmed = false;
        if (kind == Fit::Early) {
            period.shift(excess * period.seconds());
            result.continues = false;
        }
    } else if (kind == Fit::Ahead || kind == Fit::Behind) {
        // The frame that contains the first value is not the one whose beginning was transferred before.
        const bool skips = incomplete > 0;
        if (skips) {
            result.discardedEarlier = incomplete;
            toSkip = perFrame - incomplete;
            incomplete = 0;
            firstTime = period.isKnown() ? std::optional<double>(time + period.seconds()) : std::nullopt;
        }
        const double error = (static_cast<double>(next - lastFrame) + excess) * period.uncertainty();
        const bool restarted = pending || unconfirmed;
        if (kind == Fit::Ahead && !restarted && slack < tolerance && error < tolerance &&
            excess < maxCountedFrames) {
            result.gap = missing(qRound64(excess) + (skips ? 1 : 0), DataGap::LibraryOverrun, firstTime);
        } else {
            DataGap::Reason reason = DataGap::Unknown;
            if (restarted && time >= lastTime)
                reason = DataGap::Restarted;
            else if (kind == Fit::Ahead)
                reason = DataGap::LibraryOverrun;
            result.gap = missing(std::nullopt, reason, firstTime);
            const bool wasPending = pending;
            if (reason == DataGap::LibraryOverrun) { // the estimated period still holds
                period.restart();
                probes = maxProbes;
            } else {
                forgetTimes();
            }
            if (wasPending) { // frames of the period before may still follow
                period.reset(0.0);
                commandSent(timing);
            }
        }
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
    probes = std::max(probes - 1, 0);
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
    if (!timing.regular || pending || hasEarlier)
        return 1; // each frame has a time of its own
    if (!period.isKnown())
        return maxTransferFrames;
    if (!period.isMeasured() && probes > 0)
        return 1;
    // Where frames are missing all the time, as on a line that is too slow, a transfer takes longer.
    const auto frames = static_cast<int>(transferError / (period.uncertainty() * stretch));
    return std::clamp(frames, 1, maxTransferFrames);
}

} // namespace SondixQt
