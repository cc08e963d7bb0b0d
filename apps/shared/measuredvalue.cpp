// SPDX-License-Identifier: MIT
#include "measuredvalue.h"

#include <cmath>
#include <limits>

namespace SondixApp {

std::optional<int> errorKey(double value)
{
    constexpr double limit = -1.0e10;
    if (std::isnan(value))
        return 0;
    if (value > limit)
        return std::nullopt;
    const double key = std::trunc(value - limit);
    return key >= std::numeric_limits<int>::min() ? static_cast<int>(key) : 0;
}

} // namespace SondixApp
