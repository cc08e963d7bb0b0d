// SPDX-License-Identifier: MIT
#include <SondixQt/SpecialSensorInstance>
#include <SondixSimulator/control.h>

#include <QtTest>

using namespace SondixQt;
using Parameters = QMap<QString, QVariant>;

namespace {

Parameters at(int port)
{
    return {{"IP_Interface", "RS232"}, {"IP_Port", port}};
}

int average(SensorInstance &sensor)
{
    int value = -1;
    if (sensor.sendCommandGetInt("Get_Average", "SA_Average", value) != NoError)
        return -1;
    return value;
}

double rate(SensorInstance &sensor)
{
    double kilohertz = -1.0;
    return sensor.getSampleRateInKhz(&kilohertz) == NoError ? kilohertz : -1.0;
}

/// Whether the sensor still measures after a command that only reads.
bool measuresAfterACommand(SensorInstance &sensor)
{
    sensor.sendCommand("Get_Info");
    QVector<double> values;
    sensor.transferData(values);
    sondixsim::advance(1.0);
    return sensor.transferData(values) == NoError && !values.isEmpty();
}

} // namespace

/// Use of the RG models on the bench.
class RGSensorsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void stopTrackingConsumesAParameterStagedBefore();
    void mapFormStagesAfterStopTracking();
    void rateOfRG52xIsKnownAfterACommand();
    void rateOfRG53xIsRightAfterACommand();
    void rateIsThatOfTheSettingsAtOpening();
    void twoModelsNeedTheirOwnClass();
    void otherModelsNeedNone_data();
    void otherModelsNeedNone();
};

void RGSensorsTest::init()
{
    sondixsim::loadBench(R"({ "sensors": [
        { "model": "RG52x", "serialNumber": "1", "place": { "interface": "RS232", "port": "1" },
          "settings": { "Autostart": { "SA_AutostartCommand": 0 } }, "info": { "SA_MeasureTime": 1 } },
        { "model": "RG53x", "serialNumber": "2", "place": { "interface": "RS232", "port": "2" },
          "settings": { "Autostart": { "SA_AutostartCommand": 5 } },
          "info": { "SA_MeasFrequency": 2000, "SA_Average": 20 } },
        { "model": "RG4xx", "serialNumber": "3", "place": { "interface": "RS232", "port": "3" }, "rate": 10.0 },
        { "model": "RG540", "serialNumber": "4", "place": { "interface": "RS232", "port": "4" } }
    ] })");
    sondixsim::useVirtualClock();
}

void RGSensorsTest::stopTrackingConsumesAParameterStagedBefore()
{
    SpecialSensorInstanceRG531 sensor;
    QCOMPARE(sensor.open(at(2)), NoError);
    QVERIFY(sensor.sendCommand("Set_Average", "SP_Average", 50) != NoError);
    QCOMPARE(average(sensor), 20);
}

void RGSensorsTest::mapFormStagesAfterStopTracking()
{
    SpecialSensorInstanceRG531 sensor;
    QCOMPARE(sensor.open(at(2)), NoError);
    QCOMPARE(sensor.sendCommand("Set_Average", {{"SP_Average", 50}}), NoError);
    QCOMPARE(average(sensor), 50);
}

void RGSensorsTest::rateOfRG52xIsKnownAfterACommand()
{
    SpecialSensorInstanceRG52x sensor;
    QCOMPARE(sensor.open(at(1)), NoError);
    TransmittedDataInfo info;
    QCOMPARE(sensor.transmittedDataInfo(info), NoError);
    QCOMPARE(rate(sensor), 0.0);
    QCOMPARE(sensor.sendCommand("Get_Info"), NoError);
    QCOMPARE(sensor.getTrackingMode(), 0);
    QCOMPARE(rate(sensor), 1.0 / 240.0);

    SpecialSensorInstanceRG52x preset;
    QCOMPARE(sensor.close(), NoError);
    QCOMPARE(preset.open(at(1)), NoError);
    preset.setTrackingMode(0);
    QCOMPARE(rate(preset), 1.0 / 240.0);
}

void RGSensorsTest::rateOfRG53xIsRightAfterACommand()
{
    SpecialSensorInstanceRG531 sensor;
    QCOMPARE(sensor.open(at(2)), NoError);
    QCOMPARE(rate(sensor), 0.1);
    QCOMPARE(sensor.sendCommand("Get_Info"), NoError);
    QCOMPARE(rate(sensor), 0.004);
}

void RGSensorsTest::rateIsThatOfTheSettingsAtOpening()
{
    SpecialSensorInstanceRG531 sensor;
    QCOMPARE(sensor.open(at(2)), NoError);
    QCOMPARE(sensor.sendCommand("Set_Average", {{"SP_Average", 50}}), NoError);
    QCOMPARE(rate(sensor), 0.004);
    sensor.addInfoParameters(Parameters{{"SA_Average", 50}}, 1);
    QCOMPARE(rate(sensor), 0.0016);
}

void RGSensorsTest::twoModelsNeedTheirOwnClass()
{
    for (const SensorType model : {RG52x, RG53x}) {
        SensorInstance plain(model);
        QCOMPARE(plain.open(at(model == RG52x ? 1 : 2)), NoError);
        QVERIFY(!measuresAfterACommand(plain));
        QCOMPARE(plain.close(), NoError);
    }
    SpecialSensorInstanceRG52x first;
    QCOMPARE(first.sensorType(), RG52x);
    QCOMPARE(first.open(at(1)), NoError);
    QVERIFY(measuresAfterACommand(first));
    SpecialSensorInstanceRG531 second;
    QCOMPARE(second.sensorType(), RG53x);
    QCOMPARE(second.open(at(2)), NoError);
    QVERIFY(measuresAfterACommand(second));
}

void RGSensorsTest::otherModelsNeedNone_data()
{
    QTest::addColumn<SensorType>("model");
    QTest::addColumn<int>("port");
    QTest::newRow("RG4xx") << RG4xx << 3;
    QTest::newRow("RG540") << RG540 << 4;
}

void RGSensorsTest::otherModelsNeedNone()
{
    QFETCH(SensorType, model);
    QFETCH(int, port);
    SensorInstance sensor(model);
    QCOMPARE(sensor.open(at(port)), NoError);
    QVERIFY(measuresAfterACommand(sensor));
}

QTEST_GUILESS_MAIN(RGSensorsTest)
#include "tst_rgsensors.moc"
