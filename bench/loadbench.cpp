// SPDX-License-Identifier: MIT
#include "report.h"

#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>

extern char **environ;

namespace {

using Clock = std::chrono::steady_clock;

struct Start
{
    double wallSeconds = 0.0;
    double processorSeconds = 0.0;
    bool succeeded = false;
};

double seconds(const timeval &time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

/// Starts a program and waits for its end.
Start start(const char *program)
{
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

double median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// Starts both programs alternately, so that other load on the computer affects both.
void load(benchmark::State &state)
{
    std::vector<double> bareWall;
    std::vector<double> linkedWall;
    std::vector<double> bareProcessor;
    std::vector<double> linkedProcessor;
    for (auto _ : state) {
        const Start bare = start(START_BARE);
        const Start linked = start(START_LINKED);
        if (!bare.succeeded || !linked.succeeded) {
            state.SkipWithError("cannot start the programs");
            return;
        }
        bareWall.push_back(bare.wallSeconds);
        linkedWall.push_back(linked.wallSeconds);
        bareProcessor.push_back(bare.processorSeconds);
        linkedProcessor.push_back(linked.processorSeconds);
    }
    state.counters["direct"] = median(bareWall) * 1e9;
    state.counters["library"] = median(linkedWall) * 1e9;
    state.counters["above"] = (median(linkedWall) - median(bareWall)) * 1e3;
    state.counters["processor"] = (median(linkedProcessor) - median(bareProcessor)) * 1e3;
}

const bool registered = [] {
    constexpr int starts = 100;
    const std::string name = "start a program";
    benchmark::RegisterBenchmark(name.c_str(), load)->Iterations(starts)->Repetitions(5);
    report::claim("loading the library, beyond Qt", "ms", 2.0, report::counter(name, "above"));
    report::claim("loading the library, beyond Qt, processor time", "ms", std::nullopt,
                  report::counter(name, "processor"));
    return true;
}();

} // namespace
