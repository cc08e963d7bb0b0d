// SPDX-License-Identifier: MIT
#include "signalvalues.h"

#include <SondixQt/errorvalue.h>

#include <QLocale>

#include <algorithm>
#include <cmath>
#include <limits>

using namespace SondixQt;

namespace Explorer {

bool SignalValue::isError() const
{
    return present && isErrorValue(*present);
}

DisplayLimits::Result DisplayLimits::check(double value) const
{
    const double shown = value - offset;
    if (lower && shown < *lower)
        return Below;
    return upper && shown > *upper ? Above : Within;
}

bool DisplayLimits::operator==(const DisplayLimits &other) const
{
    return lower == other.lower && upper == other.upper && !(offset < other.offset) && !(offset > other.offset);
}

void SignalValues::begin(int count)
{
    m_values.assign(static_cast<size_t>(std::max(count, 0)), SignalValue());
}

void SignalValues::add(const DataBlock &block)
{
    const int width = block.valuesPerFrame();
    if (block.isEmpty() || width != count())
        return;
    const QVector<double> &data = block.scaledData();
    const double *const end = data.constData() + data.size();
    int signal = 0;
    for (SignalValue &value : m_values) {
        double minimum = value.minimum.value_or(std::numeric_limits<double>::infinity());
        double maximum = value.maximum.value_or(-std::numeric_limits<double>::infinity());
        qint64 errors = 0;
        for (const double *next = data.constData() + signal; next < end; next += width) {
            if (isErrorValue(*next)) {
                ++errors;
                continue;
            }
            minimum = std::min(minimum, *next);
            maximum = std::max(maximum, *next);
        }
        value.errors += errors;
        value.present = block.scaled(block.frameCount() - 1, signal++);
        if (minimum <= maximum) {
            value.minimum = minimum;
            value.maximum = maximum;
        }
    }
}

void SignalValues::reset()
{
    for (SignalValue &value : m_values) {
        value.minimum.reset();
        value.maximum.reset();
        value.errors = 0;
    }
}

int decimalPlaces(const SignalInfo &info)
{
    constexpr int maxPlaces = 7;
    constexpr double steps = 1.0e5;
    const double range = std::abs(info.scaledRangeMax - info.scaledRangeMin);
    if (!std::isfinite(range) || !(range > 0.0))
        return 4;
    return std::clamp(static_cast<int>(std::ceil(-std::log10(range / steps))), 0, maxPlaces);
}

QString shownNumber(double value, int decimals)
{
    constexpr double maxShown = 1.0e12; // larger numbers do not fit
    const char format = std::abs(value) < maxShown ? 'f' : 'e';
    return QLocale().toString(value, format, decimals);
}

QString exactNumber(double value)
{
    QLocale c = QLocale::c();
    c.setNumberOptions(QLocale::OmitGroupSeparator);
    return c.toString(value, 'g', QLocale::FloatingPointShortest);
}

} // namespace Explorer
