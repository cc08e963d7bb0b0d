// SPDX-License-Identifier: MIT
#pragma once

#include "timewindow.h"

#include <QObject>
#include <QPoint>
#include <QRect>

class QMouseEvent;
class QRubberBand;
class QWheelEvent;

namespace Explorer {

class PlotCursors;
class TimePlot;

/// The mouse on the canvas of a plot.
///
/// - Dragging with the left button selects a part of the time axis; with Shift a rectangle.
/// - Dragging a cursor moves it.
/// - Dragging with the middle button, or with the left one and Ctrl, moves the window.
/// - The wheel zooms the time around the pointer, with Ctrl the values; with Shift it moves the window.
/// - A double click shows everything.
class PlotNavigator : public QObject
{
    Q_OBJECT
public:
    PlotNavigator(TimePlot *plot, PlotCursors *cursors);

Q_SIGNALS:
    /// A part of the canvas was selected, in pixels; \a isRectangle: the values as well.
    void selected(const QRect &rect, bool isRectangle);
    /// The time is to be zoomed around a position.
    void timeZoomed(double position, double factor);
    /// The values are to be zoomed around a pixel of the canvas.
    void valuesZoomed(int pixel, double factor);
    /// The window is to be moved by so many pixels.
    void moved(const QPoint &distance);
    void cursorMoved(int cursor, double position);
    void everythingWanted();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    enum Drag { NoDrag, SelectDrag, MoveDrag, CursorDrag };

    bool press(const QMouseEvent &event);
    bool move(const QMouseEvent &event);
    bool release(const QMouseEvent &event);
    bool turn(const QWheelEvent &event);
    QRect selection(const QPoint &pointer) const;
    void endDrag();

    TimePlot *m_plot;
    PlotCursors *m_cursors;
    QRubberBand *m_band;
    Drag m_drag = NoDrag;
    int m_cursor = 0;
    bool m_isRectangle = false;
    QPoint m_origin;
    QPoint m_last;
};

} // namespace Explorer
