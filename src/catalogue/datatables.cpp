// SPDX-License-Identifier: MIT
#include "datatables_p.h"

#include "tablewords_p.h"

namespace SondixQt {

namespace {

constexpr const char *namesGY310[] = {"Signal1 Low-pass filter", "Signal2 SensorFUSION"};
constexpr ConstantList<const char *> none = {};

struct PolledRow
{
    SensorType type;
};

// clang-format off

constexpr SignalNamingRow signalNamingRows[] = {
    // type              first signals  "Switch"        off
    {SensorType::GY310,  namesGY310,    unchanged,      unchanged},
    {SensorType::GY330,  none,          "Acceleration", "OFF"},
};

constexpr PolledRow polledRows[] = {
    {SensorType::CP740},
    {SensorType::GenericKVBus},
};

// clang-format on

static_assert(isAscending(signalNamingRows, &SignalNamingRow::type));
static_assert(isAscending(polledRows, &PolledRow::type));

} // namespace

const SignalNamingRow *signalNamingRow(SensorType type)
{
    return findRow(signalNamingRows, &SignalNamingRow::type, type);
}

bool isPolled(SensorType type)
{
    return findRow(polledRows, &PolledRow::type, type) != nullptr;
}

} // namespace SondixQt
