// SPDX-License-Identifier: MIT
#pragma once

#include <QVariant>

#include <limits>

namespace SondixQt {

/// No setup holds more sensors: a larger count is a mistake, of a caller or of a sensor, that must not
/// eat the memory.
constexpr int maxSensorCount = 10000;

/// The integer that an answer holds. A number that no int can hold reads as 0: QVariant's own
/// conversion of it is undefined for a double and takes the low bits of a text's.
inline int intAnswer(const QVariant &value)
{
    if (value.userType() == QMetaType::Double) {
        const double number = value.toDouble();
        const bool fits = number >= std::numeric_limits<int>::min() && number <= std::numeric_limits<int>::max();
        return fits ? value.toInt() : 0;
    }
    if (value.userType() == QMetaType::QString)
        return value.toString().toInt();
    return value.toInt();
}

} // namespace SondixQt
