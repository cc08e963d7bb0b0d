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
    void cleanup() { clearReaderBench(); }

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
    void failuresWithoutATextGetOne_data();
    void failuresWithoutATextGetOne();
    void canBeStartedAgain();
    void startAfterStopStartsAgain();
    void theFrameDescriptionMayNameTheRate();
};

void SensorReaderTest::readsAndStops()
{
    SensorReader reader(readerAddress());
    Recording recording(reader);
    QCOMPARE(reader.state(), SensorReader::Stopped);
    QVERIFY(startReading(reader));
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
    QVERIFY(startReading(reader));
    sondixsim::advance(0.1);
    QTRY_COMPARE(recording.delivered, 100);
    QVERIFY(stopReading(reader));
    QVERIFY(instance.isOpen());
}

void SensorReaderTest::opensAndClosesAnInstanceOfTheCaller()
{
    SensorInstance instance(TX270);
    instance.storeInterfaceParameters(readerAddress().parameters);
    SensorReader reader(instance);
    QVERIFY(startReading(reader));
    QVERIFY(instance.isOpen());
    QVERIFY(stopReading(reader));
    QVERIFY(!instance.isOpen());
}

void SensorReaderTest::blocksDescribeThemselves()
{
    SensorReader reader(readerAddress());
    Recording recording(reader);
    QVERIFY(startReading(reader));
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
    QVERIFY(startReading(reader));
    QCOMPARE(reader.sensorSettings().size(), 1);
    const auto settings = reader.sensorSettings().first();
    QCOMPARE(settings.value("Set_LaserPower").value("SA_LaserPower").toInt(), 1);
    QCOMPARE(settings.value("Set_Samplerate").value("SA_Measrate").toDouble(), 1.0);
    QCOMPARE(reader.errorValueText(-1.0e10 - 4), QString("Target out of range"));
    QCOMPARE(reader.errorValueText(-1.0e10 - 1), QString("No peak found"));
    QCOMPARE(reader.errorValueText(1.5), QString());
    QVERIFY(stopReading(reader));
    QCOMPARE(reader.errorValueText(-1.0e10 - 4), QString("Target out of range"));
}

void SensorReaderTest::leavesTheErrorTextsOfAnInstanceToTheCaller()
{
    SensorInstance instance(TX270);
    QCOMPARE(instance.open(readerAddress().parameters), NoError);
    SensorReader reader(instance);
    CallRecorder recorder;
    QVERIFY(startReading(reader));
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
    QVERIFY(stopReading(reader));
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
    QVERIFY(startReading(reader));
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
    QVERIFY(startReading(reader));
    sondixsim::advance(0.1);
    QTRY_COMPARE(recording.delivered, 100);
    sondixsim::unplug(serialNumber);
    QTRY_COMPARE(reader.state(), SensorReader::Failed);
    QCOMPARE(recording.states.last(), SensorReader::Failed);
    QCOMPARE(recording.errors.size(), 1);
    QCOMPARE(recording.delivered, 100);
    QVERIFY(!reader.errorString().isEmpty());
    QCOMPARE(recording.gaps.size(), 1); // what the sensor has measured after the last transfer is missing
    QCOMPARE(recording.gaps.first().reason, DataGap::Disconnected);
    QVERIFY(!recording.gaps.first().frames);
    QCOMPARE(recording.gaps.first().firstFrame, 100);
    QVERIFY(reader.hasUnknownGaps());
    QCOMPARE(recording.holes, 0);
}

void SensorReaderTest::failuresWithoutATextGetOne_data()
{
    QTest::addColumn<QByteArray>("function");
    QTest::addColumn<QByteArray>("command");
    QTest::newRow("opening") << QByteArray("OpenSensor") << QByteArray();
    QTest::newRow("a setting") << QByteArray() << QByteArray("Set_Samplerate");
    QTest::newRow("the description") << QByteArray() << QByteArray("Get_TransmittedDataInfo");
    QTest::newRow("a transfer") << QByteArray("DataAvail") << QByteArray();
}

void SensorReaderTest::failuresWithoutATextGetOne()
{
    QFETCH(QByteArray, function);
    QFETCH(QByteArray, command);
    sondixsim::Fault fault;
    fault.function = function.toStdString();
    fault.command = command.toStdString();
    fault.code = -77;
    fault.silent = true;
    sondixsim::inject(fault);
    SensorReader reader(readerAddress());
    reader.addSetting("Set_Samplerate", {{"SP_Measrate", 2.0}});
    Recording recording(reader);
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Failed);
    QCOMPARE(int(reader.error()), -77);
    QVERIFY2(reader.errorString().contains("-77"), qPrintable(reader.errorString()));
    QCOMPARE(recording.errorTexts, QStringList(reader.errorString()));
}

void SensorReaderTest::canBeStartedAgain()
{
    SensorReader reader(readerAddress());
    for (int i = 0; i < 5; ++i) {
        Recording recording(reader);
        reader.start();
        QVERIFY(startReading(reader));
        sondixsim::advance(0.05);
        QTRY_COMPARE(recording.delivered, 50);
        QCOMPARE(recording.blocks.first().firstFrame(), 0);
        QCOMPARE(recording.blocks.first().run(), 0);
        QCOMPARE(reader.framesDelivered(), 50);
        reader.stop();
        QVERIFY(stopReading(reader));
        QCOMPARE(recording.states.count(SensorReader::Stopped), 1);
    }
}

void SensorReaderTest::startAfterStopStartsAgain()
{
    SensorReader reader(readerAddress());
    Recording recording(reader);
    QVERIFY(startReading(reader));
    reader.stop();
    reader.start();
    QTRY_COMPARE(recording.states.size(), 5);
    QCOMPARE(recording.states, QVector<State>({SensorReader::Opening, SensorReader::Reading, SensorReader::Stopped,
                                               SensorReader::Opening, SensorReader::Reading}));
}

void SensorReaderTest::theFrameDescriptionMayNameTheRate()
{
    scriptCommandFailure("Get_Samplerate", -33);
    SensorReader reader(readerAddress());
    Recording recording(reader);
    QVERIFY(startReading(reader));
    QCOMPARE(reader.frame().datarate, 1000.0);
    sondixsim::advance(0.1);
    QTRY_COMPARE(recording.delivered, 100);
    QVERIFY(qAbs(recording.blocks.first().frameInterval().value_or(0.0) - 0.001) < 1e-12);
}

QTEST_GUILESS_MAIN(SensorReaderTest)
#include "tst_sensorreader.moc"
