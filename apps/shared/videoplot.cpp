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

constexpr int plotWidth = 1024;
constexpr int plotHeight = 320;
constexpr int leftMargin = 64;
constexpr int topMargin = 56;
constexpr int rightMargin = 28;
constexpr int bottomMargin = 48;
constexpr int fontPixels = 13;
constexpr int fields = 8;

const QColor textColour(64, 64, 64);

void drawGrid(QPainter &painter, const QRectF &area)
{
    for (int i = 0; i <= fields; ++i) {
        const bool outer = i == 0 || i == fields;
        painter.setPen(QPen(outer ? QColor(96, 96, 96) : QColor(222, 222, 222), 1.0));
        const qreal x = area.left() + area.width() * i / fields;
        const qreal y = area.top() + area.height() * i / fields;
        painter.drawLine(QPointF(x, area.top()), QPointF(x, area.bottom()));
        painter.drawLine(QPointF(area.left(), y), QPointF(area.right(), y));
    }
}

void drawNumbers(QPainter &painter, const QRectF &area, int lastPixel, int full)
{
    constexpr qreal gap = 6.0;
    constexpr qreal room = 56.0;
    painter.setPen(textColour);
    for (int i = 0; i <= fields; ++i) {
        const qreal x = area.left() + area.width() * i / fields;
        const qreal y = area.bottom() - area.height() * i / fields;
        painter.drawText(QRectF(x - room / 2, area.bottom() + gap, room, fontPixels + gap),
                         Qt::AlignHCenter | Qt::AlignTop, QString::number(qRound(double(lastPixel) * i / fields)));
        painter.drawText(QRectF(area.left() - gap - room, y - fontPixels, room, 2 * fontPixels),
                         Qt::AlignRight | Qt::AlignVCenter, QString::number(qRound(double(full) * i / fields)));
    }
    painter.drawText(QRectF(area.left(), area.bottom() + gap + fontPixels, area.width(), 2 * fontPixels),
                     Qt::AlignHCenter | Qt::AlignVCenter, QStringLiteral("pixel"));
}

void drawTexts(QPainter &painter, const QRectF &area, const VideoTexts &texts)
{
    const QRectF upper(area.left(), 8.0, area.width(), 20.0);
    const QRectF lower = upper.translated(0.0, 20.0);
    QFont bold = painter.font();
    bold.setBold(true);
    const QFont plain = painter.font();
    painter.setPen(textColour);
    painter.drawText(lower, Qt::AlignLeft | Qt::AlignVCenter, texts.sensor);
    painter.drawText(lower, Qt::AlignRight | Qt::AlignVCenter, texts.time);
    painter.setFont(bold);
    painter.drawText(upper, Qt::AlignLeft | Qt::AlignVCenter, texts.title);
    if (texts.simulated) {
        painter.setPen(QColor(176, 64, 0));
        painter.drawText(upper, Qt::AlignRight | Qt::AlignVCenter, QStringLiteral("simulated"));
    }
    painter.setFont(plain);
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

QRect videoPlotArea()
{
    return {leftMargin, topMargin, plotWidth, plotHeight};
}

QImage videoPicture(const QVector<int> &pixels, int resolution, const VideoTexts &texts)
{
    const QRectF area = QRectF(videoPlotArea()).translated(0.5, 0.5);
    QImage picture(leftMargin + plotWidth + rightMargin + 1, topMargin + plotHeight + bottomMargin + 1,
                   QImage::Format_RGB32);
    picture.fill(Qt::white);

    QPainter painter(&picture);
    QFont font(QStringLiteral("sans-serif"));
    font.setPixelSize(fontPixels);
    painter.setFont(font);
    drawGrid(painter, area);
    drawNumbers(painter, area, pixels.size() - 1, fullScale(pixels, resolution));
    drawTexts(painter, area, texts);
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

QByteArray videoCsv(const QVector<int> &pixels, const VideoTexts &texts)
{
    QByteArray csv;
    for (const QString &text : {texts.title, texts.sensor, texts.time})
        csv += "# " + text.toUtf8() + '\n';
    if (texts.simulated)
        csv += "# simulated\n";
    csv += "pixel,value\n";
    for (int i = 0; i < pixels.size(); ++i)
        csv += QByteArray::number(i) + ',' + QByteArray::number(pixels[i]) + '\n';
    return csv;
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
