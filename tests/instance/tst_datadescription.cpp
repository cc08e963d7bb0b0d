// SPDX-License-Identifier: MIT
#include "support/callrecorder.h"
#include "support/scripting.h"
#include "support/testbench.h"

#include <SondixQt/TransmittedDataInfo>

using namespace SondixQt;

class TestDataDescription : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void everyFieldIsRead();
    void missingAnswersReadAsNothing();
    void callsOfADescription();
    void failureLeavesTheDescription();
    void framesWithoutValues_data();
    void framesWithoutValues();
    void spoiltCountIsBounded();
    void unusualNumbers();
    void eachCallDescribesAnew();
    void descriptionOfASimulatedSensor();

    void inertialSignals_data();
    void inertialSignals();
    void inertialNamesOfOtherTypesStay_data();
    void inertialNamesOfOtherTypesStay();
    void channelCount();
};

namespace {

const char *const query = "Get_TransmittedDataInfo";

TransmittedDataInfo describeAnswer(SensorType type, const QByteArray &answer)
{
    SensorInstance instance(type);
    const int fault = scriptAnswer(query, answer);
    TransmittedDataInfo info;
    if (instance.transmittedDataInfo(info) != NoError)
        QTest::qFail("the description failed", __FILE__, __LINE__);
    sondixsim::removeFault(fault);
    return info;
}

QByteArray wholeSignal(int number)
{
    const QByteArray n = QByteArray::number(number);
    const QByteArray d = QByteArray::number(number * 100);
    return "IA_Index" + n + "=" + d + "1 IA_Raw_Name" + n + "=\"raw " + n + "\" IA_Scaled_Name" + n +
           "=\"scaled " + n + "\" IA_Raw_RangeMin" + n + "=" + d + "2.5 IA_Raw_RangeMax" + n + "=" + d +
           "3.5 IA_Scaled_RangeMin" + n + "=-" + d + "4.5 IA_Scaled_RangeMax" + n + "=" + d + "5.5 IA_ViewRange" +
           n + "=" + d + "6.5 IA_Raw_Unit" + n + "=\"digit " + n + "\" IA_Scaled_Unit" + n + "=\"mm " + n +
           "\" IA_Raw_Datarate" + n + "=" + d + "7.5 IA_Scaled_Datarate" + n + "=" + d + "8.5 IA_MajorSignal" + n +
           "=" + QByteArray::number(number % 2) + " IA_AdditionalInfo" + n + "=\"info " + n + "\" ";
}

} // namespace

void TestDataDescription::init()
{
    loadTestBench();
}

void TestDataDescription::cleanup()
{
    sondixsim::clearFaults();
}

void TestDataDescription::everyFieldIsRead()
{
    QByteArray answer =
        "IA_Datarate=2500.5 IA_ValuesPerFrame=11 IA_MaxValuesPerFrame=20 IA_VideoSignalsPerFrame=3 ";
    for (int number = 1; number <= 12; ++number)
        answer += wholeSignal(number);
    const TransmittedDataInfo info = describeAnswer(SensorType::TX270, answer);
    QCOMPARE(info.datarate, 2500.5);
    QCOMPARE(info.valuesPerFrame, 11);
    QCOMPARE(info.maxValuesPerFrame, 20);
    QCOMPARE(info.videoSignalCount, 0);
    QCOMPARE(info.reserved, -1);
    QVERIFY(info.videoSignals.isEmpty());
    QCOMPARE(info.signals.size(), 11);
    for (int number = 1; number <= 11; ++number) {
        const SignalInfo &signal = info.signals.at(number - 1);
        const double hundreds = number * 100;
        QCOMPARE(signal.index, number * 1000 + 1);
        QCOMPARE(signal.rawName, QString("raw %1").arg(number));
        QCOMPARE(signal.scaledName, QString("scaled %1").arg(number));
        QCOMPARE(signal.rawRangeMin, hundreds * 10 + 2.5);
        QCOMPARE(signal.rawRangeMax, hundreds * 10 + 3.5);
        QCOMPARE(signal.scaledRangeMin, -(hundreds * 10 + 4.5));
        QCOMPARE(signal.scaledRangeMax, hundreds * 10 + 5.5);
        QCOMPARE(signal.viewRange, hundreds * 10 + 6.5);
        QCOMPARE(signal.rawUnit, QString("digit %1").arg(number));
        QCOMPARE(signal.scaledUnit, QString("mm %1").arg(number));
        QCOMPARE(signal.rawDatarate, hundreds * 10 + 7.5);
        QCOMPARE(signal.scaledDatarate, hundreds * 10 + 8.5);
        QCOMPARE(signal.majorSignal, number % 2 == 1);
        QCOMPARE(signal.additionalInfo, QString("info %1").arg(number));
    }
}

void TestDataDescription::missingAnswersReadAsNothing()
{
    const TransmittedDataInfo info = describeAnswer(SensorType::TX270, "IA_ValuesPerFrame=2 IA_Index2=7");
    QCOMPARE(info.datarate, 0.0);
    QCOMPARE(info.maxValuesPerFrame, 0);
    QCOMPARE(info.signals.size(), 2);
    SignalInfo expected;
    QCOMPARE(info.signals.at(0), expected);
    expected.index = 7;
    QCOMPARE(info.signals.at(1), expected);

    const TransmittedDataInfo nothing = describeAnswer(SensorType::TX270, "");
    QCOMPARE(nothing.valuesPerFrame, 0);
    QVERIFY(nothing.signals.isEmpty());
}

void TestDataDescription::callsOfADescription()
{
    SensorInstance instance(SensorType::TX270);
    scriptAnswer(query, "IA_ValuesPerFrame=1");
    CallRecorder recorder;
    TransmittedDataInfo info;
    QString errorText = "old";
    QCOMPARE(instance.transmittedDataInfo(info, &errorText), NoError);
    QCOMPARE(errorText, QString());
    const QStringList calls = recorder.take();
    QCOMPARE(calls.mid(0, 3), commandCalls(query) + QStringList("GetParameters(null)"));
    QCOMPARE(calls.size(), 4);
    QVERIFY(calls.at(3).startsWith("GetParameters("));
}

void TestDataDescription::failureLeavesTheDescription()
{
    SensorInstance instance(SensorType::TX270);
    const TransmittedDataInfo before(12.5, 3, 4, 5, {SignalInfo()}, {VideoInfo()});
    TransmittedDataInfo info = before;
    QSignalSpy messages(&instance, &SensorInstance::errorMessage);
    QString errorText;
    scriptCommandFailure(query, PartialFailure26);
    QCOMPARE(instance.transmittedDataInfo(info, &errorText), PartialFailure26);
    QCOMPARE(errorText, QString(scriptedFailure));
    QCOMPARE(messages.size(), 1);
    QCOMPARE(info, before);
    QCOMPARE(info.datarate, 12.5);
    QCOMPARE(info.maxValuesPerFrame, 4);
    QCOMPARE(info.videoSignalCount, 5);
}

void TestDataDescription::framesWithoutValues_data()
{
    QTest::addColumn<int>("values");
    QTest::newRow("none") << 0;
    QTest::newRow("negative") << -1;
    QTest::newRow("most negative") << std::numeric_limits<int>::min();
}

void TestDataDescription::framesWithoutValues()
{
    QFETCH(int, values);
    const TransmittedDataInfo info = describeAnswer(
        SensorType::TX270, "IA_ValuesPerFrame=" + QByteArray::number(values) + " " + wholeSignal(1));
    QCOMPARE(info.valuesPerFrame, values);
    QVERIFY(info.signals.isEmpty());
}

void TestDataDescription::spoiltCountIsBounded()
{
    const TransmittedDataInfo info =
        describeAnswer(SensorType::TX270, "IA_ValuesPerFrame=2147483647 " + wholeSignal(1));
    QCOMPARE(info.valuesPerFrame, 2147483647);
    QCOMPARE(info.signals.size(), 16384);
    QCOMPARE(info.signals.at(0).index, 1001);
}

void TestDataDescription::unusualNumbers()
{
    const TransmittedDataInfo info = describeAnswer(
        SensorType::TX270, "IA_Datarate=1.7e308 IA_ValuesPerFrame=1 IA_MaxValuesPerFrame=1.5e300 "
                           "IA_Index1=-3.5e99 IA_MajorSignal1=2 IA_ViewRange1=\"12.5\" IA_Raw_Name1=17");
    QCOMPARE(info.datarate, 1.7e308);
    QCOMPARE(info.maxValuesPerFrame, 0);
    QCOMPARE(info.signals.size(), 1);
    QCOMPARE(info.signals.at(0).index, 0);
    QCOMPARE(info.signals.at(0).majorSignal, true);
    QCOMPARE(info.signals.at(0).viewRange, 12.5);
    QCOMPARE(info.signals.at(0).rawName, "17");
}

void TestDataDescription::eachCallDescribesAnew()
{
    SensorInstance instance(SensorType::TX270);
    TransmittedDataInfo info;
    int fault = scriptAnswer(query, "IA_ValuesPerFrame=3 " + wholeSignal(1));
    QCOMPARE(instance.transmittedDataInfo(info), NoError);
    QCOMPARE(info.signals.size(), 3);
    sondixsim::removeFault(fault);
    fault = scriptAnswer(query, "IA_ValuesPerFrame=1");
    QCOMPARE(instance.transmittedDataInfo(info), NoError);
    QCOMPARE(info.valuesPerFrame, 1);
    QCOMPARE(info.signals, QVector<SignalInfo>{SignalInfo()});
    sondixsim::removeFault(fault);
}

void TestDataDescription::descriptionOfASimulatedSensor()
{
    OpenSensorInstance sensor(SensorType::TX270);
    TransmittedDataInfo info;
    QCOMPARE(sensor->transmittedDataInfo(info), NoError);
    QVERIFY(info.valuesPerFrame > 0);
    QCOMPARE(info.signals.size(), info.valuesPerFrame);
    QVERIFY(!info.signals.first().scaledName.isEmpty());
    QCOMPARE(info.signals.first().scaledUnit, "mm");
}

void TestDataDescription::inertialSignals_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("position");
    QTest::addColumn<QString>("reported");
    QTest::addColumn<QString>("scaledName");
    QTest::addColumn<QString>("unit");
    const auto add = [](int type, int position, const char *reported, const char *scaledName, const char *unit) {
        QTest::newRow((QByteArray::number(type) + ' ' + QByteArray::number(position) + ' ' + reported).constData())
            << type << position << QString(reported) << QString(scaledName) << QString(unit);
    };
    constexpr int gy310 = 30043;
    constexpr int gy330 = 40043;
    add(gy330, 1, "Acceleration X (g)", "Acceleration X ", "g");
    add(gy330, 1, "Angle", "Angle", "g");
    add(gy330, 1, "Switch X (g)", "Acceleration X ", "SWITCH");
    add(gy330, 1, "Switch and Switch (g)(h)", "Acceleration and Acceleration ", "SWITCH");
    add(gy330, 2, "SWITCH X (g)", "SWITCH X ", "SWITCH");
    add(gy330, 2, "switch X", "switch X", "SWITCH");
    add(gy330, 3, "Signal off (x)", "Signal off ", "OFF");
    add(gy330, 3, "Signal Off (x)", "OFF", "OFF");
    add(gy330, 3, "Signal OFF", "Signal OFF", "OFF");
    add(gy330, 3, "Switch Off", "OFF", "OFF");
    add(gy330, 3, "Switch off (x)", "Switch off ", "OFF");
    add(gy330, 3, "Switch (Off)", "Switch ", "OFF");
    add(gy330, 3, "(Off)", "", "OFF");
    add(gy310, 1, "Anything (x)", "Signal1 Low-pass filter", "g");
    add(gy310, 2, "Anything (x)", "Signal2 SensorFUSION", "g");
    add(gy310, 3, "Anything (x)", "Anything ", "g");
    add(gy310, 1, "Signal Off", "Signal1 Low-pass filter", "OFF");
    add(gy310, 2, "Switch (x)", "Signal2 SensorFUSION", "SWITCH");
    add(gy310, 3, "Switch X (g)", "Switch X ", "SWITCH");
    add(gy310, 3, "Signal Off", "Signal Off", "OFF");
    add(gy310, 3, "Switch off", "Switch off", "OFF");
    add(gy310, 1, "", "Signal1 Low-pass filter", "g");
    add(gy310, 12, "Angle (deg)", "Angle ", "g");
}

void TestDataDescription::inertialSignals()
{
    QFETCH(int, type);
    QFETCH(int, position);
    QFETCH(QString, reported);
    QFETCH(QString, scaledName);
    QFETCH(QString, unit);
    const QByteArray n = QByteArray::number(position);
    const TransmittedDataInfo info = describeAnswer(
        SensorType(type), "IA_ValuesPerFrame=" + n + " IA_Scaled_Name" + n + "=\"" + reported.toLatin1() +
                              "\" IA_Scaled_Unit" + n + "=\"g\" IA_Raw_Name" + n + "=\"Switch Off (raw)\"");
    QCOMPARE(info.signals.size(), position);
    const SignalInfo &signal = info.signals.last();
    QCOMPARE(signal.scaledName, scaledName);
    QCOMPARE(signal.scaledUnit, unit);
    QCOMPARE(signal.rawName, "Switch Off (raw)");
}

void TestDataDescription::inertialNamesOfOtherTypesStay_data()
{
    QTest::addColumn<int>("type");
    for (const SensorType type : {SensorType::GY310_XA300ETH, SensorType::GY330_XA300ETH, SensorType::GY320,
                                  SensorType::GenericKVBus, SensorType::TX270})
        QTest::newRow(qPrintable(sensorName(type, true))) << int(type);
}

void TestDataDescription::inertialNamesOfOtherTypesStay()
{
    QFETCH(int, type);
    const TransmittedDataInfo info = describeAnswer(
        SensorType(type), "IA_ValuesPerFrame=1 IA_Scaled_Name1=\"Switch Off (g)\" IA_Scaled_Unit1=\"g\"");
    QCOMPARE(info.signals.at(0).scaledName, "Switch Off (g)");
    QCOMPARE(info.signals.at(0).scaledUnit, "g");
}

void TestDataDescription::channelCount()
{
    const SensorInstance instance(SensorType::TX270);
    QCOMPARE(instance.getChannelCount(), 1);
}

QTEST_GUILESS_MAIN(TestDataDescription)
#include "tst_datadescription.moc"
