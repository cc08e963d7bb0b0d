// SPDX-License-Identifier: MIT
#include "clockmapping_p.h"

#include <algorithm>
#include <cmath>

namespace SondixQt {

namespace {

/// Two clocks drift apart by no more than this.
constexpr double maxDrift = 1.0e-4;

} // namespace

void ClockMapping::observe(double firstTime, double lastTime, double before, double now)
{
    const double newUpper = now - lastTime;
    const double newLower = before - firstTime;
    if (!std::isfinite(newUpper) || !std::isfinite(newLower))
        return;
    const double drift = maxDrift * std::max(now - observedAt, 0.0);
    observedAt = now;
    if (newLower > newUpper) { // one of the clocks has been set since the last transfer
        *this = ClockMapping();
        return;
    }
    if (isKnown()) {
        lower = std::max(lower - drift, newLower);
        upper = std::min(upper + drift, newUpper);
        if (lower <= upper)
            return;
    }
    // The first observation, or one of the clocks has been set.
    lower = newLower;
    upper = newUpper;
}

} // namespace SondixQt
