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

/// Random answers, composed of the tokens that are relevant for the parser.
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
        static const QStringList pieces{
            "K",     "IA_Raw_Name1", "=",    "=",    "=",   "\"",          "\"", "\\", " ",    "\r\n",
            "\n",    "\t",           "\v",   "\f",   "\r",  "12",          "-7", "+3", "1.5",  ".",
            "1.5e3", "1.e999",       "0x1F", "0X1f", "abc", "99999999999", "=",  "K=", "K=\"", "\" K2=",
            "\\\"",  "=\"a b\"",     "nan.", "inf.", "-0.", "2147483648"};
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
    QTest::newRow("double") << "K=1.5" << QVariant(1.5);
    QTest::newRow("exponent") << "K=-1.5e-3" << QVariant(-1.5e-3);
    QTest::newRow("hexadecimal stays text") << "K=0x1F" << QVariant("0x1F");
    QTest::newRow("quoted text") << "K=\"a b\"" << QVariant("a b");
    QTest::newRow("quoted number is text") << "K=\"12\"" << QVariant("12");
    QTest::newRow("quoted empty") << "K=\"\"" << QVariant(QString());
    QTest::newRow("inner quotes vanish, backslashes stay") << "K=\"a \\\"b\\\" c\"" << QVariant("a \\b\\ c");
    QTest::newRow("int") << "K=12" << QVariant(12);
    QTest::newRow("negative int") << "K=-12" << QVariant(-12);
    QTest::newRow("word") << "K=abc" << QVariant();
    QTest::newRow("address without quotes") << "K=192.168.0.1" << QVariant();
    QTest::newRow("int beyond its range") << "K=2147483648" << QVariant();
    QTest::newRow("largest int") << "K=2147483647" << QVariant(2147483647);
    QTest::newRow("no value") << "K= 5" << QVariant();
    QTest::newRow("point and 0x") << "K=0x1.5" << QVariant();
}

void AnswerParserTest::valuesHaveTheDescribedTypes()
{
    QFETCH(QString, answer);
    QFETCH(QVariant, value);
    const Parameters parsed = parseAllParameters(answer);
    QCOMPARE(parsed.contains("K"), value.isValid());
    QCOMPARE(parsed.value("K").userType(), value.userType());
    QCOMPARE(parsed.value("K"), value);
}

void AnswerParserTest::textsConvertLikeAnyOther()
{
    // QVariant::convert() fails if the internal null flag was not cleared when the value was assigned.
    QVariant number = parseAllParameters("K=\"12\"").value("K");
    QVERIFY(QVariant(12) == number);
    QVERIFY(number.convert(QMetaType::Int));
    QCOMPARE(number, QVariant(12));
}

void AnswerParserTest::laterValueReplacesOrRemovesEarlier()
{
    QVERIFY(identical(parseAllParameters("K=1 A=2 K=3"), {{"A", 2}, {"K", 3}}));
    QVERIFY(parseAllParameters("K=1 K=abc").isEmpty());
    QVERIFY(identical(parseAllParameters("K=abc K=1"), {{"K", 1}}));
}

void AnswerParserTest::agreesWithThePatternOnOddAnswers_data()
{
    QTest::addColumn<QString>("answer");
    const QStringList answers{
        QString(),
        "=",
        "==",
        "===1",
        "=1",
        "a=b=1",
        "a=1=",
        "a=1==",
        "a=\"open b=1",
        "a=1=\"open",
        "a=1=\"closed\"b=2",
        "a=\"x\"b=\"y\"c=3",
        "\"a=1\" b=2",
        "a=\"x\\\" b=2\" c=3",
        "a=\"x\\",
        "a=\"x\\\nb\" c=1",
        "a=\"x\\\rb\" c=1",
        "a=\"line\r\nbreak\" c=1",
        "a\"b=1",
        "a=1\"b=2\"c=3",
        "a=\\\"b=2",
        "k=\"a\"\"b\" c=1",
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
    QVERIFY2(identical(parsed, expected), qPrintable(describe(parsed) + " / " + describe(expected)));
}

void AnswerParserTest::agreesWithThePatternOnAMillionAnswers()
{
#ifdef __SANITIZE_ADDRESS__
    constexpr int count = 200000; // a tenth of the speed
#else
    constexpr int count = 1000000;
#endif
    AnswerGenerator generator(20261121);
    int withParameters = 0;
    for (int i = 0; i < count; ++i) {
        const QString answer = generator.next();
        const Parameters parsed = parseAllParameters(answer);
        const Parameters expected = parseByPattern(answer);
        if (!identical(parsed, expected))
            QFAIL(qPrintable(
                QStringLiteral("answer %1: %2 / %3").arg(answer, describe(parsed), describe(expected))));
        withParameters += expected.isEmpty() ? 0 : 1;
    }
    QVERIFY2(withParameters > count / 10, "the generated answers hardly ever hold a parameter");
}

void AnswerParserTest::parsesMegabyteAnswers_data()
{
    QTest::addColumn<QString>("unit");
    QTest::newRow("pairs") << "IA_Key=12 ";
    QTest::newRow("only equal signs") << "=";
    QTest::newRow("equal signs and quotes that do not close") << "a=\\\"";
    QTest::newRow("opening quotes") << "a=\" ";
    QTest::newRow("backslashes") << "\\";
    QTest::newRow("escaped quotes") << "\\\"";
    QTest::newRow("one long word") << "x";
    QTest::newRow("white space") << " \r\n";
}

void AnswerParserTest::parsesMegabyteAnswers()
{
    // A parser that is slower than linear would exceed the time limit of the test.
    QFETCH(QString, unit);
    constexpr int length = 4 * 1024 * 1024;
    const QString answer = "first=1 quoted=\"" + unit.repeated(length / unit.size()) + " last=2";
    const Parameters parsed = parseAllParameters(answer);
    QCOMPARE(parsed.value("first"), QVariant(1));

    const QString part = unit.repeated(20000 / unit.size()) + " last=2";
    QVERIFY(identical(parseAllParameters(part), parseByPattern(part)));
}

QTEST_GUILESS_MAIN(AnswerParserTest)
#include "tst_answerparser.moc"
