// SPDX-License-Identifier: MIT
#include "cheapsensor.h"
#include "report.h"

#include <SondixQt/SensorFinder>

#include <QEventLoop>

#include <ctime>

using namespace SondixQt;

namespace {

constexpr int sensorCount = 1000;

double processorSeconds()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// The time of one iteration is the computing time of the search: without the pauses of its timer and without the time
/// inside the sensor-access library.
void search(benchmark::State &state)
{
    cheapsensor::setFoundSensors(sensorCount);
    for (auto _ : state) {
        SensorFinder finder;
        QEventLoop loop;
        int found = 0;
        QObject::connect(&finder, &SensorFinder::sensorFound, &finder, [&found] { ++found; });
        QObject::connect(&finder, &SensorFinder::searchFinished, &loop, &QEventLoop::quit);

        cheapsensor::measureTime(true);
        const double before = processorSeconds();
        finder.startSearch(SensorType::TX290);
        loop.exec();
        state.SetIterationTime(processorSeconds() - before - cheapsensor::secondsInside());
        cheapsensor::measureTime(false);
        if (found != sensorCount)
            state.SkipWithError("not every sensor was found");
    }
}

const bool searchBenchesAreRegistered = [] {
    benchmark::RegisterBenchmark("search 1000 sensors", search)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond)
        ->Iterations(1)
        ->Repetitions(5);
    report::claim("a search that finds 1,000 sensors: own computing time", "ms", 100.0,
                  report::time("search 1000 sensors", 1e6));
    return true;
}();

} // namespace
