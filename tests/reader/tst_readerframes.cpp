// SPDX-License-Identifier: MIT
#include "support/unit.h"

#include "readerbench.h"

using namespace SondixQt;

/// Frames whose description changes while the sensor is being read.
class ReaderFramesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void valuesOfTheFrameBeforeAreDiscarded_data();
    void valuesOfTheFrameBeforeAreDiscarded();
    void aChangedRateAloneIsReported();
};

void ReaderFramesTest::valuesOfTheFrameBeforeAreDiscarded_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("signalCount");
    QTest::addColumn<int>("oldFrames");
    QTest::newRow("more values") << 3 << 3 << 5;
    QTest::newRow("fewer values") << 1 << 1 << 5;
    QTest::newRow("as many of other signals") << 2 << 2 << 5;
    QTest::newRow("nothing is left") << 3 << 3 << 0;
}

void ReaderFramesTest::valuesOfTheFrameBeforeAreDiscarded()
{
    QFETCH(int, mode);
    QFETCH(int, signalCount);
    QFETCH(int, oldFrames);
    constexpr double marks[] = {41.0, 42.0, 43.0};
    constexpr double oldMark = 7.0;
    const auto constant = [](const char *name, double value) {
        return QStringLiteral(R"({ "name": "%1", "range": [0, 100], "rawRange": [0, 100],
            "generator": { "kind": "constant", "value": %2 } })")
            .arg(QLatin1String(name))
            .arg(value);
    };
    QStringList values;
    for (int i = 0; i < signalCount; ++i)
        values += constant("New", marks[i]);
    const QString text = QStringLiteral(R"({ "sensors": [ { "model": "CC430", "serialNumber": "1001", "rate": 1000,
        "place": { "interface": "TCP/IP", "ip": "10.0.0.1" }, "signals": [ %1 ],
        "measureModes": { "parameter": "SA_MeasureMode", "modes": [ { "mode": %2, "signals": [ %3 ] } ] } } ] })")
                             .arg(constant("Old", oldMark) + ", " + constant("Old too", oldMark))
                             .arg(mode)
                             .arg(values.join(", "));
    sondixsim::loadBench(text.toStdString());
    sondixsim::useVirtualClock();
    SensorReader reader({CC430, {{"IP_Interface", "TCP/IP"}, {"IP_RemoteAddr", "10.0.0.1"}}});
    Recording recording(reader);
    QVERIFY(startReading(reader));
    sondixsim::advance(0.1);
    QTRY_COMPARE(recording.delivered, 100);

    // Not every sensor-access library discards what it has of the frame before.
    const auto change = [mode, oldFrames, oldMark](SensorInstance &instance) {
        CommandResult result;
        result.code = instance.sendCommand("Set_MeasureMode", "SP_MeasureMode", mode);
        if (oldFrames > 0)
            sondixsim::pushData(serialNumber, {}, std::vector<double>(2 * oldFrames, oldMark), sondixsim::now());
        return result;
    };
    bool answered = false;
    reader.call(change, SensorReader::MayChange, this, [&](const CommandResult &result) {
        QCOMPARE(result.code, NoError);
        answered = true;
    });
    QTRY_VERIFY(answered);
    for (int i = 1; i <= 3; ++i) {
        sondixsim::advance(0.1);
        QTRY_COMPARE(recording.delivered, 100 * (i + 1));
    }
    QCOMPARE(reader.frame().valuesPerFrame, signalCount);
    QCOMPARE(recording.holes, 0);
    QCOMPARE(recording.gaps.size(), 1);
    QCOMPARE(recording.gaps.first().reason, DataGap::Restarted);
    QVERIFY(!recording.gaps.first().frames);
    QCOMPARE(recording.gaps.first().firstFrame, 100);
    for (const DataBlock &block : qAsConst(recording.blocks)) {
        if (block.run() == 0)
            continue;
        QCOMPARE(block.valuesPerFrame(), signalCount);
        for (int frame = 0; frame < block.frameCount(); ++frame)
            for (int i = 0; i < signalCount; ++i)
                QCOMPARE(block.scaled(frame, i), marks[i]);
    }
}

void ReaderFramesTest::aChangedRateAloneIsReported()
{
    loadReaderBench();
    const int before = scriptAnswer("Get_TransmittedDataInfo", "IA_ValuesPerFrame=2\nIA_Datarate=1000\n");
    SensorReader reader(readerAddress());
    Recording recording(reader);
    QVERIFY(startReading(reader));
    QCOMPARE(reader.frame().datarate, 1000.0);
    sondixsim::removeFault(before);
    scriptAnswer("Get_TransmittedDataInfo", "IA_ValuesPerFrame=2\nIA_Datarate=2000\n");
    reader.addSetting("Set_Samplerate", {{"SP_Measrate", 2.0}});
    QTRY_COMPARE(recording.frames.size(), 2);
    QCOMPARE(recording.frames.last().datarate, 2000.0);
    QCOMPARE(reader.frame().datarate, 2000.0);
    sondixsim::advance(0.1);
    QTRY_COMPARE(recording.delivered, 200);
    QVERIFY(recording.gaps.isEmpty());
    sondixsim::clearFaults();
}

QTEST_GUILESS_MAIN(ReaderFramesTest)
#include "tst_readerframes.moc"
