// SPDX-License-Identifier: MIT
#include "console.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

#ifdef Q_OS_WIN
#    include <fcntl.h>
#    include <io.h>
#    include <windows.h>
#else
#    include <csignal>
#    include <sys/ioctl.h>
#    include <unistd.h>
#endif

namespace {

#ifdef Q_OS_WIN

HANDLE handleOf(FILE *stream)
{
    return reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
}

// What counts is a terminal that heeds escape sequences, which a console must be told to do.
bool isTerminal(FILE *stream)
{
    DWORD mode = 0;
    return GetConsoleMode(handleOf(stream), &mode) &&
           SetConsoleMode(handleOf(stream), mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

int terminalWidth(FILE *stream)
{
    CONSOLE_SCREEN_BUFFER_INFO info = {};
    return GetConsoleScreenBufferInfo(handleOf(stream), &info) ? info.srWindow.Right - info.srWindow.Left + 1 : 0;
}

// The runtime does not tell the ends of a pipe apart from other mistakes.
bool isReaderGone(int error)
{
    const unsigned long systemError = _doserrno;
    return error == EPIPE || systemError == ERROR_NO_DATA || systemError == ERROR_BROKEN_PIPE;
}

// A console keeps what is set after the program has ended, so its next user gets it back.
class ConsoleSettings
{
public:
    ConsoleSettings()
    {
        for (size_t i = 0; i < std::size(m_streams); ++i)
            m_known[i] = GetConsoleMode(handleOf(m_streams[i]), &m_modes[i]) != 0;
    }
    ~ConsoleSettings() { restore(); }
    void restore() const
    {
        for (size_t i = 0; i < std::size(m_streams); ++i) {
            if (m_known[i])
                SetConsoleMode(handleOf(m_streams[i]), m_modes[i]);
        }
        SetConsoleOutputCP(m_codePage);
    }
    ConsoleSettings(const ConsoleSettings &) = delete;
    ConsoleSettings &operator=(const ConsoleSettings &) = delete;

private:
    FILE *m_streams[2] = {stdout, stderr};
    DWORD m_modes[2] = {};
    bool m_known[2] = {};
    UINT m_codePage = GetConsoleOutputCP();
};

// A console shows single bytes of a letter as letters of their own, so it gets text. Whether it is one shows only
// when it takes that: what cannot be read from cannot be asked.
bool put(const QByteArray &data, FILE *stream)
{
    if (GetFileType(handleOf(stream)) == FILE_TYPE_CHAR) {
        const std::wstring text = QString::fromUtf8(data).toStdWString();
        DWORD written = 0;
        if (WriteConsoleW(handleOf(stream), text.data(), static_cast<DWORD>(text.size()), &written, nullptr))
            return true;
    }
    return std::fwrite(data.constData(), 1, static_cast<size_t>(data.size()), stream) ==
           static_cast<size_t>(data.size());
}

const ConsoleSettings &settingsBefore()
{
    static const ConsoleSettings before;
    return before;
}

void prepareStreams()
{
    settingsBefore();
    SetConsoleOutputCP(CP_UTF8);
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
}

void restoreConsole()
{
    settingsBefore().restore();
}

#else

bool isTerminal(FILE *stream)
{
    return isatty(fileno(stream)) != 0;
}

int terminalWidth(FILE *stream)
{
    winsize size = {};
    return ioctl(fileno(stream), TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

bool isReaderGone(int error)
{
    return error == EPIPE;
}

bool put(const QByteArray &data, FILE *stream)
{
    return std::fwrite(data.constData(), 1, static_cast<size_t>(data.size()), stream) ==
           static_cast<size_t>(data.size());
}

void prepareStreams()
{
    // A reader that leaves shows as a failing write, after which the sensor is still closed.
    std::signal(SIGPIPE, SIG_IGN);
}

void restoreConsole() {}

#endif

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
{
    prepareStreams();
    m_stdoutIsTerminal = isTerminal(stdout);
    m_stderrIsTerminal = isTerminal(stderr) && qgetenv("TERM") != "dumb";
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
    if (!put(data, stdout))
        failOutput();
    return m_outputProblem.isEmpty();
}

bool Console::flush()
{
    if (m_outputProblem.isEmpty() && std::fflush(stdout) != 0)
        failOutput();
    return m_outputProblem.isEmpty();
}

void Console::failOutput()
{
    const int error = errno;
    m_readerLeft = isReaderGone(error);
    m_outputProblem = QString::fromLocal8Bit(std::strerror(error));
}

void Console::note(const QString &line)
{
    status(QString());
    flush();
    if (!m_readerLeft)
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
    // A longer line would wrap and could not be taken back.
    toStderr("\r\x1b[K" + line.left(statusWidth()).toUtf8());
    m_statusShown = !line.isEmpty();
}

int Console::statusWidth() const
{
    constexpr int usualWidth = 80;
    const int told = terminalWidth(stderr);
    // Some terminals go on to the next line with a character in their last column.
    return std::max(1, (told > 0 ? told : usualWidth) - 1);
}

QString Console::styled(const QString &text, Style style) const
{
    return m_stdoutColours ? withStyle(text, style) : text;
}

void Console::toStderr(const QByteArray &data)
{
    put(data, stderr);
    std::fflush(stderr);
}

void Console::restore()
{
    restoreConsole();
}
