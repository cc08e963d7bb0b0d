// SPDX-License-Identifier: MIT
#include "benches.h"
#include "pipedprocess.h"
#include "toolrunner.h"

#include <QJsonArray>

#ifdef Q_OS_UNIX
#    include <csignal>
#    include <sys/resource.h>
#endif

namespace {

QByteArray laserWithErrors(const QByteArray &errors, const QByteArray &texts)
{
    return R"({ "model": "TX270", "serialNumber": "1001", "place": { "interface": "RS232", "port": "COM3" },
        "rate": 1000, "errorTexts": )" +
           texts + R"(,
        "signals": [ { "name": "Distance", "generator": { "kind": "constant", "value": 7.5 }, "errors": )" +
           errors + " } ] }";
}

} // namespace

class TestToolRead : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void stopsAtExactlyTheFramesAskedFor_data();
    void stopsAtExactlyTheFramesAskedFor();
    void writesValuesWithTheirTime();
    void choosesRawAndScaledValues_data();
    void choosesRawAndScaledValues();
    void marksAndCountsErrorValues();
    void countsErrorsByTheirText();
    void quotesErrorTextsInCsv();
    void marksErrorsWithoutATextByTheirKey();
    void reportsFramesAsJson();
    void readsForTheTimeAskedFor();
    void readsASensorThatMustBeAsked();
    void writesCsvWholeOrNotAtAll();
    void filesMayBeNamedInAnyAlphabet();
    void quotesNamesInCsv();
    void endsWithCode6WhenTheSensorVanishes();
    void endsWithCode5WhenNothingComes();
    void endsWithCode7WhenFramesAreLost();
    void reportsAFullDisk();
    void reportsAFullDiskUnderAFile();
    void refusesATargetThatCannotBeWritten();
    void stopsWhenItsReaderLeaves();
};

void TestToolRead::stopsAtExactlyTheFramesAskedFor_data()
{
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("frames");
    QTest::newRow("one") << 1000 << 1;
    QTest::newRow("less than one poll brings") << 1000 << 7;
    QTest::newRow("several polls") << 1000 << 250;
    QTest::newRow("fast") << 50000 << 20000;
}

void TestToolRead::stopsAtExactlyTheFramesAskedFor()
{
    QFETCH(int, rate);
    QFETCH(int, frames);
    const ToolRunner runner(Benches::of(Benches::laser(rate)));
    const ToolResult result = runner.run(words("read --csv -") << QString::fromLatin1(Benches::laserAddress)
                                                               << "-n" << QString::number(frames));
    QVERIFY2(result.code == 0, result.err.constData());
    QCOMPARE(linesOf(result.out).size(), frames + 1);
    QVERIFY2(result.err.startsWith(QByteArray::number(frames) + (frames == 1 ? " frame" : " frames") +
                                   " of 1 value read in "),
             result.err.constData());
    QCOMPARE(linesOf(result.err).size(), 1);
}

void TestToolRead::writesValuesWithTheirTime()
{
    const ToolRunner runner(Benches::of(Benches::laser(200)));
    const ToolResult result =
        runner.run(words("read --csv - -n 50") << QString::fromLatin1(Benches::laserAddress));
    const QList<QByteArray> lines = linesOf(result.out);
    QCOMPARE(lines.value(0), QByteArray("time [s],Distance [mm]"));
    for (int i = 2; i < lines.size(); ++i) {
        const double before = lines[i - 1].split(',').first().toDouble();
        const double time = lines[i].split(',').first().toDouble();
        QVERIFY2(qAbs(time - before - 0.005) < 2.0e-6, lines[i].constData());
    }
    const ToolResult table = runner.run(words("read -n 3") << QString::fromLatin1(Benches::laserAddress));
    QCOMPARE(table.code, 0);
    QCOMPARE(linesOf(table.out).size(), 4);
    QCOMPARE(linesOf(table.out).first().simplified(), QByteArray("time [s] Distance [mm]"));
    QVERIFY(linesOf(table.out).at(1).endsWith(" 12.5"));
}

void TestToolRead::choosesRawAndScaledValues_data()
{
    QTest::addColumn<QString>("options");
    QTest::addColumn<QByteArray>("header");
    QTest::addColumn<QByteArray>("values");
    QTest::newRow("neither") << "" << QByteArray("Distance [mm]") << QByteArray("12.5");
    QTest::newRow("scaled") << "--scaled" << QByteArray("Distance [mm]") << QByteArray("12.5");
    QTest::newRow("raw") << "--raw" << QByteArray("Distance raw [Digits]") << QByteArray("12500");
    QTest::newRow("both") << "--raw --scaled" << QByteArray("Distance [mm],Distance raw [Digits]")
                          << QByteArray("12.5,12500");
}

void TestToolRead::choosesRawAndScaledValues()
{
    QFETCH(QString, options);
    QFETCH(QByteArray, header);
    QFETCH(QByteArray, values);
    const ToolResult result = ToolRunner(Benches::of(Benches::laser(1000)))
                                  .run(words("read --csv - -n 1") + words(qPrintable(options))
                                       << QString::fromLatin1(Benches::laserAddress));
    QVERIFY2(result.code == 0, result.err.constData());
    const QList<QByteArray> lines = linesOf(result.out);
    QCOMPARE(lines.value(0), "time [s]," + header);
    QCOMPARE(lines.value(1).mid(lines.value(1).indexOf(',') + 1), values);
}

void TestToolRead::marksAndCountsErrorValues()
{
    const ToolRunner runner(Benches::of(Benches::laser(1000)));
    const ToolResult result =
        runner.run(words("read --csv - -n 100") << QString::fromLatin1(Benches::laserAddress));
    QCOMPARE(result.code, 0);
    int errors = 0;
    for (const QByteArray &line : linesOf(result.out).mid(1)) {
        const QByteArray value = line.split(',').value(1);
        if (value == "Too much light")
            ++errors;
        else
            QCOMPARE(value, QByteArray("12.5"));
    }
    QCOMPARE(errors, 25);
    QVERIFY2(result.err.endsWith(", 25 error values (Too much light: 25 times)\n"), result.err.constData());
}

void TestToolRead::countsErrorsByTheirText()
{
    const ToolRunner runner(Benches::of(laserWithErrors(
        R"([ { "key": -1, "every": 4 }, { "key": -3, "every": 5 } ])", R"({ "-1": "Blind", "-3": "Blind" })")));
    const ToolResult result =
        runner.run(words("read --csv - -n 200") << QString::fromLatin1(Benches::laserAddress));
    QCOMPARE(result.code, 0);
    int errors = 0;
    for (const QByteArray &line : linesOf(result.out))
        errors += line.endsWith(",Blind") ? 1 : 0;
    QVERIFY(errors > 50);
    QVERIFY2(result.err.endsWith(QStringLiteral(", %1 error values (Blind: %1 times)\n").arg(errors).toUtf8()),
             result.err.constData());
}

void TestToolRead::quotesErrorTextsInCsv()
{
    const ToolRunner runner(Benches::of(
        laserWithErrors(R"([ { "key": -3, "every": 1 } ])", R"({ "-3": "Too much light, or \"fog\"" })")));
    const ToolResult result = runner.run(words("read --csv - -n 1") << QString::fromLatin1(Benches::laserAddress));
    QVERIFY2(result.code == 0, result.err.constData());
    const QByteArray line = linesOf(result.out).value(1);
    QCOMPARE(line.mid(line.indexOf(',') + 1), QByteArray("\"Too much light, or \"\"fog\"\"\""));
}

void TestToolRead::marksErrorsWithoutATextByTheirKey()
{
    const QByteArray mute =
        R"("faults": [ { "command": "Get_SensorErrorValueText", "code": -77, "text": "it is tired" } ])";
    const ToolRunner runner(Benches::of(Benches::laser(1000, mute)));
    const ToolResult result =
        runner.run(words("read --csv - -n 100") << QString::fromLatin1(Benches::laserAddress));
    QVERIFY2(result.code == 0, result.err.constData());
    int errors = 0;
    for (const QByteArray &line : linesOf(result.out))
        errors += line.endsWith(",error -3") ? 1 : 0;
    QCOMPARE(errors, 25);
    QVERIFY2(result.err.endsWith(", 25 error values (error -3: 25 times)\n"), result.err.constData());
    const ToolResult json = runner.run(words("read --json -n 8") << QString::fromLatin1(Benches::laserAddress));
    QVERIFY2(json.out.contains(R"({"error":-3,"text":"error -3"})"), json.out.constData());
}

void TestToolRead::reportsFramesAsJson()
{
    const ToolRunner runner(Benches::of(Benches::laser(1000)));
    const ToolResult result =
        runner.run(words("read --json --raw --scaled -n 8") << QString::fromLatin1(Benches::laserAddress));
    QCOMPARE(result.code, 0);
    const QList<QJsonObject> frames = jsonLines(result.out);
    QCOMPARE(frames.size(), 8);
    int errors = 0;
    for (int i = 0; i < frames.size(); ++i) {
        QCOMPARE(frames[i].value("frame").toInt(-1), i);
        QVERIFY(frames[i].value("time").isDouble());
        QCOMPARE(frames[i].value("raw").toArray().size(), 1);
        const QJsonValue value = frames[i].value("values").toArray().at(0);
        if (value.isObject()) {
            ++errors;
            QCOMPARE(value.toObject(), (QJsonObject{{"error", -3}, {"text", "Too much light"}}));
        } else {
            QCOMPARE(value.toDouble(), 12.5);
        }
    }
    QCOMPARE(errors, 2);
}

void TestToolRead::readsForTheTimeAskedFor()
{
    const ToolRunner runner(Benches::of(Benches::laser(1000)));
    QElapsedTimer clock;
    clock.start();
    const ToolResult result =
        runner.run(words("read --csv - --duration 1.5") << QString::fromLatin1(Benches::laserAddress));
    QCOMPARE(result.code, 0);
    QVERIFY(clock.elapsed() >= 1500);
    const int frames = linesOf(result.out).size() - 1;
    QVERIFY2(frames >= 1400 && frames < 2500, result.err.constData());
}

void TestToolRead::readsASensorThatMustBeAsked()
{
    const QByteArray bus = R"({ "model": "CP740", "serialNumber": "5001",
        "place": { "interface": "RS232", "port": "COM7", "busAddress": 2 } })";
    const ToolResult result =
        ToolRunner(Benches::of(bus)).run(words("read --csv - -n 5 --type CP740 --port COM7"));
    QVERIFY2(result.code == 0, result.err.constData());
    QCOMPARE(linesOf(result.out).size(), 6);
}

void TestToolRead::writesCsvWholeOrNotAtAll()
{
    const ToolRunner runner(Benches::of(Benches::laser(1000)));
    const ToolResult result =
        runner.run(words("read -n 300 --csv values.csv") << QString::fromLatin1(Benches::laserAddress));
    QVERIFY2(result.code == 0, result.err.constData());
    QCOMPARE(result.out, QByteArray());
    QCOMPARE(linesOf(runner.contentOf("values.csv")).size(), 301);
    QCOMPARE(runner.files(), (QStringList{"bench.json", "values.csv"}));
}

void TestToolRead::filesMayBeNamedInAnyAlphabet()
{
    const ToolRunner runner;
    const QString bench = runner.writeFile("Pr\u00FCfstand \u6D4B\u91CF.json", Benches::of(Benches::laser(1000)));
    const QString values = "Me\u00DFwerte \u503C.csv";
    const ToolResult result =
        runner.run(QStringList{"--bench", bench} << words("read -n 10 --csv") << values
                                                 << QString::fromLatin1(Benches::laserAddress));
    QVERIFY2(result.code == 0, result.err.constData());
    QCOMPARE(linesOf(runner.contentOf(values)).size(), 11);
}

void TestToolRead::quotesNamesInCsv()
{
    const QByteArray sensor = R"({ "model": "TX270", "serialNumber": "1001",
        "place": { "interface": "RS232", "port": "COM3" }, "rate": 1000,
        "signals": [ { "name": "Distance, mean", "unit": "µm" } ] })";
    const ToolResult result = ToolRunner(Benches::of(sensor))
                                  .run(words("read --csv - -n 1") << QString::fromLatin1(Benches::laserAddress));
    QVERIFY2(result.code == 0, result.err.constData());
    QCOMPARE(linesOf(result.out).value(0), QByteArray("time [s],\"Distance, mean [µm]\""));
}

void TestToolRead::endsWithCode6WhenTheSensorVanishes()
{
    const ToolRunner runner(Benches::of(Benches::laser(1000, Benches::breakingAfter(5))));
    const ToolResult result =
        runner.run(words("read -n 100000 --csv values.csv") << QString::fromLatin1(Benches::laserAddress));
    QCOMPARE(result.code, 6);
    QVERIFY2(result.err.contains("sondixqt: reading failed: the cable was pulled; what was read before, "),
             result.err.constData());
    QVERIFY(!QFile::exists(runner.path("values.csv")));
    // What the sensor has measured after the last transfer is missing behind the last frame.
    const QList<QByteArray> kept = linesOf(runner.contentOf("values.csv.partial"));
    const auto isGap = [](const QByteArray &line) { return line.startsWith('#'); };
    QVERIFY(kept.size() > 2);
    QCOMPARE(std::count_if(kept.begin(), kept.end(), isGap), 1);
    QVERIFY2(kept.last().startsWith("# gap: an unknown number of frames "), kept.last().constData());
    QVERIFY2(result.err.contains(" " + QByteArray::number(kept.size() - 2) + " frames, is in '"),
             result.err.constData());
    QCOMPARE(linesOf(result.err).last(), QByteArray("sondixqt: an unknown number of frames was lost in 1 gap, "
                                                    "while the sensor was disconnected"));
}

void TestToolRead::endsWithCode5WhenNothingComes()
{
    // It waits for an external trigger, which never comes.
    const QByteArray mute = R"({ "model": "RG52x", "serialNumber": "9",
        "place": { "interface": "RS232", "port": "COM9" }, "settings": { "Autostart": { "SA_AutostartCommand": 4 } } })";
    const ToolRunner runner(Benches::of(mute));
    const ToolResult result = runner.run(words("read RG52x@RS232,port=COM9 --silence 0.5 --csv values.csv"));
    QCOMPARE(result.code, 5);
    QVERIFY2(result.err.endsWith("sondixqt: no values arrived for 0.5 s\n"), result.err.constData());
    QCOMPARE(runner.files(), QStringList{"bench.json"});
}

void TestToolRead::endsWithCode7WhenFramesAreLost()
{
    // At 10 kHz a ring of 100 frames is full after 10 ms, which is less than the interval of polling.
    const ToolRunner runner(Benches::of(Benches::laser(10000, R"("ring": 100)")));
    const ToolResult result =
        runner.run(words("read -n 500 --csv values.csv") << QString::fromLatin1(Benches::laserAddress));
    QCOMPARE(result.code, 7);
    const QRegularExpression lost("sondixqt: (\\d+) frames were lost because they were not read in time");
    const QRegularExpressionMatch match = lost.match(QString::fromUtf8(result.err));
    QVERIFY2(match.hasMatch(), result.err.constData());
    QVERIFY(match.captured(1).toInt() > 400);
    // The gaps stand where they happened.
    int frames = 0;
    int missing = 0;
    static const QRegularExpression gap("^# gap: (\\d+) frames from number (\\d+) on are missing: ");
    for (const QByteArray &line : linesOf(runner.contentOf("values.csv")).mid(1)) {
        if (const auto found = gap.match(QString::fromUtf8(line)); found.hasMatch()) {
            QCOMPARE(found.captured(2).toInt(), frames + missing);
            missing += found.captured(1).toInt();
        } else {
            ++frames;
        }
    }
    QCOMPARE(frames, 500);
    QCOMPARE(missing, match.captured(1).toInt());
}

void TestToolRead::reportsAFullDisk()
{
    if (!QFile::exists("/dev/full"))
        QSKIP("there is no /dev/full here");
    const ToolRunner runner(Benches::of(Benches::laser(1000)));
    const ToolResult toFile =
        runner.run(words("read -n 100 --csv /dev/full") << QString::fromLatin1(Benches::laserAddress));
    QCOMPARE(toFile.code, 1);
    QVERIFY2(toFile.err.contains("sondixqt: cannot write '/dev/full': "), toFile.err.constData());

    QProcess process;
    process.setStandardOutputFile("/dev/full");
    runner.start(process, words("read -n 100") << QString::fromLatin1(Benches::laserAddress));
    const ToolResult toStdout = ToolRunner::finish(process);
    QCOMPARE(toStdout.code, 1);
    QVERIFY2(toStdout.err.contains("sondixqt: cannot write to standard output: "), toStdout.err.constData());
}

void TestToolRead::reportsAFullDiskUnderAFile()
{
#ifdef Q_OS_UNIX
    // A limit on the file size replaces a full disk: both make a write fail.
    class LimitedProcess : public QProcess
    {
    protected:
        void setupChildProcess() override
        {
            constexpr rlim_t limit = 20000;
            const rlimit size{limit, limit};
            setrlimit(RLIMIT_FSIZE, &size);
            std::signal(SIGXFSZ, SIG_DFL); // which would end the program
        }
    };
    const ToolRunner runner(Benches::of(Benches::laser(50000)));
    runner.writeFile("values.csv", "older\n");
    LimitedProcess process;
    runner.start(process, words("read -n 40000 --csv values.csv") << QString::fromLatin1(Benches::laserAddress));
    const ToolResult result = ToolRunner::finish(process);
    QCOMPARE(result.code, 1);
    QVERIFY2(result.err.contains("sondixqt: cannot write '"), result.err.constData());
    QCOMPARE(runner.contentOf("values.csv"), QByteArray("older\n"));
    QCOMPARE(runner.files(), (QStringList{"bench.json", "values.csv", "values.csv.partial"}));
    // The whole lines up to the limit are there, and all frames are accounted for.
    const QByteArray kept = runner.contentOf("values.csv.partial");
    QVERIFY(kept.size() > 19900 && kept.size() <= 20000);
    const int frames = linesOf(kept).size() - 1;
    static const QRegularExpression sentence(
        "values.csv': File too large; what was read before, (\\d+) frames, is in "
        "'values.csv.partial'; (\\d+) frames? behind them could not be written\n");
    const QRegularExpressionMatch match = sentence.match(QString::fromUtf8(result.err));
    QVERIFY2(match.hasMatch(), result.err.constData());
    QCOMPARE(match.captured(1).toInt(), frames);
    QVERIFY2(
        result.err.startsWith(QByteArray::number(frames + match.captured(2).toInt()) + " frames of 1 value read"),
        result.err.constData());
#else
    QSKIP("there is no limit on the size of files here");
#endif
}

void TestToolRead::refusesATargetThatCannotBeWritten()
{
    const ToolRunner runner(Benches::of(Benches::laser(1000)));
    const ToolResult result =
        runner.run(words("read -n 1 --csv missing/values.csv") << QString::fromLatin1(Benches::laserAddress));
    QCOMPARE(result.code, 1);
    QCOMPARE(linesOf(result.err).size(), 1);
    QVERIFY2(result.err.startsWith("sondixqt: cannot write 'missing/values.csv': "), result.err.constData());
}

void TestToolRead::stopsWhenItsReaderLeaves()
{
    const ToolRunner runner(Benches::of(Benches::laser(1000)));
    PipedProcess process;
    runner.start(process, words("read --csv -") << QString::fromLatin1(Benches::laserAddress));
    QVERIFY(process.readLine().endsWith('\n'));
    QVERIFY(process.readLine().endsWith('\n'));
    process.leave();
    const ToolResult result = ToolRunner::finish(process);
    QCOMPARE(result.code, 1);
    QCOMPARE(result.err, QByteArray());
}

QTEST_GUILESS_MAIN(TestToolRead)
#include "tst_toolread.moc"
