// SPDX-License-Identifier: MIT
#include <SondixQt/SensorInstance>

#include "support/callrecorder.h"
#include "support/testbench.h"

#include <QSignalSpy>
#include <QtTest>

using namespace SondixQt;
using Parameters = QMap<QString, QVariant>;

namespace {

QString name(const char *text)
{
    return QString::fromLatin1(text);
}

} // namespace

/// The command layer: what is staged, sent and read, and what is not after a failure.
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

private:
    static void answer(const char *command, const char *text, int code = 0);
};

void SensorCommandsTest::init()
{
    loadTestBench();
}

void SensorCommandsTest::answer(const char *command, const char *text, int code)
{
    sondixsim::Fault fault;
    fault.command = command;
    fault.answer = text;
    fault.code = code;
    fault.text = "told to fail";
    sondixsim::inject(fault);
}

void SensorCommandsTest::plainCommandStagesItsNameAndRuns()
{
    OpenSensorInstance sensor(TX270);
    answer("Do_Something", "");
    QString errorText = name("old");
    CallRecorder recorder;
    QCOMPARE(sensor->sendCommand(name("Do_Something"), &errorText), NoError);
    QCOMPARE(recorder.take(), commandCalls(name("Do_Something")));
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
    QCOMPARE(int(sensor->sendCommand(name("Get_Info"), &errorText)), -5);
    QCOMPARE(errorText, name("no room"));
    QCOMPARE(recorder.take(),
             QStringList({name("SetParameterString(\"S_Command\", \"Get_Info\")"), name("GetError(4096)")}));
}

void SensorCommandsTest::parametersAreStagedInKeyOrderByType()
{
    OpenSensorInstance sensor(TX270);
    answer("Set_All", "");
    CallRecorder recorder;
    const Parameters parameters{
        {name("SP_E_Bytes"), QByteArray("\x01\x00\x02", 3)},
        {name("SP_D_Text"), name("abc")},
        {name("SP_C_Double"), 1.5},
        {name("SP_B_Bool"), true},
        {name("SP_A_Int"), -3},
        {name("SP_F_Unsigned"), 7U},
        {name("SP_G_Long"), qlonglong(8)},
        {name("SP_H_List"), QStringList{name("x")}},
        {name("SP_I_Invalid"), QVariant()},
    };
    QCOMPARE(sensor->sendCommand(name("Set_All"), parameters), NoError);
    QCOMPARE(recorder.take(),
             QStringList({name("SetParameterInt(\"SP_A_Int\", -3)"), name("SetParameterInt(\"SP_B_Bool\", 1)"),
                          name("SetParameterDouble(\"SP_C_Double\", 1.5)"),
                          name("SetParameterString(\"SP_D_Text\", \"abc\")"),
                          name("SetParameterBinary(\"SP_E_Bytes\", 3)")}) +
                 commandCalls(name("Set_All")));
}

void SensorCommandsTest::stagingStopsAtTheFirstFailure()
{
    OpenSensorInstance sensor(TX270);
    sondixsim::Fault fault;
    fault.function = "SetParameterInt";
    fault.parameter = "SP_B";
    fault.code = -9;
    sondixsim::inject(fault);
    const Parameters parameters{{name("SP_A"), 1}, {name("SP_B"), 2}, {name("SP_C"), 3}};
    const QStringList expected{name("SetParameterInt(\"SP_A\", 1)"), name("SetParameterInt(\"SP_B\", 2)"),
                               name("GetError(4096)")};
    CallRecorder recorder;
    int result = 5;
    Parameters all{{name("kept"), 1}};
    const Parameters targets{{name("SA_X"), SensorInstance::resultPointer(&result)}};
    QCOMPARE(int(sensor->sendCommand(name("Set_All"), parameters)), -9);
    QCOMPARE(recorder.take(), expected);
    QCOMPARE(int(sensor->sendCommand(name("Set_All"), parameters, targets, nullptr, SensorInstance::ReadAlways)),
             -9);
    QCOMPARE(recorder.take(), expected);
    QCOMPARE(int(sensor->sendCommandGetAll(name("Set_All"), parameters, all, nullptr, SensorInstance::ReadAlways)),
             -9);
    QCOMPARE(recorder.take(), expected);
    QCOMPARE(result, 5);
    QCOMPARE(all.size(), 1);
}

void SensorCommandsTest::oneParameterForms_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("call");
    QTest::newRow("int") << QVariant(7) << name("SetParameterInt(\"SP_X\", 7)");
    QTest::newRow("double") << QVariant(0.25) << name("SetParameterDouble(\"SP_X\", 0.25)");
    QTest::newRow("true") << QVariant(true) << name("SetParameterInt(\"SP_X\", 1)");
    QTest::newRow("false") << QVariant(false) << name("SetParameterInt(\"SP_X\", 0)");
    QTest::newRow("text") << QVariant(name("abc")) << name("SetParameterString(\"SP_X\", \"abc\")");
}

void SensorCommandsTest::oneParameterForms()
{
    QFETCH(QVariant, value);
    QFETCH(QString, call);
    OpenSensorInstance sensor(TX270);
    answer("Set_X", "");
    CallRecorder recorder;
    ErrorCode result = ErrorCode(1);
    switch (value.userType()) {
    case QMetaType::Int:
        result = sensor->sendCommand(name("Set_X"), name("SP_X"), value.toInt());
        break;
    case QMetaType::Double:
        result = sensor->sendCommand(name("Set_X"), name("SP_X"), value.toDouble());
        break;
    case QMetaType::Bool:
        result = sensor->sendCommand(name("Set_X"), name("SP_X"), value.toBool());
        break;
    default:
        result = sensor->sendCommand(name("Set_X"), name("SP_X"), value.toString());
    }
    QCOMPARE(result, NoError);
    QCOMPARE(recorder.take(), QStringList(call) + commandCalls(name("Set_X")));
}

void SensorCommandsTest::failedStagingOfTheParameterPreventsTheCommand()
{
    OpenSensorInstance sensor(TX270);
    sondixsim::Fault fault;
    fault.parameter = "SP_X";
    fault.code = -9;
    sondixsim::inject(fault);
    CallRecorder recorder;
    QCOMPARE(int(sensor->sendCommand(name("Set_X"), name("SP_X"), 1)), -9);
    QCOMPARE(recorder.take(), QStringList({name("SetParameterInt(\"SP_X\", 1)"), name("GetError(4096)")}));
}

void SensorCommandsTest::resultsAreReadIntoTheirTargets()
{
    OpenSensorInstance sensor(TX270);
    answer("Get_All", "SA_Bool=7 SA_Int=-4 SA_Double=2.5 SA_Text=\"some text\" SA_Bytes=\"xyz\"");
    bool boolean = false;
    int integer = 0;
    double number = 0.0;
    QString text;
    QByteArray bytes;
    const Parameters targets{
        {name("SA_Bool"), SensorInstance::resultPointer(&boolean)},
        {name("SA_Int"), SensorInstance::resultPointer(&integer)},
        {name("SA_Double"), SensorInstance::resultPointer(&number)},
        {name("SA_Text"), SensorInstance::resultPointer(&text)},
        {name("SA_Bytes"), SensorInstance::resultPointer(&bytes)},
        {name("SA_Missing1"), 5},
        {name("SA_Missing2"), SensorInstance::resultPointer(static_cast<int *>(nullptr))},
    };
    QCOMPARE(sensor->sendCommand(name("Get_All"), {}, targets), NoError);
    QCOMPARE(boolean, true);
    QCOMPARE(integer, -4);
    QCOMPARE(number, 2.5);
    QCOMPARE(text, name("some text"));
    QCOMPARE(bytes, QByteArray("xyz"));
}

void SensorCommandsTest::variantTargetsAreReadByTheirType()
{
    OpenSensorInstance sensor(TX270);
    answer("Get_All", "SA_Bool=1 SA_Int=-4 SA_Double=2.5 SA_Text=\"some text\" SA_Bytes=\"xyz\" SA_Other=3");
    QVariant boolean(false);
    QVariant integer(0);
    QVariant number(0.0);
    QVariant text{QString()};
    QVariant bytes{QByteArray()};
    QVariant other{QStringList{name("kept")}};
    QVariant invalid;
    const Parameters targets{
        {name("SA_Bool"), SensorInstance::resultPointer(&boolean)},
        {name("SA_Int"), SensorInstance::resultPointer(&integer)},
        {name("SA_Double"), SensorInstance::resultPointer(&number)},
        {name("SA_Text"), SensorInstance::resultPointer(&text)},
        {name("SA_Bytes"), SensorInstance::resultPointer(&bytes)},
        {name("SA_Other"), SensorInstance::resultPointer(&other)},
        {name("SA_Unknown"), SensorInstance::resultPointer(&invalid)},
    };
    CallRecorder recorder;
    QCOMPARE(sensor->sendCommand(name("Get_All"), {}, targets), NoError);
    QCOMPARE(boolean.toBool(), true);
    QCOMPARE(integer, QVariant(-4));
    QCOMPARE(number, QVariant(2.5));
    QCOMPARE(text, QVariant(name("some text")));
    QCOMPARE(bytes, QVariant(QByteArray("xyz")));
    QCOMPARE(other, QVariant(QStringList{name("kept")}));
    QVERIFY(!invalid.isValid());
    QCOMPARE(recorder.take().filter(name("SA_Other")), QStringList());
}

void SensorCommandsTest::readingStopsAtTheFirstFailure()
{
    OpenSensorInstance sensor(TX270);
    answer("Get_All", "SA_A=1 SA_C=3");
    int a = 0;
    int b = 20;
    int c = 30;
    QString errorText;
    QVERIFY(sensor->sendCommand(name("Get_All"), {},
                                {{name("SA_A"), SensorInstance::resultPointer(&a)},
                                 {name("SA_B"), SensorInstance::resultPointer(&b)},
                                 {name("SA_C"), SensorInstance::resultPointer(&c)}},
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
    answer("Get_X", "SA_X=5", code);
    const auto handling = SensorInstance::ErrorHandling(errorHandling);

    int x = 0;
    const ErrorCode result = sensor->sendCommand(
        name("Get_X"), {}, {{name("SA_X"), SensorInstance::resultPointer(&x)}}, nullptr, handling);
    QCOMPARE(int(result), read ? 0 : code);
    QCOMPARE(x, read ? 5 : 0);

    Parameters all;
    QCOMPARE(int(sensor->sendCommandGetAll(name("Get_X"), {}, all, nullptr, handling)), read ? 0 : code);
    QCOMPARE(all.value(name("SA_X")), read ? QVariant(5) : QVariant());
}

void SensorCommandsTest::readReplacesTheResultOfTheCommand()
{
    OpenSensorInstance sensor(TX270);
    answer("Get_X", "SA_X=5", PartialFailure26);
    int y = 0;
    const ErrorCode result =
        sensor->sendCommand(name("Get_X"), {}, {{name("SA_Y"), SensorInstance::resultPointer(&y)}}, nullptr,
                            SensorInstance::ReadAfterPartialFail);
    QVERIFY(result != NoError && result != PartialFailure26);
}

void SensorCommandsTest::singleResults()
{
    OpenSensorInstance sensor(TX270);
    answer("Get_X", "SA_Int=12 SA_Double=1.25 SA_Text=\"a b\"");
    int integer = 0;
    double number = 0.0;
    QString text;
    CallRecorder recorder;
    QCOMPARE(sensor->sendCommandGetInt(name("Get_X"), name("SA_Int"), integer), NoError);
    QCOMPARE(recorder.take(), commandCalls(name("Get_X")) + QStringList(name("GetParameterInt(\"SA_Int\")")));
    QCOMPARE(sensor->sendCommandGetDouble(name("Get_X"), name("SA_Double"), number), NoError);
    QCOMPARE(recorder.take(),
             commandCalls(name("Get_X")) + QStringList(name("GetParameterDouble(\"SA_Double\")")));
    QCOMPARE(sensor->sendCommandGetString(name("Get_X"), name("SA_Text"), text), NoError);
    QCOMPARE(recorder.take(),
             commandCalls(name("Get_X")) + QStringList({name("GetParameterString(\"SA_Text\", null)"),
                                                        name("GetParameterString(\"SA_Text\", 4)")}));
    QCOMPARE(integer, 12);
    QCOMPARE(number, 1.25);
    QCOMPARE(text, name("a b"));
}

void SensorCommandsTest::singleResultIsNotReadAfterAFailure()
{
    OpenSensorInstance sensor(TX270);
    answer("Get_X", "SA_X=12", PartialFailure26);
    int value = 3;
    CallRecorder recorder;
    QCOMPARE(sensor->sendCommandGetInt(name("Get_X"), name("SA_X"), value), PartialFailure26);
    QCOMPARE(value, 3);
    QCOMPARE(recorder.take(), commandCalls(name("Get_X")) + QStringList(name("GetError(4096)")));
}

void SensorCommandsTest::textsAreWindows1250AndEndAtTheirZero()
{
    OpenSensorInstance sensor(TX270);
    answer("Get_X", "SA_Text=\"\x8e\xb5m \xb0\"");
    QString text;
    QCOMPARE(sensor->sendCommandGetString(name("Get_X"), name("SA_Text"), text), NoError);
    QCOMPARE(text, QStringLiteral("\u017d\u00b5m \u00b0"));
    Parameters all;
    QCOMPARE(sensor->sendCommandGetAll(name("Get_X"), {}, all), NoError);
    QCOMPARE(all.value(name("SA_Text")).toString(), QStringLiteral("\u017d\u00b5m \u00b0"));

    // The length that comes back may leave out the closing zero, or be nonsense.
    for (const int written : {5, 6, 100, -1}) {
        sondixsim::Fault fault;
        fault.function = "GetParameterString";
        fault.from = 2;
        fault.count = written;
        const int number = sondixsim::inject(fault);
        QCOMPARE(sensor->sendCommandGetString(name("Get_X"), name("SA_Text"), text), NoError);
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
    answer("Get_X", "SA_Text=\"a\"");
    for (const char *function : {"GetParameterString", "GetParameterBinary", "GetParameters"}) {
        sondixsim::Fault fault;
        fault.function = function;
        fault.times = 1;
        fault.count = length;
        sondixsim::inject(fault);
    }
    QString text = name("old");
    QByteArray bytes("old");
    Parameters all;
    CallRecorder recorder;
    sensor->sendCommand(name("Get_X"), {}, {{name("SA_Text"), SensorInstance::resultPointer(&text)}});
    QVERIFY(recorder.take().contains(name("GetParameterString(\"SA_Text\", %1)").arg(buffer)));
    QCOMPARE(text, buffer == 0 ? name("old") : name("a"));
    sensor->sendCommand(name("Get_X"), {}, {{name("SA_Text"), SensorInstance::resultPointer(&bytes)}});
    QVERIFY(recorder.take().contains(name("GetParameterBinary(\"SA_Text\", %1)").arg(buffer)));
    QCOMPARE(bytes, buffer == 0 ? QByteArray("old") : QByteArray("a"));
    sensor->sendCommandGetAll(name("Get_X"), {}, all);
    QVERIFY(recorder.take().contains(name("GetParameters(%1)").arg(buffer)));
    QCOMPARE(all.isEmpty(), buffer == 0);
}

void SensorCommandsTest::wholeAnswerReplacesTheMap()
{
    OpenSensorInstance sensor(TX270);
    answer("Get_X", "SA_A=1 SA_B=\"two\" IA_C=3.5");
    Parameters all{{name("SA_Old"), 1}};
    CallRecorder recorder;
    QCOMPARE(sensor->sendCommandGetAll(name("Get_X"), {{name("SP_I"), 2}}, all), NoError);
    QCOMPARE(all, Parameters({{name("SA_A"), 1}, {name("SA_B"), name("two")}, {name("IA_C"), 3.5}}));
    const QStringList calls = recorder.take();
    QCOMPARE(calls.mid(0, 4), QStringList(name("SetParameterInt(\"SP_I\", 2)")) + commandCalls(name("Get_X")) +
                                  QStringList(name("GetParameters(null)")));
    QCOMPARE(calls.size(), 5);
    QVERIFY(calls.last().startsWith(name("GetParameters(")));
}

void SensorCommandsTest::failedReadOfTheWholeAnswerLeavesTheMap()
{
    OpenSensorInstance sensor(TX270);
    answer("Get_X", "SA_A=1");
    for (const int call : {1, 2}) {
        sondixsim::Fault fault;
        fault.function = "GetParameters";
        fault.from = call;
        fault.code = -8;
        fault.text = "line broken";
        const int number = sondixsim::inject(fault);
        Parameters all{{name("SA_Old"), 1}};
        QString errorText;
        QCOMPARE(int(sensor->sendCommandGetAll(name("Get_X"), {}, all, &errorText)), -8);
        QCOMPARE(errorText, name("line broken"));
        QCOMPARE(all, Parameters({{name("SA_Old"), 1}}));
        sondixsim::removeFault(number);
    }
}

void SensorCommandsTest::controllerAliasesAreReplaced_data()
{
    QTest::addColumn<QString>("reported");
    QTest::addColumn<QString>("model");
    QTest::newRow("GYSENS1_A") << name("GYSENS1_A") << name("GY330");
    QTest::newRow("GYIS1_DYN_B") << name("GYIS1_DYN_B") << name("GY310D");
    QTest::newRow("GYIS1_B") << name("GYIS1_B") << name("GY310S");
    QTest::newRow("other case") << name("gyis1_b") << name("gyis1_b");
    QTest::newRow("longer") << name("GYIS1_B2") << name("GYIS1_B2");
    QTest::newRow("any other") << name("TX270") << name("TX270");
}

void SensorCommandsTest::controllerAliasesAreReplaced()
{
    QFETCH(QString, reported);
    OpenSensorInstance sensor(TX270);
    answer("Get_X", qPrintable(name("SA_ControllerName=\"%1\" SA_Sensor=\"%1\"").arg(reported)));
    Parameters all;
    QCOMPARE(sensor->sendCommandGetAll(name("Get_X"), {}, all), NoError);
    QTEST(all.value(name("SA_ControllerName")).toString(), "model");
    QCOMPARE(all.value(name("SA_Sensor")).toString(), reported);
}

void SensorCommandsTest::otherControllerNamesStayAsTheyAre()
{
    OpenSensorInstance sensor(TX270);
    answer("Get_X", "SA_ControllerName=12");
    Parameters all;
    QCOMPARE(sensor->sendCommandGetAll(name("Get_X"), {}, all), NoError);
    QCOMPARE(all.value(name("SA_ControllerName")).userType(), int(QMetaType::Int));
}

void SensorCommandsTest::busModelIsConfirmedInTheWholeAnswer_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("answer");
    QTest::addColumn<QVariant>("reportedType");
    QTest::newRow("confirmed") << int(EC830) << name("IP_SensorType=43 SA_Sensor=\"EC83-U\"")
                               << QVariant(int(EC830));
    QTest::newRow("another model") << int(EC830) << name("IP_SensorType=43 SA_Sensor=\"GY330\"") << QVariant(43);
    QTest::newRow("no name") << int(EC830) << name("IP_SensorType=43") << QVariant(43);
    QTest::newRow("no type told") << int(EC830) << name("SA_Sensor=\"EC830\"") << QVariant(int(EC830));
    QTest::newRow("no bus type") << int(TX270) << name("IP_SensorType=1 SA_Sensor=\"TX270\"") << QVariant(1);
}

void SensorCommandsTest::busModelIsConfirmedInTheWholeAnswer()
{
    QFETCH(int, type);
    QFETCH(QString, answer);
    SensorInstance sensor{SensorType(type)};
    sondixsim::Fault fault;
    fault.command = "Get_FoundSensor";
    fault.answer = answer.toStdString();
    sondixsim::inject(fault);
    Parameters all;
    QCOMPARE(sensor.sendCommandGetAll(name("Get_FoundSensor"), {}, all), NoError);
    QTEST(all.value(name("IP_SensorType")), "reportedType");
}

namespace {

/// Notes the commands that pass the plain virtual form.
class NotingInstance : public SensorInstance
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
    NotingInstance sensor(TX270);
    SensorInstance &base = sensor;
    int value = 0;
    double number = 0.0;
    QString text;
    Parameters all;
    base.isOpen();
    base.sendCommand(name("c1"), Parameters(), Parameters());
    base.sendCommand(name("c2"), Parameters());
    base.sendCommandGetAll(name("c3"), {}, all);
    base.sendCommandGetInt(name("c4"), name("SA_X"), value);
    base.sendCommandGetDouble(name("c5"), name("SA_X"), number);
    base.sendCommandGetString(name("c6"), name("SA_X"), text);
    base.sendCommand(name("c7"), name("SP_X"), 1);
    base.sendCommand(name("c8"), name("SP_X"), 1.0);
    base.sendCommand(name("c9"), name("SP_X"), true);
    base.sendCommand(name("c10"), name("SP_X"), name("x"));
    base.disableLogging();
    QCOMPARE(sensor.noted,
             QStringList({name("Get_OpenState"), name("c1"), name("c2"), name("c3"), name("c4"), name("c5"),
                          name("c6"), name("c7"), name("c8"), name("c9"), name("c10"), name("Enable_Logging")}));
}

QTEST_GUILESS_MAIN(SensorCommandsTest)
#include "tst_sensorcommands.moc"
