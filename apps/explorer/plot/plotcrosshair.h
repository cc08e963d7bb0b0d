// SPDX-License-Identifier: MIT
#pragma once

#include <QPalette>

#include <qwt_plot_picker.h>

namespace Explorer {

class TimePlot;

/// Crossed lines at the pointer, with the values of the nearest frame.
class PlotCrosshair : public QwtPlotPicker
{
    Q_OBJECT
public:
    explicit PlotCrosshair(TimePlot *plot);

    /// The text beside the pointer, for a pixel of the canvas.
    QwtText trackerText(const QPoint &pixel) const override;
    QRect trackerRect(const QFont &font) const override;
    void setColours(const QPalette &palette);

private:
    TimePlot *m_plot;
    QPalette m_palette;
};

} // namespace Explorer
