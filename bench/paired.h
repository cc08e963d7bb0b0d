// SPDX-License-Identifier: MIT
#pragma once

#include "allocations.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <vector>

/// Compares one call of the library with the direct calls of the C interface that it replaces.
///
/// Both run alternately in one loop, so that CPU frequency, other processes and caches affect both sides alike. The
/// counters are medians in ns.
template<typename Direct, typename Library>
void runPaired(benchmark::State &state, Direct direct, Library library)
{
    using Clock = std::chrono::steady_clock;
    constexpr int batch = 16;
    const auto nanoseconds = [](auto &call) {
        const Clock::time_point begin = Clock::now();
        for (int i = 0; i < batch; ++i)
            benchmark::DoNotOptimize(call());
        return std::chrono::duration<double, std::nano>(Clock::now() - begin).count() / batch;
    };
    const auto median = [](std::vector<double> &times) {
        const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
        std::nth_element(times.begin(), middle, times.end());
        return *middle;
    };

    direct();
    library();
    std::vector<double> directTimes;
    std::vector<double> libraryTimes;
    libraryTimes.reserve(static_cast<std::size_t>(state.max_iterations));
    std::uint64_t allocations = 0;
    for (auto _ : state) {
        directTimes.push_back(nanoseconds(direct));
        const std::uint64_t before = allocationCount();
        libraryTimes.push_back(nanoseconds(library));
        allocations += allocationCount() - before;
    }
    const double directTime = median(directTimes);
    const double libraryTime = median(libraryTimes);
    state.counters["direct"] = directTime;
    state.counters["library"] = libraryTime;
    state.counters["above"] = libraryTime - directTime;
    state.counters["ratio"] = libraryTime / directTime;
    state.counters["allocations"] = static_cast<double>(allocations);
}
