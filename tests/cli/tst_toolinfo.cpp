// SPDX-License-Identifier: MIT
#include "benches.h"
#include "toolrunner.h"

#include <QJsonArray>

namespace {

const QByteArray twoSignals = R"({ "model": "TX270", "serialNumber": "1001",
    "place": { "interface": "RS232", "port": "COM3" }, "rate": 2500,
    "signals": [
        { "name": "Distance", "unit": "µm", "range": [0, 100], "rawRange": [0, 65519], "rawName": "Distance raw" },
        { "name": "Temperature", "unit": "°C", "range": [-40, 125], "major": false } ] })";

} // namespace

class TestToolInfo : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void reportsIdentityAndData();
    void reportsTheSameAsJson();
    void reportsTheRateOfModelsThatMeasureOnTheirOwn_data();
    void reportsTheRateOfModelsThatMeasureOnTheirOwn();
    void opensASensorHoweverItIsNamed_data();
    void opensASensorHoweverItIsNamed();
    void asksWhichWhenSeveralAnswer();
    void endsWithCode3WhenTheSearchFindsNone();
    void endsWithCode4WhenItDoesNotAnswer_data();
    void endsWithCode4WhenItDoesNotAnswer();
    void endsWithCode6WhenItRefuses_data();
    void endsWithCode6WhenItRefuses();
    void endsWithTheLibrarysTextWhenTheModelIsNotSupported();
};

void TestToolInfo::reportsIdentityAndData()
{
    const ToolResult result =
        ToolRunner(Benches::of(twoSignals)).run(words("info TX270@RS232,port=COM3,baudrate=115200"));
    QVERIFY2(result.code == 0, result.err.constData());
    QCOMPARE(result.err, QByteArray());
    const QByteArray text = result.out.simplified();
    for (const char *part :
         {"Tavrin TX270 TX270@RS232,port=COM3,baudrate=115200", "IP_Baudrate 115200", "IP_Port COM3",
          "SA_SerialNumber 1001", "2 values (at most 2), sample rate 2.5 kHz",
          "1 Distance 0 .. 100 µm Distance raw 0 .. 65519", "main value", "2 Temperature -40 .. 125 °C"})
        QVERIFY2(text.contains(part), (QByteArray(part) + " is missing in\n" + result.out).constData());
    QVERIFY2(!text.contains("S_Command"), "what the sensor was asked with is none of its parameters");
}

void TestToolInfo::reportsTheSameAsJson()
{
    const ToolResult result = ToolRunner(Benches::of(twoSignals)).run(words("info TX270@RS232,port=COM3 --json"));
    QCOMPARE(result.code, 0);
    const QJsonObject object = QJsonDocument::fromJson(result.out).object();
    QCOMPARE(object.value("model").toString(), QStringLiteral("TX270"));
    QCOMPARE(object.value("address").toString(), QStringLiteral("TX270@RS232,port=COM3"));
    QCOMPARE(object.value("interface").toObject().value("IP_Port").toString(), QStringLiteral("COM3"));
    const QJsonArray sensors = object.value("info").toArray();
    QCOMPARE(sensors.size(), 1);
    QVERIFY(sensors.first().toObject().contains("SA_SerialNumber"));
    QVERIFY(!sensors.first().toObject().contains("S_Command"));
    const QJsonObject frame = object.value("frame").toObject();
    QCOMPARE(frame.value("sampleRateKhz").toDouble(), 2.5);
    QCOMPARE(frame.value("valuesPerFrame").toInt(), 2);
    const QJsonObject temperature = frame.value("signals").toArray().at(1).toObject();
    QCOMPARE(temperature.value("name").toString(), QStringLiteral("Temperature"));
    QCOMPARE(temperature.value("unit").toString(), QStringLiteral("°C"));
    QCOMPARE(temperature.value("rangeMin").toDouble(), -40.0);
    QCOMPARE(temperature.value("major").toBool(true), false);
}

void TestToolInfo::reportsTheRateOfModelsThatMeasureOnTheirOwn_data()
{
    QTest::addColumn<QByteArray>("model");
    QTest::addColumn<QByteArray>("settings");
    QTest::addColumn<double>("rateKhz");
    QTest::newRow("RG52x at 10 Hz") << QByteArray("RG52x")
                                    << QByteArray(R"("Autostart": { "SA_AutostartCommand": 2 })") << 0.01;
    QTest::newRow("RG52x at 50 Hz") << QByteArray("RG52x")
                                    << QByteArray(R"("Autostart": { "SA_AutostartCommand": 3 })") << 0.05;
    QTest::newRow("RG53x, distance") << QByteArray("RG53x")
                                     << QByteArray(R"("MeasFrequency": { "SA_MeasFrequency": 1000 },
                                                      "Average": { "SA_Average": 10 })")
                                     << 0.1;
    QTest::newRow("RG53x, speed") << QByteArray("RG53x")
                                  << QByteArray(R"("Autostart": { "SA_AutostartCommand": 5 },
                                                   "MeasFrequency": { "SA_MeasFrequency": 1000 },
                                                   "Average": { "SA_Average": 10 })")
                                  << 0.004;
}

void TestToolInfo::reportsTheRateOfModelsThatMeasureOnTheirOwn()
{
    QFETCH(QByteArray, model);
    QFETCH(QByteArray, settings);
    QFETCH(double, rateKhz);
    const ToolRunner runner(Benches::of(R"({ "model": ")" + model + R"(", "serialNumber": "7",
        "place": { "interface": "RS232", "port": "COM5" }, "settings": { )" +
                                        settings + " } }"));
    const ToolResult result =
        runner.run({"info", "--json", "--type", QString::fromLatin1(model), "--port", "COM5"});
    QVERIFY2(result.code == 0, result.err.constData());
    const QJsonObject frame = QJsonDocument::fromJson(result.out).object().value("frame").toObject();
    QCOMPARE(frame.value("sampleRateKhz").toDouble(), rateKhz);
}

void TestToolInfo::opensASensorHoweverItIsNamed_data()
{
    QTest::addColumn<QString>("line");
    const auto row = [](const char *line) { QTest::newRow(line) << QString::fromLatin1(line); };
    row("info TX270@RS232,port=COM3");
    row("info --type TX270 --port COM3");
    row("info --type TX270 --interface RS232 --port COM3 --baudrate 115200");
    row("info --type 41 --param IP_Interface=RS232 --param IP_Port=COM3");
    row("info --type TX270 --serial 1001");
    row("info --group Tavrin --serial 1001");
    row("info --type TX270");
}

void TestToolInfo::opensASensorHoweverItIsNamed()
{
    QFETCH(QString, line);
    const ToolRunner runner(Benches::of(twoSignals));
    const ToolResult result = runner.run(line.split(QLatin1Char(' ')));
    QVERIFY2(result.code == 0, result.err.constData());
    QVERIFY2(result.out.simplified().contains("SA_SerialNumber 1001"), result.out.constData());
}

void TestToolInfo::asksWhichWhenSeveralAnswer()
{
    const ToolRunner runner(Benches::of(twoSignals + "," + Benches::usbLaser));
    const ToolResult result = runner.run(words("info --type TX270"));
    QCOMPARE(result.code, 2);
    QCOMPARE(result.out, QByteArray());
    QVERIFY2(result.err.startsWith("sondixqt: the search found 2 sensors; name one of them:\n"),
             result.err.constData());
    QVERIFY(result.err.contains("\n  TX270@RS232,port=COM3"));
    QVERIFY(result.err.contains("\n  TX270@WinUSB,device=0"));
}

void TestToolInfo::endsWithCode3WhenTheSearchFindsNone()
{
    const ToolRunner runner(Benches::of(twoSignals));
    const ToolResult bySerial = runner.run(words("info --type TX270 --serial 7"));
    QCOMPARE(bySerial.code, 3);
    QCOMPARE(bySerial.err, QByteArray("sondixqt: the search found no sensor with the serial number 7\n"));
    const ToolResult byType = runner.run(words("read --type MC340"));
    QCOMPARE(byType.code, 3);
    QCOMPARE(byType.err, QByteArray("sondixqt: the search found no such sensor\n"));
}

void TestToolInfo::endsWithCode4WhenItDoesNotAnswer_data()
{
    QTest::addColumn<QString>("line");
    QTest::newRow("info") << "info TX270@RS232,port=COM4";
    QTest::newRow("read") << "read TX270@RS232,port=COM4";
    QTest::newRow("another model is there") << "info TX280@RS232,port=COM3";
}

void TestToolInfo::endsWithCode4WhenItDoesNotAnswer()
{
    QFETCH(QString, line);
    const ToolResult result = ToolRunner(Benches::of(twoSignals)).run(line.split(QLatin1Char(' ')));
    QCOMPARE(result.code, 4);
    QCOMPARE(result.out, QByteArray());
    QCOMPARE(linesOf(result.err).size(), 1);
    const QByteArray address = line.section(QLatin1Char(' '), 1).toUtf8();
    QVERIFY2(result.err.startsWith("sondixqt: cannot open " + address + ": "), result.err.constData());
    QVERIFY(result.err.size() > QByteArray("sondixqt: cannot open : \n").size() + address.size());
}

void TestToolInfo::endsWithCode6WhenItRefuses_data()
{
    QTest::addColumn<QString>("command");
    QTest::newRow("no description of its data") << "Get_TransmittedDataInfo";
    QTest::newRow("no sample rate") << "Get_Samplerate";
}

void TestToolInfo::endsWithCode6WhenItRefuses()
{
    QFETCH(QString, command);
    const QByteArray faults =
        R"("faults": [ { "command": ")" + command.toUtf8() + R"(", "code": -77, "text": "it is tired" } ])";
    const ToolResult result =
        ToolRunner(Benches::of(Benches::laser(100, faults))).run(words("info TX270@RS232,port=COM3"));
    QCOMPARE(result.code, 6);
    QCOMPARE(linesOf(result.err).size(), 1);
    QVERIFY2(result.err.contains("it is tired"), result.err.constData());
}

void TestToolInfo::endsWithTheLibrarysTextWhenTheModelIsNotSupported()
{
    const ToolResult result =
        ToolRunner(Benches::of(twoSignals)).run(words("info --type File --param IP_Interface=X"));
    QCOMPARE(result.code, 1);
    QCOMPARE(linesOf(result.err).size(), 1);
    QCOMPARE(result.out, QByteArray());
}

QTEST_GUILESS_MAIN(TestToolInfo)
#include "tst_toolinfo.moc"
