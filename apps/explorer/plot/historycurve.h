// SPDX-License-Identifier: MIT
#pragma once

#include <explorer/history/signalhistory.h>

#include <qwt_plot_curve.h>
#include <qwt_series_data.h>

#include <vector>

namespace Explorer {

/// The columns of pixels of a plot, and the frames of each.
struct PlotColumns
{
    double from = 0.0;
    double to = 0.0;
    std::vector<qint64> limits; ///< see SignalHistory::columnLimits()
    std::vector<qint64> breaks; ///< frames before which the curves are interrupted
    qint64 endFrame = 0;        ///< the first frame that is not shown

    /// For a plot that is \a columns pixels wide. Frames from \a endFrame on are not shown.
    static PlotColumns of(const SignalHistory &history, double from, double to, int columns, qint64 endFrame);

    FrameRange range() const { return {limits.front(), limits.back()}; }
    /// Whether there are so few frames that each of them is drawn.
    bool isSparse() const;
    int count() const { return static_cast<int>(limits.size()) - 1; }
    FrameRange column(int index) const
    {
        return {limits[static_cast<std::size_t>(index)], limits[static_cast<std::size_t>(index) + 1]};
    }
    double width() const { return (to - from) / count(); }
    double centre(int index) const { return from + (index + 0.5) * width(); }
};

/// Error values of one signal in one column of pixels.
struct ErrorMark
{
    int signal = 0;
    double position = 0.0; ///< of the column, or of the frame where there are few
    qint64 count = 0;
    int key = 0; ///< of the first one, see SondixQt::errorValueKey()
};

/// The points of a curve in the visible part of the history: all frames where they are few, otherwise the lowest and the
/// highest value of each column of pixels. So a peak of a single frame is always seen.
class HistorySeries : public QwtSeriesData<QPointF>
{
public:
    /// Fetches the points of \a signal, and appends its error values to \a errors.
    void load(const SignalHistory &history, int signal, const PlotColumns &columns,
              std::vector<ErrorMark> &errors);
    void clear();

    size_t size() const override { return m_points.size(); }
    QPointF sample(size_t i) const override { return m_points[i]; }
    QRectF boundingRect() const override;

    /// The points at which a new line begins, in ascending order, without the first one.
    const std::vector<int> &breaks() const { return m_breaks; }
    double minimum() const { return m_minimum; }
    double maximum() const { return m_maximum; }
    /// The mean distance of the lowest and the highest value of a column; 0 where frames are drawn one by one.
    double meanHeight() const { return m_columns > 0 ? m_heights / m_columns : 0.0; }

private:
    void loadFrames(const SignalHistory &history, int signal, const PlotColumns &columns,
                    std::vector<ErrorMark> &errors);
    void loadColumns(const SignalHistory &history, int signal, const PlotColumns &columns,
                     std::vector<ErrorMark> &errors);
    void addPart(const Extremes &extremes, int signal, double position, std::vector<ErrorMark> &errors);
    void addBreak();

    std::vector<QPointF> m_points;
    std::vector<int> m_breaks;
    double m_minimum = 0.0;
    double m_maximum = 0.0;
    double m_heights = 0.0;
    int m_columns = 0;
};

/// A curve that is interrupted at gaps and error values. The points are marked where there is room for it.
class HistoryCurve : public QwtPlotCurve
{
public:
    explicit HistoryCurve(const QwtText &title);

    HistorySeries &series() { return *m_series; }
    const HistorySeries &series() const { return *m_series; }
    void setColour(const QColor &colour);
    void setMarked(bool marked);
    /// Decides whether the curve is drawn behind the others: a curve that fills an area hides thin ones. \a axisRange is
    /// the height of the plot in units of the curve, \a order the place of the signal in its frame.
    void stack(double axisRange, int order);

protected:
    void drawLines(QPainter *painter, const QwtScaleMap &xMap, const QwtScaleMap &yMap, const QRectF &canvasRect,
                   int from, int to) const override;

private:
    HistorySeries *m_series; // owned by the curve
    bool m_isMarked = false;
    bool m_isBroad = false;
};

} // namespace Explorer
