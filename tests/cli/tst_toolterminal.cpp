// SPDX-License-Identifier: MIT
#include "benches.h"
#include "terminal.h"
#include "toolrunner.h"

#include <algorithm>

class TestToolTerminal : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void styleIsForTerminalsThatWantIt_data();
    void styleIsForTerminalsThatWantIt();
    void aSearchShowsItsProgress();
    void aReadIntoAFileShowsItsProgress();
    void aRecordingShowsItsValues();
    void progressIsNotMixedIntoTheData();
    void progressFitsTheWidthOfTheTerminal_data();
    void progressFitsTheWidthOfTheTerminal();

private:
    static QByteArray run(const ToolRunner &runner, const char *line, bool withStdout, QByteArray *out = nullptr)
    {
        Terminal terminal;
        ProcessOnTerminal process(terminal, withStdout);
        runner.start(process, words(line));
        const ToolResult result = ToolRunner::finish(process);
        if (out)
            *out = result.out;
        return terminal.text();
    }
};

void TestToolTerminal::styleIsForTerminalsThatWantIt_data()
{
    QTest::addColumn<QString>("variable");
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("styled");
    QTest::newRow("terminal") << "NO_COLOR"
                              << "" << true;
    QTest::newRow("no colours") << "NO_COLOR"
                                << "1" << false;
    QTest::newRow("dumb terminal") << "TERM"
                                   << "dumb" << false;
}

void TestToolTerminal::styleIsForTerminalsThatWantIt()
{
    QFETCH(QString, variable);
    QFETCH(QString, value);
    QFETCH(bool, styled);
    ToolRunner runner;
    runner.setEnvironment("TERM", "xterm");
    runner.setEnvironment(qPrintable(variable), value);
    const QByteArray table = run(runner, "models --group Color", true);
    QCOMPARE(table.contains("\x1b[1mMODEL"), styled);
    QVERIFY(table.contains("Pigmar PG120"));
    const QByteArray sentence = run(runner, "models --group Colour", true);
    QCOMPARE(sentence.contains("\x1b[31m"), styled);
    QVERIFY(sentence.contains("there is no group 'Colour'"));
}

void TestToolTerminal::aSearchShowsItsProgress()
{
    ToolRunner runner(Benches::of(Benches::laser(100), R"("RS232": 0.5, "XA200_ETH": 0.5)"));
    runner.setEnvironment("TERM", "xterm");
    QByteArray out;
    const QByteArray shown = run(runner, "find --type TX270", false, &out);
    QVERIFY2(shown.contains("[") && shown.contains("100 %"), shown.constData());
    QVERIFY2(shown.contains("Searching for device: Tavrin TX270 ..."), shown.constData());
    QVERIFY2(shown.endsWith("\r\x1b[K1 sensor found\r\n"), shown.constData());
    QCOMPARE(linesOf(out).size(), 1);
    QVERIFY(!out.contains('\x1b'));
}

void TestToolTerminal::aReadIntoAFileShowsItsProgress()
{
    ToolRunner runner(Benches::of(Benches::laser(1000)));
    runner.setEnvironment("TERM", "xterm");
    const QByteArray shown = run(runner, "read TX270@RS232,port=COM3 -n 200 --csv values.csv", false);
    QVERIFY2(shown.contains("\r\x1b[K200 frames"), shown.constData());
}

void TestToolTerminal::aRecordingShowsItsValues()
{
    ToolRunner runner(Benches::of(Benches::laser(1000)));
    runner.setEnvironment("TERM", "xterm");
    const QByteArray quiet = run(runner, "record TX270@RS232,port=COM3 -n 200 -o values.csv", false);
    QVERIFY2(quiet.contains("\r\x1b[K200 frames"), quiet.constData());
    QVERIFY(!quiet.contains("12.5 mm"));
    // Every fourth value is an error; the last one is none.
    const QByteArray shown = run(runner, "record TX270@RS232,port=COM3 -n 202 -o values.csv --follow", false);
    QVERIFY2(shown.contains("\r\x1b[K12.5 mm, 202 frames"), shown.constData());
}

void TestToolTerminal::progressIsNotMixedIntoTheData()
{
    ToolRunner runner(Benches::of(Benches::laser(100), R"("RS232": 0.5, "XA200_ETH": 0.5)"));
    runner.setEnvironment("TERM", "xterm");
    runner.setEnvironment("NO_COLOR", "1");
    const QByteArray shown = run(runner, "find --type TX270", true);
    // The progress line is erased before a sensor is printed.
    QVERIFY2(shown.contains("\r\x1b[KRS232 "), shown.constData());
}

void TestToolTerminal::progressFitsTheWidthOfTheTerminal_data()
{
    QTest::addColumn<int>("columns");
    QTest::addColumn<int>("maximum"); // length of a progress line
    // A complete line takes 72 characters: brackets, a bar of 24, "100 %" and the model that is searched.
    QTest::newRow("wide") << 200 << 72;
    QTest::newRow("usual") << 80 << 72;
    QTest::newRow("narrow") << 40 << 39;
    QTest::newRow("the bar alone") << 20 << 19;
    QTest::newRow("hardly any") << 5 << 4;
    QTest::newRow("unknown") << 0 << 72;
}

void TestToolTerminal::progressFitsTheWidthOfTheTerminal()
{
    QFETCH(int, columns);
    QFETCH(int, maximum);
    ToolRunner runner(Benches::of(Benches::laser(100), R"("RS232": 0.5, "XA200_ETH": 0.5)"));
    runner.setEnvironment("TERM", "xterm");
    Terminal terminal;
    terminal.setColumns(static_cast<unsigned short>(columns));
    ProcessOnTerminal process(terminal, false);
    runner.start(process, words("find --type TX270"));
    QCOMPARE(ToolRunner::finish(process).code, 0);
    int longestShown = 0;
    for (const QByteArray &shown : terminal.text().split('\r'))
        if (shown.startsWith("\x1b[K[")) // a progress line
            longestShown = std::max(longestShown, shown.size() - 3);
    QCOMPARE(longestShown, maximum);
}

QTEST_GUILESS_MAIN(TestToolTerminal)
#include "tst_toolterminal.moc"
