// SPDX-License-Identifier: MIT
#include "scriptedsearch.h"

#include <SondixQt/sensorinstance.h>

#include <algorithm>

using namespace SondixQt;
using namespace scriptedsearch;

namespace {

const char *const fewSensorsBench = R"({
    "sensors": [
        { "model": "TX270", "serialNumber": "101", "place": { "interface": "RS232", "port": "COM1" } },
        { "model": "TX280", "serialNumber": "102", "place": { "interface": "RS232", "port": "COM2" } },
        { "model": "TX270", "serialNumber": "103", "place": { "interface": "XA200", "card": 0, "channel": 0 } },
        { "model": "TX270", "serialNumber": "104", "place": { "interface": "XA200", "card": 0, "channel": 1 } },
        { "model": "TX270", "serialNumber": "105",
          "place": { "interface": "XA200_ETH", "ip": "192.168.0.52", "channel": 1 } },
        { "model": "CC430", "serialNumber": "201", "place": { "interface": "TCP/IP", "ip": "192.168.0.10" } },
        { "model": "TX300", "serialNumber": "202", "place": { "interface": "WinUSB", "device": 0 } },
        { "model": "HV210", "serialNumber": "203",
          "place": { "interface": "TCP/IP", "ip": [ "192.168.0.11/24", "10.0.0.11" ] } },
        { "model": "MV420", "serialNumber": "301",
          "place": { "interface": "RS232", "port": "COM3", "busAddress": 11 } },
        { "model": "EC830", "serialNumber": "302",
          "place": { "interface": "RS232", "port": "COM3", "busAddress": 12 } },
        { "model": "MV410_XA300ETH", "serialNumber": "303",
          "place": { "interface": "TCP/IP", "ip": "192.168.0.60" } },
        { "model": "TX220", "serialNumber": "401", "place": { "interface": "XA100", "card": 0, "channel": 1 } },
        { "model": "TX240", "serialNumber": "402",
          "place": { "interface": "XA100_USB", "device": 0, "channel": 1, "port": "COM9" } }
    ]
})";

void beginWithBench(double speed)
{
    sondixsim::loadBench(fewSensorsBench);
    sondixsim::useRealClock(speed);
}

QStringList serialNumbers(const QList<SensorInfo> &infos)
{
    QStringList serials;
    for (const SensorInfo &info : infos)
        serials << info.getParameter("SA_SerialNumber").toString();
    return serials;
}

constexpr int allInterfaces = 127;

} // namespace

class TestSensorFinderBench : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void sensorsAreFoundWhereTheyAre_data();
    void sensorsAreFoundWhereTheyAre();
    void aGroupSearchDropsTypesThatItDoesNotName_data();
    void aGroupSearchDropsTypesThatItDoesNotName();
    void aSensorThatIsGoneIsNotFound();
    void sensorsAreAnnouncedWhileTheSearchGoesOn();
    void anAbortedSearchFindsNothingMore();
    void foundSensorsCanBeOpened_data();
    void foundSensorsCanBeOpened();
};

void TestSensorFinderBench::sensorsAreFoundWhereTheyAre_data()
{
    QTest::addColumn<SensorType>("type");
    QTest::addColumn<int>("interfaces");
    QTest::addColumn<QStringList>("serials"); // sorted
    QTest::addColumn<QList<SensorType>>("types");
    const auto serials = [](std::initializer_list<const char *> texts) {
        QStringList list;
        for (const char *text : texts)
            list << QString::fromLatin1(text);
        return list;
    };
    QTest::addRow("TX270, everywhere") << TX270 << allInterfaces << serials({"101", "103", "104", "105"})
                                       << QList<SensorType>{TX270, TX270, TX270, TX270};
    QTest::addRow("TX270, serial lines") << TX270 << int(RS232) << serials({"101"}) << QList<SensorType>{TX270};
    QTest::addRow("TX270, on XA200 cards")
        << TX270 << int(XA200) << serials({"103", "104"}) << QList<SensorType>{TX270, TX270};
    QTest::addRow("TX270, nowhere") << TX270 << 0 << QStringList() << QList<SensorType>();
    QTest::addRow("TX220, on XA100 cards") << TX220 << int(XA100) << serials({"401"}) << QList<SensorType>{TX220};
    QTest::addRow("TX240, on XA100/USB")
        << TX240 << int(XA100_USB) << serials({"402"}) << QList<SensorType>{TX240};
    QTest::addRow("CC430, Ethernet not selected") << CC430 << 0 << serials({"201"}) << QList<SensorType>{CC430};
    QTest::addRow("TX300, USB not selected") << TX300 << 0 << serials({"202"}) << QList<SensorType>{TX300};
    QTest::addRow("HV210, at two addresses")
        << HV210 << 0 << serials({"203", "203"}) << QList<SensorType>{HV210, HV210};
    QTest::addRow("MV4xx, on the bus and behind a converter")
        << MV4xx << int(RS232) << serials({"301", "303"}) << QList<SensorType>{MV420, MV410_XA300ETH};
    QTest::addRow("the whole bus") << GenericKVBus << int(RS232) << serials({"301", "302"})
                                   << QList<SensorType>{MV420, EC830};
}

void TestSensorFinderBench::sensorsAreFoundWhereTheyAre()
{
    QFETCH(SensorType, type);
    QFETCH(int, interfaces);
    QFETCH(QStringList, serials);
    QFETCH(QList<SensorType>, types);

    beginWithBench(50);
    SensorFinder finder;
    finder.setSearchInterface(SensorInterfaces(allInterfaces), false);
    finder.setSearchInterface(SensorInterfaces(interfaces), true);
    Recorder recorder(finder);
    finder.startSearch(type);
    QVERIFY(recorder.waitForEnd());
    QStringList found = serialNumbers(recorder.found);
    std::sort(found.begin(), found.end());
    QCOMPARE(found, serials);
    QList<SensorType> foundTypes;
    for (const QString &serial : qAsConst(found))
        foundTypes << recorder.found.at(serialNumbers(recorder.found).indexOf(serial)).sensorType();
    QCOMPARE(foundTypes, types);
}

void TestSensorFinderBench::aGroupSearchDropsTypesThatItDoesNotName_data()
{
    QTest::addColumn<bool>("similar");
    QTest::addColumn<QList<SensorType>>("types"); // on the bus
    QTest::addRow("the listed types only") << false << QList<SensorType>{EC830};
    QTest::addRow("similar sensors") << true << QList<SensorType>{MV420, EC830};
}

void TestSensorFinderBench::aGroupSearchDropsTypesThatItDoesNotName()
{
    QFETCH(bool, similar);
    beginWithBench(50);
    SensorFinder finder;
    finder.setSearchInterface(RS232, true);
    finder.setSearchSimilarSensors(similar);
    Recorder recorder(finder);
    finder.startSearch(SensorGroups(KVBus));
    QVERIFY(recorder.waitForEnd());
    QList<SensorType> types;
    for (const SensorInfo &info : qAsConst(recorder.found)) {
        if (info.sensorType() % 10000 == GenericKVBus)
            types << info.sensorType();
    }
    QTEST(types, "types");
}

void TestSensorFinderBench::aSensorThatIsGoneIsNotFound()
{
    beginWithBench(50);
    sondixsim::unplug("201");
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(CC430);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(serialNumbers(recorder.found), QStringList());
    QVERIFY(recorder.lines.contains("nothing"));
}

void TestSensorFinderBench::sensorsAreAnnouncedWhileTheSearchGoesOn()
{
    beginWithBench(1);
    SensorFinder finder;
    finder.setSearchInterface(SensorInterfaces(allInterfaces), true);
    Recorder recorder(finder);
    finder.startSearch(TX270);
    QVERIFY(recorder.waitForEnd());

    QList<int> figures;
    for (const QString &line : recorder.linesOf("progress "))
        figures << line.section(' ', 1).toInt();
    QVERIFY2(figures.size() > 2, qPrintable(QString::number(figures.size())));
    QVERIFY(std::is_sorted(figures.begin(), figures.end()));
    QVERIFY(figures.first() < 100);
    QCOMPARE(figures.last(), 100);
    const int firstFound = recorder.lines.indexOf(recorder.linesOf("found").value(0));
    const int lastFound = recorder.lines.lastIndexOf(recorder.linesOf("found").last());
    const QStringList between = recorder.lines.mid(firstFound, lastFound - firstFound);
    QVERIFY(!between.filter("progress").isEmpty());
}

void TestSensorFinderBench::anAbortedSearchFindsNothingMore()
{
    beginWithBench(1);
    SensorFinder finder;
    finder.setSearchInterface(SensorInterfaces(allInterfaces), true);
    Recorder recorder(finder);
    finder.startSearch(TX270);
    QVERIFY(QTest::qWaitFor([&] { return !recorder.linesOf("progress").isEmpty(); }, waitLimit));
    finder.stopSearch();
    QCOMPARE(finder.status(), SensorFinder::Ready);
    QCOMPARE(recorder.lines.last(), "finished");
    QVERIFY(recorder.found.size() < 4);

    const int before = recorder.lines.size();
    finder.startSearch(CC430);
    QVERIFY(recorder.waitForEnd(2));
    QCOMPARE(recorder.lines.mid(before).filter("found 2").size(), 1);
    QCOMPARE(recorder.found.last().sensorType(), CC430);
}

void TestSensorFinderBench::foundSensorsCanBeOpened_data()
{
    QTest::addColumn<SensorType>("type");
    for (SensorType type : {TX270, CC430, TX300, HV210, EC830, TX220, TX240})
        QTest::addRow("%s", qPrintable(sensorName(type, true))) << type;
}

void TestSensorFinderBench::foundSensorsCanBeOpened()
{
    QFETCH(SensorType, type);
    beginWithBench(50);
    SensorFinder finder;
    finder.setSearchInterface(SensorInterfaces(allInterfaces), true);
    Recorder recorder(finder);
    finder.startSearch(type);
    QVERIFY(recorder.waitForEnd());
    QVERIFY(!recorder.found.isEmpty());
    for (const SensorInfo &info : qAsConst(recorder.found)) {
        SensorInstance instance(info.sensorType());
        QString errorText;
        QVERIFY2(instance.open(info.getInterfaceParameters(), &errorText) == NoError, qPrintable(errorText));
        QCOMPARE(instance.getInfoParameter("SA_SerialNumber", 1).toString(),
                 info.getParameter("SA_SerialNumber").toString());
        QCOMPARE(instance.close(), NoError);
    }
}

QTEST_GUILESS_MAIN(TestSensorFinderBench)
#include "tst_sensorfinder_bench.moc"
