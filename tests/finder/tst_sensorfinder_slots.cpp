// SPDX-License-Identifier: MIT
#include "scriptedsearch.h"

#include <QEventLoop>
#include <QPointer>
#include <QSignalSpy>

#include <functional>
#include <memory>

using namespace SondixQt;
using namespace scriptedsearch;

namespace {

/// The signals of a search of two types as lines of Recorder. The second type cannot be created. One sensor is
/// found in one tick and two in another.
QStringList signalLines()
{
    return {
        "text Multiple device scan started...",
        "started",
        "text Searching for device:  Tavrin TX270 ...",
        "status 1",
        "found 1",
        "progress 25",
        "found 2",
        "progress 50",
        "text Skipping device scan for:  Oscura CC480 ...",
        "status 2",
        "error -32766",
        "finished",
    };
}

void addSignalRows()
{
    QTest::addColumn<QString>("line");
    for (const QString &line : signalLines())
        QTest::addRow("%s", qPrintable(line)) << line;
}

void scriptSignals()
{
    answerProgress({{"50.0", 1}, {"100.0", 3}}, TX270);
    answerResults({"IP_SensorType=41 SA_SerialNumber=\"1\"", "IP_SensorType=41 SA_SerialNumber=\"2\"",
                   "IP_SensorType=41 SA_SerialNumber=\"3\""});
    refuseToCreate(CC480);
}

/// Calls a function once, in a slot of the signal that Recorder would record as a given line.
class Interceptor : public QObject
{
public:
    Interceptor(SensorFinder *finder, const QString &line, std::function<void()> action)
        : wanted(line)
        , act(std::move(action))
    {
        connect(finder, &SensorFinder::searchStarted, this, [this] { see("started"); });
        connect(finder, &SensorFinder::searchFinished, this, [this] { see("finished"); });
        connect(finder, &SensorFinder::showNothingFoundMsg, this, [this] { see("nothing"); });
        connect(finder, &SensorFinder::progressChanged, this,
                [this](int progress) { see(QStringLiteral("progress %1").arg(progress)); });
        connect(finder, &SensorFinder::statusChanged, this,
                [this](SensorFinder::Status status) { see(QStringLiteral("status %1").arg(int(status))); });
        connect(finder, &SensorFinder::updateSensorFinderStatus, this,
                [this](const QString &text) { see("text " + text); });
        connect(finder, &SensorFinder::sensorFound, this, [this](const SensorInfo &info) {
            see("found " + info.getParameter("SA_SerialNumber").toString());
        });
        connect(finder, &SensorFinder::errorOccurred, this,
                [this](ErrorCode code) { see(QStringLiteral("error %1").arg(code)); });
    }

    bool done = false;

private:
    void see(const QString &line)
    {
        if (done || line != wanted)
            return;
        done = true;
        act();
    }

    QString wanted;
    std::function<void()> act;
};

bool waitForDone(const Interceptor &interceptor)
{
    return QTest::qWaitFor([&] { return interceptor.done; }, waitLimit);
}

} // namespace

class TestSensorFinderSlots : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { begin(); }
    void theRowsHoldEverySignal();
    void stoppingFromAnySlotEndsTheSearch_data();
    void stoppingFromAnySlotEndsTheSearch();
    void startingFromAnySlotReplacesTheSearch_data() { addSignalRows(); }
    void startingFromAnySlotReplacesTheSearch();
    void deletingFromAnySlotIsSafe_data();
    void deletingFromAnySlotIsSafe();
    void stoppingWhileAStopIsAnnouncedAddsNothing_data();
    void stoppingWhileAStopIsAnnouncedAddsNothing();
    void aStopIsReplacedByAStart_data();
    void aStopIsReplacedByAStart();
    void searchingAgainWhenFinishedGoesOnAndOn();
    void anEventLoopInASlotDoesNotDisturbTheSearch_data() { addSignalRows(); }
    void anEventLoopInASlotDoesNotDisturbTheSearch();
    void theSearchBeforeRestsWhileTheNextIsAnnounced();
    void aSearchWithinASlotComesToItsEnd();
    void destructionAbortsTheSearchSilently();
    void destructionAfterAnErrorAbortsNothing();
    void destructionWhenNothingRunsSendsNothing();
};

void TestSensorFinderSlots::theRowsHoldEverySignal()
{
    scriptSignals();
    SensorFinder finder;
    Recorder recorder(finder, Recorder::WithErrors);
    finder.startSearch({TX270, CC480}, true);
    QVERIFY(recorder.waitForEnd(2));
    for (const QString &line : signalLines())
        QVERIFY2(recorder.lines.contains(line), qPrintable(line));
}

void TestSensorFinderSlots::stoppingFromAnySlotEndsTheSearch_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<int>("aborts");
    QTest::addColumn<SensorFinder::Status>("status");
    const QStringList lines = signalLines();
    for (int i = 0; i < lines.size(); ++i) {
        // From the fourth to the eighth signal a search is running that can be aborted; later there is no instance
        // to abort it.
        const bool isSearching = i >= 3 && i <= 7;
        QTest::addRow("%s", qPrintable(lines[i]))
            << lines[i] << int(isSearching) << (i <= 7 ? SensorFinder::Ready : SensorFinder::Error);
    }
}

void TestSensorFinderSlots::stoppingFromAnySlotEndsTheSearch()
{
    QFETCH(QString, line);
    QFETCH(int, aborts);
    QFETCH(SensorFinder::Status, status);
    scriptSignals();
    SensorFinder finder;
    QStringList linesAtStop;
    Recorder *recorder = nullptr;
    const Interceptor interceptor(&finder, line, [&] {
        finder.stopSearch();
        linesAtStop = recorder->lines;
    });
    // Connected last, so that it receives the intercepted signal after the slot that stops the search.
    Recorder lastRecorder(finder, Recorder::WithErrors);
    recorder = &lastRecorder;
    finder.startSearch({TX270, CC480}, true);
    QVERIFY(waitForDone(interceptor));

    QTRY_COMPARE(finder.status(), status);
    QVERIFY(isQuiet());
    QCOMPARE(sentCommands().count("Abort_FindSensor"), aborts);
    const QString finished = "finished";
    const QStringList rest = line == finished ? QStringList({finished, finished}) : QStringList(line);
    QCOMPARE(lastRecorder.lines, linesAtStop + rest);
    QVERIFY(lastRecorder.lines.contains(finished));
}

void TestSensorFinderSlots::startingFromAnySlotReplacesTheSearch()
{
    QFETCH(QString, line);
    scriptSignals();
    answerProgress({{"70.0"}, {"100.0"}}, MC320);
    SensorFinder finder;
    Recorder *recorder = nullptr;
    const Interceptor interceptor(&finder, line, [&] {
        recorder->clear();
        finder.startSearch(MC320);
    });
    Recorder lastRecorder(finder, Recorder::WithErrors);
    recorder = &lastRecorder;
    finder.startSearch({TX270, CC480}, true);
    QVERIFY(waitForDone(interceptor));
    QVERIFY(lastRecorder.waitFor("text Scan finished, devices found: 0"));

    const QStringList expected = {
        "text Sensor scan started...",
        "started",
        "text Searching for device:  Silvant MC320 ...",
        "status 1",
        line,
        "progress 70",
        "progress 100",
        "status 0",
        "status 0",
        "nothing",
        "text Scan finished, devices found: 0",
        "finished",
    };
    QCOMPARE(lastRecorder.lines, expected);
    QCOMPARE(finder.status(), SensorFinder::Ready);
}

void TestSensorFinderSlots::deletingFromAnySlotIsSafe_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<bool>("later");
    for (const QString &line : signalLines()) {
        QTest::addRow("%s, at once", qPrintable(line)) << line << false;
        QTest::addRow("%s, later", qPrintable(line)) << line << true;
    }
}

void TestSensorFinderSlots::deletingFromAnySlotIsSafe()
{
    QFETCH(QString, line);
    QFETCH(bool, later);
    scriptSignals();
    auto *finder = new SensorFinder;
    const QPointer<SensorFinder> guard(finder);
    const Interceptor interceptor(finder, line, [&] {
        if (later)
            finder->deleteLater();
        else
            delete finder;
    });
    finder->startSearch({TX270, CC480}, true);
    QVERIFY(waitForDone(interceptor));
    QTRY_VERIFY(guard.isNull());

    const int created = callTexts().filter("CreateSensorInstance(41)").size();
    QCOMPARE(callTexts().filter("ReleaseSensorInstance").size(), created);
}

void TestSensorFinderSlots::stoppingWhileAStopIsAnnouncedAddsNothing_data()
{
    QTest::addColumn<QString>("line");
    for (const char *line : {"status 0", "nothing", "text Scan finished, devices found: 0", "finished"})
        QTest::addRow("%s", line) << QString::fromLatin1(line);
}

void TestSensorFinderSlots::stoppingWhileAStopIsAnnouncedAddsNothing()
{
    QFETCH(QString, line);
    answerProgress({{"100.0"}});
    SensorFinder finder;
    Recorder recorder(finder, Recorder::WithErrors);
    const Interceptor first(&finder, line, [&] { finder.stopSearch(); });
    const Interceptor second(&finder, line, [&] { finder.stopSensorFinderScan(); });
    finder.startSearch(TX270);
    QVERIFY(recorder.waitForEnd());
    const QStringList expected = {
        "progress 100", "status 0", "status 0", "nothing", "text Scan finished, devices found: 0", "finished",
    };
    QVERIFY(first.done);
    QVERIFY(second.done);
    QCOMPARE(recorder.lines.mid(recorder.lines.indexOf(expected.first())), expected);
    QCOMPARE(sentCommands().count("Abort_FindSensor"), 1);
    QCOMPARE(finder.status(), SensorFinder::Ready);
}

void TestSensorFinderSlots::aStopIsReplacedByAStart_data()
{
    stoppingWhileAStopIsAnnouncedAddsNothing_data();
}

void TestSensorFinderSlots::aStopIsReplacedByAStart()
{
    QFETCH(QString, line);
    answerProgress({{"20.0"}}, TX270);
    answerProgress({{"100.0"}}, MC320);
    SensorFinder finder;
    Recorder recorder(finder, Recorder::WithErrors);
    finder.startSearch(TX270);
    const Interceptor interceptor(&finder, line, [&] { finder.startSearch(MC320); });
    finder.stopSensorFinderScan();
    QVERIFY(interceptor.done);
    QCOMPARE(finder.status(), SensorFinder::Searching);
    recorder.clear();
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(recorder.lines.first(), "progress 100");
    QCOMPARE(recorder.lines.count("finished"), 1);
    QCOMPARE(finder.status(), SensorFinder::Ready);
}

void TestSensorFinderSlots::searchingAgainWhenFinishedGoesOnAndOn()
{
    findAtOnce({"IP_SensorType=41 SA_SerialNumber=\"1\""});
    SensorFinder finder;
    Recorder recorder(finder, Recorder::WithErrors);
    int searches = 1;
    connect(&finder, &SensorFinder::searchFinished, &finder, [&] {
        if (++searches <= 3)
            finder.startSearch(TX270);
    });
    finder.startSearch(TX270);
    QVERIFY(recorder.waitForEnd(3));
    QCOMPARE(recorder.linesOf("found").size(), 3);
    QCOMPARE(finder.status(), SensorFinder::Ready);
    QVERIFY(isQuiet());
}

void TestSensorFinderSlots::anEventLoopInASlotDoesNotDisturbTheSearch()
{
    QFETCH(QString, line);
    scriptSignals();
    SensorFinder finder;
    Recorder recorder(finder, Recorder::WithErrors);
    const Interceptor interceptor(&finder, line, [&] {
        QEventLoop loop;
        QTimer::singleShot(600, &loop, &QEventLoop::quit); // more than two ticks
        loop.exec();
    });
    finder.startSearch({TX270, CC480}, true);
    QVERIFY(recorder.waitForEnd(2));
    QVERIFY(interceptor.done);
    const QStringList expected = {
        "text Multiple device scan started...",
        "started",
        "text Searching for device:  Tavrin TX270 ...",
        "status 1",
        "found 1",
        "progress 25",
        "found 2",
        "found 3",
        "progress 50",
        "text Skipping device scan for:  Oscura CC480 ...",
        "status 2",
        "error -32766",
        "finished",
        "finished",
    };
    QCOMPARE(recorder.lines, expected);
}

void TestSensorFinderSlots::theSearchBeforeRestsWhileTheNextIsAnnounced()
{
    answerProgress({{"100.0", 1}});
    answerResults({"IP_SensorType=41 SA_SerialNumber=\"1\""});
    SensorFinder finder;
    finder.startSearch(TX270);
    Recorder recorder(finder, Recorder::WithErrors);
    const Interceptor interceptor(&finder, "started", [&] {
        QEventLoop loop;
        QTimer::singleShot(600, &loop, &QEventLoop::quit); // more than two ticks
        loop.exec();
    });
    finder.startSearch(TX280);
    QVERIFY(interceptor.done);
    const QStringList expected = {
        "text Sensor scan started...",
        "started",
        "text Searching for device:  Tavrin TX280 ...",
        "status 1",
    };
    QCOMPARE(recorder.lines, expected);
}

void TestSensorFinderSlots::aSearchWithinASlotComesToItsEnd()
{
    scriptSignals();
    answerProgress({{"100.0"}}, MC320);
    SensorFinder finder;
    Recorder recorder(finder, Recorder::WithErrors);
    const Interceptor interceptor(&finder, "found 1", [&] {
        finder.startSearch(MC320);
        QSignalSpy finished(&finder, &SensorFinder::searchFinished);
        QVERIFY(finished.wait(waitLimit));
    });
    finder.startSearch({TX270, CC480}, true);
    QVERIFY(recorder.waitForEnd());
    QTRY_VERIFY(interceptor.done);
    QCOMPARE(recorder.lines.last(), "finished");
    QCOMPARE(searchedTypes(), QList<int>({TX270, MC320}));
}

void TestSensorFinderSlots::destructionAbortsTheSearchSilently()
{
    answerProgress({{"50.0"}});
    auto finder = std::make_unique<SensorFinder>();
    Recorder recorder(*finder, Recorder::WithErrors);
    finder->startSearch(TX270);
    QVERIFY(recorder.waitFor("progress 50"));
    recorder.clear();
    finder.reset();
    QCOMPARE(recorder.lines, QStringList());
    QCOMPARE(sentCommands().count("Abort_FindSensor"), 1);
    QCOMPARE(callTexts().filter("ReleaseSensorInstance").size(), 1);
}

void TestSensorFinderSlots::destructionAfterAnErrorAbortsNothing()
{
    refuseCommand("Start_FindSensor");
    auto finder = std::make_unique<SensorFinder>();
    Recorder recorder(*finder, Recorder::WithErrors);
    finder->startSearch(TX270);
    recorder.clear();
    finder.reset();
    QCOMPARE(recorder.lines, QStringList());
    QVERIFY(!sentCommands().contains("Abort_FindSensor"));
}

void TestSensorFinderSlots::destructionWhenNothingRunsSendsNothing()
{
    {
        const SensorFinder finder;
        QCOMPARE(finder.status(), SensorFinder::Ready);
    }
    QCOMPARE(callTexts(), QStringList());
}

QTEST_GUILESS_MAIN(TestSensorFinderSlots)
#include "tst_sensorfinder_slots.moc"
