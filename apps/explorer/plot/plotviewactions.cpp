// SPDX-License-Identifier: MIT
// The actions of a PlotView.
#include "curvesplot.h"
#include "drawnicon.h"
#include "plotcrosshair.h"
#include "plotcursors.h"
#include "plotview.h"
#include "statisticspanel.h"
#include "timeplot.h"

#include <QAction>
#include <QSplitter>

namespace Explorer {

QAction *PlotView::plotAction(const QString &name) const
{
    for (QAction *action : m_actions)
        if (action->objectName() == name)
            return action;
    return nullptr;
}

QAction *PlotView::addPlotAction(const char *name, const QString &text, const QString &toolTip, bool isCheckable)
{
    auto *action = new QAction(text, this);
    action->setObjectName(QLatin1String(name));
    action->setToolTip(toolTip);
    action->setCheckable(isCheckable);
    m_actions << action;
    return action;
}

void PlotView::makeActions()
{
    QAction *follow = addPlotAction("followAction", tr("Follow"), tr("Move with the newest values (End)"), true);
    follow->setChecked(true);
    connect(follow, &QAction::triggered, this, [this](bool checked) {
        if (checked && m_mode == Fixed)
            m_span = window().width();
        setMode(checked ? Follow : Fixed);
        updateWindow();
        redraw();
    });
    QAction *pause =
        addPlotAction("pauseAction", tr("Pause"), tr("Stop drawing; the sensor goes on measuring (Space)"), true);
    connect(pause, &QAction::toggled, this, [this](bool checked) {
        m_plot->setEndFrame(checked && m_history ? std::optional(m_history->endFrame()) : std::nullopt);
        refresh();
    });
    QAction *cursors =
        addPlotAction("cursorsAction", tr("Cursors"), tr("Two lines with the difference between them"), true);
    connect(cursors, &QAction::toggled, this, [this](bool checked) {
        m_cursors->setVisible(checked, window());
        arrangePanels();
    });
    QAction *crosshair = addPlotAction("crosshairAction", tr("Crosshair"), tr("The values at the pointer"), true);
    connect(crosshair, &QAction::toggled, this, [this](bool checked) { m_crosshair->setEnabled(checked); });
    QAction *all = addPlotAction("showAllAction", tr("Show all"), tr("Show everything that is kept (0)"), false);
    connect(all, &QAction::triggered, this, &PlotView::showEverything);
    QAction *in = addPlotAction("zoomInAction", tr("Zoom in"), tr("Show a shorter time (+)"), false);
    connect(in, &QAction::triggered, this, [this] { zoomTime(centre(), zoomFactor); });
    QAction *out = addPlotAction("zoomOutAction", tr("Zoom out"), tr("Show a longer time (-)"), false);
    connect(out, &QAction::triggered, this, [this] { zoomTime(centre(), 1.0 / zoomFactor); });
    QAction *clock = addPlotAction("clockTimeAction", tr("Time of day"),
                                   tr("Write times as the time of day instead of seconds"), true);
    connect(clock, &QAction::toggled, this, &PlotView::redraw);
    const std::pair<const char *, std::pair<QString, QString>> panels[] = {
        {"statisticsAction", {tr("Statistics"), tr("Mean, deviation and extremes of what is visible")}},
        {"histogramAction", {tr("Histogram"), tr("How often the visible values occur")}},
        {"spectrumAction", {tr("Spectrum"), tr("The frequencies in the visible values")}},
    };
    for (const auto &[name, texts] : panels)
        connect(addPlotAction(name, texts.first, texts.second, true), &QAction::toggled, this,
                &PlotView::arrangePanels);
    makeExportAction();
    follow->setIcon(drawnIcon(Drawing::Follow));
    pause->setIcon(drawnIcon(Drawing::Pause));
    cursors->setIcon(drawnIcon(Drawing::Cursors));
    all->setIcon(drawnIcon(Drawing::ShowAll));
}

void PlotView::arrangePanels()
{
    const auto isOn = [this](const char *name) { return plotAction(QLatin1String(name))->isChecked(); };
    const bool hasStatistics = isOn("statisticsAction");
    const bool hasCursors = isOn("cursorsAction");
    m_statistics->setColumnsVisible(hasStatistics, hasCursors);
    m_statistics->setVisible(hasStatistics || hasCursors);
    m_histogram->setVisible(isOn("histogramAction"));
    m_spectrum->setVisible(isOn("spectrumAction"));
    m_analysis->setVisible(isOn("histogramAction") || isOn("spectrumAction"));
    redraw();
}

} // namespace Explorer
