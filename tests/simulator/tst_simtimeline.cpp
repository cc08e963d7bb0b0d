// SPDX-License-Identifier: MIT
#include "handle.h"
#include "SondixSimulator/control.h"

#include <QTest>

#include <cmath>
#include <set>

namespace {

/// A sensor with 100 frames a second, whose value is the bench time, and with \a timeline.
void loadTimeline(const std::string &timeline, int seed = 1)
{
    sondixsim::loadBench(R"({ "clock": { "virtual": true }, "seed": )" + std::to_string(seed) + R"(, "sensors": [
        { "model": "TX270", "serialNumber": "1", "place": { "interface": "WinUSB", "device": 0 },
          "rateRule": { "unit": "fixed" }, "rate": 100,
          "signals": [ { "name": "Time", "range": [0, 1000], "rawRange": [0, 1000000],
                         "generator": { "kind": "ramp", "from": 0, "to": 1000, "period": 1000 } } ],
          "timeline": )" +
                         timeline + "} ] }");
}

int openIt(Handle &sensor)
{
    sensor.set("IP_Interface", "WinUSB");
    return sensor.open();
}

std::vector<double> fetch(const Handle &sensor)
{
    std::vector<double> values(100000);
    std::int32_t read = 0;
    if (TransferData(sensor, nullptr, values.data(), static_cast<std::int32_t>(values.size()), &read) != 0)
        return {};
    values.resize(static_cast<std::size_t>(read));
    return values;
}

/// What a bench with this timeline says of its mistake.
QString mistakeOfTimeline(const std::string &timeline)
{
    try {
        loadTimeline(timeline);
    } catch (const sondixsim::BenchError &error) {
        return QString::fromStdString(error.what());
    }
    return {};
}

} // namespace

/// What happens to a sensor at times that the bench file gives.
class TestSimTimeline : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void unplugsForAWhile()
    {
        loadTimeline(R"([ { "do": "unplug", "at": 10, "for": 3 } ])");
        Handle sensor(SensorType::TX270);
        QCOMPARE(openIt(sensor), 0);
        sondixsim::advance(9.99);
        QCOMPARE(fetch(sensor).size(), std::size_t(999));
        sondixsim::advance(0.01);
        std::int32_t available = 0;
        QVERIFY(DataAvail(sensor, &available) != 0);
        sondixsim::advance(2.99);
        QVERIFY(DataAvail(sensor, &available) != 0);
        sondixsim::advance(1.01);
        QCOMPARE(DataAvail(sensor, &available), 0);
        QCOMPARE(available, 101); // the one that arrived with the cable's end, and those of the last second
        QCOMPARE(sondixsim::frameCounts("1").unsent, std::uint64_t(300));
    }

    void whatOverlapsEndsWithTheLast()
    {
        loadTimeline(R"([ { "do": "unplug", "at": 1, "for": 3 }, { "do": "unplug", "at": 2, "for": 5 },
                          { "do": "silence", "at": 11, "for": 5 }, { "do": "silence", "at": 12, "for": 1 },
                          { "do": "inUse", "at": 20, "for": 10 }, { "do": "inUse", "at": 21, "for": 1 } ])");
        Handle sensor(SensorType::TX270);
        QCOMPARE(openIt(sensor), 0);
        std::int32_t available = 0;
        sondixsim::advance(6.9);
        QVERIFY(DataAvail(sensor, &available) != 0);
        sondixsim::advance(0.2);
        QCOMPARE(DataAvail(sensor, &available), 0);
        sondixsim::advance(12.8); // at 19.9 s
        QCOMPARE(sondixsim::frameCounts("1").unsent, std::uint64_t(600 + 500));
        QCOMPARE(CloseSensor(sensor), 0);
        sondixsim::advance(5.0);
        QVERIFY(openIt(sensor) != 0);
        sondixsim::advance(5.2);
        QCOMPARE(openIt(sensor), 0);
    }

    void theTimelineDoesNotUndoWhatAHandDid()
    {
        loadTimeline(R"([ { "do": "unplug", "at": 2, "for": 1 }, { "do": "silence", "at": 7, "for": 1 },
                          { "do": "unplug", "at": 20, "for": 5 } ])");
        Handle sensor(SensorType::TX270);
        QCOMPARE(openIt(sensor), 0);
        std::int32_t available = 0;
        sondixsim::advance(1.0);
        sondixsim::unplug("1");
        sondixsim::advance(4.0);
        QVERIFY(DataAvail(sensor, &available) != 0);
        sondixsim::plug("1");
        sondixsim::advance(0.1);
        QCOMPARE(DataAvail(sensor, &available), 0);
        sondixsim::setSilent("1", true);
        fetch(sensor);
        sondixsim::advance(9.9); // at 15 s
        QCOMPARE(fetch(sensor).size(), std::size_t(0));
        sondixsim::setSilent("1", false);
        // A hand is the last to decide.
        sondixsim::advance(6.0);
        QVERIFY(DataAvail(sensor, &available) != 0);
        sondixsim::plug("1");
        sondixsim::advance(1.0);
        QCOMPARE(DataAvail(sensor, &available), 0);
    }

    void happensUnobserved()
    {
        // Nobody calls the sensor between 9 and 20 s.
        loadTimeline(R"([ { "do": "unplug", "at": 10, "for": 3 } ])");
        Handle sensor(SensorType::TX270);
        QCOMPARE(openIt(sensor), 0);
        sondixsim::advance(20.0);
        const std::vector<double> values = fetch(sensor);
        QCOMPARE(values.size(), std::size_t(1700));
        for (const double value : values)
            QVERIFY(value < 10.001 || value > 13.001);
    }

    void repeats()
    {
        loadTimeline(R"([ { "do": "silence", "at": 1, "for": 0.5, "every": 2, "times": 3 } ])");
        Handle sensor(SensorType::TX270);
        QCOMPARE(openIt(sensor), 0);
        sondixsim::advance(20.0);
        QCOMPARE(sondixsim::frameCounts("1").unsent, std::uint64_t(150));
        loadTimeline(R"([ { "do": "silence", "at": 1, "for": 0.5, "every": 2 } ])");
        QCOMPARE(openIt(sensor), 0);
        sondixsim::advance(20.0);
        QCOMPARE(sondixsim::frameCounts("1").unsent, std::uint64_t(500));
    }

    void randomTimesFollowTheSeed()
    {
        const auto begins = [](int seed) {
            loadTimeline(R"([ { "do": "lose", "frames": 1, "at": 0.5, "within": 5, "every": 10, "times": 20 } ])",
                         seed);
            Handle sensor(SensorType::TX270);
            openIt(sensor);
            std::vector<double> times;
            double last = 0.0;
            for (int i = 0; i < 210; ++i) {
                sondixsim::advance(1.0);
                for (const double value : fetch(sensor)) {
                    if (value - last > 0.015)
                        times.push_back(value);
                    last = value;
                }
            }
            return times;
        };
        const std::vector<double> first = begins(1);
        QCOMPARE(first.size(), std::size_t(20));
        QCOMPARE(begins(1), first);
        QVERIFY(begins(2) != first);
        std::set<int> parts; // fifths of the range
        for (std::size_t i = 0; i < first.size(); ++i) {
            const double delay = first[i] - (0.5 + 10.0 * static_cast<double>(i));
            QVERIFY(delay >= 0.0 && delay <= 5.03);
            parts.insert(static_cast<int>(delay));
        }
        QVERIFY(parts.size() >= 4);
    }

    void losesFrames()
    {
        loadTimeline(R"([ { "do": "lose", "frames": 500, "at": 30 } ])");
        Handle sensor(SensorType::TX270);
        QCOMPARE(openIt(sensor), 0);
        sondixsim::advance(40.0);
        const std::vector<double> values = fetch(sensor);
        QCOMPARE(values.size(), std::size_t(3500));
        QCOMPARE(values[2999], 30.0);
        QCOMPARE(values[3000], 35.01);
        QCOMPARE(sondixsim::lostFrames("1"), std::uint64_t(500));
        QCOMPARE(sondixsim::generatedFrames("1"), std::uint64_t(4000));
    }

    void freezesTheValue()
    {
        loadTimeline(R"([ { "do": "freeze", "at": 10, "for": 5 } ])");
        Handle sensor(SensorType::TX270);
        QCOMPARE(openIt(sensor), 0);
        sondixsim::advance(20.0);
        const std::vector<double> values = fetch(sensor);
        QCOMPARE(values.size(), std::size_t(2000));
        QCOMPARE(values[998], 9.99);
        for (std::size_t i = 1000; i < 1500; ++i)
            QCOMPARE(values[i], 10.0);
        QCOMPARE(values[1500], 15.01);
    }

    void movesTheZero()
    {
        // By 5 % of 1000 within 10 s.
        loadTimeline(R"([ { "do": "drift", "at": 10, "for": 10, "by": 0.05 } ])");
        Handle sensor(SensorType::TX270);
        QCOMPARE(openIt(sensor), 0);
        sondixsim::advance(30.0);
        const std::vector<double> values = fetch(sensor);
        QCOMPARE(values[999], 10.0);
        QCOMPARE(values[1499], 15.0 + 25.0);
        QCOMPARE(values[1999], 20.0 + 50.0);
        QCOMPARE(values[2999], 30.0 + 50.0);
    }

    void changesSettings()
    {
        loadTimeline(R"([ { "do": "set", "at": 5, "settings": { "SA_Measrate": 4 } },
                          { "do": "factorySettings", "at": 8 } ])");
        Handle sensor(SensorType::TX270);
        QCOMPARE(openIt(sensor), 0);
        const auto measrate = [&sensor] {
            sensor.command("Get_Samplerate");
            return sensor.getDouble("SA_Measrate");
        };
        const double factory = measrate();
        QVERIFY(factory != 4.0);
        sondixsim::advance(5.0);
        QCOMPARE(measrate(), 4.0);
        sondixsim::advance(3.0);
        QCOMPARE(measrate(), factory);
    }

    void isInUseForAWhile()
    {
        loadTimeline(R"([ { "do": "inUse", "at": 5, "for": 2 } ])");
        Handle sensor(SensorType::TX270);
        sondixsim::advance(5.5);
        QVERIFY(openIt(sensor) != 0);
        std::string text;
        sensor.error(&text);
        QVERIFY2(text.find("is in use") != std::string::npos, text.c_str());
        sondixsim::advance(2.0);
        QCOMPARE(openIt(sensor), 0);
    }

    void triggers()
    {
        loadTimeline(R"([ { "do": "set", "at": 0, "settings": { "SA_TriggerMode": 1 } },
                          { "do": "trigger", "at": 1.5, "every": 1, "times": 4 } ])");
        Handle sensor(SensorType::TX270);
        QCOMPARE(openIt(sensor), 0);
        sondixsim::advance(10.0);
        QCOMPARE(fetch(sensor), (std::vector<double>{1.5, 2.5, 3.5, 4.5}));
    }

    void happensAtACall()
    {
        loadTimeline(R"([ { "do": "unplug", "command": "Get_Info", "call": 2, "for": 3 },
                          { "do": "set", "function": "DataAvail", "settings": { "SA_Measrate": 4 } },
                          { "do": "inUse", "function": "OpenSensor", "at": 50, "call": 1, "for": 1 } ])");
        Handle sensor(SensorType::TX270);
        QCOMPARE(openIt(sensor), 0);
        sondixsim::advance(10.0);
        QCOMPARE(sensor.command("Get_Info"), 0);
        sondixsim::advance(1.0);
        QVERIFY(sensor.command("Get_Info") != 0); // unplugged before it
        sondixsim::advance(2.99);
        QVERIFY(sensor.command("Get_Info") != 0);
        sondixsim::advance(0.02);
        QCOMPARE(sensor.command("Get_Info"), 0); // once only
        QCOMPARE(sondixsim::frameCounts("1").unsent, std::uint64_t(300));
        sensor.command("Get_Samplerate");
        const double before = sensor.getDouble("SA_Measrate");
        QVERIFY(before != 4.0);
        sensor.available();
        sensor.command("Get_Samplerate");
        QCOMPARE(sensor.getDouble("SA_Measrate"), 4.0);
        CloseSensor(sensor);
        sondixsim::advance(40.0);
        QVERIFY(openIt(sensor) != 0);
        sondixsim::advance(1.01);
        QCOMPARE(openIt(sensor), 0);
    }

    void repeatsAfterACall()
    {
        loadTimeline(
            R"([ { "do": "silence", "function": "DataAvail", "call": 3, "for": 0.5, "every": 2, "times": 2 },
                          { "do": "lose", "function": "TransferData", "frames": 7 },
                          { "do": "freeze", "function": "GetError" }, { "do": "factorySettings", "function": "GetError" },
                          { "do": "drift", "function": "GetError", "for": 1, "by": 0.1 } ])");
        Handle sensor(SensorType::TX270);
        QCOMPARE(openIt(sensor), 0);
        for (int i = 0; i < 3; ++i)
            QVERIFY(sensor.available() >= 0);
        sondixsim::advance(10.0);
        QCOMPARE(sondixsim::frameCounts("1").unsent, std::uint64_t(100));
        fetch(sensor);
        sondixsim::advance(1.0);
        QCOMPARE(sondixsim::lostFrames("1"), std::uint64_t(7));
        sensor.error();
        fetch(sensor);
        sondixsim::advance(1.0);
        for (const double value : fetch(sensor))
            QCOMPARE(value, 11.0);
    }

    void leavesOutATriggerThatNobodySaw_data()
    {
        QTest::addColumn<QString>("more"); // of the trigger
        QTest::addColumn<QString>("others");
        QTest::newRow("regular") << QString() << QString();
        QTest::newRow("random") << QStringLiteral(R"(, "within": 0.0005)") << QString();
        QTest::newRow("a part of the time")
            << QString() << QStringLiteral(R"(, { "do": "silence", "at": 5, "for": 3, "every": 7 })");
        QTest::newRow("two") << QString() << QStringLiteral(R"(, { "do": "trigger", "at": 0.5, "every": 0.7 })");
        QTest::newRow("ended") << QStringLiteral(R"(, "times": 3000)") << QString();
    }
    void leavesOutATriggerThatNobodySaw()
    {
        QFETCH(const QString, more);
        QFETCH(const QString, others);
        const std::string timeline = R"([ { "do": "set", "at": 0, "settings": { "SA_TriggerMode": 1 } },
            { "do": "trigger", "at": 0.1, "every": 0.001)" +
                                     more.toStdString() + " }" + others.toStdString() + "]";
        std::vector<double> expected;
        sondixsim::FrameCounts counts;
        for (const bool inSteps : {true, false}) {
            loadTimeline(timeline);
            Handle sensor(SensorType::TX270);
            QCOMPARE(openIt(sensor), 0);
            for (int i = 0; i < 1000; ++i) {
                sondixsim::advance(0.1);
                if (inSteps)
                    sensor.available();
            }
            const sondixsim::FrameCounts found = sondixsim::frameCounts("1");
            const std::vector<double> values = fetch(sensor);
            if (!inSteps) {
                QCOMPARE(values, expected);
                QCOMPARE(found.generated, counts.generated);
                QCOMPARE(found.lost, counts.lost);
                QCOMPARE(found.unsent, counts.unsent);
                QCOMPARE(found.waiting, counts.waiting);
            }
            expected = values;
            counts = found;
        }
        QVERIFY(counts.generated >= 3000);
    }

    void aWeekOfEventsTakesNoTime_data()
    {
        QTest::addColumn<bool>("isOpen");
        QTest::addColumn<QString>("events");
        const QString trigger = QStringLiteral(R"({ "do": "trigger", "at": 0, "every": 0.001 })");
        QTest::newRow("triggers, open") << true << trigger;
        QTest::newRow("triggers, closed") << false << trigger;
        QTest::newRow("all, closed") << false << QStringLiteral(R"(
            { "do": "unplug", "at": 0, "every": 0.004, "for": 0.001 }, { "do": "silence", "at": 0, "every": 0.004, "for": 0.001 },
            { "do": "freeze", "at": 0, "every": 0.004, "for": 0.001 }, { "do": "inUse", "at": 0, "every": 0.004, "for": 0.001 },
            { "do": "lose", "frames": 1, "at": 0, "every": 0.4 },
            { "do": "drift", "by": 0.00000000001, "at": 0, "every": 0.004, "for": 0.002 },
            { "do": "set", "at": 0, "every": 0.004, "settings": { "SA_Measrate": 3 } })");
    }
    void aWeekOfEventsTakesNoTime()
    {
        QFETCH(const bool, isOpen);
        QFETCH(const QString, events);
        loadTimeline(R"([ { "do": "set", "at": 0, "settings": { "SA_TriggerMode": )" +
                     std::to_string(isOpen ? 1 : 0) + " } }, " + events.toStdString() + " ]");
        Handle sensor(SensorType::TX270);
        if (isOpen)
            QCOMPARE(openIt(sensor), 0);
        constexpr double week = 7.0 * 86400.0;
        // Playing each of the events would exceed the time limit of the test.
        sondixsim::advance(week + 0.0035);
        if (isOpen) {
            QCOMPARE(sensor.available(), 32768);
            QCOMPARE(sondixsim::frameCounts("1").generated, static_cast<std::uint64_t>(week * 1000.0) + 3);
        } else {
            QCOMPARE(openIt(sensor), 0);
        }
        if (!events.contains(QLatin1String("drift")))
            return;
        sensor.command("Get_Samplerate");
        QCOMPARE(sensor.getDouble("SA_Measrate"), 3.0);
        // The zero has moved by this share of 1000 in each of the repetitions.
        sondixsim::advance(0.02);
        const std::vector<double> values = fetch(sensor);
        QVERIFY(!values.empty());
        const double moved = 1000.0 * 1e-11 * week / 0.004;
        const double time = std::fmod(week + 0.0135, 1000.0);
        QVERIFY2(std::fabs(values.front() - time - moved) < 0.01, qPrintable(QString::number(values.front())));
    }

    void anUnpluggedMemberSilencesTheSensorOfSeveral()
    {
        const QString bench = QStringLiteral(R"({ "clock": { "virtual": true }, "sensors": [
            { "model": "CC430", "serialNumber": "1", "place": { "interface": "TCP/IP", "ip": "192.168.0.1" },
              "timeline": [ { "do": "unplug", "at": 10, "for": 3 } ] },
            { "model": "CC430", "serialNumber": "2", "place": { "interface": "TCP/IP", "ip": "192.168.0.2" },
              "timeline": [ { "do": "unplug", "at": 12, "for": 4 } ] },
            { "model": "MULTI_SENSOR", "serialNumber": "9", "members": [ "1", "2" ], "rateRule": { "unit": "fixed" },
              "rate": 100, "place": { "interface": "TCP/IP", "ip": "192.168.0.9" } } ] })");
        sondixsim::loadBench(bench.toStdString());
        Handle sensor(SensorType::MultiSensor);
        QCOMPARE(sensor.open(), 0);
        sondixsim::advance(20.0);
        QVERIFY(sensor.available() > 0);
        sondixsim::FrameCounts counts = sondixsim::frameCounts("9");
        QCOMPARE(counts.generated, std::uint64_t(2000));
        QCOMPARE(counts.unsent, std::uint64_t(600)); // from 10 to 16 s
        sondixsim::unplug("1");
        sondixsim::advance(1.0);
        std::int32_t available = 0;
        QVERIFY(DataAvail(sensor, &available) != 0);
        sondixsim::plug("1");
        QCOMPARE(DataAvail(sensor, &available), 0);
        counts = sondixsim::frameCounts("9");
        QCOMPARE(counts.unsent, std::uint64_t(700));
    }

    void refusesMistakes_data()
    {
        QTest::addColumn<QString>("timeline");
        QTest::addColumn<QString>("reason");
        const auto row = [](const char *timeline, const char *reason) {
            QTest::newRow(timeline) << timeline << reason;
        };
        row(R"([ { "at": 1 } ])", "an event needs \"do\"");
        row(R"([ { "do": "unplug" } ])", "an event needs \"at\"");
        row(R"([ { "do": "unplug", "command": "Get_Nothing" } ])", "does not know the command \"Get_Nothing\"");
        row(R"([ { "do": "unplug", "function": "Get_Info" } ])", "there is no function \"Get_Info\"");
        row(R"([ { "do": "unplug", "at": 1, "call": 2 } ])", "\"call\"");
        row(R"([ { "do": "unplug", "command": "Get_Info", "call": 0 } ])", "\"call\" is 0, it must be from 1");
        row(R"([ { "do": "unplug", "command": "Get_Info", "parameter": "SP_A" } ])",
            "only a \"function\" that sets");
        row(R"([ { "do": "explode", "at": 1 } ])", "there is no event \"explode\"");
        row(R"([ { "do": "unplug", "at": -1 } ])", "\"at\" is -1.0, it must be from 0.0");
        row(R"([ { "do": "unplug", "at": 1, "for": 0 } ])", "\"for\" is 0.0, it must be from 0.001");
        row(R"([ { "do": "trigger", "at": 1, "for": 1 } ])", "\"for\"");
        row(R"([ { "do": "lose", "at": 1 } ])", "\"frames\"");
        row(R"([ { "do": "lose", "at": 1, "frames": 0 } ])", "\"frames\" is 0, it must be from 1");
        row(R"([ { "do": "drift", "at": 1, "by": 0.1 } ])", "\"for\"");
        row(R"([ { "do": "unplug", "at": 1, "times": 2 } ])", "\"times\"");
        row(R"([ { "do": "unplug", "at": 1, "for": 3, "every": 3 } ])", "must be shorter than \"every\"");
        row(R"([ { "do": "unplug", "at": 1, "for": 2, "within": 2, "every": 4 } ])",
            "must be shorter than \"every\"");
        row(R"([ { "do": "set", "at": 1, "settings": { "SA_Colour": 1 } } ])", "no setting \"SA_Colour\"");
        row(R"([ { "do": "set", "at": 1, "settings": { "SA_Measrate": "fast" } } ])", "\"SA_Measrate\"");
        row(R"({ "do": "unplug", "at": 1 })", "\"timeline\" must be");
    }
    void refusesMistakes()
    {
        QFETCH(const QString, timeline);
        QFETCH(const QString, reason);
        const QString mistake = mistakeOfTimeline(timeline.toStdString());
        QVERIFY2(mistake.contains(reason), qPrintable(mistake));
        QVERIFY2(mistake.startsWith("bench:6: "), qPrintable(mistake));
    }
};

QTEST_GUILESS_MAIN(TestSimTimeline)
#include "tst_simtimeline.moc"
