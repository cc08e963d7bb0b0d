// SPDX-License-Identifier: MIT
#pragma once

#include <QVariant>

#include <limits>

namespace SondixQt {

/// The maximum number of sensors in a setup. A larger count is an error of the caller or of the sensor and must
/// not exhaust the memory.
constexpr int maxSensorCount = 10000;

/// Converts an answer to int; 0 if it is not a number or is out of range. For the latter QVariant::toInt() is
/// undefined or returns the low bits.
inline int intAnswer(const QVariant &value)
{
    const double exact = value.toDouble(); // 0 for an enumerator, whose value is always in range
    if (!(exact >= std::numeric_limits<int>::min() && exact <= std::numeric_limits<int>::max()))
        return 0;
    return value.toInt();
}

} // namespace SondixQt
