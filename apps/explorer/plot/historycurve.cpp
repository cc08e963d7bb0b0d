// SPDX-License-Identifier: MIT
#include "historycurve.h"

#include <SondixQt/errorvalue.h>

#include <QPainter>
#include <QPen>

#include <qwt_scale_map.h>
#include <qwt_symbol.h>

#include <algorithm>
#include <cmath>

namespace Explorer {

PlotColumns PlotColumns::of(const SignalHistory &history, double from, double to, int columns, qint64 endFrame)
{
    PlotColumns result;
    result.from = from;
    result.to = to;
    result.endFrame = endFrame;
    result.limits = history.columnLimits(from, to, columns);
    for (qint64 &limit : result.limits)
        limit = std::min(limit, std::max(endFrame, result.limits.front()));
    result.breaks = history.timeLine().breaks(result.limits.front(), result.limits.back());
    return result;
}

bool PlotColumns::isSparse() const
{
    return range().count() <= 2 * static_cast<qint64>(count());
}

void HistorySeries::clear()
{
    m_points.clear();
    m_breaks.clear();
    m_minimum = std::numeric_limits<double>::infinity();
    m_maximum = -std::numeric_limits<double>::infinity();
    m_heights = 0.0;
    m_columns = 0;
}

void HistorySeries::addBreak()
{
    const auto size = static_cast<int>(m_points.size());
    if (size > 0 && (m_breaks.empty() || m_breaks.back() != size))
        m_breaks.push_back(size);
}

void HistorySeries::load(const SignalHistory &history, int signal, const PlotColumns &columns,
                         std::vector<ErrorMark> &errors)
{
    clear();
    if (columns.isSparse())
        loadFrames(history, signal, columns, errors);
    else
        loadColumns(history, signal, columns, errors);
}

// With a frame more at each side, so that the lines reach the edges of the plot.
void HistorySeries::loadFrames(const SignalHistory &history, int signal, const PlotColumns &columns,
                               std::vector<ErrorMark> &errors)
{
    const FrameRange range = columns.range();
    const qint64 begin = std::max(history.firstFrame(), range.begin - 1);
    const qint64 end = std::min(columns.endFrame, range.end + 1);
    auto nextBreak = columns.breaks.begin();
    for (qint64 frame = begin; frame < end; ++frame) {
        if (nextBreak != columns.breaks.end() && *nextBreak == frame) {
            addBreak();
            ++nextBreak;
        }
        const double value = history.value(signal, frame);
        const double position = history.timeLine().position(frame);
        const bool isInside = frame >= range.begin && frame < range.end;
        if (!isMeasured(value)) {
            addBreak();
            if (isInside)
                errors.push_back({signal, position, 1, SondixQt::errorValueKey(value)});
            continue;
        }
        m_points.emplace_back(position, value);
        if (isInside) {
            m_minimum = std::min(m_minimum, value);
            m_maximum = std::max(m_maximum, value);
        }
    }
}

void HistorySeries::loadColumns(const SignalHistory &history, int signal, const PlotColumns &columns,
                                std::vector<ErrorMark> &errors)
{
    auto nextBreak = columns.breaks.begin();
    for (int i = 0; i < columns.count(); ++i) {
        const FrameRange column = columns.column(i);
        // A column in which the curve is interrupted has several parts.
        for (qint64 begin = column.begin; begin < column.end;) {
            for (; nextBreak != columns.breaks.end() && *nextBreak <= begin; ++nextBreak)
                addBreak();
            const bool isCut = nextBreak != columns.breaks.end() && *nextBreak < column.end;
            const FrameRange part{begin, isCut ? *nextBreak : column.end};
            // On its own side of the gap.
            const bool isPart = isCut || begin > column.begin;
            addPart(history.extremes(signal, part), signal,
                    isPart ? std::clamp(columns.centre(i), history.timeLine().position(part.begin),
                                        history.timeLine().position(part.end - 1))
                           : columns.centre(i),
                    errors);
            begin = part.end;
        }
    }
}

void HistorySeries::addPart(const Extremes &extremes, int signal, double position, std::vector<ErrorMark> &errors)
{
    if (extremes.errors > 0)
        errors.push_back({signal, position, extremes.errors, extremes.errorKey});
    if (!extremes.hasValues()) {
        addBreak();
        return;
    }
    // The nearer end of the column first, so that the line to it is short.
    double first = extremes.minimum;
    double second = extremes.maximum;
    if (!m_points.empty() && std::abs(m_points.back().y() - second) < std::abs(m_points.back().y() - first))
        std::swap(first, second);
    m_points.emplace_back(position, first);
    m_points.emplace_back(position, second);
    m_minimum = std::min(m_minimum, extremes.minimum);
    m_maximum = std::max(m_maximum, extremes.maximum);
    m_heights += extremes.maximum - extremes.minimum;
    ++m_columns;
}

QRectF HistorySeries::boundingRect() const
{
    if (m_points.empty() || m_minimum > m_maximum)
        return QRectF(1.0, 1.0, -2.0, -2.0); // invalid, as Qwt has it
    return QRectF(m_points.front().x(), m_minimum, m_points.back().x() - m_points.front().x(),
                  m_maximum - m_minimum);
}

HistoryCurve::HistoryCurve(const QwtText &title)
    : QwtPlotCurve(title)
    , m_series(new HistorySeries)
{
    m_series->clear();
    setSamples(m_series);
    setStyle(QwtPlotCurve::Lines);
    setPaintAttribute(QwtPlotCurve::ClipPolygons, true);
    // The points are two per column already.
    setPaintAttribute(QwtPlotCurve::FilterPoints, false);
    setRenderHint(QwtPlotItem::RenderAntialiased, false);
    setLegendAttribute(QwtPlotCurve::LegendShowLine, true);
}

void HistoryCurve::setColour(const QColor &colour)
{
    if (pen().color() == colour && pen().style() == Qt::SolidLine)
        return;
    // A pen of width 1 without antialiasing is drawn many times faster than any other.
    setPen(colour, 1.0);
    if (m_isMarked) {
        m_isMarked = false;
        setMarked(true);
    }
}

void HistoryCurve::setMarked(bool marked)
{
    if (m_isMarked == marked)
        return;
    m_isMarked = marked;
    constexpr int size = 5;
    setSymbol(marked ? new QwtSymbol(QwtSymbol::Ellipse, pen().color(), pen(), QSize(size, size)) : nullptr);
}

void HistoryCurve::stack(double axisRange, int order)
{
    // Two bounds, so that a curve between them does not change its place with every value.
    constexpr double narrow = 0.1;
    constexpr double broad = 0.2;
    m_isBroad = m_series->meanHeight() > (m_isBroad ? narrow : broad) * axisRange;
    // Of two curves of the same kind the first signal is in front: it is the main one.
    setZ((m_isBroad ? 10.0 : 20.0) - 0.01 * order);
}

void HistoryCurve::drawLines(QPainter *painter, const QwtScaleMap &xMap, const QwtScaleMap &yMap,
                             const QRectF &canvasRect, int from, int to) const
{
    int begin = from;
    const auto drawPart = [&](int end) {
        if (end == begin) // A line of one point is not drawn at all.
            painter->drawPoint(QPointF(xMap.transform(sample(begin).x()), yMap.transform(sample(begin).y())));
        else if (end > begin)
            QwtPlotCurve::drawLines(painter, xMap, yMap, canvasRect, begin, end);
        begin = end + 1;
    };
    for (const int next : m_series->breaks())
        if (next > begin && next <= to)
            drawPart(next - 1);
    drawPart(to);
}

} // namespace Explorer
