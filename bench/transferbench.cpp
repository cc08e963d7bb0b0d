// SPDX-License-Identifier: MIT
#include "cheapsensor.h"
#include "paired.h"
#include "report.h"
#include "sondix/sondixapi_p.h"

#include <SondixQt/SensorInstance>

#include <algorithm>

using namespace SondixQt;

namespace {

/// An instance, and buffers that both sides of a comparison share: the place of a buffer in memory affects the time
/// more than the calls do.
struct Transfer
{
    explicit Transfer(const benchmark::State &state)
        : size(static_cast<int>(state.range(0)))
        , instance(SensorType::TX290)
        , handle(instance.handle())
        , scaled(size)
        , raw(size)
    {
        cheapsensor::setBlock(size);
    }

    const int size;
    SensorInstance instance;
    const quint32 handle;
    QVector<double> scaled;
    QVector<int> raw;
    double timestamp = 0.0;
};

void scaledVector(benchmark::State &state)
{
    Transfer t(state);
    const auto direct = [&] {
        int count = 0;
        DataAvail(t.handle, &count);
        return TransferData(t.handle, nullptr, t.scaled.data(), count, &count);
    };
    runPaired(state, direct, [&] { return t.instance.transferData(t.scaled); });
}

void buffers(benchmark::State &state)
{
    Transfer t(state);
    int count = 0;
    const auto direct = [&] {
        return TransferDataTS(t.handle, t.raw.data(), t.scaled.data(), t.size, &count, &t.timestamp);
    };
    const auto library = [&] {
        count = t.size;
        return t.instance.transferData(t.scaled.data(), t.raw.data(), &t.timestamp, count);
    };
    runPaired(state, direct, library);
}

void rawWithTimestamp(benchmark::State &state)
{
    Transfer t(state);
    const auto direct = [&] {
        int count = 0;
        DataAvail(t.handle, &count);
        return TransferDataTS(t.handle, t.raw.data(), nullptr, count, &count, &t.timestamp);
    };
    runPaired(state, direct, [&] { return t.instance.transferDataRaw(t.raw, t.timestamp); });
}

void scaledWithTimestamp(benchmark::State &state)
{
    Transfer t(state);
    const auto direct = [&] {
        int count = 0;
        DataAvail(t.handle, &count);
        return TransferDataTS(t.handle, nullptr, t.scaled.data(), count, &count, &t.timestamp);
    };
    runPaired(state, direct, [&] { return t.instance.transferDataScaled(t.scaled, t.timestamp); });
}

/// The time above the direct calls, as a part of what is allowed: 25 ns, or 2 % of the direct calls if that is more. For
/// short blocks 2 % are less than can be measured.
report::Value partOfAllowed(const std::string &name)
{
    return [above = report::counter(name, "above"),
            ratio = report::counter(name, "ratio")](const report::Results &results) -> std::optional<double> {
        const auto nanoseconds = above(results);
        const auto times = ratio(results);
        if (!nanoseconds || !times)
            return {};
        return std::min(*nanoseconds / 25.0, (*times - 1.0) / 0.02);
    };
}

void compare(const std::string &form, void (*body)(benchmark::State &))
{
    constexpr int largeBlock = 10000;
    for (const int size : {1, 10, 100, 1000, 10000, 100000}) {
        benchmark::RegisterBenchmark(form.c_str(), body)->Arg(size);
        const std::string name = form + "/" + std::to_string(size);
        report::claim(name + " values: allocations", "", 0.0, report::largest(name, "allocations"));
        if (size < largeBlock) {
            report::claim(name + " values: above direct calls", "ns", 200.0, report::counter(name, "above"));
        } else {
            report::claim(name + " values: times direct calls", "x", {}, report::counter(name, "ratio"));
            report::claim(name + " values: above direct calls, part of 25 ns or 2 %", "", 1.0,
                          partOfAllowed(name));
        }
    }
}

const bool transferBenchesAreRegistered = [] {
    compare("transferData, vector", scaledVector);
    compare("transferData, buffers", buffers);
    compare("transferDataRaw", rawWithTimestamp);
    compare("transferDataScaled", scaledWithTimestamp);
    return true;
}();

} // namespace
