// SPDX-License-Identifier: MIT
#include "plotview.h"

#include "curvesplot.h"
#include "exportbar.h"
#include "frameexport.h"
#include "plotcrosshair.h"
#include "plotcursors.h"
#include "plotnavigator.h"
#include "signallegend.h"
#include "statisticspanel.h"
#include "timeplot.h"

#include <explorer/history/signalhistory.h>
#include <explorer/sensor/diskthread.h>

#include <QAction>
#include <QEvent>
#include <QLabel>
#include <QLocale>
#include <QSplitter>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace Explorer {

namespace {

constexpr int drawInterval = 33;   // ms: up to 30 drawings per second
constexpr int panelInterval = 250; // ms: numbers that change faster cannot be read
constexpr double defaultSpan = 10.0;
constexpr double defaultFrames = 1000.0;

} // namespace

PlotView::PlotView(QWidget *parent)
    : QWidget(parent)
    , m_timer(new QTimer(this))
    , m_plot(new TimePlot)
    , m_legend(new SignalLegend(m_plot))
    , m_statistics(new StatisticsPanel)
    , m_histogram(new CurvesPlot(CurvesPlot::Classes, tr("Histogram")))
    , m_spectrum(new CurvesPlot(CurvesPlot::Amplitudes, tr("Spectrum")))
    , m_analysis(new QSplitter(Qt::Horizontal))
    , m_cursorText(new QLabel)
    , m_hint(new QLabel(m_plot->canvas()))
    , m_crosshair(new PlotCrosshair(m_plot))
    , m_cursors(std::make_unique<PlotCursors>(m_plot))
    , m_navigator(new PlotNavigator(m_plot, m_cursors.get()))
    , m_exportBar(new ExportBar)
    , m_disk(new DiskThread(this))
{
    setObjectName(QStringLiteral("plotView"));
    setAccessibleName(tr("Plot of the measured values"));
    makeActions();
    arrange();
    connectNavigator();
    connect(m_plot, &TimePlot::shownChanged, this, [this](int signal, bool shown) {
        m_chosenSignals[m_plot->nameOf(signal)] = shown;
        updatePanels();
    });
    connect(m_plot, &TimePlot::signalsChanged, this, &PlotView::showChosenSignals);
    connect(m_plot, &TimePlot::coloursChanged, this, [this] { m_cursors->updateColours(); });
    connect(m_histogram, &CurvesPlot::chosenChanged, this, &PlotView::updatePanels);
    connect(m_spectrum, &CurvesPlot::chosenChanged, this, &PlotView::updatePanels);
    m_timer->setInterval(drawInterval);
    m_timer->setTimerType(Qt::PreciseTimer);
    connect(m_timer, &QTimer::timeout, this, &PlotView::tick);
    m_timer->start();
    updateHint();
}

PlotView::~PlotView()
{
    cancelFile();
    // The cursors hold items of the plot.
    m_navigator->disconnect(this);
    m_plot->canvas()->removeEventFilter(m_navigator);
}

void PlotView::arrange()
{
    m_plot->canvas()->setFocusPolicy(Qt::StrongFocus);
    setFocusProxy(m_plot->canvas());
    m_hint->setAlignment(Qt::AlignCenter);
    m_hint->setWordWrap(true);
    m_hint->setAttribute(Qt::WA_TransparentForMouseEvents);
    auto *canvasLayout = new QVBoxLayout(m_plot->canvas());
    canvasLayout->addWidget(m_hint);
    m_cursorText->setObjectName(QStringLiteral("cursorText"));
    m_cursorText->setAccessibleName(tr("Cursors"));
    m_cursorText->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_cursorText->setContentsMargins(6, 2, 6, 2);
    m_cursorText->setWordWrap(true);
    m_cursorText->setVisible(false);
    m_analysis->addWidget(m_histogram);
    m_analysis->addWidget(m_spectrum);
    m_analysis->setChildrenCollapsible(false);
    m_analysis->setStretchFactor(0, 1);
    m_analysis->setStretchFactor(1, 1);
    auto *splitter = new QSplitter(Qt::Vertical);
    splitter->addWidget(m_plot);
    splitter->addWidget(m_analysis);
    splitter->setChildrenCollapsible(false);
    splitter->setStretchFactor(0, 3);
    splitter->setStretchFactor(1, 2);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_legend);
    layout->addWidget(m_cursorText);
    layout->addWidget(splitter, 1);
    layout->addWidget(m_statistics);
    layout->addWidget(m_exportBar);
    for (QWidget *panel : {static_cast<QWidget *>(m_histogram), static_cast<QWidget *>(m_spectrum),
                           static_cast<QWidget *>(m_analysis), static_cast<QWidget *>(m_statistics)})
        panel->setVisible(false);
}

// Histogram and spectrum stand one below the other where there is no room for both.
void PlotView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    constexpr int minCharacters = 60;
    const bool isNarrow = width() < minCharacters * fontMetrics().averageCharWidth();
    m_analysis->setOrientation(isNarrow ? Qt::Vertical : Qt::Horizontal);
}

int PlotView::heightForWidth(int width) const
{
    return layout()->minimumHeightForWidth(width);
}

void PlotView::setHistory(SignalHistory *history)
{
    abandonExport(tr("The export has ended: other values are shown."));
    m_history = history;
    m_span.reset();
    m_revision = -1;
    m_plot->setHistory(history);
    setMode(Follow);
    refresh();
}

void PlotView::setErrorText(std::function<QString(double)> text)
{
    m_errorText = text;
    m_plot->setErrorText(std::move(text));
}

void PlotView::setWallClockOffset(std::optional<double> seconds)
{
    m_wallClockOffset = seconds;
    redraw();
}

bool PlotView::isPaused() const
{
    return plotAction(QStringLiteral("pauseAction"))->isChecked();
}

TimeWindow PlotView::window() const
{
    return m_plot->window();
}

void PlotView::setMode(Mode mode)
{
    plotAction(QStringLiteral("followAction"))->setChecked(mode == Follow);
    if (m_mode == mode)
        return;
    m_mode = mode;
    Q_EMIT modeChanged();
}

void PlotView::setWindow(const TimeWindow &window)
{
    setMode(Fixed);
    m_plot->setWindow(window);
    redraw();
}

void PlotView::setSpan(double span)
{
    m_span = std::max(span, narrowest());
    setMode(Follow);
    updateWindow();
    redraw();
}

void PlotView::showEverything()
{
    m_plot->clearValueRanges();
    setMode(Everything);
    updateWindow();
    redraw();
}

TimeWindow PlotView::limits() const
{
    if (!m_history || m_history->isEmpty())
        return {0.0, defaultSpan};
    const double begin = m_history->beginPosition();
    return {begin, std::max(m_plot->endPosition(), begin + narrowest())};
}

// A few frames.
double PlotView::narrowest() const
{
    constexpr double fewFrames = 4.0;
    if (m_plot->timeFormat().isInFrames)
        return fewFrames;
    const double rate = m_history ? m_history->frame().datarate : 0.0;
    return rate > 0.0 ? fewFrames / rate : 1.0e-5;
}

void PlotView::updateWindow()
{
    const TimeWindow all = limits();
    if (m_mode == Everything) {
        m_plot->setWindow(all);
    } else if (m_mode == Follow) {
        const double rate = m_plot->timeFormat().isInFrames ? m_history->frame().datarate : 1.0;
        double span = rate > 0.0 ? defaultSpan * rate : defaultFrames;
        if (m_span)
            span = *m_span;
        else if (const auto &restored = m_plot->timeFormat().isInFrames ? m_restoredFrames : m_restoredSeconds)
            span = std::max(*restored, narrowest());
        // At first the curves grow to the right, then they move to the left.
        const double from = std::max(all.from, all.to - span);
        m_plot->setWindow({from, from + span});
    }
}

void PlotView::tick()
{
    if (!m_history || !isVisible())
        return;
    if (m_history->revision() != m_revision && !isPaused())
        refresh();
    else if (m_arePanelsStale && m_sincePanels.hasExpired(panelInterval))
        updatePanels();
}

void PlotView::refresh()
{
    if (m_history && !isPaused()) {
        m_revision = m_history->revision();
        updateWindow();
    }
    updateClock();
    m_plot->load();
    updateHint();
    m_arePanelsStale = true;
    if (!m_sincePanels.isValid() || m_sincePanels.hasExpired(panelInterval))
        updatePanels();
}

// After something that the user has changed: at once, also if the view is paused.
void PlotView::redraw()
{
    updateClock();
    m_plot->load();
    updateHint();
    updatePanels();
}

// The relation of the clocks is followed: what is less than a jitter must not move the labels.
void PlotView::updateClock()
{
    constexpr double jitter = 0.05;
    std::optional<double> offset = m_wallClockOffset;
    if (!offset && m_history)
        offset = m_history->timeLine().wallClockOffset();
    if (!offset || !m_shownOffset || std::abs(*offset - *m_shownOffset) > jitter)
        m_shownOffset = offset;
    QAction *clock = plotAction(QStringLiteral("clockTimeAction"));
    clock->setEnabled(m_shownOffset.has_value());
    m_plot->setClockOffset(clock->isChecked() ? m_shownOffset : std::nullopt);
}

void PlotView::updateHint()
{
    QString hint;
    if (!m_history || m_history->isEmpty())
        hint = tr("No values yet");
    else if (m_plot->shownFrames().isEmpty())
        hint = tr("No values in this range. Press 0 to show everything.");
    m_hint->setText(hint);
    m_hint->setVisible(!hint.isEmpty());
}

void PlotView::updatePanels()
{
    m_sincePanels.start();
    m_arePanelsStale = false;
    const bool hasCursors = plotAction(QStringLiteral("cursorsAction"))->isChecked();
    m_cursorText->setVisible(hasCursors);
    if (hasCursors)
        m_cursorText->setText(m_cursors->summary());
    if (!m_statistics->isHidden())
        updateStatistics();
    if (!m_histogram->isHidden())
        updateHistogram();
    if (!m_spectrum->isHidden())
        updateSpectrum();
}

void PlotView::updateStatistics()
{
    const FrameRange range = m_plot->shownFrames();
    QVector<SignalStatistics> rows;
    for (int signal = 0; m_history && signal < m_plot->signalCount(); ++signal) {
        if (!m_plot->isShown(signal))
            continue;
        SignalStatistics row;
        row.name = m_plot->nameOf(signal);
        row.unit = m_plot->unitOf(signal);
        row.colour = m_plot->colourOf(signal);
        row.moments = m_history->moments(signal, range);
        row.atA = m_cursors->value(0, signal);
        row.atB = m_cursors->value(1, signal);
        row.textOfA = row.atA ? m_plot->valueText(signal, *row.atA) : QStringLiteral("–");
        row.textOfB = row.atB ? m_plot->valueText(signal, *row.atB) : QStringLiteral("–");
        rows << row;
    }
    m_statistics->setRows(rows);
    QString summary = tr("%1 frames").arg(QLocale().toString(range.count()));
    if (const auto rate = m_history ? m_history->rate(range) : std::nullopt)
        summary += QStringLiteral("   ") + tr("%1 frames per second").arg(QLocale().toString(*rate, 'g', 7));
    if (const qint64 missing = m_history ? m_history->missingFrames(range) : 0; missing > 0)
        summary += QStringLiteral("   ") + tr("%1 missing").arg(QLocale().toString(missing));
    m_statistics->setSummary(summary);
}

/// Lets the user choose among the signals that are shown, and returns them.
QVector<int> PlotView::offerShownSignals(CurvesPlot &plot) const
{
    QVector<int> numbers;
    QStringList names;
    for (int signal = 0; signal < m_plot->signalCount(); ++signal)
        if (m_plot->isShown(signal)) {
            numbers << signal;
            names << m_plot->nameOf(signal);
        }
    plot.setSignals(numbers, names);
    return numbers;
}

void PlotView::updateHistogram()
{
    constexpr int classes = 100;
    offerShownSignals(*m_histogram);
    const int signal = m_histogram->chosen();
    const FrameRange range = m_plot->shownFrames();
    if (!m_history || signal < 0 || range.isEmpty()) {
        m_histogram->setCurves({});
        m_histogram->setNote(tr("No values"));
        return;
    }
    const Histogram histogram = m_history->histogram(signal, range, classes);
    CurvesPlot::Curve curve{m_plot->colourOf(signal), {}};
    const double width = (histogram.maximum - histogram.minimum) / classes;
    for (std::size_t i = 0; i < histogram.counts.size(); ++i)
        curve.points << QPointF(histogram.minimum + width * static_cast<double>(i),
                                static_cast<double>(histogram.counts[i]));
    if (!curve.points.isEmpty())
        curve.points << QPointF(histogram.maximum, curve.points.last().y());
    m_histogram->setAxisTitles(m_plot->unitOf(signal), tr("Values"));
    m_histogram->setNote(
        histogram.counted < histogram.available
            ? tr("A sample of %1 of %2 values")
                  .arg(QLocale().toString(histogram.counted), QLocale().toString(histogram.available))
            : tr("%1 values").arg(QLocale().toString(histogram.counted)));
    m_histogram->setCurves({curve});
}

void PlotView::updateSpectrum()
{
    const auto reason = [](Spectrum::Problem problem) {
        switch (problem) {
        case Spectrum::NoRate:
            return tr("No spectrum: the time between the values is not known");
        case Spectrum::TooShort:
            return tr("No spectrum: too few values");
        case Spectrum::HasGap:
            return tr("No spectrum: values are missing in this range");
        case Spectrum::HasErrors:
            return tr("No spectrum: there are error values in this range");
        case Spectrum::NoProblem:
            break;
        }
        return QString();
    };
    const QVector<int> numbers = offerShownSignals(*m_spectrum);
    const int chosen = m_spectrum->chosen();
    QVector<CurvesPlot::Curve> curves;
    QString note;
    for (const int signal : numbers) {
        if (!m_history || (chosen >= 0 && signal != chosen))
            continue;
        const Spectrum spectrum = m_history->spectrum(signal, m_plot->shownFrames());
        if (spectrum.problem != Spectrum::NoProblem) {
            note = tr("%1: %2").arg(m_plot->nameOf(signal), reason(spectrum.problem));
            continue;
        }
        CurvesPlot::Curve curve{m_plot->colourOf(signal), {}};
        // Without the mean, and without zeros, which a logarithmic axis does not have.
        const double floor = 1.0e-6 * *std::max_element(spectrum.amplitudes.begin(), spectrum.amplitudes.end());
        for (std::size_t i = 1; i < spectrum.amplitudes.size(); ++i)
            curve.points << QPointF(spectrum.step * static_cast<double>(i),
                                    std::max({spectrum.amplitudes[i], floor, 1.0e-100}));
        curves << curve;
        if (note.isEmpty())
            note = tr("%1 values, %2 Hz per line")
                       .arg(QLocale().toString(static_cast<qint64>(spectrum.amplitudes.size() - 1) * 2),
                            QLocale().toString(spectrum.step, 'g', 4));
    }
    m_spectrum->setAxisTitles(tr("Frequency in Hz"), chosen >= 0 ? m_plot->unitOf(chosen) : tr("Amplitude"));
    m_spectrum->setNote(note);
    m_spectrum->setCurves(curves);
}

} // namespace Explorer
