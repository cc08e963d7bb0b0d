// SPDX-License-Identifier: MIT
#include "plotnavigator.h"

#include "plotcursors.h"
#include "timeplot.h"

#include <QHelpEvent>
#include <QMouseEvent>
#include <QRubberBand>
#include <QToolTip>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace Explorer {

namespace {

// A press that moves less than this is a click.
constexpr int minDrag = 4;

} // namespace

PlotNavigator::PlotNavigator(TimePlot *plot, PlotCursors *cursors)
    : QObject(plot)
    , m_plot(plot)
    , m_cursors(cursors)
    , m_band(new QRubberBand(QRubberBand::Rectangle, plot->canvas()))
{
    plot->canvas()->setMouseTracking(true);
    plot->canvas()->setCursor(Qt::ArrowCursor);
    plot->canvas()->installEventFilter(this);
}

bool PlotNavigator::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        return press(*static_cast<QMouseEvent *>(event));
    case QEvent::MouseMove:
        return move(*static_cast<QMouseEvent *>(event));
    case QEvent::MouseButtonRelease:
        return release(*static_cast<QMouseEvent *>(event));
    case QEvent::Wheel:
        return turn(*static_cast<QWheelEvent *>(event));
    case QEvent::MouseButtonDblClick:
        if (static_cast<QMouseEvent *>(event)->button() == Qt::LeftButton)
            Q_EMIT everythingWanted();
        return false;
    case QEvent::Hide:
        endDrag();
        return false;
    case QEvent::ToolTip: {
        const auto *help = static_cast<QHelpEvent *>(event);
        QToolTip::showText(help->globalPos(), m_plot->noteAt(help->pos()), m_plot->canvas());
        return true;
    }
    default:
        return QObject::eventFilter(watched, event);
    }
}

bool PlotNavigator::press(const QMouseEvent &event)
{
    m_origin = m_last = event.pos();
    m_isRectangle = event.modifiers().testFlag(Qt::ShiftModifier);
    const bool isMove = event.button() == Qt::MiddleButton ||
                        (event.button() == Qt::LeftButton && event.modifiers().testFlag(Qt::ControlModifier));
    if (isMove) {
        m_drag = MoveDrag;
        m_plot->canvas()->setCursor(Qt::ClosedHandCursor);
    } else if (event.button() == Qt::LeftButton) {
        const auto cursor = m_cursors->cursorAt(event.pos().x());
        m_drag = cursor ? CursorDrag : SelectDrag;
        m_cursor = cursor.value_or(0);
        if (cursor)
            Q_EMIT cursorMoved(m_cursor, m_cursors->position(m_cursor));
    }
    return false;
}

QRect PlotNavigator::selection(const QPoint &pointer) const
{
    const QRect area = m_plot->canvas()->rect();
    QRect rect = QRect(m_origin, pointer).normalized();
    if (!m_isRectangle)
        rect = QRect(rect.left(), area.top(), rect.width(), area.height());
    return rect & area;
}

bool PlotNavigator::move(const QMouseEvent &event)
{
    switch (m_drag) {
    case NoDrag:
        m_plot->canvas()->setCursor(m_cursors->cursorAt(event.pos().x()) ? Qt::SizeHorCursor : Qt::ArrowCursor);
        break;
    case SelectDrag:
        if ((event.pos() - m_origin).manhattanLength() >= minDrag) {
            m_band->setGeometry(selection(event.pos()));
            m_band->show();
        }
        break;
    case MoveDrag:
        Q_EMIT moved(event.pos() - m_last);
        m_last = event.pos();
        break;
    case CursorDrag: {
        const int pixel = std::clamp(event.pos().x(), 0, m_plot->canvas()->width() - 1);
        Q_EMIT cursorMoved(m_cursor, m_plot->positionAt(pixel));
        break;
    }
    }
    return false;
}

bool PlotNavigator::release(const QMouseEvent &event)
{
    const bool isSelected = m_drag == SelectDrag && event.button() == Qt::LeftButton &&
                            std::abs(event.pos().x() - m_origin.x()) >= minDrag;
    const QRect rect = selection(event.pos());
    endDrag();
    if (isSelected && rect.width() > 1)
        Q_EMIT selected(rect, m_isRectangle && rect.height() >= minDrag);
    return false;
}

void PlotNavigator::endDrag()
{
    m_band->hide();
    m_drag = NoDrag;
    m_plot->canvas()->setCursor(Qt::ArrowCursor);
}

bool PlotNavigator::turn(const QWheelEvent &event)
{
    constexpr double degreesPerStep = 120.0;
    // With Alt, and on some systems with Shift, the wheel turns horizontally.
    const QPoint angle = event.angleDelta();
    const double steps = (angle.y() != 0 ? angle.y() : angle.x()) / degreesPerStep;
    if (steps == 0.0)
        return false;
    constexpr double factorPerStep = 0.8;
    const QPoint pointer = event.position().toPoint();
    if (event.modifiers().testFlag(Qt::ControlModifier))
        Q_EMIT valuesZoomed(pointer.y(), std::pow(factorPerStep, steps));
    else if (event.modifiers().testFlag(Qt::ShiftModifier) || angle.y() == 0)
        Q_EMIT moved(QPoint(static_cast<int>(steps * m_plot->canvas()->width() / 10.0), 0));
    else
        Q_EMIT timeZoomed(m_plot->positionAt(pointer.x()), std::pow(factorPerStep, steps));
    return true;
}

} // namespace Explorer
