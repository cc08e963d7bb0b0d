// SPDX-License-Identifier: MIT
#include "support/unit.h"

#include "reader/frameaccount_p.h"

#include <QtTest>

#include <random>

using namespace SondixQt;

/// A sensor that is transferred in blocks of any size, with the numbers of its frames as the truth.
class SimulatedStream
{
public:
    SimulatedStream(int valuesPerFrame, double period)
        : perFrame(valuesPerFrame)
        , distance(period)
    {
    }

    /// Transfers \a values; the time is that of the frame that contains the first of them.
    FrameAccount::Frames transfer(FrameAccount &account, int values)
    {
        const double time = clockOffset + static_cast<double>(position / perFrame) * distance;
        position += values;
        return account.add(values, time);
    }
    /// The buffer of the library overflows: whole frames are dropped, at the same place in a frame.
    void lose(qint64 frames) { position += frames * perFrame; }
    qint64 frame() const { return position / perFrame; }

    double clockOffset = 100.0;

private:
    const int perFrame;
    const double distance;
    qint64 position = 0; ///< of the next value
};

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
    void aChangedRateIsNoGap_data();
    void aChangedRateIsNoGap();
    void aLossWhileTheRateChangesIsReported();
    void aRestartAtTheSameRateIsNoGap_data();
    void aRestartAtTheSameRateIsNoGap();
    void theEndOfTriggeringIsNoGap();
    void aRateThatSomebodyElseChangesIsNoGap();
    void anInterruptedMeasurementIsRestarted();
    void aBrokenStreamStartsANewRun();
    void smallTransfersAreWantedUntilTheRateIsExact();
    void randomStreamsAreAccountedFor_data();
    void randomStreamsAreAccountedFor();
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
}

void FrameAccountTest::aChangedRateIsNoGap_data()
{
    QTest::addColumn<double>("before");
    QTest::addColumn<double>("after");
    QTest::addColumn<double>("phase"); // of the change between two frames
    for (const double after : {10.0, 500.0, 900.0, 1100.0, 2000.0, 50000.0}) {
        for (const double phase : {0.0, 0.3, 0.9})
            QTest::addRow("to %g Hz at %g", after, phase) << 1000.0 << after << phase;
    }
}

void FrameAccountTest::aChangedRateIsNoGap()
{
    QFETCH(double, before);
    QFETCH(double, after);
    QFETCH(double, phase);
    FrameAccount account;
    account.start({1, before, true});
    qint64 delivered = 0;
    double time = 1.0;
    const auto add = [&](int frames, double period) {
        const FrameAccount::Frames added = account.add(frames, time);
        QVERIFY(!added.gap);
        QCOMPARE(added.first, delivered);
        delivered += frames;
        time += frames * period;
    };
    for (int i = 0; i < 10; ++i)
        add(100, 1.0 / before);
    account.commandSent({1, after, true});
    QCOMPARE(account.maxFrames(), 1);
    add(1, 1.0 / before); // measured before the command, read after it
    add(1, 1.0 / before);
    time += (phase - 1.0) / before + 1.0 / after; // the change restarts the measurement
    for (int i = 0; i < 5; ++i)
        add(1, 1.0 / after);
    account.settle();
    QVERIFY(account.maxFrames() > 1);
    for (int i = 0; i < 10; ++i)
        add(account.maxFrames(), 1.0 / after);
    const FrameAccount::Frames last = account.add(1, time + 50.0 / after);
    QCOMPARE(last.gap->frames, std::optional<qint64>(50));
    QVERIFY(qAbs(*last.interval * after - 1.0) < 1e-6);
}

void FrameAccountTest::aLossWhileTheRateChangesIsReported()
{
    FrameAccount account;
    account.start({1, 1000.0, true});
    for (int i = 0; i < 10; ++i)
        account.add(100, i * 0.1);
    account.commandSent({1, 50.0, true});
    // 19 frames are lost, and the next one is as late as the first one at the new rate would be.
    int gaps = 0;
    for (int i = 0; i < 5; ++i)
        gaps += account.add(1, 1.019 + i * 0.001).gap ? 1 : 0;
    QCOMPARE(gaps, 1);
}

void FrameAccountTest::aRestartAtTheSameRateIsNoGap_data()
{
    QTest::addColumn<double>("phase");
    for (const double phase : {0.0, 0.1, 0.3, 0.5, 0.7, 0.99})
        QTest::addRow("%g", phase) << phase;
}

void FrameAccountTest::aRestartAtTheSameRateIsNoGap()
{
    QFETCH(double, phase);
    FrameAccount account;
    account.start({1, 1000.0, true});
    SimulatedStream stream(1, 1.0 / 999.7); // the reported rate is rounded
    for (int i = 0; i < 100; ++i)
        stream.transfer(account, 100);
    account.commandSent({1, 1000.0, true});
    stream.transfer(account, 1);
    stream.clockOffset += phase / 999.7;
    QVERIFY(!stream.transfer(account, 1).gap);
    QVERIFY(!stream.transfer(account, 1).gap);
    account.settle();
    QVERIFY(!stream.transfer(account, 100).gap);
    stream.lose(400);
    const FrameAccount::Frames frames = stream.transfer(account, 100);
    QCOMPARE(frames.gap->frames, std::optional<qint64>(400));
    QCOMPARE(frames.run, 0);
}

void FrameAccountTest::theEndOfTriggeringIsNoGap()
{
    FrameAccount account;
    account.start({1, 1000.0, false});
    account.add(1, 1.0);
    account.commandSent({1, 1000.0, true});
    // These two were measured by triggers.
    QVERIFY(!account.add(1, 1.0505).gap);
    QVERIFY(!account.add(1, 1.2).gap);
    for (int i = 0; i < 5; ++i)
        QVERIFY(!account.add(1, 1.3007 + i * 0.001).gap);
    account.settle();
    const FrameAccount::Frames frames = account.add(10, 1.3057);
    QVERIFY(!frames.gap);
    QCOMPARE(*frames.interval, 0.001);
    QCOMPARE(account.add(10, 1.3157 + 0.1).gap->frames, std::optional<qint64>(100));
}

void FrameAccountTest::aRateThatSomebodyElseChangesIsNoGap()
{
    FrameAccount account;
    account.start({1, 1000.0, true});
    account.add(100, 1.0);
    account.add(100, 1.1); // from here on at 2 kHz
    QVERIFY(!account.fits(1.15));
    account.setRate(2000.0);
    const FrameAccount::Frames frames = account.add(100, 1.15);
    QVERIFY(!frames.gap);
    QCOMPARE(*frames.interval, 0.0005);
    QVERIFY(account.fits(1.2));
}

void FrameAccountTest::anInterruptedMeasurementIsRestarted()
{
    FrameAccount account;
    account.start({1, 50.0, true});
    account.add(10, 1.0);
    account.commandSent({1, 50.0, true});
    QVERIFY(!account.add(1, 1.2).gap); // had been measured before
    const FrameAccount::Frames frames = account.add(1, 1.9);
    QVERIFY(frames.gap && !frames.gap->frames);
    QCOMPARE(frames.gap->reason, DataGap::Restarted);
    QCOMPARE(frames.run, 1);
    account.settle();
    QVERIFY(!account.add(10, 1.92).gap);
}

void FrameAccountTest::aBrokenStreamStartsANewRun()
{
    FrameAccount account;
    account.start({2, 1000.0, true});
    account.add(21, 1.0);
    QCOMPARE(account.remainder(), 1);
    const DataGap gap = account.breakOff(DataGap::Disconnected);
    QCOMPARE(gap.firstFrame, 10);
    QCOMPARE(gap.run, 0);
    QVERIFY(!gap.frames);
    QCOMPARE(gap.reason, DataGap::Disconnected);
    QVERIFY(qAbs(*gap.beginTime - 1.009) < 1e-9);
    QCOMPARE(account.remainder(), 0);
    account.resume({4, 100.0, true});
    const FrameAccount::Frames frames = account.add(8, 500.0);
    QVERIFY(!frames.gap);
    QCOMPARE(frames.run, 1);
    QCOMPARE(frames.first, 0);
    QCOMPARE(frames.count, 2);
    QCOMPARE(*frames.interval, 0.01);
}

void FrameAccountTest::smallTransfersAreWantedUntilTheRateIsExact()
{
    FrameAccount account;
    account.start({1, 1000.0, true});
    // 0.1 % of them are less than half a frame.
    QVERIFY(account.maxFrames() <= 500);
    SimulatedStream stream(1, 0.001);
    for (int i = 0; i < 20; ++i)
        stream.transfer(account, account.maxFrames());
    QVERIFY(account.maxFrames() > 1000);
    account.start({1, 1000.0, false});
    QCOMPARE(account.maxFrames(), 1);
}

namespace {

/// What a sensor has measured and the library keeps, and what the account says about it.
class RandomStream
{
public:
    explicit RandomStream(quint32 seed)
        : random(seed)
        , perFrame(1 + int(random() % 5))
        , jitter(random() % 2 ? 0.02 : 0.0)
    {
        setRate(std::pow(10.0, 1.0 + 4.0 * fraction()));
        account.start(timing());
    }

    /// Empty, or what is wrong.
    QString step()
    {
        switch (random() % 24) {
        case 0:
        case 1:
        case 2:
            lose(1 + qint64(random() % 20000));
            break;
        case 3:
            breakOff();
            break;
        case 4:
            return changeRate();
        case 5:
            return jumpBack();
        case 6:
            standing = true;
            break;
        default:
            break;
        }
        measure(1 + int(random() % 2000));
        return transferAll(false);
    }

private:
    double fraction() { return double(random()) / 4294967296.0; }
    FrameAccount::Timing timing() const { return {perFrame, reportedRate, true}; }
    void setRate(double hertz)
    {
        reportedRate = hertz;
        period = 1.0 / (hertz * (1.0 + (fraction() - 0.5) * 4.0e-4)); // reported rates are rounded
    }
    void measure(int frames)
    {
        for (int i = 0; i < frames; ++i) {
            times.push_back(time);
            deviations.push_back((fraction() - 0.5) * 2.0 * jitter * period);
            time += period;
        }
        available += qint64(frames) * perFrame;
    }
    /// The library drops frames, which begin where the next transfer would have begun.
    void lose(qint64 frames)
    {
        frames = std::min(frames, available / perFrame);
        position += frames * perFrame;
        available -= frames * perFrame;
        lost += frames;
    }
    void breakOff()
    {
        account.breakOff(DataGap::Disconnected);
        position += available;
        available = 0;
        position += (perFrame - position % perFrame) % perFrame;
        times.resize(std::size_t(position / perFrame));
        deviations.resize(times.size());
        time += fraction() * 10.0;
        account.resume(timing());
        lost = 0;
        jumpedAt.reset();
        base.reset();
        lastRun = -1;
    }
    QString changeRate()
    {
        // As the reader does it: everything is read, the command is sent, then frames are read one by one.
        standing = false;
        measure(20);
        QString error = transferAll(true);
        const int before = int(random() % 20); // measured before the command was carried out
        measure(before);
        const double periodBefore = period;
        setRate(std::clamp(reportedRate * std::pow(10.0, fraction() * 2.0 - 1.0), 1.0, 1.0e6));
        account.commandSent(timing());
        time += fraction() * periodBefore - periodBefore + period;
        measure(3 + int(random() % 20));
        if (error.isEmpty())
            error = transferAll(true);
        account.settle();
        measure(3 + int(random() % 20));
        return error.isEmpty() ? transferAll(false) : error;
    }
    QString jumpBack()
    {
        if (!(position > 0))
            return {};
        time -= 1000.0 + fraction();
        jumpedAt = qint64(times.size());
        return {};
    }
    /// Part of the values is left at times.
    QString transferAll(bool single)
    {
        while (available > 0) {
            const qint64 frames = single ? 1 : account.maxFrames();
            qint64 wanted = std::max<qint64>(frames * perFrame - account.remainder(), 1);
            if (account.remainder() > 0)
                wanted = perFrame - account.remainder();
            wanted = std::min(wanted, available);
            if (!single && random() % 8 == 0)
                wanted = 1 + qint64(random()) % wanted;
            const QString error = transfer(int(wanted));
            if (!error.isEmpty())
                return error;
            if (!single && random() % 16 == 0)
                break;
        }
        return {};
    }
    QString transfer(int values)
    {
        const qint64 first = position / perFrame;
        double at = times.at(std::size_t(first)) + deviations.at(std::size_t(first));
        if (std::exchange(standing, false))
            at = std::numeric_limits<double>::quiet_NaN();
        const FrameAccount::Frames frames = account.add(values, at);
        position += values;
        available -= values;
        const bool jumped = jumpedAt && first >= *jumpedAt;
        if (frames.gap) {
            if (lost == 0 && !jumped)
                return QString(
                           "a gap of %3 frames without a loss at frame %1, reason %2, rate %4, jitter %5, dt %6")
                    .arg(first)
                    .arg(frames.gap->reason)
                    .arg(frames.gap->frames.value_or(-1))
                    .arg(reportedRate)
                    .arg(jitter)
                    .arg((times.at(std::size_t(first)) - times.at(std::size_t(first - 1))) / period);
            if (lost > 0 && !jumped && frames.gap->reason != DataGap::LibraryOverrun)
                return QString("a loss has the reason %1").arg(frames.gap->reason);
            lost = 0;
            if (jumped)
                jumpedAt.reset();
        }
        if (frames.count == 0)
            return {};
        // The frames are the last whole ones up to here.
        const qint64 truth = position / perFrame - frames.count;
        if (frames.run != lastRun)
            base = truth - frames.first;
        lastRun = frames.run;
        if (truth - frames.first != *base)
            return QString("frame %1 has the number %2 instead of %3, gap %4")
                .arg(truth)
                .arg(frames.first)
                .arg(truth - *base)
                .arg(frames.gap && frames.gap->frames ? *frames.gap->frames : -1);
        if (frames.time && std::fabs(*frames.time - times.at(std::size_t(truth))) >
                               std::fabs(deviations.at(std::size_t(truth))) + 0.05 * period)
            return QString("frame %1 has a wrong time").arg(truth);
        return {};
    }

    std::mt19937 random;
    const int perFrame;
    const double jitter;
    FrameAccount account;
    double reportedRate = 0.0;
    double period = 0.0;
    double time = 100.0;
    std::vector<double> times;      ///< of all frames
    std::vector<double> deviations; ///< of the times that the library reports
    qint64 position = 0;            ///< of the next value to transfer
    qint64 available = 0;
    qint64 lost = 0;                ///< since the last gap
    std::optional<qint64> jumpedAt; ///< the first frame after the clock has been set back
    bool standing = false;
    std::optional<qint64> base;
    int lastRun = -1;
};

} // namespace

void FrameAccountTest::randomStreamsAreAccountedFor_data()
{
    QTest::addColumn<quint32>("seed");
    bool isNumber = false;
    const quint32 chosen = qEnvironmentVariable("SONDIXQT_SEED").toUInt(&isNumber);
    const quint32 count =
        qEnvironmentVariableIsSet("SONDIXQT_SEEDS") ? quint32(qEnvironmentVariableIntValue("SONDIXQT_SEEDS")) : 50;
    for (quint32 seed = isNumber ? chosen : 1; seed <= (isNumber ? chosen : count); ++seed)
        QTest::addRow("seed %u", seed) << seed;
}

void FrameAccountTest::randomStreamsAreAccountedFor()
{
    QFETCH(quint32, seed);
    RandomStream stream(seed);
    for (int i = 0; i < 100; ++i) {
        const QString error = stream.step();
        QVERIFY2(error.isEmpty(), qPrintable(QString("step %1: %2").arg(i).arg(error)));
    }
}

QTEST_GUILESS_MAIN(FrameAccountTest)
#include "tst_frameaccount.moc"
