// SPDX-License-Identifier: MIT
#pragma once

#include "baseplot.h"
#include "historycurve.h"
#include "timescale.h"
#include "timewindow.h"

#include <explorer/history/signalhistory.h>

#include <qwt_interval.h>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class QwtPlotGrid;
class QwtPlotLegendItem;

namespace Explorer {

class ErrorItem;
class GapItem;

/// The curves of a history over the time, with value axes at the left and at the right.
///
/// Signals of the same unit have the same axis. With more than two units, those of the shown signals come first, and the
/// signals of a further unit have the axis whose signals have the most similar range; its title names all units.
class TimePlot : public BasePlot
{
    Q_OBJECT
public:
    /// Further signals of a sensor have no curve.
    static constexpr int maxSignals = 256;
    /// Signals that are shown at first.
    static constexpr int maxShownAtFirst = 16;

    explicit TimePlot(QWidget *parent = nullptr);
    ~TimePlot() override;

    /// The history must outlive the plot, or another one must be set before; may be null.
    void setHistory(const SignalHistory *history);
    const SignalHistory *history() const { return m_history; }
    /// Returns the text of a value that is an error value.
    void setErrorText(std::function<QString(double)> text) { m_errorText = std::move(text); }

    /// The part of the time axis that is shown.
    const TimeWindow &window() const { return m_window; }
    void setWindow(const TimeWindow &window) { m_window = window; }
    /// Frames that arrive after \a frame, in the order of arrival, are not shown; empty: all are. Another history, or other
    /// signals, end it.
    void setEndFrame(std::optional<qint64> frame) { m_endFrame = frame; }
    /// The frame after the last one that can be shown, and the position of that one. Only with a history.
    qint64 endFrame() const;
    double endPosition() const;
    /// Writes times as the time of day; empty: as seconds from the beginning.
    void setClockOffset(std::optional<double> offset);
    TimeFormat timeFormat() const;

    /// The range of a value axis; empty: that of the values that are shown.
    void setValueRange(int axis, std::optional<QwtInterval> range);
    bool hasValueRange() const;
    void clearValueRanges();

    /// Fetches what the window shows from the history, and draws it as soon as the event loop runs.
    void load();
    /// The same for a picture that is \a columns pixels wide.
    void load(int columns);

    int signalCount() const { return static_cast<int>(m_curves.size()); }
    bool isShown(int signal) const;
    void setShown(int signal, bool shown);
    int axisOf(int signal) const;
    QColor colourOf(int signal) const;
    QString nameOf(int signal) const;
    QString unitOf(int signal) const;
    const HistoryCurve &curve(int signal) const { return *m_curves[static_cast<std::size_t>(signal)]; }
    /// The frames that are shown.
    FrameRange shownFrames() const;
    const std::vector<ErrorMark> &errorMarks() const;
    const std::vector<GapMark> &gapMarks() const;

    /// The position of a pixel of the canvas, and what a pixel measures on the time axis.
    double positionAt(double pixel) const;
    double pixelWidth() const;
    /// \a value with as many digits as the sensor has, or the text of its error; with the unit.
    QString valueText(int signal, double value) const;
    QString errorText(int key) const;
    /// What the error marks and the gap at a pixel of the canvas mean; empty if there are none.
    QString noteAt(const QPoint &pixel) const;
    /// The time, and the values of all shown signals of the frame nearest to a position.
    QString readingAt(double position) const;

    /// Adds a legend to the canvas, for a picture that is saved.
    void setPictureLegend(bool visible);
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    /// The signals are others than before.
    void signalsChanged();
    void shownChanged(int signal, bool shown);
    /// Signals have another value axis than before.
    void axesChanged();
    /// The palette is another one.
    void coloursChanged();

protected:
    void changeEvent(QEvent *event) override;

private:
    void describe();
    bool assignAxes();
    void setColours();
    QString timeTitle() const;
    void scaleValues(int axis);
    void addMarks(std::vector<ErrorMark> errors);
    QwtInterval valuesOn(int axis) const;

    const SignalHistory *m_history = nullptr;
    SondixQt::TransmittedDataInfo m_frame;
    std::function<QString(double)> m_errorText;
    TimeWindow m_window;
    std::optional<qint64> m_endFrame;
    std::optional<double> m_clockOffset;
    std::vector<std::unique_ptr<HistoryCurve>> m_curves;
    std::vector<std::optional<QwtInterval>> m_valueRanges; // by axis
    FrameRange m_shownFrames;
    std::unique_ptr<QwtPlotGrid> m_grid;
    std::unique_ptr<GapItem> m_gaps;
    std::unique_ptr<ErrorItem> m_errors;
    std::unique_ptr<QwtPlotLegendItem> m_pictureLegend;
    TimeScaleDraw *m_timeDraw;
    TimeScaleEngine *m_timeEngine;
};

} // namespace Explorer
