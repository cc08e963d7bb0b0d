// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <cstdio>

/// The output streams of the tool: data go to stdout, everything else goes to stderr, both in UTF-8.
class Console
{
public:
    enum Style { Plain, Bold, Red };

    Console();

    /// The streams of all consoles, instead of stdout and stderr. For tests; a stream must be open until the next call.
    static void useStreams(std::FILE *out, std::FILE *err);

    bool stdoutIsTerminal() const { return m_stdoutIsTerminal; }
    bool stderrIsTerminal() const { return m_stderrIsTerminal; }

    /// Writes data to stdout. Returns false if this or an earlier write failed.
    bool write(const QByteArray &data);
    /// Writes one line of data to stdout.
    bool print(const QString &line) { return write(line.toUtf8() + '\n'); }
    /// Flushes stdout. Returns false if this or an earlier write failed.
    bool flush();
    /// The error of the first failed write to stdout; empty if there was none.
    QString outputProblem() const { return m_outputProblem; }

    /// Writes one line to stderr. Does nothing after the reader of stdout has closed the pipe, as 'head' does: the
    /// user does not need to see that as an error.
    void note(const QString &line);
    /// Writes an error message to stderr.
    void error(const QString &sentence);
    /// Shows \a line as status line on stderr, replacing the previous one; a note or an empty line removes it.
    /// Does nothing if stderr is not a terminal. Text beyond the width of the terminal is cut off.
    void status(const QString &line);
    /// The maximum number of characters of a status line.
    int statusWidth() const;

    /// \a text with the escape sequences of \a style if stdout is a terminal that shows colours.
    QString styled(const QString &text, Style style) const;

    /// Writes \a data to stderr and flushes it, without regard to the status line. Threads: any.
    static void toStderr(const QByteArray &data);
    /// Restores the settings of a Windows console, for when the process ends without running destructors. Threads: any.
    static void restore();

private:
    void failOutput();

    bool m_stdoutIsTerminal = false;
    bool m_stderrIsTerminal = false;
    bool m_stdoutColours = false;
    bool m_stderrColours = false;
    bool m_statusShown = false;
    bool m_readerLeft = false;
    QString m_outputProblem;
};
