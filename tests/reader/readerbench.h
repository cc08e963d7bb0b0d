// SPDX-License-Identifier: MIT
#pragma once

#include "support/callrecorder.h"
#include "support/scripting.h"

#include <SondixQt/SensorInstance>
#include <SondixQt/SensorReader>

#include <QtTest>

#include <algorithm>
#include <map>

using namespace std::chrono_literals;

constexpr char serialNumber[] = "1001";

/// JSON of the two signals of loadReaderBench().
inline QByteArray readerSignals()
{
    const QByteArray range = R"("range": [0, 10000000], "rawRange": [0, 10000000])";
    const QByteArray counter = R"({ "kind": "counter", "modulo": 10000000 })";
    return R"("signals": [ { "name": "Number", )" + range + R"(, "generator": )" + counter +
           R"( }, { "name": "Shifted", )" + range + R"(, "generator": [ )" + counter +
           R"(, { "kind": "constant", "value": 7 } ] } ])";
}

/// A bench with one sensor that measures 1000 frames per second of two values: the number of the frame since the sensor was
/// opened, and the same number plus 7. The clock is virtual.
inline void loadReaderBench(const QByteArray &moreKeys = {}, int ring = 100000, const char *model = "TX270")
{
    const QByteArray text = R"({ "lineSpeed": false, "sensors": [ {
        "serialNumber": "1001", "rate": 1000, "model": ")" +
                            QByteArray(model) + R"(", "ring": )" + QByteArray::number(ring) + moreKeys + R"(,
        "place": { "interface": "RS232", "port": "3" }, )" +
                            readerSignals() + " } ] }";
    sondixsim::loadBench(text.toStdString());
    sondixsim::useVirtualClock();
}

inline SondixQt::SensorAddress readerAddress()
{
    return {SondixQt::TX270, {{"IP_Interface", "RS232"}, {"IP_Port", 3}}};
}

/// Opens the sensor again at once.
inline SondixQt::Reconnect quickly()
{
    SondixQt::Reconnect reconnect;
    reconnect.first = 1ms;
    reconnect.longest = 20ms;
    return reconnect;
}

/// What a test may have left behind.
inline void clearReaderBench()
{
    sondixsim::releaseHangs();
    sondixsim::clearFaults();
}

/// False, with a message, if \a reader does not reach the state in time.
inline bool waitForState(const SondixQt::SensorReader &reader, SondixQt::SensorReader::State state)
{
    if (QTest::qWaitFor([&] { return reader.state() == state; }))
        return true;
    qWarning() << "waited for the state" << state << "in the state" << reader.state() << reader.errorString();
    return false;
}

inline bool startReading(SondixQt::SensorReader &reader)
{
    reader.start();
    return waitForState(reader, SondixQt::SensorReader::Reading);
}

inline bool stopReading(SondixQt::SensorReader &reader)
{
    reader.stop();
    return waitForState(reader, SondixQt::SensorReader::Stopped);
}

inline bool unplugSensor(const SondixQt::SensorReader &reader)
{
    sondixsim::unplug(serialNumber);
    return waitForState(reader, SondixQt::SensorReader::Reconnecting);
}

inline bool plugSensor(const SondixQt::SensorReader &reader)
{
    sondixsim::plug(serialNumber);
    return waitForState(reader, SondixQt::SensorReader::Reading);
}

/// Whether a reader is about to send \a command, or waits for its answer. The calls must be recorded.
inline bool isCommandStaged(const char *command)
{
    const QString staging =
        QStringLiteral("SetParameterString(\"S_Command\", \"%1\")").arg(QLatin1String(command));
    const auto calls = sondixsim::calls();
    return std::any_of(calls.begin(), calls.end(),
                       [&](const sondixsim::Call &call) { return call.text() == staging.toStdString(); });
}

/// Records what a reader delivers and checks that the numbers of frames have no unreported hole.
class Recording : public QObject
{
public:
    explicit Recording(SondixQt::SensorReader &reader)
    {
        using namespace SondixQt;
        connect(&reader, &SensorReader::blockReady, this, &Recording::addBlock);
        connect(&reader, &SensorReader::gapDetected, this, &Recording::addGap);
        connect(&reader, &SensorReader::stateChanged, this,
                [this](SensorReader::State state) { states.append(state); });
        connect(&reader, &SensorReader::errorOccurred, this, [this](ErrorCode code, const QString &text) {
            errors.append(code);
            errorTexts.append(text);
        });
        connect(&reader, &SensorReader::frameChanged, this,
                [this](const TransmittedDataInfo &frame) { frames.append(frame); });
    }

    qint64 delivered = 0;
    qint64 lost = 0;
    int unknownGaps = 0;
    /// The number of blocks that did not continue what was delivered before.
    int holes = 0;
    QVector<SondixQt::DataBlock> blocks;
    QVector<SondixQt::DataGap> gaps;
    QVector<SondixQt::SensorReader::State> states;
    QVector<SondixQt::ErrorCode> errors;
    QStringList errorTexts;
    QVector<SondixQt::TransmittedDataInfo> frames;

    /// All values of the first signal.
    QVector<double> numbers() const
    {
        QVector<double> all;
        for (const SondixQt::DataBlock &block : blocks)
            all += block.scaledValues(0);
        return all;
    }

private:
    void addBlock(const SondixQt::DataBlock &block)
    {
        holes += block.run() == run && block.firstFrame() == next && !block.isEmpty() ? 0 : 1;
        next = block.firstFrame() + block.frameCount();
        delivered += block.frameCount();
        blocks.append(block);
    }
    void addGap(const SondixQt::DataGap &gap)
    {
        holes += gap.run == run && gap.firstFrame == next ? 0 : 1;
        if (gap.frames) {
            next += *gap.frames;
            lost += *gap.frames;
        } else {
            ++run;
            next = 0;
            ++unknownGaps;
        }
        gaps.append(gap);
    }

    int run = 0;
    qint64 next = 0;
};
