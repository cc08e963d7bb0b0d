// SPDX-License-Identifier: MIT
#include "videoplot.h"

#include <QPainter>
#include <QPolygonF>
#include <QtEndian>

#include <algorithm>

namespace SondixApp {

namespace {

constexpr int pixelBytes = 2;

int fullScale(const QVector<int> &pixels, int resolution)
{
    return std::max({1, resolution - 1, *std::max_element(pixels.cbegin(), pixels.cend())});
}

void drawGrid(QPainter &painter, const QRectF &area)
{
    constexpr int fields = 8;
    for (int i = 0; i <= fields; ++i) {
        const bool outer = i == 0 || i == fields;
        painter.setPen(QPen(outer ? QColor(96, 96, 96) : QColor(222, 222, 222), 1.0));
        const qreal x = area.left() + area.width() * i / fields;
        const qreal y = area.top() + area.height() * i / fields;
        painter.drawLine(QPointF(x, area.top()), QPointF(x, area.bottom()));
        painter.drawLine(QPointF(area.left(), y), QPointF(area.right(), y));
    }
}

} // namespace

std::optional<QVector<int>> videoPixels(const QByteArray &data)
{
    if (data.isEmpty() || data.size() % pixelBytes != 0)
        return std::nullopt;
    QVector<int> pixels(data.size() / pixelBytes);
    const char *next = data.constData();
    for (int &pixel : pixels) {
        pixel = qFromLittleEndian<quint16>(next);
        next += pixelBytes;
    }
    return pixels;
}

QImage videoPicture(const QVector<int> &pixels, int resolution)
{
    constexpr int margin = 12;
    constexpr int width = 1024;
    constexpr int height = 320;
    const QRectF area(margin + 0.5, margin + 0.5, width, height);
    QImage picture(width + 2 * margin + 1, height + 2 * margin + 1, QImage::Format_RGB32);
    picture.fill(Qt::white);

    QPainter painter(&picture);
    drawGrid(painter, area);
    const qreal step = area.width() / std::max(1, pixels.size() - 1);
    const qreal scale = area.height() / fullScale(pixels, resolution);
    QPolygonF curve;
    curve.reserve(pixels.size());
    for (int i = 0; i < pixels.size(); ++i)
        curve.append({area.left() + i * step, area.bottom() - pixels[i] * scale});
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(0, 92, 168), 1.5));
    if (curve.size() == 1)
        painter.drawPoint(curve.first());
    else
        painter.drawPolyline(curve);
    return picture;
}

QStringList videoText(const QVector<int> &pixels, int resolution, int columns, int rows)
{
    const int full = fullScale(pixels, resolution);
    const int width = std::min(columns, pixels.size());
    QVector<int> heights(width);
    for (int column = 0; column < width; ++column) {
        const auto first = pixels.cbegin() + int(qint64(column) * pixels.size() / width);
        const auto last = pixels.cbegin() + int(qint64(column + 1) * pixels.size() / width);
        heights[column] = int((qint64(*std::max_element(first, last)) * rows + full / 2) / full);
    }
    const int labelWidth = QString::number(full).size();
    QStringList lines;
    for (int row = rows; row >= 1; --row) {
        QString line =
            (row == rows ? QString::number(full) : QString()).rightJustified(labelWidth) + QStringLiteral(" |");
        for (const int height : qAsConst(heights))
            line += QLatin1Char(height >= row ? '#' : ' ');
        while (line.endsWith(QLatin1Char(' ')))
            line.chop(1);
        lines += line;
    }
    lines +=
        QStringLiteral("0").rightJustified(labelWidth) + QStringLiteral(" +") + QString(width, QLatin1Char('-'));
    const QString last = QString::number(pixels.size() - 1);
    lines += QString(labelWidth + 2, QLatin1Char(' ')) + QLatin1Char('0') +
             (width > last.size() + 1 ? last.rightJustified(width - 1) : QString());
    return lines;
}

} // namespace SondixApp
