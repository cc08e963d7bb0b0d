// SPDX-License-Identifier: MIT
#include "readrun.h"

#include <algorithm>

using namespace SondixQt;

namespace SondixApp {

namespace {

constexpr int tickInterval = 50;
constexpr int stopTimeout = 5000;

} // namespace

ReadRun::ReadRun(SensorReader &reader, FrameSink &sink, const TransmittedDataInfo &frame, const Plan &plan,
                 QObject *parent)
    : QObject(parent)
    , m_reader(reader)
    , m_sink(sink)
    , m_frame(frame)
    , m_plan(plan)
{
    connect(&reader, &SensorReader::blockReady, this, &ReadRun::takeBlock);
    connect(&reader, &SensorReader::gapDetected, this, &ReadRun::takeGap);
    connect(&reader, &SensorReader::frameChanged, this, &ReadRun::takeFrame);
    connect(&reader, &SensorReader::stateChanged, this, &ReadRun::takeState);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &ReadRun::tick);
}

void ReadRun::start()
{
    m_sinceStart.start();
    m_sinceTick.start();
    m_timer.start(tickInterval);
    m_reader.start();
}

void ReadRun::stop()
{
    endBy(Stopped);
}

void ReadRun::takeBlock(const DataBlock &block)
{
    if (m_isComplete || block.isEmpty())
        return;
    m_silentFor = 0.0;
    const qint64 wanted = m_plan.frames ? *m_plan.frames - m_framesRead : block.frameCount();
    const DataBlock taken = wanted < block.frameCount() ? block.mid(0, static_cast<int>(wanted)) : block;
    m_framesRead += taken.frameCount();
    m_lastFrame = taken.mid(taken.frameCount() - 1);
    m_here.run = m_lastFrame.run();
    m_here.firstFrame = m_lastFrame.firstFrame() + 1;
    m_here.beginTime = m_lastFrame.time();
    if (!m_sink.write(taken)) {
        failToWrite();
    } else if (m_plan.frames && m_framesRead >= *m_plan.frames) {
        m_isComplete = true;
        endBy(Reached);
    }
    Q_EMIT advanced();
}

void ReadRun::takeGap(const DataGap &gap)
{
    if (m_isComplete)
        return;
    m_losses.add(gap);
    m_here.run = gap.run + (gap.frames ? 0 : 1);
    m_here.firstFrame = gap.frames ? gap.firstFrame + *gap.frames : 0;
    m_here.beginTime.reset();
    if (!m_sink.write(gap))
        failToWrite();
    Q_EMIT advanced();
}

void ReadRun::takeFrame(const TransmittedDataInfo &frame)
{
    // A sensor that got its power back may have another rate; a gap stands there, and the times of the frames are right.
    const auto withoutRates = [](TransmittedDataInfo description) {
        for (SignalInfo &signal : description.signals)
            signal.rawDatarate = signal.scaledDatarate = 0.0;
        return description;
    };
    if (m_isComplete || withoutRates(frame) == withoutRates(m_frame))
        return;
    m_isComplete = true;
    endBy(ReadFailed, QStringLiteral("the sensor sends other values than at the beginning"));
}

void ReadRun::takeState(SensorReader::State state)
{
    if (state == SensorReader::Failed)
        endBy(ReadFailed, m_reader.errorString());
    if (state == SensorReader::Failed || state == SensorReader::Stopped)
        finish();
    else
        Q_EMIT advanced();
}

void ReadRun::tick()
{
    // A process that was stopped or a computer that was suspended could not see any frame.
    constexpr double longestTick = 2 * tickInterval / 1000.0;
    const double seconds = static_cast<double>(m_sinceTick.restart()) / 1000.0;
    const SensorReader::State state = m_reader.state();
    if (state == SensorReader::Reading || (state == SensorReader::WaitingForTrigger && m_plan.isTriggerSilence))
        m_silentFor += std::min(seconds, longestTick);
    if (m_plan.seconds && static_cast<double>(m_sinceStart.elapsed()) >= *m_plan.seconds * 1000.0)
        endBy(Reached);
    else if (m_plan.silence && m_silentFor >= *m_plan.silence)
        endBy(Silent);
    if (!m_isComplete && !m_sink.flush())
        failToWrite();
}

// What was read before is still delivered and written.
void ReadRun::endBy(End end, const QString &problem)
{
    if (m_end != Running)
        return;
    m_end = end;
    m_problem = problem;
    m_timer.stop();
    m_reader.stop();
    QTimer::singleShot(stopTimeout, this, &ReadRun::giveUp);
}

// Counts even if the run was about to end anyway.
void ReadRun::failToWrite()
{
    m_isComplete = true;
    endBy(WriteFailed);
    m_end = WriteFailed;
    m_problem = m_sink.problem();
}

void ReadRun::giveUp()
{
    if (!m_isFinished && !m_isComplete) {
        m_isHanging = true;
        DataGap unread = m_here;
        unread.reason = DataGap::LibraryOverrun; // they were not read in time
        takeGap(unread);
        m_isComplete = true;
    }
    finish();
}

void ReadRun::finish()
{
    if (m_isFinished)
        return;
    m_isFinished = true;
    m_secondsRead = static_cast<double>(m_sinceStart.elapsed()) / 1000.0;
    Q_EMIT finished();
}

} // namespace SondixApp
