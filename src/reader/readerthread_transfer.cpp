// SPDX-License-Identifier: MIT
#include "instance/sensorinstance.h"
#include "readerlog_p.h"
#include "readerthread_p.h"

#include <algorithm>
#include <utility>

namespace SondixQt {

namespace {

constexpr int maxBatchValues = 1 << 20;
/// A sensor that always has values must not keep the thread from commands and deliveries.
constexpr int maxTransfersPerPoll = 1 << 14;
/// Frames of one answer of a sensor that measures when it is polled.
constexpr int maxPolledFrames = 4096;
constexpr std::chrono::seconds rateQueryInterval{1};

} // namespace

double ReaderThread::computerTime()
{
    using Seconds = std::chrono::duration<double>;
    return std::chrono::duration_cast<Seconds>(std::chrono::system_clock::now().time_since_epoch()).count();
}

QString failureText(ErrorCode code, const QString &text)
{
    return text.isEmpty() ? QStringLiteral("the sensor reports error %1").arg(int(code)) : text;
}

/// Transfers everything that is there.
ReaderThread::Result ReaderThread::poll(ReaderError &error)
{
    if (isUndescribed) {
        // The values wait in the sensor-access library until it is known what they mean.
        if (Clock::now() >= nextDescription)
            followCommand(waitingValues());
        if (isUndescribed)
            return isSilent(error) ? Result::Lost : Result::Done;
    }
    const double before = computerTime();
    const qint64 framesBefore = framesRead;
    bool drained = false;
    for (int i = 0; !drained && i < maxTransfersPerPoll; ++i) {
        const Result result = transfer(drained, error);
        if (result != Result::Done)
            return result;
    }
    if (drained) {
        drainedAt = before;
        if (unsettled == 2) {
            unsettled = 1;
        } else if (unsettled == 1 && framesRead > framesBefore) {
            unsettled = 0;
            account.settle();
        }
    }
    if (framesRead > framesBefore) {
        lastFrame = Clock::now();
        plan.reset();
        if (state == SensorReader::WaitingForTrigger)
            setState(SensorReader::Reading);
    }
    return isSilent(error) ? Result::Lost : Result::Done;
}

ReaderThread::Result ReaderThread::transfer(bool &drained, ReaderError &error)
{
    const int perFrame = std::max(frame.valuesPerFrame, 1);
    int count = 0;
    if (polled) {
        count = maxPolledFrames * perFrame;
    } else {
        const ErrorCode code = instance->dataAvail(count, &error.text);
        if (code != NoError)
            return lossOf(code, error);
        // The rest of a frame is transferred alone: the frames behind it may have been lost.
        const qint64 frames = unsettled > 0 || account.remainder() > 0 ? 1 : account.maxFrames();
        // The beginning of a frame stays in the library, so that the next reader finds whole frames.
        const int whole = count - (account.remainder() + count) % perFrame;
        const auto wanted = static_cast<int>(
            std::min<qint64>(whole, std::max<qint64>(frames * perFrame - account.remainder(), 1)));
        drained = wanted == whole;
        count = std::max(wanted, 0);
        if (count == 0)
            return Result::Done;
    }
    collector.reserve(count);
    double time = 0.0;
    const int capacity = count;
    const ErrorCode code =
        instance->transferData(collector.scaledRoom(), collector.rawRoom(), &time, count, &error.text);
    if (code != NoError)
        return lossOf(code, error);
    count = std::clamp(count, 0, capacity);
    drained = drained || count == 0 || (polled && count < capacity);
    if (count > 0)
        collect(count, time);
    return Result::Done;
}

void ReaderThread::collect(int count, double time)
{
    if (rateFailed || !account.fits(time))
        queryRate();
    const FrameAccount::Frames frames = account.add(count, time);
    collector.accept(frames.discardedEarlier, frames.discardedNow, count);
    if (frames.gap || !collector.isContinuedBy(frames) || collector.valueCount() >= maxBatchValues)
        deliver();
    if (frames.gap)
        queue->push(*frames.gap);
    collector.append(frames, std::max(frame.valuesPerFrame, 1));
    framesRead += frames.count;
    if (frames.time && frames.count > 0 && drainedAt > 0.0) {
        const double last = *frames.time + (frames.count - 1) * frames.interval.value_or(0.0);
        wallClock.observe(*frames.time, last, drainedAt, computerTime());
    }
    // The values behind those that waited at the start had not been measured when these were counted.
    waitingAtStart -= count;
    if (drainedAt == 0.0 && waitingAtStart <= 0)
        drainedAt = countedAt;
}

int ReaderThread::waitingValues()
{
    int count = 0;
    if (polled || instance->dataAvail(count) != NoError)
        return 0; // the next poll reports the error
    return std::max(count, 0);
}

/// After a change of the frame it is not known which of the waiting values were measured before it. They may not even be
/// whole frames of the new one.
void ReaderThread::discard(int values)
{
    while (values > 0) {
        int count = std::min(values, maxBatchValues);
        double time = 0.0;
        collector.reserve(count);
        if (instance->transferData(collector.scaledRoom(), collector.rawRoom(), &time, count) != NoError ||
            count <= 0)
            return;
        values -= count;
    }
}

/// The sensor may have been set to another rate by somebody else.
void ReaderThread::queryRate()
{
    const Time now = Clock::now();
    if (triggered || polled || isSpecial() || now - lastRateQuery < rateQueryInterval)
        return;
    lastRateQuery = now;
    double kiloHertz = 0.0;
    rateFailed = instance->getSampleRateInKhz(&kiloHertz) != NoError;
    if (rateFailed || usable(kiloHertz) == 0.0 || kiloHertz * 1000.0 == rateHz)
        return;
    qCDebug(readerLog) << "the sample rate has changed to" << kiloHertz << "kHz";
    rateHz = kiloHertz * 1000.0;
    account.setRate(rateHz);
    unsettled = 2;
}

bool ReaderThread::isSilent(ReaderError &error)
{
    const Time now = Clock::now();
    const Clock::duration pause = now - std::exchange(lastLook, now);
    if (!task.reconnect || !task.reconnect->silence || triggered)
        return false;
    // A process that was stopped has not looked: no single pause is long enough to be a silence.
    using Milliseconds = std::chrono::milliseconds;
    const Milliseconds maxPause = *task.reconnect->silence / 2; // may be too long for the unit of the clock
    if (std::chrono::duration_cast<Milliseconds>(pause) > maxPause)
        lastFrame = std::min(lastFrame + (pause - maxPause), now);
    if (std::chrono::duration_cast<Milliseconds>(now - lastFrame) <= *task.reconnect->silence)
        return false;
    error = {SilenceError, QStringLiteral("the sensor has sent no values for %1 s")
                               .arg(std::chrono::duration<double>(*task.reconnect->silence).count())};
    return true;
}

/// What a failed transfer means; \a error has the text already.
ReaderThread::Result ReaderThread::lossOf(ErrorCode code, ReaderError &error) const
{
    error.code = code;
    error.text = failureText(code, error.text);
    const bool isLoss =
        !task.reconnect || task.reconnect->errors.isEmpty() || task.reconnect->errors.contains(code);
    return isLoss && task.reconnect ? Result::Lost : Result::Failed;
}

} // namespace SondixQt
