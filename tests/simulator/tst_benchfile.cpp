// SPDX-License-Identifier: MIT
#include "handle.h"
#include "SondixSimulator/control.h"

#include <exception>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

class TestBenchFile : public QObject
{
    Q_OBJECT

private:
    /// A bench with one sensor. \a text begins in line 4.
    static QByteArray inSensor(const QByteArray &text)
    {
        return "{\n \"sensors\": [ {\n  \"model\": \"TX270\", \"serialNumber\": \"1\",\n" + text + "\n } ]\n}\n";
    }
    static QByteArray place() { return "  \"place\": { \"interface\": \"RS232\", \"port\": \"COM1\" }"; }
    static QByteArray inSignal(const QByteArray &text)
    {
        return inSensor(place() + ",\n  \"signals\": [\n   { \"name\": \"a\",\n" + text + " } ]");
    }
    static QByteArray pair(const QByteArray &second)
    {
        return "{ \"sensors\": [\n { \"model\": \"TX270\", \"serialNumber\": \"1\",\n"
               "   \"place\": { \"interface\": \"TCP/IP\", \"ip\": \"10.0.0.1/8\" } },\n" +
               second + " ] }";
    }

private Q_SLOTS:
    void errorsAreReportedWithTheirLine_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<int>("line");
        QTest::addColumn<QByteArray>("word");
        const auto row = [](const char *name, const QByteArray &text, int line, const char *word) {
            QTest::newRow(name) << text << line << QByteArray(word);
        };
        row("empty", "", 1, "syntax");
        row("no object", "[]", 1, "object");
        row("unfinished", "{\n \"seed\": 1", 2, "syntax");
        row("missing comma", "{\n \"seed\": 1\n \"sensors\": [] }", 3, "syntax");
        row("garbage behind", "{ \"sensors\": [] }\n\n}", 3, "syntax");
        row("open comment", "{\n /* never ends", 2, "comment");
        row("no sensors", "{\n \"seed\": 1\n}", 1, "sensors");
        row("unknown key", "{\n \"sensors\": [],\n \"sensor\": 1 }", 3, "\"sensor\"");
        row("key twice", "{ \"seed\": 1,\n \"seed\": 2,\n \"sensors\": [] }", 2, "twice");
        row("number before a line end", "{ \"sensors\": [],\n \"seed\": -1\n}", 2, "seed");
        row("no array", "{\n \"sensors\": {} }", 2, "array");
        row("wrong type", "{ \"sensors\": [],\n\n \"seed\": \"1\" }", 3, "whole number");
        row("speed", "{ \"sensors\": [],\n \"clock\": {\n \"speed\": 0 } }", 3, "speed");
        row("clock key", "{ \"sensors\": [],\n \"clock\": {\n \"fast\": 2 } }", 3, "fast");
        row("search time", "{ \"sensors\": [],\n \"search\": {\n \"TCP/IP\": -1 } }", 3, "TCP/IP");
        row("search key", "{ \"sensors\": [],\n \"search\": {\n \"Bluetooth\": 1 } }", 3, "Bluetooth");
        row("unknown model", "{ \"sensors\": [ {\n \"model\": \"TX999\" } ] }", 2, "TX999");
        row("base of models", "{ \"sensors\": [ {\n \"model\": \"@optical\" } ] }", 2, "@optical");
        row("no place", inSensor("  \"rate\": 100"), 2, "place");
        row("sensor key", inSensor(place() + ",\n  \"rates\": 5"), 5, "rates");
        row("rate too high", inSensor(place() + ",\n\n  \"rate\": 1000000000"), 6, "rate");
        row("rate not offered",
            "{ \"sensors\": [ { \"model\": \"TX220\", \"serialNumber\": \"1\",\n"
            "\"place\": { \"interface\": \"XA100\" },\n\"rate\": 2000 } ] }",
            3, "2500");
        row("rate of a tracking sensor",
            "{ \"sensors\": [ { \"model\": \"RG52x\", \"serialNumber\": \"1\",\n"
            "\"place\": { \"interface\": \"WinUSB\" },\n\"rate\": 10 } ] }",
            3, "tracking");
        row("interface", inSensor("  \"place\": {\n   \"interface\": \"COM\" }"), 5, "RS232");
        row("no port", inSensor("  \"place\": { \"interface\": \"RS232\" }"), 4, "port");
        row("place key", inSensor("  \"place\": { \"interface\": \"WinUSB\",\n   \"port\": \"COM1\" }"), 5,
            "port");
        row("address", inSensor("  \"place\": { \"interface\": \"TCP/IP\",\n   \"ip\": \"localhost\" }"), 5,
            "localhost");
        row("no address", inSensor("  \"place\": { \"interface\": \"TCP/IP\",\n   \"ip\": [] }"), 5, "ip");
        row("ring", inSensor(place() + ",\n  \"ring\": 0"), 5, "ring");
        row("setting name", inSensor(place() + ",\n  \"settings\": { \"A\": {\n   \"Rate\": 1 } }"), 6, "SA_");
        row("setting type",
            inSensor(place() + ",\n  \"settings\": { \"Samplerate\": {\n   \"SA_Measrate\": \"fast\" } }"), 6,
            "number");
        row("setting out of its limits",
            inSensor(place() + ",\n  \"settings\": { \"Samplerate\": { \"SA_Measrate\": 500.0 } }"), 2,
            "SA_Measrate");
        row("limits", inSensor(place() + ",\n  \"limits\": { \"SA_Measrate\": [2, 1] }"), 5, "SA_Measrate");
        row("error text key", inSensor(place() + ",\n  \"errorTexts\": { \"one\": \"text\" }"), 5, "one");
        row("character", inSensor(place() + ",\n  \"name\": \"\xE2\x98\x83\""), 5, "windows-1250");
        row("signal without name", inSensor(place() + ",\n  \"signals\": [\n   { \"unit\": \"mm\" } ]"), 6,
            "name");
        row("range", inSignal("\"range\": [1.0, 1.0]"), 7, "range");
        row("range of three", inSignal("\"range\": [1, 2, 3]"), 7, "range");
        row("raw range", inSignal("\"rawRange\": [0, 3000000000]"), 7, "rawRange");
        row("generator kind", inSignal("\"generator\": {\n\"kind\": \"sinus\" }"), 8, "sinus");
        row("generator key",
            inSignal("\"generator\": { \"kind\": \"constant\",\n\"value\": 1, \"amplitude\": 2 }"), 8,
            "amplitude");
        row("generator without period", inSignal("\"generator\":\n{ \"kind\": \"sine\", \"amplitude\": 1 }"), 8,
            "period");
        row("period of nothing",
            inSignal("\"generator\": { \"kind\": \"sine\", \"amplitude\": 1,\n\"period\": 0 }"), 8, "period");
        row("counter of nothing", inSignal("\"generator\": { \"kind\": \"counter\",\n\"modulo\": 0 }"), 8,
            "modulo");
        row("silence before opening", inSensor(place() + ",\n  \"silentAfter\": -1"), 5, "silentAfter");
        row("plugged in without unplugging", inSensor(place() + ",\n  \"plugAfter\": 1"), 5, "unplugAfter");
        row("plugged in before unplugging", inSensor(place() + ",\n  \"unplugAfter\": 2,\n  \"plugAfter\": 2"), 6,
            "unplugAfter");
        row("no record", inSignal("\"generator\": { \"kind\": \"csv\",\n\"file\": \"absent.csv\" }"), 8,
            "absent.csv");
        row("error key", inSignal("\"errors\": [\n{ \"key\": 1, \"every\": 5 } ]"), 8, "key");
        row("error without rhythm", inSignal("\"errors\": [\n{ \"key\": -1 } ]"), 8, "every");
        row("error longer than its rhythm",
            inSignal("\"errors\": [\n{ \"key\": -1, \"every\": 5, \"length\": 6 } ]"), 8, "length");
        row("fault of nothing", inSensor(place() + ",\n  \"faults\": [\n   { \"code\": -1 } ]"), 6, "function");
        row("fault without effect", inSensor(place() + ",\n  \"faults\": [\n   { \"command\": \"Get_Info\" } ]"),
            6, "code");
        row("serial number twice",
            pair("{ \"model\": \"TX270\", \"serialNumber\": \"1\", \"place\": { \"interface\": \"WinUSB\" } }"), 4,
            "line 2");
        row("place twice",
            pair("{ \"model\": \"TX290\", \"serialNumber\": \"2\",\n"
                 "\"place\": { \"interface\": \"TCP/IP\", \"ip\": [ \"10.0.0.9\", \"10.0.0.1\" ] } }"),
            4, "10.0.0.9");
        row("members of one sensor", inSensor(place() + ",\n  \"members\": [ \"2\" ]"), 5, "several");
        row("unknown member",
            pair("{ \"model\": \"MultiSensor\", \"serialNumber\": \"2\",\n\"place\": { \"interface\": \"WinUSB\" "
                 "},\n"
                 "\"members\": [ \"3\" ] }"),
            4, "\"3\"");
        row("no members",
            pair("{ \"model\": \"MultiSensor\", \"serialNumber\": \"2\",\n\"place\": { \"interface\": \"WinUSB\" "
                 "} }"),
            4, "members");
        row("too deep", "{ \"sensors\": \n" + QByteArray(40, '[') + QByteArray(40, ']') + "}", 2, "deep");
    }
    void errorsAreReportedWithTheirLine()
    {
        QFETCH(QByteArray, text);
        QFETCH(int, line);
        QFETCH(QByteArray, word);
        try {
            sondixsim::loadBench(text.toStdString(), "my bench");
        } catch (const sondixsim::BenchError &error) {
            const QByteArray what(error.what());
            QCOMPARE(error.line, line);
            QVERIFY2(what.startsWith("my bench:" + QByteArray::number(line) + ": "), what.constData());
            QVERIFY2(what.contains(word), what.constData());
            QVERIFY(!what.contains('\n'));
            return;
        }
        QFAIL("the bench was accepted");
    }

    void failedLoadKeepsThePresentBench()
    {
        sondixsim::loadBench(inSensor(place()).toStdString());
        QVERIFY_EXCEPTION_THROWN(sondixsim::loadBench("{"), sondixsim::BenchError);
        // Would be 1 if the library had another C++ runtime than the test: each counts on its own.
        QCOMPARE(std::uncaught_exceptions(), 0);
        Handle handle(SensorType::TX270);
        QCOMPARE(handle.open(), 0);
    }

    void commentsAndByteOrderMarkAreAccepted()
    {
        sondixsim::loadBench("\xEF\xBB\xBF{ // a comment\n /* another */ \"sensors\": [] }");
        Handle handle(SensorType::TX270);
        QVERIFY(handle.open() < 0);
    }

    void sameAddressWithAnotherPortIsAccepted()
    {
        sondixsim::loadBench(
            pair("{ \"model\": \"TX290\", \"serialNumber\": \"2\", "
                 "\"place\": { \"interface\": \"TCP/IP\", \"ip\": \"10.0.0.1\", \"remotePort\": 24 } }")
                .toStdString());
        Handle handle(SensorType::TX290);
        QCOMPARE(handle.open(), 0);
    }

    void rateSetsTheModelsSetting()
    {
        sondixsim::loadBench(R"({ "sensors": [
            { "model": "EC810", "serialNumber": "1", "place": { "interface": "XA100" }, "rate": 14400,
              "settings": { "Settings": { "SA_AvrType": 0 } } },
            { "model": "CP730", "serialNumber": "2", "place": { "interface": "WinUSB" }, "rate": 4000 } ] })");
        Handle indexed(SensorType::EC810);
        indexed.open();
        indexed.command("Get_Settings");
        QCOMPARE(indexed.getInt("SA_SRIndex"), 2);
        Handle timed(SensorType::CP730);
        timed.open();
        timed.command("Get_SampleTime");
        QCOMPARE(timed.getDouble("SA_SampleTime"), 250.0);
    }

    void filesAreLoadedByName()
    {
        QTemporaryDir folder;
        QFile file(folder.filePath(QStringLiteral("bench.json")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("{\n \"sensors\": 5 }");
        file.close();
        const std::string path = file.fileName().toStdString();
        try {
            sondixsim::loadBenchFile(path);
            QFAIL("the bench was accepted");
        } catch (const sondixsim::BenchError &error) {
            QCOMPARE(std::string(error.what()).rfind(path + ":2: ", 0), std::size_t(0));
        }
        try {
            sondixsim::loadBenchFile(path + ".absent");
            QFAIL("a file that is not there was accepted");
        } catch (const sondixsim::BenchError &error) {
            QCOMPARE(error.line, 0);
            QVERIFY(std::string(error.what()).find(".absent") != std::string::npos);
        }
    }

    void exampleBenchLoads()
    {
        sondixsim::loadBenchFile(std::string(SONDIX_BENCHES) + "/example.json");
        Handle handle(SensorType::CC430);
        QCOMPARE(handle.open(), 0);
        QCOMPARE(handle.command("Get_TransmittedDataInfo"), 0);
        QCOMPARE(handle.command("Get_TransmittedDataInfo"), -501);
        QCOMPARE(handle.command("Get_TransmittedDataInfo"), 0);
    }
};

QTEST_GUILESS_MAIN(TestBenchFile)
#include "tst_benchfile.moc"
