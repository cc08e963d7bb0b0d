// SPDX-License-Identifier: MIT
#include "toolrunner.h"

#include <QRegularExpression>

/// Runs the commands that examples/benches/README.md shows, in a copy of that folder.
class TestToolBenchExamples : public QObject
{
    Q_OBJECT

private:
    static QString folder() { return QStringLiteral(SONDIXQT_EXAMPLE_BENCHES); }
    static QByteArray contentOfFile(const QString &name)
    {
        QFile file(folder() + '/' + name);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    static void copyBenches(const ToolRunner &runner)
    {
        for (const QString &name : QDir(folder()).entryList({"*.json", "*.csv"}, QDir::Files))
            runner.writeFile(name, contentOfFile(name));
    }

private Q_SLOTS:
    void theReadmeNamesAllOfThem();
    void theirCommandsWork_data();
    void theirCommandsWork();
    void aReaderMeetsTheExpectationsOfTheFlakyNetwork();
};

void TestToolBenchExamples::theReadmeNamesAllOfThem()
{
    const QByteArray readme = contentOfFile("README.md");
    const QStringList benches = QDir(folder()).entryList({"*.json"}, QDir::Files);
    QVERIFY(benches.size() >= 5);
    for (const QString &name : benches)
        QVERIFY2(readme.contains("--bench " + name.toUtf8()), qPrintable(name));
}

void TestToolBenchExamples::theirCommandsWork_data()
{
    QTest::addColumn<QStringList>("lines");
    static const QRegularExpression block("```console\n(.*?)```", QRegularExpression::DotMatchesEverythingOption);
    const QString readme = QString::fromUtf8(contentOfFile("README.md"));
    int count = 0;
    for (auto it = block.globalMatch(readme); it.hasNext();) {
        const QStringList lines = it.next().captured(1).split('\n', Qt::SkipEmptyParts);
        QTest::newRow(qPrintable(QString::number(++count) + ' ' + lines.first())) << lines;
    }
    QVERIFY(count >= 6);
}

/// The commands of a block, which may follow from each other. A comment names an exit code that is not 0, lines without a
/// prompt are output.
void TestToolBenchExamples::theirCommandsWork()
{
    QFETCH(QStringList, lines);
    ToolRunner runner;
    copyBenches(runner);
    runner.setEnvironment("SONDIX_BENCH_SESSIONS", runner.path("sessions"));
    QByteArray printed;
    for (const QString &line : lines) {
        const QLatin1String prompt("$ sondixqt ");
        if (!line.startsWith(prompt)) {
            QVERIFY2(printed.contains(line.toUtf8()), qPrintable(line + " is not in " + printed));
            continue;
        }
        const QString comment = line.section("  # ", 1);
        const int expected = comment.isEmpty() ? 0 : comment.section(':', 0, 0).toInt();
        const ToolResult result = runner.run(words(qPrintable(line.section("  # ", 0, 0).mid(prompt.size()))));
        QVERIFY2(result.code == expected, qPrintable(line + ": " + result.err));
        printed = result.out;
        QVERIFY2(!line.contains(" read ") || linesOf(printed).size() >= 2, printed.constData());
    }
}

void TestToolBenchExamples::aReaderMeetsTheExpectationsOfTheFlakyNetwork()
{
    ToolRunner runner;
    copyBenches(runner);
    runner.setEnvironment("SONDIX_BENCH_SESSIONS", runner.path("sessions"));
    const ToolResult result =
        runner.run(QStringList{"bench", "check", "flaky-network.json", "--", QStringLiteral(SONDIXQT_TOOL)} +
                   words("read CC430@TCP/IP,address=169.254.168.150 --reconnect --duration 4 --csv -"));
    QCOMPARE(result.code, 7); // the tool's own: it reports what was lost
    QVERIFY2(result.out.contains("ok      CC430 LOOSE: it is opened again: expected at least 2, found "),
             result.out.right(300).constData());
    QVERIFY2(result.out.contains("# gap: 200 frames from number "), result.err.constData());
    QVERIFY(result.out.contains("the sensor was disconnected"));
    // Nothing is invented: every value lies on the sine from 1 to 2 mm.
    int values = 0;
    for (const QByteArray &line :
         linesOf(result.out)) { // also those of the report, which have no number at their end
        const QList<QByteArray> cells = line.trimmed().split(',');
        bool isNumber = false;
        const double value = cells.last().toDouble(&isNumber);
        if (line.startsWith('#') || !isNumber)
            continue;
        QVERIFY2(value > 0.98 && value < 2.02, line.constData());
        ++values;
    }
    QVERIFY(values > 1500);
}

QTEST_GUILESS_MAIN(TestToolBenchExamples)
#include "tst_toolbenchexamples.moc"
