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
        QStringLiteral("text Sensor scan started..."),
        QStringLiteral("started"),
        QStringLiteral("text Searching for device:  Tavrin TX270 ..."),
        QStringLiteral("status 1"),
    };
    QCOMPARE(recorder.lines, begun);
    QVERIFY(progressTimer(finder)->isActive());

    QVERIFY(recorder.waitForEnd());
    const QStringList ended = {
        QStringLiteral("progress 50"),  QStringLiteral("found A1"),
        QStringLiteral("progress 100"), QStringLiteral("status 0"),
        QStringLiteral("status 0"),     QStringLiteral("text Scan finished, devices found: 1"),
        QStringLiteral("finished"),
    };
    QCOMPARE(recorder.lines, begun + ended);
    QVERIFY(!progressTimer(finder)->isActive());

    QStringList commands = sentCommands();
    commands.removeAll(QStringLiteral("Get_OpenState"));
    const QStringList expected = {
        QStringLiteral("Enable_Logging"),         QStringLiteral("Start_FindSensor"),
        QStringLiteral("Get_FindSensorProgress"), QStringLiteral("Get_FindSensorProgress"),
        QStringLiteral("Get_FindSensorProgress"), QStringLiteral("Get_FoundSensor"),
        QStringLiteral("Get_FindSensorProgress"), QStringLiteral("Abort_FindSensor"),
        QStringLiteral("Enable_Logging"),
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
        QStringLiteral("text Multiple device scan started..."),
        QStringLiteral("started"),
        QStringLiteral("text Searching for device:  Tavrin TX270 ..."),
        QStringLiteral("status 1"),
        QStringLiteral("progress 50"),
        QStringLiteral("text Searching for device:  Oscura CC480 ..."),
        QStringLiteral("status 1"),
        QStringLiteral("progress 100"),
        QStringLiteral("status 0"),
        QStringLiteral("status 0"),
        QStringLiteral("nothing"),
        QStringLiteral("text Scan finished, devices found: 0"),
        QStringLiteral("finished"),
    };
    QCOMPARE(recorder.lines, expected);
    QCOMPARE(sentCommands().count(QStringLiteral("Abort_FindSensor")), 1);
}

void TestSensorFinderRequests::noSensorIsStartedAndFinished()
{
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(NoSensor);
    const QStringList expected = {
        QStringLiteral("text Sensor scan started..."),
        QStringLiteral("started"),
        QStringLiteral("finished"),
    };
    QCOMPARE(recorder.lines, expected);
    QCOMPARE(finder.status(), SensorFinder::Ready);
    QVERIFY(!progressTimer(finder)->isActive());
    QCOMPARE(callTexts(), QStringList());
}

void TestSensorFinderRequests::noSensorLeavesARunningSearchAlone()
{
    answerProgress({{"50.0", 1}, {"100.0", 2}});
    answerResults({"IP_SensorType=41 SA_SerialNumber=\"1\"", "IP_SensorType=41 SA_SerialNumber=\"2\""});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(TX270);
    QVERIFY(recorder.waitFor(QStringLiteral("progress 50")));
    finder.startSearch(NoSensor);
    QCOMPARE(finder.status(), SensorFinder::Searching);
    QVERIFY(recorder.waitForEnd(2));
    QCOMPARE(recorder.linesOf("found"), QStringList({QStringLiteral("found 1"), QStringLiteral("found 2")}));
    QVERIFY(recorder.lines.contains(QStringLiteral("text Scan finished, devices found: 2")));
}

void TestSensorFinderRequests::anEmptyListIsStartedAndFinished()
{
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(QList<SensorType>(), true);
    const QStringList expected = {
        QStringLiteral("text Multiple device scan started..."),
        QStringLiteral("started"),
        QStringLiteral("finished"),
    };
    QCOMPARE(recorder.lines, expected);
    QCOMPARE(finder.status(), SensorFinder::Ready);
    QVERIFY(!progressTimer(finder)->isActive());
    QCOMPARE(callTexts(), QStringList());
}

void TestSensorFinderRequests::anEmptyListDropsTheTypesThatWait()
{
    answerProgress({{"50.0"}, {"100.0"}});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch({TX270, CC480}, true);
    QVERIFY(recorder.waitFor(QStringLiteral("progress 25")));
    finder.startSearch(QList<SensorType>(), true);
    QVERIFY(recorder.waitForEnd(2));
    QCOMPARE(searchedTypes(), QList<int>({41}));
    QCOMPARE(finder.status(), SensorFinder::Ready);
}

void TestSensorFinderRequests::entriesThatNameNothingAreLeftOut()
{
    answerProgress({{"100.0"}});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch({NoSensor, TX270, NoSensor}, true);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(searchedTypes(), QList<int>({41}));
    QCOMPARE(recorder.linesOf("progress"), QStringList(QStringLiteral("progress 100")));
    QCOMPARE(finder.status(), SensorFinder::Ready);
}

void TestSensorFinderRequests::groupsAreSearchedInDisplayOrder()
{
    answerProgress({{"100.0"}});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(SensorGroups(Silvant | Wavlen));
    QCOMPARE(recorder.lines.first(), QStringLiteral("text Multiple device scan started..."));
    QVERIFY(recorder.waitForEnd());
    // Silvant: MC330, MC310, MC340, MC320; Wavlen: WI610, WI620.
    QCOMPARE(searchedTypes(), QList<int>({25, 8, 37, 9, 55, 59}));
}

void TestSensorFinderRequests::groupsLeaveOutHiddenTypesAndNameBaseTypes()
{
    // As for the companions below: the second readings fail, so that no type is taken as covered.
    for (int i = 0; i < 5; ++i) {
        answerCommand("Get_FindSensorProgress", "IA_Found=0 IA_Progress=100.0", 2 * i + 1, 1);
        refuseCommand("Get_FindSensorProgress", 2 * i + 2, 1);
    }
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(SensorGroups(Korrin));
    QVERIFY(recorder.waitForEnd());
    // EC840, EC830, EC82x_ETH, EC810, EC850; the EC82x on the bus is hidden.
    QCOMPARE(searchedTypes(), QList<int>({50043, 10043, 50, 28, 60043}));
    QVERIFY(recorder.lines.contains(QStringLiteral("text Searching for device:  Generic KV-BUS sensor ...")));
    QVERIFY(!recorder.lines.contains(QStringLiteral("text Searching for device:  Korrin EC840 ...")));
}

void TestSensorFinderRequests::companionsAreSearchedAsWell_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QList<int>>("searched");
    QTest::addColumn<QList<int>>("figures");
    QTest::addRow("MV4xx") << 20043 << QList<int>{20043, 120043, 220043, 320043, 10034, 110034, 210034, 310034}
                           << QList<int>{50, 100, 150, 200, 250, 300, 350, 400};
    QTest::addRow("GY310") << 30043 << QList<int>{30043, 30034} << QList<int>{50, 100};
    QTest::addRow("GY330") << 40043 << QList<int>{40043, 20034} << QList<int>{50, 100};
    QTest::addRow("DVxxx") << 70043 << QList<int>{70043, 170034} << QList<int>{50, 100};
    QTest::addRow("CP740") << 40 << QList<int>{40, 40034} << QList<int>{50, 100};
    QTest::addRow("EC82x_ETH") << 50 << QList<int>{50, 80043} << QList<int>{50, 100};
}

// The second reading of every tick fails here: what one search covers is then not known, so that every
// companion is searched and the whole list shows.
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
        QStringLiteral("text Sensor scan started..."),
        QStringLiteral("started"),
        QStringLiteral("text Multiple device scan started..."),
        QStringLiteral("started"),
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
    QCOMPARE(recorder.lines.count(QStringLiteral("started")), 1);
}

void TestSensorFinderRequests::typesOfACompletedBaseTypeAreNotSearched()
{
    answerProgress({{"50.0"}, {"100.0"}}, GenericKVBus);
    answerProgress({{"100.0"}}, TX270);
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch({EC830, TX270, EC840, GenericKVBus}, true);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(searchedTypes(), QList<int>({10043, 41}));
}

void TestSensorFinderRequests::statusTextsNameTheType_data()
{
    QTest::addColumn<QList<SensorType>>("types");
    QTest::addColumn<bool>("showSondixQtType");
    QTest::addColumn<QStringList>("names");
    const QString ec830 = QStringLiteral("Korrin EC830");
    const QString bus = QStringLiteral("Generic KV-BUS sensor");
    const QString tx270 = QStringLiteral("Tavrin TX270");
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
    QVERIFY(recorder.waitFor(QStringLiteral("progress 25")));
    recorder.clear();
    finder.stopSearch();
    const QStringList expected = {
        QStringLiteral("status 0"), QStringLiteral("status 0"),
        QStringLiteral("nothing"),  QStringLiteral("text Scan finished, devices found: 0"),
        QStringLiteral("finished"),
    };
    QCOMPARE(recorder.lines, expected);
    QVERIFY(!progressTimer(finder)->isActive());
    QCOMPARE(sentCommands().mid(sentCommands().size() - 2),
             QStringList({QStringLiteral("Abort_FindSensor"), QStringLiteral("Enable_Logging")}));
    QCOMPARE(searchedTypes(), QList<int>({41}));
}

void TestSensorFinderRequests::stoppingWhenNothingRunsIsAnnounced()
{
    SensorFinder finder;
    Recorder recorder(finder);
    finder.stopSearch();
    QCOMPARE(recorder.lines, QStringList(QStringLiteral("finished")));
    QCOMPARE(finder.status(), SensorFinder::Ready);
    QVERIFY(!sentCommands().contains(QStringLiteral("Abort_FindSensor")));
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
    QCOMPARE(recorder.lines.count(QStringLiteral("finished")), 2);
    QCOMPARE(recorder.lines.mid(recorder.lines.size() - 2),
             QStringList({QStringLiteral("finished"), QStringLiteral("finished")}));
    QCOMPARE(finder.status(), SensorFinder::Ready);
    QCOMPARE(sentCommands().count(QStringLiteral("Abort_FindSensor")), isSearching ? 1 : 0);
    QVERIFY(!progressTimer(finder)->isActive());
}

void TestSensorFinderRequests::aNewSearchReplacesTheRunningOne()
{
    answerProgress({{"50.0", 1}}, TX270);
    answerProgress({{"100.0", 1}}, CC480);
    answerResults({"IP_SensorType=41 SA_SerialNumber=\"1\"", "IP_SensorType=47 SA_SerialNumber=\"2\""});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch({TX270, TX280}, true);
    QVERIFY(recorder.waitFor(QStringLiteral("found 1")));
    finder.startSearch(CC480);
    QCOMPARE(finder.status(), SensorFinder::Searching);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(recorder.lines.count(QStringLiteral("finished")), 1);
    QCOMPARE(searchedTypes(), QList<int>({41, 47}));
    QCOMPARE(recorder.linesOf("found"), QStringList({QStringLiteral("found 1"), QStringLiteral("found 2")}));
    QVERIFY(recorder.lines.contains(QStringLiteral("text Scan finished, devices found: 1")));
    QCOMPARE(sentCommands().count(QStringLiteral("Abort_FindSensor")), 1);
    QCOMPARE(callTexts().filter(QStringLiteral("ReleaseSensorInstance")).size(), 1);
}

// Qt's coarse timers may fire up to a twentieth of their time early or late.
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

    const QString blank = QStringLiteral("text  ");
    QVERIFY(QTest::qWaitFor([&] { return recorder.lines.contains(blank); }, 17000));
    QVERIFY2(timer.elapsed() >= 14200, qPrintable(QString::number(timer.elapsed())));
    QVERIFY(recorder.waitFor(blank, 2));
}

QTEST_GUILESS_MAIN(TestSensorFinderRequests)
#include "tst_sensorfinder_requests.moc"
