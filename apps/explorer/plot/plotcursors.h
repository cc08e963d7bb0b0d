// SPDX-License-Identifier: MIT
#pragma once

#include "timewindow.h"

#include <QCoreApplication>
#include <QString>

#include <array>
#include <memory>
#include <optional>

class QwtPlotMarker;

namespace Explorer {

class TimePlot;

/// Two vertical lines, A and B, at which values are read and between which they are compared.
class PlotCursors
{
    Q_DECLARE_TR_FUNCTIONS(Explorer::PlotCursors)
public:
    static constexpr int count = 2;

    explicit PlotCursors(TimePlot *plot);
    ~PlotCursors();

    bool isVisible() const { return m_isVisible; }
    /// Cursors outside \a window are moved into it when they appear.
    void setVisible(bool visible, const TimeWindow &window);
    double position(int cursor) const { return m_positions[static_cast<std::size_t>(cursor)]; }
    void setPosition(int cursor, double position);
    /// The cursor that the keyboard moves.
    int active() const { return m_active; }
    void setActive(int cursor);
    /// The cursor whose line is within a few pixels of \a pixel.
    std::optional<int> cursorAt(int pixel) const;
    void updateColours();

    /// The value of \a signal at a cursor; empty if it is outside the history, or in a gap.
    std::optional<double> value(int cursor, int signal) const;
    /// The times of both, their difference, and its inverse as a frequency.
    QString summary() const;

private:
    TimePlot *m_plot;
    std::array<std::unique_ptr<QwtPlotMarker>, count> m_markers;
    std::array<double, count> m_positions{};
    bool m_isVisible = false;
    bool m_isPlaced = false;
    int m_active = 0;
};

} // namespace Explorer
