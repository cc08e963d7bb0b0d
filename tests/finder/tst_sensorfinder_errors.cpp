// SPDX-License-Identifier: MIT
#include "scriptedsearch.h"

#include <QElapsedTimer>
#include <QPointer>

#include <limits>

using namespace SondixQt;
using namespace scriptedsearch;
using namespace std::chrono_literals;

/// Errors of a search, and its time limit.
class TestSensorFinderErrors : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { begin(); }
    void cleanup() { sondixsim::clearFaults(); }

    void thereIsNoErrorWithoutAFailure();
    void aRefusedStartHasTheReasonOfTheLibrary();
    void aRefusedStartWithoutATextHasItsNumber();
    void aRefusedStartInTheQueueIsReported();
    void theTextIsKnownWhenTheStatusChanges();
    void aNewSearchForgetsTheError();
    void aRequestForNothingKeepsTheError();
    void skippedTypesAreReportedWhileTheSearchGoesOn();
    void aLastTypeThatIsSkippedIsReportedBeforeTheEnd();
    void aTypeThatIsSkippedWithoutATextIsExplained();
    void aRefusedAbortIsReported();

    void thereIsNoTimeLimitByDefault();
    void aSearchEndsAtItsTimeLimit();
    void aSearchThatFindsNothingEndsAtItsTimeLimit();
    void theTimeLimitIsForAllTypes();
    void aSearchThatIsCompleteHasNotReachedItsLimit();
    void theLimitOfEachSearchIsItsOwn();
    void aRunningSearchGetsANewLimit();
    void limitsThatAreNone_data();
    void limitsThatAreNone();
    void aProgressThatCannotBeReadIsNamed();
    void aProgressThatCannotBeReadForLongIsReportedOnce();
    void aProgressThatCannotBeReadForAMomentIsNotReported();
    void aRefusedAbortAtTheLimitIsTheLastError();
    void slotsMayEndTheSearchAtTheLimit_data();
    void slotsMayEndTheSearchAtTheLimit();
};

void TestSensorFinderErrors::thereIsNoErrorWithoutAFailure()
{
    answerProgress({{"100.0"}});
    SensorFinder finder;
    QCOMPARE(finder.error(), NoError);
    QCOMPARE(finder.errorString(), QString());
    Recorder recorder(finder, Recorder::WithErrors);
    finder.startSearch(TX270);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(recorder.linesOf("error"), QStringList());
    QCOMPARE(finder.error(), NoError);
    QCOMPARE(finder.errorString(), QString());
}

void TestSensorFinderErrors::aRefusedStartHasTheReasonOfTheLibrary()
{
    refuseCommand("Start_FindSensor");
    SensorFinder finder;
    Recorder recorder(finder, Recorder::WithErrors);
    finder.startSearch(TX270);
    const QStringList expected = {
        "text Sensor scan started...",
        "started",
        "text Searching for device:  Tavrin TX270 ...",
        "status 2",
        "error -5",
    };
    QCOMPARE(recorder.lines, expected);
    QCOMPARE(int(finder.error()), refused);
    QCOMPARE(finder.errorString(), "the search for Tavrin TX270 was refused: refused by the test");
    QVERIFY(isQuiet());
}

void TestSensorFinderErrors::aRefusedStartWithoutATextHasItsNumber()
{
    sondixsim::Fault fault;
    fault.command = "Start_FindSensor";
    fault.code = refused;
    fault.silent = true;
    sondixsim::inject(fault);
    SensorFinder finder;
    finder.startSearch(TX270);
    QCOMPARE(int(finder.error()), refused);
    QCOMPARE(finder.errorString(), "the search for Tavrin TX270 was refused: error -5");
}

void TestSensorFinderErrors::aRefusedStartInTheQueueIsReported()
{
    refuseCommand("Start_FindSensor", 2, 1);
    findAtOnce({"IP_SensorType=41 SA_SerialNumber=\"1\""});
    SensorFinder finder;
    Recorder recorder(finder, Recorder::WithErrors);
    finder.startSearch({TX270, TX280, CC480}, true);
    QVERIFY(recorder.waitFor("error -5"));
    QVERIFY(isQuiet());
    QCOMPARE(recorder.linesOf("found"), QStringList("found 1"));
    QCOMPARE(recorder.lines.mid(recorder.lines.size() - 2), QStringList({"status 2", "error -5"}));
    QCOMPARE(finder.errorString(), "the search for Tavrin TX280 was refused: refused by the test");
}

void TestSensorFinderErrors::theTextIsKnownWhenTheStatusChanges()
{
    refuseCommand("Start_FindSensor");
    SensorFinder finder;
    QString text;
    connect(&finder, &SensorFinder::statusChanged, this, [&](SensorFinder::Status status) {
        if (status == SensorFinder::Error)
            text = finder.errorString();
    });
    finder.startSearch(TX270);
    QCOMPARE(text, "the search for Tavrin TX270 was refused: refused by the test");
}

void TestSensorFinderErrors::aNewSearchForgetsTheError()
{
    refuseCommand("Start_FindSensor", 1, 1);
    answerProgress({{"100.0"}});
    SensorFinder finder;
    finder.startSearch(TX270);
    QCOMPARE(int(finder.error()), refused);
    Recorder recorder(finder, Recorder::WithErrors);
    finder.startSearch(TX270);
    QCOMPARE(finder.error(), NoError);
    QCOMPARE(finder.errorString(), QString());
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(finder.error(), NoError);
}

void TestSensorFinderErrors::aRequestForNothingKeepsTheError()
{
    refuseCommand("Start_FindSensor");
    SensorFinder finder;
    finder.startSearch(TX270);
    finder.startSearch(NoSensor);
    finder.startSearch(QList<SensorType>(), true);
    finder.startFullSearch(RS232, NoGroup);
    QCOMPARE(int(finder.error()), refused);
}

void TestSensorFinderErrors::skippedTypesAreReportedWhileTheSearchGoesOn()
{
    refuseToCreate(TX270);
    answerProgress({{"100.0"}});
    SensorFinder finder;
    Recorder recorder(finder, Recorder::WithErrors);
    SensorFinder::Status status = SensorFinder::Ready;
    connect(&finder, &SensorFinder::errorOccurred, this, [&] { status = finder.status(); });
    finder.startSearch({TX270, CC480}, true);
    const QStringList expected = {
        "text Multiple device scan started...",
        "started",
        "text Skipping device scan for:  Tavrin TX270 ...",
        "status 2",
        "status 1",
        "error -32766",
    };
    QCOMPARE(recorder.lines, expected);
    QCOMPARE(status, SensorFinder::Searching);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(recorder.linesOf("error").size(), 1);
    QCOMPARE(finder.status(), SensorFinder::Ready);
    QCOMPARE(finder.error(), SkippedError);
    QVERIFY2(finder.errorString().startsWith("Tavrin TX270 cannot be searched for: "),
             qPrintable(finder.errorString()));
}

void TestSensorFinderErrors::aLastTypeThatIsSkippedIsReportedBeforeTheEnd()
{
    sondixsim::Fault fault;
    fault.function = "CreateSensorInstance";
    fault.sensorType = TX280;
    fault.code = -3;
    fault.text = "there is no such model";
    sondixsim::inject(fault);
    findAtOnce({"IP_SensorType=41 SA_SerialNumber=\"1\""});
    SensorFinder finder;
    Recorder recorder(finder, Recorder::WithErrors);
    finder.startSearch({TX270, TX280}, true);
    QVERIFY(recorder.waitForEnd());
    const QStringList expected = {
        "text Skipping device scan for:  Tavrin TX280 ...", "status 2", "error -32766", "finished", "finished",
    };
    QCOMPARE(recorder.lines.mid(recorder.lines.indexOf(expected.first())), expected);
    QCOMPARE(finder.errorString(), "Tavrin TX280 cannot be searched for: there is no such model");
}

void TestSensorFinderErrors::aTypeThatIsSkippedWithoutATextIsExplained()
{
    sondixsim::Fault fault;
    fault.function = "CreateSensorInstance";
    fault.code = -3;
    fault.silent = true;
    sondixsim::inject(fault);
    SensorFinder finder;
    finder.startSearch(TX270);
    QCOMPARE(finder.errorString(),
             "Tavrin TX270 cannot be searched for: the sensor-access library does not support it");
}

void TestSensorFinderErrors::aRefusedAbortIsReported()
{
    refuseCommand("Abort_FindSensor");
    answerProgress({{"50.0"}});
    SensorFinder finder;
    Recorder recorder(finder, Recorder::WithErrors);
    finder.startSearch(TX270);
    recorder.clear();
    finder.stopSearch();
    const QStringList expected = {
        "status 0", "status 2", "error -5", "nothing", "text Scan finished, devices found: 0", "finished",
    };
    QCOMPARE(recorder.lines, expected);
    QCOMPARE(finder.errorString(), "the search could not be aborted: refused by the test");
}

void TestSensorFinderErrors::thereIsNoTimeLimitByDefault()
{
    const SensorFinder finder;
    QCOMPARE(finder.timeLimit().count(), 0LL);
}

void TestSensorFinderErrors::aSearchEndsAtItsTimeLimit()
{
    answerProgress({{"20.0", 1}, {"40.0", 2}, {"60.0", 2}});
    answerResults({"IP_SensorType=41 SA_SerialNumber=\"1\"", "IP_SensorType=41 SA_SerialNumber=\"2\""});
    SensorFinder finder;
    Recorder recorder(finder, Recorder::WithErrors);
    finder.setTimeLimit(2700ms); // both results come with the second tick, after 500 ms
    QCOMPARE(finder.timeLimit(), 2700ms);
    QElapsedTimer timer;
    timer.start();
    finder.startSearch(TX270);
    QVERIFY(recorder.waitForEnd());
    QVERIFY2(timer.elapsed() >= 2700, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(recorder.linesOf("found"), QStringList({"found 1", "found 2"}));
    const QStringList expected = {
        "error -32767", "status 0", "status 0", "text Scan finished, devices found: 2", "finished",
    };
    QCOMPARE(recorder.lines.mid(recorder.lines.indexOf(expected.first())), expected);
    QCOMPARE(finder.status(), SensorFinder::Ready);
    QCOMPARE(finder.error(), TimeLimitError);
    QCOMPARE(finder.errorString(), "the search did not end within 2.7 s");
    QCOMPARE(sentCommands().count("Abort_FindSensor"), 1);
    QVERIFY(isQuiet());
}

void TestSensorFinderErrors::aSearchThatFindsNothingEndsAtItsTimeLimit()
{
    answerProgress({{"20.0"}});
    SensorFinder finder;
    Recorder recorder(finder, Recorder::WithErrors);
    finder.setTimeLimit(1ms);
    finder.startSearch(TX270);
    QVERIFY(recorder.waitForEnd());
    const QStringList expected = {
        "text Sensor scan started...",
        "started",
        "text Searching for device:  Tavrin TX270 ...",
        "status 1",
        "progress 20",
        "error -32767",
        "status 0",
        "status 0",
        "nothing",
        "text Scan finished, devices found: 0",
        "finished",
    };
    QCOMPARE(recorder.lines, expected);
}

void TestSensorFinderErrors::theTimeLimitIsForAllTypes()
{
    for (const SensorType type : {TX270, CC480})
        answerProgress({{"20.0"}, {"40.0"}, {"60.0"}, {"80.0"}, {"90.0"}, {"100.0"}}, type);
    SensorFinder finder;
    Recorder recorder(finder, Recorder::WithErrors);
    finder.setTimeLimit(2250ms); // each type takes six ticks of 250 ms
    finder.startSearch({TX270, CC480, MC320}, true);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(recorder.linesOf("error"), QStringList("error -32767"));
    QCOMPARE(searchedTypes(), QList<int>({TX270, CC480}));
    QVERIFY(isQuiet());
}

void TestSensorFinderErrors::aSearchThatIsCompleteHasNotReachedItsLimit()
{
    findAtOnce({"IP_SensorType=41 SA_SerialNumber=\"1\""});
    SensorFinder finder;
    Recorder recorder(finder, Recorder::WithErrors);
    finder.setTimeLimit(1ms);
    finder.startSearch(TX270);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(recorder.linesOf("found"), QStringList("found 1"));
    QCOMPARE(finder.error(), NoError);
}

void TestSensorFinderErrors::theLimitOfEachSearchIsItsOwn()
{
    SensorFinder finder;
    finder.setTimeLimit(3000ms);
    Recorder recorder(finder, Recorder::WithErrors);
    for (int searches = 1; searches <= 2; ++searches) { // each takes two seconds
        sondixsim::clearFaults();
        answerProgress({{"20.0"}, {"30.0"}, {"40.0"}, {"50.0"}, {"60.0"}, {"70.0"}, {"80.0"}, {"100.0"}});
        finder.startSearch(TX270);
        QVERIFY(recorder.waitForEnd(searches));
    }
    QCOMPARE(recorder.linesOf("error"), QStringList());
}

void TestSensorFinderErrors::aRunningSearchGetsANewLimit()
{
    answerProgress({{"50.0"}});
    SensorFinder finder;
    Recorder recorder(finder, Recorder::WithErrors);
    finder.startSearch(TX270);
    QVERIFY(recorder.waitFor("progress 50"));
    QCOMPARE(finder.status(), SensorFinder::Searching);
    finder.setTimeLimit(1ms);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(finder.error(), TimeLimitError);
}

void TestSensorFinderErrors::limitsThatAreNone_data()
{
    QTest::addColumn<qint64>("limit");
    QTest::newRow("zero") << qint64(0);
    QTest::newRow("negative") << qint64(-1);
    QTest::newRow("lowest") << std::numeric_limits<qint64>::min();
    QTest::newRow("highest") << std::numeric_limits<qint64>::max();
}

void TestSensorFinderErrors::limitsThatAreNone()
{
    QFETCH(qint64, limit);
    answerProgress({{"50.0"}, {"50.0"}, {"100.0"}});
    SensorFinder finder;
    Recorder recorder(finder, Recorder::WithErrors);
    finder.setTimeLimit(std::chrono::milliseconds(limit));
    finder.startSearch(TX270);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(recorder.linesOf("error"), QStringList());
    QCOMPARE(recorder.linesOf("progress").size(), 3);
}

void TestSensorFinderErrors::aProgressThatCannotBeReadIsNamed()
{
    refuseCommand("Get_FindSensorProgress");
    SensorFinder finder;
    Recorder recorder(finder, Recorder::WithErrors);
    finder.setTimeLimit(300ms);
    finder.startSearch(TX270);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(recorder.linesOf("error"), QStringList("error -32767"));
    QCOMPARE(finder.errorString(),
             "the search did not end within 0.3 s; its progress cannot be read: refused by the test");
}

void TestSensorFinderErrors::aProgressThatCannotBeReadForLongIsReportedOnce()
{
    refuseCommand("Get_FindSensorProgress", 1, 12);
    answerCommand("Get_FindSensorProgress", "IA_Found=0 IA_Progress=100.0", 13);
    SensorFinder finder;
    Recorder recorder(finder, Recorder::WithErrors);
    finder.startSearch(TX270);
    QVERIFY(recorder.waitFor("progress 0", 12));
    QCOMPARE(recorder.linesOf("error"), QStringList("error -5"));
    QCOMPARE(recorder.lines.indexOf("error -5") - recorder.lines.indexOf("progress 0"), 8);
    QCOMPARE(finder.status(), SensorFinder::Searching);
    QCOMPARE(finder.errorString(), "the search goes on; its progress cannot be read: refused by the test");
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(recorder.linesOf("error").size(), 1);
    QCOMPARE(recorder.linesOf("finished").size(), 1);
}

void TestSensorFinderErrors::aProgressThatCannotBeReadForAMomentIsNotReported()
{
    refuseCommand("Get_FindSensorProgress", 1, 7);
    answerCommand("Get_FindSensorProgress", "IA_Found=0 IA_Progress=50.0", 8, 1);
    answerCommand("Get_FindSensorProgress", "IA_Found=0 IA_Progress=100.0", 9);
    SensorFinder finder;
    Recorder recorder(finder, Recorder::WithErrors);
    finder.startSearch(TX270);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(recorder.linesOf("progress").size(), 9);
    QCOMPARE(recorder.linesOf("error"), QStringList());
}

void TestSensorFinderErrors::aRefusedAbortAtTheLimitIsTheLastError()
{
    refuseCommand("Abort_FindSensor");
    answerProgress({{"50.0"}});
    SensorFinder finder;
    Recorder recorder(finder, Recorder::WithErrors);
    finder.setTimeLimit(1ms);
    finder.startSearch(TX270);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(recorder.linesOf("error"), QStringList({"error -32767", "error -5"}));
    QCOMPARE(int(finder.error()), refused);
    QCOMPARE(finder.status(), SensorFinder::Error);
}

void TestSensorFinderErrors::slotsMayEndTheSearchAtTheLimit_data()
{
    QTest::addColumn<QString>("action");
    for (const char *action : {"stop", "start", "delete", "delete later"})
        QTest::newRow(action) << QString(action);
}

void TestSensorFinderErrors::slotsMayEndTheSearchAtTheLimit()
{
    QFETCH(QString, action);
    answerProgress({{"50.0"}}, TX270);
    answerProgress({{"100.0"}}, MC320);
    QPointer<SensorFinder> finder = new SensorFinder;
    Recorder recorder(*finder, Recorder::WithErrors);
    finder->setTimeLimit(1ms);
    bool done = false;
    connect(finder, &SensorFinder::errorOccurred, this, [&] {
        done = true;
        if (action == "stop")
            finder->stopSearch();
        else if (action == "start")
            finder->startSearch(MC320);
        else if (action == "delete")
            delete finder;
        else
            finder->deleteLater();
    });
    finder->startSearch(TX270);
    QTRY_VERIFY(done);
    QCOMPARE(recorder.linesOf("error"), QStringList("error -32767"));
    if (action.startsWith("delete")) {
        QTRY_VERIFY(finder.isNull());
        return;
    }
    QVERIFY(recorder.waitForEnd());
    QVERIFY(isQuiet());
    QCOMPARE(recorder.lines.count("finished"), 1);
    QCOMPARE(sentCommands().count("Abort_FindSensor"), 1);
    QCOMPARE(finder->error(), action == "stop" ? TimeLimitError : NoError);
    delete finder;
}

QTEST_GUILESS_MAIN(TestSensorFinderErrors)
#include "tst_sensorfinder_errors.moc"
