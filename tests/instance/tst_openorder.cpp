// SPDX-License-Identifier: MIT
#include "modesbench.h"

#include <QRegularExpression>
#include <QtTest>

using namespace SondixQt;
using namespace modesbench;

namespace {

QStringList opening(int code)
{
    return {name("SetParameterString(\"IP_Interface\", \"TCP/IP\")"),
            name("SetParameterString(\"IP_RemoteAddr\", \"192.168.7.%1\")").arg(code),
            name("SetParameterInt(\"CP_LogSensorInformation\", 1)"),
            name("OpenSensor()"),
            name("GetParameterString(\"SA_SensorInformation\", null)"),
            name("GetParameterString(\"SA_SensorInformation\", n)")};
}

QStringList openState()
{
    return askInt("Get_OpenState", "IA_SensorOpen");
}

QStringList range()
{
    return commandCalls(name("Get_Info")) + QStringList(name("GetParameterDouble(\"SA_Range\")"));
}

QStringList triggerAndSync()
{
    return askInt("Get_TriggerMode", "SA_TriggerMode") + askInt("Get_SyncMode", "SA_SyncMode");
}

/// The size of the sensor's information is its own affair.
QStringList withoutSizes(QStringList calls)
{
    calls.replaceInStrings(QRegularExpression(name("(\"SA_SensorInformation\", )\\d+")), name("\\1n"));
    return calls;
}

} // namespace

/// Every call that opening a sensor and adopting an open one make, in their order.
class OpenOrderTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { load({16, 26, 37, 43}); }

    void opens_data();
    void opens();
    void adopts_data();
    void adopts();
    void unansweredRangeFailsTheOpenAfterFillingTheTables();
    void missingRangeFailsTheOpenWithItsText();
    void unansweredRangeDoesNotKeepAnAdoptedSensorFromItsChecks();
    void failedOpenFillsNothing();
    void reopeningFillsAgain();
};

void OpenOrderTest::opens_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QStringList>("calls");
    QTest::newRow("video, trigger and sync") << 26 << opening(26) + triggerAndSync();
    QTest::newRow("video that depends on the range") << 37 << opening(37) + range() + triggerAndSync();
    QTest::newRow("trigger alone") << 43 << opening(43) + askInt("Get_Trigger", "SA_TrgMode");
    QTest::newRow("none of them") << 16 << opening(16);
}

void OpenOrderTest::opens()
{
    QFETCH(int, code);
    SensorInstance sensor{SensorType(code)};
    QString errorText = name("old");
    CallRecorder recorder;
    QCOMPARE(sensor.open(parameters(code, Ethernet), &errorText), NoError);
    QTEST(withoutSizes(recorder.take()), "calls");
    QCOMPARE(errorText, QString());
}

void OpenOrderTest::adopts_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QStringList>("calls");
    QTest::newRow("video, trigger and sync") << 26 << openState() + triggerAndSync();
    QTest::newRow("video that depends on the range") << 37 << openState() + range() + triggerAndSync();
    QTest::newRow("trigger alone") << 43 << openState() + askInt("Get_Trigger", "SA_TrgMode");
    QTest::newRow("none of them") << 16 << openState();
}

void OpenOrderTest::adopts()
{
    QFETCH(int, code);
    Sensor opened(code);
    CallRecorder recorder;
    const SensorInstance adopting(SensorType(code), opened->handle());
    QTEST(recorder.take(), "calls");
}

void OpenOrderTest::unansweredRangeFailsTheOpenAfterFillingTheTables()
{
    failCommand("Get_Info", -51, "no information");
    SensorInstance sensor(MC340);
    QString errorText = name("old");
    CallRecorder recorder;
    QCOMPARE(int(sensor.open(parameters(37, Ethernet), &errorText)), -51);
    QCOMPARE(withoutSizes(recorder.take()),
             opening(37) + commandCalls(name("Get_Info")) + QStringList(name("GetError(4096)")));
    QCOMPARE(errorText, name("no information"));
    QVERIFY(sensor.isOpen());

    recorder.take();
    QCOMPARE(sensor.disableTrigger(), NoError);
    QCOMPARE(sensor.disableSync(), NoError);
    QCOMPARE(recorder.take(),
             tellInt("Update_TriggerMode", "SP_TriggerMode", 0) + tellInt("Set_SyncMode", "SP_SyncMode", 0));
}

void OpenOrderTest::missingRangeFailsTheOpenWithItsText()
{
    failParameter("SA_Range", -54, "no range");
    SensorInstance sensor(MC340);
    QString errorText;
    QCOMPARE(int(sensor.open(parameters(37, Ethernet), &errorText)), -54);
    QCOMPARE(errorText, name("no range"));
    QVERIFY(sensor.isOpen());
}

void OpenOrderTest::unansweredRangeDoesNotKeepAnAdoptedSensorFromItsChecks()
{
    Sensor opened(37);
    failCommand("Get_Info", -51);
    CallRecorder recorder;
    const SensorInstance adopting(MC340, opened->handle());
    QCOMPARE(withoutErrorTexts(recorder.take()), openState() + commandCalls(name("Get_Info")) + triggerAndSync());
    QCOMPARE(adopting.getAvailableVideoSignalCount(), 0);
}

void OpenOrderTest::failedOpenFillsNothing()
{
    sondixsim::unplug("2026");
    SensorInstance sensor(CC430);
    CallRecorder recorder;
    QVERIFY(sensor.open(parameters(26, Ethernet)) != NoError);
    QCOMPARE(recorder.take(), opening(26).mid(0, 4) + QStringList(name("GetError(4096)")));
    QVERIFY(sensor.getAvailableMeasModi().isEmpty());
    QCOMPARE(sensor.getAvailableVideoSignalCount(), 0);
    QVERIFY(!sensor.isROISupported());
}

void OpenOrderTest::reopeningFillsAgain()
{
    Sensor sensor(26);
    sensor->SetVideoPixelCount(3);
    QCOMPARE(sensor->close(), NoError);
    CallRecorder recorder;
    QCOMPARE(sensor->open(parameters(26, Ethernet)), NoError);
    QCOMPARE(withoutSizes(recorder.take()), opening(26) + triggerAndSync());
    QCOMPARE(sensor->getVideoSignalPixelCount(), 512);
}

QTEST_GUILESS_MAIN(OpenOrderTest)
#include "tst_openorder.moc"
