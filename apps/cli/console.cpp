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

std::FILE *outStream = stdout;
std::FILE *errStream = stderr;

#ifdef Q_OS_WIN

HANDLE handleOf(FILE *stream)
{
    return reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
}

// Only consoles with support for escape sequences count; it is off by default.
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

// The C runtime maps a closed pipe to the same errno as other errors; the system error is more precise.
bool isReaderGone(int error)
{
    const unsigned long systemError = _doserrno;
    return error == EPIPE || systemError == ERROR_NO_DATA || systemError == ERROR_BROKEN_PIPE;
}

// Settings of a console outlive the program, so they are restored at the end.
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

// Consoles get UTF-16: they show the bytes of a UTF-8 sequence that is split between two writes as single characters.
// Other character devices, such as NUL, are recognised by the failure of WriteConsoleW(): GetConsoleMode() would need
// a handle with read access.
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
    // When the reader has closed the pipe, the write must fail and not end the process, which still has to close the
    // sensor.
    std::signal(SIGPIPE, SIG_IGN);
    // The same beyond the limit on the size of files. Programs that are started do not inherit a handler.
    std::signal(SIGXFSZ, [](int) {});
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

void Console::useStreams(std::FILE *out, std::FILE *err)
{
    outStream = out;
    errStream = err;
}

Console::Console()
{
    prepareStreams();
    m_stdoutIsTerminal = isTerminal(outStream);
    m_stderrIsTerminal = isTerminal(errStream) && qgetenv("TERM") != "dumb";
    const bool colours = qEnvironmentVariableIsEmpty("NO_COLOR") && qgetenv("TERM") != "dumb";
    m_stdoutColours = colours && m_stdoutIsTerminal;
    m_stderrColours = colours && m_stderrIsTerminal;
}

bool Console::write(const QByteArray &data)
{
    if (!m_outputProblem.isEmpty())
        return false;
    // stdout may reach the same terminal as stderr, also through a pipe.
    status(QString());
    if (!put(data, outStream))
        failOutput();
    return m_outputProblem.isEmpty();
}

bool Console::flush()
{
    if (m_outputProblem.isEmpty() && std::fflush(outStream) != 0)
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
    // A line that wraps could not be erased again.
    toStderr("\r\x1b[K" + line.left(statusWidth()).toUtf8());
    m_statusShown = !line.isEmpty();
}

int Console::statusWidth() const
{
    constexpr int usualWidth = 80;
    const int reported = terminalWidth(errStream);
    // Some terminals wrap as soon as the last column is written.
    return std::max(1, (reported > 0 ? reported : usualWidth) - 1);
}

QString Console::styled(const QString &text, Style style) const
{
    return m_stdoutColours ? withStyle(text, style) : text;
}

void Console::toStderr(const QByteArray &data)
{
    put(data, errStream);
    std::fflush(errStream);
}

void Console::restore()
{
    restoreConsole();
}
