// SPDX-License-Identifier: MIT
#include "handle.h"
#include "SondixSimulator/control.h"

#include <QTest>
#include <thread>

class TestCallLog : public QObject
{
    Q_OBJECT

private:
    static std::vector<std::string> texts()
    {
        std::vector<std::string> all;
        for (const sondixsim::Call &call : sondixsim::calls())
            all.push_back(call.text());
        return all;
    }

private Q_SLOTS:
    void init()
    {
        sondixsim::loadBench(
            R"({ "clock": { "virtual": true }, "sensors": [ { "model": "TX270", "serialNumber": "1",
            "place": { "interface": "WinUSB" } } ] })");
    }

    void callsShowTheirArguments()
    {
        sondixsim::recordCalls(true);
        const std::uint32_t handle = CreateSensorInstance(SensorType::TX270);
        SetParameterInt(handle, "SP_Index", 5);
        SetParameterDouble(handle, "SP_Rate", 2.5);
        SetParameterDouble(handle, "SP_Rate", 2.0);
        SetParameterString(handle, "S_Command", "Get_Info");
        SetParameterBinary(handle, "SP_Data", "abc", 3);
        OpenSensor(handle);
        SensorCommand(handle);
        std::int32_t number = 0;
        double real = 0.0;
        char text[12];
        std::uint32_t length = 0;
        GetParameterInt(handle, "A", &number);
        GetParameterDouble(handle, "B", &real);
        GetParameterString(handle, "X", nullptr, &length);
        length = sizeof text;
        GetParameterString(handle, "X", text, &length);
        length = sizeof text;
        GetParameterBinary(handle, "Y", text, &length);
        GetParameters(handle, nullptr, &length);
        length = sizeof text;
        GetParameters(handle, text, &length);
        DataAvail(handle, &number);
        TransferData(handle, nullptr, &real, 0, &number);
        TransferDataTS(handle, &number, nullptr, 10, &number, &real);
        GetError(handle, text, sizeof text);
        LogToFile(handle, 32, "source", "message");
        EnableLogging(handle, 0, 2147483647, 2147483647, "file", 1, 0, 0);
        ClearAllParameters(handle);
        CloseSensor(handle);
        ReleaseSensorInstance(handle);
        const std::vector<std::string> expected = {
            "CreateSensorInstance(41)",
            "SetParameterInt(\"SP_Index\", 5)",
            "SetParameterDouble(\"SP_Rate\", 2.5)",
            "SetParameterDouble(\"SP_Rate\", 2.0)",
            "SetParameterString(\"S_Command\", \"Get_Info\")",
            "SetParameterBinary(\"SP_Data\", 3)",
            "OpenSensor()",
            "SensorCommand()",
            "GetParameterInt(\"A\")",
            "GetParameterDouble(\"B\")",
            "GetParameterString(\"X\", null)",
            "GetParameterString(\"X\", 12)",
            "GetParameterBinary(\"Y\", 12)",
            "GetParameters(null)",
            "GetParameters(12)",
            "DataAvail()",
            "TransferData(null, scaled, 0)",
            "TransferDataTS(raw, null, 10)",
            "GetError(12)",
            "LogToFile(32, \"source\", \"message\")",
            "EnableLogging(0, 2147483647, 2147483647, \"file\", 1, 0, 0)",
            "ClearAllParameters()",
            "CloseSensor()",
            "ReleaseSensorInstance()",
        };
        QCOMPARE(texts(), expected);
    }

    void callsCarryHandleAndResult()
    {
        sondixsim::recordCalls(true);
        {
            const Handle handle(SensorType::TX270);
            std::int32_t number = 0;
            GetParameterInt(handle, "SA_Absent", &number);
            const std::vector<sondixsim::Call> calls = sondixsim::calls();
            QCOMPARE(calls.size(), std::size_t(2));
            QCOMPARE(calls[0].handle, std::uint32_t(handle));
            QCOMPARE(calls[0].result, 0);
            QCOMPARE(calls[1].function, std::string("GetParameterInt"));
            QCOMPARE(calls[1].handle, std::uint32_t(handle));
            QVERIFY(calls[1].result < 0);
        }
    }

    void nothingIsRecordedByDefault()
    {
        {
            const Handle handle(SensorType::TX270);
        }
        QVERIFY(sondixsim::calls().empty());
        sondixsim::recordCalls(true);
        {
            const Handle handle(SensorType::TX270);
        }
        QCOMPARE(sondixsim::calls().size(), std::size_t(2));
        sondixsim::recordCalls(false);
        {
            const Handle handle(SensorType::TX270);
        }
        QCOMPARE(sondixsim::calls().size(), std::size_t(2));
        sondixsim::clearCalls();
        QVERIFY(sondixsim::calls().empty());
    }

    void threadsAreNumbered()
    {
        sondixsim::recordCalls(true);
        const Handle handle(SensorType::TX270);
        std::thread other([&] { SetParameterInt(handle, "A", 1); });
        other.join();
        SetParameterInt(handle, "A", 2);
        const std::vector<sondixsim::Call> calls = sondixsim::calls();
        QCOMPARE(calls.size(), std::size_t(3));
        QCOMPARE(calls[0].thread, calls[2].thread);
        QVERIFY(calls[1].thread != calls[0].thread);
    }
};

QTEST_GUILESS_MAIN(TestCallLog)
#include "tst_calllog.moc"
