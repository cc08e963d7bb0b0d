// SPDX-License-Identifier: MIT
#include "toolrunner.h"

#include <QRegularExpression>

#include <csignal>

namespace {

/// A fenced block of a document.
struct Block
{
    QString file; ///< the name above the block, if it is the content of a file
    QString language;
    QString content;
};

QList<Block> blocksOf(const QString &document)
{
    QFile file(QStringLiteral(SONDIXQT_DOCS "/") + document);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", qPrintable(file.fileName()));
    static const QRegularExpression fenced("(?:`([^`\n]+)`:\n\n)?```(\\w*)\n(.*?)```",
                                           QRegularExpression::DotMatchesEverythingOption);
    QList<Block> blocks;
    for (auto it = fenced.globalMatch(QString::fromUtf8(file.readAll())); it.hasNext();) {
        const QRegularExpressionMatch match = it.next();
        blocks += {match.captured(1), match.captured(2), match.captured(3)};
    }
    return blocks;
}

/// Makes outputs of different runs comparable: replaces the numbers that depend on time, which are those of frames and
/// of attempts to open the sensor, and ignores the widths of columns.
QString comparable(const QString &text)
{
    static const QRegularExpression number(
        "\\d+(?= frames,| outside )|(?<=opens it again: expected at least 2, found )[2-9]");
    return text.simplified().replace(number, "N");
}

/// An empty folder in which the commands of a document run, with the tool in the path.
class Shell
{
public:
    Shell()
    {
        m_runner.setEnvironment("CMAKE_PREFIX_PATH", SONDIXQT_BUILD);
        m_runner.setEnvironment("CMAKE_BUILD_PARALLEL_LEVEL", "2");
        m_runner.setEnvironment("PATH", m_runner.path(QString()) + ':' + QFileInfo(SONDIXQT_TOOL).path() + ':' +
                                            m_runner.environment().value("PATH"));
        m_runner.setEnvironment("SONDIX_BENCH_SESSIONS", m_runner.path("sessions"));
    }

    const ToolRunner &files() const { return m_runner; }

    /// What \a commands print. Fails the test if one of them fails.
    QString run(const QString &commands) const
    {
        QProcess shell;
        start(shell, commands);
        return finish(shell, commands, 0);
    }

    /// What \a command, which runs until Ctrl-C, prints until it has written to \a file.
    QString runUntilWritten(const QString &command, const QString &file) const
    {
        QProcess shell;
        start(shell, "exec " + command); // Ctrl-C is for the command, not for the shell
        const bool isWritten =
            QTest::qWaitFor([&] { return QFileInfo(m_runner.path(file)).size() > 0; }, timeLimitMs);
        ::kill(static_cast<pid_t>(shell.processId()), SIGINT);
        constexpr int interrupted = 130;
        const QString printed = finish(shell, command, interrupted);
        if (!isWritten)
            QTest::qFail(qPrintable(file + " was not written: " + printed), __FILE__, __LINE__);
        return printed;
    }

private:
    static constexpr int timeLimitMs = 240000;

    void start(QProcess &shell, const QString &commands) const
    {
        shell.setProcessEnvironment(m_runner.environment());
        shell.setWorkingDirectory(m_runner.path(QString()));
        shell.setProcessChannelMode(QProcess::MergedChannels);
        shell.start("/bin/sh", {"-e", "-c", commands});
        if (!shell.waitForStarted())
            qFatal("cannot start a shell");
    }

    static QString finish(QProcess &shell, const QString &commands, int exitCode)
    {
        const bool isFinished = shell.waitForFinished(timeLimitMs);
        const QString printed = QString::fromUtf8(shell.readAll());
        if (!isFinished || shell.exitStatus() != QProcess::NormalExit || shell.exitCode() != exitCode)
            QTest::qFail(qPrintable(commands + printed), __FILE__, __LINE__);
        return printed;
    }

    ToolRunner m_runner;
};

} // namespace

/// Follows the guides: writes their files, runs their commands, compares what they print.
class TestToolGuide : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void leadsToATestedApplication();
    void itsCommandsWork_data();
    void itsCommandsWork();
};

void TestToolGuide::leadsToATestedApplication()
{
    const Shell shell;
    int files = 0;
    int commands = 0;
    int outputs = 0;
    QString printed;
    for (const Block &block : blocksOf("first-application.md")) {
        if (!block.file.isEmpty()) {
            shell.files().writeFile(block.file, block.content.toUtf8());
            ++files;
        } else if (block.language == "sh") {
            printed = shell.run(block.content);
            QVERIFY(!QTest::currentTestFailed());
            ++commands;
        } else {
            QCOMPARE(block.language, QString("text"));
            for (const QString &line : block.content.split('\n', Qt::SkipEmptyParts))
                QVERIFY2(comparable(printed).contains(comparable(line)), qPrintable(line + "\n" + printed));
            ++outputs;
        }
    }
    QCOMPARE(files, 6);
    QVERIFY(commands >= 5 && outputs >= 5);
    QVERIFY(shell.files().contentOf("report.xml").contains("<testcase "));
}

void TestToolGuide::itsCommandsWork_data()
{
    QTest::addColumn<QStringList>("results");
    QTest::newRow("bench-files.md") << QStringList{"bench.schema.json"};
    QTest::newRow("bench-sessions.md") << QStringList{"report.xml"};
    QTest::newRow("recording.md") << QStringList{"values.csv"};
    QTest::newRow("recording-calls.md") << QStringList{"session.jsonl", "bench.json"};
}

/// The commands of a guide follow from each other. Each guide assumes a bench and a program of the user.
void TestToolGuide::itsCommandsWork()
{
    QFETCH(QStringList, results);
    const Shell shell;
    QVERIFY(QFile::copy(SONDIXQT_EXAMPLE_BENCH, shell.files().path("mybench.json")));
    QFile program(shell.files().writeFile("myprogram", "#!/bin/sh -e\n"
                                                       "test \"$1\" = --port\n"
                                                       "sondixqt read \"TX270@RS232,port=$2\" -n 50\n"));
    QVERIFY(program.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    int count = 0;
    for (const Block &block : blocksOf(QString::fromLatin1(QTest::currentDataTag()))) {
        if (block.language != "sh")
            continue;
        ++count;
        if (block.content.startsWith("sondixqt record "))
            shell.runUntilWritten(block.content, "values.csv.partial");
        else
            shell.run(block.content);
        QVERIFY(!QTest::currentTestFailed());
    }
    QVERIFY(count > 0);
    for (const QString &name : results)
        QVERIFY2(!shell.files().contentOf(name).isEmpty(), qPrintable(name));
}

QTEST_GUILESS_MAIN(TestToolGuide)
#include "tst_toolguide.moc"
