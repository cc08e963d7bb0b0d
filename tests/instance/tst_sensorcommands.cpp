// SPDX-License-Identifier: MIT
#include <SondixQt/SensorInstance>

#include "support/callrecorder.h"
#include "support/scripting.h"
#include "support/testbench.h"

#include <QSignalSpy>
#include <QtTest>

using namespace SondixQt;
using Parameters = QMap<QString, QVariant>;

/// The command layer: staging, sending and reading, also after a failure.
class SensorCommandsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();

    void plainCommandStagesItsNameAndRuns();
    void failedStagingOfTheNamePreventsTheCommand();
    void parametersAreStagedInKeyOrderByType();
    void stagingStopsAtTheFirstFailure();
    void oneParameterForms_data();
    void oneParameterForms();
    void textsAreSentInLatin1();
    void failedStagingOfTheParameterPreventsTheCommand();
    void resultsAreReadIntoTheirTargets();
    void variantTargetsAreReadByTheirType();
    void readingStopsAtTheFirstFailure();
    void errorHandlingDecidesWhetherResultsAreRead_data();
    void errorHandlingDecidesWhetherResultsAreRead();
    void readReplacesTheResultOfTheCommand();
    void singleResults();
    void singleResultIsNotReadAfterAFailure();
    void textsAreWindows1250AndEndAtTheirZero();
    void absurdLengthsDoNoHarm_data();
    void absurdLengthsDoNoHarm();
    void wholeAnswerReplacesTheMap();
    void failedReadOfTheWholeAnswerLeavesTheMap();
    void controllerAliasesAreReplaced_data();
    void controllerAliasesAreReplaced();
    void otherControllerNamesStayAsTheyAre();
    void busModelIsConfirmedInTheWholeAnswer_data();
    void busModelIsConfirmedInTheWholeAnswer();
    void subclassSeesTheCommandsInsideSequences();
};

void SensorCommandsTest::init()
{
    loadTestBench();
}

void SensorCommandsTest::plainCommandStagesItsNameAndRuns()
{
    OpenSensorInstance sensor(TX270);
    scriptAnswer("Do_Something", "");
    QString errorText = "old";
    CallRecorder recorder;
    QCOMPARE(sensor->sendCommand("Do_Something", &errorText), NoError);
    QCOMPARE(recorder.take(), commandCalls("Do_Something"));
    QCOMPARE(errorText, QString());
}

void SensorCommandsTest::failedStagingOfTheNamePreventsTheCommand()
{
    OpenSensorInstance sensor(TX270);
    sondixsim::Fault fault;
    fault.function = "SetParameterString";
    fault.parameter = "S_Command";
    fault.code = -5;
    fault.text = "no room";
    sondixsim::inject(fault);
    QString errorText;
    CallRecorder recorder;
    QCOMPARE(int(sensor->sendCommand("Get_Info", &errorText)), -5);
    QCOMPARE(errorText, "no room");
    QCOMPARE(recorder.take(), QStringList({"SetParameterString(\"S_Command\", \"Get_Info\")", "GetError(4096)"}));
}

void SensorCommandsTest::parametersAreStagedInKeyOrderByType()
{
    OpenSensorInstance sensor(TX270);
    scriptAnswer("Set_All", "");
    CallRecorder recorder;
    const Parameters parameters{
        {"SP_E_Bytes", QByteArray("\x01\x00\x02", 3)},
        {"SP_D_Text", "abc"},
        {"SP_C_Double", 1.5},
        {"SP_B_Bool", true},
        {"SP_A_Int", -3},
        {"SP_F_Unsigned", 7U},
        {"SP_G_Long", qlonglong(8)},
        {"SP_H_List", QStringList{"x"}},
        {"SP_I_Invalid", QVariant()},
    };
    QCOMPARE(sensor->sendCommand("Set_All", parameters), NoError);
    QCOMPARE(recorder.take(),
             QStringList({"SetParameterInt(\"SP_A_Int\", -3)", "SetParameterInt(\"SP_B_Bool\", 1)",
                          "SetParameterDouble(\"SP_C_Double\", 1.5)", "SetParameterString(\"SP_D_Text\", \"abc\")",
                          "SetParameterBinary(\"SP_E_Bytes\", 3)"}) +
                 commandCalls("Set_All"));
}

void SensorCommandsTest::stagingStopsAtTheFirstFailure()
{
    OpenSensorInstance sensor(TX270);
    sondixsim::Fault fault;
    fault.function = "SetParameterInt";
    fault.parameter = "SP_B";
    fault.code = -9;
    sondixsim::inject(fault);
    const Parameters parameters{{"SP_A", 1}, {"SP_B", 2}, {"SP_C", 3}};
    const QStringList expected{"SetParameterInt(\"SP_A\", 1)", "SetParameterInt(\"SP_B\", 2)", "GetError(4096)"};
    CallRecorder recorder;
    int result = 5;
    Parameters all{{"kept", 1}};
    const Parameters targets{{"SA_X", SensorInstance::resultPointer(&result)}};
    QCOMPARE(int(sensor->sendCommand("Set_All", parameters)), -9);
    QCOMPARE(recorder.take(), expected);
    QCOMPARE(int(sensor->sendCommand("Set_All", parameters, targets, nullptr, SensorInstance::ReadAlways)), -9);
    QCOMPARE(recorder.take(), expected);
    QCOMPARE(int(sensor->sendCommandGetAll("Set_All", parameters, all, nullptr, SensorInstance::ReadAlways)), -9);
    QCOMPARE(recorder.take(), expected);
    QCOMPARE(result, 5);
    QCOMPARE(all.size(), 1);
}

void SensorCommandsTest::oneParameterForms_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("call");
    QTest::newRow("int") << QVariant(7) << "SetParameterInt(\"SP_X\", 7)";
    QTest::newRow("double") << QVariant(0.25) << "SetParameterDouble(\"SP_X\", 0.25)";
    QTest::newRow("true") << QVariant(true) << "SetParameterInt(\"SP_X\", 1)";
    QTest::newRow("false") << QVariant(false) << "SetParameterInt(\"SP_X\", 0)";
    QTest::newRow("text") << QVariant("abc") << "SetParameterString(\"SP_X\", \"abc\")";
}

void SensorCommandsTest::oneParameterForms()
{
    QFETCH(QVariant, value);
    QFETCH(QString, call);
    OpenSensorInstance sensor(TX270);
    scriptAnswer("Set_X", "");
    CallRecorder recorder;
    ErrorCode result = ErrorCode(1);
    switch (value.userType()) {
    case QMetaType::Int:
        result = sensor->sendCommand("Set_X", "SP_X", value.toInt());
        break;
    case QMetaType::Double:
        result = sensor->sendCommand("Set_X", "SP_X", value.toDouble());
        break;
    case QMetaType::Bool:
        result = sensor->sendCommand("Set_X", "SP_X", value.toBool());
        break;
    default:
        result = sensor->sendCommand("Set_X", "SP_X", value.toString());
    }
    QCOMPARE(result, NoError);
    QCOMPARE(recorder.take(), QStringList(call) + commandCalls("Set_X"));
}

void SensorCommandsTest::textsAreSentInLatin1()
{
    OpenSensorInstance sensor(TX270);
    scriptAnswer("Set_X", "");
    CallRecorder recorder;
    QCOMPARE(sensor->sendCommand("Set_X", "SP_X", QStringLiteral("\u00b5m")), NoError);
    const std::vector<sondixsim::Call> calls = sondixsim::calls();
    QVERIFY(!calls.empty());
    QCOMPARE(QByteArray::fromStdString(calls.front().text()),
             QByteArray("SetParameterString(\"SP_X\", \"\xb5m\")"));
}

void SensorCommandsTest::failedStagingOfTheParameterPreventsTheCommand()
{
    OpenSensorInstance sensor(TX270);
    scriptParameterFailure("SP_X", -9);
    CallRecorder recorder;
    QCOMPARE(int(sensor->sendCommand("Set_X", "SP_X", 1)), -9);
    QCOMPARE(recorder.take(), QStringList({"SetParameterInt(\"SP_X\", 1)", "GetError(4096)"}));
}

void SensorCommandsTest::resultsAreReadIntoTheirTargets()
{
    OpenSensorInstance sensor(TX270);
    scriptAnswer("Get_All", "SA_Bool=7 SA_Int=-4 SA_Double=2.5 SA_Text=\"some text\" SA_Bytes=\"xyz\"");
    bool boolean = false;
    int integer = 0;
    double number = 0.0;
    QString text;
    QByteArray bytes;
    const Parameters targets{
        {"SA_Bool", SensorInstance::resultPointer(&boolean)},
        {"SA_Int", SensorInstance::resultPointer(&integer)},
        {"SA_Double", SensorInstance::resultPointer(&number)},
        {"SA_Text", SensorInstance::resultPointer(&text)},
        {"SA_Bytes", SensorInstance::resultPointer(&bytes)},
        {"SA_Missing1", 5},
        {"SA_Missing2", SensorInstance::resultPointer(static_cast<int *>(nullptr))},
    };
    QCOMPARE(sensor->sendCommand("Get_All", {}, targets), NoError);
    QCOMPARE(boolean, true);
    QCOMPARE(integer, -4);
    QCOMPARE(number, 2.5);
    QCOMPARE(text, "some text");
    QCOMPARE(bytes, QByteArray("xyz"));
}

void SensorCommandsTest::variantTargetsAreReadByTheirType()
{
    OpenSensorInstance sensor(TX270);
    scriptAnswer("Get_All", "SA_Bool=1 SA_Int=-4 SA_Double=2.5 SA_Text=\"some text\" SA_Bytes=\"xyz\" SA_Other=3");
    QVariant boolean(false);
    QVariant integer(0);
    QVariant number(0.0);
    QVariant text{QString()};
    QVariant bytes{QByteArray()};
    QVariant other{QStringList{"kept"}};
    QVariant invalid;
    const Parameters targets{
        {"SA_Bool", SensorInstance::resultPointer(&boolean)},
        {"SA_Int", SensorInstance::resultPointer(&integer)},
        {"SA_Double", SensorInstance::resultPointer(&number)},
        {"SA_Text", SensorInstance::resultPointer(&text)},
        {"SA_Bytes", SensorInstance::resultPointer(&bytes)},
        {"SA_Other", SensorInstance::resultPointer(&other)},
        {"SA_Unknown", SensorInstance::resultPointer(&invalid)},
    };
    CallRecorder recorder;
    QCOMPARE(sensor->sendCommand("Get_All", {}, targets), NoError);
    QCOMPARE(boolean.toBool(), true);
    QCOMPARE(integer, QVariant(-4));
    QCOMPARE(number, QVariant(2.5));
    QCOMPARE(text, QVariant("some text"));
    QCOMPARE(bytes, QVariant(QByteArray("xyz")));
    QCOMPARE(other, QVariant(QStringList{"kept"}));
    QVERIFY(!invalid.isValid());
    QCOMPARE(recorder.take().filter("SA_Other"), QStringList());
}

void SensorCommandsTest::readingStopsAtTheFirstFailure()
{
    OpenSensorInstance sensor(TX270);
    scriptAnswer("Get_All", "SA_A=1 SA_C=3");
    int a = 0;
    int b = 20;
    int c = 30;
    QString errorText;
    QVERIFY(sensor->sendCommand("Get_All", {},
                                {{"SA_A", SensorInstance::resultPointer(&a)},
                                 {"SA_B", SensorInstance::resultPointer(&b)},
                                 {"SA_C", SensorInstance::resultPointer(&c)}},
                                &errorText) != NoError);
    QCOMPARE(a, 1);
    QCOMPARE(b, 20);
    QCOMPARE(c, 30);
    QVERIFY(!errorText.isEmpty());
}

void SensorCommandsTest::errorHandlingDecidesWhetherResultsAreRead_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("errorHandling");
    QTest::addColumn<bool>("read");
    const int codes[] = {NoError, -1, PartialFailure26, PartialFailure27, -28};
    for (const int code : codes) {
        for (int handling = 0; handling <= 3; ++handling) {
            const bool partial = code == PartialFailure26 || code == PartialFailure27;
            QTest::addRow("code %d, handling %d", code, handling)
                << code << handling << (code == 0 || handling == 3 || (handling == 2 && partial));
        }
    }
}

void SensorCommandsTest::errorHandlingDecidesWhetherResultsAreRead()
{
    QFETCH(int, code);
    QFETCH(int, errorHandling);
    QFETCH(bool, read);
    OpenSensorInstance sensor(TX270);
    scriptAnswer("Get_X", "SA_X=5", code);
    const auto handling = SensorInstance::ErrorHandling(errorHandling);

    int x = 0;
    const ErrorCode result =
        sensor->sendCommand("Get_X", {}, {{"SA_X", SensorInstance::resultPointer(&x)}}, nullptr, handling);
    QCOMPARE(int(result), read ? 0 : code);
    QCOMPARE(x, read ? 5 : 0);

    Parameters all;
    QCOMPARE(int(sensor->sendCommandGetAll("Get_X", {}, all, nullptr, handling)), read ? 0 : code);
    QCOMPARE(all.value("SA_X"), read ? QVariant(5) : QVariant());
}

void SensorCommandsTest::readReplacesTheResultOfTheCommand()
{
    OpenSensorInstance sensor(TX270);
    scriptAnswer("Get_X", "SA_X=5", PartialFailure26);
    int y = 0;
    const ErrorCode result = sensor->sendCommand("Get_X", {}, {{"SA_Y", SensorInstance::resultPointer(&y)}},
                                                 nullptr, SensorInstance::ReadAfterPartialFail);
    QVERIFY(result != NoError && result != PartialFailure26);
}

void SensorCommandsTest::singleResults()
{
    OpenSensorInstance sensor(TX270);
    scriptAnswer("Get_X", "SA_Int=12 SA_Double=1.25 SA_Text=\"a b\"");
    int integer = 0;
    double number = 0.0;
    QString text;
    CallRecorder recorder;
    QCOMPARE(sensor->sendCommandGetInt("Get_X", "SA_Int", integer), NoError);
    QCOMPARE(recorder.take(), commandCalls("Get_X") + QStringList("GetParameterInt(\"SA_Int\")"));
    QCOMPARE(sensor->sendCommandGetDouble("Get_X", "SA_Double", number), NoError);
    QCOMPARE(recorder.take(), commandCalls("Get_X") + QStringList("GetParameterDouble(\"SA_Double\")"));
    QCOMPARE(sensor->sendCommandGetString("Get_X", "SA_Text", text), NoError);
    QCOMPARE(recorder.take(), commandCalls("Get_X") + QStringList({"GetParameterString(\"SA_Text\", null)",
                                                                   "GetParameterString(\"SA_Text\", 4)"}));
    QCOMPARE(integer, 12);
    QCOMPARE(number, 1.25);
    QCOMPARE(text, "a b");
}

void SensorCommandsTest::singleResultIsNotReadAfterAFailure()
{
    OpenSensorInstance sensor(TX270);
    scriptAnswer("Get_X", "SA_X=12", PartialFailure26);
    int value = 3;
    CallRecorder recorder;
    QCOMPARE(sensor->sendCommandGetInt("Get_X", "SA_X", value), PartialFailure26);
    QCOMPARE(value, 3);
    QCOMPARE(recorder.take(), commandCalls("Get_X") + QStringList("GetError(4096)"));
}

void SensorCommandsTest::textsAreWindows1250AndEndAtTheirZero()
{
    OpenSensorInstance sensor(TX270);
    scriptAnswer("Get_X", "SA_Text=\"\x8e\xb5m \xb0\"");
    QString text;
    QCOMPARE(sensor->sendCommandGetString("Get_X", "SA_Text", text), NoError);
    QCOMPARE(text, QStringLiteral("\u017d\u00b5m \u00b0"));
    Parameters all;
    QCOMPARE(sensor->sendCommandGetAll("Get_X", {}, all), NoError);
    QCOMPARE(all.value("SA_Text").toString(), QStringLiteral("\u017d\u00b5m \u00b0"));

    // The returned length may exclude the terminating zero, or be invalid.
    for (const int written : {5, 6, 100, -1}) {
        sondixsim::Fault fault;
        fault.function = "GetParameterString";
        fault.from = 2;
        fault.count = written;
        const int number = sondixsim::inject(fault);
        QCOMPARE(sensor->sendCommandGetString("Get_X", "SA_Text", text), NoError);
        QCOMPARE(text, QStringLiteral("\u017d\u00b5m \u00b0"));
        sondixsim::removeFault(number);
    }
}

void SensorCommandsTest::absurdLengthsDoNoHarm_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<int>("buffer");
    QTest::newRow("none") << 0 << 0;
    QTest::newRow("a few") << 100 << 100;
    QTest::newRow("two gigabytes") << 0x7fffffff << 64 * 1024 * 1024;
    QTest::newRow("four gigabytes") << -1 << 64 * 1024 * 1024;
}

void SensorCommandsTest::absurdLengthsDoNoHarm()
{
    QFETCH(int, length);
    QFETCH(int, buffer);
    OpenSensorInstance sensor(TX270);
    scriptAnswer("Get_X", "SA_Text=\"a\"");
    for (const char *function : {"GetParameterString", "GetParameterBinary", "GetParameters"}) {
        sondixsim::Fault fault;
        fault.function = function;
        fault.times = 1;
        fault.count = length;
        sondixsim::inject(fault);
    }
    QString text = "old";
    QByteArray bytes("old");
    Parameters all;
    CallRecorder recorder;
    sensor->sendCommand("Get_X", {}, {{"SA_Text", SensorInstance::resultPointer(&text)}});
    QVERIFY(recorder.take().contains(QString("GetParameterString(\"SA_Text\", %1)").arg(buffer)));
    QCOMPARE(text, buffer == 0 ? "old" : "a");
    sensor->sendCommand("Get_X", {}, {{"SA_Text", SensorInstance::resultPointer(&bytes)}});
    QVERIFY(recorder.take().contains(QString("GetParameterBinary(\"SA_Text\", %1)").arg(buffer)));
    QCOMPARE(bytes, buffer == 0 ? QByteArray("old") : QByteArray("a"));
    sensor->sendCommandGetAll("Get_X", {}, all);
    QVERIFY(recorder.take().contains(QString("GetParameters(%1)").arg(buffer)));
    QCOMPARE(all.isEmpty(), buffer == 0);
}

void SensorCommandsTest::wholeAnswerReplacesTheMap()
{
    OpenSensorInstance sensor(TX270);
    scriptAnswer("Get_X", "SA_A=1 SA_B=\"two\" IA_C=3.5");
    Parameters all{{"SA_Old", 1}};
    CallRecorder recorder;
    QCOMPARE(sensor->sendCommandGetAll("Get_X", {{"SP_I", 2}}, all), NoError);
    QCOMPARE(all, Parameters({{"SA_A", 1}, {"SA_B", "two"}, {"IA_C", 3.5}}));
    const QStringList calls = recorder.take();
    QCOMPARE(calls.mid(0, 4), QStringList("SetParameterInt(\"SP_I\", 2)") + commandCalls("Get_X") +
                                  QStringList("GetParameters(null)"));
    QCOMPARE(calls.size(), 5);
    QVERIFY(calls.last().startsWith("GetParameters("));
}

void SensorCommandsTest::failedReadOfTheWholeAnswerLeavesTheMap()
{
    OpenSensorInstance sensor(TX270);
    scriptAnswer("Get_X", "SA_A=1");
    for (const int call : {1, 2}) {
        sondixsim::Fault fault;
        fault.function = "GetParameters";
        fault.from = call;
        fault.code = -8;
        fault.text = "line broken";
        const int number = sondixsim::inject(fault);
        Parameters all{{"SA_Old", 1}};
        QString errorText;
        QCOMPARE(int(sensor->sendCommandGetAll("Get_X", {}, all, &errorText)), -8);
        QCOMPARE(errorText, "line broken");
        QCOMPARE(all, Parameters({{"SA_Old", 1}}));
        sondixsim::removeFault(number);
    }
}

void SensorCommandsTest::controllerAliasesAreReplaced_data()
{
    QTest::addColumn<QString>("reported");
    QTest::addColumn<QString>("model");
    QTest::newRow("GYSENS1_A") << "GYSENS1_A"
                               << "GY330";
    QTest::newRow("GYIS1_DYN_B") << "GYIS1_DYN_B"
                                 << "GY310D";
    QTest::newRow("GYIS1_B") << "GYIS1_B"
                             << "GY310S";
    QTest::newRow("other case") << "gyis1_b"
                                << "gyis1_b";
    QTest::newRow("longer") << "GYIS1_B2"
                            << "GYIS1_B2";
    QTest::newRow("any other") << "TX270"
                               << "TX270";
}

void SensorCommandsTest::controllerAliasesAreReplaced()
{
    QFETCH(QString, reported);
    OpenSensorInstance sensor(TX270);
    scriptAnswer("Get_X", qPrintable(QString("SA_ControllerName=\"%1\" SA_Sensor=\"%1\"").arg(reported)));
    Parameters all;
    QCOMPARE(sensor->sendCommandGetAll("Get_X", {}, all), NoError);
    QTEST(all.value("SA_ControllerName").toString(), "model");
    QCOMPARE(all.value("SA_Sensor").toString(), reported);
}

void SensorCommandsTest::otherControllerNamesStayAsTheyAre()
{
    OpenSensorInstance sensor(TX270);
    scriptAnswer("Get_X", "SA_ControllerName=12");
    Parameters all;
    QCOMPARE(sensor->sendCommandGetAll("Get_X", {}, all), NoError);
    QCOMPARE(all.value("SA_ControllerName").userType(), int(QMetaType::Int));
}

void SensorCommandsTest::busModelIsConfirmedInTheWholeAnswer_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("answer");
    QTest::addColumn<QVariant>("reportedType");
    QTest::newRow("confirmed") << int(EC830) << "IP_SensorType=43 SA_Sensor=\"EC83-U\"" << QVariant(int(EC830));
    QTest::newRow("another model") << int(EC830) << "IP_SensorType=43 SA_Sensor=\"GY330\"" << QVariant(43);
    QTest::newRow("no name") << int(EC830) << "IP_SensorType=43" << QVariant(43);
    QTest::newRow("no type reported") << int(EC830) << "SA_Sensor=\"EC830\"" << QVariant(int(EC830));
    QTest::newRow("no bus type") << int(TX270) << "IP_SensorType=1 SA_Sensor=\"TX270\"" << QVariant(1);
}

void SensorCommandsTest::busModelIsConfirmedInTheWholeAnswer()
{
    QFETCH(int, type);
    QFETCH(QString, answer);
    SensorInstance sensor{SensorType(type)};
    scriptAnswer("Get_FoundSensor", answer.toLatin1());
    Parameters all;
    QCOMPARE(sensor.sendCommandGetAll("Get_FoundSensor", {}, all), NoError);
    QTEST(all.value("IP_SensorType"), "reportedType");
}

namespace {

/// Records the commands that pass through sendCommand(command).
class CommandNotingInstance : public SensorInstance
{
public:
    using SensorInstance::sendCommand;
    using SensorInstance::SensorInstance;

    ErrorCode sendCommand(const QString &command, QString *errorText) override
    {
        noted.append(command);
        return SensorInstance::sendCommand(command, errorText);
    }

    QStringList noted;
};

} // namespace

void SensorCommandsTest::subclassSeesTheCommandsInsideSequences()
{
    CommandNotingInstance sensor(TX270);
    SensorInstance &base = sensor;
    int value = 0;
    double number = 0.0;
    QString text;
    Parameters all;
    base.isOpen();
    base.sendCommand("c1", Parameters(), Parameters());
    base.sendCommand("c2", Parameters());
    base.sendCommandGetAll("c3", {}, all);
    base.sendCommandGetInt("c4", "SA_X", value);
    base.sendCommandGetDouble("c5", "SA_X", number);
    base.sendCommandGetString("c6", "SA_X", text);
    base.sendCommand("c7", "SP_X", 1);
    base.sendCommand("c8", "SP_X", 1.0);
    base.sendCommand("c9", "SP_X", true);
    base.sendCommand("c10", "SP_X", QString("x"));
    base.disableLogging();
    QCOMPARE(sensor.noted, QStringList({"Get_OpenState", "c1", "c2", "c3", "c4", "c5", "c6", "c7", "c8", "c9",
                                        "c10", "Enable_Logging"}));
}

QTEST_GUILESS_MAIN(SensorCommandsTest)
#include "tst_sensorcommands.moc"
