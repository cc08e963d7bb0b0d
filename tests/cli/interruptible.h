// SPDX-License-Identifier: MIT
#pragma once

#include <QProcess>
#include <QtTest>

#ifdef Q_OS_WIN
#    include <vector>
#    include <windows.h>
#else
#    include <csignal>
#endif

/// A process that the test can interrupt with Ctrl-C.
class InterruptibleProcess : public QProcess
{
public:
#ifdef Q_OS_WIN
    InterruptibleProcess();
    ~InterruptibleProcess() override;
#endif

    void interrupt();

#ifdef Q_OS_WIN
protected:
    static BOOL WINAPI ignore(DWORD)
    {
        return TRUE;
    }

private:
    HANDLE m_pipes[4] = {};
    HPCON m_console = nullptr;
    std::vector<char> m_attributes;
    STARTUPINFOEXW m_startup = {};
#endif
};

#ifdef Q_OS_WIN

// Ctrl-C goes to all processes of a console, so the process gets an invisible console of its own.
inline InterruptibleProcess::InterruptibleProcess()
{
    if (!CreatePipe(&m_pipes[0], &m_pipes[1], nullptr, 0) || !CreatePipe(&m_pipes[2], &m_pipes[3], nullptr, 0) ||
        CreatePseudoConsole(COORD{80, 25}, m_pipes[0], m_pipes[3], 0, &m_console) != S_OK)
        qFatal("cannot create a console");
    SIZE_T size = 0;
    InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
    m_attributes.resize(size);
    m_startup.lpAttributeList = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(m_attributes.data());
    if (!InitializeProcThreadAttributeList(m_startup.lpAttributeList, 1, 0, &size) ||
        !UpdateProcThreadAttribute(m_startup.lpAttributeList, 0, PROC_THREAD_ATTRIBUTE_PSEUDOCONSOLE, m_console,
                                   sizeof m_console, nullptr, nullptr))
        qFatal("cannot attach the console to the process");
    setCreateProcessArgumentsModifier([this](CreateProcessArguments *arguments) {
        m_startup.StartupInfo = *reinterpret_cast<STARTUPINFOW *>(arguments->startupInfo);
        m_startup.StartupInfo.cb = sizeof m_startup;
        arguments->startupInfo = reinterpret_cast<Q_STARTUPINFO *>(&m_startup);
        arguments->flags &= ~static_cast<unsigned long>(CREATE_NO_WINDOW);
        arguments->flags |= EXTENDED_STARTUPINFO_PRESENT;
    });
}

inline InterruptibleProcess::~InterruptibleProcess()
{
    close();
    for (HANDLE pipe : m_pipes)
        CloseHandle(pipe);
    ClosePseudoConsole(m_console);
    DeleteProcThreadAttributeList(m_startup.lpAttributeList);
}

inline void InterruptibleProcess::interrupt()
{
    FreeConsole();
    QVERIFY(AttachConsole(static_cast<DWORD>(processId())));
    SetConsoleCtrlHandler(ignore, TRUE);
    const BOOL sent = GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0);
    FreeConsole();
    AttachConsole(ATTACH_PARENT_PROCESS);
    QVERIFY(sent);
}

#else

inline void InterruptibleProcess::interrupt()
{
    QVERIFY(processId() > 0); // 0 would be the group of the test itself
    QCOMPARE(::kill(static_cast<pid_t>(processId()), SIGINT), 0);
}

#endif
