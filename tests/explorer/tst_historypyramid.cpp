// SPDX-License-Identifier: MIT
#include "historydata.h"

#include "explorer/history/signalpyramid.h"

#include <SondixQt/errorvalue.h>

#include <QtTest>

#include <cstring>

using namespace Explorer;
using namespace HistoryData;

/// Summaries of any range against a plain loop over its values.
class TestHistoryPyramid : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void summariesAreThoseOfALoop_data();
    void summariesAreThoseOfALoop();
    void summariesOfWhatIsStillKept();
    void deviationOfLargeValues();
    void valuesAreExact();
    void rangesAreLimitedToWhatIsKept();
    void valuesWithoutAMeasurement();
    void memoryStaysWithinTheBound();
};

namespace {

struct LoopResult
{
    Moments sum;
    QVector<double> measured;
};

LoopResult loopOver(const QVector<double> &values, qint64 begin, qint64 end)
{
    LoopResult expected;
    long double total = 0.0;
    for (qint64 i = begin; i < end; ++i) {
        const double value = values.at(static_cast<int>(i));
        if (std::isnan(value) || std::isinf(value) || value <= -1.0e10) {
            if (expected.sum.errors++ == 0)
                expected.sum.errorKey = std::isnan(value) ? 0 : static_cast<int>(value + 1.0e10);
            continue;
        }
        expected.sum.minimum = std::min(expected.sum.minimum, value);
        expected.sum.maximum = std::max(expected.sum.maximum, value);
        expected.measured << value;
        total += value;
    }
    expected.sum.count = expected.measured.size();
    if (expected.sum.count == 0)
        return expected;
    const long double mean = total / expected.sum.count;
    long double squares = 0.0;
    for (const double value : expected.measured)
        squares += (value - mean) * (value - mean);
    expected.sum.mean = static_cast<double>(mean);
    expected.sum.squares = static_cast<double>(squares);
    return expected;
}

bool isWithin(double value, double expected, double tolerance)
{
    return std::abs(value - expected) <= tolerance * std::max(1.0, std::abs(expected));
}

void compareSummaries(const SignalPyramid &pyramid, const QVector<double> &values, qint64 begin, qint64 end)
{
    const Moments expected = loopOver(values, begin, end).sum;
    const Extremes extremes = pyramid.extremes(begin, end);
    QCOMPARE(extremes.minimum, expected.minimum);
    QCOMPARE(extremes.maximum, expected.maximum);
    QCOMPARE(extremes.errors, expected.errors);
    QCOMPARE(extremes.errorKey, expected.errorKey);
    const Moments moments = pyramid.moments(begin, end);
    QCOMPARE(moments.minimum, expected.minimum);
    QCOMPARE(moments.maximum, expected.maximum);
    QCOMPARE(moments.errors, expected.errors);
    QCOMPARE(moments.errorKey, expected.errorKey);
    QCOMPARE(moments.count, expected.count);
    QVERIFY(isWithin(moments.mean, expected.mean, 1.0e-12));
    QVERIFY2(isWithin(moments.squares, expected.squares, 1.0e-9),
             qPrintable(QString("%1 %2").arg(moments.squares).arg(expected.squares)));
}

} // namespace

void TestHistoryPyramid::summariesAreThoseOfALoop_data()
{
    QTest::addColumn<int>("count");
    for (const int count : {1, 15, 16, 17, 255, 256, 257, 4095, 4096, 4097, 70000, 150001})
        QTest::addRow("%d values", count) << count;
}

void TestHistoryPyramid::summariesAreThoseOfALoop()
{
    QFETCH(int, count);
    const QVector<double> values = randomValues(count, 5.0, static_cast<unsigned>(count));
    SignalPyramid pyramid;
    std::mt19937 random(7);
    for (int done = 0; done < count;) { // in pieces of any length
        const int piece = std::min(count - done, 1 + static_cast<int>(random() % 700));
        pyramid.append(values.constData() + done, 1, piece);
        done += piece;
    }
    QCOMPARE(pyramid.end(), qint64(count));
    compareSummaries(pyramid, values, 0, count);
    for (int i = 0; i < 200; ++i) {
        const qint64 begin = random() % static_cast<unsigned>(count);
        const qint64 end = begin + 1 + random() % static_cast<unsigned>(count - begin);
        compareSummaries(pyramid, values, begin, end);
        if (QTest::currentTestFailed())
            return;
    }
}

void TestHistoryPyramid::summariesOfWhatIsStillKept()
{
    constexpr int count = 200000;
    const QVector<double> values = randomValues(count, -3.0, 11);
    SignalPyramid pyramid;
    std::mt19937 random(5);
    for (int done = 0; done < count;) {
        const int piece = std::min(count - done, 1 + static_cast<int>(random() % 3000));
        pyramid.append(values.constData() + done, 1, piece);
        done += piece;
        pyramid.dropBefore(done - 20000);
        QVERIFY(pyramid.first() <= std::max(0, done - 20000));
        QVERIFY(done - pyramid.first() < 20000 + SignalPyramid::chunkSize);
        const qint64 kept = done - pyramid.first();
        const qint64 begin = pyramid.first() + static_cast<qint64>(random()) % kept;
        compareSummaries(pyramid, values, begin, begin + 1 + static_cast<qint64>(random()) % (done - begin));
        compareSummaries(pyramid, values, pyramid.first(), done);
        if (QTest::currentTestFailed())
            return;
    }
}

// The textbook formula with sums of squares has no correct digit here.
void TestHistoryPyramid::deviationOfLargeValues()
{
    QVector<double> values(100000);
    for (int i = 0; i < values.size(); ++i)
        values[i] = 1.0e9 + (i % 2 == 0 ? 0.5 : -0.5);
    SignalPyramid pyramid;
    pyramid.append(values.constData(), 1, values.size());
    const Moments moments = pyramid.moments(3, 99999);
    QVERIFY(isWithin(moments.mean, 1.0e9, 1.0e-15));
    QVERIFY(isWithin(moments.standardDeviation(), 0.5, 1.0e-5));
}

void TestHistoryPyramid::valuesAreExact()
{
    const QVector<double> values = randomValues(3000, 5.0, 2);
    SignalPyramid pyramid;
    pyramid.append(values.constData(), 3, 1000);
    QVector<double> copied(700);
    pyramid.copy(250, 700, copied.data());
    for (int i = 0; i < 700; ++i) {
        const double expected = values.at(3 * (250 + i));
        QVERIFY(std::memcmp(&copied.at(i), &expected, sizeof expected) == 0);
        const double value = pyramid.value(250 + i);
        QVERIFY(std::memcmp(&value, &expected, sizeof expected) == 0);
    }
}

void TestHistoryPyramid::rangesAreLimitedToWhatIsKept()
{
    const QVector<double> values = randomValues(1000, 5.0, 3);
    SignalPyramid pyramid;
    QCOMPARE(pyramid.moments(0, 10).count, qint64(0));
    pyramid.append(values.constData(), 1, values.size());
    const Moments all = pyramid.moments(-5, 5000);
    QCOMPARE(all.count + all.errors, qint64(1000));
    QVERIFY(!pyramid.extremes(20, 10).hasValues());
    pyramid.clear();
    QCOMPARE(pyramid.end(), qint64(0));
}

void TestHistoryPyramid::valuesWithoutAMeasurement()
{
    const double infinity = std::numeric_limits<double>::infinity();
    const QVector<double> values{infinity, -infinity, std::nan(""), -1.0e10, -1.0e10 - 7.0, 1.0e300, -9.9e9};
    SignalPyramid pyramid;
    pyramid.append(values.constData(), 1, values.size());
    const Moments moments = pyramid.moments(0, values.size());
    QCOMPARE(moments.errors, qint64(5));
    QCOMPARE(moments.count, qint64(2));
    QCOMPARE(moments.minimum, -9.9e9);
    QCOMPARE(moments.maximum, 1.0e300);
    QCOMPARE(pyramid.extremes(4, 7).errorKey, -7);
}

void TestHistoryPyramid::memoryStaysWithinTheBound()
{
    const QVector<double> values = randomValues(1000, 5.0, 3);
    SignalPyramid pyramid;
    for (int i = 0; i < 500; ++i) {
        pyramid.append(values.constData(), 1, values.size());
        QVERIFY(pyramid.bytes() <= SignalPyramid::bytesFor(pyramid.end()));
    }
    // A fifth on top of the values at most.
    QVERIFY(SignalPyramid::bytesFor(1000000) < 8000000 * 6 / 5);
}

QTEST_GUILESS_MAIN(TestHistoryPyramid)
#include "tst_historypyramid.moc"
