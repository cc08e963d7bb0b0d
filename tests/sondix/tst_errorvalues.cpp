// SPDX-License-Identifier: MIT
#include "sondix/errorvalues_p.h"

#include <SondixQt/errorvalue.h>

#include <QtTest>

#include <cmath>
#include <limits>

using namespace SondixQt;

using Texts = QHash<int, QString>;

/// Tests the error number of a scaled value and the parser for a sensor's list of error texts.
class ErrorValuesTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void keyOfAValue_data();
    void keyOfAValue();
    void textsOfASource_data();
    void textsOfASource();
    void textsAreAddedToThoseThatAreThere();
};

void ErrorValuesTest::keyOfAValue_data()
{
    using Limits = std::numeric_limits<double>;
    QTest::addColumn<double>("value");
    QTest::addColumn<bool>("isError");
    QTest::addColumn<int>("key");
    QTest::newRow("measured value") << 12.5 << false << 0;
    QTest::newRow("zero") << 0.0 << false << 0;
    QTest::newRow("just above the first error") << std::nextafter(-1.0e10, 0.0) << false << 0;
    QTest::newRow("first error") << -1.0e10 << true << 0;
    QTest::newRow("a fraction of an error") << -1.0e10 - 0.5 << true << 0;
    QTest::newRow("error 5") << -1.0e10 - 5.0 << true << -5;
    QTest::newRow("cut towards zero") << -1.0e10 - 5.7 << true << -5;
    QTest::newRow("lowest key") << -1.0e10 - 2147483648.0 << true << std::numeric_limits<int>::min();
    QTest::newRow("cut to the lowest key") << -1.0e10 - 2147483648.5 << true << std::numeric_limits<int>::min();
    QTest::newRow("below the lowest key") << -1.0e10 - 2147483649.0 << true << 0;
    QTest::newRow("far below") << -1.0e20 << true << 0;
    QTest::newRow("lowest double") << Limits::lowest() << true << 0;
    QTest::newRow("minus infinity") << -Limits::infinity() << true << 0;
    QTest::newRow("infinity") << Limits::infinity() << false << 0;
    QTest::newRow("not a number") << Limits::quiet_NaN() << true << 0;
    QTest::newRow("negative, not a number") << -Limits::quiet_NaN() << true << 0;
}

void ErrorValuesTest::keyOfAValue()
{
    QFETCH(double, value);
    QTEST(isErrorValue(value), "isError");
    QTEST(errorValueKey(value), "key");
}

void ErrorValuesTest::textsOfASource_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<Texts>("texts");
    const auto text = [](const char *latin1) { return QString::fromLatin1(latin1); };
    QTest::newRow("nothing") << QString() << Texts();
    QTest::newRow("one") << text("12: no peak") << Texts{{12, text("no peak")}};
    QTest::newRow("several") << text("-1: no target\r\n-2: too bright\r\n0: unknown")
                             << Texts{{-1, text("no target")}, {-2, text("too bright")}, {0, text("unknown")}};
    QTest::newRow("closing line end") << text("1: a\r\n2: b\r\n") << Texts{{1, text("a")}, {2, text("b")}};
    QTest::newRow("later line of the same key") << text("3: old\r\n3: new") << Texts{{3, text("new")}};
    QTest::newRow("begins with the separator") << text(": no key\r\n4: d") << Texts{{4, text("d")}};
    QTest::newRow("without separator") << text("no key\r\n5:no space\r\n6: f") << Texts{{6, text("f")}};
    QTest::newRow("separator in the text") << text("7: code: 8") << Texts{{7, text("code: 8")}};
    QTest::newRow("empty text") << text("8: ") << Texts{{8, QString()}};
    QTest::newRow("spaces belong to the text") << text("9:   far  ") << Texts{{9, text("  far  ")}};
    QTest::newRow("key that is no number") << text("none: x") << Texts{{0, text("x")}};
    QTest::newRow("key in base 16") << text("0x10: x") << Texts{{0, text("x")}};
    QTest::newRow("key that no int can hold") << text("2147483648: x") << Texts{{0, text("x")}};
    QTest::newRow("single line feed ends no line") << text("1: a\n2: b") << Texts{{1, text("a\n2: b")}};
}

void ErrorValuesTest::textsOfASource()
{
    QFETCH(QString, source);
    Texts texts;
    addErrorValueTexts(source, texts);
    QTEST(texts, "texts");
}

void ErrorValuesTest::textsAreAddedToThoseThatAreThere()
{
    Texts texts = {{1, "kept"}, {2, "replaced"}};
    addErrorValueTexts("2: new\r\n3: added", texts);
    QCOMPARE(texts, (Texts{{1, "kept"}, {2, "new"}, {3, "added"}}));
}

QTEST_GUILESS_MAIN(ErrorValuesTest)
#include "tst_errorvalues.moc"
