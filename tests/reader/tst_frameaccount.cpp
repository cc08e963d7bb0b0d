// SPDX-License-Identifier: MIT
#include "support/unit.h"

#include "simulatedstream.h"

#include <QtTest>

#include <random>

using namespace SondixQt;

class FrameAccountTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void framesAreCountedFromZero();
    void transfersMayEndInsideFrames();
    void lostFramesAreCounted_data();
    void lostFramesAreCounted();
    void aFrameThatIsCutByALossIsDiscarded();
    void manyLossesAreCountedToTheFrame();
    void frequentLossesAreCounted_data();
    void frequentLossesAreCounted();
    void aRoundedRateIsCorrected_data();
    void aRoundedRateIsCorrected();
    void aRateThatIsTooInexactGivesAnUnknownLength();
    void anOverrunOfUnknownLengthKeepsTheInterval();
    void framesWithoutARateHaveNoInterval();
    void aTriggeredSensorLosesNothing();
    void timesThatStandStillAreNoTimes();
    void timesThatJumpBackStartANewRun();
    void impreciseTimesAreNoGaps();
    void anImpreciseTimeAtTheBeginIsNoGap();
    void oneEarlyTimeHidesNoLaterLoss();
    void absurdTimesAreNoTimes_data();
    void absurdTimesAreNoTimes();
    void smallTransfersAreWantedUntilTheRateIsExact();
};

void FrameAccountTest::framesAreCountedFromZero()
{
    FrameAccount account;
    account.start({2, 1000.0, true});
    SimulatedStream stream(2, 0.001);
    FrameAccount::Frames frames = stream.transfer(account, 20);
    QCOMPARE(frames.run, 0);
    QCOMPARE(frames.first, 0);
    QCOMPARE(frames.count, 10);
    QCOMPARE(*frames.time, 100.0);
    QCOMPARE(*frames.interval, 0.001);
    QVERIFY(!frames.gap);
    frames = stream.transfer(account, 2);
    QCOMPARE(frames.first, 10);
    QVERIFY(frames.continues);
    QCOMPARE(account.add(0, 1.0).count, 0);
}

void FrameAccountTest::transfersMayEndInsideFrames()
{
    FrameAccount account;
    account.start({3, 1000.0, true});
    SimulatedStream stream(3, 0.001);
    qint64 whole = 0;
    std::mt19937 random(1);
    for (int i = 0; i < 1000; ++i) {
        const FrameAccount::Frames frames = stream.transfer(account, 1 + static_cast<int>(random() % 10));
        QVERIFY(!frames.gap);
        QCOMPARE(frames.first, whole);
        whole += frames.count;
        QCOMPARE(whole, stream.frame());
    }
}

void FrameAccountTest::lostFramesAreCounted_data()
{
    QTest::addColumn<qint64>("lost");
    QTest::newRow("one") << qint64(1);
    QTest::newRow("some") << qint64(17);
    QTest::newRow("many") << qint64(1000000);
}

void FrameAccountTest::lostFramesAreCounted()
{
    QFETCH(qint64, lost);
    FrameAccount account;
    account.start({2, 1000.0, true});
    SimulatedStream stream(2, 0.001);
    for (int i = 0; i < 10; ++i)
        stream.transfer(account, 200);
    stream.lose(lost);
    const FrameAccount::Frames frames = stream.transfer(account, 200);
    QVERIFY(frames.gap);
    QCOMPARE(frames.gap->frames, std::optional<qint64>(lost));
    QCOMPARE(frames.gap->reason, DataGap::LibraryOverrun);
    QCOMPARE(frames.gap->firstFrame, 1000);
    QCOMPARE(frames.gap->run, 0);
    QVERIFY(qAbs(*frames.gap->beginTime - 100.999) < 1e-9);
    QVERIFY(qAbs(*frames.gap->endTime - (101.0 + static_cast<double>(lost) * 0.001)) < 1e-9);
    QCOMPARE(frames.first, 1000 + lost);
    QCOMPARE(frames.run, 0);
    QVERIFY(!stream.transfer(account, 200).gap);
}

void FrameAccountTest::aFrameThatIsCutByALossIsDiscarded()
{
    FrameAccount account;
    account.start({5, 1000.0, true});
    SimulatedStream stream(5, 0.001);
    for (int i = 0; i < 10; ++i)
        stream.transfer(account, 50);
    stream.transfer(account, 52); // frame 110 has 2 values of 5
    stream.lose(7);
    const FrameAccount::Frames frames = stream.transfer(account, 28); // the last 3 values of frame 117
    QCOMPARE(frames.discardedEarlier, 2);
    QCOMPARE(frames.discardedNow, 3);
    QCOMPARE(frames.count, 5);
    QCOMPARE(frames.first, 118);
    QCOMPARE(frames.gap->firstFrame, 110);
    QCOMPARE(frames.gap->frames, std::optional<qint64>(8));
    QVERIFY(qAbs(*frames.time - 100.118) < 1e-9);
    QCOMPARE(stream.transfer(account, 50).first, 123);
}

void FrameAccountTest::manyLossesAreCountedToTheFrame()
{
    FrameAccount account;
    account.start({3, 15625.0, true});
    SimulatedStream stream(3, 1.0 / 15625.0);
    std::mt19937 random(7);
    qint64 known = 0;
    qint64 delivered = 0;
    for (int i = 0; i < 20000; ++i) {
        if (i > 5 && random() % 3 == 0)
            stream.lose(1 + random() % 5000);
        const FrameAccount::Frames frames = stream.transfer(account, 1 + static_cast<int>(random() % 300));
        if (frames.gap) {
            QVERIFY(frames.gap->frames);
            known += *frames.gap->frames;
        }
        delivered += frames.count;
        QCOMPARE(delivered + known, frames.first + frames.count);
        QVERIFY(frames.first + frames.count == stream.frame() || frames.count == 0);
    }
    QVERIFY(known > 0);
}

void FrameAccountTest::frequentLossesAreCounted_data()
{
    QTest::addColumn<double>("real"); // Hz
    QTest::addColumn<int>("every");   // one frame in so many arrives
    QTest::addColumn<int>("waiting"); // frames that are waiting when the library is read
    for (const double real : {5000.0, 5002.0, 4997.5}) {
        for (const int every : {2, 4, 60}) {
            for (const int waiting : {5, 150, 3000})
                QTest::addRow("%g Hz, 1 of %d, %d waiting", real, every, waiting) << real << every << waiting;
        }
    }
}

/// A line that is too slow for the sensor: there is never a stretch without a loss.
void FrameAccountTest::frequentLossesAreCounted()
{
    QFETCH(double, real);
    QFETCH(int, every);
    QFETCH(int, waiting);
    FrameAccount account;
    account.start({1, 5000.0, true}); // the reported rate is rounded
    qint64 arrived = 0;
    for (int i = 0; i < 50; ++i) {
        int transfers = 0;
        for (int left = waiting; left > 0; ++transfers) {
            const int count = std::min(left, account.maxFrames());
            const qint64 number = arrived * every;
            const FrameAccount::Frames frames = account.add(count, 100.0 + static_cast<double>(number) / real);
            QVERIFY(!frames.gap || frames.gap->frames);
            QCOMPARE(frames.first, number);
            QCOMPARE(frames.run, 0);
            arrived += count;
            left -= count;
        }
        QVERIFY(i < 25 || transfers <= std::max(1, waiting * every / 100)); // they do not stay small
    }
}

void FrameAccountTest::aRoundedRateIsCorrected_data()
{
    QTest::addColumn<double>("told");
    QTest::addColumn<double>("real");
    QTest::newRow("exact") << 1000.0 << 1000.0;
    QTest::newRow("rounded") << 52.08 << 52.083333;
    QTest::newRow("coarse") << 1041.67 << 1041.0;
}

void FrameAccountTest::aRoundedRateIsCorrected()
{
    QFETCH(double, told);
    QFETCH(double, real);
    FrameAccount account;
    account.start({1, told, true});
    SimulatedStream stream(1, 1.0 / real);
    std::optional<double> interval;
    for (int i = 0; i < 200; ++i) {
        const FrameAccount::Frames frames = stream.transfer(account, account.maxFrames());
        QVERIFY(!frames.gap);
        interval = frames.interval;
    }
    QVERIFY(qAbs(*interval * real - 1.0) < 1e-6);
    stream.lose(12345);
    QCOMPARE(stream.transfer(account, 10).gap->frames, std::optional<qint64>(12345));
}

void FrameAccountTest::aRateThatIsTooInexactGivesAnUnknownLength()
{
    FrameAccount account;
    account.start({1, 1000.0, true});
    SimulatedStream stream(1, 0.001);
    stream.transfer(account, 10);
    stream.lose(5000); // 0.1 % of this is 5 frames
    const FrameAccount::Frames frames = stream.transfer(account, 10);
    QVERIFY(frames.gap && !frames.gap->frames);
    QCOMPARE(frames.gap->reason, DataGap::LibraryOverrun);
    QCOMPARE(frames.run, 1);
    QCOMPARE(frames.first, 0);
}

void FrameAccountTest::anOverrunOfUnknownLengthKeepsTheInterval()
{
    FrameAccount account;
    account.start({1, 1000.0});
    SimulatedStream stream(1, 0.0010005);
    for (int i = 0; i < 50; ++i)
        stream.transfer(account, 200);
    stream.lose(100'000'000);
    const FrameAccount::Frames frames = stream.transfer(account, 1000);
    QVERIFY(frames.gap);
    QVERIFY(!frames.gap->frames);
    QCOMPARE(frames.gap->reason, DataGap::LibraryOverrun);
    QVERIFY(qAbs(*frames.interval - 0.0010005) < 1e-8);
}

void FrameAccountTest::framesWithoutARateHaveNoInterval()
{
    FrameAccount account;
    account.start({1, 0.0, true});
    SimulatedStream stream(1, 0.001);
    FrameAccount::Frames frames = stream.transfer(account, 10);
    QCOMPARE(*frames.time, 100.0);
    QVERIFY(!frames.interval);
    stream.lose(100);
    frames = stream.transfer(account, 10);
    QVERIFY(!frames.gap);
    QVERIFY(!frames.interval);
    QCOMPARE(frames.first, 10);
}

void FrameAccountTest::aTriggeredSensorLosesNothing()
{
    FrameAccount account;
    account.start({1, 1000.0, false});
    double time = 5.0;
    for (int i = 0; i < 100; ++i) {
        const FrameAccount::Frames frames = account.add(1, time);
        QVERIFY(!frames.gap);
        QVERIFY(!frames.interval);
        QCOMPARE(*frames.time, time);
        time += i % 7 * 0.4; // twice at the same time, too
    }
}

void FrameAccountTest::timesThatStandStillAreNoTimes()
{
    FrameAccount account;
    account.start({1, 1000.0, true});
    account.add(10, 1.0);
    const FrameAccount::Frames frames = account.add(10, 1.0);
    QVERIFY(!frames.gap);
    QVERIFY(!frames.time);
    QVERIFY(!frames.continues);
    QCOMPARE(frames.first, 10);
    const FrameAccount::Frames next = account.add(10, 1.020);
    QVERIFY(!next.gap);
    QCOMPARE(*next.time, 1.020);
}

void FrameAccountTest::timesThatJumpBackStartANewRun()
{
    FrameAccount account;
    account.start({1, 1000.0, true});
    account.add(10, 1000.0);
    account.add(10, 1000.010);
    const FrameAccount::Frames frames = account.add(10, 3.0);
    QVERIFY(frames.gap && !frames.gap->frames);
    QCOMPARE(frames.gap->reason, DataGap::Unknown);
    QCOMPARE(frames.gap->firstFrame, 20);
    QCOMPARE(frames.run, 1);
    QCOMPARE(frames.first, 0);
    QCOMPARE(*frames.time, 3.0);
    QVERIFY(!account.add(10, 3.010).gap);
}

void FrameAccountTest::impreciseTimesAreNoGaps()
{
    FrameAccount account;
    account.start({1, 100000.0, true});
    std::mt19937 random(3);
    double frame = 0.0;
    account.add(1000, 10.0);
    frame += 1000.0;
    account.add(1000, 10.0 + frame / 100000.0 - 0.0003); // too early by 30 frames
    int gaps = 0;
    for (int i = 0; i < 1000; ++i) {
        frame += 1000.0;
        const double jitter = static_cast<double>(random() % 300) * 1e-6;
        gaps += account.add(1000, 10.0 + frame / 100000.0 - jitter).gap ? 1 : 0;
    }
    QCOMPARE(gaps, 0);
}

void FrameAccountTest::anImpreciseTimeAtTheBeginIsNoGap()
{
    FrameAccount account;
    account.start({1, 1000.0, true});
    SimulatedStream stream(1, 0.001);
    stream.transfer(account, 1);
    stream.clockOffset += 0.0003;
    stream.transfer(account, 100);
    stream.clockOffset -= 0.0003;
    for (int i = 0; i < 20; ++i) {
        const FrameAccount::Frames frames = stream.transfer(account, 100);
        QVERIFY(!frames.gap);
        QVERIFY(qAbs(*frames.interval - 0.001) < 0.00001);
    }
}

void FrameAccountTest::oneEarlyTimeHidesNoLaterLoss()
{
    FrameAccount account;
    account.start({1, 100000.0, true});
    SimulatedStream stream(1, 0.00001);
    for (int i = 0; i < 100; ++i)
        stream.transfer(account, 1000);
    stream.clockOffset -= 0.005;
    for (int i = 0; i < 1000; ++i)
        stream.transfer(account, 1000);
    stream.lose(300);
    const FrameAccount::Frames frames = stream.transfer(account, 1000);
    QVERIFY(frames.gap);
    QCOMPARE(frames.gap->frames, std::optional<qint64>(300));
}

void FrameAccountTest::absurdTimesAreNoTimes_data()
{
    QTest::addColumn<double>("time");
    QTest::newRow("nan") << std::numeric_limits<double>::quiet_NaN();
    QTest::newRow("infinite") << std::numeric_limits<double>::infinity();
    QTest::newRow("minus infinite") << -std::numeric_limits<double>::infinity();
}

void FrameAccountTest::absurdTimesAreNoTimes()
{
    QFETCH(double, time);
    FrameAccount account;
    account.start({1, 1000.0, true});
    account.add(10, 1.0);
    const FrameAccount::Frames frames = account.add(10, time);
    QVERIFY(!frames.gap);
    QVERIFY(!frames.time);
    QCOMPARE(frames.first, 10);
    QVERIFY(!account.add(10, 1.020).gap);
    const FrameAccount::Frames huge = account.add(10, 1e300);
    QVERIFY(huge.gap && !huge.gap->frames);
    SimulatedStream stream(1, 0.001);
    for (int i = 0; i < 50; ++i)
        stream.transfer(account, account.maxFrames());
    QVERIFY(account.maxFrames() > 100); // not forever a call for each frame
}

void FrameAccountTest::smallTransfersAreWantedUntilTheRateIsExact()
{
    FrameAccount account;
    account.start({1, 1000.0, true});
    QCOMPARE(account.maxFrames(), 1);
    // Times that stand still measure no rate. 0.1 % of the frames are less than half a frame.
    for (int i = 0; i < 20; ++i)
        account.add(account.maxFrames(), 1.0);
    QVERIFY(account.maxFrames() > 100 && account.maxFrames() <= 500);
    account.start({1, 1000.0, true});
    SimulatedStream stream(1, 0.001);
    for (int i = 0; i < 20; ++i)
        stream.transfer(account, account.maxFrames());
    QVERIFY(account.maxFrames() > 1000);
    account.start({1, 1000.0, false});
    QCOMPARE(account.maxFrames(), 1);
}

QTEST_GUILESS_MAIN(FrameAccountTest)
#include "tst_frameaccount.moc"
