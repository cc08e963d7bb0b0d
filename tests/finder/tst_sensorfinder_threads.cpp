// SPDX-License-Identifier: MIT
#include "scriptedsearch.h"

#include <QSignalSpy>
#include <QThread>

#include <atomic>
#include <functional>
#include <memory>
#include <set>

using namespace SondixQt;
using namespace scriptedsearch;

namespace {

void runInAnotherThread(const std::function<void()> &function)
{
    const std::unique_ptr<QThread> thread(QThread::create(function));
    thread->start();
    thread->wait();
}

} // namespace

class TestSensorFinderThreads : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { begin(); }
    void aSearchCanBeQueuedFromAnotherThread();
    void aSearchOfAListCanBeQueuedFromAnotherThread();
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
    QCOMPARE(recorder.linesOf("found"), QStringList(QStringLiteral("found 1")));
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
    QCOMPARE(searchedTypes(), QList<int>({41, 10043}));
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
    QCOMPARE(sentCommands().count(QStringLiteral("Abort_FindSensor")), 1);
}

void TestSensorFinderThreads::anotherThreadCanWaitForASlot()
{
    answerProgress({{"100.0"}});
    SensorFinder finder;
    Recorder recorder(finder);
    std::atomic_bool wasSearching{false};
    const std::unique_ptr<QThread> thread(QThread::create([&] {
        QMetaObject::invokeMethod(&finder, "startSearch", Qt::BlockingQueuedConnection,
                                  Q_ARG(SondixQt::SensorType, SondixQt::TX270));
        wasSearching = sentCommands().contains(QStringLiteral("Start_FindSensor"));
    }));
    thread->start();
    QVERIFY(recorder.waitForEnd());
    QVERIFY(thread->wait(waitLimit));
    QVERIFY(wasSearching);
}

void TestSensorFinderThreads::foundSensorsReachAnotherThread()
{
    findAtOnce({"IP_SensorType=41 SA_SerialNumber=\"1\"", "IP_SensorType=41 SA_SerialNumber=\"2\""});
    SensorFinder finder;
    Recorder recorder(finder);
    QThread thread;
    QObject receiver;
    QStringList serials;
    QList<SensorFinder::Status> states;
    connect(&finder, &SensorFinder::sensorFound, &receiver, [&](const SensorInfo &info) {
        serials << info.getParameter(QStringLiteral("SA_SerialNumber")).toString();
    });
    connect(&finder, &SensorFinder::statusChanged, &receiver,
            [&](SensorFinder::Status status) { states << status; });
    connect(&finder, &SensorFinder::searchFinished, &receiver, [&] { thread.quit(); });
    receiver.moveToThread(&thread);
    thread.start();
    finder.startSearch(TX270);
    QVERIFY(recorder.waitForEnd());
    QVERIFY(thread.wait(waitLimit));
    QCOMPARE(serials, QStringList({QStringLiteral("1"), QStringLiteral("2")}));
    QCOMPARE(states,
             QList<SensorFinder::Status>({SensorFinder::Searching, SensorFinder::Ready, SensorFinder::Ready}));
}

void TestSensorFinderThreads::aFinderCanLiveInAnotherThread()
{
    findAtOnce({"IP_SensorType=41 SA_SerialNumber=\"1\""});
    QThread thread;
    auto *finder = new SensorFinder;
    QSignalSpy found(finder, &SensorFinder::sensorFound);
    QSignalSpy finished(finder, &SensorFinder::searchFinished);
    connect(finder, &SensorFinder::searchFinished, finder, &QObject::deleteLater);
    connect(
        finder, &QObject::destroyed, &thread, [&thread] { thread.quit(); }, Qt::DirectConnection);
    finder->moveToThread(&thread);
    thread.start();
    QVERIFY(QMetaObject::invokeMethod(finder, "startSearch", Qt::QueuedConnection,
                                      Q_ARG(SondixQt::SensorType, SondixQt::TX270)));
    QVERIFY(thread.wait(waitLimit));
    QCOMPARE(finished.count(), 1);
    QCOMPARE(found.count(), 1);
    QCOMPARE(found.first().first().value<SensorInfo>().sensorType(), TX270);
}

QTEST_GUILESS_MAIN(TestSensorFinderThreads)
#include "tst_sensorfinder_threads.moc"
