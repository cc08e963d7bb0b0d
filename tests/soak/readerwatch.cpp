// SPDX-License-Identifier: MIT
#include "readerwatch.h"

#include <SondixQt/DataBlock>

#include <cmath>
#include <cstdio>

using namespace SondixQt;

namespace {

constexpr int maxProblems = 20;
bool tracing = false;

void print(const QString &text)
{
    if (tracing)
        std::printf("%12.6f %s\n", sondixsim::now(), qPrintable(text));
}
using State = SensorReader::State;

bool mayFollow(State from, State to)
{
    switch (from) {
    case SensorReader::Stopped:
    case SensorReader::Failed:
        return to == SensorReader::Opening;
    case SensorReader::Opening:
    case SensorReader::Reconnecting:
    case SensorReader::Reading:
    case SensorReader::WaitingForTrigger:
        break;
    }
    const bool opens = from == SensorReader::Opening || from == SensorReader::Reconnecting;
    return to != from && (to != SensorReader::Opening || opens);
}

QString nameOf(State state)
{
    return QVariant::fromValue(state).toString();
}

} // namespace

ReaderWatch::ReaderWatch(SensorReader &reader, const soakbench::Setup &setup, Accuracy accuracy)
    : m_setup(setup)
    , m_accuracy(accuracy)
    , m_state(reader.state())
{
    connect(&reader, &SensorReader::stateChanged, this, &ReaderWatch::followState);
    connect(&reader, &SensorReader::blockReady, this, &ReaderWatch::followBlock);
    connect(&reader, &SensorReader::gapDetected, this, &ReaderWatch::followGap);
}

void ReaderWatch::trace(bool on)
{
    tracing = on;
}

void ReaderWatch::note(const QString &text)
{
    print(text);
}

void ReaderWatch::problem(const QString &text)
{
    print(QStringLiteral("WRONG ") + text);
    if (m_problems.size() < maxProblems) {
        m_problems += QStringLiteral("run %1, frame %2, %3 s: %4")
                          .arg(m_run)
                          .arg(m_nextFrame)
                          .arg(sondixsim::now(), 0, 'f', 6)
                          .arg(text);
    }
}

void ReaderWatch::beginOpening()
{
    m_opened = true;
    m_skipped = m_toldHere = 0;
    expectChange();
}

void ReaderWatch::followState(State state)
{
    print(nameOf(state));
    if (!mayFollow(m_state, state))
        problem(QStringLiteral("state %1 follows %2").arg(nameOf(state), nameOf(m_state)));
    if (state == SensorReader::Opening && (m_state == SensorReader::Stopped || m_state == SensorReader::Failed)) {
        beginOpening();
        ++m_starts;
        m_run = 0;
        m_nextFrame = 0;
        m_startDelivered = m_startTold = 0;
        m_startUnknown = false;
        m_lastTime.reset();
        m_lastNumber = -1;
        m_gapSinceFrame = true; // nothing is missing before the first frame of a start
    } else if (state == SensorReader::Reconnecting) {
        beginOpening();
    }
    if (state == SensorReader::Opening || state == SensorReader::Reconnecting)
        ++m_openings;
    m_state = state;
}

void ReaderWatch::followGap(const DataGap &gap)
{
    print(QStringLiteral("gap at run %1, frame %2: %3 frames, %4, from %5 s to %6 s")
              .arg(gap.run)
              .arg(gap.firstFrame)
              .arg(gap.frames.value_or(-1))
              .arg(gapReasonText(gap.reason))
              .arg(gap.beginTime.value_or(-1.0), 0, 'f', 6)
              .arg(gap.endTime.value_or(-1.0), 0, 'f', 6));
    if (gap.run != m_run || gap.firstFrame != m_nextFrame)
        problem(QStringLiteral("a gap begins at run %1, frame %2").arg(gap.run).arg(gap.firstFrame));
    if (gap.beginTime && m_lastTime && std::fabs(*gap.beginTime - *m_lastTime) > m_lastInexact + 1e-6 &&
        gap.reason != DataGap::ConsumerOverrun)
        problem(QStringLiteral("a gap begins at %1 s").arg(*gap.beginTime, 0, 'f', 6));
    if (gap.beginTime && gap.endTime && gap.reason != DataGap::Unknown && *gap.endTime < *gap.beginTime)
        problem(QStringLiteral("a gap ends before it begins"));
    m_gapSinceFrame = true;
    if (!gap.frames) {
        if (gap.reason != DataGap::Disconnected && isSteady())
            problem(QStringLiteral("a loss that can be counted was reported as not known: %1")
                        .arg(gapReasonText(gap.reason)));
        expectChange();
        ++m_unknown[gap.reason];
        m_startUnknown = true;
        ++m_run;
        m_nextFrame = 0;
        return;
    }
    if (*gap.frames <= 0)
        problem(QStringLiteral("a gap of %1 frames").arg(*gap.frames));
    m_told[gap.reason] += *gap.frames;
    m_startTold += *gap.frames;
    m_toldHere += *gap.frames;
    m_nextFrame += *gap.frames;
}

void ReaderWatch::followBlock(const DataBlock &block)
{
    constexpr int values = 2;
    if (m_state != SensorReader::Reading && m_state != SensorReader::WaitingForTrigger)
        problem(QStringLiteral("a block in the state %1").arg(nameOf(m_state)));
    if (block.isEmpty() || block.valuesPerFrame() != values ||
        block.rawData().size() != values * block.frameCount() ||
        block.scaledData().size() != block.rawData().size()) {
        problem(
            QStringLiteral("a block of %1 frames, %2 values").arg(block.frameCount()).arg(block.rawData().size()));
        return;
    }
    if (block.run() != m_run || block.firstFrame() != m_nextFrame)
        problem(QStringLiteral("a block begins at run %1, frame %2").arg(block.run()).arg(block.firstFrame()));
    print(QStringLiteral(
              "block at run %1, frame %2: %3 frames, from %4 s, interval %5 s; the sensor's frames %6 to %7, "
              "from %8 s")
              .arg(block.run())
              .arg(block.firstFrame())
              .arg(block.frameCount())
              .arg(block.time().value_or(-1.0), 0, 'f', 6)
              .arg(block.frameInterval().value_or(-1.0), 0, 'f', 9)
              .arg(block.raw(0, 0))
              .arg(block.raw(block.frameCount() - 1, 0))
              .arg(block.raw(0, 1) * m_setup.span / soakbench::timeSteps, 0, 'f', 6));
    followFirstFrame(block);
    followNumbers(block);
    const int last = block.frameCount() - 1;
    checkTime(block, 0);
    checkTime(block, last / 2);
    checkTime(block, last);
    ++m_blocks;
    ++m_steadyBlocks;
    m_run = block.run();
    m_nextFrame = block.firstFrame() + block.frameCount();
    m_delivered += block.frameCount();
    m_startDelivered += block.frameCount();
    m_lastTime = block.frameTime(last);
    m_lastInexact = inexactness(block);
    m_gapSinceFrame = false;
}

void ReaderWatch::followFirstFrame(const DataBlock &block)
{
    const qint64 number = block.raw(0, 0);
    if (m_opened) {
        if (!m_gapSinceFrame)
            problem(QStringLiteral("frames of a new opening follow without a gap"));
        m_skipped = m_toldHere = 0;
        m_beforeFirst += number;
        m_lastNumber = number - 1;
        m_opened = false;
        return;
    }
    if (m_gapSinceFrame && m_nextFrame == 0 && m_run > 0) { // a gap of unknown length
        const qint64 expected = (m_lastNumber + 1) % soakbench::counterModulo;
        m_inUnknownGaps += (number - expected + soakbench::counterModulo) % soakbench::counterModulo;
        // What was reported before belongs to what was missing before.
        m_skipped = m_toldHere = 0;
        m_lastNumber = number - 1;
    }
}

void ReaderWatch::followNumbers(const DataBlock &block)
{
    const qint32 *const raw = block.rawData().constData();
    for (int frame = 0; frame < block.frameCount(); ++frame) {
        const qint64 number = raw[2 * frame];
        const qint64 expected = (m_lastNumber + 1) % soakbench::counterModulo;
        m_lastNumber = number;
        if (number == expected)
            continue;
        if (number < expected && expected - number < soakbench::counterModulo / 2)
            problem(QStringLiteral("frame %1 follows %2").arg(number).arg(expected - 1));
        if (frame > 0 && m_accuracy == Exact)
            problem(QStringLiteral("frame %1 follows %2 within a block").arg(number).arg(expected - 1));
        m_skipped += (number - expected + soakbench::counterModulo) % soakbench::counterModulo;
    }
    if (m_accuracy == Exact ? m_toldHere != m_skipped : m_toldHere > m_skipped)
        problem(QStringLiteral("%1 frames are missing, %2 were reported").arg(m_skipped).arg(m_toldHere));
}

void ReaderWatch::checkTime(const DataBlock &block, int frame)
{
    const std::optional<double> time = block.frameTime(frame);
    if (!time || m_accuracy == Eventual)
        return;
    const double resolution = m_setup.span / soakbench::timeSteps;
    const double measured = block.raw(frame, 1) * resolution;
    if (std::fabs(*time - measured) > resolution + inexactness(block) + 1e-6) {
        problem(QStringLiteral("frame %1 of a block was measured at %2 s and has the time %3 s")
                    .arg(frame)
                    .arg(measured, 0, 'f', 6)
                    .arg(*time, 0, 'f', 6));
    }
}

/// Whether the reader knows rate and times, so that it can count what is missing.
bool ReaderWatch::isSteady() const
{
    constexpr int blocks = 4;
    return m_accuracy == Exact && m_setup.rateError == 0.0 && m_steadyBlocks >= blocks;
}

/// The reader has to find out first that the reported rate is not exact.
double ReaderWatch::inexactness(const DataBlock &block) const
{
    return m_setup.rateError != 0.0 ? 0.3 * block.frameInterval().value_or(0.0) : 0.0;
}

void ReaderWatch::checkBalance()
{
    if (m_toldHere != m_skipped && !m_opened)
        problem(
            QStringLiteral("in the end %1 frames are missing, %2 were reported").arg(m_skipped).arg(m_toldHere));
}

void ReaderWatch::checkTotals(const SensorReader &reader)
{
    if (reader.framesDelivered() != m_startDelivered || reader.framesLost() != m_startTold ||
        reader.hasUnknownGaps() != m_startUnknown)
        problem(QStringLiteral("the reader counts %1 frames delivered and %2 lost, its signals %3 and %4")
                    .arg(reader.framesDelivered())
                    .arg(reader.framesLost())
                    .arg(m_startDelivered)
                    .arg(m_startTold));
}
