// SPDX-License-Identifier: MIT
#include "modesbench.h"

#include <QSignalSpy>
#include <QtTest>

#include <memory>

using namespace SondixQt;
using namespace modesbench;

namespace {

/// The commands and parameters that read and write a setting, as words; empty for a type without the setting.
QStringList triggerWords(int code)
{
    switch (code) {
    case CP710:
    case CB910:
    case CP730:
    case XA300:
    case GenericKVBus:
    case CB92xx:
    case CP750:
        return reference::list("Get_Trigger SA_TrgMode Update_Trigger SP_TrgMode");
    case TX240:
    case TX250:
        return reference::list("Get_Settings SA_OutputMode Set_OutputMode SP_OutputMode");
    case CC430:
    case TX260:
    case CC440:
    case PG110:
    case MC340:
    case QUnit:
    case CC450:
    case TX270:
    case TX280:
    case CC460:
    case Spessa:
    case TX300:
    case RG540:
        return reference::list("Get_TriggerMode SA_TriggerMode Update_TriggerMode SP_TriggerMode");
    case EC810:
        return reference::list("Get_MeasureMode SA_MeasureMode Set_MeasureMode SP_MeasureMode");
    case CC470:
    case CC480:
    case TX290:
    case WI610:
    case TX310:
    case WI620:
    case CC490:
    case CC495:
        return reference::list("Get_TriggerSource SA_TriggerSource Update_TriggerSource SP_TriggerSource");
    default:
        return {};
    }
}

QStringList syncWords(int code)
{
    switch (code) {
    case TX220:
        return reference::list("Get_Settings SA_Sync_TrgMode Set_Sync_TrgMode SP_Sync_TrgMode");
    case CC430:
    case TX260:
    case CC440:
    case PG110:
    case MC340:
    case QUnit:
    case CC450:
    case CC460:
    case CC470:
    case CC480:
    case Spessa:
    case TX290:
    case WI610:
    case TX310:
    case WI620:
    case CC490:
    case CC495:
        return reference::list("Get_SyncMode SA_SyncMode Set_SyncMode SP_SyncMode");
    default:
        return {};
    }
}

QStringList readCalls(const QStringList &words)
{
    return commandCalls(words.at(0)) + QStringList(getInt(words.at(1)));
}

QStringList writeCalls(const QStringList &words, int value)
{
    return QStringList(setInt(words.at(3), value)) + commandCalls(words.at(2));
}

int answerWith(const QStringList &words, int value)
{
    return scriptAnswer(words.at(0).toStdString(), QString("%1=%2").arg(words.at(1)).arg(value).toLatin1());
}

void everyModel()
{
    QTest::addColumn<int>("code");
    for (const int code : models().keys())
        QTest::newRow(QByteArray::number(code).constData()) << code;
    QTest::newRow("bus variant of CC430") << 10026;
    QTest::newRow("bus variant of EC810") << 10028;
    QTest::newRow("bus variant of the generic bus sensor") << 40043;
}

/// Collects the debug output during its lifetime.
class DebugLines
{
public:
    DebugLines() { m_previous = qInstallMessageHandler(&DebugLines::collect); }
    ~DebugLines()
    {
        qInstallMessageHandler(m_previous);
        lines().clear();
    }
    DebugLines(const DebugLines &) = delete;
    DebugLines &operator=(const DebugLines &) = delete;

    static QStringList &lines()
    {
        static QStringList all;
        return all;
    }

private:
    static void collect(QtMsgType type, const QMessageLogContext &, const QString &line)
    {
        if (type == QtDebugMsg)
            lines().append(line);
    }
    QtMessageHandler m_previous = nullptr;
};

} // namespace

/// Reading whether trigger and synchronisation are enabled, and switching them off.
class TriggerSyncTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { load({TX210, TX220, CC430, TX260, TX270}); }

    void nothingIsKnownBeforeTheSensorIsOpen();
    void openAsksForTriggerAndSync_data() { everyModel(); }
    void openAsksForTriggerAndSync();
    void triggerStates_data();
    void triggerStates();
    void syncStates_data();
    void syncStates();
    void failedCheckDoesNotFailTheOpen();
    void failedCheckKeepsTheFlag();
    void failedChecksAreLogged();
    void textOfAFailedTriggerCheckIsReplacedByTheSyncCheck();
    void syncIsCheckedAfterAFailedTriggerCheck();
    void adoptedOpenInstanceIsChecked();

    void disablesTheTrigger_data() { everyModel(); }
    void disablesTheTrigger();
    void refusedTriggerKeepsTheFlag();
    void triggerThatCannotBeStagedIsNotSet();
    void disablesTheSync_data() { everyModel(); }
    void disablesTheSync();
    void failedTerminationDoesNotStopTheSync();
    void refusedSyncKeepsTheFlag();

    void lostTriggerIsOffAndLostSyncKeepsItsFlag();
    void closingKeepsTheFlags();
    void sharedSyncIsThatOfTX220();
};

void TriggerSyncTest::nothingIsKnownBeforeTheSensorIsOpen()
{
    SensorInstance sensor(CC430);
    QVERIFY(!sensor.isTriggerEnabled());
    QVERIFY(!sensor.isSyncEnabled());
    QVERIFY(!sensor.isSyncSharedWithTrigger());
    CallRecorder recorder;
    QVERIFY(sensor.disableTrigger() != NoError);
    QCOMPARE(withoutErrorTexts(recorder.take()), writeInt("", "", 0));
    QVERIFY(sensor.disableSync() != NoError);
    QCOMPARE(withoutErrorTexts(recorder.take()), writeInt("", "", 0));
}

void TriggerSyncTest::openAsksForTriggerAndSync()
{
    QFETCH(int, code);
    load({code});
    SensorInstance sensor{SensorType(code)};
    CallRecorder recorder;
    QCOMPARE(sensor.open(parameters(code, Serial)), NoError);
    const QStringList calls = recorder.take();

    QStringList expected;
    if (code == MC340)
        expected += commandCalls("Get_Info") + QStringList("GetParameterDouble(\"SA_Range\")");
    if (!triggerWords(code).isEmpty())
        expected += readCalls(triggerWords(code));
    if (!syncWords(code).isEmpty())
        expected += readCalls(syncWords(code));
    // Two calls read the sensor's information.
    const int opened = calls.indexOf("OpenSensor()");
    QVERIFY(opened >= 0);
    QCOMPARE(calls.mid(opened + 3), expected);
}

void TriggerSyncTest::triggerStates_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("value");
    QTest::addColumn<bool>("enabled");
    for (const int code : models().keys()) {
        if (triggerWords(code).isEmpty())
            continue;
        for (const int value : {-1, 0, 1, 2}) {
            QTest::newRow(qPrintable(QString("%1 answers %2").arg(code).arg(value)))
                << code << value << (code == EC810 ? value != 1 : value != 0);
        }
    }
}

void TriggerSyncTest::triggerStates()
{
    QFETCH(int, code);
    QFETCH(int, value);
    load({code});
    answerWith(triggerWords(code), value);
    Sensor sensor(code);
    QTEST(sensor->isTriggerEnabled(), "enabled");
}

void TriggerSyncTest::syncStates_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("value");
    QTest::addColumn<bool>("enabled");
    for (const int code : models().keys()) {
        if (syncWords(code).isEmpty())
            continue;
        for (const int value : {-1, 0, 1, 2})
            QTest::newRow(qPrintable(QString("%1 answers %2").arg(code).arg(value)))
                << code << value << (value != 0);
    }
}

void TriggerSyncTest::syncStates()
{
    QFETCH(int, code);
    QFETCH(int, value);
    load({code});
    answerWith(syncWords(code), value);
    Sensor sensor(code);
    QTEST(sensor->isSyncEnabled(), "enabled");
}

void TriggerSyncTest::failedCheckDoesNotFailTheOpen()
{
    scriptCommandFailure("Get_TriggerMode", -31, "no answer");
    SensorInstance sensor(TX270);
    QSignalSpy messages(&sensor, &SensorInstance::errorMessage);
    QString errorText;
    QCOMPARE(sensor.open(parameters(TX270, Serial), &errorText), NoError);
    QCOMPARE(errorText, "no answer");
    QCOMPARE(messages.size(), 1);
    QVERIFY(!sensor.isTriggerEnabled());
}

void TriggerSyncTest::failedCheckKeepsTheFlag()
{
    const int on = scriptAnswer("Get_TriggerMode", "SA_TriggerMode=1");
    const int synchronised = scriptAnswer("Get_SyncMode", "SA_SyncMode=2");
    Sensor sensor(CC430);
    QVERIFY(sensor->isTriggerEnabled());
    QVERIFY(sensor->isSyncEnabled());
    sondixsim::removeFault(on);
    sondixsim::removeFault(synchronised);
    scriptCommandFailure("Get_TriggerMode", -31);
    scriptCommandFailure("Get_SyncMode", -32);
    QCOMPARE(sensor->close(), NoError);
    QCOMPARE(sensor->open(parameters(CC430, Ethernet)), NoError);
    QVERIFY(sensor->isTriggerEnabled());
    QVERIFY(sensor->isSyncEnabled());
}

void TriggerSyncTest::failedChecksAreLogged()
{
    scriptCommandFailure("Get_TriggerMode", -31, "first");
    scriptCommandFailure("Get_SyncMode", -32, "second");
    const DebugLines lines;
    Sensor sensor(CC430);
    QCOMPARE(
        DebugLines::lines(),
        QStringList({"SensorInstance::checkError: first", "SensorInstance::checkIfTriggerIsEnabled()::err -31",
                     "SensorInstance::checkError: second", "SensorInstance::checkIfSyncIsEnabled()::err: -32"}));
}

void TriggerSyncTest::textOfAFailedTriggerCheckIsReplacedByTheSyncCheck()
{
    scriptCommandFailure("Get_TriggerMode", -31);
    SensorInstance sensor(CC430);
    QString errorText;
    QCOMPARE(sensor.open(parameters(CC430, Ethernet), &errorText), NoError);
    QCOMPARE(errorText, QString());
}

void TriggerSyncTest::syncIsCheckedAfterAFailedTriggerCheck()
{
    scriptCommandFailure("Get_TriggerMode", -31);
    scriptAnswer("Get_SyncMode", "SA_SyncMode=1");
    Sensor sensor(CC430);
    QVERIFY(!sensor->isTriggerEnabled());
    QVERIFY(sensor->isSyncEnabled());
}

void TriggerSyncTest::adoptedOpenInstanceIsChecked()
{
    Sensor opened(CC430);
    scriptAnswer("Get_TriggerMode", "SA_TriggerMode=1");
    scriptAnswer("Get_SyncMode", "SA_SyncMode=1");
    const SensorInstance adopting(CC430, opened->handle());
    QVERIFY(adopting.isTriggerEnabled());
    QVERIFY(adopting.isSyncEnabled());
    QVERIFY(!opened->isTriggerEnabled());
}

void TriggerSyncTest::disablesTheTrigger()
{
    QFETCH(int, code);
    load({code});
    const QStringList words = triggerWords(code);
    const int off = code == EC810 ? 1 : 0;
    if (!words.isEmpty())
        answerWith(words, off + 1);
    Sensor sensor(code);
    QCOMPARE(sensor->isTriggerEnabled(), !words.isEmpty());
    QString errorText = "old";
    CallRecorder recorder;
    const ErrorCode result = sensor->disableTrigger(&errorText);
    const QStringList calls = withoutErrorTexts(recorder.take());
    QVERIFY(!sensor->isTriggerEnabled());
    if (words.isEmpty()) {
        QVERIFY(result != NoError);
        QVERIFY(errorText != "old");
        QCOMPARE(calls, writeInt("", "", 0));
    } else {
        QCOMPARE(result, NoError);
        QCOMPARE(errorText, QString());
        QCOMPARE(calls, writeCalls(words, off));
    }
}

void TriggerSyncTest::refusedTriggerKeepsTheFlag()
{
    scriptAnswer("Get_TriggerMode", "SA_TriggerMode=1");
    scriptCommandFailure("Update_TriggerMode", -33, "locked");
    Sensor sensor(TX270);
    QString errorText;
    QCOMPARE(int(sensor->disableTrigger(&errorText)), -33);
    QCOMPARE(errorText, "locked");
    QVERIFY(sensor->isTriggerEnabled());
}

void TriggerSyncTest::triggerThatCannotBeStagedIsNotSet()
{
    scriptAnswer("Get_TriggerMode", "SA_TriggerMode=1");
    Sensor sensor(TX270);
    scriptParameterFailure("SP_TriggerMode", -34, "no room");
    CallRecorder recorder;
    QCOMPARE(int(sensor->disableTrigger()), -34);
    QCOMPARE(withoutErrorTexts(recorder.take()), QStringList(setInt("SP_TriggerMode", 0)));
    QVERIFY(sensor->isTriggerEnabled());
}

void TriggerSyncTest::disablesTheSync()
{
    QFETCH(int, code);
    load({code});
    const QStringList words = syncWords(code);
    if (!words.isEmpty())
        answerWith(words, 1);
    Sensor sensor(code);
    QCOMPARE(sensor->isSyncEnabled(), !words.isEmpty());
    QString errorText = "old";
    CallRecorder recorder;
    const ErrorCode result = sensor->disableSync(&errorText);
    const QStringList calls = withoutErrorTexts(recorder.take());
    QVERIFY(!sensor->isSyncEnabled());
    if (words.isEmpty()) {
        QVERIFY(result != NoError);
        QVERIFY(errorText != "old");
        QCOMPARE(calls, writeInt("", "", 0));
        return;
    }
    QStringList expected = writeCalls(words, 0);
    if (code == TX260)
        expected.prepend(setInt("SP_SyncTermination", 0));
    QCOMPARE(result, NoError);
    QCOMPARE(errorText, QString());
    QCOMPARE(calls, expected);
}

void TriggerSyncTest::failedTerminationDoesNotStopTheSync()
{
    scriptAnswer("Get_SyncMode", "SA_SyncMode=1");
    Sensor sensor(TX260);
    scriptParameterFailure("SP_SyncTermination", -35, "no termination");
    QSignalSpy messages(&*sensor, &SensorInstance::errorMessage);
    QString errorText;
    CallRecorder recorder;
    QCOMPARE(sensor->disableSync(&errorText), NoError);
    QCOMPARE(recorder.take(), QStringList({setInt("SP_SyncTermination", 0), "GetError(4096)"}) +
                                  writeInt("Set_SyncMode", "SP_SyncMode", 0));
    QCOMPARE(messages.size(), 1);
    QCOMPARE(messages.at(0).at(1).toString(), "no termination");
    QCOMPARE(errorText, QString());
    QVERIFY(!sensor->isSyncEnabled());
}

void TriggerSyncTest::refusedSyncKeepsTheFlag()
{
    scriptAnswer("Get_SyncMode", "SA_SyncMode=1");
    scriptCommandFailure("Set_SyncMode", -36, "locked");
    Sensor sensor(TX260);
    QString errorText;
    QCOMPARE(int(sensor->disableSync(&errorText)), -36);
    QCOMPARE(errorText, "locked");
    QVERIFY(sensor->isSyncEnabled());
}

void TriggerSyncTest::lostTriggerIsOffAndLostSyncKeepsItsFlag()
{
    scriptAnswer("Get_TriggerMode", "SA_TriggerMode=1");
    scriptAnswer("Get_SyncMode", "SA_SyncMode=1");
    Sensor sensor(CC430);
    QVERIFY(sensor->isTriggerEnabled());
    QVERIFY(sensor->isSyncEnabled());

    sensor.become(TX210);
    QVERIFY(!sensor->isTriggerEnabled());
    QVERIFY(sensor->isSyncEnabled());
    // The write commands are kept.
    CallRecorder recorder;
    QCOMPARE(sensor->disableTrigger(), NoError);
    QCOMPARE(sensor->disableSync(), NoError);
    QCOMPARE(recorder.take(),
             writeInt("Update_TriggerMode", "SP_TriggerMode", 0) + writeInt("Set_SyncMode", "SP_SyncMode", 0));
    QVERIFY(!sensor->isSyncEnabled());
}

void TriggerSyncTest::closingKeepsTheFlags()
{
    scriptAnswer("Get_TriggerMode", "SA_TriggerMode=1");
    scriptAnswer("Get_SyncMode", "SA_SyncMode=1");
    Sensor sensor(CC430);
    QCOMPARE(sensor->close(), NoError);
    QVERIFY(sensor->isTriggerEnabled());
    QVERIFY(sensor->isSyncEnabled());
}

void TriggerSyncTest::sharedSyncIsThatOfTX220()
{
    Sensor sensor(CC430);
    QVERIFY(!sensor->isSyncSharedWithTrigger());
    sensor.become(TX220);
    QVERIFY(sensor->isSyncSharedWithTrigger());
    // Once true, it remains true.
    sensor.become(CC430);
    QVERIFY(sensor->isSyncSharedWithTrigger());
}

QTEST_GUILESS_MAIN(TriggerSyncTest)
#include "tst_triggersync.moc"
