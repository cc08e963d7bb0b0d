// SPDX-License-Identifier: MIT
#pragma once

#include <qwt_scale_draw.h>

namespace Explorer {

/// Labels of an axis of values, as the locale writes numbers, but without separators between thousands: among decimals
/// they are easily misread.
class NumberScaleDraw : public QwtScaleDraw
{
public:
    QwtText label(double value) const override;
};

} // namespace Explorer
