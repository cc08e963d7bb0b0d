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
    QTest::addColumn<int>("type");
    QTest::newRow("short name") << "TX270" << 41;
    QTest::newRow("lower case") << "tx270" << 41;
    QTest::newRow("long name") << "Tavrin TX270" << 41;
    QTest::newRow("long name in capitals") << "TAVRIN TX270" << 41;
    QTest::newRow("number") << "41" << 41;
    QTest::newRow("variant's number") << "20043" << 20043;
    QTest::newRow("slash") << "xa100/usb" << 36;
    QTest::newRow("blanks around it") << "  RG52x " << 20;
    QTest::newRow("hidden variant") << "MV410" << 120043;
    QTest::newRow("long name of two models is the first's") << "Korrin EC82x" << 50;
    QTest::newRow("short name that begins another") << "EC82x" << 80043;
    QTest::newRow("file") << "file" << 99999;
}

void TestCatalogNames::typesAreFoundByNameAndNumber()
{
    QFETCH(QString, text);
    QFETCH(int, type);
    const auto named = findType(text);
    QVERIFY2(named.value, qPrintable(named.problem));
    QCOMPARE(static_cast<int>(*named.value), type);
    QVERIFY(named.problem.isEmpty());
}

void TestCatalogNames::groupsAreFoundByEitherNameAndNumber_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("group");
    QTest::newRow("name") << "Tavrin" << 1;
    QTest::newRow("other letter case") << "tavrin rg" << 2;
    QTest::newRow("second name") << "Oscura CC" << 4;
    QTest::newRow("first of two names") << "oscura" << 4;
    QTest::newRow("hyphen") << "kv-bus" << 4096;
    QTest::newRow("longer name") << "Other sensors" << 8192;
    QTest::newRow("all") << "any group" << -1;
    QTest::newRow("all by number") << "-1" << -1;
    QTest::newRow("number") << "128" << 128;
}

void TestCatalogNames::groupsAreFoundByEitherNameAndNumber()
{
    QFETCH(QString, text);
    QFETCH(int, group);
    const auto named = findGroup(text);
    QVERIFY2(named.value, qPrintable(named.problem));
    QCOMPARE(static_cast<int>(*named.value), group);
}

void TestCatalogNames::interfacesAreFoundByEitherNameAndNumber_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("iface");
    QTest::newRow("RS232") << "rs232" << 1;
    QTest::newRow("display name of Ethernet") << "Ethernet" << 4;
    QTest::newRow("library name of Ethernet") << "tcp/ip" << 4;
    QTest::newRow("display name of USB") << "usb" << 16;
    QTest::newRow("library name of USB") << "WinUSB" << 16;
    QTest::newRow("display name of XA100/USB") << "XA100/USB" << 2;
    QTest::newRow("library name of XA100/USB") << "xa100_usb" << 2;
    QTest::newRow("XA100") << "XA100" << 32;
    QTest::newRow("XA200/PCI") << "xa200/pci" << 8;
    QTest::newRow("XA200_ETH") << "XA200_ETH" << 64;
    QTest::newRow("number") << "64" << 64;
}

void TestCatalogNames::interfacesAreFoundByEitherNameAndNumber()
{
    QFETCH(QString, text);
    QFETCH(int, iface);
    const auto named = findInterface(text);
    QVERIFY2(named.value, qPrintable(named.problem));
    QCOMPARE(static_cast<int>(*named.value), iface);
}

void TestCatalogNames::unknownNamesAreExplained_data()
{
    QTest::addColumn<QString>("problem");
    QTest::addColumn<QString>("expected");
    QTest::newRow("one letter wrong") << findType(QStringLiteral("TX271")).problem
                                      << "there is no model 'TX271'; did you mean TX270";
    QTest::newRow("without the slash") << findType(QStringLiteral("XA100USB")).problem
                                       << "there is no model 'XA100USB'; did you mean XA100/USB";
    QTest::newRow("nothing like it") << findType(QStringLiteral("thermometer")).problem
                                     << "there is no model 'thermometer'; 'sondixqt models' lists them all";
    QTest::newRow("number of no model") << findType(QStringLiteral("27")).problem << "there is no model '27'";
    QTest::newRow("no model") << findType(QStringLiteral("No Sensor")).problem << "there is no model 'No Sensor'";
    QTest::newRow("empty") << findType(QString()).problem << "there is no model ''";
    QTest::newRow("group") << findGroup(QStringLiteral("Tavrim")).problem
                           << "there is no group 'Tavrim'; did you mean Tavrin";
    QTest::newRow("group unlike all") << findGroup(QStringLiteral("qqqqqq")).problem
                                      << "there is no group 'qqqqqq'; the groups are Any group, Tavrin,";
    QTest::newRow("interface") << findInterface(QStringLiteral("RS233")).problem
                               << "there is no interface 'RS233'; did you mean RS232";
    QTest::newRow("interface unlike all") << findInterface(QStringLiteral("bluetooth")).problem
                                          << "there is no interface 'bluetooth'; the interfaces are RS232,";
    QTest::newRow("no interface") << findInterface(QStringLiteral("No Interface")).problem
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
    const auto named = findType(QStringLiteral("Tavrin TX27O"));
    QVERIFY(!named.value);
    const QString list = named.problem.section(QStringLiteral("did you mean "), 1).chopped(1);
    QSet<int> models;
    const QStringList names = list.split(QStringLiteral(" or "));
    QVERIFY2(names.size() > 1, qPrintable(named.problem));
    for (const QString &name : names) {
        const auto model = findType(name);
        QVERIFY2(model.value, qPrintable(name));
        models.insert(*model.value);
    }
    QCOMPARE(models.size(), names.size());
    QCOMPARE(findType(QStringLiteral("TX27")).problem,
             QStringLiteral("there is no model 'TX27'; did you mean TX270?"));
}

void TestCatalogNames::nearNamesComeNearestFirst()
{
    const QStringList names{QStringLiteral("DV-xxx"), QStringLiteral("MV4xx"), QStringLiteral("MV410"),
                            QStringLiteral("MV420"),  QStringLiteral("MV430"), QStringLiteral("TX270")};
    const QStringList near = nearNames(QStringLiteral("mv 420"), names);
    QCOMPARE(near.value(0), QStringLiteral("MV420"));
    QVERIFY(near.size() <= 3);
    QVERIFY(nearNames(QStringLiteral("sausage"), names).isEmpty());
}

QTEST_GUILESS_MAIN(TestCatalogNames)
#include "tst_catalognames.moc"
