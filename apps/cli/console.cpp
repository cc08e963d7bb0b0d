// SPDX-License-Identifier: MIT
#include "console.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#ifdef Q_OS_WIN
#    include <fcntl.h>
#    include <io.h>
#    include <windows.h>
#else
#    include <unistd.h>
#endif

namespace {

bool isTerminal(FILE *stream)
{
#ifdef Q_OS_WIN
    return _isatty(_fileno(stream)) != 0;
#else
    return isatty(fileno(stream)) != 0;
#endif
}

void prepareStreams()
{
#ifdef Q_OS_WIN
    SetConsoleOutputCP(CP_UTF8);
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
#endif
}

QString withStyle(const QString &text, Console::Style style)
{
    switch (style) {
    case Console::Bold:
        return QStringLiteral("\x1b[1m%1\x1b[0m").arg(text);
    case Console::Red:
        return QStringLiteral("\x1b[31m%1\x1b[0m").arg(text);
    case Console::Plain:
        break;
    }
    return text;
}

} // namespace

Console::Console()
    : m_stdoutIsTerminal(isTerminal(stdout))
    , m_stderrIsTerminal(isTerminal(stderr) && qgetenv("TERM") != "dumb")
{
    prepareStreams();
    const bool colours = qEnvironmentVariableIsEmpty("NO_COLOR") && qgetenv("TERM") != "dumb";
    m_stdoutColours = colours && m_stdoutIsTerminal;
    m_stderrColours = colours && m_stderrIsTerminal;
}

bool Console::write(const QByteArray &data)
{
    if (!m_outputProblem.isEmpty())
        return false;
    // Both streams may end on the same terminal, also through a pipe.
    status(QString());
    if (std::fwrite(data.constData(), 1, static_cast<size_t>(data.size()), stdout) !=
        static_cast<size_t>(data.size()))
        m_outputProblem = QString::fromLocal8Bit(std::strerror(errno));
    return m_outputProblem.isEmpty();
}

bool Console::flush()
{
    if (m_outputProblem.isEmpty() && std::fflush(stdout) != 0)
        m_outputProblem = QString::fromLocal8Bit(std::strerror(errno));
    return m_outputProblem.isEmpty();
}

void Console::note(const QString &line)
{
    status(QString());
    flush();
    toStderr(line.toUtf8() + '\n');
}

void Console::error(const QString &sentence)
{
    const QString prefix = QStringLiteral("sondixqt:");
    note((m_stderrColours ? withStyle(prefix, Red) : prefix) + QLatin1Char(' ') + sentence);
}

void Console::status(const QString &line)
{
    if (!m_stderrIsTerminal || (line.isEmpty() && !m_statusShown))
        return;
    constexpr int width = 79; // a longer line would wrap and could not be taken back
    toStderr("\r\x1b[K" + line.left(width).toUtf8());
    m_statusShown = !line.isEmpty();
}

QString Console::styled(const QString &text, Style style) const
{
    return m_stdoutColours ? withStyle(text, style) : text;
}

void Console::toStderr(const QByteArray &data)
{
    std::fwrite(data.constData(), 1, static_cast<size_t>(data.size()), stderr);
    std::fflush(stderr);
}
