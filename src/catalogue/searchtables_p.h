// SPDX-License-Identifier: MIT
#pragma once

#include "constantlist_p.h"

namespace SondixQt {

/// What is special about the search of one type.
struct SearchRow
{
    SensorType type = NoSensor;
    bool quickScan = false;             ///< the quick RS485 scan finds it
    bool addressList = false;           ///< one result lists all addresses of the sensor
    SensorInterface card = NoInterface; ///< the interface of an interface card, which is scanned for the card
    SensorType alsoFinds = NoSensor;    ///< another type that its search may report
    ConstantList<SensorType> companions =
        {}; ///< all types that are searched with it, itself first; empty: it alone
};

/// The row of exactly \a type; a default one if its search is like that of most types.
const SearchRow &searchRow(SensorType type);

} // namespace SondixQt
