// SPDX-License-Identifier: MIT
#include "recordingwatch.h"

#include "explorer/extras/recordingcontrol.h"
#include "explorer/sensor/sensorsession.h"
#include "shared/recordingreader.h"

#include <SondixQt/errorvalue.h>

#include <cstring>
#include <memory>

using namespace Explorer;
using namespace SondixQt;

namespace {

constexpr int maxProblems = 20;

quint64 mixed(quint64 digest, quint64 value)
{
    constexpr quint64 prime = 1099511628211U; // FNV-1a
    return (digest ^ value) * prime;
}

// Formats may write an error value as its text only.
quint64 bitsOf(double value)
{
    quint64 bits = 0;
    if (!isErrorValue(value) && !std::isnan(value))
        std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

} // namespace

void RecordingWatch::Content::add(const DataBlock &block)
{
    for (int frame = 0; frame < block.frameCount(); ++frame) {
        digest = mixed(digest, static_cast<quint64>(block.firstFrame() + frame));
        for (int signal = 0; signal < block.valuesPerFrame(); ++signal)
            digest = mixed(digest, bitsOf(block.scaled(frame, signal)));
    }
    frames += block.frameCount();
}

void RecordingWatch::Content::add(const DataGap &gap)
{
    if (gap.frames)
        lost += *gap.frames;
    else
        ++unknownGaps;
}

QString RecordingWatch::Content::text() const
{
    return QString("%1 frames, %2 lost, %3 unknown gaps, digest %4")
        .arg(frames)
        .arg(lost)
        .arg(unknownGaps)
        .arg(digest);
}

bool RecordingWatch::Content::fits(const Content &expected) const
{
    return frames == expected.frames && lost == expected.lost && digest == expected.digest &&
           unknownGaps >= expected.unknownGaps && unknownGaps <= expected.unknownGaps + expected.restarts;
}

RecordingWatch::RecordingWatch(QObject *parent)
    : QObject(parent)
{
}

void RecordingWatch::watch(SensorSession &session, RecordingControl &control)
{
    // The control was connected to the reader before: it has taken what arrives here, or has not.
    const auto stand = std::make_shared<Stand>();
    const auto isTaking = [&control] { return control.isRecording() && !control.isStopping(); };
    connect(&session.reader(), &SensorReader::blockReady, &control, [=](const DataBlock &block) {
        followBlock(*stand, block);
        if (isTaking())
            stand->expected.add(block);
    });
    connect(&session.reader(), &SensorReader::gapDetected, &control, [=](const DataGap &gap) {
        followGap(*stand, gap);
        if (isTaking())
            stand->expected.add(gap);
    });
    connect(&session.reader(), &SensorReader::stateChanged, &control, [stand](SensorReader::State state) {
        if (state == SensorReader::Opening) {
            stand->run = 0;
            stand->nextFrame = 0;
            ++stand->expected.restarts;
            stand->isOpening = true;
        }
    });
    connect(&session.reader(), &SensorReader::frameChanged, &control, [stand] { stand->isOpening = false; });
    connect(&control, &RecordingControl::changed, this, [stand, &control] {
        if (!control.isRecording() || !stand->path.isEmpty())
            return;
        stand->path = control.path();
        stand->expected = {};
        stand->expected.restarts = stand->isOpening ? 1 : 0;
    });
    connect(&control, &RecordingControl::ended, this, [=](const QString &place, const QString &told) {
        if (place.isEmpty() && told.isEmpty() && !stand->path.isEmpty())
            problem(QString("the recording %1 has ended without a file and without a reason").arg(stand->path));
        finish(*stand, place);
    });
    // The page was closed during the recording: the destructor has finished the file.
    connect(&control, &QObject::destroyed, this, [=] { finish(*stand, stand->path); });
}

void RecordingWatch::followBlock(Stand &stand, const DataBlock &block)
{
    if (stand.run != block.run() || (stand.nextFrame >= 0 && stand.nextFrame != block.firstFrame()))
        problem(QString("run %1, frame %2 is delivered after run %3, frame %4")
                    .arg(block.run())
                    .arg(block.firstFrame())
                    .arg(stand.run)
                    .arg(stand.nextFrame));
    stand.run = block.run();
    stand.nextFrame = block.firstFrame() + block.frameCount();
}

void RecordingWatch::followGap(Stand &stand, const DataGap &gap)
{
    if (gap.frames) {
        stand.nextFrame += *gap.frames;
    } else {
        ++stand.run;
        stand.nextFrame = 0;
    }
}

void RecordingWatch::finish(Stand &stand, const QString &place)
{
    // Without a place the file could not be created, and the user was told so.
    if (!stand.path.isEmpty() && !place.isEmpty())
        m_toCompare.append({place, stand.expected});
    stand.path.clear();
}

void RecordingWatch::compareFinished(const std::function<void()> &isGoingOn)
{
    for (const auto &[place, expected] : std::exchange(m_toCompare, {}))
        compare(place, expected, isGoingOn);
}

void RecordingWatch::compare(const QString &place, const Content &expected, const std::function<void()> &isGoingOn)
{
    SondixApp::RecordingReader reader(place);
    if (!reader.open()) {
        problem(QString("%1 is no recording: %2").arg(place, reader.problem()));
        return;
    }
    Content found;
    while (const auto item = reader.next()) {
        std::visit([&found](const auto &content) { found.add(content); }, *item);
        isGoingOn();
    }
    if (!reader.problem().isEmpty() || !reader.warning().isEmpty())
        problem(QString("%1 is not whole: %2%3").arg(place, reader.problem(), reader.warning()));
    if (!found.fits(expected))
        problem(QString("%1 holds %2; delivered were %3").arg(place, found.text(), expected.text()));
    ++m_finished;
    m_frames += found.frames;
    m_lost += found.lost;
}

void RecordingWatch::problem(const QString &text)
{
    if (m_problems.size() < maxProblems)
        m_problems += text;
}
