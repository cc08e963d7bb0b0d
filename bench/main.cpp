// SPDX-License-Identifier: MIT
#include "report.h"

#ifdef BENCH_WITH_WIDGETS
#    include <QApplication>
using BenchApplication = QApplication;
#else
#    include <QGuiApplication>
using BenchApplication = QGuiApplication;
#endif

#include <vector>

namespace {

/// Collects the results without printing them: with random interleaving the order of the runs is of no use.
class Reporter : public benchmark::BenchmarkReporter
{
public:
    bool ReportContext(const Context &) override { return true; }
    void ReportRuns(const std::vector<Run> &runs) override
    {
        for (const Run &run : runs)
            results.add(run);
    }

    report::Results results;
};

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    BenchApplication application(argc, argv);

    // Random interleaving, so that a change of the CPU frequency affects both sides of a comparison. Options of the
    // user come later in the list and take precedence.
    char repetitions[] = "--benchmark_repetitions=15";
    char interleaving[] = "--benchmark_enable_random_interleaving=true";
    char shortRuns[] = "--benchmark_min_time=0.05";
    std::vector<char *> arguments = {argv[0], repetitions, interleaving, shortRuns};
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    int count = static_cast<int>(arguments.size());
    arguments.push_back(nullptr);
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data()))
        return 2;

    Reporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.results.print();
    report::printClaims(reporter.results);
    return 0;
}
