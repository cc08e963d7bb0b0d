// SPDX-License-Identifier: MIT
#include "report.h"

#include <spawn.h>
#include <sys/wait.h>

#include <chrono>

extern char **environ;

namespace {

using Clock = std::chrono::steady_clock;

/// One iteration starts the program and waits for its end.
void start(benchmark::State &state, const char *program)
{
    for (auto _ : state) {
        char *const arguments[] = {const_cast<char *>(program), nullptr};
        const Clock::time_point begin = Clock::now();
        pid_t child = 0;
        int status = -1;
        if (posix_spawn(&child, program, nullptr, nullptr, arguments, environ) != 0 ||
            waitpid(child, &status, 0) != child || status != 0)
            state.SkipWithError("cannot start the program");
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - begin).count());
    }
}

const bool registered = [] {
    for (const auto &[name, program] :
         {std::pair("start with Qt", START_BARE), std::pair("start with SondixQt", START_LINKED)}) {
        benchmark::RegisterBenchmark(name, [program = program](benchmark::State &state) { start(state, program); })
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond)
            ->Iterations(10)
            ->Repetitions(20);
    }
    report::claim("loading the library, beyond Qt", "ms", 2.0, [](const report::Results &results) {
        const auto beyond = report::difference("start with SondixQt", "start with Qt")(results);
        return beyond ? std::optional(*beyond / 1e6) : std::nullopt;
    });
    return true;
}();

} // namespace
