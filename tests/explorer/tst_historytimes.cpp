// SPDX-License-Identifier: MIT
#include "historydata.h"

#include "explorer/history/timeline.h"

#include <QtTest>

using namespace Explorer;
using namespace HistoryData;
using namespace SondixQt;

/// Where frames and gaps stand on the time axis.
class TestHistoryTimes : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void beginsAtZero();
    void followsTheTimesOfTheBlocks();
    void searchFindsEveryFrame();
    void aGapMovesWhatFollows();
    void aTimeThatJumpsBackGoesOnForwards();
    void anOverlapDoesNotDecrease();
    void withoutTimesTheAxisHasFrames();
    void spreadsFramesOfATriggeredSensor();
    void blocksWithoutATimeFollow();
    void stretchesAreDroppedWithTheirFrames();
    void manySmallBlocksNeedLittleMemory();
    void findsGapsAsALoopDoes_data();
    void findsGapsAsALoopDoes();
};

namespace {

DataBlock timedFrames(qint64 first, int count, std::optional<double> time, std::optional<double> interval = 0.001,
                      int run = 0)
{
    return blockOf(QVector<double>(count, 1.0), first, time, interval, run);
}

bool isSamePosition(double value, double expected)
{
    return std::abs(value - expected) < 1.0e-9;
}

} // namespace

void TestHistoryTimes::beginsAtZero()
{
    TimeLine line;
    QVERIFY(line.isEmpty());
    QCOMPARE(line.indexAt(5.0), qint64(0));
    line.append(timedFrames(0, 10, 1234.5), 0.0);
    QCOMPARE(line.kind(), TimeLine::Seconds);
    QCOMPARE(line.position(0), 0.0);
    QVERIFY(isSamePosition(line.position(9), 0.009));
    QVERIFY(!line.wallClockOffset());
}

void TestHistoryTimes::followsTheTimesOfTheBlocks()
{
    TimeLine line;
    line.append(timedFrames(0, 10, 100.0), 0.0);
    line.append(timedFrames(10, 10, 100.0101, 0.00101), 0.0);
    QVERIFY(isSamePosition(line.position(10), 0.0101));
    QVERIFY(isSamePosition(line.position(19), 0.0101 + 9 * 0.00101));
    QVERIFY(line.breaks(0, 100).empty());
}

void TestHistoryTimes::searchFindsEveryFrame()
{
    TimeLine line;
    double time = 50.0;
    qint64 first = 0;
    for (int i = 0; i < 100; ++i) {
        line.append(timedFrames(first, 37, time, 0.0013), 0.0);
        first += 37;
        time += 37 * 0.0013 + (i % 3 - 1) * 0.0004;
    }
    for (qint64 index = 0; index < line.end(); ++index) {
        const double position = line.position(index);
        QVERIFY(index == 0 || line.position(index - 1) <= position);
        const qint64 found = line.indexAt(position);
        QVERIFY(found <= index && line.position(found) == position);
        QVERIFY(found == 0 || line.position(found - 1) < position);
    }
    QCOMPARE(line.indexAt(-1.0), qint64(0));
    QCOMPARE(line.indexAt(1.0e9), line.end());
}

void TestHistoryTimes::aGapMovesWhatFollows()
{
    TimeLine line;
    line.append(timedFrames(0, 10, 100.0), 0.0);
    line.append(gapOf(990));
    QCOMPARE(line.gaps().size(), std::size_t(1));
    QCOMPARE(line.gaps().front().index, qint64(10));
    QCOMPARE(line.gaps().front().end, line.gaps().front().begin);
    line.append(timedFrames(1000, 10, 101.0), 0.0);
    QVERIFY(isSamePosition(line.gaps().front().begin, 0.009));
    QVERIFY(isSamePosition(line.gaps().front().end, 1.0));
    QVERIFY(isSamePosition(line.position(10), 1.0));
    QCOMPARE(line.breaks(0, 100), std::vector<qint64>{10});
    QVERIFY(line.breaks(11, 100).empty());
    QCOMPARE(line.stretchOf(12).number, qint64(1000));
}

void TestHistoryTimes::aTimeThatJumpsBackGoesOnForwards()
{
    TimeLine line;
    line.append(timedFrames(0, 1000, 5000.0), 0.0);
    line.append(gapOf(std::nullopt, DataGap::Disconnected));
    line.append(timedFrames(0, 1000, 3.0, 0.001, 1), 0.0);
    QVERIFY(isSamePosition(line.position(1000), 1.0));
    QVERIFY(isSamePosition(line.position(1999), 1.999));
    line.append(timedFrames(1000, 10, 4.0, 0.001, 1), 0.0);
    QVERIFY(isSamePosition(line.position(2000), 2.0));
    QCOMPARE(line.breaks(0, 5000), std::vector<qint64>{1000});
    // Times as they came.
    QCOMPARE(line.stretchOf(1000).time, 3.0);
}

void TestHistoryTimes::anOverlapDoesNotDecrease()
{
    TimeLine line;
    line.append(timedFrames(0, 100, 10.0), 0.0);
    line.append(timedFrames(100, 100, 10.0985), 0.0);
    for (qint64 i = 1; i < 200; ++i)
        QVERIFY(line.position(i) >= line.position(i - 1));
    QVERIFY(isSamePosition(line.position(199), 0.0985 + 0.099 + 0.0005));
}

void TestHistoryTimes::withoutTimesTheAxisHasFrames()
{
    TimeLine line;
    line.append(timedFrames(5, 10, std::nullopt, std::nullopt), 0.0);
    QCOMPARE(line.kind(), TimeLine::Frames);
    QCOMPARE(line.position(0), 5.0);
    line.append(gapOf(5));
    line.append(timedFrames(20, 10, std::nullopt, std::nullopt), 0.0);
    QCOMPARE(line.position(10), 20.0);
    QCOMPARE(line.gaps().front().end, 20.0);
    line.append(gapOf(std::nullopt));
    line.append(timedFrames(0, 10, std::nullopt, std::nullopt, 1), 0.0);
    QCOMPARE(line.position(20), 30.0);
    QCOMPARE(line.breaks(0, 100), (std::vector<qint64>{10, 20}));
}

void TestHistoryTimes::spreadsFramesOfATriggeredSensor()
{
    TimeLine line;
    line.append(timedFrames(0, 4, 10.0, std::nullopt), 0.0);
    QCOMPARE(line.position(3), 0.0);
    line.append(timedFrames(4, 1, 12.0, std::nullopt), 0.0);
    QVERIFY(isSamePosition(line.position(1), 0.5));
    QVERIFY(isSamePosition(line.position(4), 2.0));
    QCOMPARE(line.indexAt(0.6), qint64(2));
}

void TestHistoryTimes::blocksWithoutATimeFollow()
{
    TimeLine line;
    line.append(timedFrames(0, 10, 10.0), 0.0);
    line.append(timedFrames(10, 10, std::nullopt, std::nullopt), 0.001);
    QVERIFY(isSamePosition(line.position(19), 0.019));
    QVERIFY(std::isnan(line.stretchOf(15).time));
}

void TestHistoryTimes::stretchesAreDroppedWithTheirFrames()
{
    TimeLine line;
    for (int i = 0; i < 100; ++i) {
        line.append(timedFrames(110 * i, 100, 0.11 * i), 0.0);
        line.append(gapOf(10));
    }
    line.dropBefore(5050);
    QCOMPARE(line.first(), qint64(5050));
    QVERIFY(isSamePosition(line.position(5050), 0.11 * 50 + 0.05));
    QCOMPARE(line.breaks(0, 20000).front(), qint64(5100));
    QCOMPARE(line.gaps().size(), std::size_t(50));
    QCOMPARE(line.indexAt(0.0), qint64(5050));
}

void TestHistoryTimes::manySmallBlocksNeedLittleMemory()
{
    TimeLine line;
    for (int i = 0; i < 100000; ++i)
        line.append(timedFrames(i, 1, 7.0 + i * 1.0e-5, 1.0e-5), 0.0);
    QVERIFY(line.bytes() < 300 * qint64(sizeof(TimeLine::Stretch)));
    QVERIFY(isSamePosition(line.position(99999), 0.99999));
}

void TestHistoryTimes::findsGapsAsALoopDoes_data()
{
    QTest::addColumn<bool>("isTimed");
    QTest::addColumn<unsigned>("seed");
    for (const unsigned seed : {1U, 2U, 3U, 4U}) {
        QTest::addRow("seconds, seed %u", seed) << true << seed;
        QTest::addRow("frames, seed %u", seed) << false << seed;
    }
}

// Gaps before the first frame, after the last one, several at one place, restarts and clocks that jump back included.
void TestHistoryTimes::findsGapsAsALoopDoes()
{
    QFETCH(bool, isTimed);
    QFETCH(unsigned, seed);
    std::mt19937 random(seed);
    const auto below = [&random](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
    TimeLine line;
    qint64 number = 0;
    double time = 100.0;
    int run = 0;
    const auto check = [&] {
        const double length = std::max(1.0, line.isEmpty() ? 0.0 : line.position(line.end() - 1));
        for (int i = 0; i < 60; ++i) {
            double from = length * (below(1300) - 150) / 1000.0;
            double to = from + length * below(300) / 1000.0;
            if (!line.gaps().empty() && below(3) == 0) { // both ends are included
                const GapMark &mark =
                    line.gaps()[static_cast<std::size_t>(below(static_cast<int>(line.gaps().size())))];
                from = below(2) == 0 ? mark.end : from;
                to = below(2) == 0 ? mark.begin : to;
                if (from > to)
                    std::swap(from, to);
            }
            std::vector<qint64> expected;
            for (const GapMark &mark : line.gaps())
                if (mark.end >= from && mark.begin <= to)
                    expected.push_back(*mark.gap.frames);
            std::vector<qint64> found;
            for (const GapMark &mark : line.gapsBetween(from, to))
                found.push_back(*mark.gap.frames);
            QCOMPARE(found, expected);
            const qint64 index = below(static_cast<int>(line.end()) + 20) - 10;
            auto first = line.gaps().begin();
            while (first != line.gaps().end() && first->index <= index)
                ++first;
            QVERIFY(line.gapAfter(index) == first);
        }
    };
    for (int step = 1; step <= 400; ++step) { // the number of lost frames tells the gaps apart
        switch (below(8)) {
        case 0:
        case 1:
            line.append(gapOf(step));
            number += step;
            time += step * 0.001;
            break;
        case 2:
            ++run;
            number = 0;
            time = below(2) == 0 ? 100.0 : time - 5.0;
            break;
        default:
            const int count = 1 + below(50);
            line.append(timedFrames(number, count, isTimed ? std::optional(time) : std::nullopt,
                                    below(5) == 0 ? std::nullopt : std::optional(0.001), run),
                        0.001);
            number += count;
            time += count * 0.00099;
        }
        if (step % 100 == 50)
            line.dropBefore(line.first() + (line.end() - line.first()) / 3);
        if (step % 20 == 0)
            check();
    }
    QVERIFY(line.gaps().size() > 20);
    check();
}

QTEST_GUILESS_MAIN(TestHistoryTimes)
#include "tst_historytimes.moc"
