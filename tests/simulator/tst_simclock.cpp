// SPDX-License-Identifier: MIT
#include "handle.h"
#include "SondixSimulator/control.h"

#include <algorithm>
#include <array>
#include <QElapsedTimer>
#include <QTest>
#include <stdexcept>
#include <thread>
#include <vector>

static std::string benchWithSeed(int seed)
{
    return R"({ "seed": )" + std::to_string(seed) + R"(, "sensors": [ {
        "model": "CC430", "serialNumber": "1", "place": { "interface": "TCP/IP", "ip": "10.0.0.1" }, "rate": 1000,
        "signals": [
            { "name": "a", "generator": [ { "kind": "sine", "middle": 5.0, "amplitude": 1.0, "period": 0.3 },
                                          { "kind": "noise", "sigma": 0.5 } ],
              "errors": [ { "key": -2, "probability": 0.05 } ] },
            { "name": "b", "generator": { "kind": "noise", "sigma": 2.0 } }
        ] } ] })";
}

/// Reads one second in steps of so many milliseconds.
static Block readSecond(int seed, int step)
{
    sondixsim::useVirtualClock();
    sondixsim::loadBench(benchWithSeed(seed));
    Handle handle(SensorType::CC430);
    handle.open();
    Block all;
    for (int t = 0; t < 1000; t += step) {
        sondixsim::advance(step * 0.001);
        const Block block = takeBlock(handle, 4000);
        all.raw.insert(all.raw.end(), block.raw.begin(), block.raw.end());
        all.scaled.insert(all.scaled.end(), block.scaled.begin(), block.scaled.end());
    }
    return all;
}

/// Two sensors with 10 frames a second, and a clock that steps half a second when all wait.
static void loadStepping(const std::string &more = {})
{
    const auto sensor = [&more](const std::string &number) {
        return R"({ "model": "TX270", "serialNumber": ")" + number +
               R"(", "rateRule": { "unit": "fixed" }, "rate": 10,
                   "signals": [ { "name": "a", "generator": { "kind": "noise", "sigma": 1 } } ],
                   "place": { "interface": "RS232", "port": "COM)" +
               number + "\" }" + more + " }";
    };
    sondixsim::loadBench(R"({ "clock": { "virtual": true, "step": 0.5 }, "sensors": [ )" + sensor("1") + ", " +
                         sensor("2") + "] }");
}

static int available(const Handle &sensor)
{
    std::int32_t count = 0;
    return DataAvail(sensor, &count) == 0 ? count : -1;
}

/// The number of frames that a transfer brings; -1 if it fails.
static int framesFrom(const Handle &sensor)
{
    std::array<double, 10000> values{};
    std::int32_t count = 0;
    const std::int32_t result =
        TransferData(sensor, nullptr, values.data(), static_cast<std::int32_t>(values.size()), &count);
    return result == 0 ? count : -1;
}

class TestSimClock : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { sondixsim::useRealClock(); }

    void virtualClockOnlyMovesWhenStepped()
    {
        sondixsim::loadBench(benchWithSeed(1));
        sondixsim::useVirtualClock();
        const double start = sondixsim::now();
        QTest::qSleep(5);
        QCOMPARE(sondixsim::now(), start);
        sondixsim::advance(0.25);
        QCOMPARE(sondixsim::now(), start + 0.25);
    }

    void realClockRunsAtItsSpeed()
    {
        sondixsim::loadBench(benchWithSeed(1));
        sondixsim::useRealClock(50.0);
        QElapsedTimer timer;
        timer.start();
        const double start = sondixsim::now();
        QTest::qSleep(50);
        const double bench = sondixsim::now() - start;
        const double real = static_cast<double>(timer.nsecsElapsed()) * 1e-9;
        QVERIFY(bench >= 50.0 * 0.050);
        QVERIFY(bench <= 50.0 * real);
    }

    void changingTheClockDoesNotMakeItJump()
    {
        sondixsim::loadBench(benchWithSeed(1));
        sondixsim::useVirtualClock();
        sondixsim::advance(100.0);
        sondixsim::useRealClock(1.0);
        const double now = sondixsim::now();
        QVERIFY(now >= 100.0 && now < 110.0);
        sondixsim::useVirtualClock();
        QVERIFY(sondixsim::now() >= now && sondixsim::now() < 110.0);
    }

    void loadingResetsTheClock()
    {
        sondixsim::loadBench(benchWithSeed(1));
        sondixsim::useVirtualClock();
        sondixsim::advance(5.0);
        sondixsim::loadBench(benchWithSeed(1));
        QCOMPARE(sondixsim::now(), 0.0);
        sondixsim::advance(1.0); // still virtual: the file does not choose a clock
        QCOMPARE(sondixsim::now(), 1.0);
    }

    void benchFileChoosesTheClock()
    {
        sondixsim::loadBench(R"({ "clock": { "virtual": true }, "sensors": [] })");
        QCOMPARE(sondixsim::now(), 0.0);
        sondixsim::loadBench(R"({ "clock": { "speed": 1000.0 }, "sensors": [] })");
        QTRY_VERIFY(sondixsim::now() > 1.0);
    }

    void aClockStepsItselfWhenTheProgramWaits()
    {
        loadStepping();
        Handle sensor(SensorType::TX270);
        QCOMPARE(sensor.openAt("COM1"), 0);
        QCOMPARE(available(sensor), 0);
        QCOMPARE(sondixsim::now(), 0.5);
        QCOMPARE(available(sensor), 5);
        QCOMPARE(sondixsim::now(), 0.5); // that was not in vain
        sondixsim::advance(1.0);
        QCOMPARE(sondixsim::now(), 1.5);
        sondixsim::useVirtualClock(); // stands still
        QCOMPARE(framesFrom(sensor), 15);
        QCOMPARE(framesFrom(sensor), 0);
        QCOMPARE(sondixsim::now(), 1.5);
    }

    void itWaitsUntilAllCallersWait()
    {
        loadStepping();
        Handle one(SensorType::TX270);
        Handle other(SensorType::TX270);
        QCOMPARE(one.openAt("COM1"), 0);
        QCOMPARE(other.openAt("COM2"), 0);
        QCOMPARE(framesFrom(one), 0);
        QCOMPARE(sondixsim::now(), 0.5); // the other one has not asked yet
        QCOMPARE(framesFrom(other), 5);
        QCOMPARE(framesFrom(one), 5);
        QCOMPARE(framesFrom(one), 0);
        QCOMPARE(framesFrom(one), 0);
        QCOMPARE(sondixsim::now(), 0.5);
        QCOMPARE(framesFrom(other), 0);
        QCOMPARE(sondixsim::now(), 1.0);
        // One that is closed, and one that asks no more, are not waited for.
        QCOMPARE(framesFrom(one), 5);
        QCOMPARE(framesFrom(other), 5);
        QCOMPARE(CloseSensor(other), 0);
        QCOMPARE(framesFrom(one), 0);
        QCOMPARE(sondixsim::now(), 1.5);
        QCOMPARE(other.openAt("COM2"), 0);
        QCOMPARE(framesFrom(other), 0);
        QCOMPARE(framesFrom(one), 5);
        for (int i = 0; i < 1001 && sondixsim::now() < 2.0; ++i)
            framesFrom(other);
        QCOMPARE(sondixsim::now(), 2.0);
    }

    void aSearchGoesOnByItself()
    {
        loadStepping();
        Handle handle(SensorType::TX270);
        QCOMPARE(handle.command("Start_FindSensor"), 0);
        double progress = 0.0;
        for (int i = 0; i < 100 && progress < 100.0; ++i) {
            QCOMPARE(handle.command("Get_FindSensorProgress"), 0);
            progress = handle.getDouble("IA_Progress");
        }
        QCOMPARE(progress, 100.0);
        QCOMPARE(handle.getInt("IA_Found"), 2);
    }

    void timePassesWhileASensorIsAway()
    {
        loadStepping(R"(, "timeline": [ { "do": "unplug", "at": 1, "for": 3 } ])");
        Handle sensor(SensorType::TX270);
        QCOMPARE(sensor.openAt("COM1"), 0);
        int frames = 0;
        int failures = 0;
        while (sondixsim::now() < 10.0 && failures < 1000) {
            const int count = framesFrom(sensor);
            if (count < 0) {
                ++failures;
                CloseSensor(sensor);
                sensor.openAt("COM1");
            }
            frames += std::max(0, count);
        }
        QVERIFY(failures > 0 && failures < 10);
        // 5 before the step to the time at which it is unplugged, and from 4.5 s on those of every step.
        QVERIFY2(frames >= 60 && frames <= 70, qPrintable(QString::number(frames)));
    }

    void timePassesWhileCallsFail()
    {
        loadStepping(R"(, "faults": [ { "function": "TransferData", "code": -5, "at": 1, "for": 3 } ])");
        Handle sensor(SensorType::TX270);
        QCOMPARE(sensor.openAt("COM1"), 0);
        int failures = 0;
        while (sondixsim::now() < 10.0 && failures < 1000) {
            if (framesFrom(sensor) < 0)
                ++failures;
        }
        QCOMPARE(failures, 6); // 3 s in steps of half a second
    }

    void timePassesWhileCommandsFail()
    {
        loadStepping(R"(, "timeline": [ { "do": "unplug", "at": 0.1, "for": 3 } ])");
        Handle sensor(SensorType::TX270);
        QCOMPARE(sensor.openAt("COM1"), 0);
        QCOMPARE(framesFrom(sensor), 0);
        int failures = 0;
        while (failures < 1000 && sensor.command("Get_Info") != 0)
            ++failures;
        QCOMPARE(sondixsim::now(), 3.5);
    }

    void anAbortedSearchIsNotWaitedFor()
    {
        loadStepping();
        Handle sensor(SensorType::TX270);
        Handle search(SensorType::TX270);
        QCOMPARE(sensor.openAt("COM1"), 0);
        QCOMPARE(search.command("Start_FindSensor"), 0);
        QCOMPARE(search.command("Get_FindSensorProgress"), 0);
        QCOMPARE(search.command("Abort_FindSensor"), 0);
        framesFrom(sensor);
        const double before = sondixsim::now();
        QCOMPARE(framesFrom(sensor), 0);
        QCOMPARE(sondixsim::now(), before + 0.5);
    }

    void threadsGoOnTogether()
    {
        loadStepping();
        std::array<int, 2> frames{};
        std::vector<std::thread> threads;
        for (std::size_t i = 0; i < frames.size(); ++i) {
            threads.emplace_back([&frames, i] {
                Handle sensor(SensorType::TX270);
                if (sensor.openAt(i == 0 ? "COM1" : "COM2") != 0)
                    return;
                while (frames[i] < 36000) // an hour
                    frames[i] += framesFrom(sensor);
            });
        }
        for (std::thread &thread : threads)
            thread.join();
        QVERIFY(frames[0] >= 36000 && frames[1] >= 36000);
        QVERIFY(sondixsim::now() >= 3600.0);
    }

    void clockCannotBeSetBack()
    {
        QVERIFY_EXCEPTION_THROWN(sondixsim::advance(-1.0), std::invalid_argument);
        QVERIFY_EXCEPTION_THROWN(sondixsim::useRealClock(0.0), std::invalid_argument);
    }

    void sameBenchSeedAndCallsGiveTheSameBytes()
    {
        const Block first = readSecond(7, 10);
        const Block second = readSecond(7, 10);
        QCOMPARE(first.raw.size(), std::size_t(2000));
        QCOMPARE(first.raw, second.raw);
        QCOMPARE(first.scaled, second.scaled);
    }

    void valuesDoNotDependOnHowOftenTheyAreRead() { QCOMPARE(readSecond(7, 1).scaled, readSecond(7, 500).scaled); }

    void anotherSeedGivesOtherNoise() { QVERIFY(readSecond(7, 10).raw != readSecond(8, 10).raw); }
};

QTEST_GUILESS_MAIN(TestSimClock)
#include "tst_simclock.moc"
