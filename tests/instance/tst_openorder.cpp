// SPDX-License-Identifier: MIT
#include "modesbench.h"

#include <QRegularExpression>
#include <QtTest>

using namespace SondixQt;
using namespace modesbench;

namespace {

QStringList opening(int code)
{
    return {"SetParameterString(\"IP_Interface\", \"TCP/IP\")",
            QString("SetParameterString(\"IP_RemoteAddr\", \"192.168.7.%1\")").arg(code),
            "SetParameterInt(\"CP_LogSensorInformation\", 1)",
            "OpenSensor()",
            "GetParameterString(\"SA_SensorInformation\", null)",
            "GetParameterString(\"SA_SensorInformation\", n)"};
}

QStringList openState()
{
    return readInt("Get_OpenState", "IA_SensorOpen");
}

QStringList range()
{
    return commandCalls("Get_Info") + QStringList("GetParameterDouble(\"SA_Range\")");
}

QStringList triggerAndSync()
{
    return readInt("Get_TriggerMode", "SA_TriggerMode") + readInt("Get_SyncMode", "SA_SyncMode");
}

/// Removes the size of the sensor information, which is irrelevant here.
QStringList withoutInformationSizes(QStringList calls)
{
    calls.replaceInStrings(QRegularExpression("(\"SA_SensorInformation\", )\\d+"), QString("\\1n"));
    return calls;
}

} // namespace

/// The order of all calls when a sensor is opened and when an open one is adopted.
class OpenOrderTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { load({CP720, CC430, MC340, GenericKVBus}); }

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
    QTest::newRow("video, trigger and sync") << int(CC430) << opening(CC430) + triggerAndSync();
    QTest::newRow("video that depends on the range") << int(MC340) << opening(MC340) + range() + triggerAndSync();
    QTest::newRow("trigger alone") << int(GenericKVBus)
                                   << opening(GenericKVBus) + readInt("Get_Trigger", "SA_TrgMode");
    QTest::newRow("none of them") << int(CP720) << opening(CP720);
}

void OpenOrderTest::opens()
{
    QFETCH(int, code);
    SensorInstance sensor{SensorType(code)};
    QString errorText = "old";
    CallRecorder recorder;
    QCOMPARE(sensor.open(parameters(code, Ethernet), &errorText), NoError);
    QTEST(withoutInformationSizes(recorder.take()), "calls");
    QCOMPARE(errorText, QString());
}

void OpenOrderTest::adopts_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QStringList>("calls");
    QTest::newRow("video, trigger and sync") << int(CC430) << openState() + triggerAndSync();
    QTest::newRow("video that depends on the range") << int(MC340) << openState() + range() + triggerAndSync();
    QTest::newRow("trigger alone") << int(GenericKVBus) << openState() + readInt("Get_Trigger", "SA_TrgMode");
    QTest::newRow("none of them") << int(CP720) << openState();
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
    scriptCommandFailure("Get_Info", -51, "no information");
    SensorInstance sensor(MC340);
    QString errorText = "old";
    CallRecorder recorder;
    QCOMPARE(int(sensor.open(parameters(MC340, Ethernet), &errorText)), -51);
    QCOMPARE(withoutInformationSizes(recorder.take()),
             opening(MC340) + commandCalls("Get_Info") + QStringList("GetError(4096)"));
    QCOMPARE(errorText, "no information");
    QVERIFY(sensor.isOpen());

    recorder.take();
    QCOMPARE(sensor.disableTrigger(), NoError);
    QCOMPARE(sensor.disableSync(), NoError);
    QCOMPARE(recorder.take(),
             writeInt("Update_TriggerMode", "SP_TriggerMode", 0) + writeInt("Set_SyncMode", "SP_SyncMode", 0));
}

void OpenOrderTest::missingRangeFailsTheOpenWithItsText()
{
    scriptParameterFailure("SA_Range", -54, "no range");
    SensorInstance sensor(MC340);
    QString errorText;
    QCOMPARE(int(sensor.open(parameters(MC340, Ethernet), &errorText)), -54);
    QCOMPARE(errorText, "no range");
    QVERIFY(sensor.isOpen());
}

void OpenOrderTest::unansweredRangeDoesNotKeepAnAdoptedSensorFromItsChecks()
{
    Sensor opened(MC340);
    scriptCommandFailure("Get_Info", -51);
    CallRecorder recorder;
    const SensorInstance adopting(MC340, opened->handle());
    QCOMPARE(withoutErrorTexts(recorder.take()), openState() + commandCalls("Get_Info") + triggerAndSync());
    QCOMPARE(adopting.getAvailableVideoSignalCount(), 0);
}

void OpenOrderTest::failedOpenFillsNothing()
{
    sondixsim::unplug("2026");
    SensorInstance sensor(CC430);
    CallRecorder recorder;
    QVERIFY(sensor.open(parameters(CC430, Ethernet)) != NoError);
    QCOMPARE(recorder.take(), opening(CC430).mid(0, 4) + QStringList("GetError(4096)"));
    QVERIFY(sensor.getAvailableMeasModi().isEmpty());
    QCOMPARE(sensor.getAvailableVideoSignalCount(), 0);
    QVERIFY(!sensor.isROISupported());
}

void OpenOrderTest::reopeningFillsAgain()
{
    Sensor sensor(CC430);
    sensor->SetVideoPixelCount(3);
    QCOMPARE(sensor->close(), NoError);
    CallRecorder recorder;
    QCOMPARE(sensor->open(parameters(CC430, Ethernet)), NoError);
    QCOMPARE(withoutInformationSizes(recorder.take()), opening(CC430) + triggerAndSync());
    QCOMPARE(sensor->getVideoSignalPixelCount(), 512);
}

QTEST_GUILESS_MAIN(OpenOrderTest)
#include "tst_openorder.moc"
