// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sondixqtnamespace.h>

#include <QList>

namespace SondixQt {

/// Searches that together find all sensors of several models.
struct SearchPlan
{
    QList<SensorType> types; ///< the types to search for, in this order
    bool similar = false;    ///< whether sensors of similar types must be accepted
};

/// The minimum number of searches that find all sensors of the models \a wanted, which are in display order.
///
/// A search for a family with variants finds all of them. The models that have a serial line, a channel of a card or a
/// network address for themselves are found by one search for any of them that accepts similar sensors.
SearchPlan fewestSearches(const QList<SensorType> &wanted);

} // namespace SondixQt
