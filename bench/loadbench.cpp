// SPDX-License-Identifier: MIT
#include "report.h"
#include "SondixSimulator/control.h"
#include "startprogram.h"

#include <algorithm>

namespace {

/// A bench with so many sensors, as a program would write it: on serial lines, a bus, and in the network.
std::string largeBench(int count)
{
    std::string json = "{ \"sensors\": [\n";
    for (int i = 0; i < count; ++i) {
        const std::string number = std::to_string(i);
        const std::string address =
            "10." + std::to_string(i >> 16) + '.' + std::to_string((i >> 8) & 255) + '.' + std::to_string(i & 255);
        const char *const models[] = {"TX270", "CC430", "EC830"};
        const std::string places[] = {R"("RS232", "port": "COM)" + number + '"',
                                      R"("TCP/IP", "ip": ")" + address + '"',
                                      R"("RS232", "port": "bus)" + std::to_string(i / 300) +
                                          R"(", "busAddress": )" + std::to_string(i / 3 % 100)};
        json += std::string(i > 0 ? ",\n" : "") + R"({ "model": ")" + models[i % 3] + R"(", "serialNumber": ")" +
                number + R"(", "place": { "interface": )" + places[i % 3] + " } }";
    }
    return json + "\n] }";
}

void loadLargeBench(benchmark::State &state)
{
    const std::string json = largeBench(20000);
    for (auto _ : state)
        sondixsim::loadBench(json);
    sondixsim::loadBuiltInBench();
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

const bool loadBenchesAreRegistered = [] {
    constexpr int starts = 100;
    const std::string name = "start a program";
    benchmark::RegisterBenchmark(name.c_str(), load)->Iterations(starts)->Repetitions(5);
    report::claim("loading the library, beyond Qt", "ms", 2.0, report::counter(name, "above"));
    const std::string large = "load a bench of 20,000 sensors";
    benchmark::RegisterBenchmark(large.c_str(), loadLargeBench)->Iterations(1)->Repetitions(5);
    report::claim("loading a bench of 20,000 sensors", "s", 2.0, report::time(large, 1e9));
    report::claim("loading the library, beyond Qt, processor time", "ms", std::nullopt,
                  report::counter(name, "processor"));
    return true;
}();

} // namespace
