// SPDX-License-Identifier: MIT
#include "support/unit.h"

#include "reader/readerqueue_p.h"

#include <QtTest>

using namespace SondixQt;

namespace {

DataBlock block(int run, qint64 first, int frames)
{
    return DataBlock(run, first, 2, QVector<double>(2 * frames), QVector<qint32>(2 * frames),
                     1.0 + double(first) * 0.5, 0.5);
}

DataGap gap(int run, qint64 first, std::optional<qint64> frames, DataGap::Reason reason = DataGap::LibraryOverrun)
{
    DataGap result;
    result.run = run;
    result.firstFrame = first;
    result.frames = frames;
    result.reason = reason;
    return result;
}

template<typename T>
T next(ReaderQueue &queue)
{
    ReaderEvent event;
    if (!queue.take(event) || !std::holds_alternative<T>(event)) {
        QTest::qFail("another event", __FILE__, __LINE__);
        return {};
    }
    return std::get<T>(event);
}

} // namespace

class Receiver : public QObject
{
    Q_OBJECT

public:
    int calls = 0;

public Q_SLOTS:
    void deliver() { ++calls; }
};

class ReaderQueueTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void eventsKeepTheirOrder();
    void eventsAreAnnouncedOnce();
    void theOldestBlocksBecomeOneGap();
    void aChangedIntervalBoundsTheGap();
    void otherGapsKeepTheirReason();
    void thereIsNothingBeforeTheFirstFrame();
    void theNewestBlockIsKept();
    void gapsAreLimitedToo();
    void answersAreNeverDiscarded();
};

void ReaderQueueTest::eventsKeepTheirOrder()
{
    ReaderQueue queue(nullptr, 1000);
    queue.push(SensorReader::Reading);
    queue.push(block(0, 0, 10));
    queue.push(gap(0, 10, 5));
    queue.push(block(0, 15, 10));
    QCOMPARE(queue.size(), 4);
    QCOMPARE(next<SensorReader::State>(queue), SensorReader::Reading);
    QCOMPARE(next<DataBlock>(queue).frameCount(), 10);
    QCOMPARE(next<DataGap>(queue), gap(0, 10, 5));
    QCOMPARE(next<DataBlock>(queue).firstFrame(), 15);
    ReaderEvent event;
    QVERIFY(!queue.take(event));
}

void ReaderQueueTest::eventsAreAnnouncedOnce()
{
    Receiver object;
    ReaderQueue queue(&object, 1000);
    queue.push(block(0, 0, 1));
    queue.push(block(0, 1, 1));
    QCoreApplication::processEvents();
    QCOMPARE(object.calls, 1);
    next<DataBlock>(queue);
    queue.announceRest();
    queue.announceRest();
    QCoreApplication::processEvents();
    QCOMPARE(object.calls, 2);
    queue.detach();
    queue.push(block(0, 2, 1));
    QCoreApplication::processEvents();
    QCOMPARE(object.calls, 2);
}

void ReaderQueueTest::theOldestBlocksBecomeOneGap()
{
    ReaderQueue queue(nullptr, 40);
    for (int i = 0; i < 10; ++i)
        queue.push(block(0, 10 * i, 10));
    const DataGap lost = next<DataGap>(queue);
    QCOMPARE(lost.firstFrame, 0);
    QCOMPARE(lost.frames, std::optional<qint64>(80));
    QCOMPARE(lost.reason, DataGap::ConsumerOverrun);
    QCOMPARE(*lost.endTime, 41.0);
    QCOMPARE(next<DataBlock>(queue).firstFrame(), 80);
    QCOMPARE(next<DataBlock>(queue).firstFrame(), 90);
}

void ReaderQueueTest::aChangedIntervalBoundsTheGap()
{
    const auto blockAt = [](qint64 first, double time, double interval) {
        return DataBlock(0, first, 2, QVector<double>(20), QVector<qint32>(20), time, interval);
    };
    ReaderQueue queue(nullptr, 20);
    queue.push(blockAt(0, 0.0, 1.0));
    next<DataBlock>(queue);             // until 9.0
    queue.push(blockAt(10, 10.0, 0.5)); // until 14.5
    queue.push(blockAt(20, 16.0, 2.0));
    const auto lost = next<DataGap>(queue);
    QCOMPARE(lost.beginTime, std::optional<double>(9.0));
    QCOMPARE(lost.endTime, std::optional<double>(16.0));
    QCOMPARE(next<DataBlock>(queue).firstFrame(), 20);
}

void ReaderQueueTest::otherGapsKeepTheirReason()
{
    ReaderQueue queue(nullptr, 20);
    queue.push(block(0, 0, 10));
    queue.push(gap(0, 10, std::nullopt, DataGap::Disconnected));
    queue.push(SensorReader::Reconnecting);
    queue.push(block(1, 0, 10));
    queue.push(block(1, 10, 10));
    QCOMPARE(next<DataGap>(queue).reason, DataGap::ConsumerOverrun);
    QCOMPARE(next<DataGap>(queue).reason, DataGap::Disconnected);
    QCOMPARE(next<SensorReader::State>(queue), SensorReader::Reconnecting);
    const DataGap lost = next<DataGap>(queue);
    QCOMPARE(lost.run, 1);
    QCOMPARE(lost.frames, std::optional<qint64>(10));
    QCOMPARE(next<DataBlock>(queue).firstFrame(), 10);
}

void ReaderQueueTest::thereIsNothingBeforeTheFirstFrame()
{
    ReaderQueue queue(nullptr, 20);
    queue.push(block(0, 0, 10));
    queue.push(gap(0, 10, std::nullopt, DataGap::Disconnected));
    queue.push(block(1, 7, 10));
    queue.push(block(1, 17, 10));
    QVERIFY(!next<DataGap>(queue).beginTime);
    next<DataGap>(queue);
    QCOMPARE(*next<DataGap>(queue).beginTime, 1.0 + 6 * 0.5);
}

void ReaderQueueTest::theNewestBlockIsKept()
{
    ReaderQueue queue(nullptr, 0);
    queue.push(block(0, 0, 10));
    QCOMPARE(queue.size(), 1);
    QCOMPARE(next<DataBlock>(queue).frameCount(), 10);
}

void ReaderQueueTest::gapsAreLimitedToo()
{
    ReaderQueue queue(nullptr, 100);
    constexpr int count = 200000;
    for (int i = 0; i < count; ++i) {
        queue.push(gap(0, 3 * i, 2));
        queue.push(block(0, 3 * i + 2, 1));
        if (i % 1000 == 0)
            queue.push(i % 2000 == 0 ? SensorReader::Reading : SensorReader::Reconnecting);
    }
    QVERIFY(queue.size() < 100000);
    qint64 frames = 0;
    qint64 first = 0;
    ReaderEvent event;
    while (queue.take(event)) {
        if (const auto *lost = std::get_if<DataGap>(&event)) {
            QCOMPARE(lost->firstFrame, first);
            QVERIFY(lost->frames);
            first += *lost->frames;
            frames += *lost->frames;
        } else if (const auto *left = std::get_if<DataBlock>(&event)) {
            QCOMPARE(left->firstFrame(), first);
            first += left->frameCount();
            frames += left->frameCount();
        }
    }
    QCOMPARE(frames, 3 * count);
}

void ReaderQueueTest::answersAreNeverDiscarded()
{
    ReaderQueue queue(nullptr, 10);
    constexpr quint64 count = 100;
    for (quint64 i = 0; i < count; ++i) {
        queue.push(CommandAnswer{i, {}});
        for (int k = 0; k < 2000; ++k)
            queue.push(gap(int(i), k, std::nullopt));
    }
    quint64 found = 0;
    ReaderEvent event;
    while (queue.take(event)) {
        if (const auto *answer = std::get_if<CommandAnswer>(&event)) {
            QCOMPARE(answer->number, found);
            ++found;
        }
    }
    QCOMPARE(found, count);
}

QTEST_GUILESS_MAIN(ReaderQueueTest)
#include "tst_readerqueue.moc"
