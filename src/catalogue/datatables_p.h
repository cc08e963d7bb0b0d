// SPDX-License-Identifier: MIT
#pragma once

#include "constantlist_p.h"

namespace SondixQt {

/// Replacements for the signal names that the sensors of one model report.
struct SignalNamingRow
{
    SensorType type;
    ConstantList<const char *> fixedNames; ///< of the first signals
    const char *switchName;                ///< replaces "Switch" in the name of a switched signal; null: unchanged
    const char *offName;                   ///< replaces the name of a signal that is off; null: unchanged
};

/// The row of exactly \a type, or null if the reported names are used.
const SignalNamingRow *signalNamingRow(SensorType type);

/// Whether a sensor of exactly \a type must be polled with "Get_Measure" before every transfer.
bool isPolled(SensorType type);

} // namespace SondixQt
