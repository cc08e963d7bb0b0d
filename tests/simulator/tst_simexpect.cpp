// SPDX-License-Identifier: MIT
#include "handle.h"
#include "SondixSimulator/control.h"

#include <QRegularExpression>
#include <QTest>

#include <algorithm>
#include <array>

namespace {

/// A laser with 100 frames a second, one without a call, and with what they and the bench expect.
std::string bench(const std::string &ofSensor, const std::string &ofBench = "[]", const std::string &more = {})
{
    return R"({ "clock": { "virtual": true }, "expect": )" + ofBench + R"(, "sensors": [
        { "model": "TX270", "serialNumber": "1", "place": { "interface": "RS232", "port": "COM3" },
          "rateRule": { "unit": "fixed" }, "rate": 100, "ring": 50,
          "expect": )" +
           ofSensor + more + R"( },
        { "model": "TX270", "serialNumber": "2", "place": { "interface": "RS232", "port": "COM4" } } ] })";
}

void set(Handle &sensor, double rate)
{
    sensor.set("SP_Measrate", rate);
    sensor.command("Set_Samplerate");
}

/// Transfers all values, \a maxCount at a time.
int fetch(const Handle &sensor, std::int32_t maxCount = 1000)
{
    int count = 0;
    for (std::size_t read = 1; read > 0; count += static_cast<int>(read))
        read = takeBlock(sensor, maxCount).raw.size();
    return count;
}

} // namespace

/// What a bench file expects of the programs that use the bench.
class TestSimExpect : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void countsCalls_data();
    void countsCalls();
    void comparesTheCount_data();
    void comparesTheCount();
    void callsOfAllSensorsAndOfNone();
    void callsThatFailCountToo();
    void callsAtATime();
    void countsFrames();
    void framesOfAllRuns();
    void framesOfAllSensors();
    void comparesTheSettingAtTheEnd();
    void settingsThatTheTimelineChanges();
    void clearingFaultsClearsNoCount();
    void anotherBenchBeginsAnew();
    void tellsWhatAndWhere();
    void aBenchMayExpectNothing();
    void mistakesAreRefused_data();
    void mistakesAreRefused();
};

void TestSimExpect::countsCalls_data()
{
    QTest::addColumn<QString>("filter");
    QTest::addColumn<QString>("found");
    QTest::addColumn<QString>("name");
    QTest::newRow("command") << R"("command": "Set_Samplerate")"
                             << "3"
                             << R"(calls of SensorCommand "Set_Samplerate")";
    QTest::newRow("other command") << R"("command": "Set_Averaging")"
                                   << "0"
                                   << R"(calls of SensorCommand "Set_Averaging")";
    QTest::newRow("function") << R"("function": "SensorCommand")"
                              << "4"
                              << "calls of SensorCommand";
    QTest::newRow("opening") << R"("function": "OpenSensor")"
                             << "2"
                             << "calls of OpenSensor";
    QTest::newRow("parameter") << R"("function": "SetParameterDouble", "parameter": "SP_Measrate")"
                               << "3"
                               << R"(calls of SetParameterDouble "SP_Measrate")";
    QTest::newRow("of a command") << R"("function": "GetParameterDouble", "command": "Get_Samplerate")"
                                  << "1"
                                  << R"(calls of GetParameterDouble "Get_Samplerate")";
    QTest::newRow("named") << R"("function": "CloseSensor", "name": "closes it")"
                           << "1"
                           << "closes it";
}

void TestSimExpect::countsCalls()
{
    QFETCH(QString, filter);
    QFETCH(QString, found);
    QFETCH(QString, name);
    sondixsim::loadBench(bench("[ { " + filter.toStdString() + R"(, "atMost": 2 } ])"));
    Handle other(SensorType::TX270);
    QCOMPARE(other.openAt("COM4"), 0);
    set(other, 1.0);
    CloseSensor(other);
    Handle sensor(SensorType::TX270);
    QCOMPARE(sensor.openAt("COM3"), 0);
    set(sensor, 1.0);
    set(sensor, 2.0);
    CloseSensor(sensor);
    QCOMPARE(sensor.openAt("COM3"), 0);
    set(sensor, 4.0);
    QCOMPARE(sensor.command("Get_Samplerate"), 0);
    QCOMPARE(sensor.getDouble("SA_Measrate"), 4.0);

    const std::vector<sondixsim::Expectation> all = sondixsim::expectations();
    QCOMPARE(all.size(), std::size_t(1));
    QCOMPARE(QString::fromStdString(all[0].name), name);
    QCOMPARE(QString::fromStdString(all[0].found), found);
    QCOMPARE(all[0].isMet, found.toInt() <= 2);
}

void TestSimExpect::comparesTheCount_data()
{
    QTest::addColumn<QString>("count");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<int>("met"); // bit n: with n calls
    QTest::newRow("exactly") << R"("exactly": 2)"
                             << "exactly 2" << 0b00100;
    QTest::newRow("never") << R"("exactly": 0)"
                           << "exactly 0" << 0b00001;
    QTest::newRow("at least") << R"("atLeast": 2)"
                              << "at least 2" << 0b11100;
    QTest::newRow("at most") << R"("atMost": 2)"
                             << "at most 2" << 0b00111;
    QTest::newRow("range") << R"("atLeast": 1, "atMost": 3)"
                           << "at least 1 and at most 3" << 0b01110;
}

void TestSimExpect::comparesTheCount()
{
    QFETCH(QString, count);
    QFETCH(QString, expected);
    QFETCH(int, met);
    sondixsim::loadBench(bench(R"([ { "command": "Set_Samplerate", )" + count.toStdString() + " } ]"));
    Handle sensor(SensorType::TX270);
    QCOMPARE(sensor.openAt("COM3"), 0);
    for (int calls = 0; calls < 5; ++calls) {
        const sondixsim::Expectation expectation = sondixsim::expectations().at(0);
        QCOMPARE(QString::fromStdString(expectation.expected), expected);
        QCOMPARE(QString::fromStdString(expectation.found), QString::number(calls));
        QCOMPARE(expectation.isMet, (met >> calls) % 2 == 1);
        set(sensor, 1.0);
    }
}

void TestSimExpect::callsOfAllSensorsAndOfNone()
{
    sondixsim::loadBench(bench("[]", R"([ { "function": "CreateSensorInstance", "exactly": 3 },
                                          { "function": "OpenSensor", "exactly": 2 },
                                          { "command": "Start_FindSensor", "exactly": 1 } ])"));
    Handle sensor(SensorType::TX270);
    Handle other(SensorType::TX270);
    Handle search(SensorType::TX270);
    QCOMPARE(sensor.openAt("COM3"), 0);
    QCOMPARE(other.openAt("COM4"), 0);
    QCOMPARE(search.command("Start_FindSensor"), 0);
    for (const sondixsim::Expectation &expectation : sondixsim::expectations()) {
        QVERIFY2(expectation.isMet, (expectation.name + ": " + expectation.found).c_str());
        QVERIFY(expectation.sensor.empty() && expectation.model.empty());
    }
}

void TestSimExpect::callsThatFailCountToo()
{
    sondixsim::loadBench(bench(R"([ { "command": "Set_Samplerate", "exactly": 2 } ])", "[]",
                               R"(, "faults": [ { "command": "Set_Samplerate", "code": -26, "times": 1 } ])"));
    Handle sensor(SensorType::TX270);
    QCOMPARE(sensor.openAt("COM3"), 0);
    sensor.set("SP_Measrate", 4.0);
    QCOMPARE(sensor.command("Set_Samplerate"), -26);
    QVERIFY(!sondixsim::expectations().at(0).isMet);
    sensor.set("SP_Measrate", 4.0);
    QCOMPARE(sensor.command("Set_Samplerate"), 0);
    QVERIFY(sondixsim::expectations().at(0).isMet);
}

void TestSimExpect::callsAtATime()
{
    sondixsim::loadBench(bench(R"([ { "command": "Get_Info", "at": 2, "for": 3, "exactly": 3 },
                                    { "command": "Get_Info", "at": 7.5, "exactly": 2 } ])"));
    Handle sensor(SensorType::TX270);
    QCOMPARE(sensor.openAt("COM3"), 0);
    for (int second = 0; second < 10; ++second) { // 0 to 9 s
        QCOMPARE(sensor.command("Get_Info"), 0);
        sondixsim::advance(1.0);
    }
    const auto all = sondixsim::expectations();
    QCOMPARE(QString::fromStdString(all.at(0).found), QString("3")); // at 2, 3 and 4 s
    QCOMPARE(QString::fromStdString(all.at(1).found), QString("2")); // at 8 and 9 s
    QCOMPARE(QString::fromStdString(all.at(0).name),
             QString(R"(calls of SensorCommand "Get_Info" from 2.0 s to 5.0 s)"));
    QCOMPARE(QString::fromStdString(all.at(1).name),
             QString(R"(calls of SensorCommand "Get_Info" from 7.5 s on)"));
}

void TestSimExpect::countsFrames()
{
    // 100 frames a second, a ring for 50: of the first 80 the oldest 30 are lost, of the 40 that follow none.
    sondixsim::loadBench(bench(R"([ { "frames": "generated", "exactly": 220 }, { "frames": "lost", "exactly": 30 },
                                    { "frames": "fetched", "atLeast": 90 }, { "frames": "unsent", "exactly": 100 },
                                    { "frames": "discarded", "atMost": 0 } ])"));
    Handle sensor(SensorType::TX270);
    QCOMPARE(sensor.openAt("COM3"), 0);
    sondixsim::advance(0.8);
    const int perFrame = fetch(sensor) / 50;
    QVERIFY(perFrame > 0);
    sondixsim::advance(0.4);
    QCOMPARE(fetch(sensor), 40 * perFrame);
    sondixsim::unplug("1");
    sondixsim::advance(1.0);
    sondixsim::plug("1");
    const auto all = sondixsim::expectations();
    const std::array<const char *, 5> found = {"220", "30", "90", "100", "0"};
    for (std::size_t i = 0; i < found.size(); ++i) {
        QCOMPARE(all.at(i).found.c_str(), found[i]);
        QVERIFY(all[i].isMet);
    }
}

void TestSimExpect::framesOfAllRuns()
{
    sondixsim::loadBench(bench(R"([ { "frames": "fetched", "exactly": 70 } ])"));
    for (const double seconds : {0.3, 0.4}) {
        Handle sensor(SensorType::TX270);
        QCOMPARE(sensor.openAt("COM3"), 0);
        sondixsim::advance(seconds);
        QVERIFY(fetch(sensor, 3) > 0);
    }
    QCOMPARE(sondixsim::expectations().at(0).found.c_str(), "70");
}

void TestSimExpect::framesOfAllSensors()
{
    sondixsim::loadBench(bench("[]", R"([ { "frames": "fetched", "atLeast": 1 } ])"));
    std::uint64_t fetched = 0;
    for (const char *const port : {"COM3", "COM4"}) {
        Handle sensor(SensorType::TX270);
        QCOMPARE(sensor.openAt(port), 0);
        sondixsim::advance(0.1);
        QVERIFY(fetch(sensor) > 0);
        fetched += sondixsim::frameCounts(port == std::string("COM3") ? "1" : "2").fetched;
    }
    QCOMPARE(sondixsim::expectations().at(0).found, std::to_string(fetched));
}

void TestSimExpect::comparesTheSettingAtTheEnd()
{
    sondixsim::loadBench(bench(R"([ { "setting": "SA_Measrate", "value": 4 } ])"));
    Handle sensor(SensorType::TX270);
    QCOMPARE(sensor.openAt("COM3"), 0);
    set(sensor, 4.0);
    QVERIFY(sondixsim::expectations().at(0).isMet);
    set(sensor, 2.5);
    CloseSensor(sensor);
    const sondixsim::Expectation expectation = sondixsim::expectations().at(0);
    QVERIFY(!expectation.isMet);
    QCOMPARE(expectation.name.c_str(), "SA_Measrate");
    QCOMPARE(expectation.expected.c_str(), "4.0");
    QCOMPARE(expectation.found.c_str(), "2.5");
}

void TestSimExpect::settingsThatTheTimelineChanges()
{
    sondixsim::loadBench(bench(R"([ { "setting": "SA_Measrate", "value": 1 } ])", "[]",
                               R"(, "timeline": [ { "do": "set", "at": 5, "settings": { "SA_Measrate": 1 } } ])"));
    Handle sensor(SensorType::TX270);
    QCOMPARE(sensor.openAt("COM3"), 0);
    set(sensor, 4.0);
    QVERIFY(!sondixsim::expectations().at(0).isMet);
    sondixsim::advance(5.0); // nobody calls the sensor afterwards
    QVERIFY(sondixsim::expectations().at(0).isMet);
}

void TestSimExpect::clearingFaultsClearsNoCount()
{
    sondixsim::loadBench(bench(R"([ { "command": "Get_Info", "exactly": 2 } ])"));
    Handle sensor(SensorType::TX270);
    QCOMPARE(sensor.openAt("COM3"), 0);
    QCOMPARE(sensor.command("Get_Info"), 0);
    sondixsim::clearFaults();
    sondixsim::removeFault(1);
    QCOMPARE(sensor.command("Get_Info"), 0);
    QVERIFY(sondixsim::expectations().at(0).isMet);
}

void TestSimExpect::anotherBenchBeginsAnew()
{
    const std::string text = bench(R"([ { "function": "OpenSensor", "exactly": 1 } ])");
    for (int i = 0; i < 2; ++i) {
        sondixsim::loadBench(text);
        QCOMPARE(sondixsim::expectations().at(0).found.c_str(), "0");
        Handle sensor(SensorType::TX270);
        QCOMPARE(sensor.openAt("COM3"), 0);
        QVERIFY(sondixsim::expectations().at(0).isMet);
    }
}

void TestSimExpect::tellsWhatAndWhere()
{
    sondixsim::loadBench(R"({ "sensors": [
        { "model": "TX270", "serialNumber": "Přístroj", "place": { "interface": "WinUSB" },
          "expect": [
            { "function": "OpenSensor", "exactly": 1, "name": "otevře přístroj" },
            { "function": "CloseSensor", "exactly": 1 } ] } ],
        "expect": [
            { "function": "LogToFile", "exactly": 0 } ] })");
    const auto all = sondixsim::expectations();
    QCOMPARE(all.size(), std::size_t(3)); // in the order of the file
    QCOMPARE(all[0].line, 4);
    QCOMPARE(QString::fromStdString(all[0].name), QString("otevře přístroj"));
    QCOMPARE(QString::fromStdString(all[0].sensor), QString("Přístroj"));
    QCOMPARE(all[0].model.c_str(), "TX270");
    QCOMPARE(all[1].line, 5);
    QCOMPARE(all[2].line, 7);
    QVERIFY(all[2].isMet);
}

void TestSimExpect::aBenchMayExpectNothing()
{
    sondixsim::loadBench(bench("[]"));
    QVERIFY(sondixsim::expectations().empty());
    sondixsim::loadBuiltInBench();
    QVERIFY(sondixsim::expectations().empty());
}

void TestSimExpect::mistakesAreRefused_data()
{
    QTest::addColumn<QString>("ofSensor");
    QTest::addColumn<QString>("ofBench");
    QTest::addColumn<QString>("mistake");
    const auto sensor = [](const char *name, const char *expectation, const char *mistake) {
        QTest::newRow(name) << QString("[\n{ %1 } ]").arg(QLatin1String(expectation)) << "[]"
                            << "bench:5: " + QString(mistake);
    };
    const auto all = [](const char *name, const char *expectation, const char *mistake) {
        QTest::newRow(name) << "[]" << QString("[\n{ %1 } ]").arg(QLatin1String(expectation))
                            << "bench:2: " + QString(mistake);
    };
    const QString none =
        R"(an expectation needs exactly one of these: "function" or "command", "frames", "setting")";
    const QString count =
        R"(an expectation needs exactly one of these: "value", "exactly", "atLeast" or "atMost")";
    sensor("nothing", "", qPrintable(none));
    sensor("two things", R"("frames": "lost", "command": "Get_Info", "exactly": 0)", qPrintable(none));
    sensor("only a parameter", R"("parameter": "SP_Measrate", "exactly": 0)", qPrintable(none));
    sensor("function", R"("function": "OpenSensors", "exactly": 1)", R"(there is no function "OpenSensors")");
    sensor("command", R"("command": "Get_Nothing", "exactly": 1)",
           R"(a TX270 does not know the command "Get_Nothing")");
    sensor("empty command", R"("command": "", "exactly": 1)", R"("command" must not be empty)");
    sensor("parameter of a command", R"("command": "Set_Samplerate", "parameter": "SP_Measrate", "exactly": 1)",
           R"(only a "function" that sets or gets a parameter has a "parameter")");
    sensor("frames", R"("frames": "told", "exactly": 1)", R"(there is no kind of frames "told")");
    sensor("no count", R"("command": "Get_Info")", qPrintable(count));
    sensor("two counts", R"("command": "Get_Info", "exactly": 1, "atMost": 3)", qPrintable(count));
    sensor("empty range", R"("command": "Get_Info", "atLeast": 4, "atMost": 3)",
           R"("atLeast" must not be greater than "atMost")");
    sensor("negative", R"("command": "Get_Info", "exactly": -1)",
           R"("exactly" is -1, it must be from 0 to 2147483647)");
    sensor("fraction", R"("command": "Get_Info", "exactly": 1.5)", R"("exactly" must be a whole number)");
    sensor("times of frames", R"("frames": "lost", "exactly": 0, "at": 3)", R"(an expectation has no key "at")");
    sensor("setting", R"("setting": "SA_Nothing", "value": 1)", R"(a TX270 has no setting "SA_Nothing")");
    sensor("no value", R"("setting": "SA_Measrate")", qPrintable(count));
    sensor("count instead of a value", R"("setting": "SA_Measrate", "exactly": 1)",
           R"(an expectation needs "value")");
    sensor("value of another kind", R"("setting": "SA_Measrate", "value": "fast")",
           R"("SA_Measrate" has the wrong type)");
    sensor("count of a setting", R"("setting": "SA_Measrate", "value": 1, "exactly": 1)", qPrintable(count));
    sensor("empty name", R"("frames": "lost", "exactly": 0, "name": "")", R"("name" must not be empty)");
    all("setting of the bench", R"("setting": "SA_Measrate", "value": 1)",
        R"(only a sensor has settings: "setting" belongs into its own "expect")");
    all("function of the bench", R"("function": "Open", "exactly": 1)", R"(there is no function "Open")");
    QTest::newRow("no array") << "{}"
                              << "[]"
                              << R"(bench:4: "expect" must be an array)";
}

void TestSimExpect::mistakesAreRefused()
{
    QFETCH(QString, ofSensor);
    QFETCH(QString, ofBench);
    QFETCH(QString, mistake);
    try {
        sondixsim::loadBench(bench(ofSensor.toStdString(), ofBench.toStdString()));
        QFAIL("it was accepted");
    } catch (const sondixsim::BenchError &error) {
        // After an unknown key or name the known ones are listed.
        const QString text = QString::fromStdString(error.what()).section("; its keys are:", 0, 0);
        QCOMPARE(text.section(QRegularExpression("(?<=\"): \"\\w+\" must be "), 0, 0), mistake);
    }
}

QTEST_GUILESS_MAIN(TestSimExpect)
#include "tst_simexpect.moc"
