// SPDX-License-Identifier: MIT
#pragma once

#include <QProcess>

#include <fcntl.h>

#ifdef Q_OS_WIN
#    include <io.h>
#    include <windows.h>
#else
#    include <unistd.h>
#endif

/// A process whose stdout is a pipe that the test can close.
class PipedProcess : public QProcess
{
public:
    PipedProcess();
    ~PipedProcess() override { leave(); }

    /// Reads the next line of output, or the rest if the process has ended. Call it only after the start.
    QByteArray readLine();
    void leave();

#ifndef Q_OS_WIN
protected:
    void setupChildProcess() override
    {
        ::dup2(m_ends[1], STDOUT_FILENO);
    }
#endif

private:
    static void close(int &end);

    int m_ends[2] = {-1, -1};
};

#ifdef Q_OS_WIN

inline PipedProcess::PipedProcess()
{
    if (_pipe(m_ends, 4096, _O_BINARY | _O_NOINHERIT) != 0)
        qFatal("there is no pipe to be had");
    setCreateProcessArgumentsModifier([this](CreateProcessArguments *arguments) {
        auto *const end = reinterpret_cast<HANDLE>(_get_osfhandle(m_ends[1]));
        SetHandleInformation(end, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
        arguments->startupInfo->hStdOutput = end;
    });
}

inline void PipedProcess::close(int &end)
{
    if (end >= 0)
        _close(end);
    end = -1;
}

#else

inline PipedProcess::PipedProcess()
{
    if (::pipe2(m_ends, O_CLOEXEC) != 0)
        qFatal("there is no pipe to be had");
}

inline void PipedProcess::close(int &end)
{
    if (end >= 0)
        ::close(end);
    end = -1;
}

#endif

inline QByteArray PipedProcess::readLine()
{
    close(m_ends[1]);
    QByteArray line;
    char letter = 0;
    while (!line.endsWith('\n') && ::read(m_ends[0], &letter, 1) == 1)
        line.append(letter);
    return line;
}

inline void PipedProcess::leave()
{
    close(m_ends[0]);
    close(m_ends[1]);
}
