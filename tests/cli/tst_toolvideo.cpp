// SPDX-License-Identifier: MIT
#include "benches.h"
#include "toolrunner.h"

#include <QImage>
#include <QJsonArray>

namespace {

// A model that sends video in one of its modes only; its sensor is in another mode.
const QByteArray modal = R"({ "model": "TX260", "serialNumber": "1260",
    "place": { "interface": "TCP/IP", "ip": "192.168.0.20" },
    "settings": { "OutputVideo_ETH": { "SA_OutputVideoRaw_ETH": 1, "SA_OutputVideoCorr_ETH": 1 } } })";
const char *const modalAddress = "TX260@TCP/IP,address=192.168.0.20";

QByteArray controllerRefusing(const char *command)
{
    QByteArray sensor = Benches::controller;
    sensor.chop(1);
    return sensor + R"(, "faults": [ { "command": ")" + command + R"(", "code": -77, "text": "it is tired" } ] })";
}

QJsonObject signalOf(const ToolResult &result, int position)
{
    return objectOf(result).value("signals").toArray().at(position).toObject();
}

} // namespace

class TestToolVideo : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void listsSignalsWithTheirState();
    void listsSignalsAsJson();
    void switchesASignalOn_data();
    void switchesASignalOn();
    void drawsALineIntoAPicture();
    void writesALineAsCsv();
    void drawsALineAsText();
    void reportsThePixelsAsJson();
    void drawsTheSignalThatIsAskedFor();
    void drawsASensorWhoseModeItSwitches();
    void drawsAModelThatHasNoSwitch();
    void explainsWhyThereIsNoVideo_data();
    void explainsWhyThereIsNoVideo();
    void endsWithCode6WhenTheSensorRefuses_data();
    void endsWithCode6WhenTheSensorRefuses();
    void leavesNothingHalfWritten();
};

void TestToolVideo::listsSignalsWithTheirState()
{
    const ToolResult result =
        ToolRunner(Benches::of(Benches::controller)).run(with(Benches::controllerAddress, "video"));
    QVERIFY2(result.code == 0, result.err.constData());
    const QList<QByteArray> lines = linesOf(result.out);
    QCOMPARE(lines.size(), 7);
    QCOMPARE(lines[0].simplified(), QByteArray("# SIGNAL STATE"));
    QCOMPARE(lines[1].simplified(), QByteArray("0 OutputVideoRaw_Ch1 off"));
    QCOMPARE(lines[6].simplified(), QByteArray("5 OutputVideoLight_Ch2 off"));
    QCOMPARE(result.err, QByteArray("lines of 512 pixels with 4096 steps; video mode on\n"));
    const ToolResult none = ToolRunner(Benches::of(Benches::laser(100))).run(words("video TX270@RS232,port=COM3"));
    QCOMPARE(none.code, 0);
    QCOMPARE(none.out, QByteArray());
    QCOMPARE(none.err, QByteArray("TX270 has no video\n"));
}

void TestToolVideo::listsSignalsAsJson()
{
    const ToolResult result =
        ToolRunner(Benches::of(Benches::controller)).run(with(Benches::controllerAddress, "video --json"));
    QCOMPARE(result.code, 0);
    QCOMPARE(result.err, QByteArray());
    const QJsonObject object = objectOf(result);
    QCOMPARE(object.value("model").toString(), QStringLiteral("CC480"));
    QCOMPARE(object.value("pixels").toInt(), 512);
    QCOMPARE(object.value("resolution").toInt(), 4096);
    QCOMPARE(object.value("supported").toBool(), true);
    QCOMPARE(object.value("signals").toArray().size(), 6);
    QCOMPARE(signalOf(result, 3), (QJsonObject{{"position", 3}, {"name", "OutputVideoRaw_Ch2"}, {"on", false}}));
    QVERIFY(!object.contains("line"));
}

void TestToolVideo::switchesASignalOn_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<int>("position");
    QTest::newRow("by position") << "video --on 3" << 3;
    QTest::newRow("by name") << "video --on OutputVideoDark_Ch1" << 1;
    QTest::newRow("by its short name in any letter case") << "video --on light_ch2" << 5;
}

void TestToolVideo::switchesASignalOn()
{
    QFETCH(QString, line);
    QFETCH(int, position);
    const ToolResult result = ToolRunner(Benches::of(Benches::controller))
                                  .run(with(Benches::controllerAddress, qPrintable(line)) << "--json");
    QVERIFY2(result.code == 0, result.err.constData());
    for (int i = 0; i < 6; ++i)
        QCOMPARE(signalOf(result, i).value("on").toBool(), i == position);
}

void TestToolVideo::drawsALineIntoAPicture()
{
    ToolRunner runner(Benches::of(Benches::controller));
    runner.setEnvironment("DISPLAY", QString());
    runner.setEnvironment("QT_QPA_PLATFORM", QString());
    const ToolResult result = runner.run(with(Benches::controllerAddress, "video --on 0 --line line.png"));
    QVERIFY2(result.code == 0, result.err.constData());
    QCOMPARE(result.out, QByteArray());
    QCOMPARE(result.err, QByteArray("one line of OutputVideoRaw_Ch1, 512 pixels\n"));
    QCOMPARE(runner.files(), (QStringList{"bench.json", "line.png"}));
    const QImage picture(runner.path("line.png"), "PNG");
    QVERIFY(!picture.isNull());
    QVERIFY(picture.width() > 512);
}

void TestToolVideo::writesALineAsCsv()
{
    const ToolRunner runner(Benches::of(Benches::controller));
    const ToolResult result = runner.run(with(Benches::controllerAddress, "video --on 0 --line line.csv"));
    QVERIFY2(result.code == 0, result.err.constData());
    QCOMPARE(runner.files(), (QStringList{"bench.json", "line.csv"}));
    const QList<QByteArray> lines = linesOf(runner.contentOf("line.csv"));
    QCOMPARE(lines.size(), 5 + 512);
    QCOMPARE(lines[0], QByteArray("# Video line of OutputVideoRaw_Ch1"));
    QCOMPARE(lines[1], "# " + QByteArray(Benches::controllerAddress));
    QCOMPARE(lines[3], QByteArray("# simulated"));
    QCOMPARE(lines[4], QByteArray("pixel,value"));
    int highest = 0;
    for (int i = 0; i < 512; ++i) {
        const QList<QByteArray> cells = lines[5 + i].split(',');
        QCOMPARE(cells.value(0).toInt(), i);
        highest = qMax(highest, cells.value(1).toInt());
    }
    QVERIFY(highest > 1000 && highest < 4096);
}

void TestToolVideo::drawsALineAsText()
{
    const ToolRunner runner(Benches::of(Benches::controller));
    const ToolResult result = runner.run(with(Benches::controllerAddress, "video --on 0 --line -"));
    QVERIFY2(result.code == 0, result.err.constData());
    const QList<QByteArray> lines = linesOf(result.out);
    QCOMPARE(lines.size(), 18);
    QVERIFY2(lines.first().startsWith("4095 |"), result.out.constData());
    QVERIFY2(lines.last().endsWith(" 511"), result.out.constData());
    QVERIFY2(result.out.contains('#'), result.out.constData());
    QCOMPARE(runner.files(), QStringList{"bench.json"});
}

void TestToolVideo::reportsThePixelsAsJson()
{
    const ToolRunner runner(Benches::of(Benches::controller));
    const ToolResult result = runner.run(with(Benches::controllerAddress, "video --on 0 --line - --json"));
    QVERIFY2(result.code == 0, result.err.constData());
    const QJsonObject line = objectOf(result).value("line").toObject();
    QCOMPARE(line.value("position").toInt(-1), 0);
    QCOMPARE(line.value("name").toString(), QStringLiteral("OutputVideoRaw_Ch1"));
    const QJsonArray values = line.value("values").toArray();
    QCOMPARE(values.size(), 512);
    int highest = 0;
    for (const QJsonValue value : values) {
        QVERIFY(value.toInt(-1) >= 0 && value.toInt() < 4096);
        highest = qMax(highest, value.toInt());
    }
    QVERIFY2(highest > 0, "a sensor that measures sees light");
}

void TestToolVideo::drawsTheSignalThatIsAskedFor()
{
    const ToolRunner runner(Benches::of(modal));
    for (const char *name : {"Raw", "Corr"}) {
        const ToolResult result = runner.run(with(modalAddress, "video --video-mode --line - --json --signal")
                                             << QString::fromLatin1(name));
        QVERIFY2(result.code == 0, result.err.constData());
        QCOMPARE(objectOf(result).value("line").toObject().value("name").toString(),
                 QStringLiteral("OutputVideo") + QString::fromLatin1(name));
    }
    const ToolResult first = runner.run(with(modalAddress, "video --video-mode --line -"));
    QCOMPARE(first.err, QByteArray("one line of OutputVideoRaw, 512 pixels\n"));
}

void TestToolVideo::drawsASensorWhoseModeItSwitches()
{
    const ToolRunner runner(Benches::of(modal));
    const ToolResult before = runner.run(with(modalAddress, "video --json"));
    QCOMPARE(objectOf(before).value("videoMode").toBool(true), false);
    const ToolResult after = runner.run(with(modalAddress, "video --video-mode --json"));
    QCOMPARE(objectOf(after).value("videoMode").toBool(false), true);
    const ToolResult refused = runner.run(with(modalAddress, "video --line -"));
    QCOMPARE(refused.code, 1);
    QVERIFY2(refused.err.contains("'--video-mode' switches to one"), refused.err.constData());
}

void TestToolVideo::drawsAModelThatHasNoSwitch()
{
    const QByteArray sensor = R"({ "model": "TX240", "serialNumber": "2404410",
        "place": { "interface": "RS232", "port": "COM3" } })";
    const ToolResult result = ToolRunner(Benches::of(sensor)).run(words("video TX240@RS232,port=COM3 --line -"));
    QVERIFY2(result.code == 0, result.err.constData());
    QVERIFY2(linesOf(result.out).last().endsWith(" 127"), result.out.constData());
}

void TestToolVideo::explainsWhyThereIsNoVideo_data()
{
    QTest::addColumn<QByteArray>("sensor");
    QTest::addColumn<QString>("line");
    QTest::addColumn<int>("code");
    QTest::addColumn<QByteArray>("sentence");
    const auto row = [](const char *name, const QByteArray &sensor, const char *line, int code,
                        const char *sentence) {
        QTest::newRow(name) << sensor << QString::fromLatin1(line) << code << QByteArray(sentence);
    };
    const QByteArray serialController = R"({ "model": "CC430", "serialNumber": "3",
        "place": { "interface": "RS232", "port": "COM3" } })";
    const QByteArray networkController = Benches::controller;
    row("no video", Benches::laser(100), "video TX270@RS232,port=COM3 --on 0", 1, "TX270 has no video");
    row("not over this interface", serialController, "video CC430@RS232,port=COM3 --on 0", 1,
        "video is not available over this interface");
    row("off", networkController, "video CC480@TCP/IP,address=192.168.0.10 --line -", 1,
        "OutputVideoRaw_Ch1 is off; '--on 0' switches it on");
    row("another is on", networkController, "video CC480@TCP/IP,address=192.168.0.10 --on 0 --signal 1 --line -",
        1, "OutputVideoDark_Ch1 is off; '--on 1' switches it on");
    row("no such name", networkController, "video CC480@TCP/IP,address=192.168.0.10 --on Sound", 2,
        "there is no video signal 'Sound'; the signals are OutputVideoRaw_Ch1, ");
    row("no such position", networkController, "video CC480@TCP/IP,address=192.168.0.10 --on 6", 2,
        "there is no video signal '6'");
    row("not there", Benches::laser(100), "video CC480@TCP/IP,address=192.168.0.10", 4, "cannot open CC480@");
}

void TestToolVideo::explainsWhyThereIsNoVideo()
{
    QFETCH(QByteArray, sensor);
    QFETCH(QString, line);
    QFETCH(int, code);
    QFETCH(QByteArray, sentence);
    const ToolResult result = ToolRunner(Benches::of(sensor)).run(words(qPrintable(line)));
    QCOMPARE(result.code, code);
    QCOMPARE(result.out, QByteArray());
    QVERIFY2(result.err.contains(sentence), result.err.constData());
}

void TestToolVideo::endsWithCode6WhenTheSensorRefuses_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QByteArray>("sentence");
    QTest::newRow("the switch") << QByteArray("Update_Output_ETH")
                                << QByteArray("the sensor refuses to switch the video signal on: it is tired");
    QTest::newRow("the line") << QByteArray("Get_Video")
                              << QByteArray("the sensor refuses Get_Video: it is tired");
    QTest::newRow("the description") << QByteArray("Get_TransmittedDataInfo")
                                     << QByteArray("the sensor does not describe its data: it is tired");
}

void TestToolVideo::endsWithCode6WhenTheSensorRefuses()
{
    QFETCH(QByteArray, command);
    QFETCH(QByteArray, sentence);
    const ToolRunner runner(Benches::of(controllerRefusing(command.constData())));
    const ToolResult result = runner.run(with(Benches::controllerAddress, "video --on 0 --line line.png"));
    QCOMPARE(result.code, 6);
    QCOMPARE(result.err, "sondixqt: " + sentence + '\n');
    QCOMPARE(runner.files(), QStringList{"bench.json"});
}

void TestToolVideo::leavesNothingHalfWritten()
{
    const ToolRunner runner(Benches::of(Benches::controller));
    const ToolResult result = runner.run(with(Benches::controllerAddress, "video --on 0 --line missing/line.png"));
    QCOMPARE(result.code, 1);
    QCOMPARE(result.out, QByteArray());
    QVERIFY2(result.err.startsWith("sondixqt: cannot write 'missing/line.png': "), result.err.constData());
    QCOMPARE(runner.files(), QStringList{"bench.json"});
}

QTEST_GUILESS_MAIN(TestToolVideo)
#include "tst_toolvideo.moc"
