// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sensortypes.h>

#include <QList>

namespace SondixApp {

/// Searches that together find the sensors of several models.
struct Searches
{
    QList<SondixQt::SensorType> types; ///< what is searched, one after the other
    bool similar = false;              ///< whether sensors of other types must be accepted
};

/// The fewest searches that find all sensors of the models \a wanted, which stand in display order.
///
/// A search for a family with variants finds all of them. The models that hang on a line, a card's channel or an
/// address of their own are found by one search for any of them that accepts similar sensors.
Searches fewestSearches(const QList<SondixQt::SensorType> &wanted);

/// Every model that a search can find, in display order, the hidden variants and the multi-sensor included.
QList<SondixQt::SensorType> allSearchedTypes();

} // namespace SondixApp
