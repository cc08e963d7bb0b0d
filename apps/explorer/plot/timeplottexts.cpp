// SPDX-License-Identifier: MIT
// The texts of a TimePlot: the title of the time axis, and what is read at the pointer.
#include "plotmarks.h"
#include "timeplot.h"

#include <SondixQt/errorvalue.h>

#include <QLocale>
#include <QSet>

#include <qwt_plot_legenditem.h>
#include <qwt_scale_map.h>
#include <qwt_scale_widget.h>
#include <qwt_text.h>

#include <algorithm>
#include <cmath>
#include <limits>

using namespace SondixQt;

namespace Explorer {

QString TimePlot::errorText(int key) const
{
    const double value = key == 0 ? std::numeric_limits<double>::quiet_NaN() : -1.0e10 + key;
    QString text = m_errorText ? m_errorText(value) : QString();
    if (!text.isEmpty())
        return text;
    return key == 0 ? tr("no value") : tr("error %1").arg(key);
}

QString TimePlot::valueText(int signal, double value) const
{
    constexpr int digits = 7;
    if (!isMeasured(value))
        return errorText(errorValueKey(value));
    const QString number = QLocale().toString(value, 'g', digits);
    const QString unit = unitOf(signal);
    return unit.isEmpty() ? number : number + QLatin1Char(' ') + unit;
}

/// The title of the time axis, with the texts of the marked error values as far as they fit.
QString TimePlot::timeTitle() const
{
    const TimeFormat format = timeFormat();
    QString title = format.isInFrames ? tr("Frame") : format.clockOffset ? tr("Time of day") : tr("Time in s");
    QSet<int> keys;
    for (const ErrorMark &mark : errorMarks())
        keys.insert(mark.key);
    QStringList texts;
    for (const int key : qAsConst(keys))
        texts << errorText(key);
    texts.sort(); // else their order would change while they move through the window
    texts.removeDuplicates();
    const QFont font = axisTitle(QwtPlot::xBottom).font();
    const int room = axisWidget(QwtPlot::xBottom)->width();
    const QString more = QStringLiteral("\u2026");
    const QString comma = QStringLiteral(" \u00b7 ");
    QString separator = QStringLiteral("    \u25b2 ");
    for (const QString &text : qAsConst(texts)) {
        const QString longer = title + separator + text;
        const QString drawn = text == texts.last() ? longer : longer + comma + more;
        if (QwtText(drawn, QwtText::PlainText).textSize(font).width() > room)
            return title + separator + more;
        title = longer;
        separator = comma;
    }
    return title;
}

QString TimePlot::noteAt(const QPoint &pixel) const
{
    const QwtScaleMap map = canvasMap(QwtPlot::xBottom);
    constexpr int reach = ErrorItem::size;
    QStringList lines;
    for (const GapMark &mark : gapMarks())
        if (pixel.x() >= map.transform(mark.begin) - reach && pixel.x() <= map.transform(mark.end) + reach)
            lines << GapItem::sentence(mark.gap);
    // The marks of a signal are in ascending order; the nearest of each is shown.
    for (int signal = 0; signal < signalCount(); ++signal) {
        const ErrorMark *nearest = nullptr;
        double minDistance = reach + 1.0;
        for (const ErrorMark &mark : errorMarks()) {
            const double distance = std::abs(map.transform(mark.position) - pixel.x());
            if (mark.signal == signal && distance < minDistance) {
                nearest = &mark;
                minDistance = distance;
            }
        }
        if (nearest)
            lines << (nearest->count > 1
                          ? tr("%1: %2 (%3 values)")
                                .arg(nameOf(signal), errorText(nearest->key), QLocale().toString(nearest->count))
                          : tr("%1: %2").arg(nameOf(signal), errorText(nearest->key)));
    }
    return lines.join(QLatin1Char('\n'));
}

QString TimePlot::readingAt(double position) const
{
    const TimeFormat format = timeFormat();
    const QString time = format.longText(position, pixelWidth());
    QStringList lines{format.isInFrames    ? tr("Frame %1").arg(time)
                      : format.clockOffset ? time
                                           : tr("%1 s").arg(time)};
    const bool hasFrame = m_history && !m_history->isEmpty() &&
                          position >= m_history->beginPosition() - pixelWidth() &&
                          position <= endPosition() + pixelWidth();
    const auto frame = hasFrame ? m_history->nearestFrame(position) : std::nullopt;
    const bool isInGap = std::any_of(gapMarks().begin(), gapMarks().end(), [position](const GapMark &mark) {
        return position > mark.begin && position < mark.end;
    });
    if (isInGap) {
        for (const GapMark &mark : gapMarks())
            if (position > mark.begin && position < mark.end)
                lines << GapItem::sentence(mark.gap);
    } else if (frame) {
        for (int signal = 0; signal < signalCount(); ++signal)
            if (isShown(signal))
                lines << tr("%1: %2").arg(nameOf(signal), valueText(signal, m_history->value(signal, *frame)));
    }
    return lines.join(QLatin1Char('\n'));
}

void TimePlot::setPictureLegend(bool visible)
{
    if (!visible) {
        m_pictureLegend.reset();
        return;
    }
    m_pictureLegend = std::make_unique<QwtPlotLegendItem>();
    m_pictureLegend->setAlignment(Qt::AlignTop | Qt::AlignRight);
    m_pictureLegend->setMaxColumns(4);
    m_pictureLegend->setTextPen(palette().color(QPalette::Text));
    QColor background = palette().color(QPalette::Base);
    background.setAlpha(220);
    m_pictureLegend->setBackgroundBrush(background);
    for (const auto &curve : m_curves)
        curve->setItemAttribute(QwtPlotItem::Legend, curve->isVisible());
    m_pictureLegend->attach(this);
    // The legend has the items in the order in which they were attached.
    for (const auto &curve : m_curves) {
        curve->detach();
        curve->attach(this);
    }
}

} // namespace Explorer
