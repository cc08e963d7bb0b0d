// SPDX-License-Identifier: MIT
#pragma once

#include "constantlist_p.h"

namespace SondixQt {

/// How the signals of one model are named where the sensor does not name them well.
struct SignalNamingRow
{
    SensorType type;
    ConstantList<const char *> fixedNames; ///< of the first signals, whatever the sensor calls them
    const char *switchName;                ///< replaces "Switch" in the name of a switched signal; null: it stays
    const char *offName;                   ///< of a signal whose name says that it is off; null: it stays
};

/// The row of exactly \a type, or null when the sensor's own names are shown.
const SignalNamingRow *signalNamingRow(SensorType type);

/// Whether a value must be asked for before every transfer of a sensor of exactly \a type.
bool isPolled(SensorType type);

} // namespace SondixQt
