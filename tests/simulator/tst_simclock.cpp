// SPDX-License-Identifier: MIT
#include "handle.h"
#include "SondixSimulator/control.h"

#include <QElapsedTimer>
#include <QTest>
#include <stdexcept>

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
