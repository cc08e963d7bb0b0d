// SPDX-License-Identifier: MIT
#include "catalogue/ratetables_p.h"
#include "instance/samplerate_p.h"
#include "instance/sampleratereference.h"

#include <SondixQt/sensorfeatures.h>

#include <QSet>
#include <QtTest>

#include <cmath>
#include <limits>

using namespace SondixQt;

class TestSampleRate : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void referenceKnowsEveryModel();
    void ruleOfEveryModel_data();
    void ruleOfEveryModel();
    void codesWithoutAModel_data();
    void codesWithoutAModel();
    void indexedRates_data();
    void indexedRates();
    void sampleTime();
    void distanceTracking_data();
    void distanceTracking();
    void frequencyAverage_data();
    void frequencyAverage();
    void frequencyWithoutAverage();
    void averaged_data();
    void averaged();
};

namespace {

SampleRateRule ruleOf(reference::Kind kind)
{
    switch (kind) {
    case reference::Index:
        return SampleRateRule::IndexTable;
    case reference::Kilohertz:
        return SampleRateRule::KilohertzAnswer;
    case reference::Hertz:
        return SampleRateRule::HertzAnswer;
    case reference::Microseconds:
        return SampleRateRule::MicrosecondsAnswer;
    case reference::Distance:
        return SampleRateRule::DistanceTracking;
    case reference::Frequency:
        return SampleRateRule::FrequencyAverage;
    case reference::Averaged:
        return SampleRateRule::IndexAndAverage;
    case reference::Constant:
        break;
    }
    return SampleRateRule::Unknown;
}

QByteArray rowName(int code)
{
    return QByteArray::number(code);
}

} // namespace

void TestSampleRate::referenceKnowsEveryModel()
{
    QSet<int> known;
    const QVector<reference::Model> models = reference::models();
    for (const reference::Model &model : models)
        known.insert(model.code);
    QCOMPARE(models.size(), 79);
    QCOMPARE(known.size(), 79);
    const QList<SensorType> types = getSensorFeatures().keys();
    for (const SensorType type : types)
        QVERIFY2(known.contains(type), rowName(type).constData());
}

void TestSampleRate::ruleOfEveryModel_data()
{
    QTest::addColumn<int>("position");
    const QVector<reference::Model> models = reference::models();
    for (int position = 0; position < models.size(); ++position)
        QTest::newRow(rowName(models.at(position).code).constData()) << position;
}

void TestSampleRate::ruleOfEveryModel()
{
    QFETCH(int, position);
    const reference::Model model = reference::models().at(position);
    const auto type = SensorType(model.code);
    const std::optional<double> fixed = fixedSampleRate(type);
    if (model.kind == reference::Constant) {
        const bool known = fixed.has_value();
        QVERIFY(known || sampleRateRow(type).rule == SampleRateRule::Unknown);
        QCOMPARE(fixed.value_or(0.0), model.rates.first());
        return;
    }
    QVERIFY(!fixed);
    const SampleRateRow &row = sampleRateRow(type);
    QCOMPARE(row.rule, ruleOf(model.kind));
    QCOMPARE(QString::fromLatin1(row.command), model.command);
    QCOMPARE(QString::fromLatin1(row.answer), model.answer);
}

void TestSampleRate::codesWithoutAModel_data()
{
    QTest::addColumn<int>("code");
    for (const int code : {-10057, -1, 3, 4, 6, 7, 11, 14, 17, 27, 64, 65, 100, 9999, 10000, 10001, 10008, 10064})
        QTest::newRow(rowName(code).constData()) << code;
}

void TestSampleRate::codesWithoutAModel()
{
    QFETCH(int, code);
    QVERIFY(!fixedSampleRate(SensorType(code)));
    QCOMPARE(sampleRateRow(SensorType(code)).rule, SampleRateRule::Unknown);
}

void TestSampleRate::indexedRates_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("index");
    QTest::addColumn<double>("rate");
    const QVector<reference::Model> models = reference::models();
    for (const reference::Model &model : models) {
        if (model.kind != reference::Index)
            continue;
        const auto add = [&](int index, double rate) {
            QTest::newRow((rowName(model.code) + "[" + rowName(index) + "]").constData())
                << model.code << index << rate;
        };
        for (int index = 0; index < model.rates.size(); ++index)
            add(index, model.rates.at(index));
        add(-1, 0.0);
        add(model.rates.size(), 0.0);
        add(std::numeric_limits<int>::max(), 0.0);
        add(std::numeric_limits<int>::min(), 0.0);
    }
}

void TestSampleRate::indexedRates()
{
    QFETCH(int, code);
    QFETCH(int, index);
    QFETCH(double, rate);
    QVERIFY(sampleRateRow(SensorType(code)).rates.value(index) == rate);
}

void TestSampleRate::sampleTime()
{
    QVERIFY(rateOfSampleTime(250.0) == 1.0 / (250.0 * 0.001));
    QVERIFY(rateOfSampleTime(0.5) == 1.0 / (0.5 * 0.001));
    QVERIFY(std::isinf(rateOfSampleTime(0.0)));
}

void TestSampleRate::distanceTracking_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<int>("measureTime");
    QTest::addColumn<double>("rate");
    const auto add = [](const char *command, int measureTime, double rate) {
        QTest::newRow((QByteArray(command) + " " + rowName(measureTime)).constData())
            << QString(QLatin1String(command)) << measureTime << rate;
    };
    add("DistanceTracking", 25, 1.0 / 6000.0);
    add("DistanceTracking", 1, 1.0 / 240.0);
    add("DistanceTracking", 0, 0.0);
    add("DistanceTracking", -3, 0.0);
    add("DistanceTracking", std::numeric_limits<int>::max(), 1.0 / (2147483647.0 * 240.0));
    add("DistanceTracking7m", 4, 1.0 / 600.0);
    add("DistanceTracking7m", 0, 0.0);
    add("DistanceTracking10Hz", 25, 0.01);
    add("DistanceTracking10Hz", 0, 0.01);
    add("DistanceTracking50Hz", 25, 0.05);
    add("DistanceTracking50Hz", 0, 0.05);
    add("DistanceTriggered", 25, 0.0);
    add("", 25, 0.0);
}

void TestSampleRate::distanceTracking()
{
    QFETCH(QString, command);
    QFETCH(int, measureTime);
    QFETCH(double, rate);
    QVERIFY(rateOfDistanceTracking(command, measureTime) == rate);
}

void TestSampleRate::frequencyAverage_data()
{
    QTest::addColumn<int>("frequency");
    QTest::addColumn<int>("average");
    QTest::addColumn<bool>("speedTracking");
    QTest::addColumn<double>("rate");
    QTest::newRow("distance") << 2000 << 20 << false << 0.1;
    QTest::newRow("speed") << 2000 << 20 << true << 0.004;
    QTest::newRow("no integer division") << 1 << 4 << false << 0.00025;
    QTest::newRow("no frequency") << 0 << 20 << false << 0.0;
}

void TestSampleRate::frequencyAverage()
{
    QFETCH(int, frequency);
    QFETCH(int, average);
    QFETCH(bool, speedTracking);
    QFETCH(double, rate);
    QVERIFY(rateOfFrequencyAverage(frequency, average, speedTracking) == rate);
}

void TestSampleRate::frequencyWithoutAverage()
{
    QVERIFY(std::isinf(rateOfFrequencyAverage(2000, 0, false)));
    QVERIFY(std::isnan(rateOfFrequencyAverage(0, 0, true)));
}

void TestSampleRate::averaged_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("number");
    QTest::addColumn<double>("rate");
    QTest::newRow("first rate") << 0 << 0 << 0 << 3.6;
    QTest::newRow("second rate") << 1 << 1 << 5 << 7.2;
    QTest::newRow("third rate") << 2 << 2 << 0 << 14.4;
    QTest::newRow("averaging of the third kind") << 1 << 3 << 2 << 7.2 / 7.0;
    QTest::newRow("averaging over the fewest") << 2 << 3 << 0 << 14.4 / 3.0;
    QTest::newRow("other averaging") << 1 << 4 << 2 << 7.2;
    QTest::newRow("averaging not answered") << 1 << -1 << 2 << 7.2;
    QTest::newRow("index too large") << 3 << 0 << 0 << 0.0;
    QTest::newRow("index not answered") << -1 << 0 << 0 << 0.0;
    QTest::newRow("number not answered") << 1 << 0 << -1 << 0.0;
    QTest::newRow("nothing answered") << -1 << -1 << -1 << 0.0;
    QTest::newRow("largest number") << 0 << 3 << std::numeric_limits<int>::max() << 3.6 / 4294967297.0;
}

void TestSampleRate::averaged()
{
    QFETCH(int, index);
    QFETCH(int, type);
    QFETCH(int, number);
    QFETCH(double, rate);
    const ConstantList<double> rates = sampleRateRow(SensorType::EC810).rates;
    QVERIFY(rateOfIndexAndAverage(rates, index, type, number) == rate);
}

QTEST_GUILESS_MAIN(TestSampleRate)
#include "tst_samplerate.moc"
