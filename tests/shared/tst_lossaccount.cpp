// SPDX-License-Identifier: MIT
#include "recordings.h"

#include "shared/lossaccount.h"

using namespace Recordings;

class TestLossAccount : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void isASentence_data();
    void isASentence();
};

void TestLossAccount::isASentence_data()
{
    QTest::addColumn<QVector<DataGap>>("gaps");
    QTest::addColumn<QString>("sentence");
    QTest::addColumn<QString>("brief");
    const DataGap one = gap(0, 1, DataGap::LibraryOverrun);
    const DataGap library = gap(0, 20, DataGap::LibraryOverrun);
    const DataGap consumer = gap(50, 5, DataGap::ConsumerOverrun);
    const DataGap cable = gap(90, 7, DataGap::Disconnected);
    const DataGap unknown = gap(90, {}, DataGap::Unknown);
    QTest::newRow("none") << QVector<DataGap>{} << ""
                          << "0 lost";
    QTest::newRow("one") << QVector<DataGap>{one}
                         << "1 frame was lost because it was not read in time or the line was too slow"
                         << "1 lost";
    QTest::newRow("overruns") << QVector<DataGap>{library, consumer}
                              << "25 frames were lost because they were not read in time or the line was too slow"
                              << "25 lost";
    QTest::newRow("cable") << QVector<DataGap>{cable} << "7 frames were lost while the sensor was disconnected"
                           << "7 lost";
    QTest::newRow("two reasons") << QVector<DataGap>{cable, library, cable}
                                 << "34 frames were lost: 20 because they were not read in time or the line was "
                                    "too slow, 14 while the sensor was disconnected"
                                 << "34 lost";
    QTest::newRow("unknown length") << QVector<DataGap>{unknown, unknown}
                                    << "an unknown number of frames was lost in 2 gaps, for an unknown reason"
                                    << "some lost";
    QTest::newRow("both") << QVector<DataGap>{library, unknown}
                          << "20 frames were lost because they were not read in time or the line was too slow; an "
                             "unknown number of frames was "
                             "lost in 1 gap, for an unknown reason"
                          << "at least 20 lost";
}

void TestLossAccount::isASentence()
{
    QFETCH(QVector<DataGap>, gaps);
    QFETCH(QString, sentence);
    QFETCH(QString, brief);
    LossAccount account;
    for (const DataGap &gap : gaps)
        account.add(gap);
    QCOMPARE(account.sentence(), sentence);
    QCOMPARE(account.brief(), brief);
    QCOMPARE(account.isEmpty(), gaps.isEmpty());
}

QTEST_GUILESS_MAIN(TestLossAccount)
#include "tst_lossaccount.moc"
