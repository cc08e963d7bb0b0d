// SPDX-License-Identifier: MIT
#include "interruptwatcher.h"

#include "console.h"

#include <atomic>

#ifdef Q_OS_WIN
#    include <windows.h>

#    include <mutex>
#else
#    include <QSocketNotifier>

#    include <csignal>
#    include <fcntl.h>
#    include <unistd.h>
#endif

namespace {

std::atomic<bool> interruptReceived{false};

} // namespace

bool InterruptWatcher::isInterrupted()
{
    return interruptReceived;
}

#ifdef Q_OS_WIN

namespace {

// Windows calls the handler in its own thread, possibly while the watcher is being destroyed.
std::mutex watcherMutex;
InterruptWatcher *watcher = nullptr;

BOOL WINAPI onConsoleEvent(DWORD event)
{
    const bool isLast = event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT;
    // A regular exit would wait for the libraries, which may be what hangs.
    if (interruptReceived.exchange(true) && !isLast) {
        Console::restore();
        TerminateProcess(GetCurrentProcess(), STATUS_CONTROL_C_EXIT);
    }
    {
        const std::lock_guard<std::mutex> lock(watcherMutex);
        if (watcher)
            QMetaObject::invokeMethod(watcher, &InterruptWatcher::interrupted, Qt::QueuedConnection);
    }
    // When the console is closed Windows ends the process as soon as this returns, after five seconds at the latest.
    if (isLast)
        Sleep(INFINITE);
    return TRUE;
}

} // namespace

InterruptWatcher::InterruptWatcher(QObject *parent)
    : QObject(parent)
{
    {
        const std::lock_guard<std::mutex> lock(watcherMutex);
        watcher = this;
    }
    SetConsoleCtrlHandler(onConsoleEvent, TRUE);
}

InterruptWatcher::~InterruptWatcher()
{
    SetConsoleCtrlHandler(onConsoleEvent, FALSE);
    const std::lock_guard<std::mutex> lock(watcherMutex);
    watcher = nullptr;
}

#else

namespace {

int wakeUp[2] = {-1, -1};

// Only async-signal-safe operations are allowed here. The write to the pipe wakes up the event loop.
void onSignal(int)
{
    interruptReceived = true;
    const char byte = 1;
    if (::write(wakeUp[1], &byte, 1) < 0)
        return;
}

void setHandler(int signalNumber, unsigned flags)
{
    struct sigaction action = {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = static_cast<int>(SA_RESTART | flags);
    sigaction(signalNumber, &action, nullptr);
}

bool isIgnored(int signalNumber)
{
    struct sigaction action = {};
    return sigaction(signalNumber, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

} // namespace

InterruptWatcher::InterruptWatcher(QObject *parent)
    : QObject(parent)
{
    if (::pipe2(wakeUp, O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    auto *notifier = new QSocketNotifier(wakeUp[0], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this] {
        char byte = 0;
        while (::read(wakeUp[0], &byte, 1) > 0) {
        }
        Q_EMIT interrupted();
    });
    setHandler(SIGINT, SA_RESETHAND);
    setHandler(SIGTERM, SA_RESETHAND);
    // A shell starts programs in the background with it ignored.
    if (!isIgnored(SIGQUIT))
        setHandler(SIGQUIT, SA_RESETHAND);
    // A terminal that is closed sends it more than once: its shell and the system do. nohup ignores it.
    if (!isIgnored(SIGHUP))
        setHandler(SIGHUP, 0);
}

InterruptWatcher::~InterruptWatcher()
{
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
    if (!isIgnored(SIGQUIT))
        std::signal(SIGQUIT, SIG_DFL);
    // The program ends now: a late one must not change its exit code.
    std::signal(SIGHUP, SIG_IGN);
    ::close(wakeUp[0]);
    ::close(wakeUp[1]);
}

#endif
