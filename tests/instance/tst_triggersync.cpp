// SPDX-License-Identifier: MIT
#include "modesbench.h"

#include <QSignalSpy>
#include <QtTest>

#include <memory>

using namespace SondixQt;
using namespace modesbench;

namespace {

/// How a setting is read and written: the words of a row, empty for a type without it.
QStringList triggerWords(int code)
{
    switch (code) {
    case 15:
    case 18:
    case 33:
    case 34:
    case 43:
    case 45:
    case 54:
        return reference::list("Get_Trigger SA_TrgMode Update_Trigger SP_TrgMode");
    case 23:
    case 24:
        return reference::list("Get_Settings SA_OutputMode Set_OutputMode SP_OutputMode");
    case 26:
    case 29:
    case 30:
    case 35:
    case 37:
    case 38:
    case 39:
    case 41:
    case 42:
    case 44:
    case 48:
    case 56:
    case 60:
        return reference::list("Get_TriggerMode SA_TriggerMode Update_TriggerMode SP_TriggerMode");
    case 28:
        return reference::list("Get_MeasureMode SA_MeasureMode Set_MeasureMode SP_MeasureMode");
    case 46:
    case 47:
    case 51:
    case 55:
    case 58:
    case 59:
    case 62:
    case 63:
        return reference::list("Get_TriggerSource SA_TriggerSource Update_TriggerSource SP_TriggerSource");
    default:
        return {};
    }
}

QStringList syncWords(int code)
{
    switch (code) {
    case 2:
        return reference::list("Get_Settings SA_Sync_TrgMode Set_Sync_TrgMode SP_Sync_TrgMode");
    case 26:
    case 29:
    case 30:
    case 35:
    case 37:
    case 38:
    case 39:
    case 44:
    case 46:
    case 47:
    case 48:
    case 51:
    case 55:
    case 58:
    case 59:
    case 62:
    case 63:
        return reference::list("Get_SyncMode SA_SyncMode Set_SyncMode SP_SyncMode");
    default:
        return {};
    }
}

QStringList ask(const QStringList &words)
{
    return commandCalls(words.at(0)) + QStringList(getInt(words.at(1)));
}

QStringList tell(const QStringList &words, int value)
{
    return QStringList(setInt(words.at(3), value)) + commandCalls(words.at(2));
}

int answerWith(const QStringList &words, int value)
{
    return answer(words.at(0).toLatin1().constData(),
                  name("%1=%2").arg(words.at(1)).arg(value).toLatin1().constData());
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

/// Collects the debug lines that are written while it lives.
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

/// Whether a sensor waits for a trigger or is synchronised, and how both are switched off.
class TriggerSyncTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { load({1, 2, 26, 29, 41}); }

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
    QCOMPARE(withoutErrorTexts(recorder.take()), tellInt("", "", 0));
    QVERIFY(sensor.disableSync() != NoError);
    QCOMPARE(withoutErrorTexts(recorder.take()), tellInt("", "", 0));
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
    if (code == 37)
        expected += commandCalls(name("Get_Info")) + QStringList(name("GetParameterDouble(\"SA_Range\")"));
    if (!triggerWords(code).isEmpty())
        expected += ask(triggerWords(code));
    if (!syncWords(code).isEmpty())
        expected += ask(syncWords(code));
    // Two calls read the sensor's information.
    const int opened = calls.indexOf(name("OpenSensor()"));
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
            QTest::newRow(qPrintable(name("%1 answers %2").arg(code).arg(value)))
                << code << value << (code == 28 ? value != 1 : value != 0);
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
            QTest::newRow(qPrintable(name("%1 answers %2").arg(code).arg(value))) << code << value << (value != 0);
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
    failCommand("Get_TriggerMode", -31, "no answer");
    SensorInstance sensor(TX270);
    QSignalSpy messages(&sensor, &SensorInstance::errorMessage);
    QString errorText;
    QCOMPARE(sensor.open(parameters(41, Serial), &errorText), NoError);
    QCOMPARE(errorText, name("no answer"));
    QCOMPARE(messages.size(), 1);
    QVERIFY(!sensor.isTriggerEnabled());
}

void TriggerSyncTest::failedCheckKeepsTheFlag()
{
    const int on = answer("Get_TriggerMode", "SA_TriggerMode=1");
    const int synchronised = answer("Get_SyncMode", "SA_SyncMode=2");
    Sensor sensor(26);
    QVERIFY(sensor->isTriggerEnabled());
    QVERIFY(sensor->isSyncEnabled());
    sondixsim::removeFault(on);
    sondixsim::removeFault(synchronised);
    failCommand("Get_TriggerMode", -31);
    failCommand("Get_SyncMode", -32);
    QCOMPARE(sensor->close(), NoError);
    QCOMPARE(sensor->open(parameters(26, Ethernet)), NoError);
    QVERIFY(sensor->isTriggerEnabled());
    QVERIFY(sensor->isSyncEnabled());
}

void TriggerSyncTest::failedChecksAreLogged()
{
    failCommand("Get_TriggerMode", -31, "first");
    failCommand("Get_SyncMode", -32, "second");
    const DebugLines lines;
    Sensor sensor(26);
    QCOMPARE(DebugLines::lines(), QStringList({name("SensorInstance::checkError: first"),
                                               name("SensorInstance::checkIfTriggerIsEnabled()::err -31"),
                                               name("SensorInstance::checkError: second"),
                                               name("SensorInstance::checkIfSyncIsEnabled()::err: -32")}));
}

void TriggerSyncTest::textOfAFailedTriggerCheckIsReplacedByTheSyncCheck()
{
    failCommand("Get_TriggerMode", -31);
    SensorInstance sensor(CC430);
    QString errorText;
    QCOMPARE(sensor.open(parameters(26, Ethernet), &errorText), NoError);
    QCOMPARE(errorText, QString());
}

void TriggerSyncTest::syncIsCheckedAfterAFailedTriggerCheck()
{
    failCommand("Get_TriggerMode", -31);
    answer("Get_SyncMode", "SA_SyncMode=1");
    Sensor sensor(26);
    QVERIFY(!sensor->isTriggerEnabled());
    QVERIFY(sensor->isSyncEnabled());
}

void TriggerSyncTest::adoptedOpenInstanceIsChecked()
{
    Sensor opened(26);
    answer("Get_TriggerMode", "SA_TriggerMode=1");
    answer("Get_SyncMode", "SA_SyncMode=1");
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
    const int off = code == 28 ? 1 : 0;
    if (!words.isEmpty())
        answerWith(words, off + 1);
    Sensor sensor(code);
    QCOMPARE(sensor->isTriggerEnabled(), !words.isEmpty());
    QString errorText = name("old");
    CallRecorder recorder;
    const ErrorCode result = sensor->disableTrigger(&errorText);
    const QStringList calls = withoutErrorTexts(recorder.take());
    QVERIFY(!sensor->isTriggerEnabled());
    if (words.isEmpty()) {
        QVERIFY(result != NoError);
        QVERIFY(errorText != name("old"));
        QCOMPARE(calls, tellInt("", "", 0));
    } else {
        QCOMPARE(result, NoError);
        QCOMPARE(errorText, QString());
        QCOMPARE(calls, tell(words, off));
    }
}

void TriggerSyncTest::refusedTriggerKeepsTheFlag()
{
    answer("Get_TriggerMode", "SA_TriggerMode=1");
    failCommand("Update_TriggerMode", -33, "locked");
    Sensor sensor(41);
    QString errorText;
    QCOMPARE(int(sensor->disableTrigger(&errorText)), -33);
    QCOMPARE(errorText, name("locked"));
    QVERIFY(sensor->isTriggerEnabled());
}

void TriggerSyncTest::triggerThatCannotBeStagedIsNotSet()
{
    answer("Get_TriggerMode", "SA_TriggerMode=1");
    Sensor sensor(41);
    failParameter("SP_TriggerMode", -34, "no room");
    CallRecorder recorder;
    QCOMPARE(int(sensor->disableTrigger()), -34);
    QCOMPARE(withoutErrorTexts(recorder.take()), QStringList(setInt(name("SP_TriggerMode"), 0)));
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
    QString errorText = name("old");
    CallRecorder recorder;
    const ErrorCode result = sensor->disableSync(&errorText);
    const QStringList calls = withoutErrorTexts(recorder.take());
    QVERIFY(!sensor->isSyncEnabled());
    if (words.isEmpty()) {
        QVERIFY(result != NoError);
        QVERIFY(errorText != name("old"));
        QCOMPARE(calls, tellInt("", "", 0));
        return;
    }
    QStringList expected = tell(words, 0);
    if (code == 29)
        expected.prepend(setInt(name("SP_SyncTermination"), 0));
    QCOMPARE(result, NoError);
    QCOMPARE(errorText, QString());
    QCOMPARE(calls, expected);
}

void TriggerSyncTest::failedTerminationDoesNotStopTheSync()
{
    answer("Get_SyncMode", "SA_SyncMode=1");
    Sensor sensor(29);
    failParameter("SP_SyncTermination", -35, "no termination");
    QSignalSpy messages(&*sensor, &SensorInstance::errorMessage);
    QString errorText;
    CallRecorder recorder;
    QCOMPARE(sensor->disableSync(&errorText), NoError);
    QCOMPARE(recorder.take(), QStringList({setInt(name("SP_SyncTermination"), 0), name("GetError(4096)")}) +
                                  tellInt("Set_SyncMode", "SP_SyncMode", 0));
    QCOMPARE(messages.size(), 1);
    QCOMPARE(messages.at(0).at(1).toString(), name("no termination"));
    QCOMPARE(errorText, QString());
    QVERIFY(!sensor->isSyncEnabled());
}

void TriggerSyncTest::refusedSyncKeepsTheFlag()
{
    answer("Get_SyncMode", "SA_SyncMode=1");
    failCommand("Set_SyncMode", -36, "locked");
    Sensor sensor(29);
    QString errorText;
    QCOMPARE(int(sensor->disableSync(&errorText)), -36);
    QCOMPARE(errorText, name("locked"));
    QVERIFY(sensor->isSyncEnabled());
}

void TriggerSyncTest::lostTriggerIsOffAndLostSyncKeepsItsFlag()
{
    answer("Get_TriggerMode", "SA_TriggerMode=1");
    answer("Get_SyncMode", "SA_SyncMode=1");
    Sensor sensor(26);
    QVERIFY(sensor->isTriggerEnabled());
    QVERIFY(sensor->isSyncEnabled());

    sensor.become(1);
    QVERIFY(!sensor->isTriggerEnabled());
    QVERIFY(sensor->isSyncEnabled());
    // How they were written is not forgotten.
    CallRecorder recorder;
    QCOMPARE(sensor->disableTrigger(), NoError);
    QCOMPARE(sensor->disableSync(), NoError);
    QCOMPARE(recorder.take(),
             tellInt("Update_TriggerMode", "SP_TriggerMode", 0) + tellInt("Set_SyncMode", "SP_SyncMode", 0));
    QVERIFY(!sensor->isSyncEnabled());
}

void TriggerSyncTest::closingKeepsTheFlags()
{
    answer("Get_TriggerMode", "SA_TriggerMode=1");
    answer("Get_SyncMode", "SA_SyncMode=1");
    Sensor sensor(26);
    QCOMPARE(sensor->close(), NoError);
    QVERIFY(sensor->isTriggerEnabled());
    QVERIFY(sensor->isSyncEnabled());
}

void TriggerSyncTest::sharedSyncIsThatOfTX220()
{
    Sensor sensor(26);
    QVERIFY(!sensor->isSyncSharedWithTrigger());
    sensor.become(2);
    QVERIFY(sensor->isSyncSharedWithTrigger());
    // Once known it is never taken back.
    sensor.become(26);
    QVERIFY(sensor->isSyncSharedWithTrigger());
}

QTEST_GUILESS_MAIN(TriggerSyncTest)
#include "tst_triggersync.moc"
