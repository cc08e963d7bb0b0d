// SPDX-License-Identifier: MIT
#pragma once

#include <limits>

namespace SondixQt {

/// Relates the clock of the sensor-access library to that of the computer. A value that has arrived was measured before
/// now, and a value that has not yet arrived will be measured later, if values are available as soon as they have been
/// measured: every transfer limits the offset of the clocks on both sides.
class ClockMapping
{
public:
    /// All values are in seconds. Values measured from \a firstTime to \a lastTime were transferred until \a now; at \a
    /// before none of them was available.
    void observe(double firstTime, double lastTime, double before, double now);

    bool isKnown() const { return upper < std::numeric_limits<double>::infinity(); }
    /// Clock of the computer minus clock of the library.
    double offset() const { return lower + (upper - lower) / 2.0; }
    double uncertainty() const { return (upper - lower) / 2.0; }

private:
    double lower = -std::numeric_limits<double>::infinity();
    double upper = std::numeric_limits<double>::infinity();
    double observedAt = 0.0;
};

} // namespace SondixQt
