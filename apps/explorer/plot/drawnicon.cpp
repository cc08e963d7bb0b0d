// SPDX-License-Identifier: MIT
#include "drawnicon.h"

#include <QApplication>
#include <QIconEngine>
#include <QLineF>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>

#include <initializer_list>

namespace Explorer {

namespace {

constexpr double side =
    18.0; // of the square around the coordinates below, which go to 16: text may follow closely

void addLines(QPainterPath &path, std::initializer_list<QLineF> lines)
{
    for (const QLineF &line : lines) {
        path.moveTo(line.p1());
        path.lineTo(line.p2());
    }
}

void addHead(QPainterPath &path, double x, double y, double dx, double dy)
{
    path.moveTo(x - dx - dy, y - dy - dx);
    path.lineTo(x, y);
    path.lineTo(x - dx + dy, y - dy + dx);
}

QPainterPath linesOf(Drawing drawing)
{
    QPainterPath path;
    switch (drawing) {
    case Drawing::Search:
        path.addEllipse(2.5, 2.5, 7.5, 7.5);
        addLines(path, {{9.2, 9.2, 13.5, 13.5}});
        break;
    case Drawing::Open: // a plug
        addLines(path, {{5.5, 2.0, 5.5, 5.5}, {10.5, 2.0, 10.5, 5.5}});
        path.addRoundedRect(3.5, 5.5, 9.0, 5.0, 2.0, 2.0);
        addLines(path, {{8.0, 10.5, 8.0, 14.0}});
        break;
    case Drawing::Follow: // to the newest values
        addLines(path, {{2.0, 8.0, 10.5, 8.0}});
        addHead(path, 10.5, 8.0, 3.0, 0.0);
        addLines(path, {{13.5, 3.0, 13.5, 13.0}});
        break;
    case Drawing::Pause:
        addLines(path, {{5.5, 3.5, 5.5, 12.5}, {10.5, 3.5, 10.5, 12.5}});
        break;
    case Drawing::Cursors:
        addLines(path, {{4.0, 2.0, 4.0, 14.0}, {12.0, 2.0, 12.0, 14.0}, {6.0, 8.0, 10.0, 8.0}});
        break;
    case Drawing::ShowAll:
        addLines(path, {{2.0, 3.5, 2.0, 12.5}, {14.0, 3.5, 14.0, 12.5}, {4.0, 8.0, 12.0, 8.0}});
        addHead(path, 12.0, 8.0, 2.0, 0.0);
        addHead(path, 4.0, 8.0, -2.0, 0.0);
        break;
    case Drawing::View:
        addLines(path, {{3.0, 4.0, 13.0, 4.0}, {3.0, 8.0, 13.0, 8.0}, {3.0, 12.0, 13.0, 12.0}});
        break;
    case Drawing::Video: // a line of pixels with its peak
        path.moveTo(1.5, 12.5);
        path.lineTo(5.0, 12.0);
        path.cubicTo(7.0, 11.5, 6.5, 3.0, 8.0, 3.0);
        path.cubicTo(9.5, 3.0, 9.0, 11.5, 11.0, 12.0);
        path.lineTo(14.5, 12.5);
        break;
    case Drawing::Web:
        path.addEllipse(2.0, 2.0, 12.0, 12.0);
        path.addEllipse(5.5, 2.0, 5.0, 12.0);
        addLines(path, {{2.0, 8.0, 14.0, 8.0}});
        break;
    }
    return path;
}

class DrawnIconEngine : public QIconEngine
{
public:
    explicit DrawnIconEngine(Drawing drawing)
        : m_drawing(drawing)
    {
    }

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State) override
    {
        const QPalette::ColorGroup group = mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active;
        const bool isSelected = mode == QIcon::Selected; // on the colour of a chosen menu entry
        const QColor colour =
            QApplication::palette().color(group, isSelected ? QPalette::HighlightedText : QPalette::ButtonText);
        constexpr double width = 1.5;
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->translate(rect.topLeft());
        painter->scale(rect.width() / side, rect.height() / side);
        painter->setPen(QPen(colour, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter->drawPath(linesOf(m_drawing));
        painter->restore();
    }
    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override
    {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return pixmap;
    }
    QIconEngine *clone() const override { return new DrawnIconEngine(m_drawing); }

private:
    const Drawing m_drawing;
};

} // namespace

QIcon drawnIcon(Drawing drawing)
{
    return QIcon(new DrawnIconEngine(drawing));
}

} // namespace Explorer
