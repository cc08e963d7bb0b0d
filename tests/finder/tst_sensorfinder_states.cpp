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
        "text Sensor scan started...",
        "started",
        "text Searching for device:  Tavrin TX270 ...",
        "status 2",
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
    QVERIFY(isQuiet());
    QVERIFY(!sentCommands().contains("Get_FindSensorProgress"));
    QCOMPARE(recorder.lines.last(), "status 2");
}

void TestSensorFinderStates::aRefusedStartInTheQueueEndsTheSearchWithoutAWord()
{
    refuseCommand("Start_FindSensor", 2, 1);
    answerProgress({{"100.0"}});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch({TX270, TX280, CC480}, true);
    QVERIFY(recorder.waitFor("status 2"));
    QVERIFY(isQuiet());
    QCOMPARE(finder.status(), SensorFinder::Error);
    QCOMPARE(recorder.lines.last(), "status 2");
    QCOMPARE(searchedTypes(), QList<int>({TX270, TX280}));
}

void TestSensorFinderStates::aRefusedStartIsLeftByStopping()
{
    refuseCommand("Start_FindSensor");
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(TX270);
    recorder.clear();
    finder.stopSearch();
    QCOMPARE(recorder.lines, QStringList("finished"));
    QCOMPARE(finder.status(), SensorFinder::Error);
    QVERIFY(!sentCommands().contains("Abort_FindSensor"));
    QVERIFY(isQuiet());
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
        "status 0", "status 2", "nothing", "text Scan finished, devices found: 0", "finished",
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
    QCOMPARE(recorder.linesOf("status"), QStringList({"status 1", "status 0", "status 2"}));
    QVERIFY(isQuiet());
}

void TestSensorFinderStates::theOnlyTypeCannotBeCreated()
{
    refuseToCreate(TX270);
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(TX270);
    const QStringList expected = {
        "text Sensor scan started...",
        "started",
        "text Skipping device scan for:  Tavrin TX270 ...",
        "status 2",
        "finished",
        "finished",
    };
    QCOMPARE(recorder.lines, expected);
    QCOMPARE(finder.status(), SensorFinder::Error);
    QVERIFY(isQuiet());
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
        "text Multiple device scan started...",
        "started",
        "text Skipping device scan for:  Tavrin TX270 ...",
        "status 2",
        "status 1",
        "text Searching for device:  Oscura CC480 ...",
        "status 1",
        "progress 0",
        "progress 50",
        "status 0",
        "status 0",
        "nothing",
        "text Scan finished, devices found: 0",
        "finished",
    };
    QCOMPARE(recorder.lines, expected);
    QCOMPARE(searchedTypes(), QList<int>({CC480}));
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
        "progress 33",
        "text Skipping device scan for:  Tavrin TX280 ...",
        "status 2",
        "status 1",
        "text Searching for device:  Oscura CC480 ...",
        "status 1",
        "progress 33",
        "progress 66",
        "status 0",
    };
    QCOMPARE(recorder.lines.mid(recorder.lines.indexOf(expected.first()), expected.size()), expected);
    QCOMPARE(searchedTypes(), QList<int>({TX270, CC480}));
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
        "progress 50", "text Skipping device scan for:  Tavrin TX280 ...", "status 2", "finished", "finished",
    };
    QCOMPARE(recorder.lines.mid(recorder.lines.indexOf(expected.first())), expected);
    QCOMPARE(finder.status(), SensorFinder::Error);
    QVERIFY(isQuiet());
    QVERIFY(!sentCommands().contains("Abort_FindSensor"));
}

void TestSensorFinderStates::severalTypesCannotBeCreated()
{
    refuseToCreate(TX270);
    refuseToCreate(TX280);
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch({TX270, TX280}, true);
    QVERIFY(recorder.waitFor("progress 0"));
    const QStringList expected = {
        "text Multiple device scan started...",
        "started",
        "text Skipping device scan for:  Tavrin TX270 ...",
        "status 2",
        "status 1",
        "text Skipping device scan for:  Tavrin TX280 ...",
        "status 2",
        "finished",
        "finished",
        "progress 0",
    };
    QCOMPARE(recorder.lines, expected);
    QCOMPARE(finder.status(), SensorFinder::Error);
    QVERIFY(isQuiet());
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
        "status 0", "status 2", "nothing", "text Scan finished, devices found: 0", "finished",
    };
    QCOMPARE(recorder.lines, expected);
    QCOMPARE(finder.status(), SensorFinder::Error);
    QVERIFY(!sentCommands().contains("Abort_FindSensor"));
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
    QVERIFY(recorder.waitFor("progress 0"));
    const QStringList expected = {
        "status 0", "status 2", "nothing", "text Scan finished, devices found: 0", "finished", "progress 0",
    };
    QCOMPARE(recorder.lines, expected);
    QCOMPARE(finder.status(), SensorFinder::Error);
    QVERIFY(isQuiet());
}

QTEST_GUILESS_MAIN(TestSensorFinderStates)
#include "tst_sensorfinder_states.moc"
