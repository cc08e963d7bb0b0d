// SPDX-License-Identifier: MIT
#include "plotcrosshair.h"

#include "timeplot.h"

#include <qwt_picker_machine.h>
#include <qwt_text.h>

#include <algorithm>

namespace Explorer {

PlotCrosshair::PlotCrosshair(TimePlot *plot)
    : QwtPlotPicker(QwtPlot::xBottom, QwtPlot::yLeft, QwtPicker::CrossRubberBand, QwtPicker::AlwaysOn,
                    plot->canvas())
    , m_plot(plot)
{
    setStateMachine(new QwtPickerTrackerMachine);
    // The arrow keys belong to the plot: they must not move the pointer.
    for (int code = 0; code < QwtEventPattern::KeyPatternCount; ++code)
        setKeyPattern(static_cast<QwtEventPattern::KeyPatternCode>(code), Qt::Key_unknown);
    setEnabled(false);
    setColours(plot->palette());
}

void PlotCrosshair::setColours(const QPalette &palette)
{
    m_palette = palette;
    QColor line = palette.color(QPalette::Text);
    line.setAlpha(120);
    setRubberBandPen(line);
    setTrackerPen(palette.color(QPalette::ToolTipText));
}

QwtText PlotCrosshair::trackerText(const QPoint &pixel) const
{
    QwtText text(m_plot->readingAt(m_plot->positionAt(pixel.x())), QwtText::PlainText);
    text.setRenderFlags(Qt::AlignLeft | Qt::AlignVCenter);
    text.setBackgroundBrush(m_palette.brush(QPalette::ToolTipBase));
    text.setBorderPen(m_palette.color(QPalette::Mid));
    text.setBorderRadius(2.0);
    return text;
}

// Beside the pointer, on the side where there is room.
QRect PlotCrosshair::trackerRect(const QFont &font) const
{
    QRect rect = QwtPlotPicker::trackerRect(font);
    if (rect.isEmpty() || trackerPosition().x() < 0)
        return rect;
    constexpr int distance = 12;
    const QRect area = pickArea().boundingRect().toRect();
    const QPoint pointer = trackerPosition();
    const int right = pointer.x() + distance;
    rect.moveLeft(right + rect.width() <= area.right() ? right : pointer.x() - distance - rect.width());
    rect.moveTop(
        std::clamp(pointer.y() + distance, area.top(), std::max(area.top(), area.bottom() - rect.height())));
    rect.moveLeft(std::max(area.left(), rect.left()));
    return rect;
}

} // namespace Explorer
