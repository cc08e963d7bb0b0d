// SPDX-License-Identifier: MIT
// The header of Qwt's layout initialises flags with 0, which Qt calls deprecated: it needs a source of its own, in which
// what is deprecated is available.
#undef QT_DISABLE_DEPRECATED_BEFORE
#include "baseplot.h"

#include "numberscale.h"

#include <qwt_plot_canvas.h>
#include <qwt_plot_layout.h>
#include <qwt_scale_div.h>
#include <qwt_scale_map.h>
#include <qwt_scale_widget.h>
#include <qwt_text.h>

#include <cmath>

namespace Explorer {

namespace {

bool isVertical(int axis)
{
    return axis == QwtPlot::yLeft || axis == QwtPlot::yRight;
}

} // namespace

BasePlot::BasePlot(QWidget *parent)
    : QwtPlot(parent)
{
    setAutoReplot(false);
    setAutoDelete(false); // the items are members of those that attach them
    qobject_cast<QwtPlotCanvas *>(canvas())->setFrameStyle(QFrame::NoFrame);
    plotLayout()->setAlignCanvasToScales(true);
    plotLayout()->setSpacing(2);
    for (const int axis : {int(QwtPlot::xBottom), int(QwtPlot::yLeft), int(QwtPlot::yRight)}) {
        axisWidget(axis)->setMargin(0);
        setAxisFont(axis, font());
        setAxisScaleDraw(axis, new NumberScaleDraw);
        setTitleOf(axis, {});
        if (isVertical(axis)) {
            // Qwt reserves the height of the digits in whole pixels: at fractional scales the label at the end is cut.
            const int half = fontMetrics().ascent() / 2 + 1;
            axisWidget(axis)->setMinBorderDist(half, half);
        }
    }
}

void BasePlot::setTitleOf(int axis, const QString &text)
{
    QwtText title(text);
    title.setFont(font());
    setAxisTitle(axis, title);
}

void BasePlot::replot()
{
    for (int axis = 0; axis < axisCnt; ++axis)
        if (axisEnabled(axis))
            fitLabels(axis);
    QwtPlot::replot();
}

void BasePlot::resizeEvent(QResizeEvent *event)
{
    QwtPlot::resizeEvent(event);
    replot();
}

// From many to few in every drawing: a scale that is moved or zoomed has the labels that its present part needs.
void BasePlot::fitLabels(int axis)
{
    constexpr int maxCount = 8;
    for (int count = maxCount; count >= 1; --count) {
        setAxisMaxMajor(axis, count);
        updateAxes();
        if (haveLabelsRoom(axis))
            return;
    }
}

bool BasePlot::haveLabelsRoom(int axis) const
{
    const QwtScaleDraw *draw = axisScaleDraw(axis);
    const QList<double> ticks = draw->scaleDiv().ticks(QwtScaleDiv::MajorTick);
    const QwtScaleMap map = canvasMap(axis);
    // Numbers are hard to read without space between them.
    const int space = isVertical(axis) ? fontMetrics().height() / 4 : fontMetrics().averageCharWidth();
    const int minDistance = draw->minLabelDist(axisFont(axis)) + space;
    for (int i = 1; i < ticks.size(); ++i)
        if (std::abs(map.transform(ticks.at(i)) - map.transform(ticks.at(i - 1))) < minDistance)
            return false;
    return true;
}

} // namespace Explorer
