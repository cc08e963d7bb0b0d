// SPDX-License-Identifier: MIT
#include "timescale.h"

#include <QDateTime>
#include <QLocale>

#include <algorithm>
#include <cmath>

namespace Explorer {

namespace {

int decimalsFor(double resolution)
{
    // A little more than the resolution itself, so that 0.1 with its rounding error needs one decimal.
    return resolution > 0.0 ? std::clamp(static_cast<int>(std::ceil(-std::log10(resolution * 1.0001))), 0, 9) : 9;
}

QDateTime dateTimeOf(double clock)
{
    return QDateTime::fromSecsSinceEpoch(static_cast<qint64>(std::floor(clock)));
}

} // namespace

QString TimeFormat::text(double position, double resolution) const
{
    const int decimals = isInFrames ? 0 : decimalsFor(resolution);
    // Without a "-0".
    const double shown = std::abs(position) < 0.5 * std::pow(10.0, -decimals) ? 0.0 : position;
    if (isInFrames || !clockOffset)
        return QLocale().toString(shown, 'f', decimals);
    // The offset has few digits left for fractions: the whole seconds go their own way.
    const int used = std::min(decimals, 6);
    const double unit = std::pow(10.0, used);
    const double whole = std::floor(*clockOffset);
    double fraction = std::round((*clockOffset - whole + position) * unit) / unit;
    const double seconds = std::floor(fraction);
    fraction -= seconds;
    QString text = dateTimeOf(whole + seconds).time().toString(QStringLiteral("HH:mm:ss"));
    if (used > 0)
        text += QLocale().decimalPoint() + QString::number(fraction, 'f', used).mid(2);
    return text;
}

QString TimeFormat::longText(double position, double resolution) const
{
    if (isInFrames || !clockOffset)
        return text(position, resolution);
    const QDate date = dateTimeOf(*clockOffset + position).date();
    return QLocale().toString(date, QLocale::ShortFormat) + QLatin1Char(' ') + text(position, resolution);
}

void TimeScaleDraw::setFormat(const TimeFormat &format)
{
    m_format = format;
    invalidateCache();
}

QwtText TimeScaleDraw::label(double value) const
{
    const QList<double> ticks = scaleDiv().ticks(QwtScaleDiv::MajorTick);
    const double step = ticks.size() > 1 ? ticks.at(1) - ticks.at(0) : scaleDiv().range() / 5.0;
    return m_format.text(value, std::abs(step));
}

double timeStep(double width, int count)
{
    const double minStep = width / std::max(1, count);
    constexpr double minute = 60.0;
    constexpr double hour = 3600.0;
    if (minStep > 10.0) {
        for (const double step : {15.0, 30.0, minute, 2 * minute, 5 * minute, 10 * minute, 15 * minute,
                                  30 * minute, hour, 2 * hour, 3 * hour, 6 * hour, 12 * hour})
            if (step >= minStep)
                return step;
        return std::ceil(minStep / (24 * hour)) * 24 * hour;
    }
    const double power = std::pow(10.0, std::floor(std::log10(minStep)));
    for (const double factor : {1.0, 2.0, 5.0})
        if (factor * power >= minStep * (1.0 - 1.0e-9))
            return factor * power;
    return 10.0 * power;
}

QwtScaleDiv TimeScaleEngine::divideScale(double x1, double x2, int maxMajorSteps, int maxMinorSteps,
                                         double stepSize) const
{
    if (m_format.isInFrames || !(x2 > x1))
        return QwtLinearScaleEngine::divideScale(x1, x2, maxMajorSteps, maxMinorSteps, stepSize);
    const double step = timeStep(x2 - x1, maxMajorSteps);
    // On a clock the ticks are at full seconds, minutes and hours of the local time.
    double shift = 0.0;
    if (m_format.clockOffset) {
        const QDateTime begin = dateTimeOf(*m_format.clockOffset);
        shift = std::fmod(*m_format.clockOffset + begin.offsetFromUtc(), std::max(step, 1.0));
    }
    QList<double> major;
    QList<double> minor;
    constexpr int parts = 5;
    const double first = std::floor((x1 + shift) / step);
    for (int i = 0; i <= maxMajorSteps + 2; ++i)
        for (int part = 0; part < parts; ++part) {
            const double tick = (first + i + static_cast<double>(part) / parts) * step - shift;
            if (tick >= x1 && tick <= x2)
                (part == 0 ? major : minor).append(tick);
        }
    // Two labels, one at each end, can need more room than there is.
    if (maxMajorSteps <= 1 && major.size() > 1)
        major = {major.first()};
    return QwtScaleDiv(x1, x2, minor, {}, major);
}

} // namespace Explorer
