// SPDX-License-Identifier: MIT
#include "shared/catalognames.h"

#include <QtTest>

using namespace SondixQt;
using namespace SondixApp;

class TestCatalogNames : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void typesAreFoundByNameAndNumber_data();
    void typesAreFoundByNameAndNumber();
    void groupsAreFoundByEitherNameAndNumber_data();
    void groupsAreFoundByEitherNameAndNumber();
    void interfacesAreFoundByEitherNameAndNumber_data();
    void interfacesAreFoundByEitherNameAndNumber();
    void unknownNamesAreExplained_data();
    void unknownNamesAreExplained();
    void suggestionsAreDistinctModels();
    void nearNamesComeNearestFirst();
};

void TestCatalogNames::typesAreFoundByNameAndNumber_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<SensorType>("type");
    QTest::newRow("short name") << "TX270" << TX270;
    QTest::newRow("lower case") << "tx270" << TX270;
    QTest::newRow("long name") << "Tavrin TX270" << TX270;
    QTest::newRow("long name in capitals") << "TAVRIN TX270" << TX270;
    QTest::newRow("number") << "41" << TX270;
    QTest::newRow("variant's number") << "20043" << MV4xx;
    QTest::newRow("slash") << "xa100/usb" << XA100USB;
    QTest::newRow("blanks around it") << "  RG52x " << RG52x;
    QTest::newRow("hidden variant") << "MV410" << MV410;
    QTest::newRow("long name of two models is the first's") << "Korrin EC82x" << EC82x_ETH;
    QTest::newRow("short name that begins another") << "EC82x" << EC82x;
    QTest::newRow("file") << "file" << File;
}

void TestCatalogNames::typesAreFoundByNameAndNumber()
{
    QFETCH(QString, text);
    QFETCH(SensorType, type);
    const auto named = findType(text);
    QVERIFY2(named.value, qPrintable(named.problem));
    QCOMPARE(*named.value, type);
    QVERIFY(named.problem.isEmpty());
}

void TestCatalogNames::groupsAreFoundByEitherNameAndNumber_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<SensorGroup>("group");
    QTest::newRow("name") << "Tavrin" << Tavrin;
    QTest::newRow("other letter case") << "tavrin rg" << TavrinRG;
    QTest::newRow("second name") << "Oscura CC" << Oscura;
    QTest::newRow("first of two names") << "oscura" << Oscura;
    QTest::newRow("hyphen") << "kv-bus" << KVBus;
    QTest::newRow("longer name") << "Other sensors" << Other;
    QTest::newRow("all") << "any group" << AllGroups;
    QTest::newRow("all by number") << "-1" << AllGroups;
    QTest::newRow("number") << "128" << Color;
}

void TestCatalogNames::groupsAreFoundByEitherNameAndNumber()
{
    QFETCH(QString, text);
    QFETCH(SensorGroup, group);
    const auto named = findGroup(text);
    QVERIFY2(named.value, qPrintable(named.problem));
    QCOMPARE(*named.value, group);
}

void TestCatalogNames::interfacesAreFoundByEitherNameAndNumber_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<SensorInterface>("iface");
    QTest::newRow("RS232") << "rs232" << RS232;
    QTest::newRow("display name of Ethernet") << "Ethernet" << TCPIP;
    QTest::newRow("library name of Ethernet") << "tcp/ip" << TCPIP;
    QTest::newRow("display name of USB") << "usb" << WinUSB;
    QTest::newRow("library name of USB") << "WinUSB" << WinUSB;
    QTest::newRow("display name of XA100/USB") << "XA100/USB" << XA100_USB;
    QTest::newRow("library name of XA100/USB") << "xa100_usb" << XA100_USB;
    QTest::newRow("XA100") << "XA100" << XA100;
    QTest::newRow("XA200/PCI") << "xa200/pci" << XA200;
    QTest::newRow("XA200_ETH") << "XA200_ETH" << XA200_ETH;
    QTest::newRow("number") << "64" << XA200_ETH;
}

void TestCatalogNames::interfacesAreFoundByEitherNameAndNumber()
{
    QFETCH(QString, text);
    QFETCH(SensorInterface, iface);
    const auto named = findInterface(text);
    QVERIFY2(named.value, qPrintable(named.problem));
    QCOMPARE(*named.value, iface);
}

void TestCatalogNames::unknownNamesAreExplained_data()
{
    QTest::addColumn<QString>("problem");
    QTest::addColumn<QString>("expected");
    QTest::newRow("one letter wrong") << findType("TX271").problem
                                      << "there is no model 'TX271'; did you mean TX270";
    QTest::newRow("without the slash") << findType("XA100USB").problem
                                       << "there is no model 'XA100USB'; did you mean XA100/USB";
    QTest::newRow("nothing like it") << findType("thermometer").problem
                                     << "there is no model 'thermometer'; 'sondixqt models' lists them all";
    QTest::newRow("number of no model") << findType("27").problem << "there is no model '27'";
    QTest::newRow("no model") << findType("No Sensor").problem << "there is no model 'No Sensor'";
    QTest::newRow("empty") << findType(QString()).problem << "there is no model ''";
    QTest::newRow("group") << findGroup("Tavrim").problem << "there is no group 'Tavrim'; did you mean Tavrin";
    QTest::newRow("group unlike all") << findGroup("qqqqqq").problem
                                      << "there is no group 'qqqqqq'; the groups are Any group, Tavrin,";
    QTest::newRow("interface") << findInterface("RS233").problem
                               << "there is no interface 'RS233'; did you mean RS232";
    QTest::newRow("interface unlike all")
        << findInterface("bluetooth").problem << "there is no interface 'bluetooth'; the interfaces are RS232,";
    QTest::newRow("no interface") << findInterface("No Interface").problem
                                  << "there is no interface 'No Interface'";
}

void TestCatalogNames::unknownNamesAreExplained()
{
    QFETCH(QString, problem);
    QFETCH(QString, expected);
    QVERIFY2(problem.startsWith(expected), qPrintable(problem));
}

void TestCatalogNames::suggestionsAreDistinctModels()
{
    const auto named = findType("Tavrin TX27O");
    QVERIFY(!named.value);
    const QString list = named.problem.section("did you mean ", 1).chopped(1);
    QSet<int> models;
    const QStringList names = list.split(" or ");
    QVERIFY2(names.size() > 1, qPrintable(named.problem));
    for (const QString &name : names) {
        const auto model = findType(name);
        QVERIFY2(model.value, qPrintable(name));
        models.insert(*model.value);
    }
    QCOMPARE(models.size(), names.size());
    QCOMPARE(findType("TX27").problem, QStringLiteral("there is no model 'TX27'; did you mean TX270?"));
}

void TestCatalogNames::nearNamesComeNearestFirst()
{
    const QStringList names{"DV-xxx", "MV4xx", "MV410", "MV420", "MV430", "TX270"};
    const QStringList near = nearNames("mv 420", names);
    QCOMPARE(near.value(0), QStringLiteral("MV420"));
    QVERIFY(near.size() <= 3);
    QVERIFY(nearNames("sausage", names).isEmpty());
}

QTEST_GUILESS_MAIN(TestCatalogNames)
#include "tst_catalognames.moc"
