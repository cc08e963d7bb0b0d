// SPDX-License-Identifier: MIT
#include "benches.h"
#include "interruptible.h"
#ifdef Q_OS_UNIX
#    include "terminal.h"
#endif
#include "toolrunner.h"

#ifdef Q_OS_UNIX

/// A read into a file with its progress on a terminal.
class ReadingProcess : private Terminal, public ProcessOnTerminal
{
public:
    explicit ReadingProcess(ToolRunner &runner)
        : ProcessOnTerminal(static_cast<const Terminal &>(*this), false)
    {
        runner.setEnvironment("TERM", "xterm");
    }
    bool hasRead() { return text().contains(" frames"); }
    /// The text that follows the erased progress line.
    QByteArray summary(const ToolResult &)
    {
        const QByteArray removal = QByteArrayLiteral("\r\x1b[K");
        return text().mid(text().lastIndexOf(removal) + removal.size());
    }
};

#else

/// A read into a file; the growing partial file shows the progress.
class ReadingProcess : public InterruptibleProcess
{
public:
    explicit ReadingProcess(ToolRunner &runner)
        : m_folder(runner.path(QString()))
    {
    }
    bool hasRead() const
    {
        const QFileInfoList files = m_folder.entryInfoList({"values.csv*"}, QDir::Files);
        return !files.isEmpty() && files.first().size() > 0;
    }
    static QByteArray summary(const ToolResult &result) { return result.err; }

private:
    QDir m_folder;
};

#endif

class TestToolInterrupt : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void endsASearch_data();
    void endsASearch();
#ifdef Q_OS_UNIX
    void hangUpsDuringItsEndChangeNothing();
#endif
    void leavesAWholeFile_data();
    void leavesAWholeFile();
    void aKilledReadLeavesWhatItHasWritten();
    void nohupKeepsItRunning();
    void endsAReadToStdoutWithAWholeLine();
    void theSecondOneEndsACallThatDoesNotReturn();
    void theSecondOneLeavesWhatIsWritten();

private:
    enum Way { CtrlC, Terminate, HangUp, Quit };
    /// Ctrl-C, and on Unix the signals that ask a process to end.
    static void addWays(const char *line = "")
    {
        const auto add = [line](const char *name, Way way) {
            QTest::addRow("%s%s", line, name) << QString::fromLatin1(line) << static_cast<int>(way);
        };
        QTest::addColumn<QString>("line");
        QTest::addColumn<int>("way");
        add("Ctrl-C", CtrlC);
#ifdef Q_OS_UNIX
        add("SIGTERM", Terminate);
        add("SIGHUP, twice", HangUp);
        add("SIGQUIT", Quit);
#endif
    }
    static void end(InterruptibleProcess &process, int way)
    {
        if (way == CtrlC)
            process.interrupt();
        else if (way == Terminate)
            process.terminate();
#ifdef Q_OS_UNIX
        QVERIFY(process.processId() > 0);
        for (int i = 0; way == HangUp && i < 2; ++i)
            QCOMPARE(::kill(static_cast<pid_t>(process.processId()), SIGHUP), 0);
        if (way == Quit)
            QCOMPARE(::kill(static_cast<pid_t>(process.processId()), SIGQUIT), 0);
#endif
    }
};

void TestToolInterrupt::endsASearch_data()
{
    addWays("find --type TX270");
    QTest::newRow("info by serial number") << "info --type TX270 --serial 7" << static_cast<int>(CtrlC);
    QTest::newRow("read by serial number") << "read --type TX270 --serial 7" << static_cast<int>(CtrlC);
}

void TestToolInterrupt::endsASearch()
{
    QFETCH(QString, line);
    QFETCH(int, way);
    const ToolRunner runner(Benches::of(Benches::laser(100), R"("RS232": 0.01, "XA200_ETH": 3600)"));
    InterruptibleProcess process;
    runner.start(process, QStringList{"--verbose"} + line.split(QLatin1Char(' ')));
    process.setReadChannel(QProcess::StandardError);
    QByteArray log;
    QTRY_VERIFY((log += process.readAllStandardError()).contains("searching: "));
    end(process, way);
    const ToolResult result = ToolRunner::finish(process);
    QCOMPARE(result.code, 130);
    QVERIFY2(result.err.contains("sondixqt: interrupted"), result.err.constData());
}

#ifdef Q_OS_UNIX
void TestToolInterrupt::hangUpsDuringItsEndChangeNothing()
{
    const ToolRunner runner(Benches::of(Benches::laser(100), R"("RS232": 0.01, "XA200_ETH": 3600)"));
    for (int i = 0; i < 20; ++i) {
        InterruptibleProcess process;
        runner.start(process, {"--verbose", "find", "--type", "TX270"});
        process.setReadChannel(QProcess::StandardError);
        QByteArray log;
        QTRY_VERIFY((log += process.readAllStandardError()).contains("searching: "));
        QElapsedTimer timer;
        timer.start();
        while (!process.waitForFinished(1) && timer.elapsed() < 60000)
            ::kill(static_cast<pid_t>(process.processId()), SIGHUP);
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 130);
    }
}
#endif

void TestToolInterrupt::leavesAWholeFile_data()
{
    addWays();
}

void TestToolInterrupt::leavesAWholeFile()
{
    QFETCH(int, way);
    ToolRunner runner(Benches::of(Benches::laser(10000)));
    ReadingProcess process(runner);
    runner.start(process, words("read TX270@RS232,port=COM3 --csv values.csv"));
    QTRY_VERIFY(process.hasRead());
    QVERIFY(!QFile::exists(runner.path("values.csv")));
    end(process, way);
    const ToolResult result = ToolRunner::finish(process);
    QCOMPARE(result.code, 130);
    QCOMPARE(runner.files(), (QStringList{"bench.json", "values.csv"}));
    const QByteArray content = runner.contentOf("values.csv");
    QVERIFY(content.endsWith('\n'));
    const QList<QByteArray> lines = linesOf(content);
    const QByteArray summary = QByteArray::number(lines.size() - 1) + " frames of 1 value read in ";
    QVERIFY2(process.summary(result).startsWith(summary), process.summary(result).constData());
    for (const QByteArray &line : lines)
        QCOMPARE(line.count(','), 1);
}

void TestToolInterrupt::aKilledReadLeavesWhatItHasWritten()
{
    const ToolRunner runner(Benches::of(Benches::laser(10000)));
    QProcess process;
    runner.start(process, words("read TX270@RS232,port=COM3 --csv values.csv"));
    QTRY_VERIFY(linesOf(runner.contentOf("values.csv.partial")).size() > 10000);
    const QByteArray before = runner.contentOf("values.csv.partial");
    process.kill();
    QVERIFY(process.waitForFinished(10000));
    const QByteArray content = runner.contentOf("values.csv.partial");
    QVERIFY(content.startsWith(before));
    QVERIFY(content.endsWith('\n'));
}

void TestToolInterrupt::nohupKeepsItRunning()
{
#ifdef Q_OS_UNIX
    class ProcessUnderNohup : public QProcess
    {
    protected:
        void setupChildProcess() override { std::signal(SIGHUP, SIG_IGN); }
    };
    const ToolRunner runner(Benches::of(Benches::laser(1000)));
    ProcessUnderNohup process;
    runner.start(process, words("read TX270@RS232,port=COM3 -n 1000 --csv values.csv"));
    QTRY_VERIFY(runner.contentOf("values.csv.partial").size() > 1000);
    QCOMPARE(::kill(static_cast<pid_t>(process.processId()), SIGHUP), 0);
    const ToolResult result = ToolRunner::finish(process);
    QVERIFY2(result.code == 0, result.err.constData());
    QCOMPARE(linesOf(runner.contentOf("values.csv")).size(), 1001);
#else
    QSKIP("there is no SIGHUP here");
#endif
}

void TestToolInterrupt::endsAReadToStdoutWithAWholeLine()
{
    const ToolRunner runner(Benches::of(Benches::laser(1000)));
    InterruptibleProcess process;
    runner.start(process, words("read TX270@RS232,port=COM3 --json"));
    QTRY_VERIFY(process.bytesAvailable() > 1000);
    process.interrupt();
    const ToolResult result = ToolRunner::finish(process);
    QCOMPARE(result.code, 130);
    QVERIFY(result.out.endsWith("}\n"));
    QVERIFY(!jsonLines(result.out).isEmpty());
}

void TestToolInterrupt::theSecondOneEndsACallThatDoesNotReturn()
{
    // The first read fails and is logged; the second one, within the same call, hangs.
    const QByteArray several = R"({ "model": "MultiSensor", "serialNumber": "57", "members": [ "1001" ],
        "place": { "interface": "RS232", "port": "COM9" }, "faults": [
            { "function": "GetParameterString", "parameter": "SA_SensorInformation#S1", "code": -6, "text": "here" },
            { "function": "GetParameterString", "parameter": "SA_SensorInformation", "delay": 3600 } ] })";
    const ToolRunner runner(Benches::of(Benches::laser(1000) + "," + several));
    InterruptibleProcess process;
    runner.start(process, words("--verbose read MULTI_SENSOR@RS232,port=COM9 --csv values.csv"));
    process.setReadChannel(QProcess::StandardError);
    QByteArray log;
    QTRY_VERIFY((log += process.readAllStandardError()).contains("here"));
    process.interrupt();
    QVERIFY(!process.waitForFinished(500));
    process.interrupt();
    QVERIFY(process.waitForFinished(10000));
    QCOMPARE(process.exitStatus(), QProcess::CrashExit);
    QVERIFY(!QFile::exists(runner.path("values.csv")));
}

void TestToolInterrupt::theSecondOneLeavesWhatIsWritten()
{
    const ToolRunner runner(Benches::of(
        Benches::laser(10000, R"("faults": [ { "function": "TransferDataTS", "at": 1, "delay": 3600 } ])")));
    InterruptibleProcess process;
    runner.start(process, words("read TX270@RS232,port=COM3 --csv values.csv"));
    // The sensor measures continuously: if the file no longer grows, the call hangs.
    QByteArray before;
    QElapsedTimer sinceGrowth;
    const auto isHanging = [&] {
        const QByteArray now = runner.contentOf("values.csv.partial");
        if (now.size() > before.size() || !sinceGrowth.isValid())
            sinceGrowth.start();
        before = now;
        return before.count('\n') > 1 && sinceGrowth.elapsed() > 700;
    };
    QTRY_VERIFY(isHanging());
    process.interrupt();
    QVERIFY(!process.waitForFinished(500));
    process.interrupt();
    QVERIFY(process.waitForFinished(10000));
    QCOMPARE(process.exitStatus(), QProcess::CrashExit);
    QVERIFY(!QFile::exists(runner.path("values.csv")));
    QCOMPARE(runner.contentOf("values.csv.partial"), before);
    QVERIFY(before.endsWith('\n'));
}

QTEST_GUILESS_MAIN(TestToolInterrupt)
#include "tst_toolinterrupt.moc"
