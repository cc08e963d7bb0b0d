// SPDX-License-Identifier: MIT
#include "plotcursors.h"

#include "timeplot.h"

#include <QLocale>
#include <QPen>

#include <qwt_plot_marker.h>
#include <qwt_scale_map.h>

#include <algorithm>
#include <cmath>

namespace Explorer {

PlotCursors::PlotCursors(TimePlot *plot)
    : m_plot(plot)
{
    for (auto &marker : m_markers) {
        marker = std::make_unique<QwtPlotMarker>();
        marker->setLineStyle(QwtPlotMarker::VLine);
        marker->setLabelAlignment(Qt::AlignRight | Qt::AlignBottom);
        marker->setZ(40.0);
        marker->setVisible(false);
        marker->attach(plot);
    }
    updateColours();
}

PlotCursors::~PlotCursors() = default;

void PlotCursors::updateColours()
{
    const QColor colour = m_plot->palette().color(QPalette::Text);
    for (int cursor = 0; cursor < count; ++cursor) {
        QwtPlotMarker &marker = *m_markers[static_cast<std::size_t>(cursor)];
        const bool isActive = cursor == m_active;
        marker.setLinePen(colour, isActive ? 2.0 : 1.0, isActive ? Qt::SolidLine : Qt::DashLine);
        QwtText label(cursor == 0 ? QStringLiteral("A") : QStringLiteral("B"));
        label.setColor(colour);
        label.setBackgroundBrush(m_plot->palette().brush(QPalette::Base));
        marker.setLabel(label);
    }
}

void PlotCursors::setVisible(bool visible, const TimeWindow &window)
{
    m_isVisible = visible;
    for (int cursor = 0; cursor < count; ++cursor) {
        const double place = position(cursor);
        if (visible && (!m_isPlaced || place < window.from || place > window.to))
            setPosition(cursor, window.from + window.width() * (cursor + 1) / (count + 1));
        m_markers[static_cast<std::size_t>(cursor)]->setVisible(visible);
    }
    m_isPlaced = m_isPlaced || visible;
}

void PlotCursors::setPosition(int cursor, double position)
{
    m_positions[static_cast<std::size_t>(cursor)] = position;
    m_markers[static_cast<std::size_t>(cursor)]->setXValue(position);
}

void PlotCursors::setActive(int cursor)
{
    m_active = cursor;
    updateColours();
}

std::optional<int> PlotCursors::cursorAt(int pixel) const
{
    constexpr double reach = 5.0;
    if (!m_isVisible)
        return std::nullopt;
    const QwtScaleMap map = m_plot->canvasMap(QwtPlot::xBottom);
    std::optional<int> nearest;
    double minDistance = reach;
    for (int cursor = 0; cursor < count; ++cursor) {
        const double distance = std::abs(map.transform(position(cursor)) - pixel);
        if (distance <= minDistance) {
            nearest = cursor;
            minDistance = distance;
        }
    }
    return nearest;
}

std::optional<double> PlotCursors::value(int cursor, int signal) const
{
    const SignalHistory *history = m_plot->history();
    if (!history || history->isEmpty() || signal >= history->signalCount())
        return std::nullopt;
    const double place = position(cursor);
    const double reach = m_plot->pixelWidth();
    if (place < history->beginPosition() - reach || place > m_plot->endPosition() + reach)
        return std::nullopt;
    const qint64 frame = *history->nearestFrame(place);
    for (const GapMark &mark : history->timeLine().gapsBetween(place, place))
        if (place > mark.begin + reach && place < mark.end - reach)
            return std::nullopt;
    return history->value(signal, frame);
}

QString PlotCursors::summary() const
{
    const TimeFormat format = m_plot->timeFormat();
    const double resolution = m_plot->pixelWidth();
    const double distance = position(1) - position(0);
    QString text =
        tr("A: %1   B: %2").arg(format.text(position(0), resolution), format.text(position(1), resolution));
    TimeFormat plain;
    plain.isInFrames = format.isInFrames;
    const QString shown = plain.text(distance, resolution);
    text +=
        QStringLiteral("   ") + (plain.isInFrames ? tr("B − A: %1 frames").arg(shown) : tr("Δt: %1 s").arg(shown));
    if (!plain.isInFrames && distance != 0.0)
        text +=
            QStringLiteral("   ") + tr("1/Δt: %1 Hz").arg(QLocale().toString(1.0 / std::abs(distance), 'g', 6));
    return text;
}

} // namespace Explorer
