// SPDX-License-Identifier: MIT
// Mouse and keys of a PlotView.
#include "plotcrosshair.h"
#include "plotcursors.h"
#include "plotnavigator.h"
#include "plotview.h"
#include "timeplot.h"

#include <explorer/history/signalhistory.h>

#include <QAction>
#include <QKeyEvent>

#include <qwt_scale_map.h>

#include <algorithm>

namespace Explorer {

void PlotView::connectNavigator()
{
    connect(m_navigator, &PlotNavigator::selected, this, &PlotView::select);
    connect(m_navigator, &PlotNavigator::timeZoomed, this, &PlotView::zoomTime);
    connect(m_navigator, &PlotNavigator::valuesZoomed, this, &PlotView::zoomValues);
    connect(m_navigator, &PlotNavigator::everythingWanted, this, &PlotView::showEverything);
    connect(m_navigator, &PlotNavigator::cursorMoved, this, &PlotView::moveCursor);
    connect(m_navigator, &PlotNavigator::moved, this, [this](const QPoint &distance) {
        if (distance.x() != 0)
            moveTime(-distance.x() * m_plot->pixelWidth());
        if (distance.y() != 0 && m_plot->hasValueRange())
            moveValues(static_cast<double>(distance.y()) / std::max(1, m_plot->canvas()->height()));
    });
}

double PlotView::centre() const
{
    return (window().from + window().to) / 2.0;
}

// While the newest values are followed they stay where they are.
void PlotView::zoomTime(double position, double factor)
{
    if (m_mode == Follow && !isPaused()) {
        const double widest = std::max(limits().width(), window().width());
        m_span = std::clamp(window().width() * factor, narrowest(), std::max(widest, narrowest()));
        updateWindow();
        redraw();
        return;
    }
    const TimeWindow zoomed = window().zoomed(position, factor, narrowest());
    if (zoomed.width() >= limits().width() && factor > 1.0) {
        setWindow(limits());
        return;
    }
    setWindow(zoomed);
}

// Up to half a window beyond the ends, so that these can be brought to the middle.
void PlotView::moveTime(double distance)
{
    const TimeWindow shown = window();
    TimeWindow allowed = limits();
    allowed.from -= shown.width() / 2.0;
    allowed.to += shown.width() / 2.0;
    setWindow(shown.moved(distance).within(allowed));
}

void PlotView::zoomValues(int pixel, double factor)
{
    for (const int axis : {int(QwtPlot::yLeft), int(QwtPlot::yRight)}) {
        const QwtScaleMap map = m_plot->canvasMap(axis);
        const double anchor = map.invTransform(pixel);
        const TimeWindow shown{std::min(map.s1(), map.s2()), std::max(map.s1(), map.s2())};
        // Beyond these the ends of a scale have no numbers that mean anything.
        constexpr double narrowest = 1.0e-30;
        constexpr double broadest = 1.0e18;
        const TimeWindow range = shown.zoomed(anchor, factor, narrowest);
        if (range.width() > broadest)
            continue;
        m_plot->setValueRange(axis, QwtInterval(range.from, range.to));
    }
    redraw();
}

void PlotView::moveValues(double share)
{
    for (const int axis : {int(QwtPlot::yLeft), int(QwtPlot::yRight)}) {
        const QwtInterval range = m_plot->axisInterval(axis);
        const double distance = range.width() * share;
        m_plot->setValueRange(axis, QwtInterval(range.minValue() + distance, range.maxValue() + distance));
    }
    redraw();
}

void PlotView::select(const QRect &rect, bool isRectangle)
{
    const TimeWindow wanted{m_plot->positionAt(rect.left()), m_plot->positionAt(rect.right())};
    if (isRectangle)
        for (const int axis : {int(QwtPlot::yLeft), int(QwtPlot::yRight)}) {
            const QwtScaleMap map = m_plot->canvasMap(axis);
            m_plot->setValueRange(
                axis, QwtInterval(map.invTransform(rect.bottom()), map.invTransform(rect.top())).normalized());
        }
    const double middle = (wanted.from + wanted.to) / 2.0;
    setWindow(wanted.zoomed(middle, 1.0, narrowest()));
}

void PlotView::moveCursor(int cursor, double position)
{
    m_cursors->setActive(cursor);
    m_cursors->setPosition(cursor, position);
    redraw();
}

bool PlotView::pressCursorKey(const QKeyEvent &event)
{
    if (!m_cursors->isVisible())
        return false;
    const int direction = event.key() == Qt::Key_Left ? -1 : 1;
    const int pixels = event.modifiers().testFlag(Qt::ShiftModifier) ? 10 : 1;
    const double position = m_cursors->position(m_cursors->active()) + direction * pixels * m_plot->pixelWidth();
    moveCursor(m_cursors->active(), std::clamp(position, window().from, window().to));
    return true;
}

// While there are cursors, Tab on the canvas goes from one to the other and then on.
bool PlotView::focusNextPrevChild(bool next)
{
    if (m_cursors->isVisible() && m_plot->canvas()->hasFocus() && m_cursors->active() == (next ? 0 : 1)) {
        m_cursors->setActive(next ? 1 : 0);
        redraw();
        return true;
    }
    return QWidget::focusNextPrevChild(next);
}

void PlotView::keyPressEvent(QKeyEvent *event)
{
    constexpr double step = 0.1;
    const bool isControl = event->modifiers().testFlag(Qt::ControlModifier);
    const int middle = m_plot->canvas()->height() / 2;
    switch (event->key()) {
    case Qt::Key_Plus:
    case Qt::Key_Equal:
        zoomTime(centre(), zoomFactor);
        return;
    case Qt::Key_Minus:
        zoomTime(centre(), 1.0 / zoomFactor);
        return;
    case Qt::Key_Left:
    case Qt::Key_Right:
        if (!isControl)
            moveTime((event->key() == Qt::Key_Left ? -step : step) * window().width());
        else if (!pressCursorKey(*event))
            break;
        return;
    case Qt::Key_Up:
    case Qt::Key_Down:
        if (isControl)
            zoomValues(middle, event->key() == Qt::Key_Up ? zoomFactor : 1.0 / zoomFactor);
        else
            moveValues(event->key() == Qt::Key_Up ? step : -step);
        return;
    case Qt::Key_Home: {
        const double begin = limits().from;
        setWindow({begin, begin + window().width()});
        return;
    }
    case Qt::Key_End:
        if (!plotAction(QStringLiteral("followAction"))->isChecked())
            plotAction(QStringLiteral("followAction"))->trigger();
        return;
    case Qt::Key_0:
        showEverything();
        return;
    case Qt::Key_Space:
        plotAction(QStringLiteral("pauseAction"))->toggle();
        return;
    default:
        break;
    }
    QWidget::keyPressEvent(event);
}

void PlotView::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && m_cursors) {
        m_crosshair->setColours(palette());
        redraw();
    }
}

// The window may have another size than the values were fetched for.
void PlotView::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    refresh();
}

} // namespace Explorer
