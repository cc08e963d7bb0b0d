// SPDX-License-Identifier: MIT
#include "support/unit.h"

#include "readerbench.h"

using namespace SondixQt;
using State = SensorReader::State;

class SensorReaderTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { loadReaderBench(); }
    void cleanup()
    {
        sondixsim::releaseHangs();
        sondixsim::clearFaults();
    }

    void readsAndStops();
    void readsASensorThatTheCallerHasOpened();
    void opensAndClosesAnInstanceOfTheCaller();
    void blocksDescribeThemselves();
    void reportsSettingsAndErrorTexts();
    void leavesTheErrorTextsOfAnInstanceToTheCaller();
    void deliversAtTheInterval();
    void failsIfTheSensorCannotBeOpened();
    void failsIfASettingIsRefused();
    void failsIfTheFramesAreNotDescribed_data();
    void failsIfTheFramesAreNotDescribed();
    void failsIfTheSensorIsUnplugged();
    void canBeStartedAgain();
    void startAfterStopStartsAgain();
    void overrunsOfTheLibraryAreGaps();
    void overrunsOfTheConsumerAreGaps();
    void aTriggeredSensorHasNoGaps();
    void aPolledSensorHasNoGaps();
    void aTrackingSensorIsRestartedByCommands();
    void withoutARateThereAreNoTimesBetween();
    void theFrameDescriptionMayNameTheRate();
    void aChangedRateKeepsTheNumbers();
    void framesFromBeforeTheSettingsAreNoGap();
    void aSettingThatRestartsTheMeasurementIsNoGap();
    void framesFromBeforeTheEndOfTriggeringAreNoGap();
    void transfersMayEndInsideFrames();
    void aLossAfterAPartOfAFrameIsInItsPlace();
    void timesThatJumpBackAreAGap();
};

void SensorReaderTest::readsAndStops()
{
    SensorReader reader(readerAddress());
    Recording recording(reader);
    QCOMPARE(reader.state(), SensorReader::Stopped);
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    sondixsim::advance(1.0);
    QTRY_COMPARE(recording.delivered, 1000);
    sondixsim::advance(0.5);
    reader.stop(); // what was measured until now is delivered
    QTRY_COMPARE(reader.state(), SensorReader::Stopped);
    QCOMPARE(recording.delivered, 1500);
    QCOMPARE(reader.framesDelivered(), 1500);
    QCOMPARE(reader.framesLost(), 0);
    QCOMPARE(recording.holes, 0);
    QVERIFY(recording.gaps.isEmpty());
    QVERIFY(recording.errors.isEmpty());
    QCOMPARE(recording.states,
             QVector<State>({SensorReader::Opening, SensorReader::Reading, SensorReader::Stopped}));
    QCOMPARE(recording.frames.size(), 1);
    QCOMPARE(recording.frames.first().valuesPerFrame, 2);
    QCOMPARE(reader.sensorInformation().first().value("SA_SerialNumber").toString(), QString(serialNumber));
    const QVector<double> numbers = recording.numbers();
    for (int i = 0; i < numbers.size(); ++i)
        QCOMPARE(numbers.at(i), numbers.first() + i);
    SensorInstance other(TX270);
    QCOMPARE(other.open(readerAddress().parameters), NoError); // the reader has closed it
}

void SensorReaderTest::readsASensorThatTheCallerHasOpened()
{
    SensorInstance instance(TX270);
    QCOMPARE(instance.open(readerAddress().parameters), NoError);
    SensorReader reader(instance);
    Recording recording(reader);
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    sondixsim::advance(0.1);
    QTRY_COMPARE(recording.delivered, 100);
    reader.stop();
    QTRY_COMPARE(reader.state(), SensorReader::Stopped);
    QVERIFY(instance.isOpen());
}

void SensorReaderTest::opensAndClosesAnInstanceOfTheCaller()
{
    SensorInstance instance(TX270);
    instance.storeInterfaceParameters(readerAddress().parameters);
    SensorReader reader(instance);
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    QVERIFY(instance.isOpen());
    reader.stop();
    QTRY_COMPARE(reader.state(), SensorReader::Stopped);
    QVERIFY(!instance.isOpen());
}

void SensorReaderTest::blocksDescribeThemselves()
{
    SensorReader reader(readerAddress());
    Recording recording(reader);
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    const double begin = sondixsim::now();
    sondixsim::advance(0.25);
    QTRY_COMPARE(recording.delivered, 250);
    const DataBlock block = recording.blocks.first();
    QCOMPARE(block.valuesPerFrame(), 2);
    QVERIFY(qAbs(*block.time() - begin - 0.001) < 1e-9);
    QVERIFY(qAbs(block.frameInterval().value_or(0.0) - 0.001) < 1e-12);
    QVERIFY(qAbs(*block.frameTime(1) - begin - 0.002) < 1e-9);
    QCOMPARE(block.scaled(3, 1), block.scaled(3, 0) + 7.0);
    QCOMPARE(block.raw(3, 0), qint32(block.scaled(3, 0)));
    QVERIFY(!block.frameTime(-1));
    QVERIFY(!block.frameTime(block.frameCount()));
}

void SensorReaderTest::reportsSettingsAndErrorTexts()
{
    SensorReader reader(readerAddress());
    QVERIFY(reader.sensorSettings().isEmpty());
    QCOMPARE(reader.errorValueText(-1.0e10 - 4), QString());
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    QCOMPARE(reader.sensorSettings().size(), 1);
    const auto settings = reader.sensorSettings().first();
    QCOMPARE(settings.value("Set_LaserPower").value("SA_LaserPower").toInt(), 1);
    QCOMPARE(settings.value("Set_Samplerate").value("SA_Measrate").toDouble(), 1.0);
    QCOMPARE(reader.errorValueText(-1.0e10 - 4), QString("Target out of range"));
    QCOMPARE(reader.errorValueText(-1.0e10 - 1), QString("No peak found"));
    QCOMPARE(reader.errorValueText(1.5), QString());
    reader.stop();
    QTRY_COMPARE(reader.state(), SensorReader::Stopped);
    QCOMPARE(reader.errorValueText(-1.0e10 - 4), QString("Target out of range"));
}

void SensorReaderTest::leavesTheErrorTextsOfAnInstanceToTheCaller()
{
    SensorInstance instance(TX270);
    QCOMPARE(instance.open(readerAddress().parameters), NoError);
    SensorReader reader(instance);
    CallRecorder recorder;
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    QVERIFY(recorder.take().filter("Get_SensorErrorValueText").isEmpty());
    QCOMPARE(reader.errorValueText(-1.0e10 - 4), QString());
}

void SensorReaderTest::deliversAtTheInterval()
{
    sondixsim::useRealClock();
    SensorReader reader(readerAddress());
    reader.setDeliveryInterval(200ms);
    QCOMPARE(reader.deliveryInterval(), 200ms);
    Recording recording(reader);
    reader.start();
    QTRY_VERIFY(recording.blocks.size() >= 3);
    reader.stop();
    QTRY_COMPARE(reader.state(), SensorReader::Stopped);
    QCOMPARE(recording.holes, 0);
    // 200 frames each, unless the machine is busy; the last one is shorter.
    QVERIFY(recording.blocks.at(1).frameCount() >= 100);
    QVERIFY(recording.blocks.at(1).wallClockTime().isValid());
    QVERIFY(qAbs(recording.blocks.at(1).wallClockTime().msecsTo(QDateTime::currentDateTimeUtc())) < 60000);
    QVERIFY(recording.blocks.at(1).wallClockUncertainty() < 1.0);
}

void SensorReaderTest::failsIfTheSensorCannotBeOpened()
{
    sondixsim::unplug(serialNumber);
    SensorReader reader(readerAddress());
    Recording recording(reader);
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Failed);
    QCOMPARE(recording.errors.size(), 1);
    QVERIFY(reader.error() != NoError);
    QVERIFY(!reader.errorString().isEmpty());
    QVERIFY(recording.gaps.isEmpty());
    sondixsim::plug(serialNumber);
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    QCOMPARE(reader.error(), NoError);
}

void SensorReaderTest::failsIfASettingIsRefused()
{
    scriptCommandFailure("Set_Samplerate", -33, "not allowed");
    SensorReader reader(readerAddress());
    Recording recording(reader);
    reader.addSetting("Set_Samplerate", {{"SP_Measrate", 2.0}});
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Failed);
    QCOMPARE(reader.error(), ErrorCode(-33));
    QVERIFY(reader.errorString().contains("Set_Samplerate"));
    QVERIFY(reader.errorString().contains("not allowed"));
}

void SensorReaderTest::failsIfTheFramesAreNotDescribed_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("no value") << QByteArray("IA_ValuesPerFrame=0\n");
    QTest::newRow("fewer than none") << QByteArray("IA_ValuesPerFrame=-3\n");
    QTest::newRow("absurdly many") << QByteArray("IA_ValuesPerFrame=2000000000\n");
}

void SensorReaderTest::failsIfTheFramesAreNotDescribed()
{
    QFETCH(QByteArray, answer);
    scriptAnswer("Get_TransmittedDataInfo", answer);
    SensorReader reader(readerAddress());
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Failed);
    QCOMPARE(reader.error(), FrameError);
}

void SensorReaderTest::failsIfTheSensorIsUnplugged()
{
    SensorReader reader(readerAddress());
    Recording recording(reader);
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    sondixsim::advance(0.1);
    QTRY_COMPARE(recording.delivered, 100);
    sondixsim::unplug(serialNumber);
    QTRY_COMPARE(reader.state(), SensorReader::Failed);
    QCOMPARE(recording.states.last(), SensorReader::Failed);
    QCOMPARE(recording.errors.size(), 1);
    QCOMPARE(recording.delivered, 100);
    QVERIFY(!reader.errorString().isEmpty());
}

void SensorReaderTest::canBeStartedAgain()
{
    SensorReader reader(readerAddress());
    for (int i = 0; i < 5; ++i) {
        Recording recording(reader);
        reader.start();
        reader.start();
        QTRY_COMPARE(reader.state(), SensorReader::Reading);
        sondixsim::advance(0.05);
        QTRY_COMPARE(recording.delivered, 50);
        QCOMPARE(recording.blocks.first().firstFrame(), 0);
        QCOMPARE(recording.blocks.first().run(), 0);
        QCOMPARE(reader.framesDelivered(), 50);
        reader.stop();
        reader.stop();
        QTRY_COMPARE(reader.state(), SensorReader::Stopped);
        QCOMPARE(recording.states.count(SensorReader::Stopped), 1);
    }
}

void SensorReaderTest::startAfterStopStartsAgain()
{
    SensorReader reader(readerAddress());
    Recording recording(reader);
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    reader.stop();
    reader.start();
    QTRY_COMPARE(recording.states.size(), 5);
    QCOMPARE(recording.states, QVector<State>({SensorReader::Opening, SensorReader::Reading, SensorReader::Stopped,
                                               SensorReader::Opening, SensorReader::Reading}));
}

void SensorReaderTest::overrunsOfTheLibraryAreGaps()
{
    loadReaderBench({}, 500);
    SensorReader reader(readerAddress());
    Recording recording(reader);
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    qint64 generated = 0;
    for (int i = 1; i <= 40; ++i) {
        const int frames = i % 4 == 0 ? 500 + 37 * i : 400;
        sondixsim::advance(frames / 1000.0);
        generated += frames;
        QTRY_COMPARE(recording.delivered + recording.lost, generated);
    }
    reader.stop();
    QTRY_COMPARE(reader.state(), SensorReader::Stopped);
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

void SensorReaderTest::overrunsOfTheConsumerAreGaps()
{
    SensorReader reader(readerAddress());
    reader.setQueueLimit(2000);
    reader.setDeliveryInterval(1ms);
    Recording recording(reader);
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
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
    reader.stop();
    QTRY_COMPARE(reader.state(), SensorReader::Stopped);
    QCOMPARE(recording.delivered + recording.lost, 10000);
    QCOMPARE(recording.holes, 0);
    QVERIFY(recording.lost >= 8000);
    QCOMPARE(recording.gaps.size(), 1);
    QCOMPARE(recording.gaps.first().reason, DataGap::ConsumerOverrun);
}

void SensorReaderTest::aTriggeredSensorHasNoGaps()
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

void SensorReaderTest::aPolledSensorHasNoGaps()
{
    sondixsim::loadBench(R"({ "sensors": [ { "model": "CP740", "serialNumber": "1005",
        "place": { "interface": "RS232", "port": "6" } } ] })");
    sondixsim::useVirtualClock();
    SensorReader reader({CP740, {{"IP_Interface", "RS232"}, {"IP_Port", 6}}});
    Recording recording(reader);
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    for (int i = 0; i < 10; ++i) {
        const qint64 before = recording.delivered;
        sondixsim::advance(0.02); // two frames
        QTRY_VERIFY(recording.delivered > before);
    }
    const qint64 before = recording.delivered;
    sondixsim::advance(100.0);
    QTRY_VERIFY(recording.delivered > before);
    reader.stop();
    QTRY_COMPARE(reader.state(), SensorReader::Stopped);
    QVERIFY(recording.gaps.isEmpty());
    QVERIFY(!recording.blocks.last().frameInterval());
    QVERIFY(recording.blocks.last().time());
    // Blocks that wait for delivery need little more memory than their values.
    for (const DataBlock &block : qAsConst(recording.blocks))
        QVERIFY(block.scaledData().capacity() < 2 * block.scaledData().size() + 100);
}

void SensorReaderTest::aTrackingSensorIsRestartedByCommands()
{
    sondixsim::loadBench(R"({ "sensors": [ { "model": "RG53x", "serialNumber": "1004",
        "place": { "interface": "RS232", "port": "5" } } ] })");
    sondixsim::useVirtualClock();
    SensorReader reader({RG53x, {{"IP_Interface", "RS232"}, {"IP_Port", 5}}});
    Recording recording(reader);
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    sondixsim::advance(1.0);
    QTRY_VERIFY(recording.delivered > 0);
    const qint64 before = recording.delivered;
    bool answered = false;
    reader.post("Get_Settings", {}, this, [&](const CommandResult &) { answered = true; });
    QTRY_VERIFY(answered);
    sondixsim::advance(10.0);
    QTRY_VERIFY(recording.delivered > before);
    reader.stop();
    QTRY_COMPARE(reader.state(), SensorReader::Stopped);
    QCOMPARE(recording.holes, 0);
    for (const DataGap &gap : qAsConst(recording.gaps))
        QCOMPARE(gap.reason, DataGap::Restarted);
}

void SensorReaderTest::withoutARateThereAreNoTimesBetween()
{
    scriptCommandFailure("Get_Samplerate", -33);
    scriptAnswer("Get_TransmittedDataInfo", "IA_ValuesPerFrame=2\n");
    SensorReader reader(readerAddress());
    Recording recording(reader);
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    sondixsim::advance(0.1);
    QTRY_COMPARE(recording.delivered, 100);
    const DataBlock block = recording.blocks.first();
    QVERIFY(!block.frameInterval());
    QVERIFY(block.time());
    QVERIFY(!block.frameTime(1));
}

void SensorReaderTest::theFrameDescriptionMayNameTheRate()
{
    scriptCommandFailure("Get_Samplerate", -33);
    SensorReader reader(readerAddress());
    Recording recording(reader);
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    QCOMPARE(reader.frame().datarate, 1000.0);
    sondixsim::advance(0.1);
    QTRY_COMPARE(recording.delivered, 100);
    QVERIFY(qAbs(recording.blocks.first().frameInterval().value_or(0.0) - 0.001) < 1e-12);
}

void SensorReaderTest::aChangedRateKeepsTheNumbers()
{
    SensorReader reader(readerAddress());
    Recording recording(reader);
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
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

void SensorReaderTest::transfersMayEndInsideFrames()
{
    SensorReader reader(readerAddress());
    Recording recording(reader);
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
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

void SensorReaderTest::framesFromBeforeTheSettingsAreNoGap()
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

void SensorReaderTest::aSettingThatRestartsTheMeasurementIsNoGap()
{
    // The frames of both modes are equal, but the sensor begins a new rhythm.
    loadReaderBench(R"(, "measureModes": { "parameter": "SA_MeasureMode", "modes": [ { "mode": 3, )" +
                        readerSignals() + " } ] }",
                    100000, "CC430");
    SensorAddress address = readerAddress();
    address.type = CC430;
    SensorReader reader(address);
    Recording recording(reader);
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    sondixsim::advance(1.0008);
    QTRY_COMPARE(recording.delivered, 1000);
    bool answered = false;
    reader.post("Set_MeasureMode", {{"SP_MeasureMode", 3}}, this,
                [&](const CommandResult &result) { answered = result.code == NoError; });
    QTRY_VERIFY(answered);
    sondixsim::advance(1.0005); // the first frame is measured 1.8 ms after the last one
    QTRY_COMPARE(recording.delivered, 2000);
    reader.stop();
    QTRY_COMPARE(reader.state(), SensorReader::Stopped);
    QVERIFY(recording.gaps.isEmpty());
    QVERIFY(qAbs(recording.blocks.last().frameInterval().value_or(0.0) - 0.001) < 1e-9);
}

void SensorReaderTest::framesFromBeforeTheEndOfTriggeringAreNoGap()
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

void SensorReaderTest::aLossAfterAPartOfAFrameIsInItsPlace()
{
    loadReaderBench({}, 500);
    SensorReader reader(readerAddress());
    Recording recording(reader);
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    const double start = sondixsim::now();
    sondixsim::advance(0.1);
    QTRY_COMPARE(recording.delivered, 100);
    // The frames 100 and 101 are pushed by the test, so that the transfer ends inside a frame.
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
    sondixsim::advance(0.7); // 200 more than the ring can hold
    sondixsim::removeFault(fault);
    QTRY_COMPARE(recording.delivered + recording.lost, 802);
    QCOMPARE(recording.lost, 200);
    QCOMPARE(recording.gaps.size(), 1);
    QCOMPARE(recording.gaps.first().firstFrame, 102);
    QCOMPARE(recording.holes, 0);
    for (const DataBlock &block : qAsConst(recording.blocks)) {
        for (int i = 0; i < block.frameCount(); ++i)
            QCOMPARE(qRound64(block.scaled(i, 0)), block.firstFrame() + i);
    }
}

void SensorReaderTest::timesThatJumpBackAreAGap()
{
    SensorReader reader(readerAddress());
    Recording recording(reader);
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    sondixsim::pushData(serialNumber, {}, {1.0, 8.0}, 1000.0);
    QTRY_COMPARE(recording.delivered, 1);
    sondixsim::pushData(serialNumber, {}, {2.0, 9.0}, 20.0);
    QTRY_COMPARE(recording.delivered, 2);
    QCOMPARE(recording.unknownGaps, 1);
    QCOMPARE(recording.gaps.first().reason, DataGap::Unknown);
    QCOMPARE(recording.holes, 0);
    QVERIFY(reader.hasUnknownGaps());
}

QTEST_GUILESS_MAIN(SensorReaderTest)
#include "tst_sensorreader.moc"
