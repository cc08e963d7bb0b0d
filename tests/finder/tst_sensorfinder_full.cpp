// SPDX-License-Identifier: MIT
#include "scriptedsearch.h"

#include <SondixQt/sensoraddress.h>

#include <algorithm>

using namespace SondixQt;
using namespace scriptedsearch;

namespace {

// Sensors of every family on every interface, and a device that does not say what it is.
const char *const manySensorsBench = R"({
    "sensors": [
        { "model": "TX270", "serialNumber": "101", "place": { "interface": "RS232", "port": "COM1" } },
        { "model": "CC430", "serialNumber": "102", "place": { "interface": "TCP/IP", "ip": "192.168.0.10" } },
        { "model": "TX300", "serialNumber": "103", "place": { "interface": "WinUSB", "device": 0 } },
        { "model": "HV210", "serialNumber": "104",
          "place": { "interface": "TCP/IP", "ip": [ "192.168.0.11/24", "10.0.0.11" ] } },
        { "model": "MV420", "serialNumber": "105",
          "place": { "interface": "RS232", "port": "COM3", "busAddress": 11 } },
        { "model": "CP740", "serialNumber": "106",
          "place": { "interface": "RS232", "port": "COM3", "busAddress": 12 } },
        { "model": "MV410_XA300ETH", "serialNumber": "107",
          "place": { "interface": "TCP/IP", "ip": "192.168.0.60" } },
        { "model": "TX220", "serialNumber": "108", "place": { "interface": "XA100", "card": 0, "channel": 1 } },
        { "model": "TX240", "serialNumber": "109",
          "place": { "interface": "XA100_USB", "device": 0, "channel": 1, "port": "COM9" } },
        { "model": "TX270", "serialNumber": "110",
          "place": { "interface": "XA200_ETH", "ip": "192.168.0.52", "channel": 1 } },
        { "model": "MultiSensor", "serialNumber": "111", "members": ["105", "106"],
          "place": { "interface": "RS232", "port": "COM8" } }
    ]
})";

QStringList sortedSerialNumbers(const QList<SensorInfo> &infos)
{
    QStringList serials;
    for (const SensorInfo &info : infos)
        serials << info.getParameter("SA_SerialNumber").toString();
    std::sort(serials.begin(), serials.end());
    return serials;
}

} // namespace

/// The search for everything in the fewest searches.
class TestSensorFinderFull : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup() { sondixsim::clearFaults(); }

    void findsEverythingInFourSearches();
    void findsEachAddressOfASensorOnce();
    void announcesItselfAsAListDoes();
    void searchesOnlyTheInterfacesAskedFor_data();
    void searchesOnlyTheInterfacesAskedFor();
    void findsTheModelsOfTheGroups_data();
    void findsTheModelsOfTheGroups();
    void similarSensorsAreReportedOnDemand();
    void unidentifiedDevicesAreNotReported();
    void theBlacklistApplies();
    void whatIsNotReportedDoesNotCount();
    void aGroupWithoutModelsFinishesAtOnce();
    void otherSearchesKeepTheirOptions();
    void aSecondFullSearchFindsEverythingAgain();
    void itCanBeStoppedAndReplaced();
    void itEndsAtItsTimeLimit();
};

void TestSensorFinderFull::init()
{
    sondixsim::loadBench(manySensorsBench);
    sondixsim::useRealClock(100);
    sondixsim::recordCalls(true);
    sondixsim::clearCalls();
}

void TestSensorFinderFull::findsEverythingInFourSearches()
{
    SensorFinder finder;
    Recorder recorder(finder, Recorder::WithErrors);
    finder.startFullSearch();
    QVERIFY(recorder.waitForEnd());
    QStringList expected;
    for (int number = 101; number <= 111; ++number)
        expected << QString::number(number);
    expected << "104"; // has two addresses
    expected.sort();
    QCOMPARE(sortedSerialNumbers(recorder.found), expected);
    QCOMPARE(searchedTypes(), QList<int>({HV2, GenericKVBus, XA300, TX300}));
    QCOMPARE(recorder.linesOf("error"), QStringList());
    QCOMPARE(recorder.linesOf("progress").last(), "progress 100");
    QCOMPARE(finder.status(), SensorFinder::Ready);
    QVERIFY(isQuiet());
}

void TestSensorFinderFull::findsEachAddressOfASensorOnce()
{
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startFullSearch();
    QVERIFY(recorder.waitForEnd());
    QSet<QString> addresses;
    for (const SensorInfo &info : qAsConst(recorder.found)) {
        const QString address = SensorAddress::of(info).toString();
        QVERIFY2(!addresses.contains(address), qPrintable(address));
        addresses.insert(address);
    }
    QVERIFY(addresses.size() > 11);
}

void TestSensorFinderFull::announcesItselfAsAListDoes()
{
    findAtOnce({"IP_SensorType=31 IP_InterfaceIdx=1 SA_SerialNumber=\"1\""});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startFullSearch(RS232, Profax);
    QVERIFY(recorder.waitForEnd());
    const QStringList expected = {
        "text Multiple device scan started...",
        "started",
        "text Searching for device:  Profax ...",
        "status 1",
        "found 1",
        "progress 100",
        "status 0",
        "status 0",
        "text Scan finished, devices found: 1",
        "finished",
    };
    QCOMPARE(recorder.lines, expected);
}

void TestSensorFinderFull::searchesOnlyTheInterfacesAskedFor_data()
{
    QTest::addColumn<int>("interfaces");
    QTest::addColumn<QString>("serials");
    QTest::newRow("serial lines") << int(RS232) << "101 105 106 111";
    QTest::newRow("Ethernet") << int(TCPIP) << "102 104 104 107";
    QTest::newRow("USB") << int(WinUSB) << "103";
    QTest::newRow("XA100 cards") << int(XA100) << "108";
    QTest::newRow("XA100/USB") << int(XA100_USB) << "109";
    QTest::newRow("XA200/ETH") << int(XA200_ETH) << "110";
    QTest::newRow("two") << int(XA100 | WinUSB) << "103 108";
    QTest::newRow("none") << 0 << "";
}

void TestSensorFinderFull::searchesOnlyTheInterfacesAskedFor()
{
    QFETCH(int, interfaces);
    QFETCH(QString, serials);
    SensorFinder finder;
    finder.setSearchInterface(SensorInterfaces(~0), true); // not used
    Recorder recorder(finder);
    finder.startFullSearch(SensorInterfaces(interfaces));
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(sortedSerialNumbers(recorder.found).join(' '), serials);
    const bool scansLines = interfaces & RS232;
    QCOMPARE(stagedForStart().size(), 4);
    for (const QStringList &staged : stagedForStart())
        QVERIFY(staged.contains(QString("IP_ScanHWRS232=%1").arg(int(scansLines))));
}

void TestSensorFinderFull::findsTheModelsOfTheGroups_data()
{
    QTest::addColumn<int>("groups");
    QTest::addColumn<QString>("serials");
    QTest::newRow("one") << int(Tavrin) << "101 103 108 109 110";
    QTest::newRow("bus") << int(Morvik) << "105 107";
    QTest::newRow("colour") << int(Color) << "104 104";
    QTest::newRow("two") << int(SensorGroups(Color) | Oscura) << "102 104 104";
    QTest::newRow("every one, but not all") << 0x3fff << "101 102 103 104 104 105 106 107 108 109 110";
}

void TestSensorFinderFull::findsTheModelsOfTheGroups()
{
    QFETCH(int, groups);
    QFETCH(QString, serials);
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startFullSearch(SensorInterfaces(~0), SensorGroups(groups));
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(sortedSerialNumbers(recorder.found).join(' '), serials);
}

void TestSensorFinderFull::similarSensorsAreReportedOnDemand()
{
    SensorFinder finder;
    finder.setSearchSimilarSensors(true);
    Recorder recorder(finder);
    finder.startFullSearch(WinUSB, Oscura);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(sortedSerialNumbers(recorder.found), QStringList("103"));
}

void TestSensorFinderFull::unidentifiedDevicesAreNotReported()
{
    findAtOnce({"IP_InterfaceIdx=1 SA_SerialNumber=\"1\"", "IP_SensorType=41 SA_SerialNumber=\"2\"",
                "IP_SensorType=41 IP_InterfaceIdx=1 SA_SerialNumber=\"3\""});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startFullSearch(RS232, Tavrin);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(recorder.linesOf("found"), QStringList("found 3"));
    finder.startFullSearch(SensorInterfaces(), Tavrin);
    QVERIFY(recorder.waitForEnd(2));
    QCOMPARE(recorder.linesOf("found"), QStringList("found 3"));
}

void TestSensorFinderFull::theBlacklistApplies()
{
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startFullSearch(WinUSB | XA100);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(recorder.found.size(), 2);
    finder.setOutputFoundSensorBlacklist({recorder.found.first()});
    const SensorInfo other = recorder.found.last();
    recorder.clear();
    finder.startFullSearch(WinUSB | XA100);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(recorder.found, QList<SensorInfo>{other});
}

void TestSensorFinderFull::whatIsNotReportedDoesNotCount()
{
    findAtOnce({"IP_SensorType=41 IP_InterfaceIdx=7 SA_SerialNumber=\"1\""});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startFullSearch(RS232, Tavrin);
    QVERIFY(recorder.waitForEnd());
    QVERIFY(recorder.lines.contains("nothing"));
    QVERIFY(recorder.lines.contains("text Scan finished, devices found: 0"));
}

void TestSensorFinderFull::aGroupWithoutModelsFinishesAtOnce()
{
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startFullSearch(RS232, NoGroup);
    QCOMPARE(recorder.lines, QStringList({"text Multiple device scan started...", "started", "finished"}));
    QVERIFY(isQuiet());
}

void TestSensorFinderFull::otherSearchesKeepTheirOptions()
{
    SensorFinder finder;
    finder.setSearchInterface(SensorInterfaces(~0), false);
    finder.setSearchInterface(XA100, true);
    Recorder recorder(finder);
    finder.startFullSearch(RS232);
    QVERIFY(recorder.waitForEnd());
    QVERIFY(!finder.searchSimilarSensors());
    recorder.clear();
    sondixsim::clearCalls();
    finder.startSearch(TX300);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(sortedSerialNumbers(recorder.found), QStringList("103")); // USB is always scanned
    const QStringList staged = stagedForStart().value(0);
    for (const char *option : {"IP_ScanHWRS232=0", "IP_ScanHWXA100=1", "IP_FindSimilarSensors=0"})
        QVERIFY2(staged.contains(option), option);
}

void TestSensorFinderFull::aSecondFullSearchFindsEverythingAgain()
{
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startFullSearch(RS232);
    QVERIFY(recorder.waitForEnd());
    const QStringList first = sortedSerialNumbers(recorder.found);
    recorder.clear();
    finder.startFullSearch(RS232);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(sortedSerialNumbers(recorder.found), first);
}

void TestSensorFinderFull::itCanBeStoppedAndReplaced()
{
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startFullSearch();
    finder.stopSearch();
    QCOMPARE(recorder.lines.last(), "finished");
    QCOMPARE(finder.status(), SensorFinder::Ready);
    finder.startFullSearch();
    recorder.clear();
    finder.startSearch(CC430);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(sortedSerialNumbers(recorder.found), QStringList("102"));
    QCOMPARE(recorder.lines.count("finished"), 1);
}

void TestSensorFinderFull::itEndsAtItsTimeLimit()
{
    answerProgress({{"50.0"}});
    SensorFinder finder;
    finder.setTimeLimit(std::chrono::milliseconds(300));
    Recorder recorder(finder, Recorder::WithErrors);
    finder.startFullSearch();
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(finder.error(), TimeLimitError);
    QCOMPARE(searchedTypes(), QList<int>({HV2}));
}

QTEST_GUILESS_MAIN(TestSensorFinderFull)
#include "tst_sensorfinder_full.moc"
