// SPDX-License-Identifier: MIT
#include "toolrunner.h"

#include <QRegularExpression>

/// Follows docs/first-application.md in an empty folder: writes its files, runs its commands, compares what they print.
class TestToolGuide : public QObject
{
    Q_OBJECT

private:
    /// Makes outputs of different runs comparable: replaces the numbers that depend on time, which are those of frames and
    /// of attempts to open the sensor, and ignores the widths of columns.
    static QString comparable(const QString &text)
    {
        static const QRegularExpression number(
            "\\d+(?= frames,| outside )|(?<=opens it again: expected at least 2, found )[2-9]");
        return text.simplified().replace(number, "N");
    }

private Q_SLOTS:
    void leadsToATestedApplication();
};

void TestToolGuide::leadsToATestedApplication()
{
    QFile guide(SONDIXQT_GUIDE);
    QVERIFY(guide.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(guide.readAll());

    ToolRunner runner;
    QProcessEnvironment environment = runner.environment();
    environment.insert("CMAKE_PREFIX_PATH", SONDIXQT_BUILD);
    environment.insert("PATH", QFileInfo(SONDIXQT_TOOL).path() + ':' + environment.value("PATH"));
    environment.insert("SONDIX_BENCH_SESSIONS", runner.path("sessions"));
    environment.insert("CMAKE_BUILD_PARALLEL_LEVEL", "2");
    // A file has its name above the block.
    static const QRegularExpression block("(?:`([^`\n]+)`:\n\n)?```(\\w+)\n(.*?)```",
                                          QRegularExpression::DotMatchesEverythingOption);
    int files = 0;
    int commands = 0;
    int outputs = 0;
    QString printed;
    for (auto it = block.globalMatch(text); it.hasNext();) {
        const QRegularExpressionMatch match = it.next();
        const QString file = match.captured(1);
        const QString kind = match.captured(2);
        const QString content = match.captured(3);
        if (!file.isEmpty()) {
            runner.writeFile(file, content.toUtf8());
            ++files;
        } else if (kind == "sh") {
            QProcess shell;
            shell.setProcessEnvironment(environment);
            shell.setWorkingDirectory(runner.path(QString()));
            shell.setProcessChannelMode(QProcess::MergedChannels);
            shell.start("/bin/sh", {"-e", "-c", content});
            QVERIFY(shell.waitForFinished(240000));
            const QByteArray output = shell.readAll();
            QVERIFY2(shell.exitStatus() == QProcess::NormalExit && shell.exitCode() == 0,
                     (content.toUtf8() + output).constData());
            printed = QString::fromUtf8(output);
            ++commands;
        } else {
            QCOMPARE(kind, QString("text"));
            for (const QString &line : content.split('\n', Qt::SkipEmptyParts))
                QVERIFY2(comparable(printed).contains(comparable(line)), qPrintable(line + "\n" + printed));
            ++outputs;
        }
    }
    QCOMPARE(files, 6);
    QVERIFY(commands >= 5 && outputs >= 5);
    QVERIFY(runner.contentOf("report.xml").contains("<testcase "));
}

QTEST_GUILESS_MAIN(TestToolGuide)
#include "tst_toolguide.moc"
