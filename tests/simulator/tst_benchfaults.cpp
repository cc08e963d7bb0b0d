// SPDX-License-Identifier: MIT
#include "handle.h"
#include "SondixSimulator/control.h"

#include <QTest>

#include <atomic>
#include <thread>

namespace {

void loadWith(const std::string &sensorFaults, const std::string &benchFaults = "[]")
{
    const std::string place = "{ \"interface\": \"RS232\", \"port\": \"COM3\" }";
    sondixsim::loadBench("{ \"clock\": { \"virtual\": true }, \"faults\": " + benchFaults +
                         ", \"sensors\": [\n { \"model\": \"TX270\", \"serialNumber\": \"1\", \"place\": " +
                         place + ", \"faults\": " + sensorFaults + " } ] }");
}

QString mistakeOfFault(const std::string &fault)
{
    try {
        loadWith("[" + fault + "]");
    } catch (const sondixsim::BenchError &error) {
        return QString::fromStdString(error.what());
    }
    return {};
}

} // namespace

/// The faults that a bench file can have.
class TestBenchFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { sondixsim::loadBuiltInBench(); }

    void aSearchFailsHalfWay()
    {
        loadWith(
            "[]",
            R"([ { "command": "Get_FindSensorProgress", "from": 3, "code": -77, "text": "the scan broke off" } ])");
        Handle search(SensorType::TX270);
        QCOMPARE(search.command("Start_FindSensor"), 0);
        QCOMPARE(search.command("Get_FindSensorProgress"), 0);
        QCOMPARE(search.command("Get_FindSensorProgress"), 0);
        QCOMPARE(search.command("Get_FindSensorProgress"), -77);
        std::string text;
        search.error(&text);
        QCOMPARE(text, std::string("the scan broke off"));
    }

    void aCallHangsUntilItIsReleased()
    {
        loadWith(R"([ { "command": "Get_Info", "hang": true, "times": 1 } ])");
        Handle sensor(SensorType::TX270);
        QCOMPARE(sensor.openAt("COM3"), 0);
        std::atomic<bool> isDone{false};
        std::thread caller([&] {
            sensor.command("Get_Info");
            isDone = true;
        });
        QTest::qWait(100);
        const bool wasDone = isDone;
        // The thread may not hang yet: released are the calls that hang.
        while (!isDone) {
            sondixsim::releaseHangs();
            std::this_thread::yield();
        }
        caller.join();
        QVERIFY(!wasDone);
        QCOMPARE(sensor.error(), 0);
        QCOMPARE(sensor.command("Get_Info"), 0);
    }

    void anAnswerIsReplaced()
    {
        loadWith(R"([ { "command": "Get_Info", "answer": "SA_Sensor=another", "times": 1 } ])");
        Handle sensor(SensorType::TX270);
        QCOMPARE(sensor.openAt("COM3"), 0);
        QCOMPARE(sensor.command("Get_Info"), 0);
        QCOMPARE(sensor.allParameters(), std::string("SA_Sensor=another"));
        QCOMPARE(sensor.command("Get_Info"), 0);
        QCOMPARE(sensor.getText("SA_SerialNumber"), std::string("1"));
    }

    void anAnswerIsDamaged()
    {
        loadWith(R"([ { "command": "Get_Info", "damage": "cut", "from": 2, "times": 1 },
                      { "command": "Get_Info", "damage": "garbled", "from": 3, "times": 1 },
                      { "command": "Get_Info", "damage": "empty", "from": 4, "times": 1 } ])");
        Handle sensor(SensorType::TX270);
        QCOMPARE(sensor.openAt("COM3"), 0);
        const auto answer = [&sensor] {
            return sensor.command("Get_Info") == 0 ? sensor.allParameters() : std::string("failed");
        };
        const std::string whole = answer();
        QVERIFY(whole.size() > 50);
        QCOMPARE(answer(), whole.substr(0, whole.size() / 2));
        const std::string garbled = answer();
        QCOMPARE(garbled.size(), whole.size());
        std::size_t differing = 0;
        for (std::size_t i = 0; i < whole.size(); ++i)
            differing += whole[i] != garbled[i] ? 1 : 0;
        QVERIFY(differing > whole.size() / 10 && differing <= whole.size() / 7 + 1);
        QCOMPARE(answer(), std::string());
        QCOMPARE(answer(), whole);
    }

    void holdsForAWhile()
    {
        loadWith(R"([ { "command": "Get_Info", "code": -5, "at": 10, "for": 2 } ])");
        Handle sensor(SensorType::TX270);
        QCOMPARE(sensor.openAt("COM3"), 0);
        for (const auto &[step, code] : {std::pair(9.5, 0), {0.5, -5}, {1.9, -5}, {0.2, 0}}) {
            sondixsim::advance(step);
            QCOMPARE(sensor.command("Get_Info"), code);
        }
    }

    void refusesMistakes_data()
    {
        QTest::addColumn<QString>("fault");
        QTest::addColumn<QString>("reason");
        const auto row = [](const char *fault, const char *reason) { QTest::newRow(fault) << fault << reason; };
        row(R"({ "command": "Get_Info" })",
            "a fault needs at least one of these: \"code\", \"delay\", \"hang\", \"answer\", \"damage\"");
        row(R"({ "command": "Get_Info", "code": 0 })",
            "a fault needs a \"code\" other than 0, a \"delay\", \"hang\", \"answer\" or");
        row(R"({ "command": "", "code": -1 })", "\"command\" must not be empty");
        row(R"({ "command": "Get_Info", "damage": "none" })", "\"damage\" must be cut, garbled or empty");
        row(R"({ "command": "Get_Info", "damage": 1 })", "\"damage\" must be a text");
        row(R"({ "function": "TransferData", "damage": "cut" })",
            "only SensorCommand and OpenSensor have an answer");
        row(R"({ "function": "TransferData", "answer": "a=1" })",
            "only SensorCommand and OpenSensor have an answer");
        row(R"({ "command": "Get_Info", "hang": 1 })", "\"hang\" must be");
        row(R"({ "command": "Get_Info", "code": -1, "at": -1 })", "\"at\" is -1.0");
    }
    void refusesMistakes()
    {
        QFETCH(const QString, fault);
        QFETCH(const QString, reason);
        const QString mistake = mistakeOfFault(fault.toStdString());
        QVERIFY2(mistake.contains(reason), qPrintable(mistake));
        QVERIFY2(mistake.startsWith("bench:2: "), qPrintable(mistake));
    }

    void theWholeBenchKnowsTheCommandsOfItsSensorsAndOfTheLibrary_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("command");
        QTest::addColumn<bool>("isKnown");
        for (const char *const key : {"faults", "expect"}) {
            const QString list = QString::fromLatin1(key);
            for (const char *const known :
                 {"Get_Info", "Get_HTTP", "Set_Samplerate", "Start_FindSensor", "Get_FindSensorProgress"})
                QTest::addRow("%s %s", key, known) << list << QString::fromLatin1(known) << true;
            for (const char *const unknown : {"Get_Nothing", "get_info", "Get_Measure", "DistanceTracking"})
                QTest::addRow("%s %s", key, unknown) << list << QString::fromLatin1(unknown) << false;
        }
    }
    void theWholeBenchKnowsTheCommandsOfItsSensorsAndOfTheLibrary()
    {
        QFETCH(const QString, key);
        QFETCH(const QString, command);
        QFETCH(const bool, isKnown);
        const QString effect =
            key == QLatin1String("faults") ? QStringLiteral("\"code\": -1") : QStringLiteral("\"atLeast\": 1");
        const QString text = QStringLiteral(R"({ "sensors": [ { "model": "TX270", "serialNumber": "1",
            "place": { "interface": "RS232", "port": "COM1" } } ],
            "%1": [
                { "command": "%2", %3 } ] })")
                                 .arg(key, command, effect);
        QString mistake;
        try {
            sondixsim::loadBench(text.toStdString());
        } catch (const sondixsim::BenchError &error) {
            mistake = QString::fromStdString(error.what());
        }
        const QString expected =
            QStringLiteral("bench:4: no sensor of the bench knows the command \"%1\"").arg(command);
        QCOMPARE(mistake, isKnown ? QString() : expected);
    }
};

QTEST_GUILESS_MAIN(TestBenchFaults)
#include "tst_benchfaults.moc"
