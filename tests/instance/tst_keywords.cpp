// SPDX-License-Identifier: MIT
#include "instance/keywords/consumer.h"

#include <QtTest>

class TestKeywords : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void userWithKeywordsReadsSignals() { QCOMPARE(signalNamesWithKeywords(), QStringList("Distance")); }
    void userWithKeywordsKeepsThem() { QVERIFY(keywordStillDeclaresSignals()); }
    void userWithoutKeywordsReadsSignals()
    {
        QCOMPARE(signalNamesWithoutKeywords(), QStringList({"Distance", "Intensity"}));
    }
    void bothPrintNames()
    {
        const QString names = "SondixQt::TX270 QFlags<SondixQt::SensorInterface>(RS232) "
                              "SondixQt::TransmittedDataInfo";
        QCOMPARE(printedWithKeywords().trimmed(), names);
        QCOMPARE(printedWithoutKeywords().trimmed(), names);
    }
};

QTEST_GUILESS_MAIN(TestKeywords)
#include "tst_keywords.moc"
