// SPDX-License-Identifier: MIT
#pragma once

namespace Explorer {

/// A part of the time axis.
struct TimeWindow
{
    double from = 0.0;
    double to = 1.0;

    double width() const { return to - from; }
    /// Scaled by \a factor, so that \a anchor stays where it is on the screen. \a narrowest is the minimum width.
    TimeWindow zoomed(double anchor, double factor, double narrowest) const;
    TimeWindow moved(double distance) const { return {from + distance, to + distance}; }
    /// Moved, and made narrower where necessary, so that it lies within \a limits.
    TimeWindow within(const TimeWindow &limits) const;

    bool operator==(const TimeWindow &other) const { return from == other.from && to == other.to; }
    bool operator!=(const TimeWindow &other) const { return !(*this == other); }
};

} // namespace Explorer
