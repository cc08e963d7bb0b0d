// SPDX-License-Identifier: MIT
#include "scriptedsearch.h"

#include <SondixQt/sensorfeatures.h>

#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QVector>

#include <algorithm>
#include <numeric>

using namespace SondixQt;
using namespace scriptedsearch;

namespace {

struct LoggedMessage
{
    QtMsgType type;
    QString category;
    QString text;
};

QList<LoggedMessage> loggedMessages;

void keepMessage(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    loggedMessages << LoggedMessage{type, QString::fromLatin1(context.category), text};
}

QStringList finderMessages(QtMsgType type)
{
    QStringList texts;
    for (const LoggedMessage &message : qAsConst(loggedMessages)) {
        if (message.type == type && message.category == "SondixQt.SensorFinder")
            texts << message.text;
    }
    return texts;
}

} // namespace

class TestSensorFinderOptions : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { begin(); }
    void startsWithTheDefaults();
    void quickScanIsSupportedByTheListedTypesOnly_data();
    void quickScanIsSupportedByTheListedTypesOnly();
    void scanSwitchesFollowInterfacesAndType_data();
    void scanSwitchesFollowInterfacesAndType();
    void clearedInterfacesAreNotScanned();
    void optionsArePassedToTheSearch();
    void similarSensorsAreFoundForVariantsOfABaseType_data();
    void similarSensorsAreFoundForVariantsOfABaseType();
    void setSensorTypeChangesNothingInASearch();
    void queriesTheProgressEvery250ms();
    void loggingIsSwitchedOnBeforeTheSearch();
    void loggingKeepsItsFile();
    void loggingIsSwitchedOffBeforeTheSearch();
    void tracesGoToTheLoggingCategory();
    void foundSensorsAreNotLoggedWhenTheCategoryIsOff();

private:
    QTemporaryDir folder;
    const QString logFile = folder.filePath("finder.log");
};

void TestSensorFinderOptions::startsWithTheDefaults()
{
    SensorFinder finder;
    QCOMPARE(finder.status(), SensorFinder::Ready);
    QCOMPARE(finder.quickScanRS485(), true);
    QCOMPARE(finder.searchSimilarSensors(), false);

    finder.setQuickScanRS485(false);
    finder.setSearchSimilarSensors(true);
    QCOMPARE(finder.quickScanRS485(), false);
    QCOMPARE(finder.searchSimilarSensors(), true);
}

void TestSensorFinderOptions::quickScanIsSupportedByTheListedTypesOnly_data()
{
    const QList<int> supported = {GenericKVBus, DVxxx, MV4xx, MV410, MV420, MV430, CP740,
                                  EC82x_ETH,    GY310, GY330, EC830, EC840, EC850};
    QCOMPARE(supported.size(), 13);
    QTest::addColumn<SensorType>("type");
    QTest::addColumn<bool>("expected");
    for (SensorType type : getSensorFeatures().keys())
        QTest::addRow("%d", int(type)) << type << supported.contains(type);
    QTest::addRow("unlisted number") << SensorType(100043) << false;
}

void TestSensorFinderOptions::quickScanIsSupportedByTheListedTypesOnly()
{
    QFETCH(SensorType, type);
    QFETCH(bool, expected);
    const SensorFinder finder;
    QCOMPARE(finder.quickScanRS485Supported(type), expected);
}

void TestSensorFinderOptions::scanSwitchesFollowInterfacesAndType_data()
{
    QTest::addColumn<int>("interfaces");
    QTest::addColumn<int>("type");
    QTest::addColumn<QStringList>("switchedOn"); // of the five that depend on options or type

    struct Flag
    {
        const char *name;
        int flag;
        QString key;
    };
    const Flag flags[] = {
        {"none", 0, QString()},     {"RS232", 1, "RS232"},          {"XA100/USB", 2, "XA100_USB"},
        {"Ethernet", 4, QString()}, {"XA200/PCI", 8, "XA200"},      {"WinUSB", 16, QString()},
        {"XA100/PCI", 32, "XA100"}, {"XA200/ETH", 64, "XA200_ETH"},
    };
    struct Type
    {
        const char *name;
        int type;
        QString ownKey;
    };
    const Type types[] = {
        {"a sensor", TX270, QString()},  {"a bus sensor", EC830, QString()},  {"XA100PCI", XA100PCI, "XA100"},
        {"XA200PCI", XA200PCI, "XA200"}, {"XA100USB", XA100USB, "XA100_USB"}, {"XA200ETH", XA200ETH, "XA200_ETH"},
    };
    for (const Flag &flag : flags) {
        for (const Type &type : types) {
            QStringList on;
            const bool isCard = !type.ownKey.isEmpty();
            if (!flag.key.isEmpty() && !(flag.flag == 1 && isCard))
                on << flag.key;
            if (isCard && !on.contains(type.ownKey))
                on << type.ownKey;
            QTest::addRow("%s for %s", flag.name, type.name) << flag.flag << type.type << on;
        }
    }
    const QStringList cards = {"XA100_USB", "XA100", "XA200", "XA200_ETH"};
    QTest::addRow("all for a sensor") << 127 << int(TX270) << cards + QStringList("RS232");
    QTest::addRow("all for XA200ETH") << 127 << int(XA200ETH) << cards;
}

void TestSensorFinderOptions::scanSwitchesFollowInterfacesAndType()
{
    QFETCH(int, interfaces);
    QFETCH(int, type);
    QFETCH(QStringList, switchedOn);

    SensorFinder finder;
    finder.setSearchInterface(SensorInterfaces(TCPIP | WinUSB), false);
    finder.setSearchInterface(SensorInterfaces(interfaces), true);
    finder.startSearch(SensorType(type));
    const QList<QStringList> staged = stagedForStart();
    QCOMPARE(staged.size(), 1);

    const auto value = [&](const char *key) { return QString::number(switchedOn.contains(QLatin1String(key))); };
    const QString similar = type > 10000 ? "1" : "0";
    const QStringList expected = {
        "IP_Baudrates=\"\"",
        "IP_FindSimilarSensors=" + similar,
        "IP_ForceScanUsedChannel=0",
        "IP_QuickScanRS485=1",
        "IP_ScanHWDriverX_USB=1",
        "IP_ScanHWRS232=" + value("RS232"),
        "IP_ScanHWTCPIP=1",
        "IP_ScanHWUSBIO=1",
        "IP_ScanHWWinUSB=1",
        "IP_ScanHWXA100=" + value("XA100"),
        "IP_ScanHWXA100_USB=" + value("XA100_USB"),
        "IP_ScanHWXA200=" + value("XA200"),
        "IP_ScanHWXA200_ETH=" + value("XA200_ETH"),
        QStringLiteral("IP_SensorType=%1").arg(type),
    };
    QCOMPARE(staged.first(), expected);
}

void TestSensorFinderOptions::clearedInterfacesAreNotScanned()
{
    SensorFinder finder;
    finder.setSearchInterface(SensorInterfaces(RS232 | XA100 | XA200), true);
    finder.setSearchInterface(SensorInterfaces(XA100 | XA200), false);
    finder.startSearch(TX270);
    const QStringList staged = stagedForStart().value(0);
    QVERIFY(staged.contains("IP_ScanHWRS232=1"));
    QVERIFY(staged.contains("IP_ScanHWXA100=0"));
    QVERIFY(staged.contains("IP_ScanHWXA200=0"));
}

void TestSensorFinderOptions::optionsArePassedToTheSearch()
{
    SensorFinder finder;
    finder.setSearchBaudrates("9600 115200");
    finder.setQuickScanRS485(false);
    finder.setSearchSimilarSensors(true);
    finder.setForceScanXA200ETH(true);
    finder.startSearch(TX270);
    const QStringList staged = stagedForStart().value(0);
    QVERIFY(staged.contains("IP_Baudrates=\"9600 115200\""));
    QVERIFY(staged.contains("IP_QuickScanRS485=0"));
    QVERIFY(staged.contains("IP_FindSimilarSensors=1"));
    QVERIFY(staged.contains("IP_ForceScanUsedChannel=1"));
}

void TestSensorFinderOptions::similarSensorsAreFoundForVariantsOfABaseType_data()
{
    QTest::addColumn<SensorType>("type");
    QTest::addColumn<bool>("option");
    QTest::addColumn<QString>("expected");
    const QString on = "IP_FindSimilarSensors=1";
    const QString off = "IP_FindSimilarSensors=0";
    QTest::addRow("base type, off") << GenericKVBus << false << off;
    QTest::addRow("base type, on") << GenericKVBus << true << on;
    QTest::addRow("variant, off") << EC830 << false << on;
    QTest::addRow("variant, on") << EC830 << true << on;
}

void TestSensorFinderOptions::similarSensorsAreFoundForVariantsOfABaseType()
{
    QFETCH(SensorType, type);
    QFETCH(bool, option);
    QFETCH(QString, expected);
    SensorFinder finder;
    finder.setSearchSimilarSensors(option);
    finder.startSearch(type);
    QCOMPARE(stagedForStart().value(0).filter("IP_FindSimilarSensors"), QStringList(expected));
}

void TestSensorFinderOptions::queriesTheProgressEvery250ms()
{
    answerProgress({{"50.0"}});
    SensorFinder finder;
    QVector<qint64> intervals;
    QElapsedTimer clock;
    connect(&finder, &SensorFinder::progressChanged, this, [&] { intervals << clock.restart(); });
    clock.start();
    finder.startSearch(TX270);

    // A busy machine makes single intervals longer. A coarse timer may be 5 % early.
    QTRY_VERIFY_WITH_TIMEOUT(intervals.size() >= 4, waitLimit);
    QVERIFY(std::accumulate(intervals.cbegin(), intervals.cend(), qint64(0)) >= intervals.size() * 235);
    QTRY_VERIFY_WITH_TIMEOUT(*std::min_element(intervals.cbegin(), intervals.cend()) <= 300, waitLimit);
}

void TestSensorFinderOptions::setSensorTypeChangesNothingInASearch()
{
    SensorFinder finder;
    finder.setSensorType(CC480);
    finder.startSearch(TX270);
    QCOMPARE(searchedTypes(), QList<int>({TX270}));
}

void TestSensorFinderOptions::loggingIsSwitchedOnBeforeTheSearch()
{
    SensorFinder finder;
    finder.enableLogging(logFile);
    finder.startSearch(TX270);

    const QStringList calls = callTexts();
    const QStringList logging = calls.filter(QRegularExpression("^EnableLogging"));
    const QString expected =
        QStringLiteral("EnableLogging(1, 2147483647, 2147483647, \"%1\", 1, 0, 0)").arg(logFile);
    QCOMPARE(logging, QStringList(expected));
    QVERIFY(calls.indexOf(logging.first()) <
            calls.indexOf("SetParameterString(\"S_Command\", \"Start_FindSensor\")"));
    QVERIFY(!sentCommands().contains("Enable_Logging"));

    finder.stopSearch();
    QCOMPARE(sentCommands().last(), "Enable_Logging");
    QVERIFY(callTexts().contains("SetParameterInt(\"IP_EnableLogging\", 0)"));
}

void TestSensorFinderOptions::loggingKeepsItsFile()
{
    SensorFinder finder;
    finder.enableLogging(logFile);
    finder.disableLogging();
    finder.enableLogging();
    finder.startSearch(TX270);
    QCOMPARE(callTexts().filter(logFile).size(), 1);
}

void TestSensorFinderOptions::loggingIsSwitchedOffBeforeTheSearch()
{
    SensorFinder finder;
    finder.enableLogging(logFile);
    finder.disableLogging();
    finder.startSearch(TX270);

    QVERIFY(callTexts().filter(QRegularExpression("^EnableLogging")).isEmpty());
    const QStringList commands = sentCommands();
    QVERIFY(commands.contains("Enable_Logging"));
    QVERIFY(commands.indexOf("Enable_Logging") < commands.indexOf("Start_FindSensor"));
}

void TestSensorFinderOptions::tracesGoToTheLoggingCategory()
{
    findAtOnce({"IP_SensorType=41 SA_SerialNumber=\"1\""});
    QLoggingCategory::setFilterRules("SondixQt.SensorFinder=true");
    loggedMessages.clear();
    const QtMessageHandler previous = qInstallMessageHandler(keepMessage);
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(TX270);
    const bool ended = recorder.waitForEnd();
    qInstallMessageHandler(previous);

    QVERIFY(ended);
    QCOMPARE(finderMessages(QtDebugMsg), QStringList("searching: Tavrin TX270\r\n"));
    QCOMPARE(finderMessages(QtInfoMsg), QStringList("Found sensor Tavrin TX270"));
}

void TestSensorFinderOptions::foundSensorsAreNotLoggedWhenTheCategoryIsOff()
{
    findAtOnce({"IP_SensorType=41 SA_SerialNumber=\"1\""});
    QLoggingCategory::setFilterRules("SondixQt.SensorFinder.info=false");
    loggedMessages.clear();
    const QtMessageHandler previous = qInstallMessageHandler(keepMessage);
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(TX270);
    const bool ended = recorder.waitForEnd();
    qInstallMessageHandler(previous);
    QLoggingCategory::setFilterRules(QString());

    QVERIFY(ended);
    QCOMPARE(recorder.found.size(), 1);
    QCOMPARE(finderMessages(QtInfoMsg), QStringList());
}

QTEST_GUILESS_MAIN(TestSensorFinderOptions)
#include "tst_sensorfinder_options.moc"
