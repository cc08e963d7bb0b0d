// SPDX-License-Identifier: MIT
#include "benches.h"
#include "toolrunner.h"

#include <QSet>

namespace {

/// The calls of a record without what is different in every run.
QList<QByteArray> comparable(const QByteArray &record)
{
    static const QRegularExpression different(
        QStringLiteral(R"re("process":\d+,|"time":\d+,"took":\d+,|"StorageTime[^,}]*)re"));
    QList<QByteArray> calls;
    for (const QByteArray &line : linesOf(record)) {
        if (!line.startsWith("{\"format\""))
            calls += QString::fromUtf8(line).remove(different).toUtf8();
    }
    return calls;
}

constexpr int readFrames = 3000;

/// How often a reader still looks for values between the last one that is wanted and its end depends on the machine.
QList<QByteArray> withoutLastPolls(const QList<QByteArray> &calls)
{
    static const QRegularExpression readValues(QStringLiteral(R"re("answers":\{"read":(\d+))re"));
    static const QRegularExpression number(QStringLiteral(R"re("call":\d+,)re"));
    QList<QByteArray> rest;
    qint64 values = 0;
    for (const QByteArray &call : calls) {
        const bool isTransfer = call.contains("\"function\":\"TransferData");
        const bool hasAll = values >= readFrames; // of one value
        if (hasAll && (isTransfer || call.contains("\"function\":\"DataAvail\"")))
            continue;
        if (isTransfer)
            values += readValues.match(QString::fromUtf8(call)).captured(1).toInt();
        rest += hasAll ? QString::fromUtf8(call).remove(number).toUtf8() : call;
    }
    return rest;
}

const QByteArray replayedBench = Benches::of(Benches::laser(2000, R"("faults": [
    { "command": "Get_Broken", "from": 2, "times": 1, "code": -14, "text": "it broke: \u20ac" } ],
    "answers": { "Get_Broken": { "SA_Whole": 7 } })") +
                                             QByteArray(", ") + Benches::controller);

/// Replays without any bench.
ToolRunner &replaying(ToolRunner &runner)
{
    runner.setEnvironment("SONDIX_BENCH", runner.path("none.json"));
    runner.setEnvironment("QT_QPA_PLATFORM", "offscreen");
    return runner;
}

} // namespace

class TestToolBenchReplay : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aReplayedProgramMakesTheSameCallsAndGetsTheSameAnswers_data()
    {
        QTest::addColumn<QStringList>("program");
        const QString tool = QStringLiteral(SONDIXQT_TOOL);
        QTest::newRow("find") << QStringList{tool, "find"};
        QTest::newRow("info") << QStringList{tool, "mode", Benches::controllerAddress};
        QTest::newRow("read") << QStringList{tool, "read", Benches::laserAddress, "-n",
                                             QString::number(readFrames)};
        QTest::newRow("set") << QStringList{tool, "set", Benches::laserAddress, "Set_Samplerate", "SP_Measrate=4"};
        QTest::newRow("failure") << QStringList{tool, "get", Benches::laserAddress, "Get_Broken"};
        QTest::newRow("unknown") << QStringList{tool, "get", Benches::laserAddress, "Get_Nothing"};
        QTest::newRow("cannot open") << QStringList{tool, "get", "TX270@RS232,port=COM9", "Get_Info"};
        QTest::newRow("video") << QStringList{tool, "video", Benches::laserAddress, "--json"};
        QTest::newRow("firststeps") << QStringList{FIRSTSTEPS};
    }
    void aReplayedProgramMakesTheSameCallsAndGetsTheSameAnswers()
    {
        QFETCH(QStringList, program);
        ToolRunner runner(replayedBench);
        const ToolResult recorded = runner.run(QStringList{"bench", "record", "-o", "s.jsonl", "--"} + program);
        const QList<QByteArray> calls = withoutLastPolls(comparable(runner.contentOf("s.jsonl")));
        QVERIFY2(calls.size() > 5, recorded.err.constData());

        const ToolResult replayed =
            replaying(runner).run(QStringList{"bench", "replay", "s.jsonl", "-o", "again.jsonl", "--"} + program);
        QCOMPARE(withoutLastPolls(comparable(runner.contentOf("again.jsonl"))), calls);
        QCOMPARE(replayed.code, recorded.code);
        QCOMPARE(replayed.out, recorded.out);
        QVERIFY2(!replayed.err.contains("deviates"), replayed.err.constData());
    }

    void aProgramThatRunsForEverIsReplayedToTheEndOfItsRecord_data()
    {
        QTest::addColumn<QString>("program");
        QTest::newRow("streaming") << QStringLiteral(STREAMING_EXAMPLE);
        QTest::newRow("livevalue") << QStringLiteral(LIVEVALUE_EXAMPLE);
    }
    void aProgramThatRunsForEverIsReplayedToTheEndOfItsRecord()
    {
#ifdef Q_OS_WIN
        QSKIP("there is no SIGTERM");
#endif
        QFETCH(QString, program);
        ToolRunner runner(replayedBench);
        runner.setEnvironment("QT_QPA_PLATFORM", "offscreen");
        QProcess first;
        runner.start(first, {"bench", "record", "-o", "s.jsonl", "--", program, Benches::laserAddress});
        QTRY_VERIFY_WITH_TIMEOUT(runner.contentOf("s.jsonl.partial").count("\"timestamp\"") > 40, 30000);
        first.terminate();
        QCOMPARE(ToolRunner::finish(first).code, 128 + 15);
        const QList<QByteArray> calls = comparable(runner.contentOf("s.jsonl"));

        QProcess second;
        replaying(runner).start(
            second, {"bench", "replay", "s.jsonl", "-o", "again.jsonl", "--", program, Benches::laserAddress});
        QTRY_VERIFY_WITH_TIMEOUT(runner.contentOf("again.jsonl").count('\n') > calls.size(), 30000);
        second.terminate();
        const ToolResult replayed = ToolRunner::finish(second);
        QCOMPARE(comparable(runner.contentOf("again.jsonl")).mid(0, calls.size()), calls);
        QVERIFY2(!replayed.err.contains("deviates"), replayed.err.constData());
    }

    void aCutRecordIsReplayedUpToItsEnd()
    {
        ToolRunner runner(replayedBench);
        const QStringList program{SONDIXQT_TOOL, "get", Benches::laserAddress, "Get_Info"};
        runner.run(QStringList{"bench", "record", "-o", "s.jsonl", "--"} + program);
        const QByteArray whole = runner.contentOf("s.jsonl");
        runner.writeFile("s.jsonl", whole.left(whole.indexOf("OpenSensor\"")));
        const ToolResult result = replaying(runner).run(QStringList{"bench", "replay", "s.jsonl", "--"} + program);
        QCOMPARE(result.code, 4);
        QVERIFY2(result.err.contains("s.jsonl is cut off"), result.err.constData());
        QVERIFY2(result.err.contains("The record has no further call OpenSensor"), result.err.constData());
    }

    void aDeviationIsTold()
    {
        ToolRunner runner(replayedBench);
        runner.run(
            {"bench", "record", "-o", "s.jsonl", "--", SONDIXQT_TOOL, "get", Benches::laserAddress, "Get_Info"});
        const ToolResult result = replaying(runner).run(
            {"bench", "replay", "s.jsonl", "--", SONDIXQT_TOOL, "get", Benches::laserAddress, "Get_Temperature"});
        QVERIFY(result.code != 0);
        QVERIFY2(result.err.contains("deviates from its record") && result.err.contains("Get_Temperature"),
                 result.err.constData());
    }

    void aReplayIsNoSimulator()
    {
        ToolRunner runner(replayedBench);
        runner.run(
            {"bench", "record", "-o", "s.jsonl", "--", SONDIXQT_TOOL, "get", Benches::laserAddress, "Get_Info"});
        const ToolResult result =
            replaying(runner).run({"bench", "replay", "s.jsonl", "--", SONDIXQT_TOOL, "bench", "show"});
        QCOMPARE(result.code, 1);
        QVERIFY2(result.err.contains("the sensor-access library is not the bench simulator"),
                 result.err.constData());
    }

    void wrongFilesAreRefused_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QByteArray>("reason");
        const QByteArray head =
            R"({"format":"sondix calls","version":1,"process":7,"date":"","platform":"","program":"p","library":""})"
            "\n";
        const QByteArray call =
            R"({"process":7,"call":1,"thread":1,"time":0,"took":0,"function":"OpenSensor","handle":1,"result":0})"
            "\n";
        const auto changed = [&](const char *from, const char *to) {
            return head + call + QByteArray(call).replace(from, to);
        };
        QTest::newRow("empty") << QByteArray() << QByteArray("s.jsonl:1: this is no record: it is empty");
        QTest::newRow("text") << QByteArray("hello\n") << QByteArray("s.jsonl:1: this is no record");
        QTest::newRow("no head") << call
                                 << QByteArray("s.jsonl:1: this is no record: it does not begin with a head");
        QTest::newRow("other JSON") << QByteArray("{\"format\":\"x\"}\n")
                                    << QByteArray("s.jsonl:1: this is no record");
        QTest::newRow("version") << QByteArray(head).replace("\"version\":1", "\"version\":2")
                                 << QByteArray("s.jsonl:1: a record of this version");
        QTest::newRow("cut head") << head.left(20) << QByteArray("ends within its first line");
        QTest::newRow("no JSON") << head + call + "{]\n" << QByteArray("s.jsonl:3: the line is no JSON object");
        QTest::newRow("process") << changed("\"process\":7", "\"process\":8")
                                 << QByteArray("s.jsonl:3: there is no head for process 8");
        QTest::newRow("function") << changed("OpenSensor", "Open")
                                  << QByteArray("s.jsonl:3: there is no function \"Open\"");
        QTest::newRow("result") << changed("\"result\":0", "\"result\":\"x\"")
                                << QByteArray("s.jsonl:3: \"result\" must be a whole number");
        QTest::newRow("handle") << changed("\"handle\":1", "\"handle\":-1")
                                << QByteArray("s.jsonl:3: \"handle\" must be a whole number");
        QTest::newRow("value") << changed(R"("OpenSensor","handle":1)",
                                          R"("DataAvail","handle":1,"answers":{"available":1.5})")
                               << QByteArray("s.jsonl:3: \"available\" has a wrong value");
        QTest::newRow("base64") << changed(R"("OpenSensor","handle":1)",
                                           R"("GetError","handle":1,"answers":{"text":{"base64":"A"}})")
                                << QByteArray("s.jsonl:3: \"text\" has a wrong value");
    }
    void wrongFilesAreRefused()
    {
        QFETCH(QByteArray, content);
        QFETCH(QByteArray, reason);
        const ToolRunner runner(replayedBench);
        runner.writeFile("s.jsonl", content);
        const ToolResult result = runner.run({"bench", "replay", "s.jsonl", "--", SONDIXQT_TOOL, "find"});
        QCOMPARE(result.code, 1);
        QVERIFY2(result.err.contains(reason), result.err.constData());
    }
};

QTEST_GUILESS_MAIN(TestToolBenchReplay)
#include "tst_toolbenchreplay.moc"
