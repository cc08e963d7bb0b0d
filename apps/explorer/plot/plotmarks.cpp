// SPDX-License-Identifier: MIT
#include "plotmarks.h"

#include "explorer/sensor/librarytexts.h"

#include <QLocale>
#include <QPainter>

#include <qwt_scale_map.h>
#include <qwt_text.h>

#include <algorithm>
#include <array>

namespace Explorer {

GapItem::GapItem()
{
    setZ(5.0);
    setItemAttribute(QwtPlotItem::Legend, false);
}

QString GapItem::brief(const SondixQt::DataGap &gap)
{
    return gap.frames ? tr("%1 lost").arg(QLocale().toString(*gap.frames)) : tr("gap");
}

QString GapItem::sentence(const SondixQt::DataGap &gap)
{
    const QString reason = shownGapReason(gap.reason);
    if (!gap.frames)
        return tr("An unknown number of frames is missing: %1").arg(reason);
    return tr("%n frame(s) missing: %1", nullptr, static_cast<int>(std::min<qint64>(*gap.frames, 1 << 30)))
        .arg(reason);
}

void GapItem::draw(QPainter *painter, const QwtScaleMap &xMap, const QwtScaleMap &, const QRectF &canvasRect) const
{
    QColor band = m_palette.color(QPalette::Text);
    band.setAlpha(36);
    QColor textColour = m_palette.color(QPalette::Text);
    textColour.setAlpha(190);
    double textEnd = canvasRect.left();
    for (const GapMark &mark : m_gaps) {
        const double left = std::max(xMap.transform(mark.begin), canvasRect.left());
        const double right = std::min(xMap.transform(mark.end), canvasRect.right());
        // A gap is always seen, however short it is.
        const QRectF rect(left, canvasRect.top(), std::max(1.0, right - left), canvasRect.height());
        painter->fillRect(rect, band);
        // Qwt measures and draws texts so that they have their size on any device.
        QwtText text(brief(mark.gap), QwtText::PlainText);
        text.setColor(textColour);
        const QSizeF size = text.textSize(painter->font());
        const double begin = std::clamp(rect.center().x() - size.width() / 2.0, canvasRect.left(),
                                        std::max(canvasRect.left(), canvasRect.right() - size.width()));
        if (begin < textEnd)
            continue;
        text.draw(painter, QRectF(QPointF(begin, canvasRect.top() + 2.0), size));
        textEnd = begin + size.width() + size.height() / 2.0;
    }
}

ErrorItem::ErrorItem()
{
    setZ(30.0);
    setItemAttribute(QwtPlotItem::Legend, false);
}

void ErrorItem::draw(QPainter *painter, const QwtScaleMap &xMap, const QwtScaleMap &,
                     const QRectF &canvasRect) const
{
    painter->setPen(Qt::NoPen);
    painter->setRenderHint(QPainter::Antialiasing, false);
    const double bottom = canvasRect.bottom();
    double lastX = 0.0;
    int lastSignal = -1;
    for (const ErrorMark &mark : m_marks) {
        const double x = xMap.transform(mark.position);
        // Signals side by side would hide each other: the triangles of each are a little higher.
        const double base = bottom - (mark.signal % 4) * (size + 1);
        if (mark.signal == lastSignal && x - lastX < size)
            continue;
        if (mark.signal != lastSignal)
            painter->setBrush(m_colours ? m_colours(mark.signal) : QColor(Qt::red));
        lastX = x;
        lastSignal = mark.signal;
        const std::array<QPointF, 3> corners = {QPointF(x - size, base), QPointF(x + size, base),
                                                QPointF(x, base - 2.0 * size)};
        painter->drawPolygon(corners.data(), static_cast<int>(corners.size()));
    }
}

} // namespace Explorer
