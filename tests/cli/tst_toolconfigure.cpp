// SPDX-License-Identifier: MIT
#include "benches.h"
#include "toolrunner.h"

#include <QJsonArray>

namespace {

const char *const ethernetLaser = "TX260@TCP/IP,address=192.168.0.20";
const QByteArray triggeredLaser = R"({ "model": "TX260", "serialNumber": "1260",
    "place": { "interface": "TCP/IP", "ip": "192.168.0.20" },
    "settings": { "MeasureMode": { "SA_MeasureMode": 1 }, "TriggerMode": { "SA_TriggerMode": 1 },
                  "SyncMode": { "SA_SyncMode": 2 } } })";

QByteArray refusing(const char *command)
{
    return QByteArray(R"("faults": [ { "command": ")") + command + R"(", "code": -77, "text": "it is tired" } ])";
}

QByteArray wholeBench()
{
    return Benches::of(Benches::laser(100) + "," + triggeredLaser + "," + Benches::controller);
}

} // namespace

class TestToolConfigure : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void paramsReportsAllSettings();
    void paramsFallsBackToWhatTheSensorToldWhenOpened();
    void getPrintsTheWholeAnswer();
    void getPrintsOneValue_data();
    void getPrintsOneValue();
    void getReportsAMissingAnswer();
    void getAsksASensorNamedByOptions();
    void setIsSilent();
    void setReportsAsJsonWhatItSent();
    void execPrintsTheAnswer();
    void modeListsAndSwitches_data();
    void modeListsAndSwitches();
    void modeReportsAsJson();
    void modeRefusesUnknownModes_data();
    void modeRefusesUnknownModes();
    void modeSaysThatAModelHasOneOnly();
    void triggerAndSyncReportAndSwitchOff_data();
    void triggerAndSyncReportAndSwitchOff();
    void reportsWhenTheStateIsNotKnown();
    void aQueryThatSucceedsLaterHidesNoFailure();
    void endsWithCode6WhenTheSensorRefuses_data();
    void endsWithCode6WhenTheSensorRefuses();
    void endsWithCode4WhenTheSensorIsNotThere_data();
    void endsWithCode4WhenTheSensorIsNotThere();
    void wrongUseReachesNoSensor();
};

void TestToolConfigure::paramsReportsAllSettings()
{
    const ToolRunner runner(wholeBench());
    const ToolResult text = runner.run(with(Benches::laserAddress, "params"));
    QVERIFY2(text.code == 0, text.err.constData());
    QCOMPARE(text.err, QByteArray());
    QVERIFY2(text.out.simplified().contains("SA_TriggerMode 0"), text.out.constData());
    const ToolResult json = runner.run(with(Benches::laserAddress, "params --json"));
    QCOMPARE(json.code, 0);
    QCOMPARE(objectOf(json).value("model").toString(), QStringLiteral("TX270"));
    QCOMPARE(objectOf(json).value("address").toString(), QString::fromLatin1(Benches::laserAddress));
    QCOMPARE(objectOf(json).value("complete").toBool(), true);
    const QJsonArray parameters = objectOf(json).value("parameters").toArray();
    QCOMPARE(parameters.size(), 1);
    QCOMPARE(parameters.first().toObject().value("SA_LaserPower").toInt(), 1);
    QVERIFY(!parameters.first().toObject().contains("S_Command"));
}

void TestToolConfigure::paramsFallsBackToWhatTheSensorToldWhenOpened()
{
    const QByteArray old = R"({ "model": "CP730", "serialNumber": "2300551",
        "place": { "interface": "RS232", "port": "COM6", "baudrate": 230400 } })";
    const ToolRunner runner(Benches::of(old));
    const ToolResult text = runner.run(words("params CP730@RS232,port=COM6,baudrate=230400"));
    QVERIFY2(text.code == 0, text.err.constData());
    QVERIFY2(text.out.simplified().contains("SA_SerialNumber 2300551"), text.out.constData());
    QVERIFY2(!text.out.contains("S_Command"), text.out.constData());
    QCOMPARE(linesOf(text.err).size(), 1);
    QVERIFY2(text.err.startsWith("CP730 cannot report all its parameters at once"), text.err.constData());
    const ToolResult json = runner.run(words("params CP730@RS232,port=COM6,baudrate=230400 --json"));
    QCOMPARE(objectOf(json).value("complete").toBool(true), false);
}

void TestToolConfigure::getPrintsTheWholeAnswer()
{
    const ToolRunner runner(wholeBench());
    const ToolResult text = runner.run(with(Benches::laserAddress, "get Get_Info"));
    QVERIFY2(text.code == 0, text.err.constData());
    QVERIFY2(text.out.simplified().contains("SA_SerialNumber 1001"), text.out.constData());
    const ToolResult json = runner.run(with(Benches::laserAddress, "get Get_Info --json"));
    QCOMPARE(objectOf(json).value("command").toString(), QStringLiteral("Get_Info"));
    const QJsonObject answer = objectOf(json).value("answer").toObject();
    QCOMPARE(answer.value("SA_SerialNumber").toString(), QStringLiteral("1001"));
}

void TestToolConfigure::getPrintsOneValue_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QByteArray>("value");
    QTest::newRow("text") << "get Get_Info SA_SerialNumber" << QByteArray("1001\n");
    QTest::newRow("integer") << "get Get_LaserPower SA_LaserPower" << QByteArray("1\n");
    QTest::newRow("decimal number, of 100 Hz in kHz") << "get Get_Samplerate SA_Measrate" << QByteArray("0.1\n");
}

void TestToolConfigure::getPrintsOneValue()
{
    QFETCH(QString, line);
    QFETCH(QByteArray, value);
    const ToolResult result = ToolRunner(wholeBench()).run(with(Benches::laserAddress, qPrintable(line)));
    QVERIFY2(result.code == 0, result.err.constData());
    QCOMPARE(result.out, value);
    QCOMPARE(result.err, QByteArray());
}

void TestToolConfigure::getReportsAMissingAnswer()
{
    const ToolResult result =
        ToolRunner(wholeBench()).run(with(Benches::laserAddress, "get Get_Info SA_SerialNumbre"));
    QCOMPARE(result.code, 6);
    QCOMPARE(result.out, QByteArray());
    QCOMPARE(result.err, QByteArray("sondixqt: the answer to Get_Info has no 'SA_SerialNumbre'; did you mean "
                                    "SA_SerialNumber?\n"));
}

void TestToolConfigure::getAsksASensorNamedByOptions()
{
    const ToolRunner runner(wholeBench());
    for (const char *line : {"get --type TX270 --port COM3 Get_Info SA_SerialNumber",
                             "get Get_Info SA_SerialNumber --type TX270 --serial 1001"}) {
        const ToolResult result = runner.run(words(line));
        QVERIFY2(result.code == 0, result.err.constData());
        QCOMPARE(result.out, QByteArray("1001\n"));
    }
}

void TestToolConfigure::setIsSilent()
{
    const ToolRunner runner(wholeBench());
    for (const char *line :
         {"set Set_LaserPower SP_LaserPower=2", "set Set_Averaging SP_AveragingType=1 SP_AveragingNumber=4"}) {
        const ToolResult result = runner.run(with(Benches::laserAddress, line));
        QVERIFY2(result.code == 0, result.err.constData());
        QCOMPARE(result.out, QByteArray());
        QCOMPARE(result.err, QByteArray());
    }
}

void TestToolConfigure::setReportsAsJsonWhatItSent()
{
    const ToolResult result =
        ToolRunner(wholeBench()).run(with(Benches::laserAddress, "set Set_LaserPower SP_LaserPower=2 --json"));
    QVERIFY2(result.code == 0, result.err.constData());
    QCOMPARE(objectOf(result).value("command").toString(), QStringLiteral("Set_LaserPower"));
    QCOMPARE(objectOf(result).value("parameters").toObject(), (QJsonObject{{"SP_LaserPower", 2}}));
}

void TestToolConfigure::execPrintsTheAnswer()
{
    const ToolRunner runner(wholeBench());
    const ToolResult answer = runner.run(with(Benches::laserAddress, "exec Get_LaserPower"));
    QVERIFY2(answer.code == 0, answer.err.constData());
    QCOMPARE(answer.out.simplified(), QByteArray("SA_LaserPower 1"));
    const ToolResult nothing = runner.run(with(Benches::laserAddress, "exec Clear_Buffers"));
    QCOMPARE(nothing.code, 0);
    QCOMPARE(nothing.out, QByteArray());
    const ToolResult json = runner.run(with(Benches::laserAddress, "exec Set_LaserPower SP_LaserPower=0 --json"));
    QCOMPARE(json.code, 0);
    QCOMPARE(objectOf(json).value("parameters").toObject(), (QJsonObject{{"SP_LaserPower", 0}}));
    QVERIFY(objectOf(json).value("answer").isObject());
}

void TestToolConfigure::modeListsAndSwitches_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QByteArray>("current");
    QTest::newRow("list") << "mode" << QByteArray("1 Distance direct current");
    QTest::newRow("by name") << "mode Thickness" << QByteArray("2 Thickness current");
    QTest::newRow("in any letter case") << "mode THICKNESS" << QByteArray("2 Thickness current");
    QTest::newRow("by a name of two words") << "mode Distance diffuse" << QByteArray("0 Distance diffuse current");
    QTest::newRow("by number") << "mode 0" << QByteArray("0 Distance diffuse current");
}

void TestToolConfigure::modeListsAndSwitches()
{
    QFETCH(QString, line);
    QFETCH(QByteArray, current);
    const ToolResult result = ToolRunner(wholeBench()).run(with(ethernetLaser, qPrintable(line)));
    QVERIFY2(result.code == 0, result.err.constData());
    const QList<QByteArray> lines = linesOf(result.out);
    QCOMPARE(lines.size(), 4);
    QList<QByteArray> marked;
    for (const QByteArray &one : lines)
        if (one.endsWith("current"))
            marked += one.simplified();
    QCOMPARE(marked, QList<QByteArray>{current});
}

void TestToolConfigure::modeReportsAsJson()
{
    const ToolResult result = ToolRunner(wholeBench()).run(with(ethernetLaser, "mode --json"));
    QCOMPARE(result.code, 0);
    QCOMPARE(objectOf(result).value("current").toInt(-1), 1);
    const QJsonArray modes = objectOf(result).value("modes").toArray();
    QCOMPARE(modes.size(), 4);
    QCOMPARE(modes.at(3).toObject(), (QJsonObject{{"number", 3}, {"name", "Video"}}));
}

void TestToolConfigure::modeRefusesUnknownModes_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<int>("code");
    QTest::addColumn<QByteArray>("sentence");
    QTest::newRow("misspelt") << "mode Thicknes" << 2
                              << QByteArray("there is no measuring mode 'Thicknes'; did you mean Thickness?");
    QTest::newRow("unlike any") << "mode Loudness of voice" << 2
                                << QByteArray("the modes are Distance diffuse, Distance direct, Thickness, Video");
    QTest::newRow("number") << "mode 17" << 2 << QByteArray("there is no measuring mode '17'");
}

void TestToolConfigure::modeRefusesUnknownModes()
{
    QFETCH(QString, line);
    QFETCH(int, code);
    QFETCH(QByteArray, sentence);
    const ToolResult result = ToolRunner(wholeBench()).run(with(ethernetLaser, qPrintable(line)));
    QCOMPARE(result.code, code);
    QCOMPARE(result.out, QByteArray());
    QVERIFY2(result.err.contains(sentence), result.err.constData());
}

void TestToolConfigure::modeSaysThatAModelHasOneOnly()
{
    const ToolRunner runner(wholeBench());
    const ToolResult list = runner.run(with(Benches::laserAddress, "mode"));
    QCOMPARE(list.code, 0);
    QCOMPARE(list.out, QByteArray());
    QCOMPARE(list.err, QByteArray("TX270 has no measuring modes to choose from\n"));
    QCOMPARE(runner.run(with(Benches::laserAddress, "mode Video")).code, 2);
    const ToolResult number = runner.run(with(Benches::laserAddress, "mode 1"));
    QCOMPARE(number.code, 6);
    QVERIFY2(number.err.startsWith("sondixqt: the sensor refuses the measuring mode 1: "), number.err.constData());
    const ToolResult json = runner.run(with(Benches::laserAddress, "mode --json"));
    QCOMPARE(objectOf(json).value("modes"), QJsonValue(QJsonArray()));
    QVERIFY(objectOf(json).value("current").isNull());
}

void TestToolConfigure::triggerAndSyncReportAndSwitchOff_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("line");
    QTest::addColumn<QByteArray>("sentence");
    QTest::addColumn<QString>("key");
    QTest::addColumn<bool>("on");
    const auto row = [](const char *name, const char *address, const char *line, const char *sentence,
                        const char *key, bool on) {
        QTest::newRow(name) << QString::fromLatin1(address) << QString::fromLatin1(line)
                            << QByteArray(sentence) + '\n'
                            << QString::fromLatin1(key) << on;
    };
    row("trigger is on", ethernetLaser, "trigger", "the sensor waits for an external trigger", "trigger", true);
    row("trigger off", ethernetLaser, "trigger off", "the sensor measures without a trigger", "trigger", false);
    row("trigger is off", Benches::laserAddress, "trigger", "the sensor measures without a trigger", "trigger",
        false);
    row("sync is on", ethernetLaser, "sync", "the sensor is synchronised with others", "sync", true);
    row("sync off", ethernetLaser, "sync off", "the sensor measures on its own", "sync", false);
    row("sync is off", Benches::controllerAddress, "sync", "the sensor measures on its own", "sync", false);
}

void TestToolConfigure::triggerAndSyncReportAndSwitchOff()
{
    QFETCH(QString, address);
    QFETCH(QString, line);
    QFETCH(QByteArray, sentence);
    QFETCH(QString, key);
    QFETCH(bool, on);
    const ToolRunner runner(wholeBench());
    const QStringList arguments = with(qPrintable(address), qPrintable(line));
    const ToolResult text = runner.run(arguments);
    QVERIFY2(text.code == 0, text.err.constData());
    QCOMPARE(text.out, sentence);
    const ToolResult json = runner.run(arguments + words("--json"));
    QCOMPARE(json.code, 0);
    QVERIFY(objectOf(json).value(key).isBool());
    QCOMPARE(objectOf(json).value(key).toBool(), on);
}

void TestToolConfigure::reportsWhenTheStateIsNotKnown()
{
    const ToolRunner runner(Benches::of(Benches::laser(100, refusing("Get_TriggerMode"))));
    const ToolResult state = runner.run(with(Benches::laserAddress, "trigger"));
    QCOMPARE(state.code, 6);
    QCOMPARE(state.out, QByteArray());
    QCOMPARE(state.err, QByteArray("sondixqt: the sensor does not report its state: it is tired\n"));
    QCOMPARE(runner.run(with(Benches::laserAddress, "trigger off")).code, 0);
}

void TestToolConfigure::aQueryThatSucceedsLaterHidesNoFailure()
{
    QByteArray sensor = triggeredLaser;
    sensor.insert(sensor.lastIndexOf('}'), ", " + refusing("Get_TriggerMode"));
    const ToolResult state = ToolRunner(Benches::of(sensor)).run(with(ethernetLaser, "trigger"));
    QCOMPARE(state.code, 6);
    QCOMPARE(state.out, QByteArray());
    QCOMPARE(state.err, QByteArray("sondixqt: the sensor does not report its state: it is tired\n"));
}

void TestToolConfigure::endsWithCode6WhenTheSensorRefuses_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QByteArray>("refused");
    QTest::addColumn<QByteArray>("sentence");
    const auto row = [](const char *line, const char *refused, const char *sentence) {
        QTest::newRow(line) << QString::fromLatin1(line) << QByteArray(refused) << QByteArray(sentence);
    };
    row("params", "Get_AllParameters", "the sensor refuses Get_AllParameters: it is tired");
    row("get Get_LaserPower", "Get_LaserPower", "the sensor refuses Get_LaserPower: it is tired");
    row("set Set_LaserPower SP_LaserPower=2", "Set_LaserPower", "the sensor refuses Set_LaserPower: it is tired");
    row("exec Clear_Buffers", "Clear_Buffers", "the sensor refuses Clear_Buffers: it is tired");
    row("trigger off", "Update_TriggerMode", "the sensor refuses to switch the trigger off: it is tired");
    row("sync off", "", "the sensor refuses to switch the synchronisation off: ");
    row("get Get_Weather", "", "the sensor refuses Get_Weather: ");
    row("set Set_Samplerate SP_Measrate=100000.0", "", "the sensor refuses Set_Samplerate: ");
    row("set Set_Samplerate SP_Weather=1", "", "the sensor refuses Set_Samplerate: ");
    row("exec Set_LaserPower SP_LaserPower=much", "", "the sensor refuses Set_LaserPower: ");
}

void TestToolConfigure::endsWithCode6WhenTheSensorRefuses()
{
    QFETCH(QString, line);
    QFETCH(QByteArray, refused);
    QFETCH(QByteArray, sentence);
    const QByteArray faults = refused.isEmpty() ? QByteArray() : refusing(refused.constData());
    const ToolRunner runner(Benches::of(Benches::laser(100, faults)));
    for (const char *option : {"", " --json"}) {
        const ToolResult result =
            runner.run(with(Benches::laserAddress, QByteArray(line.toLatin1() + option).constData()));
        QCOMPARE(result.code, 6);
        QCOMPARE(result.out, QByteArray());
        QCOMPARE(linesOf(result.err).size(), 1);
        QVERIFY2(result.err.startsWith("sondixqt: " + sentence), result.err.constData());
    }
}

void TestToolConfigure::endsWithCode4WhenTheSensorIsNotThere_data()
{
    QTest::addColumn<QString>("line");
    for (const char *line :
         {"params", "get Get_Info", "set Set_X SP_X=1", "exec Set_X", "mode", "trigger", "sync off"})
        QTest::newRow(line) << QString::fromLatin1(line);
}

void TestToolConfigure::endsWithCode4WhenTheSensorIsNotThere()
{
    QFETCH(QString, line);
    const ToolResult result = ToolRunner(wholeBench()).run(with("TX270@RS232,port=COM9", qPrintable(line)));
    QCOMPARE(result.code, 4);
    QCOMPARE(result.out, QByteArray());
    QVERIFY2(result.err.startsWith("sondixqt: cannot open TX270@RS232,port=COM9: "), result.err.constData());
}

void TestToolConfigure::wrongUseReachesNoSensor()
{
    // The bench has no such sensor, so any error other than wrong usage would mean that the tool tried to open it.
    for (const char *line : {"set Set_X SP_X", "exec Set_X SP_X", "get Set_X", "trigger on", "sync on"}) {
        const ToolResult result = ToolRunner(wholeBench()).run(with("TX270@RS232,port=COM9", line));
        QVERIFY2(result.code == 2, line);
    }
}

QTEST_GUILESS_MAIN(TestToolConfigure)
#include "tst_toolconfigure.moc"
