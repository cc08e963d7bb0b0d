// SPDX-License-Identifier: MIT
#include "support/unit.h"

#include "reader/clockmapping_p.h"
#include "reader/datablock_p.h"

#include <SondixQt/DataBlock>

#include <QtTest>

#include <random>

using namespace SondixQt;

class ReaderBlocksTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anEmptyBlockHasNothing();
    void valuesAreStoredFrameByFrame();
    void theRestOfAnIncompleteFrameIsDiscarded();
    void partsKeepNumbersAndTimes();
    void irregularTimesAreKept();
    void copiesAreIndependent();
    void blocksPassThroughQueuedConnections();
    void everyReasonHasAText();
    void clocksAreRelated();
    void driftingClocksAreFollowed();
    void aClockThatIsSetIsFollowed();
    void aClockThatIsSetBackIsFollowed();
    void absurdTimesHaveNoWallClockTime();
};

void ReaderBlocksTest::anEmptyBlockHasNothing()
{
    const DataBlock block;
    QVERIFY(block.isEmpty());
    QCOMPARE(block.frameCount(), 0);
    QCOMPARE(block.valuesPerFrame(), 0);
    QVERIFY(!block.time());
    QVERIFY(!block.frameTime(0));
    QVERIFY(!block.frameInterval());
    QVERIFY(!block.wallClockTime().isValid());
    QVERIFY(!block.wallClockMicroseconds());
    QVERIFY(block.scaledData().isEmpty());
    QVERIFY(block.scaledValues(0).isEmpty());
    QVERIFY(block.mid(3, 4).isEmpty());
    QVERIFY(DataBlock(0, 0, 0, {1.0}, {1}).isEmpty());
    QVERIFY(DataBlock(0, 0, -2, {1.0}, {1}).isEmpty());
    DataBlock moved(0, 5, 1, {1.0}, {1}, 2.0);
    const DataBlock target = std::move(moved);
    QCOMPARE(target.frameCount(), 1);
    QVERIFY(moved.isEmpty()); // NOLINT(bugprone-use-after-move): it stays valid
    QVERIFY(!moved.time());
}

void ReaderBlocksTest::valuesAreStoredFrameByFrame()
{
    const DataBlock block(3, 100, 2, {1.0, 2.0, 3.0, 4.0}, {10, 20, 30, 40}, 7.0, 0.5);
    QCOMPARE(block.run(), 3);
    QCOMPARE(block.firstFrame(), 100);
    QCOMPARE(block.frameCount(), 2);
    QCOMPARE(block.scaled(1, 0), 3.0);
    QCOMPARE(block.raw(0, 1), 20);
    QCOMPARE(block.scaledValues(1), QVector<double>({2.0, 4.0}));
    QCOMPARE(*block.time(), 7.0);
    QCOMPARE(*block.frameTime(1), 7.5);
    QVERIFY(!block.frameTime(2));
    QVERIFY(!DataBlock(0, 0, 1, {1.0, 2.0}, {1, 2}, 7.0).frameTime(1));
    QVERIFY(!DataBlock(0, 0, 1, {1.0, 2.0}, {1, 2}).time());
}

void ReaderBlocksTest::theRestOfAnIncompleteFrameIsDiscarded()
{
    QCOMPARE(DataBlock(0, 0, 2, {1.0, 2.0, 3.0}, {1, 2, 3}).scaledData().size(), 2);
    QCOMPARE(DataBlock(0, 0, 2, {1.0, 2.0, 3.0, 4.0}, {1, 2}).frameCount(), 1);
}

void ReaderBlocksTest::partsKeepNumbersAndTimes()
{
    const DataBlock block(1, 10, 1, {0.0, 1.0, 2.0, 3.0}, {0, 1, 2, 3}, 5.0, 0.25);
    const DataBlock part = block.mid(1, 2);
    QCOMPARE(part.run(), 1);
    QCOMPARE(part.firstFrame(), 11);
    QCOMPARE(part.scaledData(), QVector<double>({1.0, 2.0}));
    QCOMPARE(part.rawData(), QVector<qint32>({1, 2}));
    QCOMPARE(*part.time(), 5.25);
    QCOMPARE(block.mid(2).frameCount(), 2);
    QCOMPARE(block.mid(9).frameCount(), 0);
    QVERIFY(!block.mid(9).time());
    QCOMPARE(block.mid(-1, 100).frameCount(), 4);
    const DataBlock other = block.inRun(3);
    QCOMPARE(other.run(), 3);
    QCOMPARE(block.run(), 1);
    QCOMPARE(other.firstFrame(), 10);
    QCOMPARE(other.scaledData(), block.scaledData());
    QCOMPARE(other.frameTime(3), block.frameTime(3));
    QVERIFY(DataBlock().inRun(3).isEmpty());
}

void ReaderBlocksTest::irregularTimesAreKept()
{
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    const DataBlock block = DataBlock::withTimes(2, 7, 1, {1.0, 2.0, 3.0}, {1, 2, 3}, {5.0, nan, 6.5});
    QCOMPARE(block.run(), 2);
    QCOMPARE(block.firstFrame(), 7LL);
    QCOMPARE(block.frameTime(0), std::optional<double>(5.0));
    QVERIFY(!block.frameTime(1));
    QCOMPARE(block.frameTime(2), std::optional<double>(6.5));
    QVERIFY(!block.frameInterval());
    QCOMPARE(block.mid(2).time(), std::optional<double>(6.5));
    // A time for each frame, neither more nor fewer.
    QVERIFY(!DataBlock::withTimes(0, 0, 1, {1.0, 2.0}, {1, 2}, {5.0}).frameTime(1));
    QCOMPARE(DataBlock::withTimes(0, 0, 1, {1.0}, {1}, {5.0, 6.0}).frameTime(0), std::optional<double>(5.0));
    QVERIFY(!DataBlock::withTimes(0, 0, 0, {}, {}, {5.0}).time());
}

void ReaderBlocksTest::copiesAreIndependent()
{
    DataBlock block(0, 0, 1, {1.0}, {1}, 5.0);
    const DataBlock copy = block;
    QCOMPARE(copy.scaledData().constData(), block.scaledData().constData());
    block = DataBlock(0, 9, 1, {2.0}, {2});
    QCOMPARE(copy.scaled(0, 0), 1.0);
    QCOMPARE(copy.firstFrame(), 0);
}

void ReaderBlocksTest::blocksPassThroughQueuedConnections()
{
    QVERIFY(QMetaType::type("SondixQt::DataBlock") != QMetaType::UnknownType);
    QVERIFY(QMetaType::type("SondixQt::DataGap") != QMetaType::UnknownType);
    const QVariant variant = QVariant::fromValue(DataBlock(0, 4, 1, {1.0}, {1}));
    QCOMPARE(variant.value<DataBlock>().firstFrame(), 4);
}

void ReaderBlocksTest::everyReasonHasAText()
{
    QStringList texts;
    for (const DataGap::Reason reason : {DataGap::LibraryOverrun, DataGap::ConsumerOverrun, DataGap::Disconnected,
                                         DataGap::Restarted, DataGap::Unknown})
        texts.append(gapReasonText(reason));
    QVERIFY(!texts.contains(QString()));
    QCOMPARE(texts.removeDuplicates(), 0);
}

void ReaderBlocksTest::clocksAreRelated()
{
    ClockMapping mapping;
    QVERIFY(!mapping.isKnown());
    constexpr double offset = 1.7e9;
    std::mt19937 random(4);
    double polled = 100.0;
    for (int i = 0; i < 1000; ++i) {
        // Frames every 10 ms; polled at irregular times.
        const double now = polled + 0.02 + static_cast<double>(random() % 1000) * 1e-4;
        const double first = std::ceil(polled * 100.0) / 100.0;
        const double last = std::floor(now * 100.0) / 100.0;
        mapping.observe(first, last, polled + offset, now + offset);
        polled = now;
        QVERIFY(qAbs(mapping.offset() - offset) <= mapping.uncertainty() + 1e-6);
    }
    QVERIFY(mapping.uncertainty() < 0.002);
}

void ReaderBlocksTest::driftingClocksAreFollowed()
{
    ClockMapping mapping;
    double computer = 1.7e9;
    for (int i = 0; i < 100000; ++i) {
        const double before = computer;
        computer += 0.05;
        // The clock of the library runs fast by 50 millionths.
        const double library = (computer - 1.7e9) * 1.00005;
        mapping.observe(library - 0.049, library - 0.0005, before, computer);
        QVERIFY(qAbs(mapping.offset() - (computer - library)) <= mapping.uncertainty() + 1e-3);
    }
    QVERIFY(mapping.uncertainty() < 0.01);
}

void ReaderBlocksTest::aClockThatIsSetIsFollowed()
{
    ClockMapping mapping;
    mapping.observe(1.00, 1.04, 1000.96, 1001.05);
    mapping.observe(1.05, 1.09, 1001.00, 1001.10);
    mapping.observe(1.10, 1.14, 4601.05, 4601.15); // an hour later
    QVERIFY(qAbs(mapping.offset() - 4600.0) < 0.1);
    mapping.observe(std::numeric_limits<double>::quiet_NaN(), 1.0, 1.0, 2.0);
    QVERIFY(qAbs(mapping.offset() - 4600.0) < 0.1);
}

void ReaderBlocksTest::aClockThatIsSetBackIsFollowed()
{
    ClockMapping mapping;
    double offset = 1000.0;
    double polled = 1.0; // on the clock of the library
    double polledAt = polled + offset;
    for (int i = 0; i < 100; ++i) {
        const double first = polled;
        const double last = polled + 0.04;
        polled += 0.05;
        if (i == 50)
            offset -= 10.0;
        const double now = polled + offset;
        mapping.observe(first, last, polledAt, now);
        polledAt = now;
        if (mapping.isKnown())
            QVERIFY(qAbs(mapping.offset() - offset) <= mapping.uncertainty() + 1e-9);
    }
    QVERIFY(mapping.isKnown());
}

void ReaderBlocksTest::absurdTimesHaveNoWallClockTime()
{
    for (const double time : {1.0e300, -1.0e300, 1.0e18}) {
        auto *data = new DataBlockData;
        data->valuesPerFrame = 1;
        data->scaled = {1.0};
        data->raw = {1};
        data->times = {time};
        data->wallClockOffset = 1.7e9;
        const DataBlock block = DataBlockBuilder::block(data);
        QVERIFY(!block.wallClockMicroseconds());
        QVERIFY(!block.wallClockTime().isValid());
    }
}

QTEST_GUILESS_MAIN(ReaderBlocksTest)
#include "tst_readerblocks.moc"
