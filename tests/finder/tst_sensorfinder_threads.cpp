// SPDX-License-Identifier: MIT
#include "scriptedsearch.h"

#include <QThread>

#include <condition_variable>
#include <functional>
#include <future>
#include <mutex>
#include <set>
#include <thread>

using namespace SondixQt;
using namespace scriptedsearch;

// The threads are synchronised with the standard library: the thread sanitizer does not recognise the classes of
// Qt.
namespace {

void runInAnotherThread(const std::function<void()> &function)
{
    std::thread(function).join();
}

/// Counts the signals of one thread, so that another thread can wait for them.
class Handover
{
public:
    void send()
    {
        const std::lock_guard<std::mutex> lock(mutex);
        ++sent;
        changed.notify_all();
    }

    void receive()
    {
        std::unique_lock<std::mutex> lock(mutex);
        ++received;
        changed.wait(lock, [this] { return sent >= received; });
    }

private:
    std::mutex mutex;
    std::condition_variable changed;
    int sent = 0;
    int received = 0;
};

} // namespace

class TestSensorFinderThreads : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { begin(); }
    void aSearchCanBeQueuedFromAnotherThread();
    void aSearchOfAListCanBeQueuedFromAnotherThread();
    void aFullSearchCanBeQueuedFromAnotherThread();
    void errorsReachAnotherThread();
    void stoppingCanBeQueuedFromAnotherThread_data();
    void stoppingCanBeQueuedFromAnotherThread();
    void anotherThreadCanWaitForASlot();
    void foundSensorsReachAnotherThread();
    void aFinderCanLiveInAnotherThread();
};

void TestSensorFinderThreads::aSearchCanBeQueuedFromAnotherThread()
{
    findAtOnce({"IP_SensorType=41 SA_SerialNumber=\"1\""});
    SensorFinder finder;
    Recorder recorder(finder);
    bool invoked = false;
    runInAnotherThread([&] {
        invoked = QMetaObject::invokeMethod(&finder, "startSearch", Qt::QueuedConnection,
                                            Q_ARG(SondixQt::SensorType, SondixQt::TX270));
    });
    QVERIFY(invoked);
    QCOMPARE(recorder.lines, QStringList());
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(recorder.linesOf("found"), QStringList("found 1"));
    std::set<unsigned> threads;
    for (const sondixsim::Call &call : sondixsim::calls())
        threads.insert(call.thread);
    QCOMPARE(threads.size(), std::size_t(1));
}

void TestSensorFinderThreads::aSearchOfAListCanBeQueuedFromAnotherThread()
{
    answerProgress({{"100.0"}});
    SensorFinder finder;
    Recorder recorder(finder);
    bool invoked = false;
    runInAnotherThread([&] {
        const QList<SensorType> types = {TX270, EC830};
        invoked = QMetaObject::invokeMethod(&finder, "startSearch", Qt::QueuedConnection,
                                            Q_ARG(QList<SondixQt::SensorType>, types), Q_ARG(bool, false));
    });
    QVERIFY(invoked);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(searchedTypes(), QList<int>({TX270, EC830}));
}

void TestSensorFinderThreads::aFullSearchCanBeQueuedFromAnotherThread()
{
    findAtOnce({"IP_SensorType=31 IP_InterfaceIdx=1 SA_SerialNumber=\"1\""});
    SensorFinder finder;
    Recorder recorder(finder);
    bool invoked = false;
    runInAnotherThread([&] {
        invoked = QMetaObject::invokeMethod(&finder, "startFullSearch", Qt::QueuedConnection,
                                            Q_ARG(SondixQt::SensorInterfaces, SondixQt::RS232),
                                            Q_ARG(SondixQt::SensorGroups, SondixQt::Profax));
    });
    QVERIFY(invoked);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(recorder.linesOf("found"), QStringList("found 1"));
    QCOMPARE(searchedTypes(), QList<int>({PF}));
}

void TestSensorFinderThreads::errorsReachAnotherThread()
{
    refuseCommand("Start_FindSensor");
    SensorFinder finder;
    QThread thread;
    QObject context;
    context.moveToThread(&thread);
    Handover emitted;
    std::promise<std::pair<ErrorCode, std::string>> reported;
    connect(&finder, &SensorFinder::errorOccurred, &context, [&](ErrorCode code, const QString &text) {
        emitted.receive();
        reported.set_value({code, text.toStdString()});
    });
    thread.start();
    finder.startSearch(TX270);
    emitted.send();
    const auto [code, text] = reported.get_future().get();
    thread.quit();
    QVERIFY(thread.wait(waitLimit));
    QCOMPARE(int(code), refused);
    QCOMPARE(QString::fromStdString(text), finder.errorString());
}

void TestSensorFinderThreads::stoppingCanBeQueuedFromAnotherThread_data()
{
    QTest::addColumn<QByteArray>("slot");
    QTest::addColumn<int>("times");
    QTest::addRow("stopSearch") << QByteArray("stopSearch") << 1;
    QTest::addRow("stopSensorFinderScan") << QByteArray("stopSensorFinderScan") << 2;
}

void TestSensorFinderThreads::stoppingCanBeQueuedFromAnotherThread()
{
    QFETCH(QByteArray, slot);
    QFETCH(int, times);
    answerProgress({{"50.0"}});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(TX270);
    bool invoked = false;
    runInAnotherThread(
        [&] { invoked = QMetaObject::invokeMethod(&finder, slot.constData(), Qt::QueuedConnection); });
    QVERIFY(invoked);
    QCOMPARE(finder.status(), SensorFinder::Searching);
    QVERIFY(recorder.waitForEnd(times));
    QCOMPARE(finder.status(), SensorFinder::Ready);
    QCOMPARE(sentCommands().count("Abort_FindSensor"), 1);
}

void TestSensorFinderThreads::anotherThreadCanWaitForASlot()
{
    answerProgress({{"100.0"}});
    SensorFinder finder;
    Recorder recorder(finder);
    const SensorType type = TX270;
    bool wasSearching = false;
    std::thread thread([&] {
        QMetaObject::invokeMethod(&finder, "startSearch", Qt::BlockingQueuedConnection,
                                  Q_ARG(SondixQt::SensorType, type));
        wasSearching = sentCommands().contains("Start_FindSensor");
    });
    const bool ended = recorder.waitForEnd();
    thread.join();
    QVERIFY(ended);
    QVERIFY(wasSearching);
}

void TestSensorFinderThreads::foundSensorsReachAnotherThread()
{
    findAtOnce({"IP_SensorType=41 SA_SerialNumber=\"1\"", "IP_SensorType=41 SA_SerialNumber=\"2\""});
    SensorFinder finder;
    QThread thread;
    QObject receiver;
    Handover foundHandover;
    Handover statusHandover;
    Handover end;
    QStringList serials;
    QList<SensorFinder::Status> states;
    connect(&finder, &SensorFinder::sensorFound, &receiver, [&](const SensorInfo &info) {
        foundHandover.receive();
        serials << info.getParameter("SA_SerialNumber").toString();
    });
    connect(&finder, &SensorFinder::statusChanged, &receiver, [&](SensorFinder::Status status) {
        statusHandover.receive();
        states << status;
    });
    connect(&finder, &SensorFinder::searchFinished, &receiver, [&] {
        thread.quit();
        end.send();
    });
    receiver.moveToThread(&thread);
    connect(&finder, &SensorFinder::sensorFound, &finder, [&] { foundHandover.send(); });
    connect(&finder, &SensorFinder::statusChanged, &finder, [&] { statusHandover.send(); });
    Recorder recorder(finder);
    thread.start();
    finder.startSearch(TX270);
    const bool ended = recorder.waitForEnd();
    if (!ended)
        thread.quit();
    QVERIFY(thread.wait(waitLimit));
    QVERIFY(ended);
    end.receive();
    QCOMPARE(serials, QStringList({"1", "2"}));
    QCOMPARE(states,
             QList<SensorFinder::Status>({SensorFinder::Searching, SensorFinder::Ready, SensorFinder::Ready}));
}

void TestSensorFinderThreads::aFinderCanLiveInAnotherThread()
{
    findAtOnce({"IP_SensorType=41 SA_SerialNumber=\"1\""});
    QThread thread;
    auto *finder = new SensorFinder;
    Handover end;
    QList<SensorType> found;
    connect(finder, &SensorFinder::sensorFound, finder,
            [&](const SensorInfo &info) { found << info.sensorType(); });
    connect(finder, &SensorFinder::searchFinished, finder, &QObject::deleteLater);
    connect(finder, &QObject::destroyed, finder, [&] {
        thread.quit();
        end.send();
    });
    connect(&thread, &QThread::started, finder, [finder] { finder->startSearch(TX270); });
    finder->moveToThread(&thread);
    thread.start();
    QVERIFY(thread.wait(waitLimit));
    end.receive();
    QCOMPARE(found, QList<SensorType>({TX270}));
    std::set<unsigned> threads;
    for (const sondixsim::Call &call : sondixsim::calls())
        threads.insert(call.thread);
    QCOMPARE(threads.size(), std::size_t(1));
}

QTEST_GUILESS_MAIN(TestSensorFinderThreads)
#include "tst_sensorfinder_threads.moc"
