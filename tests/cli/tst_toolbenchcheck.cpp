// SPDX-License-Identifier: MIT
#include "interruptible.h"
#include "toolrunner.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QXmlStreamReader>

#ifdef Q_OS_UNIX
#    include <csignal>
#endif

namespace {

const QString checkedTool = QStringLiteral(SONDIXQT_TOOL);
const QString checkedAddress("TX270@RS232,port=COM3");
const QStringList setRate = {checkedTool, "set", checkedAddress, "Set_Samplerate", "SP_Measrate=4"};

/// A bench with a laser that expects \a expected; \a more contains further JSON members of the laser.
QByteArray benchExpecting(const QByteArray &expected, const QByteArray &more = {})
{
    return R"({ "sensors": [
        { "model": "TX270", "serialNumber": "1001", "rate": 1000, "place": { "interface": "RS232", "port": "COM3" })" +
           more + R"(,
          "expect": )" +
           expected + R"( } ] })";
}

/// A JUnit report.
struct Junit
{
    struct Case
    {
        QString name;
        QString classname;
        QString failure; ///< its message
        QString text;    ///< of the failure
        bool isSkipped = false;
        int line = 0;
    };
    int tests = -1;
    int failures = -1;
    int skipped = -1;
    QList<Case> cases;
    QString error;
};

Junit parsed(const QByteArray &text)
{
    Junit report;
    QXmlStreamReader xml(text);
    while (xml.readNextStartElement()) {
        const QXmlStreamAttributes attributes = xml.attributes();
        if (xml.name() == QLatin1String("testsuite")) {
            report.tests = attributes.value("tests").toInt();
            report.failures = attributes.value("failures").toInt();
            report.skipped = attributes.value("skipped").toInt();
        } else if (xml.name() == QLatin1String("testcase")) {
            Junit::Case found;
            found.name = attributes.value("name").toString();
            found.classname = attributes.value("classname").toString();
            found.line = attributes.value("line").toInt();
            while (xml.readNextStartElement()) {
                found.isSkipped = xml.name() == QLatin1String("skipped");
                if (!found.isSkipped)
                    found.failure = xml.attributes().value("message").toString();
                found.text = xml.readElementText();
            }
            report.cases += found;
        }
    }
    // The loop ends behind each element without children.
    while (!xml.atEnd())
        xml.readNext();
    report.error = xml.hasError() ? xml.errorString() : QString();
    return report;
}

} // namespace

/// A program that is run on a bench, and what the bench expects of it.
class TestToolBenchCheck : public QObject
{
    Q_OBJECT

private:
    const QTemporaryDir m_sessions;

    static ToolResult check(const ToolRunner &runner, const QByteArray &bench, const QStringList &program,
                            const QStringList &options = {})
    {
        runner.writeFile("press.json", bench);
        return runner.run(QStringList{"bench", "check", "press.json"} + options + QStringList{"--"} + program);
    }

private Q_SLOTS:
    void initTestCase() { qputenv("SONDIX_BENCH_SESSIONS", m_sessions.path().toLocal8Bit()); }
    void cleanup()
    {
        const ToolResult list = ToolRunner().run({"bench", "list"});
        QVERIFY2(list.code == 3, list.out.constData()); // no session stays
    }

    void everythingIsMet();
    void somethingIsNotMet();
    void theCodeOfTheProgramComesFirst();
    void onlyTheExitCode();
    void addsAllProcesses();
    void aFaultThatTheProgramMustBear();
    void writesJunit();
    void junitIsValidWhateverTheNames();
    void aProgramThatCannotBeStarted();
    void aProgramThatDoesNotUseTheBench();
    void controllingTheBenchIsNoUse();
    void aProgramThatHangs_data();
    void aProgramThatHangs();
    void aProgramThatIsKilled();
    void anInterrupt();
    void checksAtTheSameTime();
    void refusesWrongUse_data();
    void refusesWrongUse();
};

void TestToolBenchCheck::everythingIsMet()
{
    const ToolRunner runner;
    const ToolResult result = check(runner, benchExpecting(R"([ { "command": "Set_Samplerate", "exactly": 1 },
                                          { "function": "OpenSensor", "atLeast": 1, "name": "opens it" },
                                          { "setting": "SA_Measrate", "value": 4 } ])"),
                                    setRate);
    QCOMPARE(result.code, 0);
    const QList<QByteArray> lines = linesOf(result.out);
    QCOMPARE(lines.size(), 4);
    QVERIFY2(lines[0].startsWith("ok      exit code of sondixqt"), lines[0].constData());
    QVERIFY2(lines[0].endsWith(": expected 0, found 0"), lines[0].constData());
    QCOMPARE(
        lines[1],
        QByteArray(R"(ok      TX270 1001: calls of SensorCommand "Set_Samplerate": expected exactly 1, found 1)"));
    QVERIFY2(lines[2].startsWith("ok      TX270 1001: opens it: expected at least 1, found "),
             lines[2].constData());
    QCOMPARE(lines[3], QByteArray("ok      TX270 1001: SA_Measrate: expected 4.0, found 4.0"));
    QCOMPARE(result.err, QByteArray("4 of 4 met\n"));
    QCOMPARE(runner.files(), QStringList("press.json"));
}

void TestToolBenchCheck::somethingIsNotMet()
{
    const ToolRunner runner;
    const ToolResult result = check(runner, benchExpecting(R"([
            { "command": "Set_Samplerate", "exactly": 2 },
            { "setting": "SA_Measrate", "value": 2.5 } ])"),
                                    setRate);
    QCOMPARE(result.code, 8);
    const QList<QByteArray> lines = linesOf(result.out);
    QCOMPARE(lines.size(), 3);
    QCOMPARE(
        lines[1],
        QByteArray(
            R"(FAILED  press.json:4: TX270 1001: calls of SensorCommand "Set_Samplerate": expected exactly 2, found 1)"));
    QCOMPARE(lines[2], QByteArray("FAILED  press.json:5: TX270 1001: SA_Measrate: expected 2.5, found 4.0"));
    QCOMPARE(result.err, QByteArray("1 of 3 met\n"));
}

void TestToolBenchCheck::theCodeOfTheProgramComesFirst()
{
    const ToolRunner runner;
    const ToolResult result = check(runner, benchExpecting(R"([ { "command": "Get_Info", "atLeast": 1000 } ])"),
                                    {checkedTool, "get", checkedAddress, "Get_Nothing"});
    QCOMPARE(result.code, 6);
    QVERIFY2(result.out.contains("expected 0, found 6\n"), result.out.constData());
    QVERIFY2(result.out.contains("FAILED  press.json:3: "), result.out.constData());
    QVERIFY2(result.err.endsWith("0 of 2 met\n"), result.err.constData());
#ifdef Q_OS_UNIX
    // A program that was interrupted itself is reported like any other.
    const ToolResult interrupted =
        check(runner, benchExpecting(R"([ { "command": "Get_Info", "atLeast": 1 } ])"), {"sh", "-c", "exit 130"});
    QCOMPARE(interrupted.code, 130);
    QVERIFY2(interrupted.out.contains("expected 0, found 130\n"), interrupted.out.constData());
#endif
}

void TestToolBenchCheck::onlyTheExitCode()
{
    const ToolRunner runner;
    const QByteArray told = R"(1 of 1 met; press.json has no "expect": only the exit code was checked)"
                            "\n";
    const ToolResult result = check(runner, R"({ "sensors": [] })", {checkedTool, "bench", "show"});
    QCOMPARE(result.code, 0);
    QVERIFY2(result.err.endsWith(told), result.err.constData());
    QCOMPARE(check(runner, R"({ "sensors": [] })", {checkedTool, "get", checkedAddress, "Get_Info"}).code, 4);
}

void TestToolBenchCheck::addsAllProcesses()
{
#ifdef Q_OS_WIN
    QSKIP("there is no shell");
#endif
    // The third process is killed while it reads.
    const ToolRunner runner;
    const QString set = setRate.join(' ');
    const QString script = QStringLiteral("%1 >/dev/null && %1 >/dev/null; %2 read %3 -n 100 >/dev/null; "
                                          "%2 read %3 --csv - >values & until [ $(wc -l <values) -gt 200 ]; "
                                          "do sleep 0.02; done; kill -9 $!; wait; exit 0")
                               .arg(set, checkedTool, checkedAddress);
    const ToolResult result = check(runner, benchExpecting(R"([ { "command": "Set_Samplerate", "exactly": 2 },
                                                                { "frames": "fetched", "atLeast": 300 },
                                                                { "frames": "lost", "exactly": 0 },
                                                                { "setting": "SA_Measrate", "value": 4 } ])"),
                                    {"sh", "-c", script});
    QVERIFY2(result.code == 0, (result.out + result.err).constData());
}

void TestToolBenchCheck::aFaultThatTheProgramMustBear()
{
    const QByteArray fault = R"(, "faults": [ { "command": "Set_Samplerate", "code": -26, "times": 1 } ])";
    const QByteArray expected = R"([ { "command": "Set_Samplerate", "exactly": 1 } ])";
    const ToolRunner runner;
    const ToolResult result = check(runner, benchExpecting(expected, fault), setRate);
    QVERIFY(result.code != 0 && result.code != 8);
    QVERIFY2(result.out.contains("ok      TX270 1001: calls of"), result.out.constData());
}

void TestToolBenchCheck::writesJunit()
{
    const ToolRunner runner;
    const ToolResult result = check(runner, benchExpecting(R"([
            { "command": "Set_Samplerate", "exactly": 1 },
            { "command": "Set_Samplerate", "exactly": 2 } ])"),
                                    setRate, {"--junit", "report.xml"});
    QCOMPARE(result.code, 8);
    QCOMPARE(runner.files(), QStringList({"press.json", "report.xml"}));
    const Junit report = parsed(runner.contentOf("report.xml"));
    QCOMPARE(report.error, QString());
    QCOMPARE(report.tests, 3);
    QCOMPARE(report.failures, 1);
    QCOMPARE(report.skipped, 0);
    QCOMPARE(report.cases.size(), 3);
    QVERIFY(report.cases[0].name.startsWith("exit code of sondixqt"));
    QCOMPARE(report.cases[0].classname, QString("press"));
    QCOMPARE(report.cases[0].line, 0);
    QVERIFY(report.cases[0].failure.isEmpty() && report.cases[1].failure.isEmpty());
    const QString name = R"(TX270 1001: calls of SensorCommand "Set_Samplerate")";
    QCOMPARE(report.cases[1].name, name);
    QCOMPARE(report.cases[1].line, 4);
    QCOMPARE(report.cases[2].name, name + " (line 5)"); // no two cases have the same name
    QCOMPARE(report.cases[2].line, 5);
    QCOMPARE(report.cases[2].failure, QString("expected exactly 2, found 1"));
    QCOMPARE(report.cases[2].text, "press.json:5: " + name + ": expected exactly 2, found 1");
}

void TestToolBenchCheck::junitIsValidWhateverTheNames()
{
    const ToolRunner runner;
    const QByteArray bench = R"({ "sensors": [
        { "model": "TX270", "serialNumber": "<1&'ž>", "place": { "interface": "RS232", "port": "COM3" },
          "info": { "SA_Note": "]]>" },
          "settings": { "Text": { "SA_Text": "a" } },
          "expect": [ { "function": "OpenSensor", "exactly": 0, "name": "<open> & 'close' ]]>" },
                      { "setting": "SA_Text", "value": "b" } ] } ] })";
    // A setting with a character that no XML file can have.
    const ToolResult result =
        check(runner, bench, {checkedTool, "set", checkedAddress, "Set_Text", QString("SP_Text=x") + QChar(1)},
              {"--junit", "report.xml"});
    QCOMPARE(result.code, 8);
    const Junit report = parsed(runner.contentOf("report.xml"));
    QCOMPARE(report.error, QString());
    QCOMPARE(report.cases.size(), 3);
    QCOMPARE(report.cases[1].name, QString("TX270 <1&'ž>: <open> & 'close' ]]>"));
    QCOMPARE(report.cases[2].failure, QString("expected b, found x") + QChar(QChar::ReplacementCharacter));
}

void TestToolBenchCheck::aProgramThatCannotBeStarted()
{
    const ToolRunner runner;
    const ToolResult result = check(runner, benchExpecting(R"([ { "frames": "lost", "exactly": 0 } ])"),
                                    {runner.path("missing"), "-x"}, {"--junit", "report.xml"});
    QCOMPARE(result.code, 1);
    QVERIFY2(result.out.startsWith("FAILED  exit code of missing: expected 0, found none: it cannot be started ("),
             result.out.constData());
    QVERIFY2(result.out.contains("\nskipped TX270 1001: frames lost: "), result.out.constData());
    const Junit report = parsed(runner.contentOf("report.xml"));
    QCOMPARE(report.failures, 1);
    QCOMPARE(report.skipped, 1);
    QVERIFY(report.cases.at(0).failure.contains("cannot be started"));
    QVERIFY(report.cases.at(1).isSkipped);
}

void TestToolBenchCheck::controllingTheBenchIsNoUse()
{
    const ToolRunner runner;
    const ToolResult result = check(runner, benchExpecting(R"([ { "frames": "lost", "exactly": 0 } ])"),
                                    {checkedTool, "bench", "unplug", "1001"});
    QCOMPARE(result.code, 8);
    QVERIFY2(result.err.contains("did not use the bench"), result.err.constData());
}

void TestToolBenchCheck::aProgramThatDoesNotUseTheBench()
{
    // Nothing is lost where nothing is read: the check must not pass.
    const ToolRunner runner;
    const ToolResult result =
        check(runner, benchExpecting(R"([ { "frames": "lost", "exactly": 0 } ])"), {checkedTool, "models"});
    QCOMPARE(result.code, 8);
    QVERIFY2(result.err.contains("did not use the bench"), result.err.constData());
    QVERIFY2(result.out.contains(
                 "FAILED  press.json:3: TX270 1001: frames lost: expected exactly 0, found nothing: the "
                 "bench was not used\n"),
             result.out.constData());
}

void TestToolBenchCheck::aProgramThatHangs_data()
{
    QTest::addColumn<QByteArray>("more");
    QTest::addColumn<QStringList>("program");
    QTest::newRow("in its own work") << QByteArray()
                                     << QStringList{checkedTool, "read", checkedAddress, "--duration", "600"};
    QTest::newRow("in a call") << QByteArray(R"(, "faults": [ { "command": "Get_Info", "hang": true } ])")
                               << QStringList{checkedTool, "get", checkedAddress, "Get_Info"};
#ifdef Q_OS_UNIX
    QTest::newRow("whatever it is asked")
        << QByteArray() << QStringList{"sh", "-c", "trap '' TERM; while :; do sleep 0.1; done"};
#endif
}

void TestToolBenchCheck::aProgramThatHangs()
{
    QFETCH(QByteArray, more);
    QFETCH(QStringList, program);
    const ToolRunner runner;
    QElapsedTimer time;
    time.start();
    const ToolResult result =
        check(runner, benchExpecting(R"([ { "function": "CloseSensor", "exactly": 0 } ])", more), program,
              {"--timeout", "0.3", "--junit", "report.xml"});
    QCOMPARE(result.code, 5);
    QVERIFY(time.elapsed() >= 300 && time.elapsed() < 30000);
    QVERIFY2(result.out.contains("expected 0, found none: it was still running after 0.3 s\n"),
             result.out.constData());
    QCOMPARE(parsed(runner.contentOf("report.xml")).tests, 2);
}

void TestToolBenchCheck::aProgramThatIsKilled()
{
#ifdef Q_OS_UNIX
    const ToolRunner runner;
    const ToolResult result = check(runner, benchExpecting("[]"), {"sh", "-c", "kill -9 $$"});
    QCOMPARE(result.code, 128 + SIGKILL);
    QVERIFY2(result.out.contains("found none: it was killed by signal 9\n"), result.out.constData());
#else
    QSKIP("there are no signals");
#endif
}

void TestToolBenchCheck::anInterrupt()
{
    const ToolRunner runner;
    runner.writeFile("press.json", benchExpecting("[]"));
    InterruptibleProcess process;
    runner.start(process, {"bench", "check", "press.json", "--junit", "report.xml", "--", checkedTool, "read",
                           checkedAddress, "--csv", "values.csv"});
    // Until the program reads.
    QTRY_VERIFY_WITH_TIMEOUT(runner.contentOf("values.csv.partial").count('\n') > 10, 30000);
    process.interrupt();
    const ToolResult result = ToolRunner::finish(process);
    QCOMPARE(result.code, 130);
    QVERIFY(!result.out.contains("exit code of"));
    QCOMPARE(runner.files(), QStringList({"press.json", "values.csv"})); // the program has ended in order
}

void TestToolBenchCheck::checksAtTheSameTime()
{
    const ToolRunner runner;
    runner.writeFile("press.json", benchExpecting(R"([ { "command": "Set_Samplerate", "exactly": 1 } ])"));
    std::array<QProcess, 4> processes;
    for (QProcess &process : processes)
        runner.start(process, QStringList{"bench", "check", "press.json", "--"} + setRate);
    for (QProcess &process : processes) {
        const ToolResult result = ToolRunner::finish(process);
        QVERIFY2(result.code == 0, (result.out + result.err).constData());
    }
}

void TestToolBenchCheck::refusesWrongUse_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("code");
    QTest::addColumn<QByteArray>("reason");
    QTest::newRow("nothing") << QStringList{} << 2 << QByteArray("FILE is required");
    QTest::newRow("no program") << QStringList{"good.json"} << 2 << QByteArray("PROGRAM");
    QTest::newRow("no time") << QStringList{"good.json", "--timeout", "0", "--", checkedTool} << 2
                             << QByteArray("--timeout");
    QTest::newRow("missing file") << QStringList{"none.json", "--", checkedTool} << 1 << QByteArray("none.json: ");
    QTest::newRow("mistake")
        << QStringList{"bad.json", "--", checkedTool} << 1
        << QByteArray(R"(bad.json:2: there is no kind of frames "told": "frames" must be generated, )");
    QTest::newRow("report") << QStringList{"good.json", "--junit", "none/report.xml", "--", checkedTool} << 1
                            << QByteArray("cannot write");
}

void TestToolBenchCheck::refusesWrongUse()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, code);
    QFETCH(QByteArray, reason);
    const ToolRunner runner;
    runner.writeFile("good.json", R"({ "sensors": [] })");
    runner.writeFile("bad.json", "{ \"sensors\": [], \"expect\": [\n{ \"frames\": \"told\", \"exactly\": 1 } ] }");
    const ToolResult result = runner.run(QStringList{"bench", "check"} + arguments);
    QCOMPARE(result.code, code);
    QVERIFY2(result.err.contains(reason), result.err.constData());
    QCOMPARE(result.out, QByteArray());
    QCOMPARE(runner.files(), QStringList({"bad.json", "good.json"}));
}

QTEST_GUILESS_MAIN(TestToolBenchCheck)
#include "tst_toolbenchcheck.moc"
