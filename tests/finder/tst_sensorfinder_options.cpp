// SPDX-License-Identifier: MIT
#include "scriptedsearch.h"

#include <SondixQt/sensorfeatures.h>

#include <QLoggingCategory>
#include <QRegularExpression>
#include <QTemporaryDir>

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
        if (message.type == type && message.category == QLatin1String("SondixQt.SensorFinder"))
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
    void loggingIsSwitchedOnBeforeTheSearch();
    void loggingKeepsItsFile();
    void loggingIsSwitchedOffBeforeTheSearch();
    void tracesGoToTheLoggingCategory();
    void foundSensorsAreNotLoggedWhenTheCategoryIsOff();

private:
    QTemporaryDir folder;
    const QString logFile = folder.filePath(QStringLiteral("finder.log"));
};

void TestSensorFinderOptions::startsWithTheDefaults()
{
    SensorFinder finder;
    QCOMPARE(finder.status(), SensorFinder::Ready);
    QCOMPARE(finder.quickScanRS485(), true);
    QCOMPARE(finder.searchSimilarSensors(), false);
    QVERIFY(progressTimer(finder));
    QCOMPARE(progressTimer(finder)->interval(), 250);
    QCOMPARE(progressTimer(finder)->isActive(), false);
    QCOMPARE(progressTimer(finder)->isSingleShot(), false);

    finder.setQuickScanRS485(false);
    finder.setSearchSimilarSensors(true);
    QCOMPARE(finder.quickScanRS485(), false);
    QCOMPARE(finder.searchSimilarSensors(), true);
}

void TestSensorFinderOptions::quickScanIsSupportedByTheListedTypesOnly_data()
{
    const QList<int> supported = {43, 70043, 20043, 120043, 220043, 320043, 40,
                                  50, 30043, 40043, 10043,  50043,  60043};
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
    QTest::addColumn<QStringList>("switchedOn"); // of the five that depend on anything

    struct Flag
    {
        const char *name;
        int flag;
        QString key;
    };
    const Flag flags[] = {
        {"none", 0, QString()},
        {"RS232", 1, QStringLiteral("RS232")},
        {"XA100/USB", 2, QStringLiteral("XA100_USB")},
        {"Ethernet", 4, QString()},
        {"XA200/PCI", 8, QStringLiteral("XA200")},
        {"WinUSB", 16, QString()},
        {"XA100/PCI", 32, QStringLiteral("XA100")},
        {"XA200/ETH", 64, QStringLiteral("XA200_ETH")},
    };
    struct Type
    {
        const char *name;
        int type;
        QString ownKey;
    };
    const Type types[] = {
        {"a sensor", 41, QString()},
        {"a bus sensor", 10043, QString()},
        {"XA100PCI", 10, QStringLiteral("XA100")},
        {"XA200PCI", 22, QStringLiteral("XA200")},
        {"XA100USB", 36, QStringLiteral("XA100_USB")},
        {"XA200ETH", 52, QStringLiteral("XA200_ETH")},
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
    const QStringList cards = {QStringLiteral("XA100_USB"), QStringLiteral("XA100"), QStringLiteral("XA200"),
                               QStringLiteral("XA200_ETH")};
    QTest::addRow("all for a sensor") << 127 << 41 << cards + QStringList(QStringLiteral("RS232"));
    QTest::addRow("all for XA200ETH") << 127 << 52 << cards;
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
    const QString similar = type > 10000 ? QStringLiteral("1") : QStringLiteral("0");
    const QStringList expected = {
        QStringLiteral("IP_Baudrates=\"\""),
        QStringLiteral("IP_FindSimilarSensors=") + similar,
        QStringLiteral("IP_ForceScanUsedChannel=0"),
        QStringLiteral("IP_QuickScanRS485=1"),
        QStringLiteral("IP_ScanHWDriverX_USB=1"),
        QStringLiteral("IP_ScanHWRS232=") + value("RS232"),
        QStringLiteral("IP_ScanHWTCPIP=1"),
        QStringLiteral("IP_ScanHWUSBIO=1"),
        QStringLiteral("IP_ScanHWWinUSB=1"),
        QStringLiteral("IP_ScanHWXA100=") + value("XA100"),
        QStringLiteral("IP_ScanHWXA100_USB=") + value("XA100_USB"),
        QStringLiteral("IP_ScanHWXA200=") + value("XA200"),
        QStringLiteral("IP_ScanHWXA200_ETH=") + value("XA200_ETH"),
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
    QVERIFY(staged.contains(QStringLiteral("IP_ScanHWRS232=1")));
    QVERIFY(staged.contains(QStringLiteral("IP_ScanHWXA100=0")));
    QVERIFY(staged.contains(QStringLiteral("IP_ScanHWXA200=0")));
}

void TestSensorFinderOptions::optionsArePassedToTheSearch()
{
    SensorFinder finder;
    finder.setSearchBaudrates(QStringLiteral("9600 115200"));
    finder.setQuickScanRS485(false);
    finder.setSearchSimilarSensors(true);
    finder.setForceScanXA200ETH(true);
    finder.startSearch(TX270);
    const QStringList staged = stagedForStart().value(0);
    QVERIFY(staged.contains(QStringLiteral("IP_Baudrates=\"9600 115200\"")));
    QVERIFY(staged.contains(QStringLiteral("IP_QuickScanRS485=0")));
    QVERIFY(staged.contains(QStringLiteral("IP_FindSimilarSensors=1")));
    QVERIFY(staged.contains(QStringLiteral("IP_ForceScanUsedChannel=1")));
}

void TestSensorFinderOptions::similarSensorsAreFoundForVariantsOfABaseType_data()
{
    QTest::addColumn<SensorType>("type");
    QTest::addColumn<bool>("option");
    QTest::addColumn<QString>("expected");
    const QString on = QStringLiteral("IP_FindSimilarSensors=1");
    const QString off = QStringLiteral("IP_FindSimilarSensors=0");
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
    QCOMPARE(stagedForStart().value(0).filter(QStringLiteral("IP_FindSimilarSensors")), QStringList(expected));
}

void TestSensorFinderOptions::setSensorTypeChangesNothingInASearch()
{
    SensorFinder finder;
    finder.setSensorType(CC480);
    finder.startSearch(TX270);
    QCOMPARE(searchedTypes(), QList<int>({41}));
}

void TestSensorFinderOptions::loggingIsSwitchedOnBeforeTheSearch()
{
    SensorFinder finder;
    finder.enableLogging(logFile);
    finder.startSearch(TX270);

    const QStringList calls = callTexts();
    const QStringList logging = calls.filter(QRegularExpression(QStringLiteral("^EnableLogging")));
    const QString expected =
        QStringLiteral("EnableLogging(1, 2147483647, 2147483647, \"%1\", 1, 0, 0)").arg(logFile);
    QCOMPARE(logging, QStringList(expected));
    QVERIFY(calls.indexOf(logging.first()) <
            calls.indexOf(QStringLiteral("SetParameterString(\"S_Command\", \"Start_FindSensor\")")));
    QVERIFY(!sentCommands().contains(QStringLiteral("Enable_Logging")));

    finder.stopSearch();
    QCOMPARE(sentCommands().last(), QStringLiteral("Enable_Logging"));
    QVERIFY(callTexts().contains(QStringLiteral("SetParameterInt(\"IP_EnableLogging\", 0)")));
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

    QVERIFY(callTexts().filter(QRegularExpression(QStringLiteral("^EnableLogging"))).isEmpty());
    const QStringList commands = sentCommands();
    QVERIFY(commands.contains(QStringLiteral("Enable_Logging")));
    QVERIFY(commands.indexOf(QStringLiteral("Enable_Logging")) <
            commands.indexOf(QStringLiteral("Start_FindSensor")));
}

void TestSensorFinderOptions::tracesGoToTheLoggingCategory()
{
    findAtOnce({"IP_SensorType=41 SA_SerialNumber=\"1\""});
    QLoggingCategory::setFilterRules(QStringLiteral("SondixQt.SensorFinder=true"));
    loggedMessages.clear();
    const QtMessageHandler previous = qInstallMessageHandler(keepMessage);
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(TX270);
    const bool ended = recorder.waitForEnd();
    qInstallMessageHandler(previous);

    QVERIFY(ended);
    QCOMPARE(finderMessages(QtDebugMsg), QStringList(QStringLiteral("searching: Tavrin TX270\r\n")));
    QCOMPARE(finderMessages(QtInfoMsg), QStringList(QStringLiteral("Found sensor Tavrin TX270")));
}

void TestSensorFinderOptions::foundSensorsAreNotLoggedWhenTheCategoryIsOff()
{
    findAtOnce({"IP_SensorType=41 SA_SerialNumber=\"1\""});
    QLoggingCategory::setFilterRules(QStringLiteral("SondixQt.SensorFinder.info=false"));
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
