// SPDX-License-Identifier: MIT
#include "expectedmodels.h"

#include <SondixQt/sensorfeatures.h>

#include <QtTest>

#include <cstddef>
#include <type_traits>

using namespace SondixQt;

class TestSensorFeatures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void featuresOfEachModel_data();
    void featuresOfEachModel();
    void holdsExactlyTheKnownModels();
    void leavesOutNumbersThatAreNotUsed_data();
    void leavesOutNumbersThatAreNotUsed();
    void variantsBelongToTheBaseTypeOfTheirNumber();
    void recordedNumberDiffersFromTheKeyForThreeModels();
    void shortNamesAreUnique();
    void capabilitiesComeInSeveralCombinations();
    void unnamedTypeHasNeitherNameNorGroup();
    void modelsSharePictures_data();
    void modelsSharePictures();
    void isOneTableForAll();
    void defaultRecordIsEmpty();
    void recordsAreCopiedAndMovedWhole();
    void flagsAreFourConsecutiveBytes();
};

namespace {

void addModelRows()
{
    QTest::addColumn<expected::Model>("model");
    for (const expected::Model &model : expected::models)
        QTest::addRow("%d %s", model.value, model.shortName) << model;
}

} // namespace

void TestSensorFeatures::featuresOfEachModel_data()
{
    addModelRows();
}

void TestSensorFeatures::featuresOfEachModel()
{
    QFETCH(expected::Model, model);
    QCOMPARE(static_cast<int>(model.type), model.value);
    QVERIFY(getSensorFeatures().contains(model.type));
    const SensorFeatures features = getSensorFeatures().value(model.type);
    QCOMPARE(features.order, model.order);
    QCOMPARE(features.hasHelp, model.can('H'));
    QCOMPARE(features.hasGetAllParameters, model.can('G'));
    QCOMPARE(features.hasASCIIProtocol, model.can('A'));
    QCOMPARE(features.hidden, model.can('V'));
    QCOMPARE(static_cast<int>(features.group), model.group);
    QCOMPARE(features.name, QString::fromLatin1(model.name));
    QCOMPARE(features.shortName, QString::fromLatin1(model.shortName));
    QCOMPARE(features.image, model.picturePath());
}

void TestSensorFeatures::holdsExactlyTheKnownModels()
{
    QList<SensorType> types;
    for (const expected::Model &model : expected::models)
        types.append(model.type);
    QCOMPARE(types.size(), 79);
    QCOMPARE(getSensorFeatures().keys(), types);
}

void TestSensorFeatures::leavesOutNumbersThatAreNotUsed_data()
{
    QTest::addColumn<int>("number");
    for (const int number : {3, 4, 6, 7, 11, 14, 17, 27, 64, 70, 71, -1, 10041, 100000})
        QTest::addRow("%d", number) << number;
}

void TestSensorFeatures::leavesOutNumbersThatAreNotUsed()
{
    QFETCH(int, number);
    QVERIFY(!getSensorFeatures().contains(static_cast<SensorType>(number)));
}

void TestSensorFeatures::variantsBelongToTheBaseTypeOfTheirNumber()
{
    const QList<SensorType> types = getSensorFeatures().keys();
    for (const SensorType type : types) {
        if (type < 10000 || type == File)
            continue;
        const int base = type % 10000;
        QVERIFY2(base == XA300 || base == GenericKVBus || base == HV2, qPrintable(QString::number(type)));
        const bool isBusType = getSensorFeatures().value(type).group.testFlag(KVBus);
        QCOMPARE(isBusType, base != HV2);
    }
}

void TestSensorFeatures::recordedNumberDiffersFromTheKeyForThreeModels()
{
    QMap<SensorType, int> different;
    const QMap<SensorType, SensorFeatures> &table = getSensorFeatures();
    for (auto it = table.begin(); it != table.end(); ++it) {
        if (it->type != it.key())
            different.insert(it.key(), it->type);
    }
    const QMap<SensorType, int> described = {{RG540, 70}, {PG120, 71}, {DVxxx_XA300ETH, 10034}};
    QCOMPARE(different, described);
}

void TestSensorFeatures::shortNamesAreUnique()
{
    QStringList names;
    const QMap<SensorType, SensorFeatures> &table = getSensorFeatures();
    for (const SensorFeatures &features : table)
        names.append(features.shortName);
    QCOMPARE(names.size(), 79);
    QCOMPARE(names.removeDuplicates(), 0);
}

void TestSensorFeatures::capabilitiesComeInSeveralCombinations()
{
    const auto capabilities = [](SensorType type) {
        const SensorFeatures features = getSensorFeatures().value(type);
        return QList<bool>{features.hasHelp, features.hasGetAllParameters, features.hasASCIIProtocol};
    };
    QCOMPARE(capabilities(MC320), (QList<bool>{true, true, false}));
    QCOMPARE(capabilities(CP710), (QList<bool>{false, false, true}));
    QCOMPARE(capabilities(QUnit), (QList<bool>{false, true, true}));
    QCOMPARE(capabilities(Spessa), (QList<bool>{false, true, true}));
}

void TestSensorFeatures::unnamedTypeHasNeitherNameNorGroup()
{
    const SensorFeatures unnamed = getSensorFeatures().value(Unnamed);
    QVERIFY(getSensorFeatures().contains(Unnamed));
    QVERIFY(unnamed.name.isEmpty());
    QVERIFY(unnamed.shortName.isEmpty());
    QCOMPARE(unnamed.order, -1);
    QCOMPARE(unnamed.group, SensorGroups(NoGroup));
}

void TestSensorFeatures::modelsSharePictures_data()
{
    QTest::addColumn<QString>("picture");
    QTest::addColumn<QList<SensorType>>("types");
    const auto row = [](const char *picture, const QList<SensorType> &types) {
        QTest::newRow(picture) << QStringLiteral(":/images/%1.png").arg(QLatin1String(picture)) << types;
    };
    row("CP710", {CP710, CP750});
    row("TX270", {TX270, TX300});
    row("WI610", {WI610, WI620});
    row("RG531", {RG53x});
    row("HV220", {HV2, HV220});
    row("EC830", {EC830, EC840, EC850});
    row("MV410", {MV4xx, MV410, MV4xx_XA300ETH, MV410_XA300ETH});
    row("KV-BUS_Gyrant", {GY310, GY330, GY310_XA300ETH, GY330_XA300ETH});
    row("All-groups", {NoSensor, Unnamed, MultiSensor, File});
}

void TestSensorFeatures::modelsSharePictures()
{
    QFETCH(QString, picture);
    QFETCH(QList<SensorType>, types);
    for (const SensorType type : qAsConst(types))
        QCOMPARE(getSensorFeatures().value(type).image, picture);
}

void TestSensorFeatures::isOneTableForAll()
{
    QCOMPARE(&getSensorFeatures(), &getSensorFeatures());
}

void TestSensorFeatures::defaultRecordIsEmpty()
{
    const SensorFeatures features;
    QCOMPARE(features.type, NoSensor);
    QCOMPARE(features.order, 0);
    QVERIFY(!features.hasHelp && !features.hasGetAllParameters && !features.hasASCIIProtocol && !features.hidden);
    QCOMPARE(features.group, SensorGroups(NoGroup));
    QVERIFY(features.name.isEmpty() && features.shortName.isEmpty() && features.image.isEmpty());
}

void TestSensorFeatures::recordsAreCopiedAndMovedWhole()
{
    const auto isMC320 = [](const SensorFeatures &features) {
        return features.type == MC320 && features.order == 63 && features.hasHelp &&
               features.hasGetAllParameters && !features.hasASCIIProtocol && !features.hidden &&
               features.group == Silvant && features.name == "Silvant MC320" && features.shortName == "MC320" &&
               features.image == ":/images/MC320.png";
    };
    SensorFeatures original = getSensorFeatures().value(MC320);
    SensorFeatures copied(original);
    QVERIFY(isMC320(copied));
    copied.name.append('!');
    QVERIFY(isMC320(original));
    copied = original;
    QVERIFY(isMC320(copied));
    SensorFeatures moved(std::move(original));
    QVERIFY(isMC320(moved));
    SensorFeatures target;
    target = std::move(moved);
    QVERIFY(isMC320(target));
}

void TestSensorFeatures::flagsAreFourConsecutiveBytes()
{
    static_assert(std::is_standard_layout_v<SensorFeatures>);
    const std::size_t first = offsetof(SensorFeatures, hasHelp);
    QCOMPARE(first, offsetof(SensorFeatures, order) + sizeof(qint32));
    QCOMPARE(offsetof(SensorFeatures, hasGetAllParameters), first + 1);
    QCOMPARE(offsetof(SensorFeatures, hasASCIIProtocol), first + 2);
    QCOMPARE(offsetof(SensorFeatures, hidden), first + 3);
    QCOMPARE(offsetof(SensorFeatures, group), first + 4);
    QCOMPARE(sizeof(SensorFeatures::group), sizeof(qint32));
}

QTEST_GUILESS_MAIN(TestSensorFeatures)
#include "tst_sensorfeatures.moc"
