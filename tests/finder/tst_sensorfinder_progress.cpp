// SPDX-License-Identifier: MIT
#include "scriptedsearch.h"

#include <algorithm>
#include <limits>

using namespace SondixQt;
using namespace scriptedsearch;

namespace {

QStringList progressLines(const QList<int> &figures)
{
    QStringList lines;
    for (int figure : figures)
        lines << QStringLiteral("progress %1").arg(figure);
    return lines;
}

int readIndices(QList<int> &indices)
{
    const QString prefix = "SetParameterInt(\"IP_Index\", ";
    for (const QString &text : callTexts().filter(prefix))
        indices << text.mid(prefix.size()).chopped(1).toInt();
    return indices.size();
}

} // namespace

class TestSensorFinderProgress : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { begin(); }
    void isTruncatedToWholePercent();
    void endsTheSearchAtAFuzzyHundred_data();
    void endsTheSearchAtAFuzzyHundred();
    void countsOverAllTypes();
    void neverFallsBackOverSeveralTypes();
    void countsTypesOfOneBaseTypeOnce();
    void staysWithinItsRangeWhenTheEndWasNotSeen();
    void staysWithinItsRangeForAbsurdAnswers_data();
    void staysWithinItsRangeForAbsurdAnswers();
    void isZeroWhileItCannotBeRead();
    void aFailingQuestionNeverEndsTheSearch();
    void needsTheCountOfResults();
    void eachResultIsReadOnce();
    void aCountThatFallsIsNotTrusted();
    void resultsAreReadAgainAfterACountThatFell();
    void aSecondReadingOfMoreThanAllCoversTheBaseType();
    void anAbsurdCountIsBounded();
};

void TestSensorFinderProgress::isTruncatedToWholePercent()
{
    answerProgress({{"0.0"}, {"33.9"}, {"99.9999"}, {"100.0"}});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(TX270);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(recorder.linesOf("progress"), progressLines({0, 33, 99, 100}));
}

void TestSensorFinderProgress::endsTheSearchAtAFuzzyHundred_data()
{
    QTest::addColumn<QByteArray>("first");
    QTest::addColumn<QList<int>>("expected");
    QTest::addRow("just below, equal") << QByteArray("99.99999999999999") << QList<int>{99};
    QTest::addRow("just above, equal") << QByteArray("100.00000000000001") << QList<int>{100};
    QTest::addRow("below, not equal") << QByteArray("99.999999999") << QList<int>{99, 100};
    QTest::addRow("above, not equal") << QByteArray("100.000000001") << QList<int>{100, 100};
}

void TestSensorFinderProgress::endsTheSearchAtAFuzzyHundred()
{
    QFETCH(QByteArray, first);
    QFETCH(QList<int>, expected);
    answerProgress({{first}, {"100.0"}});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(TX270);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(recorder.linesOf("progress"), progressLines(expected));
}

void TestSensorFinderProgress::countsOverAllTypes()
{
    answerProgress({{"50.0"}, {"100.0"}}, TX270);
    answerProgress({{"25.0"}, {"100.0"}}, TX280);
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch({TX270, TX280}, true);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(recorder.linesOf("progress"), progressLines({25, 50, 62, 100}));
}

void TestSensorFinderProgress::neverFallsBackOverSeveralTypes()
{
    const QList<SensorType> types = {TX270, TX280, CC480};
    for (SensorType type : types)
        answerProgress({{"10.0"}, {"60.0"}, {"100.0"}}, type);
    QList<int> expected;
    const double share = 1.0 / 3;
    double offset = 0.0;
    for (int i = 0; i < types.size(); ++i) {
        expected << int(10.0 * share + offset) << int(60.0 * share + offset) << int(100.0 * share + offset);
        offset = 100.0 * share + offset;
    }
    QVERIFY(std::is_sorted(expected.begin(), expected.end()));

    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(types, true);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(recorder.linesOf("progress"), progressLines(expected));
}

void TestSensorFinderProgress::countsTypesOfOneBaseTypeOnce()
{
    answerProgress({{"50.0"}, {"100.0"}}, GenericKVBus);
    answerProgress({{"50.0"}, {"100.0"}}, XA300);
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(MV4xx);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(recorder.linesOf("progress"), progressLines({25, 50, 75, 100}));
    QCOMPARE(searchedTypes(), QList<int>({MV4xx, MV4xx_XA300ETH}));
}

// The second query of a tick determines the covered types: if it fails, the type is searched, too.
void TestSensorFinderProgress::staysWithinItsRangeWhenTheEndWasNotSeen()
{
    refuseCommand("Get_FindSensorProgress", 2, 1);
    answerProgress({{"100.0"}});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch({EC830, EC840}, true);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(searchedTypes(), QList<int>({EC830, EC840}));
    QCOMPARE(recorder.linesOf("progress"), progressLines({100, 100}));
}

void TestSensorFinderProgress::staysWithinItsRangeForAbsurdAnswers_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<int>("expected");
    QTest::addRow("negative") << QByteArray("-20.0") << 0;
    QTest::addRow("hugely negative") << QByteArray("-1.5e300") << 0;
    QTest::addRow("huge") << QByteArray("1.5e300") << 100;
    QTest::addRow("more than all") << QByteArray("250.0") << 100;
    QTest::addRow("not a number") << QByteArray("nan") << 0;
    QTest::addRow("infinite") << QByteArray("inf") << 0;
}

void TestSensorFinderProgress::staysWithinItsRangeForAbsurdAnswers()
{
    QFETCH(QByteArray, answer);
    QFETCH(int, expected);
    answerProgress({{answer}, {"100.0"}});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(TX270);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(recorder.linesOf("progress"), progressLines({expected, 100}));
}

void TestSensorFinderProgress::isZeroWhileItCannotBeRead()
{
    refuseCommand("Get_FindSensorProgress", 1, 2);
    answerCommand("Get_FindSensorProgress", "IA_Found=1 IA_Progress=100.0", 3);
    answerResults({"IP_SensorType=41 SA_SerialNumber=\"1\""});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(TX270);
    QVERIFY(recorder.waitFor("progress 0", 2));
    QCOMPARE(recorder.found.size(), 0);
    QCOMPARE(finder.status(), SensorFinder::Searching);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(recorder.linesOf("progress"), progressLines({0, 0, 100}));
    QCOMPARE(recorder.found.size(), 1);
}

void TestSensorFinderProgress::aFailingQuestionNeverEndsTheSearch()
{
    refuseCommand("Get_FindSensorProgress");
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch({TX270, TX280}, true);
    QVERIFY(recorder.waitFor("progress 0", 8));
    QCOMPARE(finder.status(), SensorFinder::Searching);
    QCOMPARE(searchedTypes(), QList<int>{TX270});
    QCOMPARE(recorder.linesOf("finished"), QStringList());
    finder.stopSearch();
    QCOMPARE(recorder.linesOf("finished").size(), 1);
    QCOMPARE(finder.status(), SensorFinder::Ready);
}

void TestSensorFinderProgress::needsTheCountOfResults()
{
    answerCommand("Get_FindSensorProgress", "IA_Progress=100.0", 1, 1);
    answerCommand("Get_FindSensorProgress", "IA_Found=0 IA_Progress=100.0", 2);
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(TX270);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(recorder.linesOf("progress"), progressLines({0, 100}));
}

void TestSensorFinderProgress::eachResultIsReadOnce()
{
    answerProgress({{"20.0", 1}, {"40.0", 1}, {"60.0", 3}, {"100.0", 3}});
    answerResults({"IP_SensorType=41 SA_SerialNumber=\"1\"", "IP_SensorType=41 SA_SerialNumber=\"2\"",
                   "IP_SensorType=41 SA_SerialNumber=\"3\""});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(TX270);
    QVERIFY(recorder.waitForEnd());
    QList<int> indices;
    readIndices(indices);
    QCOMPARE(indices, QList<int>({0, 1, 2}));
    const QStringList expected = {
        "found 1", "progress 20", "progress 40", "found 2", "found 3", "progress 60", "progress 100",
    };
    QCOMPARE(recorder.lines.mid(recorder.lines.indexOf(expected.first()), expected.size()), expected);
}

void TestSensorFinderProgress::aCountThatFallsIsNotTrusted()
{
    answerProgress({{"20.0", -7}, {"100.0", 1}});
    answerResults({"IP_SensorType=41 SA_SerialNumber=\"1\""});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(TX270);
    QVERIFY(recorder.waitForEnd());
    QList<int> indices;
    QCOMPARE(readIndices(indices), 1);
    QCOMPARE(indices, QList<int>({0}));
    QCOMPARE(recorder.found.size(), 1);
}

void TestSensorFinderProgress::resultsAreReadAgainAfterACountThatFell()
{
    answerProgress({{"20.0", 2}, {"30.0", 1}, {"100.0", 2}});
    answerResults({"IP_SensorType=41 SA_SerialNumber=\"1\"", "IP_SensorType=41 SA_SerialNumber=\"2\""});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(TX270);
    QVERIFY(recorder.waitForEnd());
    QList<int> indices;
    QCOMPARE(readIndices(indices), 3);
    QCOMPARE(indices, QList<int>({0, 1, 1}));
    QCOMPARE(recorder.found.size(), 2);
}

void TestSensorFinderProgress::aSecondReadingOfMoreThanAllCoversTheBaseType()
{
    answerCommand("Get_FindSensorProgress", "IA_Found=0 IA_Progress=60.0", 1, 1);
    answerCommand("Get_FindSensorProgress", "IA_Found=0 IA_Progress=150.0", 2, 1);
    answerCommand("Get_FindSensorProgress", "IA_Found=0 IA_Progress=100.0", 3);
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch({EC830, EC840}, true);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(searchedTypes(), QList<int>({int(EC830)}));
}

void TestSensorFinderProgress::anAbsurdCountIsBounded()
{
    answerProgress({{"50.0", std::numeric_limits<int>::max()}, {"100.0", std::numeric_limits<int>::max()}});
    answerResults({"IP_SensorType=41 SA_SerialNumber=\"1\""});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(TX270);
    QVERIFY(recorder.waitForEnd());
    QList<int> indices;
    QCOMPARE(readIndices(indices), 10000);
    QCOMPARE(indices.last(), 9999);
    QCOMPARE(recorder.found.size(), 1);
}

QTEST_GUILESS_MAIN(TestSensorFinderProgress)
#include "tst_sensorfinder_progress.moc"
