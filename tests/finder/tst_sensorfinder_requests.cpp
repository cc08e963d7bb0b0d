// SPDX-License-Identifier: MIT
#include "scriptedsearch.h"

#include <QElapsedTimer>

using namespace SondixQt;
using namespace scriptedsearch;

class TestSensorFinderRequests : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { begin(); }
    void oneTypeIsSearchedStepByStep();
    void severalTypesAreSearchedOneAfterAnother();
    void noSensorIsStartedAndFinished();
    void noSensorLeavesARunningSearchAlone();
    void anEmptyListIsStartedAndFinished();
    void anEmptyListDropsTheTypesThatWait();
    void entriesThatNameNothingAreLeftOut();
    void groupsAreSearchedInDisplayOrder();
    void groupsLeaveOutHiddenTypesAndNameBaseTypes();
    void companionsAreSearchedAsWell_data();
    void companionsAreSearchedAsWell();
    void otherBusTypesHaveNoCompanions_data();
    void otherBusTypesHaveNoCompanions();
    void typesOfACompletedBaseTypeAreNotSearched();
    void statusTextsNameTheType_data();
    void statusTextsNameTheType();
    void stoppingAbortsTheSearch();
    void stoppingWhenNothingRunsIsAnnounced();
    void stoppingTheScanIsAnnouncedTwice_data();
    void stoppingTheScanIsAnnouncedTwice();
    void aNewSearchReplacesTheRunningOne();
    void theStatusLineIsClearedLater();
};

void TestSensorFinderRequests::oneTypeIsSearchedStepByStep()
{
    answerProgress({{"50.0", 0}, {"100.0", 1}});
    answerResults({"IP_SensorType=41 SA_SerialNumber=\"A1\""});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(TX270);
    const QStringList begun = {
        "text Sensor scan started...",
        "started",
        "text Searching for device:  Tavrin TX270 ...",
        "status 1",
    };
    QCOMPARE(recorder.lines, begun);
    QCOMPARE(finder.status(), SensorFinder::Searching);

    QVERIFY(recorder.waitForEnd());
    const QStringList ended = {
        "progress 50", "found A1", "progress 100", "status 0", "status 0", "text Scan finished, devices found: 1",
        "finished",
    };
    QCOMPARE(recorder.lines, begun + ended);
    QCOMPARE(finder.status(), SensorFinder::Ready);
    QVERIFY(isQuiet());

    QStringList commands = sentCommands();
    commands.removeAll("Get_OpenState");
    const QStringList expected = {
        "Enable_Logging",         "Start_FindSensor",       "Get_FindSensorProgress",
        "Get_FindSensorProgress", "Get_FindSensorProgress", "Get_FoundSensor",
        "Get_FindSensorProgress", "Abort_FindSensor",       "Enable_Logging",
    };
    QCOMPARE(commands, expected);
}

void TestSensorFinderRequests::severalTypesAreSearchedOneAfterAnother()
{
    answerProgress({{"100.0"}});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch({TX270, CC480}, true);
    QVERIFY(recorder.waitForEnd());
    const QStringList expected = {
        "text Multiple device scan started...",
        "started",
        "text Searching for device:  Tavrin TX270 ...",
        "status 1",
        "progress 50",
        "text Searching for device:  Oscura CC480 ...",
        "status 1",
        "progress 100",
        "status 0",
        "status 0",
        "nothing",
        "text Scan finished, devices found: 0",
        "finished",
    };
    QCOMPARE(recorder.lines, expected);
    QCOMPARE(sentCommands().count("Abort_FindSensor"), 1);
}

void TestSensorFinderRequests::noSensorIsStartedAndFinished()
{
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(NoSensor);
    const QStringList expected = {
        "text Sensor scan started...",
        "started",
        "finished",
    };
    QCOMPARE(recorder.lines, expected);
    QCOMPARE(finder.status(), SensorFinder::Ready);
    QVERIFY(isQuiet());
    QCOMPARE(callTexts(), QStringList());
}

void TestSensorFinderRequests::noSensorLeavesARunningSearchAlone()
{
    answerProgress({{"50.0", 1}, {"100.0", 2}});
    answerResults({"IP_SensorType=41 SA_SerialNumber=\"1\"", "IP_SensorType=41 SA_SerialNumber=\"2\""});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(TX270);
    QVERIFY(recorder.waitFor("progress 50"));
    finder.startSearch(NoSensor);
    QCOMPARE(finder.status(), SensorFinder::Searching);
    QVERIFY(recorder.waitForEnd(2));
    QCOMPARE(recorder.linesOf("found"), QStringList({"found 1", "found 2"}));
    QVERIFY(recorder.lines.contains("text Scan finished, devices found: 2"));
}

void TestSensorFinderRequests::anEmptyListIsStartedAndFinished()
{
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(QList<SensorType>(), true);
    const QStringList expected = {
        "text Multiple device scan started...",
        "started",
        "finished",
    };
    QCOMPARE(recorder.lines, expected);
    QCOMPARE(finder.status(), SensorFinder::Ready);
    QVERIFY(isQuiet());
    QCOMPARE(callTexts(), QStringList());
}

void TestSensorFinderRequests::anEmptyListDropsTheTypesThatWait()
{
    answerProgress({{"50.0"}, {"100.0"}});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch({TX270, CC480}, true);
    QVERIFY(recorder.waitFor("progress 25"));
    finder.startSearch(QList<SensorType>(), true);
    QVERIFY(recorder.waitForEnd(2));
    QCOMPARE(searchedTypes(), QList<int>({TX270}));
    QCOMPARE(finder.status(), SensorFinder::Ready);
}

void TestSensorFinderRequests::entriesThatNameNothingAreLeftOut()
{
    answerProgress({{"100.0"}});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch({NoSensor, TX270, NoSensor}, true);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(searchedTypes(), QList<int>({TX270}));
    QCOMPARE(recorder.linesOf("progress"), QStringList("progress 100"));
    QCOMPARE(finder.status(), SensorFinder::Ready);
}

void TestSensorFinderRequests::groupsAreSearchedInDisplayOrder()
{
    answerProgress({{"100.0"}});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(SensorGroups(Silvant | Wavlen));
    QCOMPARE(recorder.lines.first(), "text Multiple device scan started...");
    QVERIFY(recorder.waitForEnd());
    // Silvant: MC330, MC310, MC340, MC320; Wavlen: WI610, WI620.
    QCOMPARE(searchedTypes(), QList<int>({MC330, MC310, MC340, MC320, WI610, WI620}));
}

void TestSensorFinderRequests::groupsLeaveOutHiddenTypesAndNameBaseTypes()
{
    // As for the companions below: the second queries fail, so that no type counts as covered.
    for (int i = 0; i < 5; ++i) {
        answerCommand("Get_FindSensorProgress", "IA_Found=0 IA_Progress=100.0", 2 * i + 1, 1);
        refuseCommand("Get_FindSensorProgress", 2 * i + 2, 1);
    }
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(SensorGroups(Korrin));
    QVERIFY(recorder.waitForEnd());
    // EC840, EC830, EC82x_ETH, EC810, EC850; the EC82x on the bus is hidden.
    QCOMPARE(searchedTypes(), QList<int>({EC840, EC830, EC82x_ETH, EC810, EC850}));
    QVERIFY(recorder.lines.contains("text Searching for device:  Generic KV-BUS sensor ..."));
    QVERIFY(!recorder.lines.contains("text Searching for device:  Korrin EC840 ..."));
}

void TestSensorFinderRequests::companionsAreSearchedAsWell_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QList<int>>("searched");
    QTest::addColumn<QList<int>>("figures");
    QTest::addRow("MV4xx") << int(MV4xx)
                           << QList<int>{MV4xx,          MV410,          MV420,          MV430,
                                         MV4xx_XA300ETH, MV410_XA300ETH, MV420_XA300ETH, MV430_XA300ETH}
                           << QList<int>{50, 100, 150, 200, 250, 300, 350, 400};
    QTest::addRow("GY310") << int(GY310) << QList<int>{GY310, GY310_XA300ETH} << QList<int>{50, 100};
    QTest::addRow("GY330") << int(GY330) << QList<int>{GY330, GY330_XA300ETH} << QList<int>{50, 100};
    QTest::addRow("DVxxx") << int(DVxxx) << QList<int>{DVxxx, DVxxx_XA300ETH} << QList<int>{50, 100};
    QTest::addRow("CP740") << int(CP740) << QList<int>{CP740, CP740_XA300ETH} << QList<int>{50, 100};
    QTest::addRow("EC82x_ETH") << int(EC82x_ETH) << QList<int>{EC82x_ETH, EC82x} << QList<int>{50, 100};
}

// The second query of every tick fails here. The covered types are then unknown, so that all companions are
// searched.
void TestSensorFinderRequests::companionsAreSearchedAsWell()
{
    QFETCH(int, type);
    QFETCH(QList<int>, searched);
    QFETCH(QList<int>, figures);
    for (int i = 0; i < searched.size(); ++i) {
        answerCommand("Get_FindSensorProgress", "IA_Found=0 IA_Progress=100.0", 2 * i + 1, 1);
        refuseCommand("Get_FindSensorProgress", 2 * i + 2, 1);
    }
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(SensorType(type));
    const QStringList begun = {
        "text Sensor scan started...",
        "started",
        "text Multiple device scan started...",
        "started",
    };
    QCOMPARE(recorder.lines.mid(0, begun.size()), begun);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(searchedTypes(), searched);
    QStringList progress;
    for (int figure : figures)
        progress << QStringLiteral("progress %1").arg(qMin(figure, 100));
    QCOMPARE(recorder.linesOf("progress"), progress);
}

void TestSensorFinderRequests::otherBusTypesHaveNoCompanions_data()
{
    QTest::addColumn<SensorType>("type");
    for (SensorType type : {GenericKVBus, EC830, MV410, GY320, XA300, EC82x, MV4xx_XA300ETH})
        QTest::addRow("%d", int(type)) << type;
}

void TestSensorFinderRequests::otherBusTypesHaveNoCompanions()
{
    QFETCH(SensorType, type);
    answerProgress({{"100.0"}});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(type);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(searchedTypes(), QList<int>({int(type)}));
    QCOMPARE(recorder.lines.count("started"), 1);
}

void TestSensorFinderRequests::typesOfACompletedBaseTypeAreNotSearched()
{
    answerProgress({{"50.0"}, {"100.0"}}, GenericKVBus);
    answerProgress({{"100.0"}}, TX270);
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch({EC830, TX270, EC840, GenericKVBus}, true);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(searchedTypes(), QList<int>({EC830, TX270}));
}

void TestSensorFinderRequests::statusTextsNameTheType_data()
{
    QTest::addColumn<QList<SensorType>>("types");
    QTest::addColumn<bool>("showSondixQtType");
    QTest::addColumn<QStringList>("names");
    const QString ec830 = "Korrin EC830";
    const QString bus = "Generic KV-BUS sensor";
    const QString tx270 = "Tavrin TX270";
    QTest::addRow("requested type") << QList<SensorType>{EC830, TX270} << true << QStringList{ec830, tx270};
    QTest::addRow("base type") << QList<SensorType>{EC830, TX270} << false << QStringList{bus, tx270};
    QTest::addRow("the last one") << QList<SensorType>{TX270, EC830} << false << QStringList{tx270, ec830};
}

void TestSensorFinderRequests::statusTextsNameTheType()
{
    QFETCH(QList<SensorType>, types);
    QFETCH(bool, showSondixQtType);
    QFETCH(QStringList, names);
    answerProgress({{"100.0"}});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(types, showSondixQtType);
    QVERIFY(recorder.waitForEnd());
    QStringList expected;
    for (const QString &name : names)
        expected << QStringLiteral("text Searching for device:  %1 ...").arg(name);
    QCOMPARE(recorder.linesOf("text Searching"), expected);
}

void TestSensorFinderRequests::stoppingAbortsTheSearch()
{
    answerProgress({{"50.0"}});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch({TX270, CC480}, true);
    QVERIFY(recorder.waitFor("progress 25"));
    recorder.clear();
    finder.stopSearch();
    const QStringList expected = {
        "status 0", "status 0", "nothing", "text Scan finished, devices found: 0", "finished",
    };
    QCOMPARE(recorder.lines, expected);
    QCOMPARE(finder.status(), SensorFinder::Ready);
    QVERIFY(isQuiet());
    QCOMPARE(sentCommands().mid(sentCommands().size() - 2), QStringList({"Abort_FindSensor", "Enable_Logging"}));
    QCOMPARE(searchedTypes(), QList<int>({TX270}));
}

void TestSensorFinderRequests::stoppingWhenNothingRunsIsAnnounced()
{
    SensorFinder finder;
    Recorder recorder(finder);
    finder.stopSearch();
    QCOMPARE(recorder.lines, QStringList("finished"));
    QCOMPARE(finder.status(), SensorFinder::Ready);
    QVERIFY(!sentCommands().contains("Abort_FindSensor"));
}

void TestSensorFinderRequests::stoppingTheScanIsAnnouncedTwice_data()
{
    QTest::addColumn<bool>("isSearching");
    QTest::addRow("during a search") << true;
    QTest::addRow("when nothing runs") << false;
}

void TestSensorFinderRequests::stoppingTheScanIsAnnouncedTwice()
{
    QFETCH(bool, isSearching);
    answerProgress({{"50.0"}});
    SensorFinder finder;
    Recorder recorder(finder);
    if (isSearching)
        finder.startSearch(TX270);
    finder.stopSensorFinderScan();
    QCOMPARE(recorder.lines.count("finished"), 2);
    QCOMPARE(recorder.lines.mid(recorder.lines.size() - 2), QStringList({"finished", "finished"}));
    QCOMPARE(finder.status(), SensorFinder::Ready);
    QCOMPARE(sentCommands().count("Abort_FindSensor"), isSearching ? 1 : 0);
    QVERIFY(isQuiet());
}

void TestSensorFinderRequests::aNewSearchReplacesTheRunningOne()
{
    answerProgress({{"50.0", 1}}, TX270);
    answerProgress({{"100.0", 1}}, CC480);
    answerResults({"IP_SensorType=41 SA_SerialNumber=\"1\"", "IP_SensorType=47 SA_SerialNumber=\"2\""});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch({TX270, TX280}, true);
    QVERIFY(recorder.waitFor("found 1"));
    finder.startSearch(CC480);
    QCOMPARE(finder.status(), SensorFinder::Searching);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(recorder.lines.count("finished"), 1);
    QCOMPARE(searchedTypes(), QList<int>({TX270, CC480}));
    QCOMPARE(recorder.linesOf("found"), QStringList({"found 1", "found 2"}));
    QVERIFY(recorder.lines.contains("text Scan finished, devices found: 1"));
    QCOMPARE(sentCommands().count("Abort_FindSensor"), 1);
    QCOMPARE(callTexts().filter("ReleaseSensorInstance").size(), 1);
}

// Qt's coarse timers may be up to 5 % early or late.
void TestSensorFinderRequests::theStatusLineIsClearedLater()
{
    answerProgress({{"100.0"}});
    SensorFinder finder;
    Recorder recorder(finder);
    QElapsedTimer timer;
    timer.start();
    finder.stopSearch();
    finder.startSearch(TX270);
    QVERIFY(recorder.waitForEnd(2));

    const QString blank = "text  ";
    QVERIFY(QTest::qWaitFor([&] { return recorder.lines.contains(blank); }, 17000));
    QVERIFY2(timer.elapsed() >= 14200, qPrintable(QString::number(timer.elapsed())));
    QVERIFY(recorder.waitFor(blank, 2));
}

QTEST_GUILESS_MAIN(TestSensorFinderRequests)
#include "tst_sensorfinder_requests.moc"
