// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

namespace SondixQt {

/// The maximum number of values per transfer (128 MiB of scaled values). It limits the allocation if a sensor
/// announces a nonsensical count. Values beyond it remain for the next transfer.
constexpr int maxBlockValues = 16 * 1024 * 1024;

/// The number of values that one transfer reads when \a available values are announced: 0 if the count is
/// negative, and if it exceeds maxBlockValues, as many whole frames of \a frameValues values as fit.
int blockValues(int available, int frameValues);

/// The count \a written that the sensor-access library returned, limited to the \a capacity of the buffer.
int transferredValues(int written, int capacity);

} // namespace SondixQt
