// SPDX-License-Identifier: MIT
#include "readerbench.h"

using namespace SondixQt;

namespace {

/// A controller that sends the values 1 and 2, and in measuring mode 3 the values 41, 42 and 43.
void loadModes()
{
    const auto signal = [](const char *name, int value) {
        return QStringLiteral(R"({ "name": "%1", "range": [0, 100], "rawRange": [0, 100],
            "generator": { "kind": "constant", "value": %2 } })")
            .arg(QLatin1String(name))
            .arg(value);
    };
    const QString text =
        QStringLiteral(R"({ "sensors": [ { "model": "CC430", "serialNumber": "1001", "rate": 1000,
        "place": { "interface": "TCP/IP", "ip": "10.0.0.1" }, "signals": [ %1, %2 ],
        "measureModes": { "parameter": "SA_MeasureMode", "modes": [ { "mode": 3, "signals": [ %3, %4, %5 ] } ] } } ] })")
            .arg(signal("A", 1), signal("B", 2), signal("X", 41), signal("Y", 42), signal("Z", 43));
    sondixsim::loadBench(text.toStdString());
    sondixsim::useVirtualClock();
}

SensorAddress modesAddress()
{
    return {CC430, {{"IP_Interface", "TCP/IP"}, {"IP_RemoteAddr", "10.0.0.1"}}};
}

/// False, with a message, if a value of \a blocks stands in the place of another.
bool areInTheirPlaces(const QVector<DataBlock> &blocks)
{
    for (const DataBlock &block : blocks) {
        const bool isMode3 = block.valuesPerFrame() == 3;
        for (int frame = 0; frame < block.frameCount(); ++frame) {
            for (int signal = 0; signal < block.valuesPerFrame(); ++signal) {
                if (qRound(block.scaled(frame, signal)) == (isMode3 ? 41 : 1) + signal)
                    continue;
                qWarning() << block.scaled(frame, signal) << "in signal" << signal << "of"
                           << block.valuesPerFrame();
                return false;
            }
        }
    }
    return true;
}

} // namespace

/// The frames and their rate change, and the sensor does not always say so at once.
class ReaderDescriptionsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { clearReaderBench(); }

    void aDescriptionThatFailsIsReadAgain_data();
    void aDescriptionThatFailsIsReadAgain();
    void aRateThatFailsIsReadAgain();
    void settingsThatChangeTheFrameDiscardOldValues();
    void theBeginningOfAFrameIsLeftToTheNext();
    void timesAreKnownFromTheFirstPollOn();
    void trackingSensorsLoseNothingWhenTheirRateChanges_data();
    void trackingSensorsLoseNothingWhenTheirRateChanges();
};

void ReaderDescriptionsTest::aDescriptionThatFailsIsReadAgain_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("error") << -30 << QByteArray();
    QTest::newRow("no values") << 0 << QByteArray("IA_ValuesPerFrame=0\n");
}

void ReaderDescriptionsTest::aDescriptionThatFailsIsReadAgain()
{
    QFETCH(const int, code);
    QFETCH(const QByteArray, answer);
    loadModes();
    SensorReader reader(modesAddress());
    Recording recording(reader);
    QVERIFY(startReading(reader));
    sondixsim::advance(0.1);
    QTRY_COMPARE(recording.delivered, 100);
    sondixsim::Fault once;
    once.command = "Get_TransmittedDataInfo";
    once.times = 1;
    if (code != 0)
        once.code = code;
    else
        once.answer = answer.toStdString();
    sondixsim::inject(once);
    reader.post("Set_MeasureMode", {{"SP_MeasureMode", 3}});
    QTRY_COMPARE(recording.frames.size(), 2);
    QCOMPARE(recording.frames.last().valuesPerFrame, 3);
    sondixsim::advance(0.1);
    QTRY_VERIFY(recording.delivered > 150);
    QVERIFY(areInTheirPlaces(recording.blocks));
    QCOMPARE(recording.gaps.size(), 1);
    QCOMPARE(recording.gaps.first().reason, DataGap::Restarted);
    QCOMPARE(recording.holes, 0);
}

void ReaderDescriptionsTest::aRateThatFailsIsReadAgain()
{
    loadReaderBench({}, 500);
    scriptAnswer("Get_TransmittedDataInfo", "IA_ValuesPerFrame=2\n"); // without a rate
    scriptAnswer("Set_Laser", "");
    SensorReader reader(readerAddress());
    Recording recording(reader);
    QVERIFY(startReading(reader));
    sondixsim::advance(0.1);
    QTRY_COMPARE(recording.delivered, 100);
    sondixsim::Fault once;
    once.command = "Get_Samplerate";
    once.code = -30;
    once.times = 1;
    sondixsim::inject(once);
    bool isDone = false;
    reader.post("Set_Laser", {{"SP_Laser", 1}}, &reader, [&isDone](const CommandResult &) { isDone = true; });
    QTRY_VERIFY(isDone);
    for (const int frames : {200, 300, 400}) {
        sondixsim::advance(0.1);
        QTRY_COMPARE(recording.delivered, frames);
    }
    sondixsim::advance(0.7); // 200 more than the ring can hold
    QTRY_COMPARE(recording.delivered, 900);
    sondixsim::advance(0.1);
    QTRY_COMPARE(recording.delivered, 1000);
    QCOMPARE(recording.lost, 200);
    QCOMPARE(recording.unknownGaps, 0);
}

void ReaderDescriptionsTest::settingsThatChangeTheFrameDiscardOldValues()
{
    loadModes();
    SensorInstance instance(CC430);
    QCOMPARE(instance.open(modesAddress().parameters), NoError);
    sondixsim::Fault stuck;
    stuck.command = "Get_TransmittedDataInfo";
    stuck.from = 2; // after the setting
    stuck.times = 1;
    stuck.hang = true;
    sondixsim::inject(stuck);
    sondixsim::recordCalls(true);
    SensorReader reader(instance);
    reader.addSetting("Set_MeasureMode", {{"SP_MeasureMode", 3}});
    Recording recording(reader);
    reader.start();
    const auto isAskedAgain = [] {
        const auto calls = sondixsim::calls();
        return 2 == std::count_if(calls.begin(), calls.end(), [](const sondixsim::Call &call) {
                   return call.text() == R"(SetParameterString("S_Command", "Get_TransmittedDataInfo"))";
               });
    };
    QTRY_VERIFY(isAskedAgain());
    // The simulator itself forgets such values.
    sondixsim::pushData(serialNumber, {}, {1.0, 2.0, 1.0, 2.0, 1.0, 2.0, 1.0, 2.0}, sondixsim::now());
    QTRY_VERIFY((sondixsim::releaseHangs(), reader.state() == SensorReader::Reading));
    sondixsim::recordCalls(false);
    sondixsim::advance(0.1);
    QTRY_VERIFY(recording.delivered >= 100);
    QVERIFY(stopReading(reader));
    QVERIFY(areInTheirPlaces(recording.blocks));
    QCOMPARE(recording.holes, 0);
}

void ReaderDescriptionsTest::theBeginningOfAFrameIsLeftToTheNext()
{
    loadReaderBench();
    SensorInstance instance(TX270);
    QCOMPARE(instance.open(readerAddress().parameters), NoError);
    {
        SensorReader reader(instance);
        Recording recording(reader);
        QVERIFY(startReading(reader));
        sondixsim::pushData(serialNumber, {}, {1.0, 8.0, 2.0}, sondixsim::now());
        QTRY_COMPARE(recording.delivered, 1);
        QVERIFY(stopReading(reader));
    }
    sondixsim::pushData(serialNumber, {}, {9.0}, sondixsim::now());
    QVector<double> values;
    QCOMPARE(instance.transferData(values), NoError);
    QCOMPARE(values, (QVector<double>{2.0, 9.0}));
}

/// On a busy machine the first poll brings many frames, and a recording may end with them.
void ReaderDescriptionsTest::timesAreKnownFromTheFirstPollOn()
{
    loadReaderBench();
    sondixsim::useRealClock();
    SensorInstance instance(TX270);
    QCOMPARE(instance.open(readerAddress().parameters), NoError);
    const auto generated = [] { return sondixsim::frameCounts(serialNumber).generated; };
    QTRY_VERIFY(generated() > 5); // some wait at the start
    sondixsim::Fault stuck;
    stuck.function = "DataAvail";
    stuck.from = 2;
    stuck.times = 1;
    stuck.hang = true;
    sondixsim::inject(stuck);
    SensorReader reader(instance);
    Recording recording(reader);
    QVERIFY(startReading(reader));
    const auto before = generated();
    QTRY_VERIFY(generated() > before + 50);
    QTRY_VERIFY((sondixsim::releaseHangs(), !recording.blocks.isEmpty()));
    const DataBlock &first = recording.blocks.first();
    QVERIFY(first.time());
    QVERIFY(first.wallClockMicroseconds());
    QVERIFY(first.wallClockUncertainty() < 60.0);
}

void ReaderDescriptionsTest::trackingSensorsLoseNothingWhenTheirRateChanges_data()
{
    QTest::addColumn<SensorType>("type");
    QTest::addColumn<QString>("command");
    QTest::addColumn<QMap<QString, QVariant>>("parameters");
    QTest::addColumn<bool>("isSetting");
    const QMap<QString, QVariant> average{{"SP_Average", 40}};
    QTest::newRow("RG53x, average") << RG53x << "Set_Average" << average << false;
    QTest::newRow("RG53x, average as setting") << RG53x << "Set_Average" << average << true;
    QTest::newRow("RG53x, speed") << RG53x << "SpeedTracking" << QMap<QString, QVariant>() << false;
    QTest::newRow("RG52x, time") << RG52x << "Set_MeasureTime" << QMap<QString, QVariant>{{"SP_MeasureTime", 10}}
                                 << false;
}

void ReaderDescriptionsTest::trackingSensorsLoseNothingWhenTheirRateChanges()
{
    QFETCH(const SensorType, type);
    QFETCH(const QString, command);
    using Parameters = QMap<QString, QVariant>; // the macro does not accept a comma
    QFETCH(const Parameters, parameters);
    QFETCH(const bool, isSetting);
    const QByteArray more = type == RG52x
                                ? QByteArray(R"(, "settings": { "Autostart": { "SA_AutostartCommand": 0 },
        "MeasureTime": { "SA_MeasureTime": 1 } })")
                                : QByteArray();
    const QByteArray bench = R"({ "sensors": [ { "model": ")" + QByteArray(type == RG52x ? "RG52x" : "RG53x") +
                             R"(", "serialNumber": "1001", "place": { "interface": "RS232", "port": "5" })" +
                             more + " } ] }";
    sondixsim::loadBench(bench.toStdString());
    sondixsim::useVirtualClock();
    SensorReader reader(SensorAddress{type, {{"IP_Interface", "RS232"}, {"IP_Port", 5}}});
    Recording recording(reader);
    if (isSetting)
        reader.addSetting(command, parameters);
    QVERIFY(startReading(reader));
    sondixsim::advance(10.0);
    QTRY_VERIFY(recording.delivered > 0);
    if (!isSetting) {
        ErrorCode code = ErrorCode(1);
        reader.post(command, parameters, &reader, [&code](const CommandResult &result) { code = result.code; });
        QTRY_COMPARE(code, NoError);
    }
    const auto isEmpty = [] {
        const sondixsim::FrameCounts counts = sondixsim::frameCounts(serialNumber);
        return counts.fetched + counts.unsent + counts.lost + counts.discarded >= counts.generated;
    };
    for (int i = 0; i < 20; ++i) {
        sondixsim::advance(2.5);
        QTRY_VERIFY(isEmpty());
    }
    QVERIFY(stopReading(reader));
    QCOMPARE(sondixsim::frameCounts(serialNumber).lost, std::uint64_t(0));
    QCOMPARE(recording.lost, 0);
    QCOMPARE(recording.holes, 0);
}

QTEST_GUILESS_MAIN(ReaderDescriptionsTest)
#include "tst_readerdescriptions.moc"
