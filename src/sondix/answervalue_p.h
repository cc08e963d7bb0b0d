// SPDX-License-Identifier: MIT
#pragma once

#include <QVariant>

#include <limits>

namespace SondixQt {

/// No setup holds more sensors: a larger count is a mistake, of a caller or of a sensor, that must not
/// eat the memory.
constexpr int maxSensorCount = 10000;

/// The integer that an answer holds, 0 if it holds none. QVariant's own conversion of a number that no
/// int can hold is undefined or takes its low bits.
inline int intAnswer(const QVariant &value)
{
    const double exact = value.toDouble(); // 0 for an enumerator, which fits
    if (!(exact >= std::numeric_limits<int>::min() && exact <= std::numeric_limits<int>::max()))
        return 0;
    return value.toInt();
}

} // namespace SondixQt
