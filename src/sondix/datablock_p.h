// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

namespace SondixQt {

/// The most values that one transfer takes (128 MiB of scaled values). A sensor that announces more is
/// not believed at once: what it does have beyond that stays for the next transfer.
constexpr int maxBlockValues = 16 * 1024 * 1024;

/// How many of \a available announced values one transfer takes: none of a negative count, and
/// of more than maxBlockValues only as many whole frames of \a frameValues values as fit.
int blockValues(int available, int frameValues);

/// The count that the library wrote back for a buffer of \a capacity values, kept inside that buffer.
int transferredValues(int written, int capacity);

} // namespace SondixQt
