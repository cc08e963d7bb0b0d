// SPDX-License-Identifier: MIT
#include "processortime.h"

#include <QtGlobal>

#ifdef Q_OS_WIN
#    include <windows.h>
#else
#    include <cstdlib>
#    include <ctime>
#    include <fcntl.h>
#    include <unistd.h>
#endif

double threadProcessorSeconds()
{
#ifdef Q_OS_WIN
    FILETIME created;
    FILETIME ended;
    FILETIME kernel;
    FILETIME user;
    GetThreadTimes(GetCurrentThread(), &created, &ended, &kernel, &user);
    const auto seconds = [](const FILETIME &time) {
        constexpr double upper = 4294967296.0;
        return 1e-7 * (upper * time.dwHighDateTime + time.dwLowDateTime);
    };
    return seconds(kernel) + seconds(user);
#else
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
#endif
}

#ifndef Q_OS_WIN
double threadReadySeconds()
{
    // Three numbers: the nanoseconds on a processor, those in the queue for one, and the number of turns.
    const int file = open("/proc/thread-self/schedstat", O_RDONLY | O_CLOEXEC);
    char text[128] = {};
    const bool isRead = file >= 0 && read(file, text, sizeof text - 1) > 0;
    if (file >= 0)
        close(file);
    char *end = text;
    strtoull(text, &end, 10);
    return isRead ? 1e-9 * static_cast<double>(strtoull(end, nullptr, 10)) : 0.0;
}
#endif
