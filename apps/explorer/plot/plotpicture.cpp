// SPDX-License-Identifier: MIT
#include "plotpicture.h"

#include "explorer/sensor/englishtexts.h"

#include "timeplot.h"

#include <shared/outputfile.h>

#include <QBuffer>
#include <QFileInfo>
#include <QImage>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#ifdef SONDIXQT_WITH_SVG
#    include <QSvgGenerator>
#endif

#include <qwt_plot_renderer.h>

namespace Explorer {

namespace {

constexpr qreal pictureScale = 2.0;

QPalette printPalette()
{
    QPalette palette(Qt::white);
    palette.setColor(QPalette::Base, Qt::white);
    for (const QPalette::ColorRole role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText})
        palette.setColor(role, Qt::black);
    return palette;
}

void paint(TimePlot &plot, QPaintDevice &device, const QRectF &rect)
{
    QwtPlotRenderer renderer;
    renderer.setDiscardFlag(QwtPlotRenderer::DiscardLegend);
    renderer.setDiscardFlag(QwtPlotRenderer::DiscardBackground);
    QPainter painter(&device);
    renderer.render(&plot, &painter, rect);
}

QByteArray pngOf(TimePlot &plot)
{
    QImage image(plot.size() * pictureScale, QImage::Format_RGB32);
    image.fill(plot.palette().color(QPalette::Window));
    image.setDotsPerMeterX(qRound(plot.logicalDpiX() * pictureScale / 0.0254));
    image.setDotsPerMeterY(qRound(plot.logicalDpiY() * pictureScale / 0.0254));
    paint(plot, image, QRectF(QPointF(), QSizeF(image.size())));
    QBuffer buffer;
    return buffer.open(QIODevice::WriteOnly) && image.save(&buffer, "PNG") ? buffer.data() : QByteArray();
}

QByteArray pdfOf(TimePlot &plot)
{
    constexpr int pointsPerInch = 72;
    QBuffer buffer;
    if (!buffer.open(QIODevice::WriteOnly))
        return {};
    QPdfWriter writer(&buffer);
    writer.setResolution(pointsPerInch * 4);
    const QSizeF inches(plot.width() / qreal(plot.logicalDpiX()), plot.height() / qreal(plot.logicalDpiY()));
    writer.setPageSize(QPageSize(inches * pointsPerInch, QPageSize::Point));
    writer.setPageMargins(QMarginsF());
    writer.setTitle(plot.accessibleName());
    paint(plot, writer, QRectF(0, 0, writer.width(), writer.height()));
    return buffer.data();
}

#ifdef SONDIXQT_WITH_SVG
QByteArray svgOf(TimePlot &plot)
{
    QBuffer buffer;
    if (!buffer.open(QIODevice::WriteOnly))
        return {};
    QSvgGenerator generator;
    generator.setOutputDevice(&buffer);
    generator.setResolution(plot.logicalDpiX());
    generator.setSize(plot.size());
    generator.setViewBox(plot.rect());
    generator.setTitle(plot.accessibleName());
    paint(plot, generator, QRectF(plot.rect()));
    return buffer.data();
}
#endif

} // namespace

QStringList PlotPicture::suffixes()
{
    QStringList suffixes{QStringLiteral("png"), QStringLiteral("pdf")};
#ifdef SONDIXQT_WITH_SVG
    suffixes << QStringLiteral("svg");
#endif
    return suffixes;
}

QByteArray PlotPicture::draw(TimePlot &plot, const QString &path)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    const bool isDocument = suffix != QLatin1String("png");
    if (isDocument)
        plot.setPalette(printPalette());
    plot.setPictureLegend(true);
    QByteArray content;
    if (suffix == QLatin1String("png"))
        content = pngOf(plot);
    else if (suffix == QLatin1String("pdf"))
        content = pdfOf(plot);
#ifdef SONDIXQT_WITH_SVG
    else if (suffix == QLatin1String("svg"))
        content = svgOf(plot);
#endif
    plot.setPictureLegend(false);
    if (isDocument)
        plot.setPalette(QPalette());
    return content;
}

QString PlotPicture::write(const QString &path, const QByteArray &content)
{
    // Not a QSaveFile: as root that would replace a device by a file.
    SondixApp::OutputFile file(path);
    if (!content.isEmpty() && file.open()) {
        if (file.write(content) && file.commit())
            return {};
        file.discard();
    }
    return tr("cannot write '%1': %2")
        .arg(path, content.isEmpty() ? tr("the picture is too large") : shownText(file.errorString()));
}

} // namespace Explorer
