// SPDX-License-Identifier: MIT
#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace report {

/// The results of all repetitions of all benchmarks.
class Results
{
public:
    void add(const benchmark::BenchmarkReporter::Run &run);

    /// The median time of one iteration of the benchmark \a name in ns.
    std::optional<double> time(const std::string &name) const;
    /// The values of a counter of the benchmark \a name, one per repetition, in ascending order.
    std::vector<double> counter(const std::string &name, const std::string &counter) const;

    /// Prints the median and the spread of every benchmark, or the reason why it failed.
    void print() const;

private:
    std::map<std::string, std::vector<double>> times;
    std::map<std::string, std::vector<double>> counters;
    std::map<std::string, std::string> failures;
};

using Value = std::function<std::optional<double>(const Results &)>;

/// Adds a figure with its upper \a bound; without a bound the figure is only printed.
void claim(const std::string &what, const std::string &unit, std::optional<double> bound, Value value);

/// The median time of \a name minus that of \a base, in ns.
Value difference(const std::string &name, const std::string &base);
/// The median time of \a name divided by that of \a base.
Value ratio(const std::string &name, const std::string &base);
/// The median time of \a name in units of \a nanoseconds.
Value time(const std::string &name, double nanoseconds = 1.0);
/// The median of a counter over the repetitions of \a name.
Value counter(const std::string &name, const std::string &counter);
/// The largest value of a counter over the repetitions of \a name.
Value largest(const std::string &name, const std::string &counter);

/// Prints every claim whose benchmarks ran, and whether its bound is met.
void printClaims(const Results &results);

} // namespace report
