// SPDX-License-Identifier: MIT
#pragma once

#include "constantlist_p.h"

namespace SondixQt {

/// How the search for one type differs from that for most types.
struct SearchRow
{
    SensorType type = NoSensor;
    bool quickScan = false;   ///< the quick RS485 scan can find it
    bool addressList = false; ///< one result contains all addresses of the sensor
    /// For an interface card, the interface that it provides and on which it is searched.
    SensorInterface card = NoInterface;
    SensorType alsoFinds = NoSensor; ///< another type that its search can report
    /// All types that are searched together, this one first; empty if it is searched alone.
    ConstantList<SensorType> companions = {};
};

/// The row of exactly \a type, or a default-constructed row if it has none.
const SearchRow &searchRow(SensorType type);

} // namespace SondixQt
