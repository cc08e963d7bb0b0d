// SPDX-License-Identifier: MIT
#include "paired.h"
#include "report.h"
#include "sondix/sondixapi_p.h"

#include <SondixQt/SensorInstance>

using namespace SondixQt;

namespace {

void getInt(benchmark::State &state)
{
    SensorInstance instance(SensorType::TX290);
    const quint32 handle = instance.handle();
    const QString command = QStringLiteral("Get_Settings");
    const QString answer = QStringLiteral("SA_Speed");
    int value = 0;
    const auto direct = [&] {
        SetParameterString(handle, "S_Command", "Get_Settings");
        SensorCommand(handle);
        return GetParameterInt(handle, "SA_Speed", &value);
    };
    runPaired(state, direct, [&] { return instance.sendCommandGetInt(command, answer, value); });
}

const bool commandBenchesAreRegistered = [] {
    benchmark::RegisterBenchmark("sendCommandGetInt", getInt);
    report::claim("sendCommandGetInt: above direct calls", "ns", 500.0,
                  report::counter("sendCommandGetInt", "above"));
    return true;
}();

} // namespace
