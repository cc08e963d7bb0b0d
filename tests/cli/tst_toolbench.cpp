// SPDX-License-Identifier: MIT
#include "benches.h"
#include "toolrunner.h"

#include <QJsonArray>
#include <QJsonDocument>

class TestToolBench : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void showListsTheSensors();
    void showNamesTheMistakeOfABench();
    void schemaPrintsThePublishedOne();
    void aClockThatStepsItselfGivesTheSameValuesInSeconds();
};

void TestToolBench::aClockThatStepsItselfGivesTheSameValuesInSeconds()
{
    const QByteArray bench = R"({ "clock": { "virtual": true, "step": 30 }, "sensors": [ { "model": "TX270",
        "serialNumber": "1001", "rate": 1000, "place": { "interface": "RS232", "port": "COM3" }, "ring": 100000,
        "signals": [ { "name": "Distance", "range": [0, 10], "generator": { "kind": "noise", "sigma": 1 } } ] } ] })";
    const QStringList fiveMinutes{"read", "TX270@RS232,port=COM3", "-n", "300000"};
    const ToolRunner tool(bench);
    const ToolResult first = tool.run(fiveMinutes);
    QCOMPARE(first.code, 0);
    QCOMPARE(linesOf(first.out).size(), 300001);
    QVERIFY(linesOf(first.out).last().startsWith("  300.0"));
    QVERIFY(tool.run(fiveMinutes).out == first.out);
    QCOMPARE(tool.run({"find", "--interface", "RS232"}).code, 0);
    // In a session the clock goes on for the next program.
    ToolRunner session(bench);
    session.setEnvironment("SONDIX_BENCH_SESSIONS", session.path("sessions"));
    QCOMPARE(session.run({"bench", "start", "--name", "steps", session.path("bench.json")}).code, 0);
    session.setEnvironment("SONDIX_BENCH", "session:steps");
    QCOMPARE(session.run(fiveMinutes).code, 0);
    QVERIFY(session.run({"bench", "step", "0"}).out.trimmed().toDouble() >= 300.0);
    QCOMPARE(session.run({"bench", "stop", "steps"}).code, 0);
}

void TestToolBench::showListsTheSensors()
{
    const ToolRunner tool(Benches::of(Benches::laser(1000) + ", " + Benches::controller + R"(, { "model": "TX270",
        "serialNumber": "1003", "answering": false, "place": { "interface": "WinUSB", "device": 0 } })"));
    const ToolResult table = tool.run({"bench", "show"});
    QCOMPARE(table.code, 0);
    const QList<QByteArray> lines = table.out.trimmed().split('\n');
    QCOMPARE(lines.size(), 4);
    QVERIFY2(lines[1].startsWith("1001 ") && lines[1].contains("TX270"), table.out.constData());
    QVERIFY2(lines[2].contains("192.168.0.10"), table.out.constData());
    QVERIFY2(lines[3].endsWith(" unplugged"), table.out.constData());

    const ToolResult json = tool.run({"bench", "show", "--json"});
    QCOMPARE(json.code, 0);
    const QJsonArray sensors = QJsonDocument::fromJson(json.out).array();
    QCOMPARE(sensors.size(), 3);
    QCOMPARE(sensors[1].toObject().value("serialNumber").toString(), QString("2002"));
    QCOMPARE(sensors[2].toObject().value("plugged"), QJsonValue(false));
}

void TestToolBench::schemaPrintsThePublishedOne()
{
    ToolResult result = ToolRunner().run({"bench", "schema"});
    QCOMPARE(result.code, 0);
    QCOMPARE(result.err, QByteArray());
    QFile published(SONDIXQT_BENCH_SCHEMA);
    QVERIFY(published.open(QIODevice::ReadOnly));
    QVERIFY(result.out.replace("\r\n", "\n") == published.readAll());
}

void TestToolBench::showNamesTheMistakeOfABench()
{
    const ToolRunner tool("{\n \"sensors\": [], \"sensor\": 1 }");
    const ToolResult result = tool.run({"bench", "show"});
    QCOMPARE(result.code, 1);
    QVERIFY2(result.err.contains("bench.json:2: "), result.err.constData());
    QCOMPARE(result.out, QByteArray());
}

QTEST_GUILESS_MAIN(TestToolBench)
#include "tst_toolbench.moc"
