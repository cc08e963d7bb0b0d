// SPDX-License-Identifier: MIT
#include "benches.h"
#include "toolrunner.h"

#include <QJsonArray>

#ifdef Q_OS_UNIX
#    include <csignal>
#    include <sys/resource.h>
#endif

namespace {

const QString recordedTool = QStringLiteral(SONDIXQT_TOOL);

/// Two sensors with private texts of every kind.
const QByteArray privateBench =
    R"({ "search": { "TCP/IP": 0.01 }, "sensors": [
        { "model": "TX270", "serialNumber": "7312904", "place": { "interface": "RS232", "port": "COM3" },
          "faults": [ { "command": "Get_Temperature", "code": -14,
                        "text": "Sensor 7312904 at 10.77.1.9 (AB-CD-EF-01-23-45) is cold" } ],
          "answers": { "Get_Temperature": {}, "Get_Net": { "SA_DHCPName": "press-hall-3", "SA_HostName": "anna-pc", "SA_Gateway": "10.77.1.1" } } },
        { "model": "CC480", "serialNumber": "8841556", "macAddress": "AB-CD-EF-01-23-45",
          "place": { "interface": "TCP/IP", "ip": ["10.77.1.9"] } } ] })";

QStringList recording(const QStringList &program, const QStringList &options = {})
{
    return QStringList{"bench", "record", "-o", "s.jsonl"} + options + QStringList{"--"} + program;
}

/// The lines of a record that are calls of \a function.
QList<QJsonObject> callsOf(const QList<QJsonObject> &record, const char *function)
{
    QList<QJsonObject> calls;
    for (const QJsonObject &line : record) {
        if (line["function"].toString() == QLatin1String(function))
            calls += line;
    }
    return calls;
}

} // namespace

class TestToolBenchRecord : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void recordsTheCallsOfAProgram()
    {
        const ToolRunner runner(Benches::of(Benches::laser(1000)));
        const ToolResult result = runner.run(recording({recordedTool, "get", Benches::laserAddress, "Get_Info"}));
        QCOMPARE(result.code, 0);
        QVERIFY(result.out.contains("1001"));
        QCOMPARE(runner.files(), QStringList({"bench.json", "s.jsonl"}));

        const QList<QJsonObject> record = jsonLines(runner.contentOf("s.jsonl"));
        QVERIFY(record.size() > 10);
        QVERIFY2(result.err.contains(QByteArray::number(record.size() - 1) + " calls recorded in s.jsonl"),
                 result.err.constData());
        QCOMPARE(record.first()["format"].toString(), QStringLiteral("sondix calls"));
        QCOMPARE(record.first()["version"].toInt(), 1);
        QVERIFY(record.first()["program"].toString().contains("sondixqt"));
        QVERIFY(record.first()["library"].toString().contains("Sondix"));
        for (int i = 1; i < record.size(); ++i) {
            QCOMPARE(record[i]["call"].toInt(), i);
            QCOMPARE(record[i]["process"], record.first()["process"]);
            QVERIFY(record[i]["time"].toDouble() >= record[i - 1]["time"].toDouble());
        }
        QCOMPARE(record[1]["function"].toString(), QStringLiteral("CreateSensorInstance"));
        QCOMPARE(record[1]["arguments"].toObject(), QJsonObject({{"sensorType", 41}}));
        QCOMPARE(record[1]["result"].toInt(), record[2]["handle"].toInt());
        QCOMPARE(record.last()["function"].toString(), QStringLiteral("ReleaseSensorInstance"));
        const QList<QJsonObject> staged = callsOf(record, "SetParameterString");
        QVERIFY(std::any_of(staged.begin(), staged.end(), [](const QJsonObject &call) {
            return call["arguments"].toObject() == QJsonObject{{"name", "S_Command"}, {"value", "Get_Info"}};
        }));
    }

    void recordsEveryValue()
    {
        const ToolRunner runner(Benches::of(Benches::laser(1000)));
        const ToolResult result = runner.run(
            recording({recordedTool, "read", Benches::laserAddress, "-n", "50", "--json", "--raw", "--scaled"}));
        QCOMPARE(result.code, 0);
        QJsonArray raw;
        QJsonArray scaled;
        for (const QJsonObject &call : callsOf(jsonLines(runner.contentOf("s.jsonl")), "TransferDataTS")) {
            const QJsonObject answers = call["answers"].toObject();
            QCOMPARE(answers["raw"].toArray().size(), answers["read"].toInt());
            QCOMPARE(answers["scaled"].toArray().size(), answers["read"].toInt());
            QVERIFY(answers["read"].toInt() == 0 || answers["timestamp"].toDouble() > 0.0);
            for (const QJsonValue value : answers["raw"].toArray())
                raw.append(value);
            for (const QJsonValue value : answers["scaled"].toArray())
                scaled.append(value);
        }
        QVERIFY(raw.size() >= 50);
        QCOMPARE(scaled.size(), raw.size());
        for (int i = 0; i < raw.size(); ++i) { // every fourth is the error value -3
            QCOMPARE(raw[i].toInt(), i % 4 == 3 ? 100003 : 12500);
            QCOMPARE(scaled[i].toDouble(), i % 4 == 3 ? -1.0e10 - 3.0 : 12.5);
        }
    }

    void recordsFailuresWithTheirTexts()
    {
        const ToolRunner runner(privateBench);
        QCOMPARE(runner.run(recording({recordedTool, "get", Benches::laserAddress, "Get_Temperature"})).code, 6);
        const QList<QJsonObject> errors = callsOf(jsonLines(runner.contentOf("s.jsonl")), "GetError");
        QVERIFY(std::any_of(errors.begin(), errors.end(), [](const QJsonObject &call) {
            return call["result"].toInt() == -14 &&
                   call["answers"].toObject()["text"].toString() ==
                       QLatin1String("Sensor 7312904 at 10.77.1.9 (AB-CD-EF-01-23-45) is cold");
        }));
    }

    void theProgramDoesNotNotice_data()
    {
        QTest::addColumn<QStringList>("command");
        QTest::newRow("get") << QStringList{"get", Benches::laserAddress, "Get_Info"};
        QTest::newRow("mode") << QStringList{"mode", Benches::laserAddress};
        QTest::newRow("find") << QStringList{"find", "--type", "TX270"};
        QTest::newRow("refused") << QStringList{"get", Benches::laserAddress, "Get_Nothing"};
        QTest::newRow("cannot open") << QStringList{"get", "TX270@RS232,port=COM9", "Get_Info"};
        QTest::newRow("usage") << QStringList{"get"};
        QTest::newRow("bench") << QStringList{"bench", "show"};
    }
    void theProgramDoesNotNotice()
    {
        QFETCH(QStringList, command);
        const ToolRunner runner(Benches::of(Benches::laser(1000)));
        const ToolResult alone = runner.run(command);
        const ToolResult recorded = runner.run(recording(QStringList{recordedTool} + command));
        QCOMPARE(recorded.out, alone.out);
        QVERIFY2(recorded.err.startsWith(alone.err), recorded.err.constData());
        if (alone.code != 2) // without a call of the library
            QCOMPARE(recorded.code, alone.code);
    }

    void recordsAllProcesses()
    {
#ifdef Q_OS_WIN
        QSKIP("there is no shell");
#endif
        const ToolRunner runner(Benches::of(Benches::laser(1000)));
        const QString script = recordedTool + " get " + Benches::laserAddress + " Get_Info & " + recordedTool +
                               " models; wait; " + recordedTool + " get " + Benches::laserAddress +
                               " Get_Info; exit 3";
        const ToolResult result = runner.run(recording({"sh", "-c", script}));
        QCOMPARE(result.code, 3);
        const QList<QJsonObject> record = jsonLines(runner.contentOf("s.jsonl"));
        QSet<int> processes;
        for (const QJsonObject &line : record)
            processes += line["process"].toInt();
        QCOMPARE(processes.size(), 3);
        QVERIFY2(result.err.contains("of 3 processes"), result.err.constData());
    }

    void passesTheSignalOn()
    {
#ifdef Q_OS_UNIX
        const ToolRunner runner(Benches::of(Benches::laser(1000)));
        QProcess process;
        runner.start(
            process,
            recording({"sh", "-c", recordedTool + " get " + Benches::laserAddress + " Get_Info; kill -9 $$"}));
        QCOMPARE(ToolRunner::finish(process).code, 128 + SIGKILL);
        QVERIFY(jsonLines(runner.contentOf("s.jsonl")).size() > 10);
#else
        QSKIP("there are no signals");
#endif
    }

    void aKilledProgramLeavesWholeLines()
    {
#ifdef Q_OS_UNIX
        const ToolRunner runner(Benches::of(Benches::laser(5000)));
        const QString script = recordedTool + " read " + Benches::laserAddress + R"( >/dev/null &
            until [ $(wc -c <s.jsonl.partial) -gt 300000 ]; do sleep 0.01; done; kill -9 $!)";
        const ToolResult result = runner.run(recording({"sh", "-c", script}));
        QCOMPARE(result.code, 0);
        QVERIFY(jsonLines(runner.contentOf("s.jsonl")).size() > 10);
#else
        QSKIP("there are no signals");
#endif
    }

    void tellsThatNothingWasRecorded()
    {
        const ToolRunner runner(Benches::of(Benches::laser(1000)));
        const ToolResult result = runner.run(recording({recordedTool, "--nonsense"}));
        QCOMPARE(runner.run(recording({runner.path("missing")})).code, 1);
#ifdef Q_OS_UNIX
        const ToolResult none = runner.run(recording({"true"}));
        QCOMPARE(none.code, 1);
        QVERIFY2(none.err.contains("nothing was recorded: 'true' did not load"), none.err.constData());
        QCOMPARE(runner.run(recording({"sh", "-c", "exit 7"})).code, 7);
#endif
        QVERIFY(!runner.files().contains("s.jsonl.partial"));
    }

    void anotherLibraryCanBeRecorded()
    {
        const ToolRunner runner(Benches::of(Benches::laser(1000)));
        const ToolResult missing = runner.run(
            recording({recordedTool, "get", Benches::laserAddress, "Get_Info"}, {"--library", "missing.so"}));
        QCOMPARE(missing.code, 1);
        QVERIFY2(missing.err.contains("cannot load") && missing.err.contains("missing.so"),
                 missing.err.constData());
        const ToolResult itself = runner.run(
            recording({recordedTool, "get", Benches::laserAddress, "Get_Info"}, {"--library", SONDIX_SIMULATOR}));
        QCOMPARE(itself.code, 0);
        QCOMPARE(jsonLines(runner.contentOf("s.jsonl")).first()["library"].toString(),
                 QDir::toNativeSeparators(QFileInfo(SONDIX_SIMULATOR).absoluteFilePath()));
    }

    void reportsAFullDisk()
    {
#ifdef Q_OS_UNIX
        const ToolRunner runner(Benches::of(Benches::laser(1000)));
        QStringList arguments =
            recording({recordedTool, "get", Benches::laserAddress, "Get_Info", "SA_SerialNumber"});
        arguments[3] = "/dev/full";
        const ToolResult result = runner.run(arguments);
        QCOMPARE(result.code, 0);
        QCOMPARE(result.out, QByteArray("1001\n"));
        QCOMPARE(result.err, QByteArray("sondixqt: the record /dev/full ends here: No space left on device\n"));
#else
        QSKIP("there is no device that is always full");
#endif
    }

    void aFullDiskCutsNoLine()
    {
#ifdef Q_OS_UNIX
        const ToolRunner runner(Benches::of(Benches::laser(1000)));
        class LimitedProgram : public QProcess
        {
        protected:
            void setupChildProcess() override
            {
                const rlimit size{3000, 3000};
                setrlimit(RLIMIT_FSIZE, &size);
                std::signal(SIGXFSZ, SIG_IGN);
            }
        };
        LimitedProgram process;
        runner.start(process, recording({recordedTool, "get", Benches::laserAddress, "Get_Info"}));
        const ToolResult result = ToolRunner::finish(process);
        QCOMPARE(result.code, 0);
        QCOMPARE(result.err.count("ends here: File too large"), 1);
        const QByteArray record = runner.contentOf("s.jsonl");
        QVERIFY(record.size() > 2000 && record.size() <= 3000);
        QVERIFY(jsonLines(record).size() > 10);
#else
        QSKIP("there is no limit on the size of files");
#endif
    }

    void aRedactedRecordHasNoPrivateText()
    {
        const ToolRunner runner(privateBench);
        const QString log = runner.path("customer-log.txt");
        QByteArray all;
        for (const QStringList &command :
             {QStringList{"find", "--type", "CC480"}, QStringList{"info", "CC480@TCP/IP,address=10.77.1.9"},
              QStringList{"get", Benches::laserAddress, "Get_Info"},
              QStringList{"get", Benches::laserAddress, "Get_Net"},
              QStringList{"get", Benches::laserAddress, "Get_Temperature"}}) {
            runner.run(recording(QStringList{recordedTool} + command, {"--redact"}));
            const QByteArray record = runner.contentOf("s.jsonl");
            QVERIFY(jsonLines(record).size() > 5);
            QVERIFY(jsonLines(record).first()["redacted"].toBool());
            all += record;
        }
        for (const char *text :
             {"7312904", "8841556", "10.77.1", "AB-CD-EF", "ab-cd-ef", "press-hall-3", "anna-pc"})
            QVERIFY2(!all.contains(text), text);
        QVERIFY(!all.contains(QDir::homePath().toUtf8()));
        QVERIFY(!all.contains(runner.path(QString()).toUtf8()));
        QVERIFY(all.contains("is cold")); // texts that are not private stay
    }

    void equalTextsHaveEqualSubstitutes()
    {
        const ToolRunner runner(privateBench);
        runner.run(recording({recordedTool, "find", "--type", "CC480"}, {"--redact"}));
        const QRegularExpression serial(R"(SA_SerialNumber=\W*(\d{7})\b)");
        QSet<QString> substitutes;
        int count = 0;
        auto matches = serial.globalMatch(QString::fromUtf8(runner.contentOf("s.jsonl")));
        for (; matches.hasNext(); ++count)
            substitutes += matches.next().captured(1);
        QVERIFY(count > 1);
        QCOMPARE(substitutes.size(), 1);
    }
};

QTEST_GUILESS_MAIN(TestToolBenchRecord)
#include "tst_toolbenchrecord.moc"
