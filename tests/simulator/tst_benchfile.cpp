// SPDX-License-Identifier: MIT
#include "handle.h"
#include "SondixSimulator/control.h"

#include <exception>
#include <QElapsedTimer>
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
    /// The members of an object, one a line.
    static QByteArray errorTexts(int count)
    {
        QByteArrayList members;
        for (int key = -1; key >= -count; --key)
            members += '"' + QByteArray::number(key) + "\": \"text\"";
        return members.join(",\n");
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
        row("key twice among many",
            inSensor(place() + ",\n  \"errorTexts\": {\n" + errorTexts(40) + ",\n\"-3\": \"\" }"), 46,
            "\"-3\" is given twice");
        row("number before a line end", "{ \"sensors\": [],\n \"seed\": -1\n}", 2, "seed");
        row("no array", "{\n \"sensors\": {} }", 2, "array");
        row("wrong type", "{ \"sensors\": [],\n\n \"seed\": \"1\" }", 3, "whole number");
        row("step", "{ \"sensors\": [],\n \"clock\": {\n \"step\": 1 } }", 3, "virtual");
        row("too large a number", "{ \"sensors\": [],\n \"clock\": {\n \"speed\": 1e400 } }", 3,
            "too large: 1e400");
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
        // References to what the sensor does not have.
        row("limit of no setting", inSensor(place() + ",\n  \"limits\": {\n   \"SA_Speed\": [0, 1] }"), 6,
            "no setting \"SA_Speed\"");
        row("trigger of no setting",
            inSensor(place() + ",\n  \"trigger\": { \"off\": 0,\n   \"parameter\": \"SA_Trg\" }"), 6,
            "no setting \"SA_Trg\"");
        row("modes of no setting",
            inSensor(place() + ",\n  \"measureModes\": { \"modes\": [],\n   \"parameter\": \"SA_Mode\" }"), 6,
            "no setting \"SA_Mode\"");
        row("mode twice",
            inSensor(place() + ",\n  \"measureModes\": { \"parameter\": \"SA_TriggerMode\", \"modes\": [\n"
                               "   { \"mode\": 1 },\n   { \"mode\": 1 } ] }"),
            7, "\"mode\" 1 is given twice");
        row("rate of no setting",
            inSensor(place() + ",\n  \"rateRule\": { \"unit\": \"kHz\",\n   \"parameter\": \"SA_Rate\" }"), 6,
            "no setting \"SA_Rate\"");
        row("autostart of no setting",
            inSensor(place() + ",\n  \"tracking\": { \"commands\": [],\n   \"autostart\": \"SA_Start\" }"), 6,
            "no setting \"SA_Start\"");
        const auto inVideo = [](const QByteArray &more) {
            return inSensor(place() + ",\n  \"video\": { \"pixels\": 512, \"resolution\": 1024,\n" + more + " }");
        };
        row("video without lines", inVideo("   \"lines\": []"), 6, "must have a video line");
        row("video line without a signal",
            inVideo("   \"lines\": [\n   { \"answer\": \"SA_VideoRaw\", \"kind\": \"raw\" } ]"), 7,
            "needs \"signals\"");
        row("video line of no signal",
            inVideo("   \"lines\": [ { \"answer\": \"SA_VideoRaw\", \"kind\": \"raw\",\n   \"signals\": [2] } ]"),
            7, "there is no signal 2");
        row("video line twice",
            inVideo("   \"lines\": [ { \"answer\": \"SA_V\", \"kind\": \"dark\" },\n"
                    "   { \"answer\": \"SA_V\", \"kind\": \"light\" } ]"),
            7, "\"SA_V\" is given twice");
        row("video switch of no setting",
            inVideo("   \"lines\": [ { \"answer\": \"SA_V\", \"kind\": \"dark\",\n   \"switch\": \"Video\" } ]"),
            7, "no setting \"SA_Video\"");
        row("pixels at no information",
            inVideo("   \"lines\": [ { \"answer\": \"SA_V\", \"kind\": \"dark\" } ],\n   \"pixelsAtRange\": { "
                    "\"range\": 1, \"pixels\": 2, \"parameter\": \"SA_Rnge\" }"),
            7, "no \"SA_Rnge\"");

        // Faults that no call can have.
        const auto inFault = [](const QByteArray &text) {
            return inSensor(place() + ",\n  \"faults\": [ { \"code\": -1,\n" + text + " } ]");
        };
        row("fault of no function", inFault("   \"function\": \"OpenSensors\""), 6,
            "there is no function \"OpenSensors\": \"function\" must be CreateSensorInstance, ");
        row("fault of no command", inFault("   \"command\": \"Get_Inof\""), 6, "\"Get_Inof\"");
        row("fault of another model's command", inFault("   \"command\": \"Get_Video\""), 6, "\"Get_Video\"");
        row("fault of a parameter of an open",
            inFault("   \"function\": \"OpenSensor\",\n   \"parameter\": \"IP_Port\""), 7, "parameter");
        row("fault of a parameter of a command",
            inFault("   \"command\": \"Get_Info\",\n   \"parameter\": \"SA_Range\""), 7, "parameter");

        // Names.
        row("empty serial number",
            "{ \"sensors\": [ { \"model\": \"TX270\",\n\"serialNumber\": \"\",\n"
            "\"place\": { \"interface\": \"WinUSB\" } } ] }",
            2, "\"serialNumber\" must not be empty");
        for (const char *const key : {"name", "controllerName", "articleNumber", "firmware", "macAddress"})
            row(qPrintable(QStringLiteral("control character in %1").arg(key)),
                inSensor(place() + ",\n  \"" + key + "\": \"a\\nb\""), 5, "control character");
        row("control character in a serial number",
            "{ \"sensors\": [ { \"model\": \"TX270\",\n\"serialNumber\": \"1\\u0000\",\n"
            "\"place\": { \"interface\": \"WinUSB\" } } ] }",
            2, "control character");
        row("control character in the bench's name", "{ \"sensors\": [],\n \"name\": \"a\\u007f\" }", 2,
            "control character");
        row("control character in a unit", inSignal("\"unit\": \"\\t\""), 7, "control character");
        row("control character in an error text", inSensor(place() + ",\n  \"errorTexts\": { \"-1\": \"a\\rb\" }"),
            5, "control character");
        row("empty signal name", inSensor(place() + ",\n  \"signals\": [\n   { \"name\": \"\" } ]"), 6, "empty");
        row("empty key of an error text", inSensor(place() + ",\n  \"errorTexts\": { \"\": \"a\" }"), 5,
            "whole number");
        row("huge key of an error text", inSensor(place() + ",\n  \"errorTexts\": { \"-99999999999\": \"a\" }"), 5,
            "whole number");
        row("blank in a setting", inSensor(place() + ",\n  \"settings\": { \"A\": {\n   \"SA_A B\": 1 } }"), 6,
            "\"SA_A B\" is no name");
        row("equals sign in information", inSensor(place() + ",\n  \"info\": {\n   \"SA_A=\": 1 }"), 6, "no name");
        row("empty command", inSensor(place() + ",\n  \"answers\": {\n   \"\": {} }"), 6, "no name of a command");

        // Places that no sensor can have.
        const auto atPlace = [](const QByteArray &text) {
            return inSensor("  \"place\": { \"interface\": " + text + " }");
        };
        for (const char *const address :
             {"1.2.3", "1.2.3.4.5", "1.2.3.256", "1.2..4", "-1.2.3.4", "0.0.0.0", "255.255.255.255", "239.1.1.1",
              "10.0.0.1/33", "10.0.0.1/", "fe80", ":::", "::", "1:2:3:4:5:6:7:8:9", "fe80::1::2", "fe80::12345",
              "ff02::1", "fe80::1/129", ""})
            row(qPrintable(QStringLiteral("address \"%1\"").arg(address)),
                atPlace(QByteArray("\"TCP/IP\",\n  \"ip\": \"") + address + "\""), 5, "not the IP address");
        row("remote port", atPlace("\"TCP/IP\", \"ip\": \"10.0.0.1\",\n  \"remotePort\": 65536"), 5, "65535");
        row("no remote port", atPlace("\"TCP/IP\", \"ip\": \"10.0.0.1\",\n  \"remotePort\": 0"), 5, "remotePort");
        row("data port", atPlace("\"TCP/IP\", \"ip\": \"10.0.0.1\",\n  \"dataPort\": 70000"), 5, "dataPort");
        row("empty port", atPlace("\"RS232\",\n  \"port\": \"\""), 5, "\"port\" must not be empty");
        row("control character in a port", atPlace("\"RS232\",\n  \"port\": \"COM1\\n\""), 5, "control character");
        row("no baud rate", atPlace("\"RS232\", \"port\": \"COM1\",\n  \"baudrate\": 0"), 5, "baudrate");
        row("baud rate that the model lacks", atPlace("\"RS232\", \"port\": \"COM1\", \"baudrate\": 12345"), 4,
            "no baud rate 12345");
        row("byte size", atPlace("\"RS232\", \"port\": \"COM1\",\n  \"byteSize\": 9"), 5, "byteSize");
        row("parity", atPlace("\"RS232\", \"port\": \"COM1\",\n  \"parity\": 5"), 5, "parity");
        row("stop bits", atPlace("\"RS232\", \"port\": \"COM1\",\n  \"stopbits\": 3"), 5, "stopbits");
        row("bus address without a bus", atPlace("\"RS232\", \"port\": \"COM1\",\n  \"busAddress\": 3"), 5,
            "not on a bus");
        row("rate of nothing", inSensor(place() + ",\n  \"rate\": 0"), 5, "rate");
        const auto ofModel = [](const char *model, const QByteArray &interface) {
            return "{ \"sensors\": [ { \"serialNumber\": \"1\", \"model\": \"" + QByteArray(model) +
                   "\",\n\"place\": { \"interface\": " + interface + " } } ] }";
        };
        row("bus sensor in the network", ofModel("EC830", "\"TCP/IP\", \"ip\": \"10.0.0.1\""), 2, "only to RS232");
        row("bus sensor on USB", ofModel("EC840", "\"WinUSB\""), 2, "only to RS232");
        row("sensor behind the converter on a line", ofModel("MV410_XA300ETH", "\"RS232\", \"port\": \"COM1\""), 2,
            "only to TCP/IP");
        row("card in another slot", ofModel("XA100PCI", "\"XA200\""), 2, "only to XA100");
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

    void manyKeysTakeNoLongTime()
    {
        const QByteArray bench = inSensor(place() + ",\n  \"errorTexts\": {\n" + errorTexts(60000) + " }");
        QElapsedTimer timer;
        timer.start();
        sondixsim::loadBench(bench.toStdString());
        QVERIFY2(timer.elapsed() < 8000, qPrintable(QString::number(timer.elapsed())));
    }

    void possibleAddressesAreAccepted_data()
    {
        QTest::addColumn<QByteArray>("address");
        for (const char *const address : {"10.0.0.1", "169.254.3.4/16", "223.255.255.255", "127.0.0.1", "fe80::1",
                                          "::1", "2001:db8:0:1:2:3:4:5", "fe80::9/64", "FE80::ABCD", "1::"})
            QTest::newRow(address) << QByteArray(address);
    }
    void possibleAddressesAreAccepted()
    {
        QFETCH(QByteArray, address);
        sondixsim::loadBench(
            inSensor("  \"place\": { \"interface\": \"TCP/IP\", \"ip\": \"" + address + "\" }").toStdString());
        QCOMPARE(Handle(SensorType::TX270).open(), 0);
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
