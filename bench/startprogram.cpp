// SPDX-License-Identifier: MIT
#include "startprogram.h"

#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <chrono>

extern char **environ;

static double seconds(const timeval &time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

Start start(const char *program)
{
    using Clock = std::chrono::steady_clock;
    char *const arguments[] = {const_cast<char *>(program), nullptr};
    Start result;
    pid_t child = 0;
    int status = -1;
    rusage usage{};
    const Clock::time_point begin = Clock::now();
    if (posix_spawn(&child, program, nullptr, nullptr, arguments, environ) != 0)
        return result;
    result.succeeded = wait4(child, &status, 0, &usage) == child && status == 0;
    result.wallSeconds = std::chrono::duration<double>(Clock::now() - begin).count();
    result.processorSeconds = seconds(usage.ru_utime) + seconds(usage.ru_stime);
    return result;
}
