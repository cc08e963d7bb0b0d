// SPDX-License-Identifier: MIT
#include "timeplot.h"

#include "plotmarks.h"
#include "signalcolours.h"

#include <QEvent>
#include <QHash>
#include <QLocale>
#include <QSet>

#include <qwt_plot_canvas.h>
#include <qwt_plot_grid.h>
#include <qwt_plot_legenditem.h>
#include <qwt_scale_map.h>
#include <qwt_scale_widget.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

using namespace SondixQt;

namespace Explorer {

namespace {

constexpr int valueAxes[] = {QwtPlot::yLeft, QwtPlot::yRight};

// The values fill at least this part of their axis; it is not scaled again before.
constexpr double minFill = 0.6;
constexpr double scaleMargin = 0.05;

QwtInterval widened(const QwtInterval &values)
{
    const double minHalf = std::max(std::abs(values.maxValue()) * 1.0e-3, 1.0e-9);
    const double centre = values.minValue() / 2.0 + values.maxValue() / 2.0;
    const double half = std::max(minHalf, values.width() * (0.5 + scaleMargin));
    return {centre - half, centre + half};
}

// Ranges of the size of 1e-3 and 2e-3 are more similar than 1e-3 and 1.
double sizeOf(const SignalInfo &info)
{
    const double width = info.scaledRangeMax - info.scaledRangeMin;
    return std::isfinite(width) && width > 0.0 ? std::log10(width) : 0.0;
}

} // namespace

TimePlot::TimePlot(QWidget *parent)
    : BasePlot(parent)
    , m_valueRanges(QwtPlot::axisCnt)
    , m_grid(std::make_unique<QwtPlotGrid>())
    , m_gaps(std::make_unique<GapItem>())
    , m_errors(std::make_unique<ErrorItem>())
    , m_timeDraw(new TimeScaleDraw)
    , m_timeEngine(new TimeScaleEngine)
{
    setObjectName(QStringLiteral("timePlot"));
    setAccessibleName(tr("Measured values over time"));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding); // may be smaller than the size hint
    canvas()->setAccessibleName(tr("Plot"));
    setAxisScaleEngine(QwtPlot::xBottom, m_timeEngine);
    setAxisScaleDraw(QwtPlot::xBottom, m_timeDraw);
    constexpr int edge = 4;
    setContentsMargins(edge, edge, edge, 0);
    m_grid->enableXMin(false);
    m_grid->attach(this);
    m_gaps->attach(this);
    m_errors->attach(this);
    m_errors->setColours([this](int signal) { return colourOf(signal); });
    setColours();
    describe();
}

TimePlot::~TimePlot() = default;

QSize TimePlot::minimumSizeHint() const
{
    return QSize(160, 120);
}

void TimePlot::setHistory(const SignalHistory *history)
{
    m_history = history;
    describe();
}

void TimePlot::describe()
{
    m_frame = m_history ? m_history->frame() : TransmittedDataInfo();
    m_curves.clear();
    const int count = std::min(m_frame.signals.size(), maxSignals);
    const bool hasMajor = std::any_of(m_frame.signals.begin(), m_frame.signals.end(),
                                      [](const SignalInfo &info) { return info.majorSignal; });
    int shown = 0;
    for (int signal = 0; signal < count; ++signal) {
        auto curve = std::make_unique<HistoryCurve>(nameOf(signal));
        const bool isWanted = count <= maxShownAtFirst || !hasMajor || m_frame.signals.at(signal).majorSignal;
        const bool isShownAtFirst = isWanted && shown < maxShownAtFirst;
        shown += isShownAtFirst ? 1 : 0;
        curve->setVisible(isShownAtFirst);
        curve->stack(0.0, signal);
        curve->attach(this);
        m_curves.push_back(std::move(curve));
    }
    m_shownFrames = {};
    m_endFrame.reset();
    clearValueRanges();
    assignAxes();
    setColours();
    Q_EMIT signalsChanged();
}

bool TimePlot::assignAxes()
{
    std::vector<int> signals(static_cast<std::size_t>(signalCount()));
    std::iota(signals.begin(), signals.end(), 0);
    QSet<QString> units;
    for (const int signal : signals)
        units.insert(unitOf(signal));
    if (units.size() > 2) // with two, each unit keeps its axis
        std::stable_partition(signals.begin(), signals.end(), [this](int signal) { return isShown(signal); });

    bool isChanged = false;
    QHash<QString, std::size_t> sides; // by unit
    QStringList titles[2];
    double sizes[2] = {0.0, 0.0};
    for (const int signal : signals) {
        const QString unit = unitOf(signal);
        const double size = sizeOf(m_frame.signals.at(signal));
        if (!sides.contains(unit)) {
            const bool isFirst = sides.size() < 2;
            const std::size_t nearest = std::abs(size - sizes[1]) < std::abs(size - sizes[0]) ? 1 : 0;
            const std::size_t side = isFirst ? static_cast<std::size_t>(sides.size()) : nearest;
            if (isFirst)
                sizes[side] = size;
            sides.insert(unit, side);
        }
        const std::size_t side = sides.value(unit);
        if (!titles[side].contains(unit) && (titles[side].isEmpty() || isShown(signal)))
            titles[side].append(unit);
        isChanged = isChanged || axisOf(signal) != valueAxes[side];
        m_curves[static_cast<std::size_t>(signal)]->setYAxis(valueAxes[side]);
    }
    for (const std::size_t side : {0U, 1U}) {
        QwtText title = axisTitle(valueAxes[side]);
        title.setText(titles[side].join(QStringLiteral(", ")));
        setAxisTitle(valueAxes[side], title);
    }
    enableAxis(QwtPlot::yRight, !titles[1].isEmpty());
    return isChanged;
}

void TimePlot::changeEvent(QEvent *event)
{
    QwtPlot::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && m_grid)
        setColours();
}

void TimePlot::setColours()
{
    setCanvasBackground(palette().brush(QPalette::Base));
    QColor grid = palette().color(QPalette::Text);
    grid.setAlpha(isDark(palette()) ? 40 : 28);
    m_grid->setPen(grid, 1.0);
    m_gaps->setPalette(palette());
    for (int signal = 0; signal < signalCount(); ++signal)
        m_curves[static_cast<std::size_t>(signal)]->setColour(colourOf(signal));
    Q_EMIT coloursChanged();
    replot();
}

qint64 TimePlot::endFrame() const
{
    return std::min(m_endFrame.value_or(m_history->endFrame()), m_history->endFrame());
}

double TimePlot::endPosition() const
{
    const qint64 last = endFrame() - 1;
    return last < m_history->firstFrame() ? m_history->beginPosition() : m_history->timeLine().position(last);
}

void TimePlot::setClockOffset(std::optional<double> offset)
{
    m_clockOffset = offset;
}

TimeFormat TimePlot::timeFormat() const
{
    TimeFormat format;
    format.isInFrames = m_history && !m_history->isEmpty() && m_history->timeLine().kind() == TimeLine::Frames;
    format.clockOffset = m_clockOffset;
    return format;
}

void TimePlot::setValueRange(int axis, std::optional<QwtInterval> range)
{
    m_valueRanges[static_cast<std::size_t>(axis)] = range;
}

bool TimePlot::hasValueRange() const
{
    return std::any_of(m_valueRanges.begin(), m_valueRanges.end(),
                       [](const auto &range) { return range.has_value(); });
}

void TimePlot::clearValueRanges()
{
    std::fill(m_valueRanges.begin(), m_valueRanges.end(), std::nullopt);
}

void TimePlot::load()
{
    load(std::max(1, canvas()->width()));
}

void TimePlot::load(int columns)
{
    if (m_history && m_history->frame() != m_frame)
        describe();
    std::vector<ErrorMark> errors;
    if (m_history && signalCount() > 0) {
        const PlotColumns grid = PlotColumns::of(*m_history, m_window.from, m_window.to, columns, endFrame());
        m_shownFrames = grid.range();
        constexpr int pixelsPerMark = 8;
        const bool isMarked = grid.range().count() * pixelsPerMark < columns;
        for (int signal = 0; signal < signalCount(); ++signal) {
            HistoryCurve &curve = *m_curves[static_cast<std::size_t>(signal)];
            if (!curve.isVisible())
                continue;
            curve.series().load(*m_history, signal, grid, errors);
            curve.setMarked(isMarked);
        }
    }
    addMarks(std::move(errors));
    const TimeFormat format = timeFormat();
    m_timeDraw->setFormat(format);
    m_timeEngine->setFormat(format);
    QwtText title = axisTitle(QwtPlot::xBottom);
    if (const QString text = timeTitle(); title.text() != text) {
        title.setText(text);
        setAxisTitle(QwtPlot::xBottom, title);
    }
    setAxisScale(QwtPlot::xBottom, m_window.from, m_window.to);
    for (const int axis : valueAxes)
        scaleValues(axis);
    replot(); // updates the axes; the canvas is drawn later
    for (int signal = 0; signal < signalCount(); ++signal) {
        HistoryCurve &curve = *m_curves[static_cast<std::size_t>(signal)];
        if (curve.isVisible())
            curve.stack(axisInterval(curve.yAxis()).width(), signal);
    }
}

void TimePlot::addMarks(std::vector<ErrorMark> errors)
{
    m_errors->setMarks(std::move(errors));
    std::vector<GapMark> gaps;
    if (m_history)
        gaps = m_history->timeLine().gapsBetween(m_window.from, std::min(m_window.to, endPosition()));
    if (!gaps.empty() && gaps.back().index >= endFrame())
        gaps.back().end = gaps.back().begin; // what follows the gap is not shown
    m_gaps->setGaps(std::move(gaps));
}

QwtInterval TimePlot::valuesOn(int axis) const
{
    QwtInterval values;
    for (const auto &curve : m_curves)
        if (curve->isVisible() && curve->yAxis() == axis && curve->series().minimum() <= curve->series().maximum())
            values |= QwtInterval(curve->series().minimum(), curve->series().maximum());
    return values;
}

// The present scale stays as long as it fits, so that the curves do not jump with every value.
void TimePlot::scaleValues(int axis)
{
    if (const auto &fixed = m_valueRanges[static_cast<std::size_t>(axis)]) {
        setAxisScale(axis, fixed->minValue(), fixed->maxValue());
        return;
    }
    const QwtInterval values = valuesOn(axis);
    if (!values.isValid())
        return;
    const QwtInterval present = axisInterval(axis).normalized();
    const QwtInterval wanted = widened(values);
    const bool fits = present.minValue() <= values.minValue() && present.maxValue() >= values.maxValue() &&
                      wanted.width() >= minFill * present.width();
    if (!fits)
        setAxisScale(axis, wanted.minValue(), wanted.maxValue());
}

bool TimePlot::isShown(int signal) const
{
    return signal >= 0 && signal < signalCount() && curve(signal).isVisible();
}

void TimePlot::setShown(int signal, bool shown)
{
    if (signal < 0 || signal >= signalCount() || isShown(signal) == shown)
        return;
    m_curves[static_cast<std::size_t>(signal)]->setVisible(shown);
    const bool axesChange = assignAxes();
    if (axesChange)
        clearValueRanges(); // they were those of other signals
    load();
    Q_EMIT shownChanged(signal, shown);
    if (axesChange)
        Q_EMIT axesChanged();
}

int TimePlot::axisOf(int signal) const
{
    return curve(signal).yAxis();
}

QColor TimePlot::colourOf(int signal) const
{
    return signalColour(signal, palette());
}

QString TimePlot::nameOf(int signal) const
{
    const SignalInfo &info = m_frame.signals.at(signal);
    if (!info.scaledName.isEmpty())
        return info.scaledName;
    return info.rawName.isEmpty() ? tr("Signal %1").arg(signal + 1) : info.rawName;
}

QString TimePlot::unitOf(int signal) const
{
    return m_frame.signals.at(signal).scaledUnit;
}

FrameRange TimePlot::shownFrames() const
{
    return m_shownFrames;
}

const std::vector<ErrorMark> &TimePlot::errorMarks() const
{
    return m_errors->marks();
}

const std::vector<GapMark> &TimePlot::gapMarks() const
{
    return m_gaps->gaps();
}

double TimePlot::positionAt(double pixel) const
{
    return canvasMap(QwtPlot::xBottom).invTransform(pixel);
}

double TimePlot::pixelWidth() const
{
    return m_window.width() / std::max(1, canvas()->width());
}

} // namespace Explorer
