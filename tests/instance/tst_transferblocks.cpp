// SPDX-License-Identifier: MIT
#include <SondixQt/SensorInstance>
#include <SondixSimulator/control.h>

#include <QtTest>

using namespace SondixQt;

namespace {

constexpr int valuesPerFrame = 2;
constexpr int ringFrames = 100;
constexpr double period = 0.001; // seconds, at 1 kHz

/// A sensor whose frames contain a distance and a frame counter.
class MeasuringSensor
{
public:
    MeasuringSensor()
        : instance(TX270)
    {
        sondixsim::loadBench(R"({ "sensors": [ {
            "model": "TX270", "serialNumber": "1", "ring": 100, "rate": 1000.0,
            "place": { "interface": "RS232", "port": "3" },
            "signals": [ { "name": "Distance" }, { "name": "Intensity" } ]
        } ] })");
        sondixsim::useVirtualClock();
        if (instance.open({{"IP_Interface", "RS232"}, {"IP_Port", 3}}) != NoError)
            QTest::qFail("cannot open the sensor", __FILE__, __LINE__);
    }
    SensorInstance *operator->() { return &instance; }

private:
    SensorInstance instance;
};

} // namespace

/// Blocks of measured values: timestamps, block boundaries and lost frames.
class TransferBlocksTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void timestampIsThatOfTheFirstFrameInSeconds();
    void timestampStaysWhenNothingWaits();
    void aBlockMayEndInsideAFrame();
    void lostFramesAreNoError();
    void ratesAreInHertz();
};

void TransferBlocksTest::timestampIsThatOfTheFirstFrameInSeconds()
{
    MeasuringSensor sensor;
    sondixsim::advance(0.010);
    QVector<double> values;
    double first = -1.0;
    QCOMPARE(sensor->transferDataScaled(values, first), NoError);
    QCOMPARE(values.size(), 10 * valuesPerFrame);
    sondixsim::advance(0.005);
    QVector<int> raw;
    double second = -1.0;
    QCOMPARE(sensor->transferDataRaw(raw, second), NoError);
    QCOMPARE(raw.size(), 5 * valuesPerFrame);
    QVERIFY(qAbs(second - first - 10 * period) < 1e-9);
}

void TransferBlocksTest::timestampStaysWhenNothingWaits()
{
    MeasuringSensor sensor;
    QVector<double> values;
    double timestamp = -1.0;
    QCOMPARE(sensor->transferDataScaled(values, timestamp), NoError);
    QVERIFY(values.isEmpty());
    QCOMPARE(timestamp, -1.0);
}

void TransferBlocksTest::aBlockMayEndInsideAFrame()
{
    MeasuringSensor sensor;
    sondixsim::advance(0.004);
    QVector<double> values(8);
    double first = -1.0;
    int count = 3;
    QCOMPARE(sensor->transferData(values.data(), nullptr, &first, count), NoError);
    QCOMPARE(count, 3);
    double second = -1.0;
    int rest = 5;
    QCOMPARE(sensor->transferData(values.data() + 3, nullptr, &second, rest), NoError);
    QCOMPARE(rest, 5);
    // The next block begins with the second value of the second frame.
    QVERIFY(qAbs(second - first - period) < 1e-9);

    MeasuringSensor whole;
    sondixsim::advance(0.004);
    QVector<double> expected;
    QCOMPARE(whole->transferData(expected), NoError);
    QCOMPARE(values, expected);
}

void TransferBlocksTest::lostFramesAreNoError()
{
    MeasuringSensor sensor;
    sondixsim::advance(0.010);
    QVector<double> values;
    double first = -1.0;
    QString errorText;
    QCOMPARE(sensor->transferDataScaled(values, first, &errorText), NoError);
    const int frames = values.size() / valuesPerFrame;

    constexpr int lost = 30;
    sondixsim::advance((ringFrames + lost) * period);
    int available = 0;
    QCOMPARE(sensor->dataAvail(available), NoError);
    QCOMPARE(available, ringFrames * valuesPerFrame);
    double second = -1.0;
    QCOMPARE(sensor->transferDataScaled(values, second, &errorText), NoError);
    QVERIFY(errorText.isEmpty());
    QCOMPARE(values.size(), ringFrames * valuesPerFrame);
    QCOMPARE(qRound((second - first) / period) - frames, lost);
    QCOMPARE(sondixsim::lostFrames("1"), std::uint64_t(lost));
}

void TransferBlocksTest::ratesAreInHertz()
{
    MeasuringSensor sensor;
    TransmittedDataInfo info;
    QCOMPARE(sensor->transmittedDataInfo(info), NoError);
    QCOMPARE(info.datarate, 1000.0);
    QCOMPARE(info.signals.size(), valuesPerFrame);
    for (const SignalInfo &signal : qAsConst(info.signals)) {
        QCOMPARE(signal.rawDatarate, 1000.0);
        QCOMPARE(signal.scaledDatarate, 1000.0);
    }
    double kilohertz = 0.0;
    QCOMPARE(sensor->getSampleRateInKhz(&kilohertz), NoError);
    QCOMPARE(kilohertz, 1.0);
}

QTEST_GUILESS_MAIN(TransferBlocksTest)
#include "tst_transferblocks.moc"
