// SPDX-License-Identifier: MIT
#pragma once

#include <QCoreApplication>
#include <QString>

#include <qwt_scale_draw.h>
#include <qwt_scale_engine.h>

#include <optional>

namespace Explorer {

/// How positions on the time axis are written.
struct TimeFormat
{
    bool isInFrames = false;
    std::optional<double> clockOffset; ///< seconds since 1970 at the position 0: written as the time of day

    /// \a position with as many decimals as a distance of \a resolution needs.
    QString text(double position, double resolution) const;
    /// The same with the date, where it is a time of day.
    QString longText(double position, double resolution) const;
};

/// Labels of a time axis.
class TimeScaleDraw : public QwtScaleDraw
{
public:
    void setFormat(const TimeFormat &format);
    QwtText label(double value) const override;

private:
    TimeFormat m_format;
};

/// Ticks of a time axis: multiples of seconds, minutes and hours, on a clock at full ones.
class TimeScaleEngine : public QwtLinearScaleEngine
{
public:
    void setFormat(const TimeFormat &format) { m_format = format; }
    QwtScaleDiv divideScale(double x1, double x2, int maxMajorSteps, int maxMinorSteps,
                            double stepSize = 0.0) const override;

private:
    TimeFormat m_format;
};

/// The distance of ticks for at most \a count of them over \a width seconds: 1, 2 or 5 times a power of ten below a
/// minute, and usual parts of minutes and hours above.
double timeStep(double width, int count);

} // namespace Explorer
