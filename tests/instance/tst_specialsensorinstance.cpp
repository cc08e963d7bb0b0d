// SPDX-License-Identifier: MIT
#include <SondixQt/SpecialSensorInstance>

#include "support/callrecorder.h"
#include "support/scripting.h"
#include "support/testbench.h"

#include <QtTest>

using namespace SondixQt;
using Action = SpecialSensorInstance::ExecSpecialAction;
using Parameters = QMap<QString, QVariant>;

namespace {

/// The commands among the recorded calls, in order.
QStringList commands(CallRecorder &recorder)
{
    QStringList names;
    const QString start = "SetParameterString(\"S_Command\", \"";
    for (const QString &call : recorder.take()) {
        if (call.startsWith(start))
            names.append(call.mid(start.size()).chopped(2));
    }
    return names;
}

/// Records its actions and lets them fail on demand.
class ActionNotingInstance : public SpecialSensorInstance
{
public:
    ActionNotingInstance()
        : SpecialSensorInstance(CP720)
    {
        noted.clear();
    }

    ErrorCode actionBeforeSendCommand(const QString &command, QString *) override
    {
        noted.append("before " + command);
        return beforeResult;
    }
    ErrorCode actionAfterSendCommand(const QString &command, QString *) override
    {
        noted.append("after " + command);
        return afterResult;
    }

    QStringList noted;
    ErrorCode beforeResult = NoError;
    ErrorCode afterResult = NoError;
};

/// Sends a command with each of the overloads with actions, by name.
ErrorCode send(SpecialSensorInstance &sensor, const QString &form, const QString &command, Action action)
{
    int number = 0;
    double value = 0.0;
    QString text;
    Parameters all;
    if (form == "plain")
        return sensor.sendCommand(command, action);
    if (form == "map")
        return sensor.sendCommand(command, Parameters{{"SP_X", 1}}, action);
    if (form == "results")
        return sensor.sendCommand(command, {}, {{"SA_X", SensorInstance::resultPointer(&number)}}, action);
    if (form == "all")
        return sensor.sendCommandGetAll(command, {}, all, action);
    if (form == "int")
        return sensor.sendCommandGetInt(command, "SA_X", number, action);
    if (form == "double")
        return sensor.sendCommandGetDouble(command, "SA_X", value, action);
    return sensor.sendCommandGetString(command, "SA_X", text, action);
}

/// Sends a command with each of the virtual functions of the base class, by name.
ErrorCode sendVirtually(SensorInstance &sensor, const QString &form, const QString &command)
{
    int number = 0;
    double value = 0.0;
    QString text;
    Parameters all;
    if (form == "plain")
        return sensor.sendCommand(command);
    if (form == "map")
        return sensor.sendCommand(command, Parameters{{"SP_X", 1}});
    if (form == "results")
        return sensor.sendCommand(command, {}, {{"SA_X", SensorInstance::resultPointer(&number)}});
    if (form == "all")
        return sensor.sendCommandGetAll(command, {}, all);
    if (form == "int")
        return sensor.sendCommandGetInt(command, "SA_X", number);
    if (form == "double")
        return sensor.sendCommandGetDouble(command, "SA_X", value);
    return sensor.sendCommandGetString(command, "SA_X", text);
}

const QStringList &commandForms()
{
    static const QStringList all{"plain", "map", "results", "all", "int", "double", "text"};
    return all;
}

} // namespace

// A type passed by mistake would be taken for a handle, which is then released by the wrong instance.
static_assert(!std::is_constructible_v<SpecialSensorInstanceRG52x, SensorType>);
static_assert(!std::is_constructible_v<SpecialSensorInstanceRG531, SensorType>);

/// Actions before and after commands, including those of the RG models.
class SpecialSensorInstanceTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();

    void actionBitsDecide_data();
    void actionBitsDecide();
    void everyFormRunsTheActionsOnce_data();
    void everyFormRunsTheActionsOnce();
    void failedBeforeActionPreventsTheCommand_data();
    void failedBeforeActionPreventsTheCommand();
    void afterActionFollowsAFailedCommandButNotThePlainOne_data();
    void afterActionFollowsAFailedCommandButNotThePlainOne();
    void afterActionsResultIsReturned();
    void initiallyExcludedCommands_data();
    void initiallyExcludedCommands();
    void excludedCommandsCanBeAddedAndReplaced();
    void isOpenTriggersNoActionUnlessTheListIsEmptied();
    void oneParameterFormStagesBeforeTheBeforeAction();

    void rg52xCommandOfEachMode_data();
    void rg52xCommandOfEachMode();
    void rg52xLearnsItsModeOnce_data();
    void rg52xLearnsItsModeOnce();
    void rg52xRestartIsBestEffort();
    void rg52xFailedLearningIsReturned();
    void rg52xUnknownModeSendsAnEmptyName();
    void rg52xHasNoBeforeAction();
    void rg531CommandOfEachMode_data();
    void rg531CommandOfEachMode();
    void rg531LearnsItsModeOnce_data();
    void rg531LearnsItsModeOnce();
    void rg531FailedLearningIsReturned();
    void rg531FailedStopPreventsTheCommand();
    void rg531RestartFailureIsReturned();
    void failedMapCommandIsCoveredByTheAfterAction_data();
    void failedMapCommandIsCoveredByTheAfterAction();
    void trackingCommandsRunNoActions_data();
    void trackingCommandsRunNoActions();
};

void SpecialSensorInstanceTest::init()
{
    loadTestBench();
}

void SpecialSensorInstanceTest::actionBitsDecide_data()
{
    QTest::addColumn<int>("action");
    QTest::addColumn<bool>("before");
    QTest::addColumn<bool>("after");
    for (int action = 0; action < 17; ++action) {
        QTest::addRow("%d", action) << action << ((action & 2) != 0 || (action & 8) != 0)
                                    << ((action & 4) != 0 || (action & 8) != 0);
    }
}

void SpecialSensorInstanceTest::actionBitsDecide()
{
    QFETCH(int, action);
    QFETCH(bool, before);
    QFETCH(bool, after);
    scriptAnswer("Do_X", "SA_X=1");
    ActionNotingInstance sensor;
    QCOMPARE(sensor.open(testBenchParameters(CP720)), NoError);
    for (const QString &form : commandForms()) {
        sensor.noted.clear();
        QCOMPARE(send(sensor, form, "Do_X", Action(action)), NoError);
        QStringList expected;
        if (before)
            expected.append("before Do_X");
        if (after)
            expected.append("after Do_X");
        QCOMPARE(sensor.noted, expected);
    }
}

void SpecialSensorInstanceTest::everyFormRunsTheActionsOnce_data()
{
    QTest::addColumn<QString>("form");
    for (const QString &form : commandForms())
        QTest::newRow(qPrintable(form)) << form;
}

void SpecialSensorInstanceTest::everyFormRunsTheActionsOnce()
{
    QFETCH(QString, form);
    scriptAnswer("Do_X", "SA_X=1");
    ActionNotingInstance sensor;
    QCOMPARE(sensor.open(testBenchParameters(CP720)), NoError);
    sensor.noted.clear();
    QCOMPARE(sendVirtually(sensor, form, "Do_X"), NoError);
    QCOMPARE(sensor.noted, QStringList({"before Do_X", "after Do_X"}));
}

void SpecialSensorInstanceTest::failedBeforeActionPreventsTheCommand_data()
{
    everyFormRunsTheActionsOnce_data();
}

void SpecialSensorInstanceTest::failedBeforeActionPreventsTheCommand()
{
    QFETCH(QString, form);
    ActionNotingInstance sensor;
    QCOMPARE(sensor.open(testBenchParameters(CP720)), NoError);
    sensor.noted.clear();
    sensor.beforeResult = ErrorCode(-40);
    CallRecorder recorder;
    QCOMPARE(int(sendVirtually(sensor, form, "Do_X")), -40);
    QCOMPARE(recorder.take(), QStringList());
    QCOMPARE(sensor.noted, QStringList("before Do_X"));
}

void SpecialSensorInstanceTest::afterActionFollowsAFailedCommandButNotThePlainOne_data()
{
    everyFormRunsTheActionsOnce_data();
}

void SpecialSensorInstanceTest::afterActionFollowsAFailedCommandButNotThePlainOne()
{
    QFETCH(QString, form);
    scriptAnswer("Do_X", "", -30);
    ActionNotingInstance sensor;
    QCOMPARE(sensor.open(testBenchParameters(CP720)), NoError);
    sensor.noted.clear();
    const int result = sendVirtually(sensor, form, "Do_X");
    if (form == "plain") {
        QCOMPARE(result, -30);
        QCOMPARE(sensor.noted, QStringList("before Do_X"));
    } else {
        QCOMPARE(result, 0);
        QCOMPARE(sensor.noted, QStringList({"before Do_X", "after Do_X"}));
    }
}

void SpecialSensorInstanceTest::afterActionsResultIsReturned()
{
    scriptAnswer("Do_X", "SA_X=1");
    ActionNotingInstance sensor;
    QCOMPARE(sensor.open(testBenchParameters(CP720)), NoError);
    sensor.afterResult = ErrorCode(-41);
    for (const QString &form : commandForms())
        QCOMPARE(int(sendVirtually(sensor, form, "Do_X")), -41);
}

void SpecialSensorInstanceTest::initiallyExcludedCommands_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<bool>("ofBase");
    QTest::addColumn<bool>("ofRG52x");
    QTest::addColumn<bool>("ofRG531");
    QTest::newRow("1") << "Enable_Logging" << true << true << true;
    QTest::newRow("2") << "Automatic_Setup" << true << true << true;
    QTest::newRow("3") << "Get_TransmittedDataInfo" << true << true << true;
    QTest::newRow("4") << "Clear_Buffers" << true << true << true;
    QTest::newRow("5") << "Get_OpenState" << true << true << true;
    QTest::newRow("6") << "DistanceTracking" << false << true << true;
    QTest::newRow("7") << "Get_Samplerate" << false << true << true;
    QTest::newRow("8") << "SpeedTracking" << false << false << true;
    QTest::newRow("other") << "Get_Info" << false << false << false;
    QTest::newRow("other case") << "get_openstate" << false << false << false;
}

void SpecialSensorInstanceTest::initiallyExcludedCommands()
{
    QFETCH(QString, command);
    QFETCH(bool, ofBase);
    QFETCH(bool, ofRG52x);
    QFETCH(bool, ofRG531);
    scriptAnswer(command.toStdString(), "SA_X=1");
    ActionNotingInstance base;
    QCOMPARE(base.open(testBenchParameters(CP720)), NoError);
    base.noted.clear();
    QCOMPARE(base.sendCommand(command), NoError);
    QCOMPARE(base.noted.isEmpty(), ofBase);

    SpecialSensorInstanceRG52x rg52x;
    QCOMPARE(rg52x.open(testBenchParameters(RG52x)), NoError);
    rg52x.setTrackingMode(3);
    SpecialSensorInstanceRG531 rg531;
    QCOMPARE(rg531.open(testBenchParameters(RG53x)), NoError);
    rg531.setTrackingMode(2);
    CallRecorder recorder;
    QCOMPARE(rg52x.sendCommand(command), NoError);
    QCOMPARE(commands(recorder).contains("DistanceTracking50Hz"), !ofRG52x);
    QCOMPARE(rg531.sendCommand(command), NoError);
    QCOMPARE(commands(recorder).contains("StopTracking"), !ofRG531);
}

void SpecialSensorInstanceTest::excludedCommandsCanBeAddedAndReplaced()
{
    scriptAnswer("Do_X", "");
    scriptAnswer("Do_Y", "");
    ActionNotingInstance sensor;
    QCOMPARE(sensor.open(testBenchParameters(CP720)), NoError);
    sensor.addToExcludedCommandList({"Do_X"});
    sensor.noted.clear();
    QCOMPARE(sensor.sendCommand("Do_X"), NoError);
    QVERIFY(sensor.noted.isEmpty());
    sensor.setExcludedCommandList({"Do_Y"});
    QCOMPARE(sensor.sendCommand("Do_Y"), NoError);
    QVERIFY(sensor.noted.isEmpty());
    QCOMPARE(sensor.sendCommand("Do_X"), NoError);
    QCOMPARE(sensor.noted.size(), 2);
}

void SpecialSensorInstanceTest::isOpenTriggersNoActionUnlessTheListIsEmptied()
{
    ActionNotingInstance sensor;
    QCOMPARE(sensor.open(testBenchParameters(CP720)), NoError);
    sensor.noted.clear();
    QVERIFY(sensor.isOpen());
    QVERIFY(sensor.noted.isEmpty());
    sensor.setExcludedCommandList({});
    QVERIFY(sensor.isOpen());
    QCOMPARE(sensor.noted, QStringList({"before Get_OpenState", "after Get_OpenState"}));
}

void SpecialSensorInstanceTest::oneParameterFormStagesBeforeTheBeforeAction()
{
    // The parameter is staged before the actions and the command.
    scriptAnswer("Do_X", "");
    SpecialSensorInstanceRG531 sensor;
    QCOMPARE(sensor.open(testBenchParameters(RG53x)), NoError);
    sensor.setTrackingMode(2);
    CallRecorder recorder;
    QCOMPARE(sensor.sendCommand("Do_X", "SP_X", 1), NoError);
    QCOMPARE(recorder.take(), QStringList("SetParameterInt(\"SP_X\", 1)") + commandCalls("StopTracking") +
                                  commandCalls("Do_X") + commandCalls("DistanceTracking"));
}

void SpecialSensorInstanceTest::rg52xCommandOfEachMode_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("command");
    QTest::newRow("0") << 0 << "DistanceTracking";
    QTest::newRow("1") << 1 << "DistanceTracking7m";
    for (const int mode : {2, 5, 6, 7, 8})
        QTest::addRow("%d", mode) << mode << "DistanceTracking10Hz";
    QTest::newRow("3") << 3 << "DistanceTracking50Hz";
    QTest::newRow("4") << 4 << "DistanceTriggered";
    for (const int mode : {-1, 9, 100, std::numeric_limits<int>::min()})
        QTest::addRow("%d", mode) << mode << QString();
}

void SpecialSensorInstanceTest::rg52xCommandOfEachMode()
{
    QFETCH(int, mode);
    SpecialSensorInstanceRG52x sensor;
    QTEST(sensor.convertMeasurementModeToCommand(mode), "command");
}

void SpecialSensorInstanceTest::rg52xLearnsItsModeOnce_data()
{
    QTest::addColumn<int>("autostart");
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("restart");
    QTest::newRow("0") << 0 << 0 << "DistanceTracking";
    QTest::newRow("1") << 1 << 1 << "DistanceTracking7m";
    QTest::newRow("2") << 2 << 2 << "DistanceTracking10Hz";
    QTest::newRow("3") << 3 << 3 << "DistanceTracking50Hz";
    QTest::newRow("4") << 4 << 4 << "DistanceTriggered";
    QTest::newRow("5") << 5 << 2 << "DistanceTracking10Hz";
    QTest::newRow("7") << 7 << 2 << "DistanceTracking10Hz";
    QTest::newRow("-1") << -1 << 2 << "DistanceTracking10Hz";
    QTest::newRow("-5") << -5 << 2 << "DistanceTracking10Hz";
}

void SpecialSensorInstanceTest::rg52xLearnsItsModeOnce()
{
    QFETCH(int, autostart);
    QFETCH(int, mode);
    QFETCH(QString, restart);
    scriptAnswer("Get_Autostart", qPrintable(QString("SA_AutostartCommand=%1").arg(autostart)));
    scriptAnswer("Do_X", "");
    SpecialSensorInstanceRG52x sensor;
    QCOMPARE(sensor.getTrackingMode(), -1);
    QCOMPARE(sensor.open(testBenchParameters(RG52x)), NoError);
    CallRecorder recorder;
    QCOMPARE(sensor.sendCommand("Do_X"), NoError);
    QCOMPARE(commands(recorder), QStringList({"Do_X", "Get_Autostart", restart}));
    QCOMPARE(sensor.getTrackingMode(), mode);
    QCOMPARE(sensor.sendCommand("Do_X"), NoError);
    QCOMPARE(commands(recorder), QStringList({"Do_X", restart}));
}

void SpecialSensorInstanceTest::rg52xRestartIsBestEffort()
{
    scriptAnswer("Do_X", "");
    scriptAnswer("DistanceTracking50Hz", "", -33);
    SpecialSensorInstanceRG52x sensor;
    QCOMPARE(sensor.open(testBenchParameters(RG52x)), NoError);
    sensor.setTrackingMode(3);
    QString errorText;
    QSignalSpy messages(&sensor, &SensorInstance::errorMessage);
    QCOMPARE(sensor.sendCommand("Do_X", &errorText), NoError);
    QCOMPARE(errorText, "told to fail");
    QCOMPARE(messages.size(), 1);
}

void SpecialSensorInstanceTest::rg52xFailedLearningIsReturned()
{
    scriptAnswer("Do_X", "");
    scriptAnswer("Get_Autostart", "", -34);
    SpecialSensorInstanceRG52x sensor;
    QCOMPARE(sensor.open(testBenchParameters(RG52x)), NoError);
    CallRecorder recorder;
    QCOMPARE(int(sensor.sendCommand("Do_X")), -34);
    QCOMPARE(commands(recorder), QStringList({"Do_X", "Get_Autostart"}));
    QCOMPARE(sensor.getTrackingMode(), -1);
    QCOMPARE(int(sensor.sendCommand("Do_X", Parameters{{"SP_X", 1}})), -34);
    QCOMPARE(commands(recorder), QStringList({"Do_X", "Get_Autostart"}));
}

void SpecialSensorInstanceTest::rg52xUnknownModeSendsAnEmptyName()
{
    scriptAnswer("Do_X", "");
    SpecialSensorInstanceRG52x sensor;
    QCOMPARE(sensor.open(testBenchParameters(RG52x)), NoError);
    sensor.setTrackingMode(9);
    CallRecorder recorder;
    QCOMPARE(sensor.sendCommand("Do_X"), NoError);
    QCOMPARE(commands(recorder), QStringList({"Do_X", QString()}));
}

void SpecialSensorInstanceTest::rg52xHasNoBeforeAction()
{
    scriptAnswer("Do_X", "");
    SpecialSensorInstanceRG52x sensor;
    QCOMPARE(sensor.open(testBenchParameters(RG52x)), NoError);
    sensor.setTrackingMode(0);
    CallRecorder recorder;
    QCOMPARE(sensor.sendCommand("Do_X", SpecialSensorInstance::ActionBefore), NoError);
    QCOMPARE(commands(recorder), QStringList("Do_X"));
}

void SpecialSensorInstanceTest::rg531CommandOfEachMode_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("command");
    QTest::newRow("5") << 5 << "SpeedTracking";
    for (const int mode : {-1, 0, 1, 2, 4, 6, 1000})
        QTest::addRow("%d", mode) << mode << "DistanceTracking";
}

void SpecialSensorInstanceTest::rg531CommandOfEachMode()
{
    QFETCH(int, mode);
    SpecialSensorInstanceRG531 sensor;
    QTEST(sensor.convertMeasurementModeToCommand(mode), "command");
}

void SpecialSensorInstanceTest::rg531LearnsItsModeOnce_data()
{
    QTest::addColumn<int>("autostart");
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("restart");
    QTest::newRow("5") << 5 << 5 << "SpeedTracking";
    QTest::newRow("0") << 0 << 2 << "DistanceTracking";
    QTest::newRow("7") << 7 << 2 << "DistanceTracking";
    QTest::newRow("-2") << -2 << 2 << "DistanceTracking";
    QTest::newRow("-1 stays unknown") << -1 << -1 << "DistanceTracking";
}

void SpecialSensorInstanceTest::rg531LearnsItsModeOnce()
{
    QFETCH(int, autostart);
    QFETCH(int, mode);
    QFETCH(QString, restart);
    scriptAnswer("Get_Autostart", qPrintable(QString("SA_AutostartCommand=%1").arg(autostart)));
    scriptAnswer("Do_X", "");
    SpecialSensorInstanceRG531 sensor;
    QCOMPARE(sensor.open(testBenchParameters(RG53x)), NoError);
    CallRecorder recorder;
    QCOMPARE(sensor.sendCommand("Do_X"), NoError);
    QCOMPARE(commands(recorder), QStringList({"StopTracking", "Do_X", "Get_Autostart", restart}));
    QCOMPARE(sensor.getTrackingMode(), mode);
    QCOMPARE(sensor.sendCommand("Do_X"), NoError);
    QCOMPARE(commands(recorder).contains("Get_Autostart"), mode == -1);
}

void SpecialSensorInstanceTest::rg531FailedLearningIsReturned()
{
    scriptAnswer("Do_X", "");
    scriptAnswer("Get_Autostart", "", -34);
    SpecialSensorInstanceRG531 sensor;
    QCOMPARE(sensor.open(testBenchParameters(RG53x)), NoError);
    CallRecorder recorder;
    QCOMPARE(int(sensor.sendCommand("Do_X")), -34);
    QCOMPARE(commands(recorder), QStringList({"StopTracking", "Do_X", "Get_Autostart"}));
}

void SpecialSensorInstanceTest::rg531FailedStopPreventsTheCommand()
{
    scriptAnswer("StopTracking", "", -35);
    SpecialSensorInstanceRG531 sensor;
    QCOMPARE(sensor.open(testBenchParameters(RG53x)), NoError);
    CallRecorder recorder;
    for (const QString &form : commandForms()) {
        QCOMPARE(int(sendVirtually(sensor, form, "Do_X")), -35);
        QCOMPARE(commands(recorder), QStringList("StopTracking"));
    }
}

void SpecialSensorInstanceTest::rg531RestartFailureIsReturned()
{
    scriptAnswer("Do_X", "");
    scriptAnswer("SpeedTracking", "", -36);
    SpecialSensorInstanceRG531 sensor;
    QCOMPARE(sensor.open(testBenchParameters(RG53x)), NoError);
    sensor.setTrackingMode(5);
    QCOMPARE(int(sensor.sendCommand("Do_X")), -36);
}

void SpecialSensorInstanceTest::failedMapCommandIsCoveredByTheAfterAction_data()
{
    QTest::addColumn<bool>("rg531");
    QTest::newRow("RG52x") << false;
    QTest::newRow("RG531") << true;
}

void SpecialSensorInstanceTest::failedMapCommandIsCoveredByTheAfterAction()
{
    QFETCH(bool, rg531);
    scriptAnswer("Do_X", "", -37);
    SpecialSensorInstanceRG52x first;
    SpecialSensorInstanceRG531 second;
    SensorInstance &sensor = rg531 ? static_cast<SensorInstance &>(second) : first;
    QCOMPARE(sensor.open(testBenchParameters(rg531 ? RG53x : RG52x)), NoError);
    QCOMPARE(sensor.sendCommand("Do_X", Parameters{{"SP_X", 1}}), NoError);
    QCOMPARE(int(sensor.sendCommand("Do_X")), -37);
}

void SpecialSensorInstanceTest::trackingCommandsRunNoActions_data()
{
    QTest::addColumn<QString>("command");
    QTest::newRow("DistanceTracking") << "DistanceTracking";
    QTest::newRow("SpeedTracking") << "SpeedTracking";
}

void SpecialSensorInstanceTest::trackingCommandsRunNoActions()
{
    QFETCH(QString, command);
    SpecialSensorInstanceRG531 sensor;
    QCOMPARE(sensor.open(testBenchParameters(RG53x)), NoError);
    CallRecorder recorder;
    QCOMPARE(sensor.sendCommand(command), NoError);
    QCOMPARE(commands(recorder), QStringList(command));
}

QTEST_GUILESS_MAIN(SpecialSensorInstanceTest)
#include "tst_specialsensorinstance.moc"
