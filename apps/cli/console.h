// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

/// The two streams of the tool: data go to stdout, everything else to stderr, both in UTF-8.
class Console
{
public:
    enum Style { Plain, Bold, Red };

    Console();

    bool stdoutIsTerminal() const { return m_stdoutIsTerminal; }
    bool stderrIsTerminal() const { return m_stderrIsTerminal; }

    /// Writes data to stdout; false when that fails, now or before.
    bool write(const QByteArray &data);
    /// Writes one line of data to stdout.
    bool print(const QString &line) { return write(line.toUtf8() + '\n'); }
    /// Hands everything written so far to whoever reads it.
    bool flush();
    /// Why stdout cannot be written to; empty while it can.
    QString outputProblem() const { return m_outputProblem; }

    /// Writes one line to stderr. Nothing more is said once the reader of stdout has left, as 'head' does when it has
    /// enough: that is no failure that its user must hear of.
    void note(const QString &line);
    /// Writes the one sentence that says what went wrong.
    void error(const QString &sentence);
    /// Shows \a line on stderr in place of the last one shown so; a note or an empty line removes it.
    /// Without effect where stderr is no terminal. What does not fit into the terminal's width is left out.
    void status(const QString &line);
    /// How many characters of a status are shown.
    int statusWidth() const;

    /// \a text as stdout shows it: with its style where that is wanted.
    QString styled(const QString &text, Style style) const;

    /// Writes \a data to stderr and hands it on, from any thread: for what is not this object's to arrange.
    static void toStderr(const QByteArray &data);
    /// Gives a console of Windows back as it was found, from any thread: for an end of the program that skips it.
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
