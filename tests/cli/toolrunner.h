// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QList>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>
#include <QtTest>

/// How a run of the tool ended.
struct ToolResult
{
    int code = -1; ///< exit code; -1 after a crash or a timeout
    QByteArray out;
    QByteArray err;
};

/// Runs the tool with its own bench in a temporary folder.
class ToolRunner
{
public:
    explicit ToolRunner(const QByteArray &bench = QByteArray())
        : m_environment(QProcessEnvironment::systemEnvironment())
    {
        m_environment.remove("NO_COLOR");
        m_environment.remove("SONDIX_BENCH");
        if (!bench.isEmpty())
            setEnvironment("SONDIX_BENCH", writeFile("bench.json", bench));
    }

    void setEnvironment(const char *name, const QString &value)
    {
        m_environment.insert(QString::fromLatin1(name), value);
    }

    QProcessEnvironment environment() const { return m_environment; }
    QString path(const QString &name) const { return m_dir.filePath(name); }
    QStringList files() const { return QDir(m_dir.path()).entryList(QDir::Files | QDir::Hidden, QDir::Name); }

    QString writeFile(const QString &name, const QByteArray &content) const
    {
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("cannot write %s", qPrintable(file.fileName()));
        return file.fileName();
    }

    QByteArray contentOf(const QString &name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    void start(QProcess &process, const QStringList &arguments) const
    {
        process.setProcessEnvironment(m_environment);
        process.setWorkingDirectory(m_dir.path());
        process.start(QStringLiteral(SONDIXQT_TOOL), arguments);
#ifdef Q_OS_WIN
        // Wine sometimes fails to start a program, with an internal error after five seconds.
        if (!process.waitForStarted() && process.error() == QProcess::FailedToStart)
            process.start(QStringLiteral(SONDIXQT_TOOL), arguments);
#endif
        if (!process.waitForStarted())
            qFatal("cannot start %s: %s", SONDIXQT_TOOL, qPrintable(process.errorString()));
    }

    static ToolResult finish(QProcess &process)
    {
        constexpr int timeLimitMs = 60000;
        ToolResult result;
        if (process.waitForFinished(timeLimitMs) && process.exitStatus() == QProcess::NormalExit)
            result.code = process.exitCode();
        result.out = process.readAllStandardOutput();
        result.err = process.readAllStandardError();
        // Tests compare only the exit code of a sanitizer failure: print its report.
        if (result.err.contains("Sanitizer"))
            qWarning("%s", result.err.constData());
        return result;
    }

    ToolResult run(const QStringList &arguments) const
    {
        QProcess process;
        start(process, arguments);
        return finish(process);
    }

private:
    QTemporaryDir m_dir;
    QProcessEnvironment m_environment;
};

/// Splits a command line without quotes into arguments.
inline QStringList words(const char *line)
{
    return QString::fromUtf8(line).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

/// The arguments of \a line, with the sensor's address inserted after the command.
inline QStringList with(const QByteArray &address, const QString &line)
{
    QStringList arguments = line.split(QLatin1Char(' '));
    arguments.insert(1, QString::fromLatin1(address));
    return arguments;
}

/// The JSON object that a program has printed.
inline QJsonObject objectOf(const ToolResult &result)
{
    return QJsonDocument::fromJson(result.out).object();
}

/// Splits \a text, which must end with a line feed, into lines.
inline QList<QByteArray> linesOf(const QByteArray &text)
{
    QList<QByteArray> lines = text.split('\n');
    if (lines.takeLast() != QByteArray())
        qWarning("the last line is not whole");
    return lines;
}

/// Parses each line as a JSON object; returns an empty list if one of them is not an object.
inline QList<QJsonObject> jsonLines(const QByteArray &text)
{
    QList<QJsonObject> objects;
    for (const QByteArray &line : linesOf(text)) {
        const QJsonDocument document = QJsonDocument::fromJson(line);
        if (!document.isObject())
            return {};
        objects += document.object();
    }
    return objects;
}
