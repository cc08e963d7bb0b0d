// SPDX-License-Identifier: MIT
#include "handle.h"
#include "SondixSimulator/control.h"
#include "support/scripting.h"

#include <atomic>
#include <functional>
#include <QElapsedTimer>
#include <QTest>
#include <stdexcept>
#include <thread>

Q_DECLARE_METATYPE(std::function<void(sondixsim::Fault &)>)

using sondixsim::Fault;

static const char *const faultsBench = R"({
    "clock": { "virtual": true },
    "sensors": [
        { "model": "TX270", "serialNumber": "one", "place": { "interface": "WinUSB", "device": 1 }, "rate": 1000 },
        { "model": "TX270", "serialNumber": "two", "place": { "interface": "WinUSB", "device": 2 }, "rate": 1000 },
        { "model": "CC430", "serialNumber": "three", "place": { "interface": "WinUSB", "device": 3 } }
    ]
})";

class TestSimFaults : public QObject
{
    Q_OBJECT

private:
    static std::int32_t openDevice(Handle &handle, int device)
    {
        handle.set("IP_DeviceInstance", device);
        return handle.open();
    }

private Q_SLOTS:
    void init() { sondixsim::loadBench(faultsBench); }
    void cleanup()
    {
        sondixsim::clearFaults();
        sondixsim::releaseHangs();
    }

    void faultGivesItsCodeAndText()
    {
        Handle handle(SensorType::TX270);
        openDevice(handle, 1);
        Fault fault;
        fault.command = "Get_Samplerate";
        fault.code = -321;
        fault.text = "Broken on purpose";
        sondixsim::inject(fault);
        QCOMPARE(handle.command("Get_Samplerate"), -321);
        std::string text;
        QCOMPARE(handle.error(&text), -321);
        QCOMPARE(text, fault.text);
        QCOMPARE(handle.command("Get_Averaging"), 0);
    }

    void failedCommandConsumesItsParametersAndLeavesNoAnswer()
    {
        Handle handle(SensorType::TX270);
        openDevice(handle, 1);
        handle.command("Get_Samplerate");
        Fault fault;
        fault.command = "Set_Samplerate";
        fault.code = -1000;
        fault.times = 1;
        sondixsim::inject(fault);
        handle.set("SP_Measrate", 4.0);
        QCOMPARE(handle.command("Set_Samplerate"), -1000);
        QCOMPARE(handle.allParameters(), std::string());
        QVERIFY(handle.command("Set_Samplerate") != 0); // the failed command has consumed the rate
        handle.command("Get_Samplerate");
        QCOMPARE(handle.getDouble("SA_Measrate"), 1.0);
    }

    void silentFailureLeavesNoError()
    {
        Handle handle(SensorType::TX270);
        handle.command("Get_Info");
        QVERIFY(handle.error() != 0);
        Fault fault;
        fault.function = "OpenSensor";
        fault.code = -5;
        fault.silent = true;
        sondixsim::inject(fault);
        QCOMPARE(handle.open(), -5);
        std::string text = "?";
        QCOMPARE(handle.error(&text), 0);
        QCOMPARE(text, std::string());
    }

    void everyFunctionCanFail_data()
    {
        QTest::addColumn<QByteArray>("function");
        for (const char *function :
             {"ReleaseSensorInstance", "SetParameterInt", "SetParameterDouble", "SetParameterString",
              "SetParameterBinary",    "GetParameterInt", "GetParameterDouble", "GetParameterString",
              "GetParameterBinary",    "GetParameters",   "ClearAllParameters", "OpenSensor",
              "CloseSensor",           "SensorCommand",   "DataAvail",          "TransferData",
              "TransferDataTS",        "GetError",        "EnableLogging",      "LogToFile"})
            QTest::newRow(function) << QByteArray(function);
    }
    void everyFunctionCanFail()
    {
        QFETCH(QByteArray, function);
        const Handle handle(SensorType::TX270);
        scriptFailure(function.constData(), -777);
        std::int32_t number = 1;
        double real = 1.0;
        char buffer[8] = "";
        std::uint32_t length = sizeof buffer;
        const std::map<std::string, std::int32_t> results = {
            {"GetError", GetError(handle, buffer, sizeof buffer)},
            {"SetParameterInt", SetParameterInt(handle, "A", 1)},
            {"SetParameterDouble", SetParameterDouble(handle, "A", 1.0)},
            {"SetParameterString", SetParameterString(handle, "A", "")},
            {"SetParameterBinary", SetParameterBinary(handle, "A", buffer, 1)},
            {"GetParameterInt", GetParameterInt(handle, "A", &number)},
            {"GetParameterDouble", GetParameterDouble(handle, "A", &real)},
            {"GetParameterString", GetParameterString(handle, "A", buffer, &length)},
            {"GetParameterBinary", GetParameterBinary(handle, "A", buffer, &length)},
            {"GetParameters", GetParameters(handle, buffer, &length)},
            {"ClearAllParameters", ClearAllParameters(handle)},
            {"OpenSensor", OpenSensor(handle)},
            {"CloseSensor", CloseSensor(handle)},
            {"SensorCommand", SensorCommand(handle)},
            {"DataAvail", DataAvail(handle, &number)},
            {"TransferData", TransferData(handle, &number, &real, 1, &number)},
            {"TransferDataTS", TransferDataTS(handle, &number, &real, 1, &number, &real)},
            {"EnableLogging", EnableLogging(handle, 0, 0, 0, nullptr, 0, 0, 0)},
            {"LogToFile", LogToFile(handle, 1, "a", "b")},
            {"ReleaseSensorInstance", ReleaseSensorInstance(handle)},
        };
        QCOMPARE(results.size(), std::size_t(20));
        for (const auto &[name, result] : results)
            QCOMPARE(result == -777, name == function.toStdString());
    }

    void creationCanFailByType()
    {
        Fault fault;
        fault.function = "CreateSensorInstance";
        fault.sensorType = SensorType::TX270;
        fault.code = -9;
        fault.text = "no licence";
        sondixsim::inject(fault);
        QCOMPARE(CreateSensorInstance(SensorType::TX270), 0u);
        char text[64] = "";
        QCOMPARE(GetError(0, text, sizeof text), -9);
        QCOMPARE(std::string(text), fault.text);
        const Handle other(SensorType::CC430);
        QVERIFY(other != 0);
    }

    void allFiltersMustMatch_data()
    {
        QTest::addColumn<QByteArray>("function");
        QTest::addColumn<QByteArray>("command");
        QTest::addColumn<QByteArray>("parameter");
        QTest::addColumn<QByteArray>("sensor");
        QTest::addColumn<int>("type");
        QTest::addColumn<bool>("hit");
        const auto row = [](const char *name, const char *function, const char *command, const char *parameter,
                            const char *sensor, int type, bool hit) {
            QTest::newRow(name) << QByteArray(function) << QByteArray(command) << QByteArray(parameter)
                                << QByteArray(sensor) << type << hit;
        };
        row("nothing", "", "", "", "", 0, true);
        row("function", "GetParameterDouble", "", "", "", 0, true);
        row("other function", "GetParameterInt", "", "", "", 0, false);
        row("last command", "GetParameterDouble", "Get_Samplerate", "", "", 0, true);
        row("other command", "GetParameterDouble", "Get_Info", "", "", 0, false);
        row("command alone means SensorCommand", "", "Get_Samplerate", "", "", 0, false);
        row("parameter", "", "", "SA_Measrate", "", 0, true);
        row("other parameter", "", "", "SA_Range", "", 0, false);
        row("sensor", "", "", "", "one", 0, true);
        row("other sensor", "", "", "", "two", 0, false);
        row("type", "", "", "", "", SensorType::TX270, true);
        row("other type", "", "", "", "", SensorType::CC430, false);
        row("all", "GetParameterDouble", "Get_Samplerate", "SA_Measrate", "one", SensorType::TX270, true);
    }
    void allFiltersMustMatch()
    {
        QFETCH(QByteArray, function);
        QFETCH(QByteArray, command);
        QFETCH(QByteArray, parameter);
        QFETCH(QByteArray, sensor);
        QFETCH(int, type);
        QFETCH(bool, hit);
        Handle handle(SensorType::TX270);
        openDevice(handle, 1);
        handle.command("Get_Samplerate");
        Fault fault;
        fault.function = function.constData();
        fault.command = command.constData();
        fault.parameter = parameter.constData();
        fault.sensor = sensor.constData();
        if (type != 0)
            fault.sensorType = type;
        fault.code = -7;
        sondixsim::inject(fault);
        double value = 0.0;
        QCOMPARE(GetParameterDouble(handle, "SA_Measrate", &value) == -7, hit);
    }

    void handleFilterMatches()
    {
        Handle first(SensorType::TX270);
        Handle second(SensorType::TX270);
        Fault fault;
        fault.handle = second;
        fault.code = -7;
        sondixsim::inject(fault);
        QCOMPARE(SetParameterInt(first, "A", 1), 0);
        QCOMPARE(SetParameterInt(second, "A", 1), -7);
    }

    void sensorFilterMatchesTheSensorThatOpenSelects()
    {
        Fault fault;
        fault.function = "OpenSensor";
        fault.sensor = "two";
        fault.code = -7;
        sondixsim::inject(fault);
        Handle handle(SensorType::TX270);
        QCOMPARE(openDevice(handle, 1), 0);
        CloseSensor(handle);
        QCOMPARE(openDevice(handle, 2), -7);
    }

    void nthCallsAreHit()
    {
        Handle handle(SensorType::TX270);
        Fault fault;
        fault.function = "ClearAllParameters";
        fault.from = 3;
        fault.times = 2;
        fault.code = -7;
        sondixsim::inject(fault);
        std::vector<std::int32_t> results;
        for (int i = 0; i < 6; ++i)
            results.push_back(ClearAllParameters(handle));
        QCOMPARE(results, (std::vector<std::int32_t>{0, 0, -7, -7, 0, 0}));
    }

    void probabilityIsReproducible()
    {
        const auto run = [] {
            sondixsim::loadBench(faultsBench);
            const Handle handle(SensorType::TX270);
            Fault fault;
            fault.function = "ClearAllParameters";
            fault.probability = 0.3;
            fault.code = -7;
            sondixsim::inject(fault);
            std::vector<std::int32_t> results;
            for (int i = 0; i < 1000; ++i)
                results.push_back(ClearAllParameters(handle));
            return results;
        };
        const std::vector<std::int32_t> first = run();
        const auto hits = std::count(first.begin(), first.end(), -7);
        QVERIFY2(hits > 240 && hits < 360, QByteArray::number(static_cast<int>(hits)).constData());
        QCOMPARE(run(), first);
    }

    void removedFaultHitsNoMore()
    {
        Handle handle(SensorType::TX270);
        Fault fault;
        fault.function = "ClearAllParameters";
        fault.code = -7;
        const int first = sondixsim::inject(fault);
        fault.code = -8;
        const int second = sondixsim::inject(fault);
        QVERIFY(first != second);
        QCOMPARE(ClearAllParameters(handle), -7);
        sondixsim::removeFault(first);
        QCOMPARE(ClearAllParameters(handle), -8);
        sondixsim::removeFault(second);
        QCOMPARE(ClearAllParameters(handle), 0);
    }

    void loadingRemovesFaults()
    {
        Fault fault;
        fault.code = -7;
        sondixsim::inject(fault);
        sondixsim::loadBench(faultsBench);
        const Handle handle(SensorType::TX270);
        QVERIFY(handle != 0);
    }

    void answerIsReplaced_data()
    {
        QTest::addColumn<int>("code");
        QTest::newRow("success") << 0;
        QTest::newRow("with partial results") << -26;
    }
    void answerIsReplaced()
    {
        QFETCH(int, code);
        Handle handle(SensorType::TX270);
        openDevice(handle, 1);
        Fault fault;
        fault.command = "Get_Samplerate";
        fault.code = code;
        fault.answer = "SA_Measrate=7.5 SA_Text=\"two words\" SA_Bare=abc";
        sondixsim::inject(fault);
        QCOMPARE(handle.command("Get_Samplerate"), code);
        QCOMPARE(handle.getDouble("SA_Measrate"), 7.5);
        QCOMPARE(handle.getText("SA_Text"), std::string("two words"));
        QCOMPARE(handle.getText("SA_Bare"), std::string("abc"));
        QCOMPARE(handle.allParameters(), *fault.answer);
        handle.command("Get_Averaging");
        QVERIFY(handle.allParameters() != *fault.answer);
    }

    void givenAnswerMakesAnUnknownCommandSucceed()
    {
        Handle handle(SensorType::TX270);
        openDevice(handle, 1);
        scriptAnswer("Get_Nonsense", "SA_Sense=1");
        QCOMPARE(handle.command("Get_Nonsense"), 0);
        QCOMPARE(handle.error(), 0);
        QCOMPARE(handle.getInt("SA_Sense"), 1);
    }

    void garbledAnswerIsReturnedByteForByte()
    {
        Handle handle(SensorType::TX270);
        openDevice(handle, 1);
        Fault fault;
        fault.command = "Get_Samplerate";
        fault.answer = "\xE9=\"open quote A=1";
        sondixsim::inject(fault);
        QCOMPARE(handle.command("Get_Samplerate"), 0);
        QCOMPARE(handle.allParameters(), *fault.answer);
    }

    void countsCanBeReplaced()
    {
        Handle handle(SensorType::TX270);
        openDevice(handle, 1);
        sondixsim::advance(0.01);
        Fault fault;
        fault.function = "DataAvail";
        fault.count = -3;
        sondixsim::inject(fault);
        QCOMPARE(handle.available(), -3);
        fault.function = "TransferData";
        fault.count = 4;
        sondixsim::inject(fault);
        double values[10];
        std::int32_t read = 0;
        QCOMPARE(TransferData(handle, nullptr, values, 10, &read), 0);
        QCOMPARE(read, 4);
        handle.command("Get_Info");
        fault.function = "GetParameterString";
        fault.count = 1000000;
        sondixsim::inject(fault);
        std::uint32_t length = 0;
        QCOMPARE(GetParameterString(handle, "SA_Sensor", nullptr, &length), 0);
        QCOMPARE(length, 1000000u);
    }

    void impossibleFaultsAreRefused_data()
    {
        QTest::addColumn<QByteArray>("function");
        QTest::addColumn<double>("probability");
        QTest::addColumn<double>("delay");
        QTest::addColumn<QByteArray>("word");
        QTest::newRow("function") << QByteArray("OpenSensors") << 1.0 << 0.0 << QByteArray("OpenSensors");
        QTest::newRow("case") << QByteArray("opensensor") << 1.0 << 0.0 << QByteArray("opensensor");
        QTest::newRow("probability") << QByteArray("OpenSensor") << 1.5 << 0.0 << QByteArray("probability");
        QTest::newRow("no probability") << QByteArray() << std::nan("") << 0.0 << QByteArray("probability");
        QTest::newRow("delay") << QByteArray("OpenSensor") << 1.0 << -0.1 << QByteArray("delay");
        QTest::newRow("endless delay") << QByteArray("OpenSensor") << 1.0 << HUGE_VAL << QByteArray("delay");
    }
    void impossibleFaultsAreRefused()
    {
        QFETCH(QByteArray, function);
        QFETCH(double, probability);
        QFETCH(double, delay);
        QFETCH(QByteArray, word);
        Fault fault;
        fault.function = function.toStdString();
        fault.probability = probability;
        fault.delay = delay;
        fault.code = -1;
        try {
            sondixsim::inject(fault);
            QFAIL("the fault was accepted");
        } catch (const std::invalid_argument &error) {
            QVERIFY2(QByteArray(error.what()).contains(word), error.what());
        }
        QCOMPARE(Handle(SensorType::TX270).open(), 0); // nothing was injected
    }

    void faultsWithoutAnEffectAreRefused_data()
    {
        QTest::addColumn<std::function<void(Fault &)>>("change");
        QTest::addColumn<QByteArray>("words");
        const auto row = [](const char *words, const std::function<void(Fault &)> &change) {
            QTest::newRow(words) << change << QByteArray(words);
        };
        row("the bench has no sensor \"4711\"", [](Fault &fault) { fault.sensor = "4711"; });
        row("a number from 1 on", [](Fault &fault) { fault.from = 0; });
        row("a fault hits 1 call or more", [](Fault &fault) { fault.times = 0; });
        row("1 call or more", [](Fault &fault) { fault.times = -2; });
        row("a fault needs", [](Fault &fault) { fault.code = 0; });
        row("only SensorCommand and OpenSensor", [](Fault &fault) { fault.damage = sondixsim::Damage::Cut; });
        row("SensorCommand and OpenSensor have an answer", [](Fault &fault) { fault.answer = ""; });
        row("CreateSensorInstance is called before", [](Fault &fault) {
            fault.function = "CreateSensorInstance";
            fault.command = "Get_Info";
        });
    }
    void faultsWithoutAnEffectAreRefused()
    {
        QFETCH(std::function<void(Fault &)>, change);
        QFETCH(QByteArray, words);
        Fault fault;
        fault.function = "DataAvail";
        fault.code = -1;
        const int number = sondixsim::inject(fault); // it could have one
        sondixsim::removeFault(number);
        change(fault);
        try {
            sondixsim::inject(fault);
            QFAIL("the fault was accepted");
        } catch (const std::invalid_argument &error) {
            QVERIFY2(QByteArray(error.what()).contains(words), error.what());
        }
    }

    void delayTakesRealTime()
    {
        Handle handle(SensorType::TX270);
        Fault fault;
        fault.function = "ClearAllParameters";
        fault.delay = 0.05;
        sondixsim::inject(fault);
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(ClearAllParameters(handle), 0);
        QVERIFY(timer.nsecsElapsed() >= 50000000);
    }

    void hangEndsWhenReleasedAndBlocksNoOtherCall()
    {
        Handle handle(SensorType::TX270);
        openDevice(handle, 1);
        Fault fault;
        fault.command = "Get_Samplerate";
        fault.hang = true;
        sondixsim::inject(fault);
        sondixsim::recordCalls(true);
        std::atomic<bool> returned{false};
        std::atomic<std::int32_t> result{-1};
        std::thread caller([&] {
            result = handle.command("Get_Samplerate");
            returned = true;
        });
        const auto hasBegun = [] {
            for (const sondixsim::Call &call : sondixsim::calls()) {
                if (call.function == "SensorCommand")
                    return true;
            }
            return false;
        };
        QTRY_VERIFY(hasBegun());
        // The hanging call blocks no other call, not even on the same handle.
        std::int32_t count = 0;
        QCOMPARE(DataAvail(handle, &count), 0);
        Handle other(SensorType::TX270);
        QCOMPARE(openDevice(other, 2), 0);
        QVERIFY(!returned);
        while (!returned) { // the call may not wait yet
            sondixsim::releaseHangs();
            std::this_thread::yield();
        }
        caller.join();
        QCOMPARE(result.load(), 0);
    }

    void handleReleasedDuringAHangIsUnknownAfterwards()
    {
        const std::uint32_t handle = CreateSensorInstance(SensorType::TX270);
        Fault fault;
        fault.function = "OpenSensor";
        fault.hang = true;
        sondixsim::inject(fault);
        sondixsim::recordCalls(true);
        std::atomic<bool> returned{false};
        std::atomic<std::int32_t> result{0};
        std::thread caller([&] {
            result = OpenSensor(handle);
            returned = true;
        });
        QTRY_VERIFY(!sondixsim::calls().empty());
        QCOMPARE(ReleaseSensorInstance(handle), 0);
        while (!returned) {
            sondixsim::releaseHangs();
            std::this_thread::yield();
        }
        caller.join();
        QVERIFY(result < 0);
    }

    void severalFaultsAddUp()
    {
        Handle handle(SensorType::TX270);
        Fault slow;
        slow.delay = 0.02;
        slow.function = "ClearAllParameters";
        sondixsim::inject(slow);
        Fault failing = slow;
        failing.code = -7;
        sondixsim::inject(failing);
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(ClearAllParameters(handle), -7);
        QVERIFY(timer.nsecsElapsed() >= 40000000);
    }

    void unpluggedSensorFailsEveryCall()
    {
        Handle handle(SensorType::TX270);
        openDevice(handle, 1);
        sondixsim::advance(0.1);
        sondixsim::unplug("one");
        std::int32_t count = 0;
        double value = 0.0;
        QVERIFY(DataAvail(handle, &count) < 0);
        QVERIFY(TransferData(handle, nullptr, &value, 1, &count) < 0);
        QVERIFY(handle.command("Get_Info") < 0);
        QVERIFY(handle.command("Get_OpenState") < 0);
        std::string text;
        handle.error(&text);
        QVERIFY(!text.empty());
        Handle other(SensorType::TX270);
        QVERIFY(openDevice(other, 1) < 0);
        sondixsim::plug("one");
        QCOMPARE(DataAvail(handle, &count), 0);
        QVERIFY_EXCEPTION_THROWN(sondixsim::unplug("nobody"), std::invalid_argument);
    }

    void benchFileDefinesFaults()
    {
        sondixsim::loadBench(R"({ "sensors": [
            { "model": "TX270", "serialNumber": "one", "place": { "interface": "WinUSB", "device": 1 },
              "faults": [
                { "function": "OpenSensor", "times": 1, "code": -50, "text": "Gerät schläft" },
                { "command": "Get_Info", "from": 2, "code": -51 },
                { "command": "Get_Averaging", "delay": 0.03 }
              ] },
            { "model": "TX270", "serialNumber": "two", "place": { "interface": "WinUSB", "device": 2 } } ] })");
        Handle handle(SensorType::TX270);
        QCOMPARE(openDevice(handle, 1), -50);
        std::string text;
        handle.error(&text);
        QCOMPARE(text, std::string("Ger\xE4t schl\xE4"
                                   "ft"));
        QCOMPARE(openDevice(handle, 1), 0);
        QCOMPARE(handle.command("Get_Info"), 0);
        QCOMPARE(handle.command("Get_Info"), -51);
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(handle.command("Get_Averaging"), 0);
        QVERIFY(timer.nsecsElapsed() >= 30000000);
        Handle other(SensorType::TX270);
        QCOMPARE(openDevice(other, 2), 0);
        QCOMPARE(other.command("Get_Info"), 0);
        QCOMPARE(other.command("Get_Info"), 0);
    }
};

QTEST_GUILESS_MAIN(TestSimFaults)
#include "tst_simfaults.moc"
