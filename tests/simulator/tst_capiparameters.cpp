// SPDX-License-Identifier: MIT
#include "handle.h"
#include "SondixSimulator/control.h"

#include <cstring>
#include <QTest>

// A bench with a command that answers one value of each type.
static const char *const parametersBench = R"({
    "sensors": [ {
        "model": "TX270", "serialNumber": "1", "place": { "interface": "RS232", "port": "COM1" },
        "answers": { "Get_Kinds": {
            "SA_Int": 42, "SA_Double": 2.5, "SA_Whole": 3.0, "SA_Text": "20 µm \u0022quoted\u0022", "SA_Empty": "", "SA_Bool": true
        } }
    } ]
})";

class TestCapiParameters : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { sondixsim::loadBench(parametersBench); }

    void numbersCanBeReadAsEitherType()
    {
        Handle handle(SensorType::TX270);
        QCOMPARE(handle.open(), 0);
        QCOMPARE(handle.command("Get_Kinds"), 0);
        QCOMPARE(handle.getInt("SA_Int"), 42);
        QCOMPARE(handle.getDouble("SA_Int"), 42.0);
        QCOMPARE(handle.getDouble("SA_Double"), 2.5);
        QCOMPARE(handle.getInt("SA_Whole"), 3);
        QCOMPARE(handle.getInt("SA_Bool"), 1);
        QCOMPARE(handle.getText("SA_Int"), std::string("42"));
    }

    void textsAreWindows1250()
    {
        Handle handle(SensorType::TX270);
        handle.open();
        handle.command("Get_Kinds");
        QCOMPARE(handle.getText("SA_Text"), std::string("20 \xB5m \"quoted\""));
    }

    void lengthOfATextIncludesTheTerminator()
    {
        Handle handle(SensorType::TX270);
        handle.open();
        handle.command("Get_Kinds");
        std::uint32_t length = 99;
        QCOMPARE(GetParameterString(handle, "SA_Empty", nullptr, &length), 0);
        QCOMPARE(length, 1u);
        QCOMPARE(GetParameterString(handle, "SA_Text", nullptr, &length), 0);
        QCOMPARE(length, 15u);
    }

    void shortBufferFailsAndReturnsTheLength()
    {
        Handle handle(SensorType::TX270);
        handle.open();
        handle.command("Get_Kinds");
        char buffer[4] = {'x', 'x', 'x', 'x'};
        std::uint32_t length = sizeof buffer;
        QVERIFY(GetParameterString(handle, "SA_Text", buffer, &length) < 0);
        QCOMPARE(length, 15u);
        QCOMPARE(buffer[0], 'x');
        std::string text;
        QVERIFY(handle.error(&text) < 0);
        QVERIFY(!text.empty());
    }

    void allAnswersAreReturnedAsPairs()
    {
        Handle handle(SensorType::TX270);
        handle.open();
        handle.command("Get_Kinds");
        QCOMPARE(handle.allParameters(),
                 std::string("SA_Int=42\r\nSA_Double=2.5\r\nSA_Whole=3.0\r\n"
                             "SA_Text=\"20 \xB5m \\\"quoted\\\"\"\r\nSA_Empty=\"\"\r\nSA_Bool=1"));
    }

    void missingAnswerIsAnError()
    {
        Handle handle(SensorType::TX270);
        handle.open();
        handle.command("Get_Kinds");
        std::int32_t number = 7;
        QVERIFY(GetParameterInt(handle, "SA_Absent", &number) < 0);
        QCOMPARE(number, 7);
        std::uint32_t length = 5;
        QVERIFY(GetParameterString(handle, "SA_Absent", nullptr, &length) < 0);
        std::string text;
        handle.error(&text);
        QVERIFY(text.find("SA_Absent") != std::string::npos);
    }

    void textCannotBeReadAsNumber()
    {
        Handle handle(SensorType::TX270);
        handle.open();
        handle.command("Get_Kinds");
        std::int32_t number = 7;
        QVERIFY(GetParameterInt(handle, "SA_Text", &number) < 0);
        double real = 7.0;
        QVERIFY(GetParameterDouble(handle, "SA_Text", &real) < 0);
    }

    void answersAreThoseOfTheLastCommand()
    {
        Handle handle(SensorType::TX270);
        handle.open();
        handle.command("Get_Kinds");
        handle.command("Get_Samplerate");
        QCOMPARE(handle.getInt("SA_Int", -1), -1);
        QCOMPARE(handle.getDouble("SA_Measrate"), 2.0);
        QVERIFY(handle.command("Get_Nonsense") < 0);
        QCOMPARE(handle.getDouble("SA_Measrate", -1.0), -1.0);
    }

    void stagedParametersAreConsumed()
    {
        Handle handle(SensorType::TX270);
        handle.open();
        handle.set("SP_Measrate", 4.0);
        QCOMPARE(handle.command("Get_Samplerate"), 0); // consumes the staged rate without using it
        QVERIFY(handle.command("Set_Samplerate") < 0);
        QVERIFY(SensorCommand(handle) < 0); // S_Command was consumed as well
        QCOMPARE(handle.command("Get_Samplerate"), 0);
        QCOMPARE(handle.getDouble("SA_Measrate"), 2.0);
    }

    void openConsumesStagedParameters()
    {
        Handle handle(SensorType::TX270);
        handle.set("S_Command", "Get_Samplerate");
        QCOMPARE(handle.open(), 0);
        QVERIFY(SensorCommand(handle) < 0);
    }

    void clearingDropsStagedParametersOnly()
    {
        Handle handle(SensorType::TX270);
        handle.open();
        handle.command("Get_Kinds");
        handle.set("S_Command", "Get_Samplerate");
        QCOMPARE(ClearAllParameters(handle), 0);
        QVERIFY(SensorCommand(handle) < 0);
        handle.command("Get_Kinds");
        QCOMPARE(ClearAllParameters(handle), 0);
        QCOMPARE(handle.getInt("SA_Int"), 42);
    }

    void binaryReadOfATextHasNoTerminator()
    {
        Handle handle(SensorType::TX270);
        handle.open();
        handle.command("Get_Kinds");
        std::uint32_t length = 0;
        QCOMPARE(GetParameterBinary(handle, "SA_Text", nullptr, &length), 0);
        QCOMPARE(length, 14u);
        QVERIFY(GetParameterBinary(handle, "SA_Int", nullptr, &length) < 0);
    }

    void unknownHandleFails()
    {
        std::int32_t number = 0;
        QVERIFY(SetParameterInt(4000, "SP_X", 1) < 0);
        QVERIFY(GetParameterInt(4000, "SA_X", &number) < 0);
        QVERIFY(SensorCommand(4000) < 0);
        QVERIFY(DataAvail(0, &number) < 0);
        char text[256] = "";
        QVERIFY(GetError(4000, text, sizeof text) < 0);
        QVERIFY(text[0] != '\0');
    }

    void missingArgumentsFail()
    {
        Handle handle(SensorType::TX270);
        handle.open();
        handle.command("Get_Kinds");
        std::uint32_t length = 0;
        QVERIFY(SetParameterInt(handle, nullptr, 1) < 0);
        QVERIFY(GetParameterInt(handle, "SA_Int", nullptr) < 0);
        QVERIFY(GetParameterString(handle, nullptr, nullptr, &length) < 0);
        QVERIFY(GetParameterString(handle, "SA_Text", nullptr, nullptr) < 0);
        QVERIFY(GetParameters(handle, nullptr, nullptr) < 0);
        QVERIFY(DataAvail(handle, nullptr) < 0);
        double value = 0.0;
        QVERIFY(TransferData(handle, nullptr, &value, 1, nullptr) < 0);
    }

    void errorBelongsToItsHandle()
    {
        Handle failed(SensorType::TX270);
        Handle fine(SensorType::TX270);
        QVERIFY(failed.command("Get_Info") < 0);
        QVERIFY(failed.error() < 0);
        QCOMPARE(fine.error(), 0);
    }

    void errorTextIsCutToItsBuffer()
    {
        Handle handle(SensorType::TX270);
        handle.command("Get_Info");
        char text[6];
        QVERIFY(GetError(handle, text, sizeof text) < 0);
        QCOMPARE(std::strlen(text), std::size_t(5));
        QVERIFY(GetError(handle, nullptr, 0) < 0);
    }
};

QTEST_GUILESS_MAIN(TestCapiParameters)
#include "tst_capiparameters.moc"
