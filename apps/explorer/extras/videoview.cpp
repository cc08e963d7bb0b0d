// SPDX-License-Identifier: MIT
#include "videoview.h"

#include "explorer/plot/baseplot.h"
#include "explorer/plot/flowlayout.h"
#include "explorer/plot/signalcolours.h"

#include <QAction>
#include <QCheckBox>
#include <QEvent>
#include <QLabel>
#include <QLocale>
#include <QToolButton>
#include <QVBoxLayout>

#include <qwt_plot_curve.h>
#include <qwt_plot_grid.h>
#include <qwt_plot_marker.h>
#include <qwt_plot_zoneitem.h>
#include <qwt_text.h>

#include <algorithm>
#include <utility>

using namespace SondixQt;

namespace Explorer {

namespace {

constexpr int lineIntervalMs = 50;
constexpr int retryIntervalMs = 1000;

QString signalText(const QString &name)
{
    return QString(name).remove(QStringLiteral("OutputVideo")).replace(QLatin1Char('_'), QLatin1Char(' '));
}

bool canBeAsked(SensorReader::State state)
{
    return state == SensorReader::Reading || state == SensorReader::WaitingForTrigger;
}

} // namespace

VideoView::VideoView(SensorReader &reader, QWidget *parent)
    : QWidget(parent)
    , m_reader(&reader)
    , m_live(new QAction(tr("Live"), this))
    , m_mode(new QCheckBox(tr("Video mode"), this))
    , m_bar(new QWidget(this))
    , m_message(new QLabel(this))
    , m_plot(new BasePlot(this))
    , m_grid(std::make_unique<QwtPlotGrid>())
    , m_threshold(std::make_unique<QwtPlotMarker>())
    , m_region(std::make_unique<QwtPlotZoneItem>())
{
    m_live->setObjectName(QStringLiteral("liveAction"));
    m_live->setCheckable(true);
    m_live->setChecked(true);
    m_live->setToolTip(tr("Show new lines while this is on"));
    m_mode->setObjectName(QStringLiteral("videoMode"));
    m_mode->setToolTip(tr("Switch the sensor to a mode in which it sends video; some models then send no measured "
                          "values"));
    auto *live = new QToolButton(this);
    live->setDefaultAction(m_live);
    auto *bar = new FlowLayout(m_bar); // pages that stand side by side are narrow
    bar->setContentsMargins(0, 0, 0, 0);
    bar->setKeepsHeight(true);
    bar->addWidget(live);
    bar->addWidget(m_mode);
    m_message->setObjectName(QStringLiteral("message"));
    m_message->setWordWrap(true);
    m_message->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_bar);
    layout->addWidget(m_message);
    layout->addWidget(m_plot, 1);

    setAccessibleName(tr("Video line"));
    m_plot->setAccessibleName(tr("Video line"));
    // Axes and titles keep their room with large fonts.
    m_plot->setMinimumSize(fontMetrics().averageCharWidth() * 26, fontMetrics().height() * 10);
    m_plot->setTitleOf(QwtPlot::xBottom, tr("Pixel"));
    m_plot->setTitleOf(QwtPlot::yLeft, tr("Intensity"));
    m_threshold->setLineStyle(QwtPlotMarker::HLine);
    m_threshold->setLabelAlignment(Qt::AlignRight | Qt::AlignTop);
    m_region->setOrientation(Qt::Vertical);
    for (QwtPlotItem *item : std::initializer_list<QwtPlotItem *>{m_grid.get(), m_threshold.get(), m_region.get()})
        item->attach(m_plot);
    setColours();

    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &VideoView::tick);
    connect(m_live, &QAction::toggled, this, [this] { m_timer.start(0); });
    connect(m_mode, &QCheckBox::clicked, this, [this](bool on) {
        change([on](SensorInstance &instance, VideoState &state) { return setVideoMode(instance, on, state); });
    });
    connect(&reader, &SensorReader::stateChanged, this, [this](SensorReader::State state) {
        m_isKnown = m_isKnown && canBeAsked(state);
        m_timer.start(0);
    });
    showState();
    m_timer.start(0);
}

VideoView::~VideoView()
{
    // The items are members and must leave the plot before it goes.
    m_curves.clear();
    m_region.reset();
    m_threshold.reset();
    m_grid.reset();
}

int VideoView::heightForWidth(int width) const
{
    return layout()->minimumHeightForWidth(width);
}

QString VideoView::message() const
{
    return m_message->text();
}

void VideoView::showMessage(const QString &text)
{
    m_message->setText(text);
    m_message->setVisible(!text.isEmpty());
}

/// Runs \a step with the sensor; what it changes is known afterwards.
void VideoView::run(const Step &step)
{
    if (!m_reader)
        return;
    m_isBusy = true;
    const auto state = std::make_shared<VideoState>(m_state);
    m_reader->call([step, state](SensorInstance &instance) { return step(instance, *state); },
                   SensorReader::MayChange, this,
                   [this, state](const CommandResult &result) { takeState(result, *state); });
}

void VideoView::change(const Step &step)
{
    m_isChange = true;
    run(step);
}

void VideoView::takeState(const CommandResult &result, const VideoState &state)
{
    m_isBusy = false;
    if (result.code == StoppedError) {
        m_isKnown = false;
        return;
    }
    if (result.code == NoError) {
        m_isKnown = true;
        m_state = state;
    }
    if (std::exchange(m_isChange, false))
        Q_EMIT settingsChanged();
    showState();
    if (result.code != NoError)
        showMessage(tr("The sensor refuses: %1").arg(result.errorText));
    m_timer.start(result.code == NoError ? 0 : retryIntervalMs);
}

void VideoView::tick()
{
    if (!m_reader || !isVisible())
        return;
    if (!canBeAsked(m_reader->state())) {
        showMessage(tr("The sensor is not being read."));
        return;
    }
    if (m_isBusy)
        return;
    if (!m_isKnown) {
        run([](SensorInstance &instance, VideoState &state) { return readVideoState(instance, state); });
        return;
    }
    if (!m_live->isChecked() || m_state.answers.isEmpty() || !m_state.isVideoMode || !m_state.isSupported)
        return;
    m_isBusy = true;
    const auto lines = std::make_shared<QVector<QVector<int>>>();
    m_reader->call(
        [lines, names = m_state.answers](SensorInstance &instance) { return fetchVideo(instance, names, *lines); },
        SensorReader::OnlyReads, this, [this, lines](const CommandResult &result) { takeLines(result, *lines); });
}

void VideoView::takeLines(const CommandResult &result, const QVector<QVector<int>> &lines)
{
    m_isBusy = false;
    if (result.code == StoppedError)
        return;
    if (result.code != NoError) {
        showMessage(tr("No video: %1").arg(result.errorText));
        m_isKnown = false; // the sensor may have been switched by somebody else
        m_timer.start(retryIntervalMs);
        return;
    }
    ++m_fetched;
    m_lines = lines;
    showMessage({});
    int longest = std::max(1, m_state.pixels - 1);
    int highest = std::max(1, m_state.resolution - 1);
    for (int i = 0; i < lines.size() && i < static_cast<int>(m_curves.size()); ++i) {
        QVector<QPointF> points;
        points.reserve(lines[i].size());
        for (int pixel = 0; pixel < lines[i].size(); ++pixel) {
            points.append({static_cast<double>(pixel), static_cast<double>(lines[i][pixel])});
            highest = std::max(highest, lines[i][pixel]);
        }
        longest = std::max(longest, lines[i].size() - 1);
        m_curves[static_cast<size_t>(i)]->setSamples(points);
    }
    m_plot->setAxisScale(QwtPlot::xBottom, 0.0, longest);
    m_plot->setAxisScale(QwtPlot::yLeft, 0.0, highest);
    m_plot->replot();
    m_timer.start(lineIntervalMs);
}

void VideoView::showState()
{
    qDeleteAll(m_signals);
    m_signals.clear();
    m_curves.clear();
    for (auto it = m_state.available.cbegin(); it != m_state.available.cend(); ++it) {
        const int position = it.key();
        auto *box = new QCheckBox(signalText(it.value()), this);
        box->setObjectName(it.value());
        box->setChecked(m_state.enabled.contains(position));
        QPixmap mark(12, 12);
        mark.fill(signalColour(position, palette()));
        box->setIcon(QIcon(mark));
        connect(box, &QCheckBox::clicked, this, [this, position](bool on) {
            change([position, on](SensorInstance &instance, VideoState &state) {
                return setVideoSignal(instance, position, on, state);
            });
        });
        box->setEnabled(m_state.isSupported);
        m_bar->layout()->addWidget(box);
        m_signals.append(box);
    }
    for (auto it = m_state.enabled.cbegin(); it != m_state.enabled.cend(); ++it) {
        auto curve = std::make_unique<QwtPlotCurve>(signalText(it.value()));
        curve->setPen(signalColour(it.key(), palette()), 1.5);
        curve->setRenderHint(QwtPlotItem::RenderAntialiased);
        curve->attach(m_plot);
        m_curves.push_back(std::move(curve));
    }
    m_mode->setChecked(m_state.isVideoMode);
    m_mode->setEnabled(m_isKnown && m_state.isSupported && !m_state.available.isEmpty());
    showMarks();
    if (!m_isKnown)
        showMessage(tr("The sensor is being asked for its video signals."));
    else if (m_state.available.isEmpty())
        showMessage(tr("This sensor has no video."));
    else if (!m_state.isSupported)
        showMessage(tr("Video is not available over this interface."));
    else if (!m_state.isVideoMode)
        showMessage(tr("The sensor is not in a mode in which it sends video. Switch the video mode on."));
    else if (m_state.enabled.isEmpty())
        showMessage(tr("No video signal is switched on. Choose one above."));
    else
        showMessage({});
    m_plot->replot();
}

void VideoView::showMarks()
{
    m_threshold->setVisible(m_state.threshold.has_value());
    if (m_state.threshold) {
        m_threshold->setYValue(*m_state.threshold);
        QwtText label(tr("Threshold %1").arg(QLocale().toString(*m_state.threshold, 'g', 8)));
        label.setColor(palette().color(QPalette::Text));
        m_threshold->setLabel(label);
    }
    m_region->setVisible(m_state.region.has_value());
    if (m_state.region)
        m_region->setInterval(m_state.region->first, m_state.region->second);
}

void VideoView::setColours()
{
    const QPalette colours = palette();
    const QColor &line = colours.color(QPalette::Text);
    m_plot->setCanvasBackground(colours.color(QPalette::Base));
    constexpr qreal faint = 0.15;
    QColor grid = line;
    grid.setAlphaF(faint);
    m_grid->setPen(grid, 0.0);
    m_threshold->setLinePen(line, 1.0, Qt::DashLine);
    QColor zone = colours.color(QPalette::Highlight);
    zone.setAlphaF(faint);
    m_region->setBrush(zone);
    m_region->setPen(QPen(Qt::NoPen));
}

void VideoView::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    m_timer.start(0);
}

void VideoView::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() != QEvent::PaletteChange || !m_grid)
        return;
    setColours();
    showState();
}

} // namespace Explorer
