// SPDX-License-Identifier: MIT
#include "benches.h"
#include "interruptible.h"
#include "toolrunner.h"

#include <QElapsedTimer>
#include <QRegularExpression>

#include <algorithm>

namespace {

const QByteArray twoLasersAndAController =
    Benches::of(Benches::laser(100) + "," + Benches::usbLaser + "," + Benches::controller);

QStringList serialNumbers(const ToolResult &result)
{
    QStringList numbers;
    for (const QJsonObject &sensor : jsonLines(result.out))
        numbers += sensor.value("serialNumber").toString();
    numbers.sort();
    return numbers;
}

QString builtInBench()
{
    QFile file(QStringLiteral(SONDIXQT_BUILTIN_BENCH));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

} // namespace

class TestToolFind : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void printsEachSensorWithItsAddress();
    void findsWhatIsAskedFor_data();
    void findsWhatIsAskedFor();
    void reportsEverythingAsJson();
    void findsTheHiddenVariantsOfAGroup();
    void findsTheWholeBuiltInBenchQuickly();
    void findsTheSameWhenItSearchesEachFamily();
    void pointsToTheThoroughSearch();
    void endsWithCode3WhenThereIsNothing();
    void announcesASensorBeforeTheSearchEnds();
    void givesUpInTime();
    void endsWithCode1WhenItCannotSearch();
    void printsAddressesThatOpenTheSensor();
};

void TestToolFind::printsEachSensorWithItsAddress()
{
    const ToolResult result =
        ToolRunner(twoLasersAndAController).run(words("find --type TX270 --interface RS232"));
    QCOMPARE(result.code, 0);
    const QList<QByteArray> lines = linesOf(result.out);
    QCOMPARE(lines.size(), 1);
    QVERIFY2(lines.first().startsWith("RS232 "), lines.first().constData());
    QVERIFY2(lines.first().contains(" COM3"), lines.first().constData());
    QVERIFY2(lines.first().contains(" TX270 "), lines.first().constData());
    QVERIFY2(lines.first().contains(" 1001 "), lines.first().constData());
    QVERIFY2(lines.first().contains(" TX270@RS232,port=COM3,baudrate=115200"), lines.first().constData());
    QCOMPARE(result.err, QByteArray("1 sensor found\n"));
}

void TestToolFind::findsWhatIsAskedFor_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *line, const char *expected) {
        QTest::newRow(line) << QString::fromLatin1(line) << QString::fromLatin1(expected);
    };
    row("find --type TX270 --json", "1001 1003");
    row("find --type 41 --json", "1001 1003");
    row("find --type tx270 --interface RS232 --json", "1001");
    row("find --type TX270 --interface USB --json", "1003");
    row("find --type TX270 --interface WinUSB,RS232 --json", "1001 1003");
    row("find --type TX270 -i USB -i RS232 --json", "1001 1003");
    row("find --type TX270 --baudrates 115200 --json", "1001 1003");
    row("find --type TX270 --baudrates 9600 --json", "1003");
    row("find --type CC480 --json", "2002");
    row("find --type CC480 --similar --json", "1001 1003 2002");
    row("find --group Wavlen --similar --json", "1001 1003 2002");
    row("find --json", "1001 1003 2002");
    row("find --group Tavrin --json", "1001 1003");
    row("find --group Oscura --json", "2002");
    row("find --group Oscura --thorough --json", "2002");
}

void TestToolFind::findsWhatIsAskedFor()
{
    QFETCH(QString, line);
    QFETCH(QString, expected);
    const ToolResult result = ToolRunner(twoLasersAndAController).run(line.split(QLatin1Char(' ')));
    QVERIFY2(result.code == 0, result.err.constData());
    QCOMPARE(serialNumbers(result).join(QLatin1Char(' ')), expected);
}

void TestToolFind::reportsEverythingAsJson()
{
    const ToolResult result = ToolRunner(twoLasersAndAController).run(words("find --type CC480 --json"));
    const QJsonObject sensor = jsonLines(result.out).value(0);
    QCOMPARE(sensor.value("model").toString(), QStringLiteral("CC480"));
    QCOMPARE(sensor.value("name").toString(), QStringLiteral("Oscura CC480"));
    QCOMPARE(sensor.value("number").toInt(), 47);
    QCOMPARE(sensor.value("interface").toString(), QStringLiteral("Ethernet"));
    QCOMPARE(sensor.value("place").toString(), QStringLiteral("192.168.0.10"));
    QVERIFY(sensor.value("address").toString().startsWith("CC480@TCP/IP,address=192.168.0.10"));
    const QJsonObject parameters = sensor.value("parameters").toObject();
    QCOMPARE(parameters.value("IP_RemoteAddr").toString(), QStringLiteral("192.168.0.10"));
    QCOMPARE(parameters.value("IP_InterfaceIdx").toInt(), 3);
}

void TestToolFind::findsTheHiddenVariantsOfAGroup()
{
    const ToolRunner runner(Benches::of(R"({ "model": "MV420", "name": "MV420-S", "serialNumber": "11",
        "place": { "interface": "RS232", "port": "COM8", "busAddress": 11 } })"));
    const ToolResult result = runner.run(words("find --group Morvik --json"));
    QVERIFY2(result.code == 0, result.err.constData());
    QCOMPARE(jsonLines(result.out).value(0).value("model").toString(), QStringLiteral("MV420"));
}

void TestToolFind::findsTheWholeBuiltInBenchQuickly()
{
    QStringList expected;
    QRegularExpressionMatchIterator it =
        QRegularExpression("\"serialNumber\": \"(\\w+)\"").globalMatch(builtInBench());
    while (it.hasNext())
        expected += it.next().captured(1);
    expected += "1032101"; // found twice: it has two addresses
    expected.sort();
    QCOMPARE(expected.size(), 25);

    QElapsedTimer clock;
    clock.start();
    const ToolResult result = ToolRunner().run(words("find --json"));
    QVERIFY2(clock.elapsed() < 20000, qPrintable(QString::number(clock.elapsed())));
    QVERIFY2(result.code == 0, result.err.constData());
    QCOMPARE(serialNumbers(result), expected);
}

void TestToolFind::findsTheSameWhenItSearchesEachFamily()
{
    QString bench = builtInBench();
    bench.insert(bench.indexOf(QLatin1Char('{')) + 1, "\"clock\": { \"speed\": 1000 },");
    const ToolRunner runner(bench.toUtf8());
    const ToolResult thorough = runner.run(words("find --thorough"));
    const ToolResult quick = runner.run(words("find"));
    QVERIFY2(thorough.code == 0, thorough.err.constData());
    QCOMPARE(quick.code, 0);
    QList<QByteArray> each = linesOf(thorough.out);
    QList<QByteArray> atOnce = linesOf(quick.out);
    std::sort(each.begin(), each.end());
    std::sort(atOnce.begin(), atOnce.end());
    QCOMPARE(atOnce, each);
}

void TestToolFind::pointsToTheThoroughSearch()
{
    const ToolRunner runner(Benches::of(""));
    const ToolResult all = runner.run(words("find"));
    QCOMPARE(all.code, 3);
    QCOMPARE(all.err, QByteArray("0 sensors found; --thorough searches each family separately\n"));
    // The search for a single model is never combined with others.
    QCOMPARE(runner.run(words("find --group Profax")).err, QByteArray("0 sensors found\n"));
}

void TestToolFind::endsWithCode3WhenThereIsNothing()
{
    const ToolResult result = ToolRunner(twoLasersAndAController).run(words("find --type MC340"));
    QCOMPARE(result.code, 3);
    QCOMPARE(result.out, QByteArray());
    QCOMPARE(result.err, QByteArray("0 sensors found\n"));
}

void TestToolFind::announcesASensorBeforeTheSearchEnds()
{
    const ToolRunner runner(Benches::of(Benches::laser(100), R"("RS232": 0.01, "XA200_ETH": 30)"));
    InterruptibleProcess process;
    runner.start(process, words("find --type TX270"));
    QTRY_VERIFY(process.canReadLine());
    QCOMPARE(process.state(), QProcess::Running);
    QVERIFY(process.readLine().contains("TX270@RS232,port=COM3"));
    process.interrupt();
    QCOMPARE(ToolRunner::finish(process).code, 130);
}

void TestToolFind::givesUpInTime()
{
    const ToolRunner runner(Benches::of(Benches::laser(100), R"("RS232": 0.01, "XA200_ETH": 3600)"));
    const ToolResult result = runner.run(words("find --type TX270 --timeout 1.5"));
    QCOMPARE(result.code, 5);
    QCOMPARE(linesOf(result.out).size(), 1);
    QCOMPARE(result.err, QByteArray("sondixqt: the search did not end within 1.5 s, 1 sensor found so far\n"));
}

void TestToolFind::endsWithCode1WhenItCannotSearch()
{
    const ToolResult result = ToolRunner(twoLasersAndAController).run(words("find --type File"));
    QCOMPARE(result.code, 1);
    QCOMPARE(result.out, QByteArray());
    QVERIFY2(result.err.startsWith("sondixqt: File cannot be searched for: "), result.err.constData());
}

void TestToolFind::printsAddressesThatOpenTheSensor()
{
    const ToolRunner runner(twoLasersAndAController);
    const QList<QJsonObject> sensors = jsonLines(runner.run(words("find --type TX270 --similar --json")).out);
    QCOMPARE(sensors.size(), 3);
    for (const QJsonObject &sensor : sensors) {
        const ToolResult info = runner.run({"info", sensor.value("address").toString(), "--json"});
        QVERIFY2(info.code == 0, info.err.constData());
        const QJsonObject reported = QJsonDocument::fromJson(info.out).object();
        QCOMPARE(reported.value("model"), sensor.value("model"));
    }
}

QTEST_GUILESS_MAIN(TestToolFind)
#include "tst_toolfind.moc"
