// SPDX-License-Identifier: MIT
#include <SondixQt/SensorInstance>

#include "support/testbench.h"

#include <QDateTime>
#include <QtTest>

using namespace SondixQt;
using Parameters = QMap<QString, QVariant>;

namespace {

Parameters withoutTime(Parameters parameters)
{
    parameters.remove("StorageTime");
    return parameters;
}

} // namespace

/// The info parameters of a sensor instance.
class InfoParametersTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void emptyMapChangesNothing();
    void laterValuesOverwriteEqualKeysAndKeepTheOthers();
    void newElementIsAppendedWhateverTheGap();
    void indexBelowOneIsAppended();
    void valuesOfAnEarlierSensorStay();
    void storageTimeIsThatOfTheLastChange();
    void lookupOutsideTheListIsInvalid();
    void answerLinesAreAddedOneByOne();
    void recordedSettingsReadAsAnswers_data();
    void recordedSettingsReadAsAnswers();
    void settingsAreKeptByTheirCommands();
    void linesAfterAGapAreAppendedUntilTheIndexIsReached();
};

void InfoParametersTest::emptyMapChangesNothing()
{
    SensorInstance sensor(NoSensor);
    sensor.addInfoParameters(Parameters(), 1);
    QVERIFY(sensor.getInfoParameters().isEmpty());
    sensor.addInfoParameters("no pairs here", 1);
    QVERIFY(sensor.getInfoParameters().isEmpty());
}

void InfoParametersTest::laterValuesOverwriteEqualKeysAndKeepTheOthers()
{
    SensorInstance sensor(NoSensor);
    sensor.addInfoParameters(Parameters{{"A", 1}, {"B", 2}}, 1);
    sensor.addInfoParameters(Parameters{{"B", 3}, {"C", 4}}, 1);
    QCOMPARE(sensor.getInfoParameters().size(), 1);
    QCOMPARE(withoutTime(sensor.getInfoParameters().at(0)), Parameters({{"A", 1}, {"B", 3}, {"C", 4}}));
}

void InfoParametersTest::newElementIsAppendedWhateverTheGap()
{
    SensorInstance sensor(NoSensor);
    sensor.addInfoParameters(Parameters{{"A", 1}}, 5);
    QCOMPARE(sensor.getInfoParameters().size(), 1);
    // There is no element with this index, therefore no StorageTime is set.
    QCOMPARE(sensor.getInfoParameters().at(0), Parameters({{"A", 1}}));
    sensor.addInfoParameters(Parameters{{"A", 2}}, 2);
    QCOMPARE(sensor.getInfoParameters().size(), 2);
    QVERIFY(sensor.getInfoParameters().at(1).contains("StorageTime"));
}

void InfoParametersTest::indexBelowOneIsAppended()
{
    SensorInstance sensor(NoSensor);
    for (const int index : {0, -1, std::numeric_limits<int>::min()})
        sensor.addInfoParameters(Parameters{{"A", index}}, index);
    QCOMPARE(sensor.getInfoParameters().size(), 3);
    for (const Parameters &element : sensor.getInfoParameters())
        QVERIFY(!element.contains("StorageTime"));
}

void InfoParametersTest::valuesOfAnEarlierSensorStay()
{
    loadTestBench();
    SensorInstance sensor(MultiSensor);
    QCOMPARE(sensor.open(testBenchParameters(MultiSensor)), NoError);
    QCOMPARE(sensor.getInfoParameters().size(), 2);
    const QVariant second = sensor.getInfoParameter("SA_SerialNumber", 2);
    QVERIFY(second.isValid());
    sensor.addInfoParameters(Parameters{{"SA_OnlyOfTheFirst", 1}}, 1);

    sensor = SensorInstance(CP720);
    QCOMPARE(sensor.open(testBenchParameters(CP720)), NoError);
    QCOMPARE(sensor.getInfoParameter("SA_SerialNumber", 1).toString(), "1002");
    QCOMPARE(sensor.getInfoParameter("SA_OnlyOfTheFirst", 1), QVariant(1));
    QCOMPARE(sensor.getInfoParameters().size(), 2);
    QCOMPARE(sensor.getInfoParameter("SA_SerialNumber", 2), second);
}

void InfoParametersTest::storageTimeIsThatOfTheLastChange()
{
    SensorInstance sensor(NoSensor);
    const QString format = "yyyy-MM-dd_hh-mm-ss.zzz";
    const QDateTime before = QDateTime::currentDateTime();
    sensor.addInfoParameters(Parameters{{"A", 1}, {"StorageTime", "never"}}, 1);
    const QDateTime after = QDateTime::currentDateTime();
    const QDateTime stored = QDateTime::fromString(sensor.getInfoParameter("StorageTime", 1).toString(), format);
    QVERIFY(stored >= before && stored <= after);
}

void InfoParametersTest::lookupOutsideTheListIsInvalid()
{
    SensorInstance sensor(NoSensor);
    sensor.addInfoParameters(Parameters{{"A", 1}}, 1);
    QCOMPARE(sensor.getInfoParameter("A", 1), QVariant(1));
    for (const int index : {0, 2, -1, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()})
        QVERIFY(!sensor.getInfoParameter("A", index).isValid());
    QVERIFY(!sensor.getInfoParameter("B", 1).isValid());
}

void InfoParametersTest::answerLinesAreAddedOneByOne()
{
    SensorInstance sensor(NoSensor);
    sensor.addInfoParameters(
        "S_Command=\"Get_Info\" SA_Range=10.0\r\n\r\nS_Command=\"Get_X\" SA_X=1 SA_Range=20.0", 1);
    QCOMPARE(withoutTime(sensor.getInfoParameters().value(0)),
             Parameters({{"S_Command", "Get_X"}, {"SA_Range", 20.0}, {"SA_X", 1}}));
}

void InfoParametersTest::recordedSettingsReadAsAnswers_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<bool>("renamed");
    QTest::newRow("setting") << "S_Command=\"Set_X\" SP_X=1" << true;
    QTest::newRow("update") << "S_Command=\"Update_X\" SP_X=1" << false;
    QTest::newRow("no quotes") << "S_Command=Set_X SP_X=1" << false;
    QTest::newRow("not at the start") << " S_Command=\"Set_X\" SP_X=1" << false;
    QTest::newRow("only a line feed before") << "A=1\nS_Command=\"Set_X\" SP_X=1" << false;
}

void InfoParametersTest::recordedSettingsReadAsAnswers()
{
    QFETCH(QString, line);
    QFETCH(bool, renamed);
    SensorInstance sensor(NoSensor);
    sensor.addInfoParameters(line, 1);
    QCOMPARE(sensor.getInfoParameter("SA_X", 1).isValid(), renamed);
    QCOMPARE(sensor.getInfoParameter("SP_X", 1).isValid(), !renamed);
}

void InfoParametersTest::settingsAreKeptByTheirCommands()
{
    SensorInstance sensor(NoSensor);
    QVERIFY(sensor.getInfoSettings(1).isEmpty());
    sensor.addInfoParameters("S_Command=\"Get_Info\" SA_Range=10.0\r\n"
                             "S_Command=\"Set_Samplerate\" SP_Measrate=2.0\r\n"
                             "S_Command=\"Set_Averaging\" SP_AveragingType=1 SP_AveragingNumber=4",
                             2);
    const QMap<QString, Parameters> settings = sensor.getInfoSettings(2);
    QCOMPARE(settings.keys(), QStringList({"Set_Averaging", "Set_Samplerate"}));
    QCOMPARE(settings.value("Set_Samplerate"), Parameters({{"SA_Measrate", 2.0}}));
    QCOMPARE(settings.value("Set_Averaging"), Parameters({{"SA_AveragingType", 1}, {"SA_AveragingNumber", 4}}));
    QVERIFY(sensor.getInfoSettings(1).isEmpty());
    sensor.addInfoParameters("S_Command=\"Set_Samplerate\" SP_Measrate=4.0", 2); // opened again
    QCOMPARE(sensor.getInfoSettings(2).value("Set_Samplerate").value("SA_Measrate").toDouble(), 4.0);
}

void InfoParametersTest::linesAfterAGapAreAppendedUntilTheIndexIsReached()
{
    SensorInstance sensor(NoSensor);
    sensor.addInfoParameters("A=1\r\nA=2\r\nB=3", 2);
    QCOMPARE(sensor.getInfoParameters().size(), 2);
    QCOMPARE(sensor.getInfoParameters().at(0), Parameters({{"A", 1}}));
    QCOMPARE(withoutTime(sensor.getInfoParameters().at(1)), Parameters({{"A", 2}, {"B", 3}}));
}

QTEST_GUILESS_MAIN(InfoParametersTest)
#include "tst_infoparameters.moc"
