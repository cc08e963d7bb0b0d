// SPDX-License-Identifier: MIT
#include "handle.h"
#include "SondixSimulator/control.h"

#include <cmath>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <stdexcept>

/// A sensor with frames of two values at 1000 Hz and a ring of 100 frames.
static std::string benchWith(const std::string &generator, const std::string &more = "")
{
    return R"({ "clock": { "virtual": true }, "sensors": [ {
        "model": "CC430", "serialNumber": "1", "place": { "interface": "TCP/IP", "ip": "10.0.0.1" },
        "rate": 1000, "ring": 100, "signals": [
            { "name": "a", "range": [-100.0, 100.0], "rawRange": [-1000, 1000], "generator": )" +
           generator + more + R"( },
            { "name": "b", "range": [0.0, 1000.0], "rawRange": [0, 1000],
              "generator": { "kind": "ramp", "from": 0.0, "to": 1000.0, "period": 1.0 } }
        ] } ] })";
}

static const char *const constant = R"({ "kind": "constant", "value": 12.3 })";

class TestSimData : public QObject
{
    Q_OBJECT

private:
    /// The values of the first signal in so many frames.
    static std::vector<double> firstSignal(std::uint32_t handle, int frames)
    {
        std::vector<double> values;
        for (int done = 0; done < frames; done += 50) {
            sondixsim::advance(0.05);
            const Block block = takeBlock(handle, 100);
            for (std::size_t i = 0; i < block.scaled.size(); i += 2)
                values.push_back(block.scaled[i]);
        }
        return values;
    }

private Q_SLOTS:
    void valuesAreMeasuredAtTheFrameRate()
    {
        sondixsim::loadBench(benchWith(constant));
        Handle handle(SensorType::CC430);
        handle.open();
        QCOMPARE(handle.available(), 0);
        sondixsim::advance(0.0099);
        QCOMPARE(handle.available(), 2 * 9);
        sondixsim::advance(0.0001);
        QCOMPARE(handle.available(), 2 * 10);
        QCOMPARE(handle.available(), 2 * 10);
    }

    void manySmallStepsLoseNoFrame()
    {
        sondixsim::loadBench(benchWith(constant));
        Handle handle(SensorType::CC430);
        handle.open();
        std::size_t values = 0;
        for (int i = 0; i < 3000; ++i) {
            sondixsim::advance(0.001);
            values += takeBlock(handle, 1000).raw.size();
        }
        QCOMPARE(values, std::size_t(6000));
    }

    void timestampIsThatOfTheFirstFrame()
    {
        sondixsim::loadBench(benchWith(constant));
        sondixsim::advance(10.0);
        Handle handle(SensorType::CC430);
        handle.open();
        sondixsim::advance(0.05);
        QCOMPARE(takeBlock(handle, 20).timestamp, 10.001);
        QCOMPARE(takeBlock(handle, 20).timestamp, 10.011);
        sondixsim::advance(0.02);
        QCOMPARE(takeBlock(handle, 60).timestamp, 10.021); // continues over two blocks
    }

    void fullRingLosesTheOldestFrames()
    {
        sondixsim::loadBench(benchWith(constant));
        Handle handle(SensorType::CC430);
        handle.open();
        sondixsim::advance(0.1);
        QCOMPARE(sondixsim::lostFrames("1"), std::uint64_t(0));
        sondixsim::advance(0.03);
        QCOMPARE(handle.available(), 200);
        QCOMPARE(sondixsim::lostFrames("1"), std::uint64_t(30));
        const Block block = takeBlock(handle, 200);
        QCOMPARE(block.timestamp, 0.031);
        QCOMPARE(block.scaled[1], 31.0); // the ramp of the second signal counts milliseconds
        QCOMPARE(block.scaled[199], 130.0);
    }

    void framesThatNeverEnteredTheRingAreCounted()
    {
        sondixsim::loadBench(benchWith(constant));
        Handle handle(SensorType::CC430);
        handle.open();
        sondixsim::advance(0.01);
        QCOMPARE(handle.available(), 20);
        sondixsim::advance(3.0);
        QCOMPARE(handle.available(), 200);
        QCOMPARE(sondixsim::lostFrames("1"), std::uint64_t(2910));
        QCOMPARE(takeBlock(handle, 2).timestamp, 2.911);
    }

    void openingDiscardsOldValues()
    {
        sondixsim::loadBench(benchWith(constant));
        Handle handle(SensorType::CC430);
        handle.open();
        sondixsim::advance(1.0);
        QCOMPARE(sondixsim::lostFrames("1"), std::uint64_t(900));
        CloseSensor(handle);
        handle.open();
        QCOMPARE(handle.available(), 0);
        QCOMPARE(sondixsim::lostFrames("1"), std::uint64_t(0));
    }

    void clearBuffersDiscardsValues()
    {
        sondixsim::loadBench(benchWith(constant));
        Handle handle(SensorType::CC430);
        handle.open();
        sondixsim::advance(0.05);
        QCOMPARE(handle.command("Clear_Buffers"), 0);
        QCOMPARE(handle.available(), 0);
        sondixsim::advance(0.001);
        QCOMPARE(takeBlock(handle, 10).timestamp, 0.051);
    }

    void transferIsLimitedToTheMaximumCount()
    {
        sondixsim::loadBench(benchWith(constant));
        Handle handle(SensorType::CC430);
        handle.open();
        sondixsim::advance(0.01);
        QCOMPARE(takeBlock(handle, 7).raw.size(), std::size_t(7));
        QCOMPARE(handle.available(), 13);
        std::int32_t read = -1;
        QCOMPARE(TransferData(handle, nullptr, nullptr, 0, &read), 0);
        QCOMPARE(read, 0);
        QCOMPARE(TransferData(handle, nullptr, nullptr, -5, &read), 0);
        QCOMPARE(read, 0);
        std::vector<double> scaled(13);
        QCOMPARE(TransferData(handle, nullptr, scaled.data(), 100, &read), 0);
        QCOMPARE(read, 13);
        QCOMPARE(scaled[0], 4.0); // the second value of the fourth frame comes first
    }

    void generatorsGiveTheirCurve_data()
    {
        QTest::addColumn<QByteArray>("generator");
        QTest::addColumn<int>("frame");
        QTest::addColumn<double>("value");
        QTest::newRow("constant") << QByteArray(constant) << 5 << 12.3;
        QTest::newRow("sine top") << QByteArray(R"({"kind":"sine","amplitude":8,"period":0.4})") << 100 << 8.0;
        QTest::newRow("sine middle") << QByteArray(R"({"kind":"sine","middle":3,"amplitude":8,"period":0.4})")
                                     << 200 << 3.0;
        QTest::newRow("sine phase") << QByteArray(R"({"kind":"sine","amplitude":8,"period":0.4,"phase":0.5})")
                                    << 100 << -8.0;
        QTest::newRow("ramp") << QByteArray(R"({"kind":"ramp","from":10,"to":20,"period":0.2})") << 50 << 12.5;
        QTest::newRow("ramp again") << QByteArray(R"({"kind":"ramp","from":10,"to":20,"period":0.2})") << 250
                                    << 12.5;
        QTest::newRow("step low") << QByteArray(R"({"kind":"step","from":1,"to":2,"period":0.1,"share":0.3})")
                                  << 20 << 1.0;
        QTest::newRow("step high") << QByteArray(R"({"kind":"step","from":1,"to":2,"period":0.1,"share":0.3})")
                                   << 40 << 2.0;
        QTest::newRow("drift away") << QByteArray(R"({"kind":"drift","by":4,"in":0.2})") << 100 << 2.0;
        QTest::newRow("drift back") << QByteArray(R"({"kind":"drift","by":4,"in":0.2})") << 300 << 2.0;
        QTest::newRow("counter") << QByteArray(R"({"kind":"counter","modulo":70})") << 150 << 9.0;
        QTest::newRow("sum") << QByteArray(R"([{"kind":"constant","value":5},{"kind":"drift","by":4,"in":0.2}])")
                             << 100 << 7.0;
        QTest::newRow("out of the range")
            << QByteArray(R"({"kind":"constant","value":500})") << 5 << -1.0e10 - 4.0;
    }
    void generatorsGiveTheirCurve()
    {
        QFETCH(QByteArray, generator);
        QFETCH(int, frame);
        QFETCH(double, value);
        sondixsim::loadBench(benchWith(generator.toStdString()));
        Handle handle(SensorType::CC430);
        handle.open();
        const std::vector<double> values = firstSignal(handle, 400);
        QVERIFY(std::fabs(values[static_cast<std::size_t>(frame) - 1] - value) < 1e-9);
    }

    void noiseHasTheStandardDeviation()
    {
        sondixsim::loadBench(benchWith(R"({"kind":"noise","sigma":10})"));
        Handle handle(SensorType::CC430);
        handle.open();
        double sum = 0.0;
        double squares = 0.0;
        const std::vector<double> values = firstSignal(handle, 20000);
        for (const double value : values) {
            sum += value;
            squares += value * value;
        }
        const auto count = static_cast<double>(values.size());
        QVERIFY(std::fabs(sum / count) < 0.5);
        QVERIFY(std::fabs(std::sqrt(squares / count) - 10.0) < 0.5);
    }

    void recordedValuesAreRepeated()
    {
        QTemporaryDir folder;
        QFile record(folder.filePath(QStringLiteral("record.csv")));
        QVERIFY(record.open(QIODevice::WriteOnly));
        record.write("time;value\n0;1.5\n1;-2.5\n2; 4.0\n");
        record.close();
        QFile bench(folder.filePath(QStringLiteral("bench.json")));
        QVERIFY(bench.open(QIODevice::WriteOnly));
        bench.write(benchWith(R"({"kind":"csv","file":"record.csv","column":2})").c_str());
        bench.close();
        sondixsim::loadBenchFile(bench.fileName().toStdString());
        Handle handle(SensorType::CC430);
        handle.open();
        const std::vector<double> values = firstSignal(handle, 50);
        for (std::size_t i = 0; i < values.size(); ++i)
            QCOMPARE(values[i], (std::vector<double>{1.5, -2.5, 4.0})[i % 3]);
    }

    void rawAndScaledValuesAgree()
    {
        sondixsim::loadBench(benchWith(R"({"kind":"noise","sigma":15})"));
        Handle handle(SensorType::CC430);
        handle.open();
        sondixsim::advance(0.1);
        const Block block = takeBlock(handle, 200);
        for (std::size_t i = 0; i < block.raw.size(); i += 2) {
            QVERIFY(block.raw[i] >= -1000 && block.raw[i] <= 1000);
            QVERIFY(std::fabs(block.scaled[i] - block.raw[i] * 0.1) < 1e-9);
        }
    }

    void errorValuesArePeriodic()
    {
        sondixsim::loadBench(benchWith(constant, R"(, "errors": [ { "key": -5, "every": 10, "length": 2 } ])"));
        Handle handle(SensorType::CC430);
        handle.open();
        sondixsim::advance(0.02);
        const Block block = takeBlock(handle, 40);
        for (std::size_t frame = 0; frame < 20; ++frame) {
            const bool isError = frame % 10 >= 8;
            QCOMPARE(block.scaled[2 * frame] == -1.0e10 - 5.0, isError);
            QCOMPARE(block.raw[2 * frame] == 1005, isError);
        }
    }

    void errorValuesHaveTheirProbability()
    {
        sondixsim::loadBench(benchWith(constant, R"(, "errors": [ { "key": -1, "probability": 0.1 } ])"));
        Handle handle(SensorType::CC430);
        handle.open();
        int errors = 0;
        for (const double value : firstSignal(handle, 10000))
            errors += value == -1.0e10 - 1.0 ? 1 : 0;
        QVERIFY2(errors > 900 && errors < 1100, QByteArray::number(errors).constData());
    }

    void valuesFollowTheNewRate()
    {
        sondixsim::loadBench(benchWith(constant));
        Handle handle(SensorType::CC430);
        handle.open();
        sondixsim::advance(0.01);
        handle.set("SP_Measrate", 5.0);
        QCOMPARE(handle.command("Set_Samplerate"), 0);
        QCOMPARE(handle.available(), 20);
        sondixsim::advance(0.01);
        QCOMPARE(handle.available(), 20 + 100);
        takeBlock(handle, 20);
        QCOMPARE(takeBlock(handle, 10).timestamp, 0.0102);
    }

    void pushedBlockFollowsGeneratedValues()
    {
        sondixsim::loadBench(benchWith(constant));
        Handle handle(SensorType::CC430);
        handle.open();
        sondixsim::advance(0.001);
        sondixsim::pushData("1", {1, 2, 3}, {1.5, 2.5, 3.5}, 99.0);
        QCOMPARE(handle.available(), 5);
        takeBlock(handle, 2);
        const Block block = takeBlock(handle, 100);
        QCOMPARE(block.raw, (std::vector<std::int32_t>{1, 2, 3}));
        QCOMPARE(block.scaled, (std::vector<double>{1.5, 2.5, 3.5}));
        QCOMPARE(block.timestamp, 99.0);
    }

    void missingPushedValuesAreComputed()
    {
        sondixsim::loadBench(benchWith(constant));
        Handle handle(SensorType::CC430);
        handle.open();
        sondixsim::pushData("1", {}, {5.0, 700.0, -1.0e10 - 3.0}, 0.0);
        QCOMPARE(takeBlock(handle, 3).raw, (std::vector<std::int32_t>{50, 700, 1003}));
        sondixsim::pushData("1", {50, 700}, {}, 0.0);
        QCOMPARE(takeBlock(handle, 2).scaled, (std::vector<double>{5.0, 700.0}));
    }

    void pushRejectsInvalidBlocks()
    {
        sondixsim::loadBench(benchWith(constant));
        QVERIFY_EXCEPTION_THROWN(sondixsim::pushData("1", {1}, {1.0}, 0.0), std::invalid_argument);
        Handle handle(SensorType::CC430);
        handle.open();
        QVERIFY_EXCEPTION_THROWN(sondixsim::pushData("1", {1, 2}, {1.0}, 0.0), std::invalid_argument);
        QVERIFY_EXCEPTION_THROWN(sondixsim::pushData("2", {1}, {1.0}, 0.0), std::invalid_argument);
    }

    void hugeBlockFillsTheRing()
    {
        sondixsim::loadBench(benchWith(constant));
        Handle handle(SensorType::CC430);
        handle.open();
        std::vector<std::int32_t> raw(1000);
        for (std::size_t i = 0; i < raw.size(); ++i)
            raw[i] = static_cast<std::int32_t>(i);
        sondixsim::pushData("1", raw, {}, 0.0);
        QCOMPARE(handle.available(), 200);
        QCOMPARE(takeBlock(handle, 1).raw[0], 800);
        QCOMPARE(sondixsim::lostFrames("1"), std::uint64_t(400));
    }

    void standingValuesAreNeverUsedUp()
    {
        sondixsim::loadBench(
            R"({ "clock": { "virtual": true }, "sensors": [ { "model": "TX270", "serialNumber": "1",
            "place": { "interface": "WinUSB" }, "standing": 1000 } ] })");
        Handle handle(SensorType::TX270);
        handle.open();
        const Block first = takeBlock(handle, 600);
        QCOMPARE(handle.available(), 1000);
        QCOMPARE(first.raw.size(), std::size_t(600));
        QCOMPARE(takeBlock(handle, 2000).raw.size(), std::size_t(1000));
        QCOMPARE(takeBlock(handle, 600).scaled, first.scaled);
    }

    void sensorWithoutSignalsHasNoStandingValues()
    {
        sondixsim::loadBench(
            R"({ "clock": { "virtual": true }, "sensors": [ { "model": "UC100", "serialNumber": "1",
            "place": { "interface": "WinUSB" }, "standing": 1000 } ] })");
        Handle handle(SensorType::UC100);
        QCOMPARE(handle.open(), 0);
        QCOMPARE(handle.available(), 0);
        QCOMPARE(takeBlock(handle, 10).raw.size(), std::size_t(0));
    }

    void polledSensorGivesValuesOnlyWhenAsked()
    {
        sondixsim::loadBench(
            R"({ "clock": { "virtual": true }, "sensors": [ { "model": "EC830", "serialNumber": "1",
            "place": { "interface": "RS232", "port": "COM1", "busAddress": 1 }, "rate": 100 } ] })");
        Handle handle(SensorType::GenericKVBus);
        handle.open();
        sondixsim::advance(0.1);
        QCOMPARE(handle.available(), 0);
        QCOMPARE(takeBlock(handle, 10).raw.size(), std::size_t(0));
        QCOMPARE(handle.command("Get_Measure"), 0);
        QCOMPARE(handle.available(), 10);
        QCOMPARE(handle.command("Get_Measure"), 0);
        QCOMPARE(handle.available(), 10);
    }
};

QTEST_GUILESS_MAIN(TestSimData)
#include "tst_simdata.moc"
