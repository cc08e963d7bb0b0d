// SPDX-License-Identifier: MIT
// What a PlotView remembers.
#include "plotview.h"
#include "timeplot.h"

#include <QAction>
#include <QSettings>
#include <QStringList>

#include <cmath>

namespace Explorer {

namespace {

const QLatin1String spanKey("span");
const QLatin1String framesKey("spanInFrames");
const QLatin1String everythingKey("showsEverything");
const QLatin1String shownKey("shownSignals");
const QLatin1String hiddenKey("hiddenSignals");

// The cursors are left out: they belong to values that are gone.
const QStringList &rememberedActions()
{
    static const QStringList names{QStringLiteral("statisticsAction"), QStringLiteral("histogramAction"),
                                   QStringLiteral("spectrumAction"), QStringLiteral("crosshairAction"),
                                   QStringLiteral("clockTimeAction")};
    return names;
}

std::optional<double> spanIn(const QSettings &settings, QLatin1String key)
{
    bool isNumber = false;
    const double span = settings.value(key).toDouble(&isNumber);
    return isNumber && std::isfinite(span) && span > 0.0 ? std::optional(span) : std::nullopt;
}

void saveSpan(QSettings &settings, QLatin1String key, const std::optional<double> &span)
{
    if (span)
        settings.setValue(key, *span);
    else
        settings.remove(key);
}

} // namespace

void PlotView::savePanels(QSettings &settings) const
{
    for (const QString &name : rememberedActions())
        settings.setValue(name, plotAction(name)->isChecked());
}

void PlotView::restorePanels(const QSettings &settings)
{
    for (const QString &name : rememberedActions()) {
        QAction *const action = plotAction(name);
        action->setChecked(settings.value(name, action->isChecked()).toBool());
    }
}

void PlotView::saveView(QSettings &settings) const
{
    const bool isInFrames = m_plot->timeFormat().isInFrames;
    const std::optional<double> present = m_mode == Fixed ? window().width() : m_span;
    saveSpan(settings, spanKey, present && !isInFrames ? present : m_restoredSeconds);
    saveSpan(settings, framesKey, present && isInFrames ? present : m_restoredFrames);
    settings.setValue(everythingKey, m_mode == Everything);
    QStringList shown;
    QStringList hidden;
    for (auto it = m_chosenSignals.cbegin(); it != m_chosenSignals.cend(); ++it)
        (*it ? shown : hidden) += it.key();
    settings.setValue(shownKey, shown);
    settings.setValue(hiddenKey, hidden);
}

void PlotView::restoreView(const QSettings &settings)
{
    m_restoredSeconds = spanIn(settings, spanKey);
    m_restoredFrames = spanIn(settings, framesKey);
    if (settings.value(everythingKey).toBool())
        setMode(Everything);
    m_chosenSignals.clear();
    for (const QString &name : settings.value(shownKey).toStringList())
        m_chosenSignals.insert(name, true);
    for (const QString &name : settings.value(hiddenKey).toStringList())
        m_chosenSignals.insert(name, false);
    showChosenSignals();
}

void PlotView::showChosenSignals()
{
    for (int signal = 0; signal < m_plot->signalCount(); ++signal) {
        const auto chosen = m_chosenSignals.constFind(m_plot->nameOf(signal));
        if (chosen != m_chosenSignals.constEnd())
            m_plot->setShown(signal, *chosen);
    }
}

} // namespace Explorer
