// SPDX-License-Identifier: MIT
#include "instance/keywords/consumer.h"

#include <QtTest>

class TestKeywords : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void userWithKeywordsReadsSignals()
    {
        QCOMPARE(signalNamesWithKeywords(), QStringList(QStringLiteral("Distance")));
    }
    void userWithKeywordsKeepsThem() { QVERIFY(keywordStillDeclaresSignals()); }
    void userWithoutKeywordsReadsSignals()
    {
        QCOMPARE(signalNamesWithoutKeywords(),
                 QStringList({QStringLiteral("Distance"), QStringLiteral("Intensity")}));
    }
};

QTEST_GUILESS_MAIN(TestKeywords)
#include "tst_keywords.moc"
