// SPDX-License-Identifier: MIT
#include "handle.h"
#include "SondixSimulator/control.h"

#include <cmath>
#include <QTest>
#include <stdexcept>

using sondixsim::FrameCounts;

/// A sensor with frames of two values at 1000 Hz and a ring of 100 frames. The second value is the number of the frame.
static std::string framesBenchWith(const std::string &more = "")
{
    return R"({ "clock": { "virtual": true }, "sensors": [ {
        "model": "CC430", "serialNumber": "1", "place": { "interface": "TCP/IP", "ip": "10.0.0.1" },
        "rate": 1000, "ring": 100, "signals": [
            { "name": "a", "range": [0.0, 1024.0], "rawRange": [0, 1024],
              "generator": { "kind": "constant", "value": 7.0 } },
            { "name": "b", "range": [0.0, 1048576.0], "rawRange": [0, 1048576],
              "generator": { "kind": "counter", "modulo": 1048576 } } ])" +
           more + " } ] }";
}

class TestSimFrames : public QObject
{
    Q_OBJECT

private:
    static FrameCounts counts(const char *serialNumber = "1")
    {
        const FrameCounts counts = sondixsim::frameCounts(serialNumber);
        const FrameCounts total = sondixsim::totalFrameCounts(serialNumber);
        for (const FrameCounts &account : {counts, total}) {
            if (account.generated !=
                account.fetched + account.waiting + account.lost + account.unsent + account.discarded)
                QTest::qFail("the account does not add up", __FILE__, __LINE__);
        }
        return counts;
    }
    static void compare(const FrameCounts &counts, const FrameCounts &expected)
    {
        QCOMPARE(counts.generated, expected.generated);
        QCOMPARE(counts.fetched, expected.fetched);
        QCOMPARE(counts.waiting, expected.waiting);
        QCOMPARE(counts.lost, expected.lost);
        QCOMPARE(counts.unsent, expected.unsent);
        QCOMPARE(counts.discarded, expected.discarded);
    }
    /// The numbers of the frames that are fetched; -1 for a frame whose values do not belong together.
    static std::vector<int> fetchFrames(std::uint32_t handle)
    {
        const Block block = takeBlock(handle, 10000);
        std::vector<int> numbers;
        for (std::size_t i = 0; i + 1 < block.raw.size(); i += 2)
            numbers.push_back(block.raw[i] == 7 ? block.raw[i + 1] : -1);
        return numbers;
    }
    static std::vector<int> range(int first, int count)
    {
        std::vector<int> numbers;
        for (int i = 0; i < count; ++i)
            numbers.push_back(first + i);
        return numbers;
    }

private Q_SLOTS:
    void everyFrameIsCounted()
    {
        sondixsim::loadBench(framesBenchWith());
        compare(counts(), {});
        Handle handle(SensorType::CC430);
        handle.open();
        compare(counts(), {});
        sondixsim::advance(0.05);
        compare(counts(), {50, 0, 50, 0, 0, 0});
        takeBlock(handle, 40);
        compare(counts(), {50, 20, 30, 0, 0, 0});
        sondixsim::advance(0.1);
        compare(counts(), {150, 20, 100, 30, 0, 0});
        sondixsim::advance(10.0);
        compare(counts(), {10150, 20, 100, 10030, 0, 0});
        handle.command("Clear_Buffers");
        compare(counts(), {10150, 20, 0, 10030, 0, 100});
        QCOMPARE(sondixsim::generatedFrames("1"), std::uint64_t(10150));
        QCOMPARE(sondixsim::lostFrames("1"), std::uint64_t(10030));
        QVERIFY_EXCEPTION_THROWN(sondixsim::frameCounts("2"), std::invalid_argument);
    }

    void frameIsFetchedWithItsLastValue()
    {
        sondixsim::loadBench(framesBenchWith());
        Handle handle(SensorType::CC430);
        handle.open();
        sondixsim::advance(0.01);
        takeBlock(handle, 3);
        compare(counts(), {10, 1, 9, 0, 0, 0});
        takeBlock(handle, 1);
        compare(counts(), {10, 2, 8, 0, 0, 0});
        takeBlock(handle, 1);
        handle.command("Clear_Buffers");
        compare(counts(), {10, 2, 0, 0, 0, 8});
        sondixsim::advance(0.002);
        QCOMPARE(fetchFrames(handle), range(10, 2));
    }

    void closingDiscardsWhatWasNotFetched()
    {
        sondixsim::loadBench(framesBenchWith());
        Handle handle(SensorType::CC430);
        handle.open();
        sondixsim::advance(0.02);
        takeBlock(handle, 10);
        sondixsim::advance(0.03); // nobody looks at these before the sensor is closed
        CloseSensor(handle);
        compare(counts(), {50, 5, 0, 0, 0, 45});
        sondixsim::advance(1.0);
        compare(counts(), {50, 5, 0, 0, 0, 45});
    }

    void countsBeginAgainWithEachOpening()
    {
        sondixsim::loadBench(framesBenchWith());
        Handle handle(SensorType::CC430);
        handle.open();
        sondixsim::advance(0.12);
        takeBlock(handle, 20);
        handle.open(); // without closing
        compare(counts(), {});
        compare(sondixsim::totalFrameCounts("1"), {120, 10, 0, 20, 0, 90});
        sondixsim::advance(0.01);
        compare(counts(), {10, 0, 10, 0, 0, 0});
        compare(sondixsim::totalFrameCounts("1"), {130, 10, 10, 20, 0, 90});
        CloseSensor(handle);
        handle.open();
        compare(sondixsim::totalFrameCounts("1"), {130, 10, 0, 20, 0, 100});
        sondixsim::loadBench(framesBenchWith());
        compare(sondixsim::totalFrameCounts("1"), {});
    }

    void changedFrameDiscardsValues()
    {
        sondixsim::loadBench(framesBenchWith(
            R"(, "measureModes": { "parameter": "SA_MeasureMode", "modes": [ { "mode": 3, "signals": [
                { "name": "thickness" } ] } ] })"));
        Handle handle(SensorType::CC430);
        handle.open();
        sondixsim::advance(0.01);
        takeBlock(handle, 5);
        handle.set("SP_MeasureMode", 3);
        QCOMPARE(handle.command("Set_MeasureMode"), 0);
        compare(counts(), {10, 2, 0, 0, 0, 8});
        sondixsim::advance(0.005);
        QCOMPARE(handle.available(), 5);
        compare(counts(), {15, 2, 5, 0, 0, 8});
    }

    void triggeredFramesAreCountedOneByOne()
    {
        sondixsim::loadBench(framesBenchWith());
        Handle handle(SensorType::CC430);
        handle.open();
        handle.set("SP_TriggerMode", 1);
        QCOMPARE(handle.command("Update_TriggerMode"), 0);
        sondixsim::advance(3.0);
        compare(counts(), {});
        sondixsim::trigger("1");
        sondixsim::advance(0.7);
        sondixsim::trigger("1");
        compare(counts(), {2, 0, 2, 0, 0, 0});
        const Block first = takeBlock(handle, 2);
        QCOMPARE(first.timestamp, 3.0);
        QCOMPARE(first.raw[1], 0);
        const Block second = takeBlock(handle, 2);
        QCOMPARE(second.timestamp, 3.7);
        QCOMPARE(second.raw[1], 1);
        sondixsim::trigger("1");
        sondixsim::advance(1.0);
        sondixsim::trigger("1");
        QCOMPARE(takeBlock(handle, 4).timestamp, 3.7); // of its first frame
        compare(counts(), {4, 4, 0, 0, 0, 0});
    }

    void timestampsFollowAChangedRate()
    {
        sondixsim::loadBench(framesBenchWith());
        Handle handle(SensorType::CC430);
        handle.open();
        sondixsim::advance(0.0105); // half a frame more than ten
        handle.set("SP_Measrate", 5.0);
        QCOMPARE(handle.command("Set_Samplerate"), 0);
        sondixsim::advance(0.01);
        compare(counts(), {60, 0, 60, 0, 0, 0});
        QCOMPARE(takeBlock(handle, 2 * 8).timestamp, 0.001);
        QCOMPARE(takeBlock(handle, 2 * 4).timestamp, 0.009); // two frames at each rate
        QCOMPARE(takeBlock(handle, 2 * 4).timestamp, 0.0105 + 3 * 0.0002);
        QCOMPARE(fetchFrames(handle), range(16, 44));
    }

    void otherSettingsKeepTheRhythm()
    {
        sondixsim::loadBench(framesBenchWith());
        Handle handle(SensorType::CC430);
        handle.open();
        sondixsim::advance(0.0109);
        handle.set("SP_SyncMode", 1);
        QCOMPARE(handle.command("Set_SyncMode"), 0);
        handle.set("SP_Measrate", 1.0); // as it is
        QCOMPARE(handle.command("Set_Samplerate"), 0);
        sondixsim::advance(0.0001);
        compare(counts(), {11, 0, 11, 0, 0, 0});
        takeBlock(handle, 20);
        QCOMPARE(takeBlock(handle, 2).timestamp, 0.011);
    }

    void pushedBlocksAreCounted()
    {
        sondixsim::loadBench(framesBenchWith());
        Handle handle(SensorType::CC430);
        handle.open();
        sondixsim::pushData("1", {1, 2, 3, 4}, {}, 0.0);
        compare(counts(), {2, 0, 2, 0, 0, 0});
        sondixsim::pushData("1", std::vector<std::int32_t>(300), {}, 0.0);
        compare(counts(), {152, 0, 100, 52, 0, 0});
        takeBlock(handle, 200);
        sondixsim::pushData("1", {1, 2, 3}, {}, 0.0); // ends inside a frame
        compare(counts(), {154, 100, 2, 52, 0, 0});
        takeBlock(handle, 3);
        compare(counts(), {154, 101, 1, 52, 0, 0});
        sondixsim::pushData("1", {4}, {}, 0.0);
        QCOMPARE(takeBlock(handle, 10).raw, std::vector<std::int32_t>{4});
        compare(counts(), {154, 102, 0, 52, 0, 0});
    }

    void polledSensorIsCountedWhenItIsPolled()
    {
        sondixsim::loadBench(
            R"({ "clock": { "virtual": true }, "sensors": [ { "model": "EC830", "serialNumber": "1",
            "place": { "interface": "RS232", "port": "COM1", "busAddress": 1 }, "rate": 100 } ] })");
        Handle handle(SensorType::GenericKVBus);
        handle.open();
        sondixsim::advance(0.1);
        compare(counts(), {});
        QCOMPARE(handle.command("Get_Measure"), 0);
        compare(counts(), {10, 0, 10, 0, 0, 0});
        sondixsim::advance(0.1);
        CloseSensor(handle);
        compare(counts(), {10, 0, 0, 0, 0, 10});
    }

    void frameThatWasFetchedInPartStaysWhole_data()
    {
        QTest::addColumn<double>("seconds");
        QTest::addColumn<int>("next");
        QTest::newRow("all fit") << 0.01 << 2;
        QTest::newRow("a few are lost") << 0.11 << 20;
        QTest::newRow("more than the ring are lost") << 5.0 << 4910;
    }
    void frameThatWasFetchedInPartStaysWhole()
    {
        QFETCH(double, seconds);
        QFETCH(int, next);
        sondixsim::loadBench(framesBenchWith());
        Handle handle(SensorType::CC430);
        handle.open();
        sondixsim::advance(0.01);
        takeBlock(handle, 3); // frame 0, and the first value of frame 1
        sondixsim::advance(seconds);
        const Block rest = takeBlock(handle, 1);
        QCOMPARE(rest.raw[0], 1);
        QCOMPARE(rest.timestamp, 0.002);
        QCOMPARE(fetchFrames(handle).front(), next);
        const FrameCounts all = counts();
        QCOMPARE(all.fetched, all.generated - all.lost);
        QCOMPARE(all.lost, std::uint64_t(next - 2));
    }

    void silentSensorSendsNothing()
    {
        sondixsim::loadBench(framesBenchWith());
        Handle handle(SensorType::CC430);
        handle.open();
        sondixsim::advance(0.0105);
        sondixsim::setSilent("1", true);
        QCOMPARE(handle.available(), 20); // had arrived before
        sondixsim::advance(3.0);
        QCOMPARE(handle.available(), 20);
        QCOMPARE(handle.command("Get_Info"), 0);
        sondixsim::setSilent("1", false);
        sondixsim::advance(0.01);
        compare(counts(), {3020, 0, 20, 0, 3000, 0});
        std::vector<int> expected = range(0, 10);
        const std::vector<int> after = range(3010, 10);
        expected.insert(expected.end(), after.begin(), after.end());
        QCOMPARE(fetchFrames(handle), expected);
        sondixsim::advance(0.001);
        QCOMPARE(takeBlock(handle, 2).timestamp, 3.021); // the rhythm has not changed
    }

    void silenceOutlivesOpening()
    {
        sondixsim::loadBench(framesBenchWith());
        sondixsim::setSilent("1", true);
        Handle handle(SensorType::CC430);
        QCOMPARE(handle.open(), 0);
        sondixsim::advance(1.0);
        QCOMPARE(handle.available(), 0);
        CloseSensor(handle);
        compare(counts(), {1000, 0, 0, 0, 1000, 0});
    }

    void silentSensorSendsNoTriggeredFrame()
    {
        sondixsim::loadBench(framesBenchWith());
        Handle handle(SensorType::CC430);
        handle.open();
        handle.set("SP_TriggerMode", 1);
        handle.command("Update_TriggerMode");
        sondixsim::setSilent("1", true);
        sondixsim::trigger("1");
        sondixsim::setSilent("1", false);
        sondixsim::trigger("1");
        compare(counts(), {2, 0, 1, 0, 1, 0});
        QCOMPARE(fetchFrames(handle), range(1, 1));
    }

    void silentSensorHasNoStandingValues()
    {
        sondixsim::loadBench(framesBenchWith(R"(, "standing": 50)"));
        Handle handle(SensorType::CC430);
        handle.open();
        QCOMPARE(handle.available(), 50);
        sondixsim::setSilent("1", true);
        QCOMPARE(handle.available(), 0);
        QCOMPARE(takeBlock(handle, 10).raw.size(), std::size_t(0));
        sondixsim::setSilent("1", false);
        QCOMPARE(takeBlock(handle, 10).raw.size(), std::size_t(10));
        CloseSensor(handle);
        compare(counts(), {});
    }

    void unpluggedSensorDeliversNothingLater()
    {
        sondixsim::loadBench(framesBenchWith());
        Handle handle(SensorType::CC430);
        handle.open();
        sondixsim::advance(0.005);
        sondixsim::unplug("1");
        sondixsim::advance(0.02);
        sondixsim::plug("1");
        sondixsim::advance(0.003);
        compare(counts(), {28, 0, 8, 0, 20, 0});
        QCOMPARE(fetchFrames(handle), (std::vector<int>{0, 1, 2, 3, 4, 25, 26, 27}));
        handle.open();
        sondixsim::advance(0.001);
        QCOMPARE(fetchFrames(handle), range(0, 1));
    }

    void unpluggedMemberSilencesTheSensorThatStandsForIt()
    {
        sondixsim::loadBench(R"({ "clock": { "virtual": true }, "sensors": [
            { "model": "TX270", "serialNumber": "a", "place": { "interface": "WinUSB", "device": 1 } },
            { "model": "TX270", "serialNumber": "b", "place": { "interface": "WinUSB", "device": 2 } },
            { "model": "MultiSensor", "serialNumber": "both", "members": [ "a", "b" ], "rate": 100,
              "place": { "interface": "WinUSB", "device": 3 } } ] })");
        Handle handle(SensorType::MultiSensor);
        QCOMPARE(handle.open(), 0);
        sondixsim::advance(0.05);
        const std::uint64_t before = counts("both").generated;
        QVERIFY(before > 0);
        sondixsim::unplug("b");
        sondixsim::advance(0.05);
        sondixsim::plug("b");
        sondixsim::advance(0.05);
        compare(counts("both"), {3 * before, 0, 2 * before, 0, before, 0});
    }

    void sensorFallsSilentAfterOpening()
    {
        sondixsim::loadBench(framesBenchWith(R"(, "silentAfter": 0.0205)"));
        sondixsim::advance(5.0);
        Handle handle(SensorType::CC430);
        handle.open();
        sondixsim::advance(1.0);
        compare(counts(), {1000, 0, 20, 0, 980, 0});
        QCOMPARE(fetchFrames(handle), range(0, 20));
        CloseSensor(handle);
        handle.open();
        sondixsim::advance(0.01);
        QCOMPARE(fetchFrames(handle), range(0, 10));
        sondixsim::advance(1.0);
        QCOMPARE(fetchFrames(handle), range(10, 10));
        QCOMPARE(handle.command("Get_Info"), 0);
    }

    void sensorIsUnpluggedAndPluggedInAfterOpening()
    {
        sondixsim::loadBench(framesBenchWith(R"(, "unplugAfter": 0.0205, "plugAfter": 0.0505)"));
        Handle handle(SensorType::CC430);
        handle.open();
        sondixsim::advance(0.02);
        QCOMPARE(handle.available(), 40);
        sondixsim::advance(0.01);
        std::int32_t count = 0;
        QVERIFY(DataAvail(handle, &count) < 0);
        QVERIFY(handle.command("Get_Info") < 0);
        CloseSensor(handle);
        QVERIFY(handle.open() < 0);
        sondixsim::advance(0.03);
        QCOMPARE(handle.open(), 0);
        sondixsim::advance(0.06); // beyond both in one step
        compare(counts(), {60, 0, 30, 0, 30, 0});
        QCOMPARE(fetchFrames(handle).back(), 59);
    }
};

QTEST_GUILESS_MAIN(TestSimFrames)
#include "tst_simframes.moc"
