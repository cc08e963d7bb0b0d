// SPDX-License-Identifier: MIT
#include "sondix/answerparser_p.h"
#include "support/answerpattern.h"

#include <QTextCodec>
#include <QtTest>

#include <random>

using namespace SondixQt;
using Parameters = QMap<QString, QVariant>;

namespace {

QString describe(const Parameters &parameters)
{
    QString text;
    QDebug(&text) << parameters;
    return text;
}

/// Answers made of the pieces that matter to the rules, in an order that makes no sense.
class AnswerGenerator
{
public:
    explicit AnswerGenerator(unsigned seed)
        : random(seed)
    {
    }

    QString next()
    {
        QString answer;
        for (auto pieces = random() % 14; pieces > 0; --pieces)
            answer += piece();
        return answer;
    }

private:
    QString piece()
    {
        static const QStringList pieces{QStringLiteral("K"),     QStringLiteral("IA_Raw_Name1"),
                                        QStringLiteral("="),     QStringLiteral("="),
                                        QStringLiteral("="),     QStringLiteral("\""),
                                        QStringLiteral("\""),    QStringLiteral("\\"),
                                        QStringLiteral(" "),     QStringLiteral("\r\n"),
                                        QStringLiteral("\n"),    QStringLiteral("\t"),
                                        QStringLiteral("\v"),    QStringLiteral("\f"),
                                        QStringLiteral("\r"),    QStringLiteral("12"),
                                        QStringLiteral("-7"),    QStringLiteral("+3"),
                                        QStringLiteral("1.5"),   QStringLiteral("."),
                                        QStringLiteral("1.5e3"), QStringLiteral("1.e999"),
                                        QStringLiteral("0x1F"),  QStringLiteral("0X1f"),
                                        QStringLiteral("abc"),   QStringLiteral("99999999999"),
                                        QStringLiteral("="),     QStringLiteral("K="),
                                        QStringLiteral("K=\""),  QStringLiteral("\" K2="),
                                        QStringLiteral("\\\""),  QStringLiteral("=\"a b\""),
                                        QStringLiteral("nan."),  QStringLiteral("inf."),
                                        QStringLiteral("-0."),   QStringLiteral("2147483648")};
        if (random() % 8 == 0)
            return windows1250(char(random() % 255 + 1));
        return pieces.at(int(random() % std::minstd_rand::result_type(pieces.size())));
    }

    static QString windows1250(char byte)
    {
        static QTextCodec *const codec = QTextCodec::codecForName("windows-1250");
        return codec->toUnicode(&byte, 1);
    }

    std::minstd_rand random;
};

} // namespace

class AnswerParserTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void valuesHaveTheDescribedTypes_data();
    void valuesHaveTheDescribedTypes();
    void textsConvertLikeAnyOther();
    void laterValueReplacesOrRemovesEarlier();
    void agreesWithThePatternOnOddAnswers_data();
    void agreesWithThePatternOnOddAnswers();
    void agreesWithThePatternOnAMillionAnswers();
    void parsesMegabyteAnswers_data();
    void parsesMegabyteAnswers();
};

void AnswerParserTest::valuesHaveTheDescribedTypes_data()
{
    QTest::addColumn<QString>("answer");
    QTest::addColumn<QVariant>("value");
    QTest::newRow("double") << QStringLiteral("K=1.5") << QVariant(1.5);
    QTest::newRow("exponent") << QStringLiteral("K=-1.5e-3") << QVariant(-1.5e-3);
    QTest::newRow("hexadecimal stays text") << QStringLiteral("K=0x1F") << QVariant(QStringLiteral("0x1F"));
    QTest::newRow("quoted text") << QStringLiteral("K=\"a b\"") << QVariant(QStringLiteral("a b"));
    QTest::newRow("quoted number is text") << QStringLiteral("K=\"12\"") << QVariant(QStringLiteral("12"));
    QTest::newRow("quoted empty") << QStringLiteral("K=\"\"") << QVariant(QString());
    QTest::newRow("inner quotes vanish, backslashes stay")
        << QStringLiteral("K=\"a \\\"b\\\" c\"") << QVariant(QStringLiteral("a \\b\\ c"));
    QTest::newRow("int") << QStringLiteral("K=12") << QVariant(12);
    QTest::newRow("negative int") << QStringLiteral("K=-12") << QVariant(-12);
    QTest::newRow("word") << QStringLiteral("K=abc") << QVariant();
    QTest::newRow("address without quotes") << QStringLiteral("K=192.168.0.1") << QVariant();
    QTest::newRow("int beyond its range") << QStringLiteral("K=2147483648") << QVariant();
    QTest::newRow("largest int") << QStringLiteral("K=2147483647") << QVariant(2147483647);
    QTest::newRow("no value") << QStringLiteral("K= 5") << QVariant();
    QTest::newRow("point and 0x") << QStringLiteral("K=0x1.5") << QVariant();
}

void AnswerParserTest::valuesHaveTheDescribedTypes()
{
    QFETCH(QString, answer);
    QFETCH(QVariant, value);
    const Parameters parsed = parseAllParameters(answer);
    QCOMPARE(parsed.contains(QStringLiteral("K")), value.isValid());
    QCOMPARE(parsed.value(QStringLiteral("K")).userType(), value.userType());
    QCOMPARE(parsed.value(QStringLiteral("K")), value);
}

void AnswerParserTest::textsConvertLikeAnyOther()
{
    // A variant remembers whether it was ever given a value, which no accessor shows.
    QVariant number = parseAllParameters(QStringLiteral("K=\"12\"")).value(QStringLiteral("K"));
    QVERIFY(QVariant(12) == number);
    QVERIFY(number.convert(QMetaType::Int));
    QCOMPARE(number, QVariant(12));
}

void AnswerParserTest::laterValueReplacesOrRemovesEarlier()
{
    QVERIFY(identical(parseAllParameters(QStringLiteral("K=1 A=2 K=3")),
                      {{QStringLiteral("A"), 2}, {QStringLiteral("K"), 3}}));
    QVERIFY(parseAllParameters(QStringLiteral("K=1 K=abc")).isEmpty());
    QVERIFY(identical(parseAllParameters(QStringLiteral("K=abc K=1")), {{QStringLiteral("K"), 1}}));
}

void AnswerParserTest::agreesWithThePatternOnOddAnswers_data()
{
    QTest::addColumn<QString>("answer");
    const QStringList answers{
        QString(),
        QStringLiteral("="),
        QStringLiteral("=="),
        QStringLiteral("===1"),
        QStringLiteral("=1"),
        QStringLiteral("a=b=1"),
        QStringLiteral("a=1="),
        QStringLiteral("a=1=="),
        QStringLiteral("a=\"open b=1"),
        QStringLiteral("a=1=\"open"),
        QStringLiteral("a=1=\"closed\"b=2"),
        QStringLiteral("a=\"x\"b=\"y\"c=3"),
        QStringLiteral("\"a=1\" b=2"),
        QStringLiteral("a=\"x\\\" b=2\" c=3"),
        QStringLiteral("a=\"x\\"),
        QStringLiteral("a=\"x\\\nb\" c=1"),
        QStringLiteral("a=\"x\\\rb\" c=1"),
        QStringLiteral("a=\"line\r\nbreak\" c=1"),
        QStringLiteral("a\"b=1"),
        QStringLiteral("a=1\"b=2\"c=3"),
        QStringLiteral("a=\\\"b=2"),
        QStringLiteral("k=\"a\"\"b\" c=1"),
        QStringLiteral("a\u00a0b=1 c\u0085d=2 e\u2003f=3"),
    };
    for (const QString &answer : answers)
        QTest::newRow(qPrintable(answer)) << answer;
}

void AnswerParserTest::agreesWithThePatternOnOddAnswers()
{
    QFETCH(QString, answer);
    const Parameters parsed = parseAllParameters(answer);
    const Parameters expected = parseByPattern(answer);
    QVERIFY2(identical(parsed, expected),
             qPrintable(describe(parsed) + QLatin1String(" / ") + describe(expected)));
}

void AnswerParserTest::agreesWithThePatternOnAMillionAnswers()
{
    AnswerGenerator generator(20261121);
    int withParameters = 0;
    for (int i = 0; i < 1000000; ++i) {
        const QString answer = generator.next();
        const Parameters parsed = parseAllParameters(answer);
        const Parameters expected = parseByPattern(answer);
        if (!identical(parsed, expected))
            QFAIL(qPrintable(
                QStringLiteral("answer %1: %2 / %3").arg(answer, describe(parsed), describe(expected))));
        withParameters += expected.isEmpty() ? 0 : 1;
    }
    QVERIFY2(withParameters > 100000, "the generated answers hardly ever hold a parameter");
}

void AnswerParserTest::parsesMegabyteAnswers_data()
{
    QTest::addColumn<QString>("unit");
    QTest::newRow("pairs") << QStringLiteral("IA_Key=12 ");
    QTest::newRow("only equal signs") << QStringLiteral("=");
    QTest::newRow("equal signs and quotes that do not close") << QStringLiteral("a=\\\"");
    QTest::newRow("opening quotes") << QStringLiteral("a=\" ");
    QTest::newRow("backslashes") << QStringLiteral("\\");
    QTest::newRow("escaped quotes") << QStringLiteral("\\\"");
    QTest::newRow("one long word") << QStringLiteral("x");
    QTest::newRow("white space") << QStringLiteral(" \r\n");
}

void AnswerParserTest::parsesMegabyteAnswers()
{
    // Anything slower than linear would run into the time limit of the test.
    QFETCH(QString, unit);
    constexpr int length = 4 * 1024 * 1024;
    const QString answer =
        QStringLiteral("first=1 quoted=\"") + unit.repeated(length / unit.size()) + QStringLiteral(" last=2");
    const Parameters parsed = parseAllParameters(answer);
    QCOMPARE(parsed.value(QStringLiteral("first")), QVariant(1));

    const QString part = unit.repeated(20000 / unit.size()) + QStringLiteral(" last=2");
    QVERIFY(identical(parseAllParameters(part), parseByPattern(part)));
}

QTEST_GUILESS_MAIN(AnswerParserTest)
#include "tst_answerparser.moc"
