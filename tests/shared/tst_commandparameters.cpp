// SPDX-License-Identifier: MIT
#include "shared/commandparameters.h"

#include <QtTest>

#include <limits>

using namespace SondixApp;

class TestCommandParameters : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void valuesHaveTheTypeInWhichTheyRead_data();
    void valuesHaveTheTypeInWhichTheyRead();
    void severalWordsGiveSeveralParameters();
    void wrongWordsAreExplained_data();
    void wrongWordsAreExplained();
    void namesAreLettersDigitsAndAFewSigns_data();
    void namesAreLettersDigitsAndAFewSigns();
};

void TestCommandParameters::valuesHaveTheTypeInWhichTheyRead_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QVariant>("value");
    const auto row = [](const char *text, const QVariant &value) {
        QTest::newRow(text) << QString::fromUtf8(text) << value;
    };
    const auto text = [](const char *value) { return QVariant(QString::fromUtf8(value)); };
    row("0", 0);
    row("-17", -17);
    row("+4", 4);
    row("007", 7);
    row("2147483647", std::numeric_limits<int>::max());
    row("-2147483648", std::numeric_limits<int>::min());
    row("2.5", 2.5);
    row("2.0", 2.0);
    row("-.5", -0.5);
    row("3.", 3.0);
    row("1e3", 1000.0);
    row("2.5E-3", 0.0025);
    row("2147483648.0", 2147483648.0);
    row("high", text("high"));
    row("1,5", text("1,5"));
    row("0x10", text("0x10"));
    row("nan", text("nan"));
    row("inf", text("inf"));
    row("1 2", text("1 2"));
    row("-", text("-"));
    row("a=b", text("a=b"));
    row("\"12\"", text("12"));
    row("\"2.5\"", text("2.5"));
    row("\"\"", text(""));
    row("\"a \"b\" c\"", text("a \"b\" c"));
    row("20 °C", text("20 °C"));
}

void TestCommandParameters::valuesHaveTheTypeInWhichTheyRead()
{
    QFETCH(QString, text);
    QFETCH(QVariant, value);
    QString problem;
    const auto parameters = commandParameters({"SP_Value=" + text}, problem);
    QVERIFY2(parameters, qPrintable(problem));
    QCOMPARE(parameters->size(), 1);
    const QVariant read = parameters->value("SP_Value");
    QCOMPARE(read.userType(), value.userType());
    QCOMPARE(read, value);
}

void TestCommandParameters::severalWordsGiveSeveralParameters()
{
    QString problem;
    const auto none = commandParameters({}, problem);
    QVERIFY(none && none->isEmpty());
    const auto two = commandParameters({"SP_B=1", "CP_A#2=x"}, problem);
    QVERIFY(two);
    QCOMPARE(*two, (QMap<QString, QVariant>{{"CP_A#2", "x"}, {"SP_B", 1}}));
}

void TestCommandParameters::wrongWordsAreExplained_data()
{
    QTest::addColumn<QString>("words");
    QTest::addColumn<QString>("sentence");
    const auto row = [](const char *words, const char *sentence) {
        QTest::newRow(*words == '\0' ? "empty" : words) << QString::fromUtf8(words) << QString::fromUtf8(sentence);
    };
    row("", "'' is no PARAMETER=VALUE");
    row("SP_A", "'SP_A' is no PARAMETER=VALUE");
    row("=1", "'=1' is no PARAMETER=VALUE");
    row("SP-A=1", "'SP-A=1' is no PARAMETER=VALUE");
    row("1A=1", "'1A=1' is no PARAMETER=VALUE");
    row("SP_A=1|SP_B", "'SP_B' is no PARAMETER=VALUE");
    row("SP_A=", "'SP_A=' gives no value");
    row("SP_A=\"", "do not enclose the value");
    row("SP_A=\"x", "do not enclose the value");
    row("SP_A=x\"", "do not enclose the value");
    row("SP_A=1|SP_A=2", "'SP_A' is given twice");
    row("S_Command=Get_Info", "'S_Command' is the command itself");
    row("SP_A=2147483648", "the number in 'SP_A=2147483648' is too large for an integer");
    row("SP_A=1e999", "the number in 'SP_A=1e999' is too large");
    row("SP_A=Ω", "'SP_A=Ω' has characters that cannot be sent");
    row("SP_A=\"Ω\"", "has characters that cannot be sent");
}

void TestCommandParameters::wrongWordsAreExplained()
{
    QFETCH(QString, words);
    QFETCH(QString, sentence);
    QString problem;
    QVERIFY(!commandParameters(words.split(QLatin1Char('|')), problem));
    QVERIFY2(problem.contains(sentence), qPrintable(problem));
}

void TestCommandParameters::namesAreLettersDigitsAndAFewSigns_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("isName");
    QTest::newRow("command") << "Get_Info" << true;
    QTest::newRow("numbered") << "IA_SensorType#2" << true;
    QTest::newRow("one letter") << "x" << true;
    QTest::newRow("empty") << "" << false;
    QTest::newRow("leading digit") << "2x" << false;
    QTest::newRow("leading underscore") << "_x" << false;
    QTest::newRow("hyphen") << "Get-Info" << false;
    QTest::newRow("blank") << "Get Info" << false;
    QTest::newRow("line feed at the end") << "Get_Info\n" << false;
    QTest::newRow("umlaut") << QString::fromUtf8("Größe") << false;
}

void TestCommandParameters::namesAreLettersDigitsAndAFewSigns()
{
    QFETCH(QString, text);
    QFETCH(bool, isName);
    QCOMPARE(isCommandWord(text), isName);
}

QTEST_GUILESS_MAIN(TestCommandParameters)
#include "tst_commandparameters.moc"
