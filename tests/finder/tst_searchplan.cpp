// SPDX-License-Identifier: MIT
#include "finder/searchplan_p.h"

#include <SondixQt/sensortypes.h>

#include <QtTest>

using namespace SondixQt;

class TestSearchPlan : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void eachFamilyIsSearchedOnce_data();
    void eachFamilyIsSearchedOnce();
    void everythingTakesFourSearches();
    void aCardIsNotSearchedInPlaceOfOthers();
    void aSingleModelNeedsNoSimilarOnes();
    void nothingTakesNoSearch();
};

void TestSearchPlan::eachFamilyIsSearchedOnce_data()
{
    QTest::addColumn<SensorGroup>("group");
    QTest::addColumn<QList<SensorType>>("expected");
    QTest::addColumn<bool>("similar");
    QTest::newRow("lines alone") << Tavrin << QList<SensorType>{TX300} << true;
    QTest::newRow("bus and converter") << Morvik << QList<SensorType>{GenericKVBus, XA300} << false;
    QTest::newRow("with the model that answers the search for the bus")
        << Delmar << QList<SensorType>{GenericKVBus, XA300, CP720} << true;
    QTest::newRow("with a model in the network")
        << KVBus << QList<SensorType>{GenericKVBus, XA300, EC82x_ETH} << false;
    QTest::newRow("colour") << Color << QList<SensorType>{HV2, PG110} << true;
    QTest::newRow("one model") << Profax << QList<SensorType>{PF} << false;
}

void TestSearchPlan::eachFamilyIsSearchedOnce()
{
    QFETCH(SensorGroup, group);
    QFETCH(QList<SensorType>, expected);
    QFETCH(bool, similar);
    const SearchPlan searches = fewestSearches(sensorsInGroup(group, true));
    QCOMPARE(searches.types, expected);
    QCOMPARE(searches.similar, similar);
}

void TestSearchPlan::everythingTakesFourSearches()
{
    const SearchPlan searches = fewestSearches(sensorsInGroup(AllGroups, true) + QList<SensorType>{MultiSensor});
    QCOMPARE(searches.types, (QList<SensorType>{HV2, GenericKVBus, XA300, TX300}));
    QVERIFY(searches.similar);
}

void TestSearchPlan::aCardIsNotSearchedInPlaceOfOthers()
{
    QCOMPARE(fewestSearches({XA100PCI, XA200ETH, UC100}).types, QList<SensorType>{UC100});
    QCOMPARE(fewestSearches({XA100PCI, XA200ETH}).types, QList<SensorType>{XA100PCI});
}

void TestSearchPlan::aSingleModelNeedsNoSimilarOnes()
{
    QVERIFY(!fewestSearches({MC340}).similar);
    QVERIFY(!fewestSearches({MV410, MV420, GY330}).similar);
    QVERIFY(fewestSearches({MC340, MC330}).similar);
}

void TestSearchPlan::nothingTakesNoSearch()
{
    QVERIFY(fewestSearches({}).types.isEmpty());
}

QTEST_APPLESS_MAIN(TestSearchPlan)
#include "tst_searchplan.moc"
