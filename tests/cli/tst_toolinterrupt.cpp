// SPDX-License-Identifier: MIT
#include "benches.h"
#include "terminal.h"
#include "toolrunner.h"

#include <csignal>

class TestToolInterrupt : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void endsASearch_data();
    void endsASearch();
    void leavesAWholeFile_data();
    void leavesAWholeFile();
    void endsAReadToStdoutWithAWholeLine();
    void theSecondOneEndsACallThatDoesNotReturn();

private:
    static void interrupt(const QProcess &process, int signalNumber = SIGINT)
    {
        QCOMPARE(::kill(static_cast<pid_t>(process.processId()), signalNumber), 0);
    }
};

void TestToolInterrupt::endsASearch_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<int>("signalNumber");
    QTest::newRow("find") << "find --type TX270" << static_cast<int>(SIGINT);
    QTest::newRow("find, asked to terminate") << "find --type TX270" << static_cast<int>(SIGTERM);
    QTest::newRow("info by serial number") << "info --type TX270 --serial 7" << static_cast<int>(SIGINT);
    QTest::newRow("read by serial number") << "read --type TX270 --serial 7" << static_cast<int>(SIGINT);
}

void TestToolInterrupt::endsASearch()
{
    QFETCH(QString, line);
    QFETCH(int, signalNumber);
    const ToolRunner runner(Benches::of(Benches::laser(100), R"("RS232": 0.01, "XA200_ETH": 3600)"));
    QProcess process;
    runner.start(process, QStringList{QStringLiteral("--verbose")} + line.split(QLatin1Char(' ')));
    process.setReadChannel(QProcess::StandardError);
    QByteArray log;
    QTRY_VERIFY_WITH_TIMEOUT((log += process.readAllStandardError()).contains("searching: "), 10000);
    interrupt(process, signalNumber);
    const ToolResult result = ToolRunner::finish(process);
    QCOMPARE(result.code, 130);
    QVERIFY2(result.err.contains("sondixqt: interrupted"), result.err.constData());
}

void TestToolInterrupt::leavesAWholeFile_data()
{
    QTest::addColumn<int>("signalNumber");
    QTest::newRow("Ctrl-C") << static_cast<int>(SIGINT);
    QTest::newRow("asked to terminate") << static_cast<int>(SIGTERM);
}

void TestToolInterrupt::leavesAWholeFile()
{
    QFETCH(int, signalNumber);
    ToolRunner runner(Benches::of(Benches::laser(1000)));
    runner.setEnvironment("TERM", QStringLiteral("xterm"));
    Terminal terminal;
    ProcessOnTerminal process(terminal, false);
    runner.start(process, words("read TX270@RS232,port=COM3 --csv values.csv"));
    QTRY_VERIFY_WITH_TIMEOUT(terminal.text().contains(" frames"), 10000);
    QVERIFY(!QFile::exists(runner.path(QStringLiteral("values.csv"))));
    interrupt(process, signalNumber);
    const ToolResult result = ToolRunner::finish(process);
    QCOMPARE(result.code, 130);
    QCOMPARE(runner.files(), (QStringList{QStringLiteral("bench.json"), QStringLiteral("values.csv")}));
    const QByteArray content = runner.contentOf(QStringLiteral("values.csv"));
    QVERIFY(content.endsWith('\n'));
    const QList<QByteArray> lines = linesOf(content);
    QVERIFY2(
        terminal.text().contains("\x1b[K" + QByteArray::number(lines.size() - 1) + " frames of 1 value read in "),
        terminal.text().constData());
    for (const QByteArray &line : lines)
        QCOMPARE(line.count(','), 1);
}

void TestToolInterrupt::endsAReadToStdoutWithAWholeLine()
{
    const ToolRunner runner(Benches::of(Benches::laser(1000)));
    QProcess process;
    runner.start(process, words("read TX270@RS232,port=COM3 --json"));
    QTRY_VERIFY_WITH_TIMEOUT(process.bytesAvailable() > 1000, 10000);
    interrupt(process);
    const ToolResult result = ToolRunner::finish(process);
    QCOMPARE(result.code, 130);
    QVERIFY(result.out.endsWith("}\n"));
    QVERIFY(!jsonLines(result.out).isEmpty());
}

void TestToolInterrupt::theSecondOneEndsACallThatDoesNotReturn()
{
    // The first read fails, which shows in the log, and the next one in the same call hangs.
    const QByteArray several = R"({ "model": "MultiSensor", "serialNumber": "57", "members": [ "1001" ],
        "place": { "interface": "RS232", "port": "COM9" }, "faults": [
            { "function": "GetParameterString", "parameter": "SA_SensorInformation#S1", "code": -6, "text": "here" },
            { "function": "GetParameterString", "parameter": "SA_SensorInformation", "delay": 3600 } ] })";
    const ToolRunner runner(Benches::of(Benches::laser(1000) + "," + several));
    QProcess process;
    runner.start(process, words("--verbose read MULTI_SENSOR@RS232,port=COM9 --csv values.csv"));
    process.setReadChannel(QProcess::StandardError);
    QByteArray log;
    QTRY_VERIFY_WITH_TIMEOUT((log += process.readAllStandardError()).contains("here"), 10000);
    interrupt(process);
    QVERIFY(!process.waitForFinished(500));
    interrupt(process);
    QVERIFY(process.waitForFinished(10000));
    QCOMPARE(process.exitStatus(), QProcess::CrashExit);
    QVERIFY(!QFile::exists(runner.path(QStringLiteral("values.csv"))));
}

QTEST_GUILESS_MAIN(TestToolInterrupt)
#include "tst_toolinterrupt.moc"
