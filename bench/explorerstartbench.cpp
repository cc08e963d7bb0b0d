// SPDX-License-Identifier: MIT
#include "report.h"
#include "startprogram.h"

namespace {

/// From the start of the program to the end of the first drawing, with the settings of the start before and the end of
/// the program included.
void startExplorer(benchmark::State &state)
{
    for (auto _ : state) {
        const Start result = start(START_EXPLORER);
        if (!result.succeeded) {
            state.SkipWithError("cannot start the program");
            return;
        }
        state.counters["wall"] = result.wallSeconds * 1e3;
        state.counters["processor"] = result.processorSeconds * 1e3;
    }
}

BENCHMARK(startExplorer)->Iterations(1)->Unit(benchmark::kMillisecond);

const bool isClaimed = [] {
    report::claim("Start to the first drawn window, median", "ms", 300.0,
                  report::counter("startExplorer", "wall"));
    report::claim("Start to the first drawn window, processor time", "ms", std::nullopt,
                  report::counter("startExplorer", "processor"));
    return true;
}();

} // namespace
