// SPDX-License-Identifier: MIT
#include "report.h"

#include <algorithm>
#include <cstdio>

namespace report {

namespace {

struct Claim
{
    std::string what;
    std::string unit;
    std::optional<double> bound;
    Value value;
};

std::vector<Claim> &claims()
{
    static std::vector<Claim> all;
    return all;
}

double quantile(std::vector<double> values, double share)
{
    const auto position = static_cast<std::ptrdiff_t>(static_cast<double>(values.size()) * share);
    std::nth_element(values.begin(), values.begin() + position, values.end());
    return values[static_cast<std::size_t>(position)];
}

} // namespace

void Results::add(const benchmark::BenchmarkReporter::Run &run)
{
    if (run.run_type != benchmark::BenchmarkReporter::Run::RT_Iteration)
        return;
    const std::string arguments = run.run_name.args.empty() ? "" : "/" + run.run_name.args;
    const std::string name = run.run_name.function_name + arguments;
    if (run.error_occurred) {
        failures[name] = run.error_message;
        return;
    }
    times[name].push_back(run.real_accumulated_time / static_cast<double>(run.iterations) * 1e9);
    for (const auto &[key, value] : run.counters)
        counters[name + ":" + key].push_back(value.value);
}

std::optional<double> Results::time(const std::string &name) const
{
    const auto found = times.find(name);
    return found == times.end() ? std::nullopt : std::optional(quantile(found->second, 0.5));
}

void Results::print() const
{
    std::printf("\n%-52s %14s %14s\n", "Benchmark (medians, ns)", "time", "direct calls");
    for (const auto &[name, values] : times) {
        const std::vector<double> library = counter(name, "library");
        const std::vector<double> direct = counter(name, "direct");
        if (direct.empty())
            std::printf("%-52s %14.1f\n", name.c_str(), quantile(values, 0.5));
        else
            std::printf("%-52s %14.1f %14.1f\n", name.c_str(), quantile(library, 0.5), quantile(direct, 0.5));
    }
    for (const auto &[name, reason] : failures)
        std::printf("%-52s failed: %s\n", name.c_str(), reason.c_str());
}

std::vector<double> Results::counter(const std::string &name, const std::string &counter) const
{
    const auto found = counters.find(name + ":" + counter);
    if (found == counters.end())
        return {};
    std::vector<double> values = found->second;
    std::sort(values.begin(), values.end());
    return values;
}

void claim(const std::string &what, const std::string &unit, std::optional<double> bound, Value value)
{
    claims().push_back({what, unit, bound, std::move(value)});
}

Value difference(const std::string &name, const std::string &base)
{
    return [=](const Results &results) -> std::optional<double> {
        const auto a = results.time(name);
        const auto b = results.time(base);
        return a && b ? std::optional(*a - *b) : std::nullopt;
    };
}

Value ratio(const std::string &name, const std::string &base)
{
    return [=](const Results &results) -> std::optional<double> {
        const auto a = results.time(name);
        const auto b = results.time(base);
        return a && b ? std::optional(*a / *b) : std::nullopt;
    };
}

Value time(const std::string &name, double nanoseconds)
{
    return [=](const Results &results) -> std::optional<double> {
        const auto measured = results.time(name);
        return measured ? std::optional(*measured / nanoseconds) : std::nullopt;
    };
}

Value counter(const std::string &name, const std::string &counter)
{
    return [=](const Results &results) -> std::optional<double> {
        const std::vector<double> values = results.counter(name, counter);
        return values.empty() ? std::nullopt : std::optional(values[values.size() / 2]);
    };
}

Value largest(const std::string &name, const std::string &counter)
{
    return [=](const Results &results) -> std::optional<double> {
        const std::vector<double> values = results.counter(name, counter);
        return values.empty() ? std::nullopt : std::optional(values.back());
    };
}

void printClaims(const Results &results)
{
    std::printf("\n%-64s %12s %12s %-6s\n", "What", "measured", "bound", "unit");
    int missed = 0;
    for (const Claim &claim : claims()) {
        const std::optional<double> value = claim.value(results);
        if (!value)
            continue;
        if (!claim.bound) {
            std::printf("%-64s %12.3f %12s %-6s\n", claim.what.c_str(), *value, "-", claim.unit.c_str());
            continue;
        }
        const bool pass = *value <= *claim.bound;
        missed += pass ? 0 : 1;
        std::printf("%-64s %12.3f %12.3f %-6s %s\n", claim.what.c_str(), *value, *claim.bound, claim.unit.c_str(),
                    pass ? "pass" : "MISS");
    }
    std::printf("%d missed\n", missed);
}

} // namespace report
