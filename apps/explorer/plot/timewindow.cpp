// SPDX-License-Identifier: MIT
#include "timewindow.h"

#include <algorithm>
#include <cmath>

namespace Explorer {

TimeWindow TimeWindow::zoomed(double anchor, double factor, double narrowest) const
{
    // Below this the positions of an axis could not be told apart.
    const double minWidth = std::max(narrowest, 1.0e-12 * std::max(std::abs(from), std::abs(to)));
    if (width() <= 0.0)
        return *this;
    const double applied = std::max(factor, minWidth / width());
    return {anchor - (anchor - from) * applied, anchor + (to - anchor) * applied};
}

TimeWindow TimeWindow::within(const TimeWindow &limits) const
{
    if (width() >= limits.width())
        return limits;
    if (from < limits.from)
        return moved(limits.from - from);
    return to > limits.to ? moved(limits.to - to) : *this;
}

} // namespace Explorer
