// SPDX-License-Identifier: MIT
#pragma once

#include <limits>

/// \file
/// Error values: sensors report a failed measurement (no target, out of range ...) as a scaled value of -1.0e10 or below.
/// The error is the distance from -1.0e10. SensorInstance::getErrorValueText() has the texts of the errors. Thread-safe.

namespace SondixQt {

/// Whether the scaled value \a value is no measured value: an error value or not a number.
constexpr bool isErrorValue(double value)
{
    return !(value > -1.0e10);
}

/// The number of the error that the scaled value \a value stands for, without its fraction: -5 for -1.0e10 - 5.7. 0 for a
/// measured value, for a \a value that is not a number, and if the number is outside the range of int.
constexpr int errorValueKey(double value)
{
    if (!(value <= -1.0e10))
        return 0;
    const double key = value + 1.0e10;
    // The cast truncates towards zero, so that everything above the lowest int minus 1 is in range.
    return key > std::numeric_limits<int>::min() - 1.0 ? static_cast<int>(key) : 0;
}

} // namespace SondixQt
