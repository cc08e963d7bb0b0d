// SPDX-License-Identifier: MIT
#include "modesbench.h"

#include <QtTest>

using namespace SondixQt;
using namespace modesbench;

namespace {

QStringList videoRefreshOfCC430()
{
    QStringList calls = readInt("Get_MeasureMode", "SA_MeasureMode") + commandCalls("Get_OutputVideo_ETH");
    for (const char *stem : {"Raw", "Dark", "Light", "DarkTable", "LightTable"})
        calls.append(getInt(QString("SA_OutputVideo%1_ETH").arg(QString(stem))));
    return calls;
}

QStringList videoRefreshOfTX260()
{
    return readInt("Get_MeasureMode", "SA_MeasureMode") + commandCalls("Get_OutputVideo_ETH") +
           QStringList{getInt("SA_OutputVideoRaw_ETH"), getInt("SA_OutputVideoCorr_ETH")};
}

QStringList modesOf(const SensorInstance &sensor)
{
    QStringList modes;
    for (const QPair<QString, int> &mode : sensor.getAvailableMeasModi())
        modes.append(QString("%1=%2").arg(mode.first).arg(mode.second));
    return modes;
}

const QStringList confocalModes = {"Distance=0", "Thickness=1", "VideoStream=4"};
const QStringList triangulationModes = {"Distance diffuse=0", "Distance direct=1", "Thickness=2", "Video=3"};

} // namespace

/// The available measuring modes and switching between them.
class MeasurementModesTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { load({CC430, TX260, TX270}); }

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
        const bool confocal = code == CC430 || code == CC440 || code == CC450 || code == CC460;
        QTest::newRow(QByteArray::number(code).constData()) << code
                                                            << (code == TX260 ? triangulationModes
                                                                : confocal    ? confocalModes
                                                                              : QStringList());
    }
    QTest::newRow("bus variant of CC430") << 10000 + CC430 << QStringList();
    QTest::newRow("bus variant of TX260") << 10000 + TX260 << QStringList();
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
    Sensor sensor(TX260);
    QCOMPARE(modesOf(*sensor), triangulationModes);
    sensor.become(CC430);
    QCOMPARE(modesOf(*sensor), confocalModes);
    sensor.become(TX270);
    QCOMPARE(modesOf(*sensor), QStringList());
}

void MeasurementModesTest::closingKeepsTheModes()
{
    Sensor sensor(CC430);
    QCOMPARE(sensor->enableMeasMode(), NoError);
    QCOMPARE(sensor->close(), NoError);
    QCOMPARE(modesOf(*sensor), confocalModes);
    QVERIFY(sensor->isMeasModeEnabled());
}

void MeasurementModesTest::settingAModeAsksForTheVideoAfterwards()
{
    Sensor sensor(CC430);
    QString errorText = "old";
    CallRecorder recorder;
    QCOMPARE(sensor->setMeasurementMode(4, &errorText), NoError);
    QCOMPARE(recorder.take(), writeInt("Set_MeasureMode", "SP_MeasureMode", 4) + videoRefreshOfCC430());
    QCOMPARE(errorText, QString());
    QVERIFY(sensor->isVideoModeEnabled());
    QVERIFY(sensor->isMeasModeEnabled());
}

void MeasurementModesTest::modeOfASensorWithoutVideoIsSetOnly()
{
    Sensor sensor(TX270);
    CallRecorder recorder;
    QCOMPARE(sensor->setMeasurementMode(0), NoError);
    QCOMPARE(recorder.take(), writeInt("Set_MeasureMode", "SP_MeasureMode", 0));
}

void MeasurementModesTest::modeThatCannotBeStagedIsNotSet()
{
    Sensor sensor(CC430);
    scriptParameterFailure("SP_MeasureMode", -41, "no room");
    QString errorText;
    CallRecorder recorder;
    QCOMPARE(int(sensor->setMeasurementMode(1, &errorText)), -41);
    QCOMPARE(errorText, "no room");
    QCOMPARE(withoutErrorTexts(recorder.take()), QStringList(setInt("SP_MeasureMode", 1)) + videoRefreshOfCC430());
}

void MeasurementModesTest::videoIsAskedForAfterARefusedMode()
{
    Sensor sensor(CC430);
    scriptCommandFailure("Set_MeasureMode", -42, "not now");
    scriptAnswer("Get_MeasureMode", "SA_MeasureMode=4");
    scriptAnswer("Get_OutputVideo_ETH", "SA_OutputVideoDark_ETH=1");
    QString errorText;
    CallRecorder recorder;
    QCOMPARE(int(sensor->setMeasurementMode(1, &errorText)), -42);
    QCOMPARE(errorText, "not now");
    QCOMPARE(withoutErrorTexts(recorder.take()),
             writeInt("Set_MeasureMode", "SP_MeasureMode", 1) + videoRefreshOfCC430());
    QVERIFY(sensor->isVideoModeEnabled());
    QCOMPARE(sensor->getEnabledVideoSignalCount(), 1);
}

void MeasurementModesTest::anyNumberIsPassedOn()
{
    Sensor sensor(TX270);
    CallRecorder recorder;
    sensor->setMeasurementMode(-7);
    QCOMPARE(withoutErrorTexts(recorder.take()), writeInt("Set_MeasureMode", "SP_MeasureMode", -7));
}

void MeasurementModesTest::lastAnswerDecidesTheFlags()
{
    Sensor sensor(TX260);
    scriptAnswer("Get_MeasureMode", "SA_MeasureMode=3");
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
    QCOMPARE(recorder.take(), writeInt("Set_MeasureMode", "SP_MeasureMode", 0) +
                                  (code == TX260 ? videoRefreshOfTX260() : videoRefreshOfCC430()));
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
    QString errorText = "old";
    CallRecorder recorder;
    QCOMPARE(sensor.enableMeasMode(&errorText), NoError);
    QCOMPARE(recorder.take(), QStringList());
    QCOMPARE(errorText, "old");
    QVERIFY(!sensor.isMeasModeEnabled());
}

void MeasurementModesTest::enabledMeasuringOutlivesTheSensorsAnswer()
{
    Sensor sensor(TX260);
    scriptAnswer("Get_MeasureMode", "SA_MeasureMode=3");
    QCOMPARE(sensor->enableMeasMode(), NoError);
    QVERIFY(sensor->isMeasModeEnabled());
    QVERIFY(sensor->isVideoModeEnabled());
}

void MeasurementModesTest::refusedMeasuringIsNotEnabled()
{
    Sensor sensor(TX260);
    scriptAnswer("Get_MeasureMode", "SA_MeasureMode=3");
    scriptCommandFailure("Set_MeasureMode", -42, "not now");
    QString errorText;
    QCOMPARE(int(sensor->enableMeasMode(&errorText)), -42);
    QCOMPARE(errorText, "not now");
    QVERIFY(!sensor->isMeasModeEnabled());
}

void MeasurementModesTest::busVariantIsEnabledButListsNoModes()
{
    Sensor sensor(10000 + CC430);
    CallRecorder recorder;
    QCOMPARE(sensor->enableMeasMode(), NoError);
    QCOMPARE(recorder.take(), writeInt("Set_MeasureMode", "SP_MeasureMode", 0));
    QVERIFY(sensor->isMeasModeEnabled());
    QCOMPARE(modesOf(*sensor), QStringList());
}

QTEST_GUILESS_MAIN(MeasurementModesTest)
#include "tst_measurementmodes.moc"
