// SPDX-License-Identifier: MIT
#include "benches.h"
#include "toolrunner.h"

#include <QJsonArray>

namespace {

/// A sensor with a frame of two values, settings that are not those of its model, faults, and two error values.
const QByteArray originalBench = R"({ "clock": { "speed": 1 }, "search": { "TCP/IP": 0.01 }, "sensors": [ {
    "model": "CC430", "serialNumber": "77", "articleNumber": "123", "firmware": "9.8", "rate": 1000,
    "place": { "interface": "TCP/IP", "ip": "10.1.1.1" },
    "info": { "SA_Extra": "extra" },
    "settings": { "Averaging": { "SA_AveragingNumber": 4 } },
    "answers": { "Get_Temperature": { "SA_Temperature": 31.5 } },
    "errorTexts": { "-7": "Too dark" },
    "signals": [ { "name": "One", "unit": "mm", "range": [0, 2], "rawRange": [0, 60000],
                   "errors": [ { "key": -7, "every": 10, "length": 2 } ] },
                 { "name": "Two", "unit": "%", "range": [0, 100], "rawRange": [0, 1000],
                   "generator": { "kind": "ramp", "from": 0, "to": 100, "period": 0.3 } } ],
    "faults": [ { "command": "Get_Temperature", "from": 2, "times": 2, "code": -22, "text": "too cold: 5 \u00b0C" },
                { "function": "OpenSensor", "from": 5, "code": -12, "text": "gone" } ] } ] })";
const QByteArray originalAddress = "CC430@TCP/IP,address=10.1.1.1";

/// The output of a command without the time at which it was made.
QByteArray withoutTime(QByteArray output)
{
    QList<QByteArray> kept;
    for (const QByteArray &line : linesOf(output)) {
        if (!line.contains("StorageTime"))
            kept += line;
    }
    return kept.join('\n');
}

/// The columns of values of a CSV file, without comments and the columns before.
QList<QByteArray> valueColumns(const QByteArray &csv, int columnsBefore)
{
    QList<QByteArray> values;
    for (const QByteArray &line : linesOf(csv)) {
        if (!line.startsWith('#'))
            values += line.split(',').mid(columnsBefore).join(',');
    }
    return values;
}

/// Writes the record of a program that has opened one sensor.
class RecordBuilder
{
public:
    RecordBuilder(int sensorType, const QList<QPair<QString, QString>> &place)
    {
        add({{"format", "sondix calls"}, {"version", 1}, {"date", ""}, {"platform", ""}, {"program", "p"}});
        call("CreateSensorInstance", 1, {{"sensorType", sensorType}});
        for (const auto &[name, value] : place)
            set(name, value);
        call("OpenSensor", 0);
    }
    void call(const char *function, int result, const QJsonObject &arguments = {}, const QJsonObject &answers = {})
    {
        add({{"call", ++m_number},
             {"thread", 1},
             {"time", 0},
             {"took", 0},
             {"function", function},
             {"handle", 1},
             {"arguments", arguments},
             {"answers", answers},
             {"result", result}});
    }
    void set(const QString &name, const QString &value)
    {
        call("SetParameterString", 0, {{"name", name}, {"value", value}});
    }
    void command(const QString &name, int result)
    {
        set("S_Command", name);
        call("SensorCommand", result);
    }
    void transfer(double time, const QJsonArray &scaled, const QJsonArray &raw)
    {
        call("TransferDataTS", 0, {},
             {{"read", raw.size()}, {"raw", raw}, {"scaled", scaled}, {"timestamp", time}});
    }
    QByteArray record() const { return m_record; }

private:
    void add(QJsonObject line)
    {
        line["process"] = 1;
        m_record += QJsonDocument(line).toJson(QJsonDocument::Compact) + '\n';
    }
    QByteArray m_record;
    int m_number = 0;
};

} // namespace

class TestToolBenchFrom : public QObject
{
    Q_OBJECT

private:
    static ToolResult record(const ToolRunner &runner, const QStringList &command)
    {
        return runner.run(QStringList{"bench", "record", "-o", "s.jsonl", "--", SONDIXQT_TOOL} + command);
    }
    static void useMadeBench(ToolRunner &runner)
    {
        runner.setEnvironment("SONDIX_BENCH", runner.path("made.json"));
    }

private Q_SLOTS:
    void aProgramSeesTheSameOnTheBenchThatWasMadeOfIt_data()
    {
        QTest::addColumn<QStringList>("command");
        QTest::newRow("info") << QStringList{"info", originalAddress};
        QTest::newRow("get") << QStringList{"get", originalAddress, "Get_Info"};
        QTest::newRow("answer") << QStringList{"get", originalAddress, "Get_Temperature"};
        QTest::newRow("setting") << QStringList{"get", originalAddress, "Get_Averaging"};
        QTest::newRow("find") << QStringList{"find", "--type", "CC430"};
        QTest::newRow("unknown command") << QStringList{"get", originalAddress, "Get_Nothing"};
    }
    void aProgramSeesTheSameOnTheBenchThatWasMadeOfIt()
    {
        QFETCH(QStringList, command);
        ToolRunner runner(originalBench);
        const ToolResult original = record(runner, command);
        const ToolResult made = runner.run({"bench", "from", "s.jsonl", "-o", "made.json"});
        QVERIFY2(made.code == 0, made.err.constData());
        useMadeBench(runner);
        const ToolResult again = runner.run(command);
        QCOMPARE(withoutTime(again.out), withoutTime(original.out));
        QCOMPARE(again.code, original.code);
        for (const QByteArray &line : linesOf(again.err))
            QVERIFY2(original.err.contains(line), again.err.constData());
    }

    void everyValueComesAgain()
    {
        ToolRunner runner(originalBench);
        const QStringList command{"read", originalAddress, "-n", "1000", "--csv", "a.csv", "--raw", "--scaled"};
        QCOMPARE(record(runner, command).code, 0);
        QCOMPARE(runner.run({"bench", "from", "s.jsonl", "-o", "made.json"}).code, 0);
        QVERIFY(runner.files().contains("made-77.csv"));
        useMadeBench(runner);
        QStringList again = command;
        again[5] = "b.csv";
        QCOMPARE(runner.run(again).code, 0);
        const QList<QByteArray> values = valueColumns(runner.contentOf("a.csv"), 1);
        QCOMPARE(values.size(), 1001);
        QVERIFY(values[9].startsWith("Too dark,60007,"));
        QCOMPARE(valueColumns(runner.contentOf("b.csv"), 1), values);
    }

    void aRecordingKeepsItsRate_data()
    {
        QTest::addColumn<QString>("file");
        QTest::newRow("csv") << "a.csv";
        QTest::newRow("npy") << "a.npy";
        QTest::newRow("jsonl") << "a.jsonl";
    }
    void aRecordingKeepsItsRate()
    {
        QFETCH(QString, file);
        ToolRunner runner(QByteArray(originalBench).replace("\"rate\": 1000", "\"rate\": 250"));
        QCOMPARE(runner.run({"record", originalAddress, "-n", "100", "-o", file}).code, 0);
        const ToolResult made = runner.run({"bench", "from", file, "-o", "made.json"});
        QVERIFY2(made.code == 0, made.err.constData());
        useMadeBench(runner);
        QCOMPARE(runner.run({"read", originalAddress, "-n", "50", "--csv", "b.csv"}).code, 0);
        QList<QByteArray> lines = linesOf(runner.contentOf("b.csv"));
        lines.removeFirst();
        QCOMPARE(lines.size(), 50);
        const double begin = lines.first().split(',').first().toDouble();
        const double end = lines.last().split(',').first().toDouble();
        QVERIFY2(std::abs((end - begin) - 49.0 / 250.0) < 1e-4, qPrintable(QString::number(end - begin)));
    }

    void nothingThatItIsMadeOfIsOverwritten_data()
    {
        QTest::addColumn<QString>("input");
        QTest::addColumn<QStringList>("command");
        QTest::newRow("record") << "s.jsonl" << QStringList{"bench", "from", "s.jsonl", "-o", "./s.jsonl"};
        QTest::newRow("recording") << "x-77.csv" << QStringList{"bench", "from", "x-77.csv", "-o", "x.json"};
        QTest::newRow("replay") << "s.jsonl" << QStringList{"bench",   "replay", "s.jsonl",     "-o",
                                                            "s.jsonl", "--",     SONDIXQT_TOOL, "--version"};
    }
    void nothingThatItIsMadeOfIsOverwritten()
    {
        QFETCH(QString, input);
        QFETCH(QStringList, command);
        ToolRunner runner(originalBench);
        QCOMPARE(record(runner, {"record", originalAddress, "-n", "10", "-o", "x-77.csv"}).code, 0);
        const QByteArray before = runner.contentOf(input);
        const ToolResult result = runner.run(command);
        QCOMPARE(result.code, 2);
        QVERIFY2(result.err.contains("would be overwritten"), result.err.constData());
        QCOMPARE(runner.contentOf(input), before);
    }

    void aFailedCallBecomesAFault()
    {
        // The program of the customer asks three times; the second and the third time fail.
        ToolRunner runner(originalBench);
        RecordBuilder program(26, {{"IP_Interface", "TCP/IP"}, {"IP_RemoteAddr", "10.1.1.1"}});
        for (const int result : {0, -22, -22, 0}) {
            program.command("Get_Temperature", result);
            if (result != 0)
                program.call("GetError", -22, {}, {{"text", QString::fromUtf8("too cold: 5 °C")}});
            else
                program.call("GetParameterDouble", 0, {{"name", "SA_Temperature"}}, {{"value", 31.5}});
        }
        program.call("DataAvail", -12, {}, {{"available", 0}});
        runner.writeFile("s.jsonl", program.record());
        const ToolResult result = runner.run({"bench", "from", "s.jsonl", "-o", "made.json"});
        QVERIFY2(result.code == 0, result.err.constData());
        const QJsonObject bench = QJsonDocument::fromJson(runner.contentOf("made.json")).object();
        const QJsonArray faults = bench["sensors"].toArray().at(0)["faults"].toArray();
        QCOMPARE(faults,
                 (QJsonArray{QJsonObject{{"command", "Get_Temperature"},
                                         {"from", 2},
                                         {"times", 2},
                                         {"code", -22},
                                         {"text", QString::fromUtf8("too cold: 5 °C")}},
                             QJsonObject{{"function", "DataAvail"}, {"from", 1}, {"times", 1}, {"code", -12}}}));
    }

    void framesThatWereMissingAreMissingAgain()
    {
        ToolRunner runner;
        RecordBuilder program(41, {{"IP_Interface", "RS232"}, {"IP_Port", "COM3"}});
        program.command("Get_TransmittedDataInfo", 0);
        program.call("GetParameters", 0, {},
                     {{"text", "IA_Datarate=1000.0\r\nIA_ValuesPerFrame=1\r\nIA_Scaled_Name1=\"D\"\r\n"
                               "IA_Scaled_RangeMin1=0.0\r\nIA_Scaled_RangeMax1=10.0"}});
        program.transfer(5.0, {1.0, 2.0, 3.0}, {1, 2, 3});
        program.transfer(5.0031, {4.0, -10000000004.0, 6.0}, {4, 5, 6}); // in the rhythm of the sensor
        program.transfer(5.011, {7.0, 8.0}, {7, 8});                     // five frames late
        runner.writeFile("s.jsonl", program.record());
        const ToolResult result = runner.run({"bench", "from", "s.jsonl", "-o", "made.json"});
        QVERIFY2(result.code == 0, result.err.constData());
        QCOMPARE(linesOf(runner.contentOf("made-recorded-1.csv")),
                 (QList<QByteArray>{"frame,D,D raw", "0,1,1", "1,2,2", "2,3,3", "3,4,4", "4,-10000000004,5",
                                    "5,6,6", "11,7,7", "12,8,8"}));
    }

    void aRecordingIsReplayed_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QStringList>("options");
        QTest::newRow("JSON lines") << "r.jsonl" << QStringList{"--raw", "--scaled"};
        QTest::newRow("scaled JSON lines") << "r.jsonl" << QStringList{};
        QTest::newRow("NumPy") << "r.npy" << QStringList{"--raw", "--scaled"};
        QTest::newRow("CSV without texts") << "r.csv" << QStringList{"--raw", "--scaled", "--errors", "nan"};
    }
    void aRecordingIsReplayed()
    {
        QFETCH(QString, file);
        QFETCH(QStringList, options);
        ToolRunner runner(originalBench);
        QCOMPARE(runner.run(QStringList{"record", originalAddress, "-n", "500", "-o", file} + options).code, 0);
        const ToolResult made = runner.run({"bench", "from", file, "-o", "made.json"});
        QVERIFY2(made.code == 0, made.err.constData());
        const QList<QByteArray> lines = linesOf(runner.contentOf("made-77.csv"));
        QCOMPARE(lines.size(), 501);
        QVERIFY2(lines[10].startsWith("9,-10000000007,"), lines[10].constData());

        useMadeBench(runner);
        QCOMPARE(runner
                     .run({"read", originalAddress, "-n", "500", "--csv", "again.csv", "--raw", "--scaled",
                           "--errors", "nan"})
                     .code,
                 0);
        const QList<QByteArray> again = valueColumns(runner.contentOf("again.csv"), 1);
        for (int i = 0; i < 500; ++i) {
            const QList<QByteArray> expected = lines[i + 1].split(',');
            const QList<QByteArray> cells = again[i + 1].split(',');
            if (i % 10 >= 8)
                QCOMPARE(cells[0], QByteArray("nan"));
            else
                QCOMPARE(cells[0].toDouble(), expected[1].toDouble());
            if (!expected[2].isEmpty())
                QCOMPARE(cells[1], expected[2]);
            QCOMPARE(cells[2].toDouble(), expected[3].toDouble());
        }
    }

    void gapsOfARecordingStay()
    {
        ToolRunner runner(originalBench);
        QCOMPARE(runner.run({"record", originalAddress, "-n", "20", "-o", "r.jsonl", "--raw", "--scaled"}).code,
                 0);
        QList<QByteArray> lines = linesOf(runner.contentOf("r.jsonl"));
        lines.removeAt(6); // frame 5
        lines.insert(6, "{\"gap\":{\"run\":0,\"firstFrame\":5,\"frames\":1,\"reason\":\"libraryOverrun\","
                        "\"begin\":null,\"end\":null}}");
        runner.writeFile("r.jsonl", lines.join('\n') + '\n');
        QCOMPARE(runner.run({"bench", "from", "r.jsonl", "-o", "made.json"}).code, 0);
        const QList<QByteArray> values = linesOf(runner.contentOf("made-77.csv"));
        QCOMPARE(values.size(), 20);
        QVERIFY(values[5].startsWith("4,") && values[6].startsWith("6,"));
    }

    void wrongFilesAreRefused()
    {
        ToolRunner runner(originalBench);
        QCOMPARE(runner.run({"bench", "from", "missing.jsonl", "-o", "made.json"}).code, 1);
        runner.writeFile("text.csv", "hello\n");
        QCOMPARE(runner.run({"bench", "from", "text.csv", "-o", "made.json"}).code, 1);
        runner.writeFile("headless.csv", "time [s],Distance [mm]\n1,2\n");
        const ToolResult headless = runner.run({"bench", "from", "headless.csv", "-o", "made.json"});
        QVERIFY2(headless.err.contains("its head does not tell where the sensor was connected"),
                 headless.err.constData());
        record(runner, {"bench", "show"});
        const ToolResult empty = runner.run({"bench", "from", "s.jsonl", "-o", "made.json"});
        QCOMPARE(empty.code, 3);
        QVERIFY(!runner.files().contains("made.json"));
    }
};

QTEST_GUILESS_MAIN(TestToolBenchFrom)
#include "tst_toolbenchfrom.moc"
