// SPDX-License-Identifier: MIT
#include "modesbench.h"

#include <QtTest>

using namespace SondixQt;
using namespace modesbench;

namespace {

QStringList videoRefreshOfCC430()
{
    QStringList calls = askInt("Get_MeasureMode", "SA_MeasureMode") + commandCalls(name("Get_OutputVideo_ETH"));
    for (const char *stem : {"Raw", "Dark", "Light", "DarkTable", "LightTable"})
        calls.append(getInt(name("SA_OutputVideo%1_ETH").arg(name(stem))));
    return calls;
}

QStringList videoRefreshOfTX260()
{
    return askInt("Get_MeasureMode", "SA_MeasureMode") + commandCalls(name("Get_OutputVideo_ETH")) +
           QStringList{getInt(name("SA_OutputVideoRaw_ETH")), getInt(name("SA_OutputVideoCorr_ETH"))};
}

QStringList modesOf(const SensorInstance &sensor)
{
    QStringList modes;
    for (const QPair<QString, int> &mode : sensor.getAvailableMeasModi())
        modes.append(name("%1=%2").arg(mode.first).arg(mode.second));
    return modes;
}

const QStringList confocalModes = {name("Distance=0"), name("Thickness=1"), name("VideoStream=4")};
const QStringList triangulationModes = {name("Distance diffuse=0"), name("Distance direct=1"), name("Thickness=2"),
                                        name("Video=3")};

} // namespace

/// Which modes a sensor offers, and how it is switched between them.
class MeasurementModesTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { load({26, 29, 41}); }

    void nothingIsKnownBeforeTheSensorIsOpen();
    void modesOfEveryType_data();
    void modesOfEveryType();
    void modesAreThoseOfTheSensorThatWasOpenedLast();
    void closingKeepsTheModes();

    void settingAModeAsksForTheVideoAfterwards();
    void modeOfASensorWithoutVideoIsSetOnly();
    void modeThatCannotBeStagedIsNotSet();
    void videoIsAskedForAfterARefusedMode();
    void anyNumberIsPassedOn();
    void lastAnswerDecidesTheFlags();

    void measuringIsEnabledOnSwitchedModels_data();
    void measuringIsEnabledOnSwitchedModels();
    void measuringNeedsNothingOnOtherModels_data();
    void measuringNeedsNothingOnOtherModels();
    void enabledMeasuringOutlivesTheSensorsAnswer();
    void refusedMeasuringIsNotEnabled();
    void busVariantIsEnabledButListsNoModes();
};

void MeasurementModesTest::nothingIsKnownBeforeTheSensorIsOpen()
{
    const SensorInstance sensor(CC430);
    QVERIFY(sensor.getAvailableMeasModi().isEmpty());
    QVERIFY(!sensor.isMeasModeEnabled());
}

void MeasurementModesTest::modesOfEveryType_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QStringList>("modes");
    for (const int code : models().keys()) {
        const bool confocal = code == 26 || code == 30 || code == 39 || code == 44;
        QTest::newRow(QByteArray::number(code).constData()) << code
                                                            << (code == 29 ? triangulationModes
                                                                : confocal ? confocalModes
                                                                           : QStringList());
    }
    QTest::newRow("bus variant of CC430") << 10026 << QStringList();
    QTest::newRow("bus variant of TX260") << 10029 << QStringList();
}

void MeasurementModesTest::modesOfEveryType()
{
    QFETCH(int, code);
    load({code});
    Sensor sensor(code);
    QTEST(modesOf(*sensor), "modes");
}

void MeasurementModesTest::modesAreThoseOfTheSensorThatWasOpenedLast()
{
    Sensor sensor(29);
    QCOMPARE(modesOf(*sensor), triangulationModes);
    sensor.become(26);
    QCOMPARE(modesOf(*sensor), confocalModes);
    sensor.become(41);
    QCOMPARE(modesOf(*sensor), QStringList());
}

void MeasurementModesTest::closingKeepsTheModes()
{
    Sensor sensor(26);
    QCOMPARE(sensor->enableMeasMode(), NoError);
    QCOMPARE(sensor->close(), NoError);
    QCOMPARE(modesOf(*sensor), confocalModes);
    QVERIFY(sensor->isMeasModeEnabled());
}

void MeasurementModesTest::settingAModeAsksForTheVideoAfterwards()
{
    Sensor sensor(26);
    QString errorText = name("old");
    CallRecorder recorder;
    QCOMPARE(sensor->setMeasurementMode(4, &errorText), NoError);
    QCOMPARE(recorder.take(), tellInt("Set_MeasureMode", "SP_MeasureMode", 4) + videoRefreshOfCC430());
    QCOMPARE(errorText, QString());
    QVERIFY(sensor->isVideoModeEnabled());
    QVERIFY(sensor->isMeasModeEnabled());
}

void MeasurementModesTest::modeOfASensorWithoutVideoIsSetOnly()
{
    Sensor sensor(41);
    CallRecorder recorder;
    QCOMPARE(sensor->setMeasurementMode(0), NoError);
    QCOMPARE(recorder.take(), tellInt("Set_MeasureMode", "SP_MeasureMode", 0));
}

void MeasurementModesTest::modeThatCannotBeStagedIsNotSet()
{
    Sensor sensor(26);
    failParameter("SP_MeasureMode", -41, "no room");
    QString errorText;
    CallRecorder recorder;
    QCOMPARE(int(sensor->setMeasurementMode(1, &errorText)), -41);
    QCOMPARE(errorText, name("no room"));
    QCOMPARE(withoutErrorTexts(recorder.take()),
             QStringList(setInt(name("SP_MeasureMode"), 1)) + videoRefreshOfCC430());
}

void MeasurementModesTest::videoIsAskedForAfterARefusedMode()
{
    Sensor sensor(26);
    failCommand("Set_MeasureMode", -42, "not now");
    answer("Get_MeasureMode", "SA_MeasureMode=4");
    answer("Get_OutputVideo_ETH", "SA_OutputVideoDark_ETH=1");
    QString errorText;
    CallRecorder recorder;
    QCOMPARE(int(sensor->setMeasurementMode(1, &errorText)), -42);
    QCOMPARE(errorText, name("not now"));
    QCOMPARE(withoutErrorTexts(recorder.take()),
             tellInt("Set_MeasureMode", "SP_MeasureMode", 1) + videoRefreshOfCC430());
    QVERIFY(sensor->isVideoModeEnabled());
    QCOMPARE(sensor->getEnabledVideoSignalCount(), 1);
}

void MeasurementModesTest::anyNumberIsPassedOn()
{
    Sensor sensor(41);
    CallRecorder recorder;
    sensor->setMeasurementMode(-7);
    QCOMPARE(withoutErrorTexts(recorder.take()), tellInt("Set_MeasureMode", "SP_MeasureMode", -7));
}

void MeasurementModesTest::lastAnswerDecidesTheFlags()
{
    Sensor sensor(29);
    answer("Get_MeasureMode", "SA_MeasureMode=3");
    QCOMPARE(sensor->setMeasurementMode(0), NoError);
    QVERIFY(sensor->isVideoModeEnabled());
    QVERIFY(!sensor->isMeasModeEnabled());
}

void MeasurementModesTest::measuringIsEnabledOnSwitchedModels_data()
{
    QTest::addColumn<int>("code");
    for (const int code : {26, 29, 30, 39, 44})
        QTest::newRow(QByteArray::number(code).constData()) << code;
}

void MeasurementModesTest::measuringIsEnabledOnSwitchedModels()
{
    QFETCH(int, code);
    load({code});
    Sensor sensor(code);
    QVERIFY(!sensor->isMeasModeEnabled());
    CallRecorder recorder;
    QCOMPARE(sensor->enableMeasMode(), NoError);
    QCOMPARE(recorder.take(), tellInt("Set_MeasureMode", "SP_MeasureMode", 0) +
                                  (code == 29 ? videoRefreshOfTX260() : videoRefreshOfCC430()));
    QVERIFY(sensor->isMeasModeEnabled());
    QVERIFY(!sensor->isVideoModeEnabled());
}

void MeasurementModesTest::measuringNeedsNothingOnOtherModels_data()
{
    QTest::addColumn<int>("code");
    for (const int code : models().keys()) {
        if (code != 26 && code != 29 && code != 30 && code != 39 && code != 44)
            QTest::newRow(QByteArray::number(code).constData()) << code;
    }
    QTest::newRow("file") << int(File);
    QTest::newRow("no sensor") << int(NoSensor);
}

void MeasurementModesTest::measuringNeedsNothingOnOtherModels()
{
    QFETCH(int, code);
    SensorInstance sensor{SensorType(code)};
    QString errorText = name("old");
    CallRecorder recorder;
    QCOMPARE(sensor.enableMeasMode(&errorText), NoError);
    QCOMPARE(recorder.take(), QStringList());
    QCOMPARE(errorText, name("old"));
    QVERIFY(!sensor.isMeasModeEnabled());
}

void MeasurementModesTest::enabledMeasuringOutlivesTheSensorsAnswer()
{
    Sensor sensor(29);
    answer("Get_MeasureMode", "SA_MeasureMode=3");
    QCOMPARE(sensor->enableMeasMode(), NoError);
    QVERIFY(sensor->isMeasModeEnabled());
    QVERIFY(sensor->isVideoModeEnabled());
}

void MeasurementModesTest::refusedMeasuringIsNotEnabled()
{
    Sensor sensor(29);
    answer("Get_MeasureMode", "SA_MeasureMode=3");
    failCommand("Set_MeasureMode", -42, "not now");
    QString errorText;
    QCOMPARE(int(sensor->enableMeasMode(&errorText)), -42);
    QCOMPARE(errorText, name("not now"));
    QVERIFY(!sensor->isMeasModeEnabled());
}

void MeasurementModesTest::busVariantIsEnabledButListsNoModes()
{
    Sensor sensor(10026);
    CallRecorder recorder;
    QCOMPARE(sensor->enableMeasMode(), NoError);
    QCOMPARE(recorder.take(), tellInt("Set_MeasureMode", "SP_MeasureMode", 0));
    QVERIFY(sensor->isMeasModeEnabled());
    QCOMPARE(modesOf(*sensor), QStringList());
}

QTEST_GUILESS_MAIN(MeasurementModesTest)
#include "tst_measurementmodes.moc"
