// SPDX-License-Identifier: MIT
#include "scriptedsearch.h"

using namespace SondixQt;
using namespace scriptedsearch;

class TestSensorFinderStates : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { begin(); }
    void aRefusedStartIsAnError();
    void aRefusedStartStopsTheTimer();
    void aRefusedStartInTheQueueEndsTheSearchWithoutAWord();
    void aRefusedStartIsLeftByStopping();
    void anErrorIsLeftByANewSearch();
    void aRefusedAbortIsAnError();
    void aRefusedAbortAtTheEndIsAnError();
    void theOnlyTypeCannotBeCreated();
    void theFirstTypeCannotBeCreated();
    void aTypeInTheMiddleCannotBeCreated();
    void theLastTypeCannotBeCreated();
    void severalTypesCannotBeCreated();
    void stoppingWithoutAnInstanceIsAnError();
    void theQueueEndsWhileThereIsNoInstance();
};

void TestSensorFinderStates::aRefusedStartIsAnError()
{
    refuseCommand("Start_FindSensor");
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(TX270);
    const QStringList expected = {
        QStringLiteral("text Sensor scan started..."),
        QStringLiteral("started"),
        QStringLiteral("text Searching for device:  Tavrin TX270 ..."),
        QStringLiteral("status 2"),
    };
    QCOMPARE(recorder.lines, expected);
    QCOMPARE(finder.status(), SensorFinder::Error);
}

void TestSensorFinderStates::aRefusedStartStopsTheTimer()
{
    refuseCommand("Start_FindSensor");
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(TX270);
    QVERIFY(progressTimer(finder)->isActive());
    QTRY_VERIFY(!progressTimer(finder)->isActive());
    QVERIFY(!sentCommands().contains(QStringLiteral("Get_FindSensorProgress")));
    QCOMPARE(recorder.lines.last(), QStringLiteral("status 2"));
}

void TestSensorFinderStates::aRefusedStartInTheQueueEndsTheSearchWithoutAWord()
{
    refuseCommand("Start_FindSensor", 2, 1);
    answerProgress({{"100.0"}});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch({TX270, TX280, CC480}, true);
    QVERIFY(recorder.waitFor(QStringLiteral("status 2")));
    QTRY_VERIFY(!progressTimer(finder)->isActive());
    QCOMPARE(finder.status(), SensorFinder::Error);
    QCOMPARE(recorder.lines.last(), QStringLiteral("status 2"));
    QCOMPARE(searchedTypes(), QList<int>({41, 42}));
}

void TestSensorFinderStates::aRefusedStartIsLeftByStopping()
{
    refuseCommand("Start_FindSensor");
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(TX270);
    recorder.clear();
    finder.stopSearch();
    QCOMPARE(recorder.lines, QStringList(QStringLiteral("finished")));
    QCOMPARE(finder.status(), SensorFinder::Error);
    QVERIFY(!sentCommands().contains(QStringLiteral("Abort_FindSensor")));
    QVERIFY(!progressTimer(finder)->isActive());
}

void TestSensorFinderStates::anErrorIsLeftByANewSearch()
{
    refuseCommand("Start_FindSensor", 1, 1);
    answerProgress({{"100.0"}});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(TX270);
    QCOMPARE(finder.status(), SensorFinder::Error);
    finder.startSearch(TX270);
    QCOMPARE(finder.status(), SensorFinder::Searching);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(finder.status(), SensorFinder::Ready);
}

void TestSensorFinderStates::aRefusedAbortIsAnError()
{
    refuseCommand("Abort_FindSensor");
    answerProgress({{"50.0"}});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(TX270);
    recorder.clear();
    finder.stopSearch();
    const QStringList expected = {
        QStringLiteral("status 0"), QStringLiteral("status 2"),
        QStringLiteral("nothing"),  QStringLiteral("text Scan finished, devices found: 0"),
        QStringLiteral("finished"),
    };
    QCOMPARE(recorder.lines, expected);
    QCOMPARE(finder.status(), SensorFinder::Error);
}

void TestSensorFinderStates::aRefusedAbortAtTheEndIsAnError()
{
    refuseCommand("Abort_FindSensor");
    answerProgress({{"100.0"}});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(TX270);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(finder.status(), SensorFinder::Error);
    QCOMPARE(recorder.linesOf("status"),
             QStringList({QStringLiteral("status 1"), QStringLiteral("status 0"), QStringLiteral("status 2")}));
    QVERIFY(!progressTimer(finder)->isActive());
}

void TestSensorFinderStates::theOnlyTypeCannotBeCreated()
{
    refuseToCreate(TX270);
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(TX270);
    const QStringList expected = {
        QStringLiteral("text Sensor scan started..."),
        QStringLiteral("started"),
        QStringLiteral("text Skipping device scan for:  Tavrin TX270 ..."),
        QStringLiteral("status 2"),
        QStringLiteral("finished"),
        QStringLiteral("finished"),
    };
    QCOMPARE(recorder.lines, expected);
    QCOMPARE(finder.status(), SensorFinder::Error);
    QVERIFY(!progressTimer(finder)->isActive());
    QCOMPARE(searchedTypes(), QList<int>());
}

void TestSensorFinderStates::theFirstTypeCannotBeCreated()
{
    refuseToCreate(TX270);
    answerProgress({{"100.0"}});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch({TX270, CC480}, true);
    QCOMPARE(finder.status(), SensorFinder::Searching);
    QVERIFY(recorder.waitForEnd());
    const QStringList expected = {
        QStringLiteral("text Multiple device scan started..."),
        QStringLiteral("started"),
        QStringLiteral("text Skipping device scan for:  Tavrin TX270 ..."),
        QStringLiteral("status 2"),
        QStringLiteral("status 1"),
        QStringLiteral("text Searching for device:  Oscura CC480 ..."),
        QStringLiteral("status 1"),
        QStringLiteral("progress 0"),
        QStringLiteral("progress 50"),
        QStringLiteral("status 0"),
        QStringLiteral("status 0"),
        QStringLiteral("nothing"),
        QStringLiteral("text Scan finished, devices found: 0"),
        QStringLiteral("finished"),
    };
    QCOMPARE(recorder.lines, expected);
    QCOMPARE(searchedTypes(), QList<int>({47}));
}

void TestSensorFinderStates::aTypeInTheMiddleCannotBeCreated()
{
    refuseToCreate(TX280);
    answerProgress({{"100.0"}});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch({TX270, TX280, CC480}, true);
    QVERIFY(recorder.waitForEnd());
    const QStringList expected = {
        QStringLiteral("progress 33"),
        QStringLiteral("text Skipping device scan for:  Tavrin TX280 ..."),
        QStringLiteral("status 2"),
        QStringLiteral("status 1"),
        QStringLiteral("text Searching for device:  Oscura CC480 ..."),
        QStringLiteral("status 1"),
        QStringLiteral("progress 33"),
        QStringLiteral("progress 66"),
        QStringLiteral("status 0"),
    };
    QCOMPARE(recorder.lines.mid(recorder.lines.indexOf(expected.first()), expected.size()), expected);
    QCOMPARE(searchedTypes(), QList<int>({41, 47}));
    QCOMPARE(finder.status(), SensorFinder::Ready);
}

void TestSensorFinderStates::theLastTypeCannotBeCreated()
{
    refuseToCreate(TX280);
    findAtOnce({"IP_SensorType=41 SA_SerialNumber=\"1\""});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch({TX270, TX280}, true);
    QVERIFY(recorder.waitForEnd());
    const QStringList expected = {
        QStringLiteral("progress 50"), QStringLiteral("text Skipping device scan for:  Tavrin TX280 ..."),
        QStringLiteral("status 2"),    QStringLiteral("finished"),
        QStringLiteral("finished"),
    };
    QCOMPARE(recorder.lines.mid(recorder.lines.indexOf(expected.first())), expected);
    QCOMPARE(finder.status(), SensorFinder::Error);
    QVERIFY(!progressTimer(finder)->isActive());
    QVERIFY(!sentCommands().contains(QStringLiteral("Abort_FindSensor")));
}

void TestSensorFinderStates::severalTypesCannotBeCreated()
{
    refuseToCreate(TX270);
    refuseToCreate(TX280);
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch({TX270, TX280}, true);
    QVERIFY(recorder.waitFor(QStringLiteral("progress 0")));
    const QStringList expected = {
        QStringLiteral("text Multiple device scan started..."),
        QStringLiteral("started"),
        QStringLiteral("text Skipping device scan for:  Tavrin TX270 ..."),
        QStringLiteral("status 2"),
        QStringLiteral("status 1"),
        QStringLiteral("text Skipping device scan for:  Tavrin TX280 ..."),
        QStringLiteral("status 2"),
        QStringLiteral("finished"),
        QStringLiteral("finished"),
        QStringLiteral("progress 0"),
    };
    QCOMPARE(recorder.lines, expected);
    QCOMPARE(finder.status(), SensorFinder::Error);
    QVERIFY(!progressTimer(finder)->isActive());
}

void TestSensorFinderStates::stoppingWithoutAnInstanceIsAnError()
{
    refuseToCreate(TX270);
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch({TX270, CC480}, true);
    QCOMPARE(finder.status(), SensorFinder::Searching);
    recorder.clear();
    finder.stopSearch();
    const QStringList expected = {
        QStringLiteral("status 0"), QStringLiteral("status 2"),
        QStringLiteral("nothing"),  QStringLiteral("text Scan finished, devices found: 0"),
        QStringLiteral("finished"),
    };
    QCOMPARE(recorder.lines, expected);
    QCOMPARE(finder.status(), SensorFinder::Error);
    QVERIFY(!sentCommands().contains(QStringLiteral("Abort_FindSensor")));
}

void TestSensorFinderStates::theQueueEndsWhileThereIsNoInstance()
{
    refuseToCreate(TX270);
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch({TX270, CC480}, true);
    finder.startSearch(QList<SensorType>(), true);
    QCOMPARE(finder.status(), SensorFinder::Searching);
    recorder.clear();
    QVERIFY(recorder.waitFor(QStringLiteral("progress 0")));
    const QStringList expected = {
        QStringLiteral("status 0"), QStringLiteral("status 2"),
        QStringLiteral("nothing"),  QStringLiteral("text Scan finished, devices found: 0"),
        QStringLiteral("finished"), QStringLiteral("progress 0"),
    };
    QCOMPARE(recorder.lines, expected);
    QVERIFY(!progressTimer(finder)->isActive());
}

QTEST_GUILESS_MAIN(TestSensorFinderStates)
#include "tst_sensorfinder_states.moc"
