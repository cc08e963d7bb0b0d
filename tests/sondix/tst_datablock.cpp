// SPDX-License-Identifier: MIT
#include "sondix/answervalue_p.h"
#include "sondix/datablock_p.h"

#include <QtTest>

#include <limits>

using namespace SondixQt;

namespace {

constexpr int largest = std::numeric_limits<int>::max();
constexpr int smallest = std::numeric_limits<int>::min();

} // namespace

class TestDataBlock : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void sizeOfABlock_data();
    void sizeOfABlock();
    void countWrittenBack_data();
    void countWrittenBack();
    void integersOfAnswers_data();
    void integersOfAnswers();
};

void TestDataBlock::sizeOfABlock_data()
{
    QTest::addColumn<int>("available");
    QTest::addColumn<int>("frameValues");
    QTest::addColumn<int>("taken");
    QTest::newRow("none") << 0 << 3 << 0;
    QTest::newRow("negative") << -1 << 3 << 0;
    QTest::newRow("most negative") << smallest << 3 << 0;
    QTest::newRow("ordinary") << 30000 << 3 << 30000;
    QTest::newRow("a broken frame passes as it is") << 30001 << 3 << 30001;
    QTest::newRow("most") << 16777216 << 3 << 16777216;
    QTest::newRow("cut at a whole frame") << 16777217 << 3 << 16777215;
    QTest::newRow("absurd") << largest << 7 << 16777215 - 16777215 % 7;
    QTest::newRow("absurd, frame not known") << largest << -1 << 16777216;
    QTest::newRow("absurd, empty frame") << largest << 0 << 16777216;
    QTest::newRow("absurd frame as well") << largest << largest << 16777216;
}

void TestDataBlock::sizeOfABlock()
{
    QFETCH(int, available);
    QFETCH(int, frameValues);
    QFETCH(int, taken);
    QCOMPARE(blockValues(available, frameValues), taken);
}

void TestDataBlock::countWrittenBack_data()
{
    QTest::addColumn<int>("written");
    QTest::addColumn<int>("capacity");
    QTest::addColumn<int>("count");
    QTest::newRow("all") << 10 << 10 << 10;
    QTest::newRow("fewer") << 4 << 10 << 4;
    QTest::newRow("none") << 0 << 10 << 0;
    QTest::newRow("more than fit") << 11 << 10 << 10;
    QTest::newRow("negative") << smallest << 10 << 0;
    QTest::newRow("no room") << 5 << 0 << 0;
    QTest::newRow("negative room") << 5 << -5 << 0;
}

void TestDataBlock::countWrittenBack()
{
    QFETCH(int, written);
    QFETCH(int, capacity);
    QFETCH(int, count);
    QCOMPARE(transferredValues(written, capacity), count);
}

void TestDataBlock::integersOfAnswers_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<int>("integer");
    QTest::newRow("missing") << QVariant() << 0;
    QTest::newRow("int") << QVariant(-5) << -5;
    QTest::newRow("double") << QVariant(3.0) << 3;
    QTest::newRow("largest double") << QVariant(2147483647.0) << largest;
    QTest::newRow("smallest double") << QVariant(-2147483648.0) << smallest;
    QTest::newRow("too large") << QVariant(2147483648.0) << 0;
    QTest::newRow("too small") << QVariant(-2147483649.0) << 0;
    QTest::newRow("huge") << QVariant(1e300) << 0;
    QTest::newRow("infinite") << QVariant(-std::numeric_limits<double>::infinity()) << 0;
    QTest::newRow("not a number") << QVariant(std::numeric_limits<double>::quiet_NaN()) << 0;
    QTest::newRow("text of a number") << QVariant("12") << 12;
    QTest::newRow("text of a large number") << QVariant("99999999999") << 0;
    QTest::newRow("other text") << QVariant("x") << 0;
}

void TestDataBlock::integersOfAnswers()
{
    QFETCH(QVariant, value);
    QFETCH(int, integer);
    QCOMPARE(intAnswer(value), integer);
}

QTEST_GUILESS_MAIN(TestDataBlock)
#include "tst_datablock.moc"
