// SPDX-License-Identifier: MIT
#include "numbersview.h"

#include "numbertile.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QGridLayout>
#include <QMenu>
#include <QResizeEvent>
#include <QSettings>

#include <algorithm>
#include <cmath>

using namespace SondixQt;

namespace Explorer {

namespace {

constexpr int drawInterval = 100;
const QLatin1String limitsArray("limits");

QVariant stored(const std::optional<double> &value)
{
    return value ? QVariant(exactNumber(*value)) : QVariant(QString());
}

std::optional<double> storedNumber(const QVariant &value)
{
    bool isNumber = false;
    const double number = value.toString().toDouble(&isNumber);
    return isNumber && std::isfinite(number) ? std::optional<double>(number) : std::nullopt;
}

} // namespace

NumbersView::NumbersView(const SignalValues &values, const ErrorText &errorText, QWidget *parent)
    : QWidget(parent)
    , m_values(values)
    , m_errorText(errorText)
    , m_layout(new QGridLayout(this))
{
    setObjectName(QStringLiteral("numbersView"));
    setAccessibleName(tr("Present values"));
    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->setSizeConstraint(QLayout::SetNoConstraint); // in a narrower page the tiles get fewer columns
    connect(&m_timer, &QTimer::timeout, this, [this] {
        if (m_isStale && isVisible())
            draw();
    });
    m_timer.start(drawInterval);
}

void NumbersView::setFrame(const TransmittedDataInfo &frame)
{
    qDeleteAll(m_tiles);
    m_tiles.clear();
    for (const SignalInfo &info : frame.signalList()) {
        auto *const tile = new NumberTile(info, this);
        tile->setLimits(m_limits.value(info.scaledName));
        connect(tile, &NumberTile::limitsChanged, this,
                [this, tile] { m_limits[tile->info().scaledName] = tile->limits(); });
        connect(tile, &NumberTile::resetRequested, this, &NumbersView::resetRequested);
        m_tiles.append(tile);
    }
    arrange();
    draw();
}

void NumbersView::setPresent(bool present)
{
    if (m_arePresent == present)
        return;
    m_arePresent = present;
    draw();
}

// As many columns as give the largest digits.
void NumbersView::arrange()
{
    constexpr double widthOfValue = 6.5; // of a value with its unit, in heights of its digits
    const int count = m_tiles.size();
    const QSize minimum = minimumSizeHint();      // of a tile
    const int lines = 3 * fontMetrics().height(); // above and below the digits
    int best = 1;
    double bestSize = -HUGE_VAL;
    for (int columns = 1; columns <= count; ++columns) {
        // One below the other only if there is room for it.
        const int rowsBefore = columns > 1 ? (count + columns - 2) / (columns - 1) : 0;
        if (columns > 1 && width() / columns < minimum.width() && height() / rowsBefore >= minimum.height())
            break;
        const int rows = (count + columns - 1) / columns;
        const double byHeight = static_cast<double>(height()) / rows - lines;
        const double byWidth = static_cast<double>(width()) / columns / widthOfValue;
        if (const double size = std::min(byHeight, byWidth); size >= bestSize) {
            best = columns;
            bestSize = size;
        }
    }
    for (int i = 0; i < count; ++i) {
        m_layout->removeWidget(m_tiles.at(i));
        m_layout->addWidget(m_tiles.at(i), i / best, i % best);
    }
}

QSize NumbersView::minimumSizeHint() const
{
    return m_tiles.isEmpty() ? QSize() : m_tiles.first()->minimumSizeHint();
}

void NumbersView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    arrange();
}

void NumbersView::draw()
{
    m_isStale = false;
    for (int i = 0; i < m_tiles.size() && i < m_values.count(); ++i) {
        SignalValue value = m_values.at(i);
        if (!m_arePresent)
            value.present.reset();
        m_tiles.at(i)->setValue(value, value.isError() ? m_errorText(*value.present) : QString());
    }
}

void NumbersView::copy() const
{
    QStringList lines;
    for (const NumberTile *tile : m_tiles)
        lines += tile->exactText();
    QApplication::clipboard()->setText(lines.join(QLatin1Char('\n')));
}

void NumbersView::setZero()
{
    for (NumberTile *tile : qAsConst(m_tiles))
        tile->setZero();
}

void NumbersView::clearZero()
{
    for (NumberTile *tile : qAsConst(m_tiles)) {
        DisplayLimits limits = tile->limits();
        limits.offset = 0.0;
        tile->setLimits(limits);
        m_limits[tile->info().scaledName] = limits;
    }
}

void NumbersView::contextMenuEvent(QContextMenuEvent *event)
{
    QMenu menu;
    menu.addAction(tr("Copy values"), this, &NumbersView::copy);
    menu.addAction(tr("Zero here"), this, &NumbersView::setZero);
    menu.addAction(tr("Without zero"), this, &NumbersView::clearZero);
    menu.addAction(tr("Reset minimum and maximum"), this, &NumbersView::resetRequested);
    menu.exec(event->globalPos());
}

void NumbersView::save(QSettings &settings) const
{
    settings.remove(limitsArray);
    settings.beginWriteArray(limitsArray);
    int index = 0;
    for (auto it = m_limits.cbegin(); it != m_limits.cend(); ++it) {
        if (!it->lower && !it->upper)
            continue;
        settings.setArrayIndex(index++);
        settings.setValue(QStringLiteral("signal"), it.key());
        settings.setValue(QStringLiteral("lower"), stored(it->lower));
        settings.setValue(QStringLiteral("upper"), stored(it->upper));
    }
    settings.endArray();
}

void NumbersView::restore(QSettings &settings)
{
    const int count = settings.beginReadArray(limitsArray);
    for (int i = 0; i < count; ++i) {
        settings.setArrayIndex(i);
        DisplayLimits limits;
        limits.lower = storedNumber(settings.value(QStringLiteral("lower")));
        limits.upper = storedNumber(settings.value(QStringLiteral("upper")));
        m_limits[settings.value(QStringLiteral("signal")).toString()] = limits;
    }
    settings.endArray();
    for (NumberTile *tile : qAsConst(m_tiles))
        tile->setLimits(m_limits.value(tile->info().scaledName));
}

} // namespace Explorer
