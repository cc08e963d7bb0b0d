// SPDX-License-Identifier: MIT
#include "historydata.h"

#include "explorer/history/signalhistory.h"

#include <QtTest>

using namespace Explorer;
using namespace HistoryData;
using namespace SondixQt;

/// What is kept of a sensor's frames, and what a plot asks of it.
class TestHistory : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void isEmptyAtFirst();
    void keepsValuesOfAllSignals();
    void aNewDescriptionForgets();
    void toleratesBlocksOfAnotherWidth();
    void dropsWhatIsOld();
    void dropsWhatHasNoRoom();
    void historiesShareTheMemory();
    void memoryIsToldBeforehand_data();
    void memoryIsToldBeforehand();
    void everyFrameIsInOneColumn_data();
    void everyFrameIsInOneColumn();
    void theLastColumnIsThatOfTheLastFrame_data();
    void theLastColumnIsThatOfTheLastFrame();
    void findsTheNearestFrame();
    void rateLeavesOutGaps();
    void histogramCountsEveryValue();
    void histogramOfManyValuesIsSampled();
    void histogramOfOneValue();
    void spectrumFindsASine();
    void spectrumNeedsAnUndisturbedRange();
    void blocksAreThoseThatCame();
    void triggeredFramesShareABlock();
    void queriesAreQuick();
};

namespace {

void fillHistory(SignalHistory &history, int count, double interval = 0.001, int perBlock = 50,
                 double start = 100.0)
{
    const QVector<double> values = randomValues(count, 5.0, 1);
    for (int first = 0; first < count; first += perBlock)
        history.append(blockOf(values.mid(first, perBlock), first, start + first * interval, interval));
}

} // namespace

void TestHistory::isEmptyAtFirst()
{
    SignalHistory history;
    QVERIFY(history.isEmpty());
    QCOMPARE(history.signalCount(), 0);
    history.append(blockOf({1.0, 2.0}));
    QVERIFY(history.isEmpty()); // nobody has said what it is
    history.begin(frameOf(2));
    QVERIFY(history.isEmpty());
    QVERIFY(!history.nearestFrame(0.0));
    QVERIFY(history.framesBetween(0.0, 1.0).isEmpty());
    QCOMPARE(history.columnLimits(0.0, 1.0, 10), std::vector<qint64>(11, 0));
    QCOMPARE(history.moments(1, {0, 10}).count, qint64(0));
    QVERIFY(history.histogram(0, {0, 10}, 5).counts.empty());
    QCOMPARE(history.spectrum(0, {0, 0}).problem, Spectrum::TooShort);
    QVERIFY(history.block({0, 0}, 10).isEmpty());
}

void TestHistory::keepsValuesOfAllSignals()
{
    SignalHistory history;
    history.begin(frameOf(3));
    const qint64 before = history.revision();
    history.append(DataBlock(0, 0, 3, {1, 2, 3, 4, 5, -1.0e10 - 6}, QVector<qint32>(6), 1.0, 0.5));
    QVERIFY(history.revision() != before);
    QCOMPARE(history.endFrame(), qint64(2));
    QCOMPARE(history.value(0, 1), 4.0);
    QCOMPARE(history.value(1, 0), 2.0);
    QCOMPARE(history.value(2, 1), -1.0e10 - 6);
    QCOMPARE(history.endPosition(), 0.5);
}

void TestHistory::aNewDescriptionForgets()
{
    SignalHistory history;
    history.begin(frameOf(1));
    fillHistory(history, 1000);
    const qint64 before = history.revision();
    history.begin(frameOf(2));
    QVERIFY(history.revision() != before);
    QVERIFY(history.isEmpty());
    QCOMPARE(history.signalCount(), 2);
    history.append(DataBlock(0, 0, 2, {1, 2}, {0, 0}, 1.0));
    history.clear();
    QVERIFY(history.isEmpty());
    QCOMPARE(history.frame(), frameOf(2));
}

void TestHistory::toleratesBlocksOfAnotherWidth()
{
    SignalHistory history;
    history.begin(frameOf(2));
    history.append(blockOf({1.0, 2.0}, 0, 1.0));
    history.append(DataBlock(0, 2, 3, {7, 8, 9}, {0, 0, 0}, 1.002, 0.001));
    QCOMPARE(history.value(0, 1), 2.0);
    QVERIFY(std::isnan(history.value(1, 1)));
    QCOMPARE(history.value(1, 2), 8.0);
}

void TestHistory::dropsWhatIsOld()
{
    SignalHistory history(2.0);
    history.begin(frameOf(1));
    const QVector<double> values = randomValues(10000, 5.0, 1);
    for (int first = 0; first < values.size(); first += 100) {
        history.append(blockOf(values.mid(first, 100), first, 7.0 + first * 0.001));
        const double kept = history.endPosition() - history.beginPosition();
        QVERIFY(kept >= std::min(1.999, (first + 99) * 0.001 - 1.0e-9));
        QVERIFY(kept < 2.3);
    }
    QVERIFY(history.firstFrame() > 7500);
    QCOMPARE(history.endFrame(), qint64(10000));
    history.setKeepSeconds(0.5);
    QVERIFY(history.endPosition() - history.beginPosition() < 0.8);
    // A block that is longer than what is kept.
    history.append(blockOf(values, 10000, 17.0));
    QVERIFY(history.endFrame() - history.firstFrame() < 800);
    QCOMPARE(history.value(0, history.endFrame() - 1), values.last());
}

void TestHistory::dropsWhatHasNoRoom()
{
    SignalHistory history(1.0e9);
    history.setMaximumBytes(1000000);
    history.begin(frameOf(1, -1.0));
    const QVector<double> values = randomValues(1000, 5.0, 1);
    for (int i = 0; i < 1000; ++i) {
        history.append(blockOf(values, i * 1000, std::nullopt, std::nullopt));
        QVERIFY(history.bytes() <= 1000000);
    }
    QVERIFY(history.endFrame() - history.firstFrame() > 90000);
}

void TestHistory::historiesShareTheMemory()
{
    constexpr qint64 limit = 2000000;
    SignalHistory::setSharedBytes(limit);
    const auto restore = qScopeGuard([] { SignalHistory::setSharedBytes(std::nullopt); });
    SignalHistory first(1.0e9);
    SignalHistory second(1.0e9);
    SignalHistory unused(1.0e9);
    const QVector<double> values = randomValues(1000, 5.0, 1);
    const auto fill = [&values](SignalHistory &history, int blocks) {
        history.begin(frameOf(1, -1.0));
        for (int i = 0; i < blocks; ++i)
            history.append(blockOf(values, i * 1000, std::nullopt, std::nullopt));
    };
    unused.begin(frameOf(1, -1.0));
    // Alone it may use everything.
    fill(first, 1000);
    QCOMPARE(first.limitBytes(), limit);
    QVERIFY(first.bytes() <= limit);
    QVERIFY(first.bytes() > limit * 9 / 10);
    QCOMPARE(first.endFrame(), qint64(1000000));
    QCOMPARE(first.cutFrames(), first.firstFrame());
    // One that needs less than its share leaves the rest to the other one.
    fill(second, 50);
    QCOMPARE(second.cutFrames(), qint64(0));
    QVERIFY(first.bytes() + second.bytes() <= limit);
    QVERIFY(first.bytes() > limit / 2);
    // Both are cut to the same share.
    fill(second, 1000);
    QVERIFY(first.bytes() + second.bytes() <= limit);
    for (const SignalHistory *history : {&first, &second}) {
        QVERIFY(history->bytes() > limit * 4 / 10);
        QCOMPARE(history->cutFrames(), history->firstFrame());
        QCOMPARE(history->value(0, history->endFrame() - 1), values.last());
    }
    first.setMaximumBytes(limit / 4);
    QCOMPARE(first.limitBytes(), limit / 4);
    QVERIFY(first.bytes() <= limit / 4);
}

void TestHistory::memoryIsToldBeforehand_data()
{
    QTest::addColumn<double>("seconds");
    QTest::addColumn<double>("rate");
    QTest::addColumn<int>("signalCount");
    QTest::newRow("slow") << 600.0 << 10.0 << 1;
    QTest::newRow("usual") << 20.0 << 2000.0 << 3;
    QTest::newRow("quick") << 2.0 << 100000.0 << 8;
    QTest::newRow("many signals") << 1.0 << 100.0 << 2000;
}

void TestHistory::memoryIsToldBeforehand()
{
    QFETCH(double, seconds);
    QFETCH(double, rate);
    QFETCH(int, signalCount);
    const qint64 told = SignalHistory::bytesFor(seconds, rate, signalCount);
    QVERIFY(told > static_cast<qint64>(seconds * rate * signalCount * 8.0));
    SignalHistory history(seconds);
    history.begin(frameOf(signalCount, rate));
    const int perBlock = std::max(1, static_cast<int>(rate / 20.0));
    const QVector<double> values(perBlock * signalCount, 1.0);
    const auto blocks = static_cast<int>(3.0 * seconds * rate / perBlock);
    for (int i = 0; i < blocks; ++i) {
        const qint64 first = qint64(i) * perBlock;
        history.append(DataBlock(0, first, signalCount, values, QVector<qint32>(values.size()),
                                 static_cast<double>(first) / rate, 1.0 / rate));
        QVERIFY(history.bytes() <= told);
    }
    // Ten minutes of eight signals at 100 kHz.
    QVERIFY(SignalHistory::bytesFor(600.0, 1.0e5, 8) < SignalHistory::defaultMaximumBytes);
    QVERIFY(SignalHistory::bytesFor(1.0e300, 1.0e300, 16384) > 0);
}

void TestHistory::everyFrameIsInOneColumn_data()
{
    QTest::addColumn<double>("from");
    QTest::addColumn<double>("to");
    QTest::addColumn<int>("columns");
    QTest::newRow("all") << 0.0 << 60.0 << 100;
    QTest::newRow("more than all") << -30.0 << 90.0 << 700;
    QTest::newRow("a part") << 7.1234 << 33.3333 << 33;
    QTest::newRow("more columns than frames") << 5.0 << 5.02 << 500;
    QTest::newRow("one column") << 5.0 << 50.0 << 1;
    QTest::newRow("before all") << -5.0 << -1.0 << 10;
    QTest::newRow("behind all") << 500.0 << 510.0 << 10;
}

void TestHistory::everyFrameIsInOneColumn()
{
    QFETCH(double, from);
    QFETCH(double, to);
    QFETCH(int, columns);
    SignalHistory history;
    history.begin(frameOf(1));
    fillHistory(history, 60000);
    const FrameRange range = history.framesBetween(from, to);
    for (qint64 frame : {range.begin, range.end - 1})
        QVERIFY(range.isEmpty() ||
                (history.timeLine().position(frame) >= from && history.timeLine().position(frame) <= to));
    const std::vector<qint64> limits = history.columnLimits(from, to, columns);
    QCOMPARE(limits.size(), static_cast<std::size_t>(columns) + 1);
    QCOMPARE(limits.front(), range.begin);
    QCOMPARE(limits.back(), range.end);
    QVERIFY(std::is_sorted(limits.begin(), limits.end()));
    const double width = (to - from) / columns;
    for (int i = 1; i < columns; ++i) {
        if (limits.at(static_cast<std::size_t>(i)) == range.end || range.isEmpty())
            continue;
        const double position = history.timeLine().position(limits.at(static_cast<std::size_t>(i)));
        const double ideal = std::max(from + i * width, 0.0);
        QVERIFY(position >= ideal - width / 4.0 - 1.0e-9);
        QVERIFY(position <= ideal + 0.001 + 1.0e-9);
    }
}

void TestHistory::theLastColumnIsThatOfTheLastFrame_data()
{
    QTest::addColumn<int>("frames");
    for (const int frames : {60000, 60001, 60007, 60015, 60016, 59999})
        QTest::addRow("%d", frames) << frames;
}

// Beyond it nothing was measured.
void TestHistory::theLastColumnIsThatOfTheLastFrame()
{
    QFETCH(int, frames);
    SignalHistory history;
    history.begin(frameOf(1));
    fillHistory(history, frames);
    constexpr int columns = 100;
    constexpr double to = 200.0;
    const std::vector<qint64> limits = history.columnLimits(0.0, to, columns);
    QCOMPARE(limits.back(), qint64(frames));
    for (int i = 0; i < columns; ++i) {
        if (limits.at(static_cast<std::size_t>(i)) < limits.at(static_cast<std::size_t>(i) + 1))
            QVERIFY2(i * to / columns <= history.endPosition(), qPrintable(QString::number(i)));
    }
}

void TestHistory::findsTheNearestFrame()
{
    SignalHistory history;
    history.begin(frameOf(1));
    fillHistory(history, 1000);
    QCOMPARE(*history.nearestFrame(-5.0), qint64(0));
    QCOMPARE(*history.nearestFrame(0.1004), qint64(100));
    QCOMPARE(*history.nearestFrame(0.1006), qint64(101));
    QCOMPARE(*history.nearestFrame(99.0), qint64(999));
}

void TestHistory::rateLeavesOutGaps()
{
    SignalHistory history;
    history.begin(frameOf(1, 500.0));
    QVERIFY(!history.rate({0, 0}));
    history.append(blockOf(QVector<double>(500, 1.0), 0, 10.0, 0.002));
    history.append(gapOf(1000));
    history.append(blockOf(QVector<double>(500, 1.0), 1500, 13.0, 0.002));
    QVERIFY(std::abs(*history.rate({0, 1000}) - 500.0) < 1.0e-6);
    QCOMPARE(history.missingFrames({0, 1000}), qint64(1000));
    QCOMPARE(history.missingFrames({0, 500}), qint64(0));
}

void TestHistory::histogramCountsEveryValue()
{
    SignalHistory history;
    history.begin(frameOf(1));
    QVector<double> values;
    for (int i = 0; i < 1000; ++i)
        values << i % 10 << -1.0e10 - 1.0;
    history.append(blockOf(values, 0, 0.0));
    const Histogram histogram = history.histogram(0, {0, 2000}, 9);
    QCOMPARE(histogram.minimum, 0.0);
    QCOMPARE(histogram.maximum, 9.0);
    QCOMPARE(histogram.counts, (std::vector<qint64>{100, 100, 100, 100, 100, 100, 100, 100, 200}));
    QCOMPARE(histogram.counted, qint64(1000));
    QCOMPARE(histogram.available, qint64(1000));
}

void TestHistory::histogramOfManyValuesIsSampled()
{
    SignalHistory history;
    history.begin(frameOf(1, 1.0e5));
    fillHistory(history, 1000000, 1.0e-5, 5000);
    const Histogram histogram = history.histogram(0, {0, 1000000}, 50);
    QVERIFY(histogram.available > 970000);
    QVERIFY(histogram.counted <= SignalHistory::histogramValues);
    QVERIFY(histogram.counted > SignalHistory::histogramValues / 2);
    QCOMPARE(std::accumulate(histogram.counts.begin(), histogram.counts.end(), qint64(0)), histogram.counted);
    // Half of a symmetrical distribution is below its mean.
    const double width = (histogram.maximum - histogram.minimum) / 50.0;
    qint64 below = 0;
    for (std::size_t i = 0; histogram.minimum + width * static_cast<double>(i + 1) <= 5.0; ++i)
        below += histogram.counts.at(i);
    QVERIFY(std::abs(static_cast<double>(below) / static_cast<double>(histogram.counted) - 0.5) < 0.1);
}

void TestHistory::histogramOfOneValue()
{
    for (const double value : {0.0, 5.0, -3.0e9}) {
        SignalHistory history;
        history.begin(frameOf(1));
        history.append(blockOf(QVector<double>(100, value), 0, 0.0));
        const Histogram histogram = history.histogram(0, {0, 100}, 10);
        QVERIFY(histogram.minimum < value && histogram.maximum > value);
        QCOMPARE(*std::max_element(histogram.counts.begin(), histogram.counts.end()), qint64(100));
    }
}

void TestHistory::spectrumFindsASine()
{
    SignalHistory history;
    history.begin(frameOf(1, 1000.0));
    QVector<double> values(5000);
    for (int i = 0; i < values.size(); ++i)
        values[i] = 20.0 + 3.0 * std::sin(2.0 * M_PI * 125.0 * i / 1000.0) +
                    0.5 * std::cos(2.0 * M_PI * 250.0 * i / 1000.0);
    history.append(blockOf(values, 0, 100.0));
    const Spectrum spectrum = history.spectrum(0, {0, 5000});
    QCOMPARE(spectrum.problem, Spectrum::NoProblem);
    QCOMPARE(spectrum.amplitudes.size(), std::size_t(2049));
    QVERIFY(std::abs(spectrum.step - 1000.0 / 4096.0) < 1.0e-9);
    const auto amplitudeAt = [&](double frequency) {
        return spectrum.amplitudes.at(static_cast<std::size_t>(std::lround(frequency / spectrum.step)));
    };
    QVERIFY(std::abs(amplitudeAt(125.0) - 3.0) < 1.0e-6);
    QVERIFY(std::abs(amplitudeAt(250.0) - 0.5) < 1.0e-6);
    QVERIFY(amplitudeAt(60.0) < 1.0e-6);
    QVERIFY(amplitudeAt(0.0) < 1.0e-2); // without the mean
}

void TestHistory::spectrumNeedsAnUndisturbedRange()
{
    SignalHistory history;
    history.begin(frameOf(1));
    QVector<double> values(1000, 1.0);
    history.append(blockOf(values, 0, 0.0));
    values[999] = -1.0e10 - 2.0;
    history.append(blockOf(values, 1000, 1.0));
    history.append(gapOf(10));
    history.append(blockOf(QVector<double>(1000, 1.0), 2010, 2.01));
    QCOMPARE(history.spectrum(0, {0, 1900}).problem, Spectrum::NoProblem);
    QCOMPARE(history.spectrum(0, {0, 2000}).problem, Spectrum::HasErrors);
    QCOMPARE(history.spectrum(0, {0, 2100}).problem, Spectrum::HasGap);
    QCOMPARE(history.spectrum(0, {0, 15}).problem, Spectrum::TooShort);
    QCOMPARE(history.spectrum(0, {2000, 3000}).problem, Spectrum::NoProblem);

    history.begin(frameOf(1));
    history.append(blockOf(QVector<double>(1000, 1.0), 0, 0.0, std::nullopt));
    history.append(blockOf(QVector<double>(1000, 1.0), 1000, 1.0, std::nullopt));
    QCOMPARE(history.spectrum(0, {0, 2000}).problem, Spectrum::NoRate);
    history.begin(frameOf(1));
    history.append(blockOf(QVector<double>(1000, 1.0), 0, std::nullopt, std::nullopt));
    QCOMPARE(history.spectrum(0, {0, 1000}).problem, Spectrum::NoRate);
}

void TestHistory::blocksAreThoseThatCame()
{
    SignalHistory history;
    history.begin(frameOf(2));
    QVector<DataBlock> came;
    came << DataBlock(0, 0, 2, {1, 2, 3, 4, 5, 6}, QVector<qint32>(6), 10.0, 0.1)
         << DataBlock(0, 3, 2, {7, 8, -1.0e10 - 3, 9}, QVector<qint32>(4), 10.31, 0.11)
         << DataBlock(1, 0, 2, {10, 11}, QVector<qint32>(2), 1.0, std::nullopt)
         << DataBlock(1, 1, 2, {12, 13}, QVector<qint32>(2));
    for (const DataBlock &block : came)
        history.append(block);
    qint64 index = 0;
    for (const DataBlock &expected : came) {
        const DataBlock block = history.block({index, history.endFrame()}, 1000);
        QCOMPARE(block.frameCount(), expected.frameCount());
        QCOMPARE(block.scaledData(), expected.scaledData());
        QCOMPARE(block.run(), expected.run());
        QCOMPARE(block.firstFrame(), expected.firstFrame());
        QCOMPARE(block.time(), expected.time());
        QCOMPARE(block.frameInterval(), expected.frameInterval());
        index += block.frameCount();
    }
    const DataBlock part = history.block({1, 2}, 1000);
    QCOMPARE(part.frameCount(), 1);
    QCOMPARE(part.firstFrame(), qint64(1));
    QCOMPARE(*part.time(), 10.1);
    QCOMPARE(history.block({0, 6}, 2).frameCount(), 2);
}

// Each frame has a time of its own. A block for each of them would make the export slow.
void TestHistory::triggeredFramesShareABlock()
{
    constexpr double unknown = std::numeric_limits<double>::quiet_NaN();
    SignalHistory history;
    history.begin(frameOf(1, 0.0));
    for (int i = 0; i < 5; ++i)
        history.append(blockOf({i + 0.5}, i, 10.0 + i * i, std::nullopt));
    history.append(DataBlock::withTimes(0, 5, 1, {5.5, 6.5, 7.5}, QVector<qint32>(3), {40.0, unknown, 50.0}));
    history.append(gapOf(2));
    history.append(blockOf({10.5}, 10, 60.0, std::nullopt));
    history.append(blockOf({11.5, 12.5}, 11, 61.0, 0.25)); // no longer triggered
    const DataBlock triggered = history.block({0, history.endFrame()}, 100);
    QCOMPARE(triggered.frameCount(), 8);
    QCOMPARE(triggered.scaledValues(0), (QVector<double>{0.5, 1.5, 2.5, 3.5, 4.5, 5.5, 6.5, 7.5}));
    QVERIFY(!triggered.frameInterval());
    const std::optional<double> none;
    const QVector<std::optional<double>> times{10.0, 11.0, 14.0, 19.0, 26.0, 40.0, none, 50.0};
    for (int frame = 0; frame < times.size(); ++frame)
        QCOMPARE(triggered.frameTime(frame), times.at(frame));
    const DataBlock after = history.block({8, history.endFrame()}, 100);
    QCOMPARE(after.frameCount(), 1);
    QCOMPARE(after.firstFrame(), qint64(10));
    QCOMPARE(after.time(), std::optional(60.0));
    QCOMPARE(history.block({9, history.endFrame()}, 100).frameInterval(), std::optional(0.25));
    // A part that begins at a frame without a time of its own.
    const DataBlock part = history.block({6, 8}, 100);
    QCOMPARE(part.frameCount(), 2);
    QCOMPARE(part.firstFrame(), qint64(6));
    QVERIFY(!part.frameTime(0));
    QCOMPARE(part.frameTime(1), std::optional(50.0));
    QCOMPARE(history.block({1, 8}, 3).frameCount(), 3);
}

// Orders of magnitude, not a benchmark: a query that walked over the values would take seconds.
void TestHistory::queriesAreQuick()
{
    SignalHistory history;
    history.begin(frameOf(1, 1.0e5));
    fillHistory(history, 2000000, 1.0e-5, 5000);
    QElapsedTimer timer;
    timer.start();
    qint64 errors = 0;
    for (int i = 0; i < 10000; ++i) {
        const qint64 begin = 7 + i * 50;
        errors += history.moments(0, {begin, begin + 1400000}).errors;
        errors += history.extremes(0, {begin, begin + 1400000}).errors;
    }
    QVERIFY(errors > 0);
    QVERIFY2(timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
}

QTEST_GUILESS_MAIN(TestHistory)
#include "tst_history.moc"
