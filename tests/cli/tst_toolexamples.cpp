// SPDX-License-Identifier: MIT
#include "interruptible.h"
#include "toolrunner.h"

#include <QRegularExpression>
#include <QSet>
#include <QTcpSocket>
#include <QUrl>

#include <algorithm>

namespace {

/// A command line from a document, without the tool's name, and its output according to the document.
struct Example
{
    QString line;
    QStringList shown;
};

QString readFile(const char *path)
{
    QFile file(QString::fromLatin1(path));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QString helpOf(const QString &command)
{
    QStringList arguments{"--help"};
    if (!command.isEmpty())
        arguments.prepend(command);
    return QString::fromUtf8(ToolRunner().run(arguments).out);
}

/// The tool's commands according to its help.
QStringList commands()
{
    QStringList names;
    const QString list = helpOf(QString()).section("Subcommands:\n", 1).section("\n\n", 0, 0);
    for (const QString &line : list.split(QLatin1Char('\n')))
        names += line.trimmed().section(QLatin1Char(' '), 0, 0);
    return names;
}

const QLatin1String tool("sondixqt ");

/// Options that name a sensor; the texts show them without a command.
bool namesASensor(const QString &text)
{
    static const QRegularExpression way("^--(type|serial) \\S+( --\\S+ \\S+)*$");
    return way.match(text).hasMatch();
}

void addText(QList<Example> &examples, const QString &text)
{
    if (text.startsWith(tool))
        examples += {text.mid(tool.size()), {}};
    else if (namesASensor(text))
        examples += {"info " + text, {}};
}

QList<Example> examplesOfHelp(const QString &command)
{
    QList<Example> examples;
    for (const QString &line : helpOf(command).split(QLatin1Char('\n')))
        if (line.startsWith("  "))
            addText(examples, line.mid(2));
    return examples;
}

QList<Example> examplesOfReadme()
{
    QList<Example> examples;
    const QString text = readFile(SONDIXQT_README);
    bool inConsole = false;
    for (const QString &line : text.split(QLatin1Char('\n'))) {
        const QLatin1String prompt("$ sondixqt ");
        if (line.startsWith("```"))
            inConsole = line == "```console";
        else if (inConsole && line.startsWith(prompt))
            examples += {line.mid(prompt.size()).section("  #", 0, 0).trimmed(), {}};
        else if (inConsole)
            examples.last().shown += line;
    }
    static const QRegularExpression inlineCode("`([^`\n]+)`");
    for (auto it = inlineCode.globalMatch(text); it.hasNext();)
        addText(examples, it.next().captured(1));
    return examples;
}

/// Makes lines of different measurements comparable: replaces numbers and ignores the widths of columns.
QString comparable(const QString &line)
{
    static const QRegularExpression number("\\d+(\\.\\d+)?");
    return line.simplified().replace(number, "0");
}

/// The complete answer of \a url to a GET request for \a path.
QByteArray get(const QUrl &url, const QString &path)
{
    QTcpSocket socket;
    socket.connectToHost(url.host(), static_cast<quint16>(url.port()));
    socket.write("GET " + path.toLatin1() + " HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n\r\n");
    QByteArray answer;
    while (socket.waitForReadyRead(10000))
        answer += socket.readAll();
    return answer;
}

} // namespace

/// Runs the examples of the documents on the simulator's built-in bench.
class TestToolExamples : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void everyCommandHasAnExample();
    void examplesWork_data();
    void examplesWork();

private:
    static bool isEndless(const QStringList &arguments);
    static void checkPurpose(const ToolRunner &runner, const QStringList &arguments, const ToolResult &result);
    static ToolResult runUntilInterrupted(const ToolRunner &runner, const QStringList &arguments,
                                          const QStringList &shown);
};

void TestToolExamples::everyCommandHasAnExample()
{
    QVERIFY(commands().size() >= 14);
    for (const QString &command : commands()) {
        const QList<Example> examples = examplesOfHelp(command);
        const bool has = std::any_of(examples.begin(), examples.end(), [&command](const Example &example) {
            return example.line.section(QLatin1Char(' '), 0, 0) == command;
        });
        QVERIFY2(has, qPrintable(command));
    }
}

void TestToolExamples::examplesWork_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QStringList>("shown");
    QList<Example> examples = examplesOfReadme();
    QVERIFY(examples.size() >= 12);
    for (const QString &command : QStringList(QString()) + commands())
        examples += examplesOfHelp(command);
    QSet<QString> known; // the help texts of all commands share the examples of how to name a sensor
    for (const Example &example : qAsConst(examples)) {
        if (example.shown.isEmpty() && known.contains(example.line))
            continue;
        known += example.line;
        if (!example.line.contains("<command>")) {
            QTest::newRow(qPrintable(example.line)) << example.line << example.shown;
            continue;
        }
        for (const QString &command : commands()) {
            const QString line = QString(example.line).replace("<command>", command);
            QTest::newRow(qPrintable(line)) << line << example.shown;
        }
    }
}

bool TestToolExamples::isEndless(const QStringList &arguments)
{
    const bool isLimited =
        arguments.contains("-n") || arguments.contains("--duration") || arguments.contains("--help");
    return !isLimited && QStringList{"tunnel", "read", "record"}.contains(arguments.first());
}

void TestToolExamples::examplesWork()
{
    QFETCH(QString, line);
    QFETCH(QStringList, shown);
    ToolRunner runner;
    runner.writeFile("mybench.json", readFile(SONDIXQT_BUILTIN_BENCH).toUtf8());
    QStringList arguments = line.split(QLatin1Char(' '));
#ifdef Q_OS_WIN
    arguments.removeAll("--open"); // it would start the browser of the user
#else
    const QString browser =
        runner.writeFile("xdg-open", "#!/bin/sh\necho \"$*\" >" + runner.path("opened").toUtf8() + "\n");
    QVERIFY(QFile::setPermissions(browser, QFile::ReadOwner | QFile::ExeOwner));
    runner.setEnvironment("PATH", runner.path(QString()) + ":/usr/bin:/bin");
#endif

    const bool endless = isEndless(arguments);
    const ToolResult result = endless ? runUntilInterrupted(runner, arguments, shown) : runner.run(arguments);
    QVERIFY2(result.code == (endless ? 130 : 0), result.err.constData());
    QStringList printed;
    for (const QString &one : QString::fromUtf8(result.out + result.err).split(QLatin1Char('\n')))
        printed += comparable(one);
    for (const QString &one : qAsConst(shown)) {
        const QString expected = comparable(one.section("...", 0, 0));
        const bool found = std::any_of(printed.cbegin(), printed.cend(), [&](const QString &candidate) {
            return one.contains("...") ? candidate.startsWith(expected) : candidate == expected;
        });
        QVERIFY2(found, qPrintable(one));
    }
    checkPurpose(runner, arguments, result);
}

ToolResult TestToolExamples::runUntilInterrupted(const ToolRunner &runner, const QStringList &arguments,
                                                 const QStringList &shown)
{
    InterruptibleProcess process;
    runner.start(process, arguments);
    QByteArray line;
    if (arguments.first() == "record") {
        const auto isWritten = [&runner] {
            const QStringList names = runner.files().filter(".partial");
            return !names.isEmpty() && runner.contentOf(names.first()).count('\n') > 1;
        };
        [&] { QTRY_VERIFY(isWritten()); }();
        process.interrupt();
        return ToolRunner::finish(process);
    }
    [&] { QTRY_VERIFY(process.canReadLine()); }();
    line = process.readLine();
    if (arguments.first() == "tunnel") {
        const QUrl url(QString::fromLatin1(line.trimmed()));
        static const QRegularExpression request("^GET (\\S+) 200, ");
        for (const QString &one : QStringList("GET / 200, ") + shown)
            if (const auto match = request.match(one); match.hasMatch())
                [&] { QVERIFY2(get(url, match.captured(1)).startsWith("HTTP/1.1 200 OK"), qPrintable(one)); }();
        if (arguments.contains("--open"))
            [&] { QTRY_COMPARE(runner.contentOf("opened").trimmed(), line.trimmed()); }();
    } else {
        [&] { QTRY_VERIFY(process.canReadLine()); }(); // the first values, after the headings
    }
    process.interrupt();
    ToolResult result = ToolRunner::finish(process);
    result.out.prepend(line);
    return result;
}

// Checks the essential output of a command. Fails for unknown commands, so that new ones get a check.
void TestToolExamples::checkPurpose(const ToolRunner &runner, const QStringList &arguments,
                                    const ToolResult &result)
{
    const QString command = arguments.first() == QLatin1String("--bench") ? arguments.value(2) : arguments.first();
    const auto valueOf = [&arguments](const char *option) {
        const int at = arguments.indexOf(QLatin1String(option));
        return at < 0 ? QString() : arguments.value(at + 1);
    };
    const QByteArray out = result.out.simplified();
    if (arguments.contains("--help")) {
        QVERIFY(out.contains("Usage: sondixqt " + command.toLatin1()));
    } else if (command == "models") {
        QVERIFY(out.contains("TX270 41 Tavrin TX270 Tavrin"));
    } else if (command == "find") {
        QVERIFY(out.contains("RS232 COM3 TX270 1018001 TX270@RS232,port=COM3,baudrate=115200"));
    } else if (command == "info") {
        QVERIFY(out.contains("Data frame"));
    } else if (command == "read") {
        const QString file = valueOf("--csv");
        const QByteArray values = file.isEmpty() ? result.out : runner.contentOf(file);
        QVERIFY(values.startsWith("time [s]") || values.simplified().startsWith("time [s]"));
        QVERIFY(linesOf(values).size() >= 2);
        QVERIFY(result.err.contains("1 value read in "));
    } else if (command == "record") {
        const QFileInfo file(valueOf("-o"));
        const QStringList written =
            runner.files().filter(QRegularExpression('^' + file.baseName() + ".*" + file.suffix()));
        QVERIFY2(!written.isEmpty() && runner.files().filter(".partial").isEmpty(), qPrintable(written.join(' ')));
        for (const QString &name : written)
            QVERIFY(runner.contentOf(name).size() > 200);
        QVERIFY(result.err.contains(" read in "));
    } else if (command == "params") {
        QVERIFY(out.contains("SA_Measrate 2"));
    } else if (command == "get") {
        QCOMPARE(out, QByteArray("1018001"));
    } else if (command == "set" || command == "exec") {
        QCOMPARE(result.out + result.err, QByteArray());
    } else if (command == "mode") {
        QVERIFY(out.contains("1 Thickness current"));
    } else if (command == "trigger") {
        QCOMPARE(out, QByteArray("the sensor measures without a trigger"));
    } else if (command == "sync") {
        QCOMPARE(out, QByteArray("the sensor measures on its own"));
    } else if (command == "video") {
        QVERIFY(runner.contentOf(valueOf("--line")).startsWith("\x89PNG"));
    } else if (command == "bench") {
        QVERIFY(out.contains("1018001 TX270 RS232, port COM3"));
    } else if (command == "tunnel") {
        QVERIFY(out.startsWith("http://127.0.0.1:"));
        QVERIFY(result.err.contains("GET / 200, "));
    } else {
        QFAIL(qPrintable(QStringLiteral("there is no check for '%1'").arg(command)));
    }
}

QTEST_GUILESS_MAIN(TestToolExamples)
#include "tst_toolexamples.moc"
