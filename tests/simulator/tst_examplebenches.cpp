// SPDX-License-Identifier: MIT
#include "handle.h"
#include "SondixSimulator/control.h"

#include <QFile>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace {

constexpr double errorLimit = -1.0e9; // error values are less

void loadExample(const char *name)
{
    sondixsim::loadBenchFile(std::string(SONDIXQT_SOURCES) + "/examples/benches/" + name);
    sondixsim::useVirtualClock();
}

/// All values that have arrived.
std::vector<double> fetchAll(const Handle &sensor)
{
    return takeBlock(sensor, std::max(0, sensor.available())).scaled;
}

/// Steps the clock and fetches now and then, so that no ring gets full.
std::vector<double> readFor(const Handle &sensor, double seconds)
{
    std::vector<double> values;
    for (double done = 0.0; done < seconds; done += 1.0) {
        sondixsim::advance(std::min(1.0, seconds - done));
        const std::vector<double> more = fetchAll(sensor);
        values.insert(values.end(), more.begin(), more.end());
    }
    return values;
}

double meanOf(const std::vector<double> &values)
{
    return std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
}

double deviationOf(const std::vector<double> &values)
{
    const double mean = meanOf(values);
    double sum = 0.0;
    for (const double value : values)
        sum += (value - mean) * (value - mean);
    return std::sqrt(sum / static_cast<double>(values.size() - 1));
}

/// Opens it at its address.
void openInNetwork(Handle &sensor, const char *address)
{
    sensor.set("IP_Interface", "TCP/IP");
    sensor.set("IP_RemoteAddr", address);
    QCOMPARE(sensor.open(), 0);
}

void openTank(Handle &sensor, int busAddress)
{
    sensor.set("IP_SensorAddress", busAddress);
    QCOMPARE(sensor.openAt("COM7"), 0);
}

/// What the sensors of a poll have measured since the last one.
std::vector<double> poll(Handle &sensor, double seconds)
{
    sondixsim::advance(seconds);
    return sensor.command("Get_Measure") == 0 ? fetchAll(sensor) : std::vector<double>();
}

} // namespace

/// What the comments in examples/benches promise.
class TestExampleBenches : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void press();
    void stripThickness();
    void tankFarm();
    void colourLine();
    void flakyNetwork();
};

void TestExampleBenches::press()
{
    loadExample("press.json");
    Handle left(SensorType::TX270);
    Handle right(SensorType::TX270);
    QCOMPARE(left.openAt("COM3"), 0);
    QCOMPARE(right.openAt("COM4"), 0);

    // 30 strokes a minute, 30 mm each; the ram is tilted by 0.3 mm.
    sondixsim::advance(10.0);
    std::vector<double> leftValues = fetchAll(left);
    std::vector<double> rightValues = fetchAll(right);
    QCOMPARE(leftValues.size(), std::size_t(10000));
    QCOMPARE(rightValues.size(), std::size_t(10000));
    const auto [lowest, highest] = std::minmax_element(leftValues.begin(), leftValues.end());
    QVERIFY(std::fabs(*lowest - 10.0) < 0.1);
    QVERIFY(std::fabs(*highest - 40.0) < 0.1);
    QVERIFY(std::fabs(leftValues[499] - 40.0) < 0.1); // a quarter of a stroke after the start
    const auto tilt = [&] {
        std::vector<double> differences;
        for (std::size_t i = 0; i < leftValues.size(); ++i) {
            if (rightValues[i] > errorLimit)
                differences.push_back(rightValues[i] - leftValues[i]);
        }
        return differences;
    };
    const std::size_t missing = leftValues.size() - tilt().size();
    QVERIFY(missing >= 5 && missing <= 45); // 0.2 %
    QVERIFY(std::fabs(meanOf(tilt()) - 0.3) < 0.001);
    // The plug is out for two seconds, which begin between 20 and 30 s.
    readFor(left, 30.0);
    std::int32_t available = 0;
    QCOMPARE(DataAvail(right, &available), 0);
    QCOMPARE(sondixsim::frameCounts("PRESS-R").unsent, std::uint64_t(2000));
    QCOMPARE(sondixsim::frameCounts("PRESS-L").unsent, std::uint64_t(0));
    // After 90 s the bearing has given way by another half millimetre.
    readFor(left, 55.0);
    sondixsim::advance(20.0);
    fetchAll(right);
    fetchAll(left);
    sondixsim::advance(2.0);
    leftValues = fetchAll(left);
    rightValues = fetchAll(right);
    QCOMPARE(leftValues.size(), std::size_t(2000));
    QCOMPARE(rightValues.size(), std::size_t(2000));
    QVERIFY(std::fabs(meanOf(tilt()) - 0.8) < 0.003);
}

void TestExampleBenches::stripThickness()
{
    loadExample("strip-thickness.json");
    Handle gauge(SensorType::MultiSensor);
    openInNetwork(gauge, "192.168.1.10");
    const std::vector<double> values = readFor(gauge, 20.0);
    QCOMPARE(values.size(), std::size_t(80000));
    std::vector<double> upper;
    std::vector<double> thickness;
    for (std::size_t i = 0; i < values.size(); i += 2) {
        QCOMPARE(values[i] > errorLimit, values[i + 1] > errorLimit); // both lose their target
        if (values[i] < errorLimit)
            continue;
        upper.push_back(values[i]);
        thickness.push_back(24.0 - values[i] - values[i + 1]);
    }
    QCOMPARE(thickness.size(), std::size_t(5 * 7600)); // of 40000: five strips have ended
    QVERIFY(deviationOf(upper) > 0.25);
    QVERIFY(std::fabs(meanOf(thickness) - 2.0) < 0.001);
    // A wave with an amplitude of 0.01 mm and the noise of two heads.
    const double expected = std::sqrt(0.01 * 0.01 / 2.0 + 2.0 * 0.0005 * 0.0005);
    QVERIFY(std::fabs(deviationOf(thickness) / expected - 1.0) < 0.05);
}

void TestExampleBenches::tankFarm()
{
    loadExample("tank-farm.json");
    Handle search(SensorType::GenericKVBus);
    QCOMPARE(search.command("Start_FindSensor"), 0);
    sondixsim::advance(10.0);
    search.command("Get_FindSensorProgress");
    QCOMPARE(search.getInt("IA_Found"), 5);

    loadExample("tank-farm.json");
    Handle filled(SensorType::GenericKVBus);
    Handle unreliable(SensorType::GenericKVBus);
    Handle sticking(SensorType::GenericKVBus);
    openTank(filled, 1);
    openTank(unreliable, 4);
    openTank(sticking, 5);
    std::vector<double> levels;
    std::vector<double> stuck;
    int failed = 0;
    constexpr int seconds = 120;
    for (int i = 0; i < seconds; ++i) {
        const std::vector<double> more = poll(filled, 1.0);
        QCOMPARE(more.size(), std::size_t(10));
        levels.push_back(more.back());
        stuck.push_back(poll(sticking, 0.0).back());
        unreliable.set("S_Command", "Get_Measure");
        const std::int32_t result = SensorCommand(unreliable);
        QVERIFY(result == 0 || result == -22);
        failed += result != 0 ? 1 : 0;
    }
    QVERIFY(std::fabs(levels.back() - levels.front() - 4000.0 / 3600.0 * (seconds - 1)) < 0.3);
    QVERIFY(failed > seconds / 30 && failed < seconds / 5);
    // Second i + 1 is at index i: the float sticks from 30 to 90 s.
    QVERIFY(stuck[28] > stuck[18]);
    QCOMPARE(stuck[88], stuck[31]);
    QVERIFY(std::fabs(stuck[119] - stuck[18] - 4000.0 / 3600.0 * 101.0) < 0.3);
}

void TestExampleBenches::colourLine()
{
    QFile file(QLatin1String(SONDIXQT_SOURCES) + "/examples/benches/colour-line.csv");
    QVERIFY(file.open(QIODevice::ReadOnly));
    QList<QByteArray> tiles = file.readAll().trimmed().split('\n');
    tiles.removeFirst();
    QCOMPARE(tiles.size(), 20);

    loadExample("colour-line.json");
    Handle sensor(SensorType::PG110);
    openInNetwork(sensor, "192.168.1.20");
    const std::vector<double> values = readFor(sensor, 10.0);
    QCOMPARE(values.size(), std::size_t(40 * 3)); // four tiles a second
    for (int i = 0; i < 40; ++i) {
        const QList<QByteArray> tile = tiles[i % 20].split(',');
        const double lampLoss = 3.0 * 0.25 * (i + 1) / 600.0;
        const double expected[] = {tile[1].toDouble() - lampLoss, tile[2].toDouble(), tile[3].toDouble()};
        for (std::size_t j = 0; j < 3; ++j)
            QVERIFY(std::fabs(values[static_cast<std::size_t>(i) * 3 + j] - expected[j]) < 0.011);
    }
    QVERIFY(values[12 * 3] > 70.0 && values[32 * 3] > 70.0); // the 13th tile
}

void TestExampleBenches::flakyNetwork()
{
    loadExample("flaky-network.json");
    Handle loose(SensorType::CC430);
    Handle silent(SensorType::TX290);
    openInNetwork(loose, "169.254.168.150");
    openInNetwork(silent, "169.254.168.151");
    int unplugged = 0; // hundredths of a second
    for (int i = 0; i < 6000; ++i) {
        sondixsim::advance(0.01);
        std::int32_t available = 0;
        if (DataAvail(loose, &available) != 0)
            ++unplugged;
        else
            fetchAll(loose);
        fetchAll(silent);
    }
    // In a minute the plug is out ten times for 0.7 s, and 20 times 200 frames are lost.
    QVERIFY(std::abs(unplugged - 700) <= 10);
    const sondixsim::FrameCounts counts = sondixsim::frameCounts("LOOSE");
    QVERIFY(std::llabs(static_cast<long long>(counts.unsent) - 7000) <= 10);
    QCOMPARE(counts.lost, std::uint64_t(4000));
    QCOMPARE(sondixsim::frameCounts("SILENT").unsent, std::uint64_t(6 * 2 * 2000));
    // Three of ten attempts to open it again fail.
    int refused = 0;
    for (int i = 0; i < 200; ++i) {
        CloseSensor(loose);
        loose.set("IP_Interface", "TCP/IP");
        loose.set("IP_RemoteAddr", "169.254.168.150");
        const std::int32_t result = loose.open();
        QVERIFY(result == 0 || result == -22);
        refused += result != 0 ? 1 : 0;
    }
    QVERIFY(refused > 40 && refused < 80);
}

QTEST_GUILESS_MAIN(TestExampleBenches)
#include "tst_examplebenches.moc"
