// SPDX-License-Identifier: MIT
#include "handle.h"
#include "SondixSimulator/control.h"

#include <cmath>
#include <memory>
#include <QTest>

namespace {

/// The signals of a frame, each with its number as the time: \a values of them, with this raw range.
std::string signalsOf(int values, const std::string &rawRange)
{
    std::string all;
    for (int i = 0; i < values; ++i)
        all += (i > 0 ? ", " : "") + std::string(R"({ "name": "V", "range": [0, 1000000], "rawRange": )") +
               rawRange + R"(, "generator": { "kind": "counter", "modulo": 1000000 } })";
    return all;
}

/// A sensor on a serial line that measures at \a rate Hz.
void loadSensor(int baudrate, double rate, int values, const std::string &rawRange, const std::string &bench = "",
                int ring = 200000)
{
    sondixsim::loadBench(R"({ "clock": { "virtual": true }, )" + bench + R"( "sensors": [ { "model": "TX270",
        "serialNumber": "1", "rateRule": { "unit": "fixed" }, "rate": )" +
                         std::to_string(rate) + R"(, "ring": )" + std::to_string(ring) +
                         R"(, "place": { "interface": "RS232", "port": "COM1", "baudrate": )" +
                         std::to_string(baudrate) + R"( }, "signals": [ )" + signalsOf(values, rawRange) +
                         " ] } ] }");
}

/// Sensors at a bus that measure at these rates in Hz, with one value a frame, which takes 3 bytes.
void loadBus(int baudrate, const std::vector<double> &rates, const std::string &clock = R"({ "virtual": true })")
{
    std::string sensors;
    for (std::size_t i = 0; i < rates.size(); ++i)
        sensors += (i > 0 ? ", " : "") + std::string(R"({ "model": "EC830", "serialNumber": ")") +
                   std::to_string(i + 1) + R"(", "ring": 200000, "rateRule": { "unit": "fixed" }, "rate": )" +
                   std::to_string(rates[i]) +
                   R"(, "place": { "interface": "RS232", "port": "COM1", "busAddress": )" + std::to_string(i + 1) +
                   R"(, "baudrate": )" + std::to_string(baudrate) + R"( }, "signals": [ )" +
                   signalsOf(1, "[0, 65535]") + " ] }";
    sondixsim::loadBench(R"({ "clock": )" + clock + R"(, "sensors": [ )" + sensors + " ] }");
}

int openAtAddress(Handle &handle, int address)
{
    handle.set("IP_SensorAddress", address);
    return handle.openAt("COM1");
}

/// How many frames of one value arrive within so many seconds, while the values are asked for every 10 ms.
std::vector<std::uint64_t> framesWithin(const std::vector<const Handle *> &handles, double seconds)
{
    std::vector<std::uint64_t> frames(handles.size());
    for (int i = 0; i < static_cast<int>(seconds * 100.0); ++i) {
        sondixsim::advance(0.01);
        for (std::size_t j = 0; j < handles.size(); ++j) {
            SetParameterString(*handles[j], "S_Command", "Get_Measure");
            SensorCommand(*handles[j]);
            frames[j] += takeBlock(*handles[j], 2000).raw.size();
        }
    }
    return frames;
}

/// The time of "Get_Info" at 9600 baud: its answer, and the request.
double secondsOfInfo(Handle &handle)
{
    handle.command("Get_Info");
    const std::string request = R"(S_Command="Get_Info")";
    return static_cast<double>(request.size() + handle.allParameters().size()) * 10.0 / 9600.0;
}

} // namespace

Q_DECLARE_METATYPE(std::vector<double>)

/// The values of a line are bounded by what it carries, and the sensors at a bus share it.
class TestSimLineLoad : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void lineBoundsTheFramesThatArrive_data()
    {
        QTest::addColumn<int>("baudrate");
        QTest::addColumn<double>("rate");
        QTest::addColumn<int>("values");
        QTest::addColumn<QByteArray>("rawRange");
        QTest::addColumn<int>("bytes"); // of a frame
        const char *const narrow = "[0, 65535]";
        for (const int baudrate : {9600, 115200, 921600}) {
            for (const double rate : {10.0, 1000.0, 50000.0}) {
                for (const int values : {1, 2, 8})
                    QTest::addRow("%d baud, %g Hz, %d values", baudrate, rate, values)
                        << baudrate << rate << values << QByteArray(narrow) << 3 * values;
            }
        }
        QTest::newRow("18 bits") << 115200 << 50000.0 << 1 << QByteArray("[0, 262143]") << 3;
        QTest::newRow("19 bits") << 115200 << 50000.0 << 1 << QByteArray("[0, 262144]") << 4;
        QTest::newRow("24 bits") << 115200 << 50000.0 << 2 << QByteArray("[0, 16777215]") << 8;
        QTest::newRow("32 bits") << 115200 << 50000.0 << 1 << QByteArray("[-2000000000, 2000000000]") << 6;
    }
    void lineBoundsTheFramesThatArrive()
    {
        QFETCH(const int, baudrate);
        QFETCH(const double, rate);
        QFETCH(const int, values);
        QFETCH(const QByteArray, rawRange);
        QFETCH(const int, bytes);
        loadSensor(baudrate, rate, values, rawRange.toStdString());
        Handle handle(SensorType::TX270);
        QCOMPARE(handle.openAt("COM1"), 0);
        // The reported rate is that of the sensor, not that of the line.
        QCOMPARE(handle.command("Get_TransmittedDataInfo"), 0);
        QCOMPARE(handle.getDouble("IA_Datarate"), rate);

        const double expected = std::min(rate, baudrate / 10.0 / bytes);
        std::uint64_t frames = 0;
        double last = 0.0;
        std::size_t tooFar = 0;
        constexpr int tenths = 20;
        for (int i = 0; i < tenths; ++i) {
            sondixsim::advance(0.1);
            // A frame at a time: its timestamp is the time at which it was measured.
            for (Block frame = takeBlock(handle, values); !frame.raw.empty(); frame = takeBlock(handle, values)) {
                QCOMPARE(static_cast<int>(frame.raw.size()), values);
                const double distance = frame.timestamp - last;
                last = frame.timestamp;
                tooFar += std::fabs(distance - 1.0 / expected) > 1.001 / rate ? 1 : 0;
                ++frames;
            }
        }
        const double seconds = 0.1 * tenths;
        QVERIFY2(std::fabs(static_cast<double>(frames) - expected * seconds) <= 1.0,
                 qPrintable(QString::number(frames)));
        QCOMPARE(tooFar, std::size_t(0)); // they are dropped evenly
        const sondixsim::FrameCounts counts = sondixsim::frameCounts("1");
        QCOMPARE(counts.generated, static_cast<std::uint64_t>(rate * seconds));
        QCOMPARE(counts.fetched, frames);
        QCOMPARE(counts.unsent, counts.generated - frames);
        QCOMPARE(counts.lost, std::uint64_t(0));
    }

    void valuesAreThoseOfTheirTimes()
    {
        loadSensor(9600, 1000.0, 1, "[0, 1000000]"); // 20 bits, 4 bytes
        Handle handle(SensorType::TX270);
        handle.openAt("COM1");
        sondixsim::advance(2.0);
        int frames = 0;
        for (Block frame = takeBlock(handle, 1); !frame.raw.empty(); frame = takeBlock(handle, 1)) {
            QVERIFY(std::fabs(frame.timestamp - (frame.scaled[0] + 1.0) / 1000.0) < 1e-9);
            ++frames;
        }
        QCOMPARE(frames, 480);
    }

    void longPauseOverflowsTheRingOnlyWithWhatArrived()
    {
        loadSensor(9600, 50000.0, 1, "[0, 65535]", "", 1000);
        Handle handle(SensorType::TX270);
        handle.openAt("COM1");
        sondixsim::advance(86400.0);
        QCOMPARE(handle.available(), 1000);
        const sondixsim::FrameCounts counts = sondixsim::frameCounts("1");
        QCOMPARE(counts.generated, std::uint64_t(86400) * 50000);
        QVERIFY(std::fabs(static_cast<double>(counts.lost) - (86400.0 * 320.0 - 1000.0)) <= 1.0);
        QCOMPARE(counts.generated, counts.waiting + counts.lost + counts.unsent);
    }

    void effectCanBeSwitchedOff_data()
    {
        QTest::addColumn<bool>("inTheFile");
        QTest::newRow("in the file") << true;
        QTest::newRow("by a test") << false;
    }
    void effectCanBeSwitchedOff()
    {
        QFETCH(const bool, inTheFile);
        loadSensor(9600, 5000.0, 1, "[0, 65535]", inTheFile ? R"("lineSpeed": false,)" : "");
        Handle handle(SensorType::TX270);
        handle.openAt("COM1");
        if (!inTheFile)
            sondixsim::setLineSpeedEffect(false);
        sondixsim::advance(1.0);
        QCOMPARE(handle.available(), 5000);
        sondixsim::setLineSpeedEffect(true);
        sondixsim::advance(1.0);
        QVERIFY(std::abs(handle.available() - 5320) <= 1);
    }

    void limitFollowsBaudRateAndSampleRate()
    {
        sondixsim::loadBench(
            R"({ "clock": { "virtual": true }, "sensors": [ { "model": "TX270", "serialNumber": "1",
            "rate": 4000, "place": { "interface": "RS232", "port": "COM1", "baudrate": 9600 } } ] })");
        Handle handle(SensorType::TX270);
        handle.openAt("COM1");
        sondixsim::advance(1.0);
        QVERIFY(std::abs(handle.available() - 320) <= 1);
        handle.set("SP_Measrate", 0.25);
        QCOMPARE(handle.command("Set_Samplerate"), 0);
        handle.command("Clear_Buffers");
        sondixsim::advance(1.0);
        QCOMPARE(handle.available(), 250);
        handle.set("SP_Measrate", 4.0);
        QCOMPARE(handle.command("Set_Samplerate"), 0);
        handle.set("SP_CmdStr", "BAUDRATE 115200");
        QCOMPARE(handle.command("Cmd_Generic"), 0);
        handle.set("IP_Baudrate", 115200);
        QCOMPARE(handle.openAt("COM1"), 0);
        sondixsim::advance(1.0);
        QVERIFY(std::abs(handle.available() - 3840) <= 1);
    }

    void triggeredFramesAreBounded()
    {
        loadSensor(9600, 50000.0, 1, "[0, 65535]");
        Handle handle(SensorType::TX270);
        handle.openAt("COM1");
        sondixsim::setSettings("1", "SA_TriggerMode=1");
        for (int i = 0; i < 2000; ++i) {
            sondixsim::advance(0.001);
            sondixsim::trigger("1");
        }
        QVERIFY2(std::abs(handle.available() - 640) <= 2, qPrintable(QString::number(handle.available())));
        const sondixsim::FrameCounts counts = sondixsim::frameCounts("1");
        QCOMPARE(counts.generated, std::uint64_t(2000));
        QCOMPARE(counts.unsent + counts.waiting, counts.generated);
    }

    void sensorsAtABusShareTheLine_data()
    {
        QTest::addColumn<std::vector<double>>("rates");
        QTest::addColumn<std::vector<double>>("expected"); // of 320 frames a second at 9600 baud
        using Rates = std::vector<double>;
        QTest::newRow("alone") << Rates{4000.0} << Rates{320.0};
        QTest::newRow("two at the full rate") << Rates{4000.0, 4000.0} << Rates{160.0, 160.0};
        QTest::newRow("two different rates") << Rates{4000.0, 400.0} << Rates{160.0, 160.0};
        QTest::newRow("a slow one gets all that it needs") << Rates{4000.0, 20.0} << Rates{300.0, 20.0};
        QTest::newRow("two slow ones") << Rates{50.0, 100.0} << Rates{50.0, 100.0};
        QTest::newRow("four") << Rates{1000.0, 10.0, 1000.0, 1000.0}
                              << Rates{310.0 / 3, 10.0, 310.0 / 3, 310.0 / 3};
    }
    void sensorsAtABusShareTheLine()
    {
        QFETCH(const std::vector<double>, rates);
        QFETCH(const std::vector<double>, expected);
        loadBus(9600, rates);
        std::vector<std::unique_ptr<Handle>> handles;
        std::vector<const Handle *> all;
        for (std::size_t i = 0; i < rates.size(); ++i) {
            handles.push_back(std::make_unique<Handle>(SensorType::GenericKVBus));
            QCOMPARE(openAtAddress(*handles.back(), static_cast<int>(i + 1)), 0);
            all.push_back(handles.back().get());
        }
        sondixsim::advance(1.0); // over the commands of opening
        framesWithin(all, 0.1);
        const std::vector<std::uint64_t> frames = framesWithin(all, 20.0);
        for (std::size_t i = 0; i < rates.size(); ++i)
            QVERIFY2(std::fabs(static_cast<double>(frames[i]) / 20.0 - expected[i]) < 0.2,
                     qPrintable(QString::number(frames[i])));
    }

    void closedAndSilentSensorsLeaveTheLineToTheOthers()
    {
        loadBus(9600, {4000.0, 4000.0});
        Handle first(SensorType::GenericKVBus);
        Handle second(SensorType::GenericKVBus);
        QCOMPARE(openAtAddress(first, 1), 0);
        QCOMPARE(openAtAddress(second, 2), 0);
        const auto isAbout = [](std::uint64_t frames, double expected) {
            return std::fabs(static_cast<double>(frames) - expected) <= 5.0;
        };
        QVERIFY(isAbout(framesWithin({&first, &second}, 2.0)[0], 320.0));
        sondixsim::setSilent("2", true);
        QVERIFY(isAbout(framesWithin({&first, &second}, 2.0)[0], 640.0));
        sondixsim::setSilent("2", false);
        QVERIFY(isAbout(framesWithin({&first, &second}, 2.0)[0], 320.0));
        sondixsim::unplug("2");
        QVERIFY(isAbout(framesWithin({&first}, 2.0)[0], 640.0));
        sondixsim::plug("2");
        QVERIFY(isAbout(framesWithin({&first, &second}, 2.0)[1], 320.0));
        CloseSensor(second);
        QVERIFY(isAbout(framesWithin({&first}, 2.0)[0], 640.0));
        // The change is at the time of the event, also for a sensor that was not asked meanwhile.
        sondixsim::advance(1.0);
        QCOMPARE(openAtAddress(second, 2), 0);
        sondixsim::advance(1.0);
        QVERIFY(isAbout(framesWithin({&first}, 0.01)[0], 320.0 + 160.0));
    }

    void commandsDelayTheValuesOfTheOthers()
    {
        // 200 Hz of 3 bytes need 0.625 of the line: all values arrive.
        loadBus(9600, {20.0, 200.0});
        Handle first(SensorType::GenericKVBus);
        Handle second(SensorType::GenericKVBus);
        openAtAddress(first, 1);
        openAtAddress(second, 2);
        sondixsim::advance(2.0);
        framesWithin({&first, &second}, 0.1);
        const double minimum = secondsOfInfo(first);
        QVERIFY(minimum > 0.1);
        double silence = 0.0;
        std::uint64_t frames = 0;
        for (int i = 0; i < 200; ++i) {
            const std::uint64_t arrived = framesWithin({&second}, 0.01)[0];
            frames += arrived;
            if (frames == 0)
                silence += 0.01;
        }
        QVERIFY2(silence >= minimum - 0.01 && silence < minimum + 0.1, qPrintable(QString::number(silence)));
        QCOMPARE(frames, std::uint64_t(400));
        QCOMPARE(sondixsim::frameCounts("2").unsent, std::uint64_t(0));
    }

    void commandsTakeTheTimeOfAFullLine()
    {
        loadBus(9600, {4000.0, 4000.0});
        Handle first(SensorType::GenericKVBus);
        Handle second(SensorType::GenericKVBus);
        openAtAddress(first, 1);
        openAtAddress(second, 2);
        sondixsim::advance(1.0);
        framesWithin({&first, &second}, 0.1);
        std::uint64_t frames = 0;
        for (int i = 0; i < 20; ++i) {
            QCOMPARE(first.command("Get_Info"), 0);
            frames += framesWithin({&second}, 0.5)[0];
        }
        const double command = secondsOfInfo(first);
        const double maximum = (10.0 - 20.0 * command) * 160.0;
        QVERIFY2(static_cast<double>(frames) < maximum + 20.0 && static_cast<double>(frames) > 0.9 * maximum,
                 qPrintable(QString::number(frames)));
    }

    void commandsAtABusTakeTheirTime()
    {
        loadBus(9600, {20.0, 20.0}, R"({ "speed": 20.0 })");
        Handle first(SensorType::GenericKVBus);
        Handle second(SensorType::GenericKVBus);
        openAtAddress(first, 1);
        openAtAddress(second, 2);
        const double before = sondixsim::now();
        for (int i = 0; i < 10; ++i) {
            QCOMPARE(first.command("Get_Info"), 0);
            QCOMPARE(second.command("Get_Info"), 0);
        }
        const double command = secondsOfInfo(first);
        QVERIFY(sondixsim::now() - before >= 20.0 * command);
        sondixsim::useVirtualClock();
    }
};

QTEST_GUILESS_MAIN(TestSimLineLoad)
#include "tst_simlineload.moc"
