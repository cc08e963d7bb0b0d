// SPDX-License-Identifier: MIT
#include <SondixQt/namelookup.h>
#include <SondixQt/sensorfeatures.h>

#include <QtTest>

using namespace SondixQt;

namespace {

/// The message that \a find, a lookup by name, gives for \a text; empty if it finds something.
template<typename T>
QString problemOf(std::optional<T> find(const QString &, QString *), const QString &text)
{
    QString problem;
    const bool found = find(text, &problem).has_value();
    return found ? QString() : problem;
}

} // namespace

class TestNameLookup : public QObject
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
    void problemMayBeNull();
    void everyNameOfTheCatalogueIsFound();
    void absurdTextsAreRefusedAtOnce_data();
    void absurdTextsAreRefusedAtOnce();
    void suggestionsAreDistinctModels();
    void similarNamesComeNearestFirst();
};

void TestNameLookup::typesAreFoundByNameAndNumber_data()
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

void TestNameLookup::typesAreFoundByNameAndNumber()
{
    QFETCH(QString, text);
    QFETCH(SensorType, type);
    QString problem = "as before";
    const auto named = findSensorType(text, &problem);
    QVERIFY2(named, qPrintable(problem));
    QCOMPARE(*named, type);
    QCOMPARE(problem, "as before");
}

void TestNameLookup::groupsAreFoundByEitherNameAndNumber_data()
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

void TestNameLookup::groupsAreFoundByEitherNameAndNumber()
{
    QFETCH(QString, text);
    QFETCH(SensorGroup, group);
    QCOMPARE(findSensorGroup(text), std::optional(group));
}

void TestNameLookup::interfacesAreFoundByEitherNameAndNumber_data()
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

void TestNameLookup::interfacesAreFoundByEitherNameAndNumber()
{
    QFETCH(QString, text);
    QFETCH(SensorInterface, iface);
    QCOMPARE(findSensorInterface(text), std::optional(iface));
}

void TestNameLookup::unknownNamesAreExplained_data()
{
    QTest::addColumn<QString>("problem");
    QTest::addColumn<QString>("expected");
    QTest::newRow("one letter wrong") << problemOf(findSensorType, "TX271")
                                      << "there is no model 'TX271'; did you mean TX270";
    QTest::newRow("without the slash") << problemOf(findSensorType, "XA100USB")
                                       << "there is no model 'XA100USB'; did you mean XA100/USB";
    QTest::newRow("nothing like it") << problemOf(findSensorType, "thermometer")
                                     << "there is no model 'thermometer'; models have names such as TX270";
    QTest::newRow("number of no model") << problemOf(findSensorType, "27") << "there is no model '27'";
    QTest::newRow("no model") << problemOf(findSensorType, "No Sensor") << "there is no model 'No Sensor'";
    QTest::newRow("empty") << problemOf(findSensorType, QString()) << "there is no model ''";
    QTest::newRow("group") << problemOf(findSensorGroup, "Tavrim")
                           << "there is no group 'Tavrim'; did you mean Tavrin";
    QTest::newRow("group unlike all") << problemOf(findSensorGroup, "qqqqqq")
                                      << "there is no group 'qqqqqq'; the groups are Any group, Tavrin,";
    QTest::newRow("interface") << problemOf(findSensorInterface, "RS233")
                               << "there is no interface 'RS233'; did you mean RS232";
    QTest::newRow("interface unlike all") << problemOf(findSensorInterface, "bluetooth")
                                          << "there is no interface 'bluetooth'; the interfaces are RS232,";
    QTest::newRow("no interface") << problemOf(findSensorInterface, "No Interface")
                                  << "there is no interface 'No Interface'";
}

void TestNameLookup::unknownNamesAreExplained()
{
    QFETCH(QString, problem);
    QFETCH(QString, expected);
    QVERIFY2(problem.startsWith(expected), qPrintable(problem));
}

void TestNameLookup::problemMayBeNull()
{
    QCOMPARE(findSensorType("TX271"), std::nullopt);
    QCOMPARE(findSensorGroup("Tavrim"), std::nullopt);
    QCOMPARE(findSensorInterface("RS233"), std::nullopt);
}

void TestNameLookup::everyNameOfTheCatalogueIsFound()
{
    for (const SensorType type : getSensorFeatures().keys()) {
        if (type == NoSensor || type == Unnamed)
            continue;
        QCOMPARE(findSensorType(sensorName(type, true)), std::optional(type));
        const auto byLongName = findSensorType(sensorName(type));
        QVERIFY2(byLongName && sensorName(*byLongName) == sensorName(type), qPrintable(sensorName(type)));
    }
    for (const SensorInterface iface : sensorInterfaces()) {
        QCOMPARE(findSensorInterface(interfaceName(iface)), std::optional(iface));
        QCOMPARE(findSensorInterface(interfaceName(iface, true)), std::optional(iface));
    }
    QCOMPARE(sensorInterfaces().size(), 7);
}

void TestNameLookup::absurdTextsAreRefusedAtOnce_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("a megabyte") << QString(1 << 20, 'T');
    QTest::newRow("blanks") << QString(1000, ' ');
    QTest::newRow("signs without letters") << "-/- _ -/-";
    QTest::newRow("zero characters") << QString(20, QChar(0));
    QTest::newRow("placeholders") << "%1%2%3%99";
    QTest::newRow("half a surrogate pair") << QString(QChar(0xd800));
    QTest::newRow("number beyond int") << "99999999999999999999";
}

void TestNameLookup::absurdTextsAreRefusedAtOnce()
{
    QFETCH(QString, text);
    QElapsedTimer timer;
    timer.start();
    const QString problem = problemOf(findSensorType, text);
    QVERIFY(!problemOf(findSensorGroup, text).isEmpty());
    QVERIFY(!problemOf(findSensorInterface, text).isEmpty());
    QVERIFY2(problem.startsWith("there is no model '" + text + "'; "), qPrintable(problem.left(200)));
    QVERIFY(timer.elapsed() < 2000);
}

void TestNameLookup::suggestionsAreDistinctModels()
{
    const QString problem = problemOf(findSensorType, "Tavrin TX27O");
    const QString list = problem.section("did you mean ", 1).chopped(1);
    QSet<int> models;
    const QStringList names = list.split(" or ");
    QVERIFY2(names.size() > 1, qPrintable(problem));
    for (const QString &name : names) {
        const auto model = findSensorType(name);
        QVERIFY2(model, qPrintable(name));
        models.insert(*model);
    }
    QCOMPARE(models.size(), names.size());
    QCOMPARE(problemOf(findSensorType, "TX27"), QStringLiteral("there is no model 'TX27'; did you mean TX270?"));
}

void TestNameLookup::similarNamesComeNearestFirst()
{
    const QStringList names{"DV-xxx", "MV4xx", "MV410", "MV420", "MV430", "TX270"};
    const QStringList near = similarNames("mv 420", names);
    QCOMPARE(near.value(0), QStringLiteral("MV420"));
    QVERIFY(near.size() <= 3);
    QVERIFY(similarNames("sausage", names).isEmpty());
}

QTEST_GUILESS_MAIN(TestNameLookup)
#include "tst_namelookup.moc"
