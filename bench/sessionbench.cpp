// SPDX-License-Identifier: MIT
#include "report.h"
#include "sondix/sondixapi_p.h"

#include <SondixQt/sensortypes.h>
#include <SondixSimulator/control.h>

#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <array>
#include <chrono>
#include <string>

using namespace SondixQt;

namespace {

constexpr int values = 16;

/// Nanoseconds of one transfer from the bench \a file, whose sensor always has values.
double transferTime(const std::string &file)
{
    using Clock = std::chrono::steady_clock;
    constexpr int calls = 200000;
    sondixsim::loadBenchFile(file);
    const quint32 handle = CreateSensorInstance(TX270);
    std::array<double, values> scaled{};
    qint32 read = 0;
    if (OpenSensor(handle) != 0)
        return -1.0;
    const Clock::time_point begin = Clock::now();
    for (int i = 0; i < calls; ++i)
        benchmark::DoNotOptimize(TransferData(handle, nullptr, scaled.data(), values, &read));
    const double time = std::chrono::duration<double, std::nano>(Clock::now() - begin).count() / calls;
    ReleaseSensorInstance(handle);
    return read == values ? time : -1.0;
}

/// The same transfers from a bench of this process alone and from one that other processes can use as well.
void transferInSession(benchmark::State &state)
{
    const QTemporaryDir folder;
    qputenv("SONDIX_BENCH_SESSIONS", QFile::encodeName(folder.path()));
    QFile file(folder.filePath(QStringLiteral("bench.json")));
    if (!file.open(QIODevice::WriteOnly))
        return state.SkipWithError("cannot write the bench");
    file.write(R"({ "sensors": [ { "model": "TX270", "serialNumber": "1", "standing": 1000,
        "place": { "interface": "WinUSB", "device": 0 } } ] })");
    file.close();
    const std::string name = QFile::encodeName(file.fileName()).toStdString();
    sondixsim::startSession("speed", name);
    double alone = 1.0e9;
    double shared = 1.0e9;
    for (auto _ : state) {
        alone = std::min(alone, transferTime(name));
        shared = std::min(shared, transferTime("session:speed"));
    }
    sondixsim::loadBuiltInBench();
    sondixsim::stopSession("speed");
    if (alone < 0.0 || shared < 0.0)
        return state.SkipWithError("no values");
    state.counters["alone"] = alone;
    state.counters["above"] = shared - alone;
}

const bool sessionBenchesAreRegistered = [] {
    benchmark::RegisterBenchmark("transfer in a session", transferInSession)->Iterations(5);
    report::claim("transfer in a bench session: above one without", "ns", 200.0,
                  report::counter("transfer in a session", "above"));
    return true;
}();

} // namespace
