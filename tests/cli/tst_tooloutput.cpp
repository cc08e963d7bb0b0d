// SPDX-License-Identifier: MIT
#include "benches.h"
#include "pipedprocess.h"
#include "toolrunner.h"

namespace {

/// A laser sensor that sends video by default.
const char *const videoLaser = R"({ "model": "TX240", "serialNumber": "240",
    "place": { "interface": "XA100_USB", "device": 0, "port": "COM12" } })";
const char *const videoLaserAddress = "TX240@XA100_USB,port=COM12";

/// Two models on one bus.
const char *const bus = R"({ "model": "MV420", "name": "MV420-S", "serialNumber": "11",
    "place": { "interface": "RS232", "port": "COM8", "busAddress": 11 } },
  { "model": "GY330", "serialNumber": "12", "place": { "interface": "RS232", "port": "COM8", "busAddress": 12 } })";

QJsonObject answerOf(const ToolResult &result)
{
    return QJsonDocument::fromJson(result.out).object().value("answer").toObject();
}

QByteArray bytesOf(const QJsonValue &value)
{
    return QByteArray::fromBase64(value.toObject().value("base64").toString().toLatin1());
}

} // namespace

class TestToolOutput : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void reportsAFullDisk_data();
    void reportsAFullDisk();
    void isSilentWhenItsReaderCloses_data();
    void isSilentWhenItsReaderCloses();
    void verboseShowsTheCommands_data();
    void verboseShowsTheCommands();
    void bytesAreShownAsTheirCount();
    void bytesAreBase64InJson();
    void aPageIsFetchedWithItsBytes();
    void reportsThatAnotherModelAnswers();
    void saysNothingOfAModelThatFits_data();
    void saysNothingOfAModelThatFits();
};

void TestToolOutput::reportsAFullDisk_data()
{
    QTest::addColumn<QString>("line");
    for (const char *line : {"--help",
                             "--version",
                             "find --help",
                             "read --help",
                             "models",
                             "find --type TX270",
                             "find --json",
                             "info %1",
                             "info %1 --json",
                             "params %1",
                             "get %1 Get_Info",
                             "exec %1 Get_Info",
                             "mode %1 --json",
                             "set %1 Set_LaserPower SP_LaserPower=1 --json",
                             "trigger %1",
                             "sync %1",
                             "read %1 -n 10",
                             "read %1 -n 10 --csv -",
                             "read %1 -n 10 --json",
                             "video %1 --json",
                             "tunnel %1"})
        QTest::newRow(line) << QString::fromLatin1(line).replace("%1", QLatin1String(Benches::laserAddress));
}

void TestToolOutput::reportsAFullDisk()
{
    if (!QFile::exists("/dev/full"))
        QSKIP("there is no /dev/full here");
    QFETCH(QString, line);
    const ToolRunner runner(Benches::of(Benches::laser(1000)));
    QProcess process;
    process.setStandardOutputFile("/dev/full");
    runner.start(process, line.split(QLatin1Char(' ')));
    const ToolResult result = ToolRunner::finish(process);
    QCOMPARE(result.code, 1);
    const QList<QByteArray> lines = linesOf(result.err);
    QVERIFY2(!lines.isEmpty() && lines.last().startsWith("sondixqt: cannot write to standard output: "),
             result.err.constData());
}

void TestToolOutput::isSilentWhenItsReaderCloses_data()
{
    QTest::addColumn<QString>("line");
    for (const char *line : {"find --type TX270 --json", "read %1 --csv -", "read %1 --json", "read %1"})
        QTest::newRow(line) << QString::fromLatin1(line).replace("%1", QLatin1String(Benches::laserAddress));
}

void TestToolOutput::isSilentWhenItsReaderCloses()
{
    QFETCH(QString, line);
    // The second sensor is found after the reader has closed the pipe.
    const ToolRunner runner(
        Benches::of(Benches::laser(1000) + "," + Benches::usbLaser, R"("WinUSB": 0.01, "RS232": 1.0)"));
    PipedProcess process;
    runner.start(process, line.split(QLatin1Char(' ')));
    QVERIFY(process.readLine().endsWith('\n'));
    process.leave();
    const ToolResult result = ToolRunner::finish(process);
    QCOMPARE(result.err, QByteArray());
    QCOMPARE(result.code, 1);
}

void TestToolOutput::verboseShowsTheCommands_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("search") << "find --type TX270" << QByteArray("Start_FindSensor: 0");
    QTest::newRow("opening") << "info %1" << QByteArray("opened the simulated sensor 1001");
    QTest::newRow("setting") << "set %1 Set_LaserPower SP_LaserPower=2" << QByteArray("Set_LaserPower: 0");
    QTest::newRow("closing") << "read %1 -n 1" << QByteArray("closed");
    QTest::newRow("refusal") << "get %1 Get_Weather" << QByteArray("Sondix: Get_Weather: -");
}

void TestToolOutput::verboseShowsTheCommands()
{
    QFETCH(QString, line);
    QFETCH(QByteArray, expected);
    line.replace("%1", QLatin1String(Benches::laserAddress));
    const ToolRunner runner(Benches::of(Benches::laser(100)));
    const ToolResult quiet = runner.run(line.split(QLatin1Char(' ')));
    QVERIFY(!quiet.err.contains("Sondix"));
    const ToolResult verbose = runner.run(("-v " + line).split(QLatin1Char(' ')));
    QVERIFY2(verbose.err.contains(expected), verbose.err.constData());
    QCOMPARE(verbose.code, quiet.code);
    QVERIFY2(verbose.err.contains(linesOf(quiet.err).value(0).left(12)), verbose.err.constData());
}

void TestToolOutput::bytesAreShownAsTheirCount()
{
    const ToolRunner runner(Benches::of(videoLaser));
    const ToolResult json =
        runner.run(words("exec") << QString::fromLatin1(videoLaserAddress) << words("Get_Video --json"));
    const int size = bytesOf(answerOf(json).value("SA_VideoSignal")).size();
    QVERIFY(size > 1);
    const QByteArray shown = QByteArray::number(size) + " bytes";
    const ToolResult all =
        runner.run(words("get") << QString::fromLatin1(videoLaserAddress) << words("Get_Video"));
    QVERIFY2(all.code == 0, all.err.constData());
    QCOMPARE(all.out.simplified(), "SA_VideoSignal " + shown);
    const ToolResult one =
        runner.run(words("get") << QString::fromLatin1(videoLaserAddress) << words("Get_Video SA_VideoSignal"));
    QVERIFY2(one.code == 0, one.err.constData());
    QCOMPARE(one.out, shown + '\n');
}

void TestToolOutput::bytesAreBase64InJson()
{
    const ToolRunner runner(Benches::of(videoLaser));
    const ToolResult result = runner.run(words("get") << QString::fromLatin1(videoLaserAddress)
                                                      << words("Get_Video SA_VideoSignal --json"));
    QVERIFY2(result.code == 0, result.err.constData());
    const QByteArray bytes = bytesOf(answerOf(result).value("SA_VideoSignal"));
    QVERIFY(bytes.size() > 2);
    QCOMPARE(bytes.size() % 2, 0); // pixels of 16 bits
}

void TestToolOutput::aPageIsFetchedWithItsBytes()
{
    const ToolRunner runner(Benches::of(Benches::laser(100, R"("pages": { "/small.txt": { "text": "small" } })")));
    const ToolResult result =
        runner.run(words("exec") << QString::fromLatin1(Benches::laserAddress)
                                 << words("Get_HTTP SP_HTTPPath=/small.txt SP_HTTPMaxLength=1000 --json"));
    QVERIFY2(result.code == 0, result.err.constData());
    QCOMPARE(bytesOf(answerOf(result).value("SA_HTTPBody")), QByteArray("small"));
    QVERIFY(answerOf(result).value("SA_HTTPHeader").toString().startsWith("HTTP/1.1 200"));
}

void TestToolOutput::reportsThatAnotherModelAnswers()
{
    const ToolRunner runner(Benches::of(bus));
    for (const char *line : {"info", "trigger", "read -n 1"}) {
        const ToolResult result = runner.run(words(line) << "GY330@RS232,port=COM8,sensor-address=11");
        QVERIFY2(result.code == 0, result.err.constData());
        QVERIFY2(result.err.startsWith("the sensor at GY330@RS232,port=COM8,sensor-address=11 reports another "
                                       "model: MV420@RS232,port=COM8,sensor-address=11\n"),
                 result.err.constData());
    }
}

void TestToolOutput::saysNothingOfAModelThatFits_data()
{
    QTest::addColumn<QString>("model");
    QTest::addColumn<int>("place");
    QTest::newRow("the model") << "MV420" << 11;
    QTest::newRow("its family") << "MV4xx" << 11;
    QTest::newRow("the bus") << "KV-BUS" << 11;
    QTest::newRow("reported by its controller") << "GY330" << 12;
}

void TestToolOutput::saysNothingOfAModelThatFits()
{
    QFETCH(QString, model);
    QFETCH(int, place);
    const ToolResult result =
        ToolRunner(Benches::of(bus))
            .run(words("info") << QStringLiteral("%1@RS232,port=COM8,sensor-address=%2").arg(model).arg(place));
    QCOMPARE(result.code, 0);
    QCOMPARE(result.err, QByteArray());
}

QTEST_GUILESS_MAIN(TestToolOutput)
#include "tst_tooloutput.moc"
