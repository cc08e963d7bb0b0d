// SPDX-License-Identifier: MIT
#include "benches.h"
#include "toolrunner.h"

#include <clocale>

class TestToolUsage : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void helpGoesToStdout_data();
    void helpGoesToStdout();
    void reportsItsVersion();
    void refusesWrongUse_data();
    void refusesWrongUse();
    void refusesEmptyValues_data();
    void refusesEmptyValues();
    void namesTheLineOfABrokenBench_data();
    void namesTheLineOfABrokenBench();
    void namesABenchThatCannotBeRead();
    void theOptionOverridesTheEnvironment();
    void verboseShowsWhatTheLibraryLogs();
    void numbersHaveAPointInEveryLocale();
};

void TestToolUsage::helpGoesToStdout_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("expected");
    QTest::newRow("tool") << "--help"
                          << "Exit codes: 0 done, 1 failed";
    QTest::newRow("models") << "models --help"
                            << "--group";
    QTest::newRow("find") << "find --help"
                          << "--baudrates";
    QTest::newRow("info") << "info --help"
                          << "--serial";
    QTest::newRow("read") << "read --help"
                          << "--duration";
    QTest::newRow("record") << "record --help"
                            << "[SENSOR] [MORE...]";
    QTest::newRow("params") << "params --help"
                            << "--json";
    QTest::newRow("get") << "get --help"
                         << "[SENSOR] [COMMAND] [ANSWER]";
    QTest::newRow("set") << "set --help"
                         << "The command changes the sensor";
    QTest::newRow("exec") << "exec --help"
                          << "The command may change the sensor";
    QTest::newRow("mode") << "mode --help"
                          << "changes the sensor";
    QTest::newRow("trigger") << "trigger --help"
                             << "[SENSOR] [off]";
    QTest::newRow("sync") << "sync --help"
                          << "[SENSOR] [off]";
    QTest::newRow("video") << "video --help"
                           << "--line";
    QTest::newRow("tunnel") << "tunnel --help"
                            << "--open";
    QTest::newRow("bench") << "bench --help"
                           << "show";
    QTest::newRow("bench show") << "bench show --help"
                                << "--json";
}

void TestToolUsage::helpGoesToStdout()
{
    QFETCH(QString, line);
    QFETCH(QString, expected);
    const ToolResult result = ToolRunner().run(line.split(QLatin1Char(' ')));
    QCOMPARE(result.code, 0);
    QVERIFY2(result.out.contains(expected.toUtf8()), result.out.constData());
    QCOMPARE(result.err, QByteArray());
}

void TestToolUsage::reportsItsVersion()
{
    const ToolResult result = ToolRunner().run({"--version"});
    QCOMPARE(result.code, 0);
    QVERIFY(QRegularExpression("^sondixqt \\d+\\.\\d+\\.\\d+\n$").match(QString::fromUtf8(result.out)).hasMatch());
}

void TestToolUsage::refusesWrongUse_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("sentence");
    const auto row = [](const char *line, const char *sentence) {
        QTest::newRow(*line == '\0' ? "nothing" : line) << QString::fromUtf8(line) << QString::fromUtf8(sentence);
    };
    row("",
        "no command is given; the commands are models, find, info, read, record, params, get, set, exec, mode, "
        "trigger, sync, video");
    row("bench", "no command is given; the commands are start, list, show, stop");
    row("bench shw", "there is no command 'shw'; did you mean show?");
    row("bench show extra", "there is no command 'extra'; the commands are start, list, show, stop");
    row("fnid", "there is no command 'fnid'; did you mean find?");
    row("sing",
        "there is no command 'sing'; the commands are models, find, info, read, record, params, get, set, exec, "
        "mode, trigger, sync, video");
    row("--colour", "there is no option '--colour'");
    row("models --colour", "--colour");
    row("models Tavrin", "Tavrin");
    row("models --group Tavrim", "there is no group 'Tavrim'; did you mean Tavrin?");
    row("find --type TX271", "there is no model 'TX271'; did you mean");
    row("find --group Wavelen", "there is no group 'Wavelen'; did you mean Wavlen?");
    row("find --type TX270 --group Tavrin", "excludes");
    row("find --type TX270 --interface RS242", "there is no interface 'RS242'; did you mean RS232?");
    row("find --timeout soon", "--timeout");
    row("info", "no sensor is named");
    row("info COM3", "'COM3' is no sensor address");
    row("info TX270@RS232,prot=COM3", "there is no interface parameter 'prot'; did you mean port?");
    row("info TX270@RS232,port=COM3 --type TX270", "by its address or by options, not by both");
    row("info --port COM3", "--type is needed");
    row("info --type TX270 --card 0", "--interface is needed");
    row("info --type TX270 --port COM3 --address 10.0.0.1", "--interface is needed");
    row("info --type TX270 --interface RS242", "there is no interface 'RS242'");
    row("info --type TX270 --port COM3 --serial 12", "--serial searches");
    row("info --type TX270 --interface USB --param IP_X", "--param takes NAME=VALUE, not 'IP_X'");
    row("info --type TX270 --interface USB --param =1", "--param takes NAME=VALUE, not '=1'");
    row("read", "no sensor is named");
    row("read TX270@RS232,port=COM3 -n 0", "--frames");
    row("read TX270@RS232,port=COM3 -n many", "--frames");
    row("read TX270@RS232,port=COM3 -n 1.5", "--frames: '1.5' is no whole number from 1 to 1000000000000");
    row("read TX270@RS232,port=COM3 -n 1000000000001", "--frames");
    row("read TX270@RS232,port=COM3 -d nan", "'nan' is no number of seconds above 0 and up to 31536000");
    row("read TX270@RS232,port=COM3 -d inf", "--duration: 'inf'");
    row("read TX270@RS232,port=COM3 -d 0", "--duration: '0'");
    row("read TX270@RS232,port=COM3 -d 31536001", "--duration: '31536001'");
    row("read TX270@RS232,port=COM3 --silence nan", "--silence: 'nan'");
    row("read TX270@RS232,port=COM3 --silence 86401", "and up to 86400");
    row("find --timeout nan", "--timeout: 'nan'");
    row("find --timeout 1e300", "and up to 86400");
    row("find --timeout 0", "--timeout: '0'");
    row("find --baudrates abc", "--baudrates: 'abc' is no list of baud rates, such as 9600,115200");
    row("find --baudrates 9600,", "--baudrates");
    row("find --baudrates 9600;115200", "--baudrates");
    row("find --baudrates 0", "--baudrates");
    row("find --baudrates -9600", "--baudrates");
    row("find --thorough --type TX270", "--thorough");
    row("info TX270@RS232,port=COM3,baudrate=abc", "the baudrate 'abc' is no whole number");
    row("info TX270@RS232,port=COM3,baudrate=", "the baudrate '' is no whole number");
    row("info TX270@RS232,port=COM3,baudrate=9600.5", "the baudrate '9600.5' is no whole number");
    row("info TX270@RS232,port=COM3,baudrate=0", "the baudrate 0 is not from 1 to 100000000");
    row("info TX270@RS232,port=COM3,IP_Baudrate=abc", "the baudrate 'abc' is no whole number");
    row("info CC480@TCP/IP,address=10.0.0.1,remote-port=65536", "the remote-port 65536 is not from 0 to 65535");
    row("info --type TX270 --port COM3 --baudrate abc", "the baudrate 'abc' is no whole number");
    row("info --type TX270 --port COM3 --param IP_Stopbits=two", "the stopbits 'two' is no whole number");
    row("read TX270@RS232,port=COM3 --duration -1", "--duration");
    row("read TX270@RS232,port=COM3 --csv - --json", "excludes");
    for (const char *line : {"params", "mode", "trigger", "sync", "video", "video --line -"})
        row(line, "no sensor is named");
    row("get", "no command to send is given");
    row("params COM3", "'COM3' is no sensor address");
    row("get TX270@RS232,port=COM3", "no command to send is given");
    row("get Get_Info", "no command to send is given");
    row("get COM3 Get_Info", "'COM3' is no sensor address");
    row("get TX270@RS232,port=COM3 Get-Info", "'Get-Info' is no name of a command");
    row("get TX270@RS232,port=COM3 Set_Samplerate", "does not begin with Get_");
    row("get --type TX270 --port COM3 Get_Info SA_Range SA_Sensor", "'SA_Sensor' is one word too many");
    row("get TX270@RS232,port=COM3 --type TX270 Get_Info", "by its address or by options, not by both");
    row("set TX270@RS232,port=COM3", "no command to send is given");
    row("set TX270@RS232,port=COM3 Set_Samplerate", "nothing to set is given");
    row("set TX270@RS232,port=COM3 SP_Measrate=2", "'SP_Measrate=2' is no name of a command");
    row("set TX270@RS232,port=COM3 Set_Samplerate SP_Measrate", "'SP_Measrate' is no PARAMETER=VALUE");
    row("set --type TX270 --port COM3 Set_Samplerate =2", "'=2' is no PARAMETER=VALUE");
    row("exec TX270@RS232,port=COM3", "no command to send is given");
    row("exec TX270@RS232,port=COM3 Set_Samplerate SP_Measrate=", "'SP_Measrate=' gives no value");
    row("exec TX270@RS232,port=COM3 Set_X SP_A=1 SP_A=2", "'SP_A' is given twice");
    row("trigger TX270@RS232,port=COM3 on", "can only be 'off', not 'on'");
    row("sync TX270@RS232,port=COM3 on", "can only be 'off', not 'on'");
    row("trigger TX270@RS232,port=COM3 off off", "off");
    row("video TX270@RS232,port=COM3 --line picture.jpg", "ends with .png or .csv, or -, not 'picture.jpg'");
    row("video TX270@RS232,port=COM3 --signal 0", "--signal goes with --line");
}

void TestToolUsage::refusesWrongUse()
{
    QFETCH(QString, line);
    QFETCH(QString, sentence);
    const ToolResult result = ToolRunner().run(line.split(QLatin1Char(' '), Qt::SkipEmptyParts));
    QCOMPARE(result.code, 2);
    QCOMPARE(result.out, QByteArray());
    QVERIFY2(result.err.startsWith("sondixqt: "), result.err.constData());
    QVERIFY2(linesOf(result.err).first().contains(sentence.toUtf8()), result.err.constData());
}

void TestToolUsage::refusesEmptyValues_data()
{
    QTest::addColumn<QStringList>("arguments");
    for (const char *line :
         {"find --type", "find --group", "find --interface", "find --baudrates", "models --group", "info --serial",
          "info --type TX270 --port", "info --type TX270 --port COM3 --baudrate",
          "read TX270@RS232,port=COM3 --csv", "read TX270@RS232,port=COM3 -d", "read TX270@RS232,port=COM3 -n",
          "video TX270@RS232,port=COM3 --line", "video TX270@RS232,port=COM3 --on", "find --timeout",
          "info --type", "models --bench"})
        QTest::newRow(line) << (words(line) << QString());
}

void TestToolUsage::refusesEmptyValues()
{
    QFETCH(QStringList, arguments);
    const QString option = arguments.at(arguments.size() - 2);
    const ToolResult result = ToolRunner().run(arguments);
    QCOMPARE(result.code, 2);
    QCOMPARE(result.out, QByteArray());
    const QByteArray line = linesOf(result.err).first();
    QVERIFY2(line.startsWith("sondixqt: --"), line.constData());
    QVERIFY2(option.size() == 2 || line.contains(option.toUtf8() + ": "), line.constData());
}

void TestToolUsage::namesTheLineOfABrokenBench_data()
{
    QTest::addColumn<QString>("line");
    for (const char *line :
         {"find --type TX270", "find", "info TX270@RS232,port=COM3", "read TX270@RS232,port=COM3",
          "params TX270@RS232,port=COM3", "video TX270@RS232,port=COM3"})
        QTest::newRow(line) << QString::fromLatin1(line);
}

void TestToolUsage::namesTheLineOfABrokenBench()
{
    QFETCH(QString, line);
    const ToolRunner runner("{\n  \"sensors\": [\n    { \"model\": \"TX99\" }\n  ]\n}\n");
    const ToolResult result = runner.run(line.split(QLatin1Char(' ')));
    QCOMPARE(result.code, 1);
    QCOMPARE(result.out, QByteArray());
    QCOMPARE(linesOf(result.err).size(), 1);
    QVERIFY2(result.err.contains("bench.json:3: there is no model \"TX99\""), result.err.constData());
}

void TestToolUsage::namesABenchThatCannotBeRead()
{
    const ToolResult result = ToolRunner().run(words("--bench missing.json find --type TX270"));
    QCOMPARE(result.code, 1);
    QCOMPARE(linesOf(result.err).size(), 1);
    QVERIFY2(result.err.contains("missing.json"), result.err.constData());
}

void TestToolUsage::theOptionOverridesTheEnvironment()
{
    const ToolRunner runner(Benches::of(Benches::laser(100)));
    runner.writeFile("other.json", Benches::of(Benches::usbLaser));
    const ToolResult fromEnvironment = runner.run(words("find --type TX270 --json"));
    QCOMPARE(jsonLines(fromEnvironment.out).value(0).value("serialNumber").toString(), QStringLiteral("1001"));
    const ToolResult fromOption = runner.run(words("find --type TX270 --json --bench other.json"));
    QCOMPARE(jsonLines(fromOption.out).size(), 1);
    QCOMPARE(jsonLines(fromOption.out).value(0).value("serialNumber").toString(), QStringLiteral("1003"));
}

void TestToolUsage::verboseShowsWhatTheLibraryLogs()
{
    const ToolRunner runner(Benches::of(Benches::laser(100)));
    const ToolResult quiet = runner.run(words("find --type TX270"));
    QCOMPARE(quiet.err, QByteArray("1 sensor found\n"));
    const ToolResult verbose = runner.run(words("--verbose find --type TX270"));
    QVERIFY2(verbose.err.contains("searching: "), verbose.err.constData());
    QCOMPARE(verbose.out, quiet.out);
}

void TestToolUsage::numbersHaveAPointInEveryLocale()
{
    if (!std::setlocale(LC_NUMERIC, "de_DE.UTF-8"))
        QSKIP("there is no locale with a comma here");
    std::setlocale(LC_NUMERIC, "C");
    ToolRunner runner(Benches::of(Benches::laser(100)));
    runner.setEnvironment("LC_ALL", "de_DE.UTF-8");
    const ToolResult result = runner.run(words("read TX270@RS232,port=COM3 -n 1 --silence 2.5 --csv -"));
    QVERIFY2(result.code == 0, result.err.constData());
    QVERIFY2(linesOf(result.out).value(1).endsWith(",12.5"), result.out.constData());
}

QTEST_GUILESS_MAIN(TestToolUsage)
#include "tst_toolusage.moc"
