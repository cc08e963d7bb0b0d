// SPDX-License-Identifier: MIT
#include "benches.h"
#include "interruptible.h"
#include "toolrunner.h"

#include <QJsonArray>

#ifdef Q_OS_UNIX
#    include <csignal>
#endif

namespace {

QStringList recording(const char *options, const char *file = "values.csv")
{
    return words("record -o") << QString::fromLatin1(file) << QString::fromLatin1(Benches::laserAddress)
                              << words(options);
}

/// The lines that are neither comments nor the names of the columns.
QList<QByteArray> frames(const QByteArray &csv)
{
    QList<QByteArray> lines;
    bool isAfterNames = false;
    for (const QByteArray &line : linesOf(csv)) {
        if (line.startsWith('#'))
            continue;
        if (isAfterNames)
            lines += line;
        isAfterNames = true;
    }
    return lines;
}

/// The sum of the gaps in a CSV file; -1 if the length of one of them is not known.
int missing(const QByteArray &csv)
{
    static const QRegularExpression gap("^# gap: (\\d+) frames from number \\d+ on are missing: ");
    int sum = 0;
    for (const QByteArray &line : linesOf(csv)) {
        if (!line.startsWith("# gap: "))
            continue;
        const QRegularExpressionMatch match = gap.match(QString::fromUtf8(line));
        if (!match.hasMatch())
            return -1;
        sum += match.captured(1).toInt();
    }
    return sum;
}

} // namespace

class TestToolRecord : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void describesWhatItRecords();
    void writesEveryFormat_data();
    void writesEveryFormat();
    void formatsNumbersAsAsked();
    void refusesWrongUse_data();
    void refusesWrongUse();
    void sensorsHaveAFileEachAndOneTime();
    void oneSensorFailingDoesNotEndTheOthers();
    void rotates();
    void appends();
    void doesNotAppendToWhatDoesNotFit();
    void aTriggeredSensorLosesNothing();
    void aRateOfTheFrameCountsLosses();
    void tellsLossesWhenItIsEnded_data();
    void tellsLossesWhenItIsEnded();
    void tellsLossesWhenTheSensorFallsSilent();
    void tellsLossesWhenTheSensorFails();
    void aStoppedProgramTellsWhatItMissed();
    void survivesAPulledCable();
    void endsWhenTheSensorStaysAway();
    void isReadableAfterAKill_data();
    void isReadableAfterAKill();
};

void TestToolRecord::describesWhatItRecords()
{
    const ToolRunner runner(Benches::of(Benches::laser(1000, R"("firmware": "1.2.3")")));
    const qint64 before = QDateTime::currentMSecsSinceEpoch();
    const ToolResult result = runner.run(recording("-n 100 --raw --scaled"));
    const qint64 after = QDateTime::currentMSecsSinceEpoch();
    QVERIFY2(result.code == 0, result.err.constData());
    QCOMPARE(result.out, QByteArray());
    QCOMPARE(runner.files(), (QStringList{"bench.json", "values.csv"}));
    const QByteArray text = runner.contentOf("values.csv");
    for (const char *line :
         {"# serial number: 1001\n", "# firmware: 1.2.3 (simulator)\n", "# address: TX270@RS232,port=COM3\n",
          "# range of Distance [mm]: 0 to 100\n", "# range of Distance raw [Digits]: 0 to 100000\n",
          "# rate: 1000 Hz\n", "\nframe,time [s],Distance [mm],Distance raw [Digits]\n"})
        QVERIFY2(text.contains(line), line);
    const QList<QByteArray> lines = frames(text);
    QCOMPARE(lines.size(), 100);
    for (int i = 0; i < lines.size(); ++i) {
        const QList<QByteArray> cells = lines[i].split(',');
        QCOMPARE(cells.size(), 4);
        QCOMPARE(cells[0].toInt(), i);
        const double milliseconds = cells[1].toDouble() * 1000.0;
        QVERIFY2(milliseconds >= static_cast<double>(before) - 1000.0 &&
                     milliseconds <= static_cast<double>(after),
                 cells[1].constData());
        if (i > 0)
            QVERIFY(qAbs(cells[1].toDouble() - lines[i - 1].split(',').value(1).toDouble() - 0.001) < 2.0e-6);
    }
    const ToolResult bare = runner.run(recording("-n 1 --no-head", "bare.csv"));
    QCOMPARE(bare.code, 0);
    QVERIFY(runner.contentOf("bare.csv").startsWith("frame,time [s],Distance [mm]\n0,"));
}

void TestToolRecord::writesEveryFormat_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QStringList>("files");
    for (const char *name : {"values.csv", "VALUES.CSV", "values.jsonl", "values.json", "values.ndjson"})
        QTest::newRow(name) << QString(name) << QStringList{name};
    QTest::newRow("values.npy") << "values.npy" << QStringList{"values.npy", "values.npy.jsonl"};
}

void TestToolRecord::writesEveryFormat()
{
    QFETCH(QString, file);
    QFETCH(QStringList, files);
    const ToolRunner runner(Benches::of(Benches::laser(1000)));
    const ToolResult result = runner.run(recording("-n 50", file.toLatin1().constData()));
    QVERIFY2(result.code == 0, result.err.constData());
    QStringList found = runner.files();
    found.removeAll("bench.json");
    QCOMPARE(found, files);
    const QByteArray content = runner.contentOf(file);
    if (file.endsWith("csv", Qt::CaseInsensitive)) {
        QCOMPARE(frames(content).size(), 50);
    } else if (file.endsWith("npy")) {
        QVERIFY(content.startsWith(QByteArray("\x93NUMPY\x01") + '\0'));
        QVERIFY(content.contains("'shape': (50,)"));
        QCOMPARE((content.size() - content.indexOf('\n') - 1) % 50, 0);
        const QJsonObject head = jsonLines(runner.contentOf("values.npy.jsonl")).value(0).value("head").toObject();
        QCOMPARE(head.value("sensors").toArray().at(0).toObject().value("serialNumber").toString(),
                 QStringLiteral("1001"));
    } else {
        const QList<QJsonObject> objects = jsonLines(content);
        QCOMPARE(objects.size(), 51);
        QVERIFY(objects[0].contains("head"));
        QCOMPARE(objects[50].value("frame").toInt(), 49);
        QVERIFY(objects[50].value("time").toDouble() > 1.7e9);
    }
}

void TestToolRecord::formatsNumbersAsAsked()
{
    const ToolRunner runner(Benches::of(Benches::laser(1000)));
    QCOMPARE(runner.run(recording("-n 4 --no-head --decimal-comma --errors nan")).code, 0);
    const QList<QByteArray> lines = frames(runner.contentOf("values.csv"));
    static const QRegularExpression line("^\\d;\\d+,\\d{6};(12,5|nan)$");
    int errors = 0;
    for (const QByteArray &one : lines) {
        QVERIFY2(line.match(QString::fromUtf8(one)).hasMatch(), one.constData());
        errors += one.endsWith("nan") ? 1 : 0;
    }
    QCOMPARE(errors, 1);
    const ToolResult read = runner.run(words("read -n 4 --csv - --separator tab --errors empty")
                                       << QString::fromLatin1(Benches::laserAddress));
    QCOMPARE(read.code, 0);
    QCOMPARE(linesOf(read.out).first(), QByteArray("time [s]\tDistance [mm]"));
    QCOMPARE(read.out.count("\t\n"), 1);
    QCOMPARE(read.out.count("\t12.5\n"), 3);
}

void TestToolRecord::refusesWrongUse_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QByteArray>("sentence");
    const auto row = [](const char *line, const char *sentence) {
        QTest::newRow(line) << QString::fromLatin1(line) << QByteArray(sentence);
    };
    row("record", "no file is given");
    row("record TX270@RS232,port=COM3", "no file is given; name it with -o");
    row("record -o a.csv", "no sensor is named");
    row("record -o a.xlsx TX270@RS232,port=COM3", "the suffix of 'a.xlsx' is no format");
    row("record -o values TX270@RS232,port=COM3", "the suffix of 'values' is no format");
    row("record -o a.csv TX270@RS232,port=COM3 COM4", "'COM4' is no sensor address");
    row("record -o a.csv TX270@RS232,port=COM3 --separator ab", "--separator");
    row("record -o a.csv TX270@RS232,port=COM3 --separator 1", "'1' is no separator");
    row("record -o a.csv TX270@RS232,port=COM3 --separator , --decimal-comma", "--separator is the decimal comma");
    row("record -o a.npy TX270@RS232,port=COM3 --decimal-comma", "--separator and --decimal-comma are for CSV");
    row("record -o a.npy TX270@RS232,port=COM3 --errors text", "error values are always nan in .npy");
    row("record -o a.csv TX270@RS232,port=COM3 --errors no", "--errors");
    row("record -o a.csv TX270@RS232,port=COM3 --rotate-size 0", "'0' is no number of bytes");
    row("record -o a.csv TX270@RS232,port=COM3 --rotate-size 10T", "'10T' is no number of bytes");
    row("record -o a.csv TX270@RS232,port=COM3 --rotate-size 1M --append", "excludes");
    row("record -o a.csv TX270@RS232,port=COM3 --give-up 3", "--reconnect");
    row("read TX270@RS232,port=COM3 --errors nan", "go with --csv or --json");
    row("read TX270@RS232,port=COM3 --json --separator ;", "--separator and --decimal-comma are for CSV");
}

void TestToolRecord::refusesWrongUse()
{
    QFETCH(QString, line);
    QFETCH(QByteArray, sentence);
    const ToolRunner runner(Benches::of(Benches::laser(1000)));
    const ToolResult result = runner.run(line.split(QLatin1Char(' ')));
    QCOMPARE(result.code, 2);
    QVERIFY2(linesOf(result.err).first().contains(sentence), result.err.constData());
    QCOMPARE(runner.files(), QStringList{"bench.json"});
}

void TestToolRecord::sensorsHaveAFileEachAndOneTime()
{
    const ToolRunner runner(Benches::of(Benches::laser(1000) + "," + Benches::usbLaser));
    const ToolResult result = runner.run(recording("TX270@USB,device=0 --duration 1"));
    QVERIFY2(result.code == 0, result.err.constData());
    QCOMPARE(runner.files(), (QStringList{"bench.json", "values-1001.csv", "values-1003.csv"}));
    QVERIFY2(result.err.startsWith("TX270 1001: "), result.err.constData());
    QVERIFY2(result.err.contains("\nTX270 1003: "), result.err.constData());
    double begin[2] = {};
    double end[2] = {};
    for (int i = 0; i < 2; ++i) {
        const QList<QByteArray> lines = frames(runner.contentOf(i == 0 ? "values-1001.csv" : "values-1003.csv"));
        QVERIFY(lines.size() > 10);
        begin[i] = lines.first().split(',').value(1).toDouble();
        end[i] = lines.last().split(',').value(1).toDouble();
    }
    QVERIFY(begin[0] < end[1] && begin[1] < end[0]);
}

void TestToolRecord::oneSensorFailingDoesNotEndTheOthers()
{
    const ToolRunner runner(
        Benches::of(Benches::laser(1000, Benches::breakingAfter(3)) + "," + Benches::usbLaser));
    const ToolResult result = runner.run(recording("TX270@USB,device=0 --duration 1"));
    QCOMPARE(result.code, 6);
    QCOMPARE(runner.files(), (QStringList{"bench.json", "values-1001.csv.partial", "values-1003.csv"}));
    QVERIFY2(result.err.contains("TX270 1001: reading failed: the cable was pulled; what was read before, "),
             result.err.constData());
    const QList<QByteArray> lines = frames(runner.contentOf("values-1003.csv"));
    QVERIFY(lines.last().split(',').value(1).toDouble() - lines.first().split(',').value(1).toDouble() > 0.5);
}

void TestToolRecord::rotates()
{
    const ToolRunner runner(Benches::of(Benches::laser(10000)));
    const ToolResult result = runner.run(recording("-n 10000 --rotate-size 100k"));
    QVERIFY2(result.code == 0, result.err.constData());
    QStringList names = runner.files();
    names.removeAll("bench.json");
    QVERIFY(names.size() >= 3);
    int next = 0;
    for (const QString &name : names) {
        const QByteArray text = runner.contentOf(name);
        QVERIFY(text.size() <= 100'000);
        QVERIFY(text.startsWith("# "));
        for (const QByteArray &line : frames(text))
            QCOMPARE(line.split(',').first().toInt(), next++);
    }
    QCOMPARE(next, 10000);
}

void TestToolRecord::appends()
{
    const ToolRunner runner(Benches::of(Benches::laser(1000)));
    QCOMPARE(runner.run(recording("-n 10 --append")).code, 0);
    const QByteArray first = runner.contentOf("values.csv");
    runner.writeFile("values.csv", first + "10,17");
    const ToolResult result = runner.run(recording("-n 5 --append"));
    QCOMPARE(result.code, 0);
    QVERIFY2(result.err.contains("'values.csv': its last line was incomplete and is a comment now\n"),
             result.err.constData());
    const QByteArray both = runner.contentOf("values.csv");
    QVERIFY(both.startsWith(first + "# incomplete: 10,17\n# "));
    QCOMPARE(both.count("# start: "), 2);
    QCOMPARE(both.count("\nframe,time"), 1);
    QCOMPARE(frames(both).size(), 15);
    QCOMPARE(runner.files(), (QStringList{"bench.json", "values.csv"}));
}

void TestToolRecord::doesNotAppendToWhatDoesNotFit()
{
    const ToolRunner runner(Benches::of(Benches::laser(1000)));
    QCOMPARE(runner.run(recording("-n 10 --raw")).code, 0);
    const QByteArray before = runner.contentOf("values.csv");
    const ToolResult result = runner.run(recording("-n 5 --append"));
    QCOMPARE(result.code, 1);
    QVERIFY2(result.err.startsWith("sondixqt: cannot append to 'values.csv': it has other columns: "),
             result.err.constData());
    QCOMPARE(runner.contentOf("values.csv"), before);
}

void TestToolRecord::aTriggeredSensorLosesNothing()
{
    const ToolRunner runner(Benches::of(
        Benches::laser(10000, R"("settings": { "TriggerMode": { "SA_TriggerMode": 1 } }, "triggerRate": 20)")));
    for (const QStringList &line :
         {recording("-n 20"), words("read -n 20 --csv read.csv") << QString::fromLatin1(Benches::laserAddress)}) {
        const ToolResult result = runner.run(line);
        QVERIFY2(result.code == 0, result.err.constData());
        QVERIFY2(!result.err.contains("lost"), result.err.constData());
    }
    QCOMPARE(missing(runner.contentOf("values.csv")), 0);
    QCOMPARE(frames(runner.contentOf("values.csv")).size(), 20);
}

void TestToolRecord::aRateOfTheFrameCountsLosses()
{
    const QByteArray unknownRate =
        R"("ring": 100, "faults": [ { "command": "Get_Samplerate", "code": -77, "text": "it is a secret" } ])";
    const ToolRunner runner(Benches::of(Benches::laser(10000, unknownRate)));
    const ToolResult result =
        runner.run(words("read -n 500 --csv values.csv") << QString::fromLatin1(Benches::laserAddress));
    QCOMPARE(result.code, 7);
    QVERIFY2(result.err.startsWith("the sensor does not report its sample rate: it is a secret\n"),
             result.err.constData());
    const QByteArray text = runner.contentOf("values.csv");
    QVERIFY(missing(text) > 100);
    // From frame to frame 100 microseconds, or the length of a gap more.
    const QList<QByteArray> lines = frames(text);
    const double first = lines.first().split(',').first().toDouble();
    const double last = lines.last().split(',').first().toDouble();
    QVERIFY2(qAbs((last - first) * 10000.0 - (499 + missing(text))) < 1.0, lines.last().constData());
}

void TestToolRecord::tellsLossesWhenItIsEnded_data()
{
    QTest::addColumn<int>("signalNumber");
#ifdef Q_OS_UNIX
    QTest::newRow("SIGINT") << SIGINT;
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGHUP") << SIGHUP;
    QTest::newRow("SIGQUIT") << SIGQUIT;
#else
    QTest::newRow("Ctrl-C") << 0;
#endif
}

void TestToolRecord::tellsLossesWhenItIsEnded()
{
    QFETCH(int, signalNumber);
    const ToolRunner runner(Benches::of(Benches::laser(10000, R"("ring": 100)")));
    InterruptibleProcess process;
    runner.start(process, recording(""));
    QTRY_VERIFY(runner.contentOf("values.csv.partial").contains("# gap: "));
#ifdef Q_OS_UNIX
    QVERIFY(process.processId() > 0);
    QCOMPARE(::kill(static_cast<pid_t>(process.processId()), signalNumber), 0);
#else
    Q_UNUSED(signalNumber)
    process.interrupt();
#endif
    const ToolResult result = ToolRunner::finish(process);
    QCOMPARE(result.code, 130);
    const QByteArray text = runner.contentOf("values.csv");
    QVERIFY(missing(text) > 0);
    QCOMPARE(linesOf(result.err).last(),
             "sondixqt: " + QByteArray::number(missing(text)) +
                 " frames were lost because they were not read in time or the line was too slow");
    QVERIFY2(result.err.startsWith(QByteArray::number(frames(text).size()) + " frames of 1 value read in "),
             result.err.constData());
}

void TestToolRecord::tellsLossesWhenTheSensorFallsSilent()
{
    const ToolRunner runner(Benches::of(Benches::laser(10000, R"("ring": 100, "silentAfter": 2)")));
    const ToolResult result = runner.run(recording("--silence 0.5"));
    QCOMPARE(result.code, 5);
    const QByteArray text = runner.contentOf("values.csv.partial");
    const QList<QByteArray> lines = linesOf(result.err);
    QVERIFY(missing(text) > 0);
    QCOMPARE(lines.value(1), "sondixqt: no values arrived for 0.5 s; what was read before, " +
                                 QByteArray::number(frames(text).size()) + " frames, is in 'values.csv.partial'");
    QCOMPARE(lines.last(), "sondixqt: " + QByteArray::number(missing(text)) +
                               " frames were lost because they were not read in time or the line was too slow");
    // The sensor has measured for two seconds.
    QVERIFY2(frames(text).size() + missing(text) <= 20001, result.err.constData());
}

void TestToolRecord::tellsLossesWhenTheSensorFails()
{
    const ToolRunner runner(Benches::of(Benches::laser(10000, R"("ring": 100, )" + Benches::breakingAfter(300))));
    const ToolResult result = runner.run(recording(""));
    QCOMPARE(result.code, 6);
    // What the sensor has measured after the last transfer is not known: the last gap.
    QByteArray text = runner.contentOf("values.csv.partial");
    const int last = text.lastIndexOf("# gap: ");
    QVERIFY2(text.mid(last).startsWith("# gap: an unknown number of frames "), text.mid(last).constData());
    QCOMPARE(linesOf(text.mid(last)).size(), 1);
    text.truncate(last);
    QVERIFY(missing(text) > 0);
    QVERIFY2(result.err.contains("\nsondixqt: reading failed: the cable was pulled; what was read before, "),
             result.err.constData());
    QCOMPARE(linesOf(result.err).last(),
             "sondixqt: " + QByteArray::number(missing(text)) +
                 " frames were lost because they were not read in time or the line was too slow; an unknown "
                 "number of frames was lost in 1 gap, while the sensor was disconnected");
}

void TestToolRecord::aStoppedProgramTellsWhatItMissed()
{
#ifdef Q_OS_UNIX
    constexpr int ring = 2000;
    const ToolRunner runner(Benches::of(Benches::laser(10000, R"("ring": )" + QByteArray::number(ring))));
    InterruptibleProcess process;
    runner.start(process, recording("--silence 0.5"));
    QTRY_VERIFY(frames(runner.contentOf("values.csv.partial")).size() > 1000);
    const auto pid = static_cast<pid_t>(process.processId());
    QVERIFY(pid > 0);
    QCOMPARE(::kill(pid, SIGSTOP), 0);
    QTest::qWait(1000); // what is measured meanwhile is what the test is about
    QCOMPARE(::kill(pid, SIGCONT), 0);
    QTRY_VERIFY(runner.contentOf("values.csv.partial").contains("# gap: "));
    process.interrupt();
    const ToolResult result = ToolRunner::finish(process);
    QCOMPARE(result.code, 130);
    const QByteArray text = runner.contentOf("values.csv");
    // Of the 10000 frames of that second the ring has kept its length.
    QVERIFY2(missing(text) >= 10000 - ring - 500, result.err.constData());
    QVERIFY2(linesOf(result.err)
                 .last()
                 .startsWith("sondixqt: " + QByteArray::number(missing(text)) + " frames were lost "),
             result.err.constData());
    // Frames and gaps together are the time that has passed.
    const QList<QByteArray> lines = frames(text);
    const double seconds =
        lines.last().split(',').value(1).toDouble() - lines.first().split(',').value(1).toDouble();
    QVERIFY2(qAbs(seconds * 10000.0 - (lines.size() - 1 + missing(text))) < 1.0, result.err.constData());
#else
    QSKIP("there is no SIGSTOP here");
#endif
}

void TestToolRecord::survivesAPulledCable()
{
    const ToolRunner runner(Benches::of(Benches::laser(1000, Benches::breakingAfter(5, R"(, "times": 1)"))));
    const ToolResult result = runner.run(recording("-n 2000 --reconnect"));
    QCOMPARE(result.code, 7);
    const QByteArray text = runner.contentOf("values.csv");
    QCOMPARE(frames(text).size(), 2000);
    QCOMPARE(text.count("# gap: "), 1);
    QVERIFY2(linesOf(result.err).last().contains("while the sensor was disconnected"), result.err.constData());
}

void TestToolRecord::endsWhenTheSensorStaysAway()
{
    const QByteArray gone =
        R"("faults": [ { "function": "TransferDataTS", "from": 4, "code": -12, "text": "gone" },
                                           { "function": "OpenSensor", "from": 2, "code": -13, "text": "no answer" } ])";
    const ToolRunner runner(Benches::of(Benches::laser(1000, gone)));
    const ToolResult result = runner.run(recording("--reconnect --give-up 1"));
    QCOMPARE(result.code, 6);
    QVERIFY(frames(runner.contentOf("values.csv.partial")).size() > 1);
    QVERIFY2(result.err.contains("sondixqt: reading failed: "), result.err.constData());
}

void TestToolRecord::isReadableAfterAKill_data()
{
    QTest::addColumn<QString>("file");
    for (const char *name : {"values.csv", "values.jsonl", "values.npy"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void TestToolRecord::isReadableAfterAKill()
{
    QFETCH(QString, file);
    const ToolRunner runner(Benches::of(Benches::laser(10000)));
    const QString partial = file + ".partial";
    const auto told = [&] {
        const QByteArray content = runner.contentOf(partial);
        if (!file.endsWith("npy"))
            return content.count('\n');
        static const QRegularExpression shape("'shape': \\((\\d+),\\)");
        return shape.match(QString::fromLatin1(content.mid(10, 300))).captured(1).toInt();
    };
    QProcess process;
    runner.start(process, recording("", file.toLatin1().constData()));
    QTRY_VERIFY(told() > 1000);
    const int before = told();
    process.kill();
    QVERIFY(process.waitForFinished(10000));
    QVERIFY(told() >= before);
    const QByteArray content = runner.contentOf(partial);
    if (file.endsWith("csv"))
        QVERIFY(frames(content).size() > 900);
    else if (file.endsWith("jsonl"))
        QVERIFY(jsonLines(content).size() > 900);
    // The recording can be continued under the name that it should have had.
    QVERIFY(QFile::rename(runner.path(partial), runner.path(file)));
    QFile::remove(runner.path(file + ".jsonl.partial"));
    const ToolResult result = runner.run(recording("-n 10 --append", file.toLatin1().constData()));
    QVERIFY2(result.code == 0, result.err.constData());
}

QTEST_GUILESS_MAIN(TestToolRecord)
#include "tst_toolrecord.moc"
