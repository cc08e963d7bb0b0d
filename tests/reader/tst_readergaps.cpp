// SPDX-License-Identifier: MIT
#include "support/unit.h"

#include "readerbench.h"

using namespace SondixQt;

namespace {

void loadTrackingSensor(const QByteArray &moreKeys = {})
{
    const QByteArray text = R"({ "sensors": [ { "model": "RG53x", "serialNumber": "1004",
        "place": { "interface": "RS232", "port": "5" })" +
                            moreKeys + " } ] }";
    sondixsim::loadBench(text.toStdString());
    sondixsim::useVirtualClock();
}

SensorAddress trackingAddress()
{
    return {RG53x, {{"IP_Interface", "RS232"}, {"IP_Port", 5}}};
}

} // namespace

/// What is missing between the frames that a reader delivers, and what is not.
class ReaderGapsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { loadReaderBench(); }
    void cleanup() { clearReaderBench(); }

    void overrunsOfTheLibraryAreGaps();
    void overrunsOfTheConsumerAreGaps();
    void framesThatTheLineDoesNotCarryAreGaps();
    void aTriggeredSensorHasNoGaps();
    void aPolledSensorHasNoGaps();
    void aTrackingSensorIsRestartedByCommands();
    void withoutARateThereAreNoTimesBetween();
    void aChangedRateKeepsTheNumbers();
    void framesFromBeforeTheSettingsAreNoGap();
    void framesFromBeforeTheReaderAreNoGap();
    void framesFromBeforeACommandToATrackingSensorAreNoGap();
    void queriesOfTheReaderDoNotStopTracking();
    void aSettingThatRestartsTheMeasurementIsNoGap();
    void framesThatACommandDiscardsAreAGap_data();
    void framesThatACommandDiscardsAreAGap();
    void framesFromBeforeTheEndOfTriggeringAreNoGap();
    void transfersMayEndInsideFrames();
    void aLossAfterAPartOfAFrameIsInItsPlace();
    void timesThatJumpBackAreAGap();
};

void ReaderGapsTest::overrunsOfTheLibraryAreGaps()
{
    loadReaderBench({}, 500);
    SensorReader reader(readerAddress());
    Recording recording(reader);
    QVERIFY(startReading(reader));
    qint64 generated = 0;
    for (int i = 1; i <= 40; ++i) {
        const int frames = i % 4 == 0 ? 500 + 37 * i : 400;
        sondixsim::advance(frames / 1000.0);
        generated += frames;
        QTRY_COMPARE(recording.delivered + recording.lost, generated);
    }
    QVERIFY(stopReading(reader));
    QCOMPARE(recording.holes, 0);
    QCOMPARE(recording.unknownGaps, 0);
    QCOMPARE(recording.gaps.size(), 10);
    QCOMPARE(recording.lost, qint64(sondixsim::lostFrames(serialNumber)));
    QCOMPARE(reader.framesLost(), recording.lost);
    for (const DataGap &gap : qAsConst(recording.gaps))
        QCOMPARE(gap.reason, DataGap::LibraryOverrun);
    for (const DataBlock &block : qAsConst(recording.blocks)) {
        for (int i = 0; i < block.frameCount(); ++i)
            QCOMPARE(qRound64(block.scaled(i, 0)), block.firstFrame() + i);
    }
}

void ReaderGapsTest::overrunsOfTheConsumerAreGaps()
{
    SensorReader reader(readerAddress());
    reader.setQueueLimit(2000);
    reader.setDeliveryInterval(1ms);
    Recording recording(reader);
    QVERIFY(startReading(reader));
    sondixsim::recordCalls(true);
    for (int i = 0; i < 50; ++i) {
        sondixsim::advance(0.2);
        // The thread reads while this one delivers nothing.
        QDeadlineTimer deadline(5000);
        const auto transfers = [] {
            const auto calls = sondixsim::calls();
            return std::count_if(calls.begin(), calls.end(),
                                 [](const sondixsim::Call &call) { return call.function == "TransferDataTS"; });
        };
        while (transfers() == 0 && !deadline.hasExpired())
            QThread::msleep(1);
        sondixsim::clearCalls();
    }
    sondixsim::recordCalls(false);
    QVERIFY(stopReading(reader));
    QCOMPARE(recording.delivered + recording.lost, 10000);
    QCOMPARE(recording.holes, 0);
    QVERIFY(recording.lost >= 8000);
    QCOMPARE(recording.gaps.size(), 1);
    QCOMPARE(recording.gaps.first().reason, DataGap::ConsumerOverrun);
}

void ReaderGapsTest::aTriggeredSensorHasNoGaps()
{
    SensorInstance instance(TX270);
    QCOMPARE(instance.open(readerAddress().parameters), NoError);
    QCOMPARE(instance.sendCommand("Set_TriggerMode", {{"SP_TriggerMode", 1}}), NoError);
    instance.close();
    SensorReader reader(readerAddress());
    Recording recording(reader);
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::WaitingForTrigger);
    QVector<double> times;
    for (int i = 0; i < 20; ++i) {
        sondixsim::advance(i * 0.37);
        sondixsim::trigger(serialNumber);
        times.append(sondixsim::now());
        if (i % 5 == 0)
            QTRY_COMPARE(recording.delivered, i + 1);
    }
    QTRY_COMPARE(recording.delivered, 20);
    QCOMPARE(reader.state(), SensorReader::Reading);
    QTRY_COMPARE(reader.state(), SensorReader::WaitingForTrigger);
    QVERIFY(recording.gaps.isEmpty());
    int frame = 0;
    for (const DataBlock &block : qAsConst(recording.blocks)) {
        QVERIFY(!block.frameInterval());
        for (int i = 0; i < block.frameCount(); ++i, ++frame)
            QVERIFY(qAbs(*block.frameTime(i) - times.at(frame)) < 1e-9);
    }
}

void ReaderGapsTest::aPolledSensorHasNoGaps()
{
    sondixsim::loadBench(R"({ "sensors": [ { "model": "CP740", "serialNumber": "1005",
        "place": { "interface": "RS232", "port": "6" } } ] })");
    sondixsim::useVirtualClock();
    SensorReader reader({CP740, {{"IP_Interface", "RS232"}, {"IP_Port", 6}}});
    Recording recording(reader);
    QVERIFY(startReading(reader));
    for (int i = 0; i < 10; ++i) {
        const qint64 before = recording.delivered;
        sondixsim::advance(0.02); // two frames
        QTRY_VERIFY(recording.delivered > before);
    }
    const qint64 before = recording.delivered;
    sondixsim::advance(100.0);
    QTRY_VERIFY(recording.delivered > before);
    QVERIFY(stopReading(reader));
    QVERIFY(recording.gaps.isEmpty());
    QVERIFY(!recording.blocks.last().frameInterval());
    QVERIFY(recording.blocks.last().time());
    // Blocks that wait for delivery need little more memory than their values.
    for (const DataBlock &block : qAsConst(recording.blocks))
        QVERIFY(block.scaledData().capacity() < 2 * block.scaledData().size() + 100);
}

void ReaderGapsTest::aTrackingSensorIsRestartedByCommands()
{
    loadTrackingSensor();
    SensorReader reader(trackingAddress());
    Recording recording(reader);
    QVERIFY(startReading(reader));
    sondixsim::advance(1.0);
    QTRY_VERIFY(recording.delivered > 0);
    const qint64 before = recording.delivered;
    sondixsim::Fault slow;
    slow.command = "Set_Average";
    slow.delay = 0.2;
    slow.times = 1;
    sondixsim::inject(slow);
    CommandResult result;
    result.code = CreationError;
    {
        CallRecorder recorder;
        reader.post("Set_Average", {{"SP_Average", 20}}, this,
                    [&](const CommandResult &answer) { result = answer; });
        QTRY_VERIFY(isCommandStaged("Set_Average"));
        sondixsim::advance(0.5); // the sensor does not measure while a command is carried out
        QTRY_COMPARE(result.code, NoError);
        QVERIFY(isCommandStaged("DistanceTracking"));
    }
    sondixsim::advance(10.0);
    QTRY_VERIFY(recording.delivered > before);
    QVERIFY(stopReading(reader));
    QCOMPARE(recording.holes, 0);
    QCOMPARE(recording.gaps.size(), 1);
    QCOMPARE(recording.gaps.first().reason, DataGap::Restarted);
    QVERIFY(!recording.gaps.first().frames);
    // The sensor has measured nothing in that gap, and all that it has measured was delivered.
    const sondixsim::FrameCounts counts = sondixsim::totalFrameCounts("1004");
    QCOMPARE(counts.generated, static_cast<quint64>(recording.delivered));
    QCOMPARE(recording.lost, 0);
}

void ReaderGapsTest::withoutARateThereAreNoTimesBetween()
{
    scriptCommandFailure("Get_Samplerate", -33);
    scriptAnswer("Get_TransmittedDataInfo", "IA_ValuesPerFrame=2\n");
    SensorReader reader(readerAddress());
    Recording recording(reader);
    QVERIFY(startReading(reader));
    sondixsim::advance(0.1);
    QTRY_COMPARE(recording.delivered, 100);
    const DataBlock block = recording.blocks.first();
    QVERIFY(!block.frameInterval());
    QVERIFY(block.time());
    QVERIFY(!block.frameTime(1));
}

void ReaderGapsTest::framesThatTheLineDoesNotCarryAreGaps()
{
    // Frames of two values of 24 bits have 8 bytes: 115200 baud carry 1440 of 5000 per second.
    sondixsim::setLineSpeedEffect(true);
    SensorReader reader(readerAddress());
    reader.addSetting("Set_Samplerate", {{"SP_Measrate", 5.0}});
    Recording recording(reader);
    QVERIFY(startReading(reader));
    QCOMPARE(reader.frame().datarate, 5000.0);
    for (int i = 1; i <= 10; ++i) {
        sondixsim::advance(0.1);
        QTRY_VERIFY(qAbs(recording.delivered - 144 * i) <= 1);
    }
    // Only the first frame of a transfer has a time: what is missing is reported with the next one.
    QVERIFY2(recording.gaps.size() >= 9, qPrintable(QString::number(recording.gaps.size())));
    QCOMPARE(recording.unknownGaps, 0);
    for (const DataBlock &block : qAsConst(recording.blocks))
        QCOMPARE(block.firstFrame(), qRound64(block.scaled(0, 0) - recording.blocks.first().scaled(0, 0)));
    QCOMPARE(recording.holes, 0);
    sondixsim::setLineSpeedEffect(false);
}

void ReaderGapsTest::aChangedRateKeepsTheNumbers()
{
    SensorReader reader(readerAddress());
    Recording recording(reader);
    QVERIFY(startReading(reader));
    sondixsim::advance(1.0004);
    QTRY_COMPARE(recording.delivered, 1000);
    sondixsim::advance(0.5); // waits while the command is sent
    ErrorCode code = ErrorCode(1);
    reader.addSetting("Set_Samplerate", {{"SP_Measrate", 2.5}}, this,
                      [&](const CommandResult &result) { code = result.code; });
    QTRY_COMPARE(code, NoError);
    sondixsim::advance(1.0);
    QTRY_COMPARE(recording.delivered, 4000);
    sondixsim::advance(1.0);
    QTRY_COMPARE(recording.delivered, 6500);
    QVERIFY(recording.gaps.isEmpty());
    QCOMPARE(recording.holes, 0);
    QVERIFY(qAbs(recording.blocks.last().frameInterval().value_or(0.0) - 0.0004) < 1e-9);
    for (const DataBlock &block : qAsConst(recording.blocks)) {
        const bool isOld = block.firstFrame() < 1500;
        QVERIFY(qAbs(block.frameInterval().value_or(0.0) - (isOld ? 0.001 : 0.0004)) < 1e-9);
        QVERIFY(!isOld || block.firstFrame() + block.frameCount() <= 1500);
    }
}

void ReaderGapsTest::transfersMayEndInsideFrames()
{
    SensorReader reader(readerAddress());
    Recording recording(reader);
    QVERIFY(startReading(reader));
    const double start = sondixsim::now();
    sondixsim::pushData(serialNumber, {}, {1.0, 8.0, 2.0}, start);
    QTRY_COMPARE(recording.delivered, 1);
    sondixsim::pushData(serialNumber, {}, {9.0}, start + 0.001);
    QTRY_COMPARE(recording.delivered, 2);
    QCOMPARE(recording.numbers(), QVector<double>({1.0, 2.0}));
    QCOMPARE(recording.blocks.last().scaled(0, 1), 9.0);
    QVERIFY(recording.gaps.isEmpty());
    QVERIFY(qAbs(*recording.blocks.last().time() - start - 0.001) < 1e-9);
}

void ReaderGapsTest::framesFromBeforeTheSettingsAreNoGap()
{
    sondixsim::Fault slow;
    slow.command = "Set_Samplerate";
    slow.hang = true;
    slow.times = 1;
    sondixsim::inject(slow);
    sondixsim::recordCalls(true);
    SensorReader reader(readerAddress());
    reader.addSetting("Set_Samplerate", {{"SP_Measrate", 2.5}});
    Recording recording(reader);
    reader.start();
    QTRY_VERIFY(isCommandStaged("Set_Samplerate"));
    sondixsim::advance(0.5); // measured at the rate that the sensor had before
    QTRY_VERIFY((sondixsim::releaseHangs(), reader.state() == SensorReader::Reading));
    sondixsim::advance(0.4002);
    QTRY_COMPARE(recording.delivered, 1500);
    sondixsim::advance(0.4);
    QTRY_COMPARE(recording.delivered, 2500);
    // The interval is known as soon as two transfers have emptied the library after the settings.
    sondixsim::advance(0.4);
    QTRY_COMPARE(recording.delivered, 3500);
    QVERIFY(recording.gaps.isEmpty());
    QCOMPARE(recording.holes, 0);
    QVERIFY(qAbs(recording.blocks.last().frameInterval().value_or(0.0) - 0.0004) < 1e-9);
}

void ReaderGapsTest::framesFromBeforeTheReaderAreNoGap()
{
    SensorInstance instance(TX270);
    QCOMPARE(instance.open(readerAddress().parameters), NoError);
    sondixsim::advance(0.5);
    QCOMPARE(instance.sendCommand("Set_Samplerate", {{"SP_Measrate", 2.5}}), NoError);
    SensorReader reader(instance);
    Recording recording(reader);
    QVERIFY(startReading(reader));
    QTRY_COMPARE(recording.delivered, 500);
    for (qint64 i = 1; i <= 4; ++i) {
        sondixsim::advance(0.4002);
        QTRY_VERIFY(recording.delivered >= 500 + 1000 * i);
    }
    QVERIFY(stopReading(reader));
    QVERIFY(recording.gaps.isEmpty());
    QCOMPARE(recording.holes, 0);
    QVERIFY(qAbs(recording.blocks.last().frameInterval().value_or(0.0) - 0.0004) < 1e-9);
    QCOMPARE(instance.close(), NoError);
}

void ReaderGapsTest::framesFromBeforeACommandToATrackingSensorAreNoGap()
{
    loadTrackingSensor();
    const std::unique_ptr<SensorInstance> instance = SensorInstance::create(RG53x);
    QCOMPARE(instance->open(trackingAddress().parameters), NoError);
    sondixsim::advance(0.0163); // 100 frames per second: the first of them has been measured
    QCOMPARE(instance->sendCommand("Get_Autostart"), NoError);
    SensorReader reader(*instance);
    Recording recording(reader);
    QVERIFY(startReading(reader));
    sondixsim::advance(0.1005);
    QTRY_COMPARE(recording.delivered, 11);
    QVERIFY(stopReading(reader));
    QVERIFY(recording.gaps.isEmpty());
    QCOMPARE(recording.holes, 0);
    QCOMPARE(instance->close(), NoError);
}

// A query would stop the measurement for a while, and what is missing then would look like a loss.
void ReaderGapsTest::queriesOfTheReaderDoNotStopTracking()
{
    loadTrackingSensor(R"(, "ring": 20)");
    SensorReader reader(trackingAddress());
    Recording recording(reader);
    QVERIFY(startReading(reader));
    sondixsim::advance(0.1);
    QTRY_COMPARE(recording.delivered, 10);
    CallRecorder recorder;
    sondixsim::advance(0.4); // 20 frames too many
    QTRY_COMPARE(recording.delivered + recording.lost, 50);
    QCOMPARE(recording.lost, 20);
    QVERIFY(!isCommandStaged("StopTracking"));
    QVERIFY(stopReading(reader));
}

void ReaderGapsTest::aSettingThatRestartsTheMeasurementIsNoGap()
{
    // The frames of both modes are equal, but the sensor begins a new rhythm.
    loadReaderBench(R"(, "measureModes": { "parameter": "SA_MeasureMode", "modes": [ { "mode": 3, )" +
                        readerSignals() + " } ] }",
                    100000, "CC430");
    SensorAddress address = readerAddress();
    address.type = CC430;
    SensorReader reader(address);
    Recording recording(reader);
    QVERIFY(startReading(reader));
    sondixsim::advance(1.0008);
    QTRY_COMPARE(recording.delivered, 1000);
    bool answered = false;
    reader.post("Set_MeasureMode", {{"SP_MeasureMode", 3}}, this,
                [&](const CommandResult &result) { answered = result.code == NoError; });
    QTRY_VERIFY(answered);
    sondixsim::advance(1.0005); // the first frame is measured 1.8 ms after the last one
    QTRY_COMPARE(recording.delivered, 2000);
    QVERIFY(stopReading(reader));
    QVERIFY(recording.gaps.isEmpty());
    QVERIFY(qAbs(recording.blocks.last().frameInterval().value_or(0.0) - 0.001) < 1e-9);
}

void ReaderGapsTest::framesThatACommandDiscardsAreAGap_data()
{
    QTest::addColumn<int>("discarded");
    for (const int discarded : {1, 2, 50})
        QTest::addRow("%d", discarded) << discarded;
}

void ReaderGapsTest::framesThatACommandDiscardsAreAGap()
{
    QFETCH(int, discarded);
    sondixsim::Fault slow;
    slow.command = "Clear_Buffers";
    slow.hang = true;
    slow.times = 1;
    sondixsim::inject(slow);
    SensorReader reader(readerAddress());
    Recording recording(reader);
    QVERIFY(startReading(reader));
    sondixsim::advance(1.0005);
    QTRY_COMPARE(recording.delivered, 1000);
    bool answered = false;
    {
        CallRecorder recorder;
        reader.post("Clear_Buffers", {}, this,
                    [&](const CommandResult &result) { answered = result.code == NoError; });
        QTRY_VERIFY(isCommandStaged("Clear_Buffers"));
        // Measured after the reader has transferred everything, and before the command is carried out.
        sondixsim::advance(discarded / 1000.0);
        QTRY_VERIFY((sondixsim::releaseHangs(), answered));
    }
    QCOMPARE(int(sondixsim::frameCounts(serialNumber).discarded), discarded);
    sondixsim::advance(0.5);
    QTRY_COMPARE(recording.delivered, 1500);
    QCOMPARE(recording.gaps.size(), 1);
    const DataGap gap = recording.gaps.first();
    QCOMPARE(gap.reason, DataGap::Restarted);
    QCOMPARE(gap.frames, std::optional<qint64>());
    QCOMPARE(gap.firstFrame, 1000);
    QCOMPARE(recording.holes, 0);
}

void ReaderGapsTest::framesFromBeforeTheEndOfTriggeringAreNoGap()
{
    sondixsim::Fault slow;
    slow.command = "Set_TriggerMode";
    slow.hang = true;
    slow.from = 2; // the first one is the setting
    slow.times = 1;
    sondixsim::inject(slow);
    SensorReader reader(readerAddress());
    reader.addSetting("Set_TriggerMode", {{"SP_TriggerMode", 1}});
    Recording recording(reader);
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::WaitingForTrigger);
    sondixsim::recordCalls(true);
    reader.post("Set_TriggerMode", {{"SP_TriggerMode", 0}});
    QTRY_VERIFY(isCommandStaged("Set_TriggerMode"));
    for (int i = 0; i < 5; ++i) {
        sondixsim::advance(0.1234);
        sondixsim::trigger(serialNumber);
    }
    sondixsim::advance(0.1);
    QTRY_VERIFY((sondixsim::releaseHangs(), reader.state() == SensorReader::Reading));
    sondixsim::recordCalls(false);
    sondixsim::advance(0.1005);
    QTRY_COMPARE(recording.delivered, 105);
    // The interval is known as soon as two transfers have emptied the library after the command.
    sondixsim::advance(0.1);
    QTRY_COMPARE(recording.delivered, 205);
    sondixsim::advance(0.1);
    QTRY_COMPARE(recording.delivered, 305);
    QVERIFY(recording.gaps.isEmpty());
    QVERIFY(qAbs(recording.blocks.last().frameInterval().value_or(0.0) - 0.001) < 1e-9);
}

void ReaderGapsTest::aLossAfterAPartOfAFrameIsInItsPlace()
{
    loadReaderBench({}, 500);
    SensorReader reader(readerAddress());
    Recording recording(reader);
    QVERIFY(startReading(reader));
    const double start = sondixsim::now();
    sondixsim::advance(0.1);
    QTRY_COMPARE(recording.delivered, 100);
    // The frames 100 and 101 are pushed by the test, so that a part of a frame waits.
    sondixsim::setSilent(serialNumber, true);
    sondixsim::advance(0.002);
    sondixsim::setSilent(serialNumber, false);
    sondixsim::pushData(serialNumber, {}, {100.0, 107.0, 101.0}, start + 0.101);
    QTRY_COMPARE(recording.delivered, 101);
    sondixsim::Fault nothing;
    nothing.function = "DataAvail";
    nothing.count = 0;
    const int fault = sondixsim::inject(nothing);
    sondixsim::pushData(serialNumber, {}, {108.0}, start + 0.102);
    sondixsim::advance(0.7); // with the waiting frame 201 more than the ring can hold
    sondixsim::removeFault(fault);
    QTRY_COMPARE(recording.delivered + recording.lost, 802);
    QCOMPARE(recording.lost, 201);
    QCOMPARE(recording.gaps.size(), 1);
    QCOMPARE(recording.gaps.first().firstFrame, 101);
    QCOMPARE(recording.holes, 0);
    for (const DataBlock &block : qAsConst(recording.blocks)) {
        for (int i = 0; i < block.frameCount(); ++i)
            QCOMPARE(qRound64(block.scaled(i, 0)), block.firstFrame() + i);
    }
}

void ReaderGapsTest::timesThatJumpBackAreAGap()
{
    SensorReader reader(readerAddress());
    Recording recording(reader);
    QVERIFY(startReading(reader));
    sondixsim::pushData(serialNumber, {}, {1.0, 8.0}, 1000.0);
    QTRY_COMPARE(recording.delivered, 1);
    sondixsim::pushData(serialNumber, {}, {2.0, 9.0}, 20.0);
    QTRY_COMPARE(recording.delivered, 2);
    QCOMPARE(recording.unknownGaps, 1);
    QCOMPARE(recording.gaps.first().reason, DataGap::Unknown);
    QCOMPARE(recording.holes, 0);
    QVERIFY(reader.hasUnknownGaps());
}

QTEST_GUILESS_MAIN(ReaderGapsTest)
#include "tst_readergaps.moc"
