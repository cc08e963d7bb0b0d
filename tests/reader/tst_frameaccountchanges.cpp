// SPDX-License-Identifier: MIT
#include "support/unit.h"

#include "simulatedstream.h"

#include <QtTest>

#include <random>

using namespace SondixQt;

/// The account of frames when the rate changes or the measurement is interrupted.
class FrameAccountChangesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aChangedRateIsNoGap_data();
    void aChangedRateIsNoGap();
    void aLossWhileTheRateChangesIsReported();
    void aRestartAtTheSameRateIsNoGap_data();
    void aRestartAtTheSameRateIsNoGap();
    void aFrameThatACommandDiscardsIsNoRestart_data();
    void aFrameThatACommandDiscardsIsNoRestart();
    void valuesFromBeforeTheStartAreNoGap_data();
    void valuesFromBeforeTheStartAreNoGap();
    void lossesOfValuesFromBeforeTheStartAreCounted();
    void theEndOfTriggeringIsNoGap();
    void aRateThatSomebodyElseChangesIsNoGap();
    void anInterruptedMeasurementIsRestarted();
    void aBrokenStreamStartsANewRun();
    void randomStreamsAreAccountedFor_data();
    void randomStreamsAreAccountedFor();
};

void FrameAccountChangesTest::aChangedRateIsNoGap_data()
{
    QTest::addColumn<double>("before");
    QTest::addColumn<double>("after");
    QTest::addColumn<double>("phase"); // of the change between two frames
    for (const double after : {10.0, 500.0, 900.0, 1100.0, 2000.0, 50000.0}) {
        for (const double phase : {0.0, 0.3, 0.9})
            QTest::addRow("to %g Hz at %g", after, phase) << 1000.0 << after << phase;
    }
}

void FrameAccountChangesTest::aChangedRateIsNoGap()
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

void FrameAccountChangesTest::aLossWhileTheRateChangesIsReported()
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

void FrameAccountChangesTest::aRestartAtTheSameRateIsNoGap_data()
{
    QTest::addColumn<double>("phase");
    for (const double phase : {0.0, 0.1, 0.3, 0.5, 0.7, 0.99})
        QTest::addRow("%g", phase) << phase;
}

void FrameAccountChangesTest::aRestartAtTheSameRateIsNoGap()
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

void FrameAccountChangesTest::aFrameThatACommandDiscardsIsNoRestart_data()
{
    QTest::addColumn<double>("jitter"); // in frames
    QTest::addColumn<int>("lost");
    for (const double jitter : {0.0, 0.03, -0.03}) {
        for (const int lost : {1, 2, 3})
            QTest::addRow("%d, jitter %g", lost, jitter) << jitter << lost;
    }
}

/// A command has cleared the buffers of the library. Measuring again from just before the missing frame on would give the
/// same times, so that the number is not known.
void FrameAccountChangesTest::aFrameThatACommandDiscardsIsNoRestart()
{
    QFETCH(double, jitter);
    QFETCH(int, lost);
    constexpr double period = 1.0 / 999.7; // the reported rate is rounded
    FrameAccount account;
    account.start({1, 1000.0, true});
    SimulatedStream stream(1, period);
    const double begin = stream.clockOffset;
    for (int i = 0; i < 100; ++i) {
        stream.clockOffset = begin + (i % 2 == 0 ? jitter : -jitter) * period;
        stream.transfer(account, 100);
    }
    stream.clockOffset = begin;
    account.commandSent({1, 1000.0, true});
    QVERIFY(!stream.transfer(account, 1).gap);
    stream.lose(lost);
    stream.clockOffset = begin + jitter * period;
    const FrameAccount::Frames frames = stream.transfer(account, 1);
    QVERIFY(frames.gap);
    QCOMPARE(frames.gap->frames, std::optional<qint64>());
    QCOMPARE(frames.gap->reason, DataGap::Restarted);
    QCOMPARE(frames.run, 1);
}

void FrameAccountChangesTest::valuesFromBeforeTheStartAreNoGap_data()
{
    QTest::addColumn<double>("before");
    QTest::addColumn<int>("frames");
    QTest::addColumn<double>("pause"); // to the first frame after them, in periods
    QTest::addColumn<bool>("isRestarted");
    for (const double before : {1000.0, 500.0, 2000.0, 100.0, 20000.0}) {
        for (const int frames : {1, 2, 20}) {
            QTest::addRow("%d at %g Hz", frames, before) << before << frames << 1.0 << (before == 1000.0);
            QTest::addRow("%d at %g Hz, then a pause", frames, before) << before << frames << 3.4 << false;
        }
    }
    for (const int frames : {1, 2, 20})
        QTest::addRow("%d at 1000 Hz, restarted", frames) << 1000.0 << frames << 7.0 << true;
}

void FrameAccountChangesTest::valuesFromBeforeTheStartAreNoGap()
{
    QFETCH(const double, before);
    QFETCH(const int, frames);
    QFETCH(const double, pause);
    QFETCH(const bool, isRestarted);
    FrameAccount account;
    account.resumeWith(2 * frames, isRestarted, {2, 1000.0, true});
    double time = 5.0;
    for (int i = 0; i < frames; ++i, time += 1.0 / before) {
        QCOMPARE(account.maxFrames(), 1);
        QVERIFY(account.fits(time));
        const FrameAccount::Frames added = account.add(2, time);
        QVERIFY(!added.gap);
        QCOMPARE(added.first, i);
        QCOMPARE(added.continues, before == 1000.0 && i > 0);
    }
    time += pause / 1000.0 - 1.0 / before;
    for (int i = 0; i < 10; ++i, time += 0.001) {
        const FrameAccount::Frames added = account.add(2, time);
        QVERIFY(!added.gap);
        QCOMPARE(added.run, 0);
        QCOMPARE(added.first, frames + i);
        QVERIFY(i < 1 || added.continues);
    }
    const FrameAccount::Frames last = account.add(2, time + 0.05);
    QCOMPARE(last.gap->frames, std::optional<qint64>(50));
    QVERIFY(qAbs(*last.interval - 0.001) < 1e-6);
}

/// The buffer of the library overflows while they are read.
void FrameAccountChangesTest::lossesOfValuesFromBeforeTheStartAreCounted()
{
    FrameAccount account;
    account.resumeWith(10, false, {1, 1000.0, true});
    double time = 5.0;
    for (int i = 0; i < 11; ++i, time += 0.001) {
        if (i == 4 || i == 10)
            time += 0.02;
        const FrameAccount::Frames added = account.add(1, time);
        QCOMPARE(added.gap.has_value(), i == 4 || i == 10);
        if (added.gap)
            QCOMPARE(added.gap->frames, std::optional<qint64>(20));
    }
}

void FrameAccountChangesTest::theEndOfTriggeringIsNoGap()
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

void FrameAccountChangesTest::aRateThatSomebodyElseChangesIsNoGap()
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

void FrameAccountChangesTest::anInterruptedMeasurementIsRestarted()
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

void FrameAccountChangesTest::aBrokenStreamStartsANewRun()
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

void FrameAccountChangesTest::randomStreamsAreAccountedFor_data()
{
    QTest::addColumn<quint32>("seed");
    bool isNumber = false;
    const quint32 chosen = qEnvironmentVariable("SONDIXQT_SEED").toUInt(&isNumber);
    const quint32 count =
        qEnvironmentVariableIsSet("SONDIXQT_SEEDS") ? quint32(qEnvironmentVariableIntValue("SONDIXQT_SEEDS")) : 50;
    for (quint32 seed = isNumber ? chosen : 1; seed <= (isNumber ? chosen : count); ++seed)
        QTest::addRow("seed %u", seed) << seed;
}

void FrameAccountChangesTest::randomStreamsAreAccountedFor()
{
    QFETCH(quint32, seed);
    RandomStream stream(seed);
    for (int i = 0; i < 100; ++i) {
        const QString error = stream.step();
        QVERIFY2(error.isEmpty(), qPrintable(QString("step %1: %2").arg(i).arg(error)));
    }
}

QTEST_GUILESS_MAIN(FrameAccountChangesTest)
#include "tst_frameaccountchanges.moc"
