// SPDX-License-Identifier: MIT
#include "sessionview.h"

#include "look.h"
#include "numbersview.h"

#include "explorer/plot/drawnicon.h"
#include "explorer/plot/flowlayout.h"
#include "explorer/plot/plotview.h"
#include "explorer/sensor/librarytexts.h"

#include <QAction>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QScrollArea>
#include <QSettings>
#include <QSplitter>
#include <QTabBar>
#include <QTabWidget>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

using State = SondixQt::SensorReader::State;

namespace Explorer {

namespace {

constexpr int countsInterval = 250;
constexpr int bannerMargin = 4;

/// In a small window \a view keeps a size in which it can be read.
QWidget *scrolled(QWidget *view)
{
    auto *area = new QScrollArea;
    area->setWidgetResizable(true);
    area->setFrameShape(QFrame::NoFrame);
    area->setFocusPolicy(Qt::NoFocus);
    area->setWidget(view);
    return area;
}

} // namespace

SessionView::SessionView(SensorSession *session, QWidget *parent)
    : QWidget(parent)
    , m_session(session)
    , m_history(&session->history())
    , m_parameters(new ParameterModel(session->reader(), this))
{
    m_session->setParent(this);
    build();
    connectSession();
}

SessionView::SessionView(SignalHistory *history, const QString &title, QWidget *parent)
    : QWidget(parent)
    , m_history(history)
    , m_title(title)
{
    build();
}

SessionView::~SessionView()
{
    m_plot->setHistory(nullptr); // the session with the history is destroyed before the plot
}

QString SessionView::title() const
{
    return m_session ? m_session->title() : m_title;
}

void SessionView::build()
{
    m_simulated = makeBanner();
    m_problem = new QWidget;
    m_problemText = new QLabel;
    m_reopen = new QPushButton(tr("Open again"));
    m_plot = new PlotView;
    m_views = new QTabWidget;
    m_splitter = new QSplitter(Qt::Vertical);
    m_state = new QLabel;
    m_counts = new QLabel;
    m_problemText->setWordWrap(true);
    m_problemText->setTextFormat(Qt::PlainText);
    m_problemText->setObjectName(QStringLiteral("sessionProblem"));
    auto *problemLayout = new QHBoxLayout(m_problem);
    problemLayout->addWidget(m_problemText, 1);
    problemLayout->addWidget(m_reopen);
    m_problem->hide();
    m_views->setDocumentMode(true);
    m_views->addTab(scrolled(m_plot), tr("Plot"));
    m_views->tabBar()->setVisible(false); // until there is another view
    m_plot->setHistory(m_history);
    m_plot->setExportName([this] { return m_session ? title() : QFileInfo(m_title).completeBaseName(); });
    if (m_session) {
        m_numbers =
            new NumbersView(m_session->values(), [this](double value) { return m_session->errorText(value); });
        m_splitter->addWidget(m_numbers);
    }
    m_splitter->addWidget(m_views);
    m_splitter->setCollapsible(m_splitter->indexOf(m_views), false);
    m_splitter->setStretchFactor(m_splitter->indexOf(m_views), 1);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_simulated);
    layout->addWidget(m_problem);
    layout->addWidget(m_splitter, 1);
    layout->addWidget(makeStatusLine());
    connect(&m_timer, &QTimer::timeout, this, [this] {
        if (isVisible())
            showCounts();
    });
    m_timer.start(countsInterval);
}

QLabel *SessionView::makeBanner()
{
    auto *banner = new QLabel;
    banner->setObjectName(QStringLiteral("simulatedBanner"));
    banner->setAlignment(Qt::AlignCenter);
    banner->setWordWrap(true);
    banner->setMargin(bannerMargin);
    banner->setAutoFillBackground(true);
    QPalette colours;
    colours.setColor(QPalette::Window, QColor(0xf0, 0xc0, 0x4a));
    colours.setColor(QPalette::WindowText, Qt::black);
    banner->setPalette(colours);
    banner->hide();
    return banner;
}

QWidget *SessionView::makeStatusLine()
{
    m_state->setObjectName(QStringLiteral("sessionState"));
    m_counts->setObjectName(QStringLiteral("sessionCounts"));
    m_counts->setAccessibleName(tr("Time and losses"));
    auto *line = new QWidget;
    auto *layout = new FlowLayout(line); // pages that stand side by side are narrow
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setKeepsHeight(true);
    m_extensions = new QWidget;
    auto *extensionLayout = new QHBoxLayout(m_extensions);
    extensionLayout->setContentsMargins(0, 0, 0, 0);
    m_extensions->hide();
    addPlotButtons(*layout);
    layout->addWidget(m_extensions);
    layout->addWidget(m_state);
    layout->addWidget(m_counts);
    for (QLabel *label : {m_state, m_counts}) {
        label->setMargin(4);
        label->setMinimumWidth(1); // longer numbers do not widen the window
    }
    return line;
}

// The actions that are used most have a button, the others are in a menu.
void SessionView::addPlotButtons(QLayout &layout)
{
    static const QStringList inLine{QStringLiteral("followAction"), QStringLiteral("pauseAction"),
                                    QStringLiteral("cursorsAction"), QStringLiteral("showAllAction")};
    auto *more = new QToolButton;
    auto *menu = new QMenu(more);
    const QList<QAction *> actions = m_plot->plotActions();
    for (QAction *action : actions) {
        if (!inLine.contains(action->objectName())) {
            menu->addAction(action);
            continue;
        }
        auto *button = new QToolButton;
        button->setDefaultAction(action);
        button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        m_plotButtons += button;
        layout.addWidget(button);
    }
    more->setText(tr("View"));
    more->setIcon(drawnIcon(Drawing::View));
    more->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    more->setMenu(menu);
    more->setPopupMode(QToolButton::InstantPopup);
    more->setAccessibleName(tr("Further actions of the plot"));
    more->setToolTip(more->accessibleName());
    more->setVisible(!menu->isEmpty());
    m_plotButtons += more;
    layout.addWidget(more);
    for (const QToolButton *button : qAsConst(m_plotButtons))
        m_widthOfTexts += button->sizeHint().width() + layout.spacing();
}

// The symbols alone where the buttons would need several rows, and a shorter banner.
void SessionView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    const bool isNarrow = width() < m_widthOfTexts + layout()->contentsMargins().left() * 2;
    for (QToolButton *button : qAsConst(m_plotButtons))
        button->setToolButtonStyle(isNarrow ? Qt::ToolButtonIconOnly : Qt::ToolButtonTextBesideIcon);
    const QString banner =
        tr("\u26a0 Simulated: these values come from the bench simulator and are not measurements.");
    const bool isCut = fontMetrics().horizontalAdvance(banner) + 2 * bannerMargin >
                       contentsRect().width() - layout()->contentsMargins().left() * 2;
    m_simulated->setText(isCut ? tr("\u26a0 Simulated values") : banner);
    m_simulated->setToolTip(banner);
}

void SessionView::connectSession()
{
    connect(m_session, &SensorSession::changed, this, &SessionView::showState);
    connect(m_session, &SensorSession::frameChanged, this, &SessionView::showFrame);
    connect(m_session, &SensorSession::dataArrived, m_numbers, &NumbersView::refresh);
    connect(m_numbers, &NumbersView::resetRequested, m_session, &SensorSession::resetValues);
    connect(m_reopen, &QPushButton::clicked, m_session, &SensorSession::reopen);
    m_plot->setErrorText([this](double value) { return m_session->errorText(value); });
    m_plot->setRecordHead([this] {
        SondixApp::RecordHead head;
        head.address = m_session->address().toString();
        head.sensors = m_session->reader().sensorInformation();
        head.rate = m_session->rate();
        return head;
    });
    showState();
}

void SessionView::showFrame()
{
    m_numbers->setFrame(m_session->frame());
    showCounts();
}

void SessionView::showState()
{
    const State state = m_session->state();
    QPalette colours = palette();
    colours.setColor(QPalette::WindowText, colourOf(state, palette()));
    m_state->setPalette(colours);
    setSimulated(m_session->isSimulated());
    const QString problem = m_session->problem();
    m_problem->setVisible(!problem.isEmpty());
    m_problemText->setPalette(colours);
    m_problemText->setText(QStringLiteral("%1 %2").arg(symbolOf(state), problem));
    m_reopen->setVisible(state == State::Failed);
    showCounts();
}

void SessionView::showCounts()
{
    if (!m_session)
        return;
    constexpr double longSilence = 3.0;
    const double silence = m_session->secondsSilent();
    const bool isSilent = silence > longSilence && silence * m_session->rate().value_or(0.0) > 2.0;
    const State state = m_session->state();
    m_numbers->setPresent(!isSilent && (state == State::Reading || state == State::WaitingForTrigger));
    m_state->setText(QStringLiteral("%1 %2").arg(symbolOf(state),
                                                 isSilent ? tr("no values for %1 s").arg(static_cast<int>(silence))
                                                          : m_session->stateText()));
    QStringList parts;
    if (const std::optional<double> rate = m_session->rate())
        parts += shownRate(*rate);
    parts += shownDuration(m_session->secondsOpen());
    const SondixApp::LossAccount &losses = m_session->losses();
    parts += shownLosses(losses);
    if (const QString cut = shownCut(*m_history); !cut.isEmpty())
        parts += cut;
    m_counts->setText(parts.join(QStringLiteral("   ")));
    m_counts->setToolTip(losses.isEmpty() ? tr("No frame is missing.") : shownLossCauses(losses));
}

void SessionView::addView(const QString &title, QWidget *view)
{
    m_views->addTab(scrolled(view), title);
    m_views->tabBar()->setVisible(m_views->count() > 1);
}

void SessionView::showView(QWidget *view)
{
    for (int i = 0; i < m_views->count(); ++i) {
        if (m_views->widget(i)->isAncestorOf(view))
            m_views->setCurrentIndex(i);
    }
}

void SessionView::addStatusWidget(QWidget *widget)
{
    m_extensions->layout()->addWidget(widget);
    m_extensions->show();
}

void SessionView::addEnding(const std::function<void()> &begin, const std::function<bool()> &isBusy)
{
    m_endings.append({begin, isBusy});
}

bool SessionView::end()
{
    if (std::exchange(m_isEnding, true))
        return false;
    for (const Ending &ending : qAsConst(m_endings))
        ending.begin();
    constexpr int checkInterval = 10;
    auto *checks = new QTimer(this);
    connect(checks, &QTimer::timeout, this, [this, checks] {
        bool isBusy = false;
        for (const Ending &ending : qAsConst(m_endings)) {
            if (!ending.isBusy())
                continue;
            ending.begin(); // it may have been started after the page was closed
            isBusy = true;
        }
        if (isBusy)
            return;
        checks->stop();
        Q_EMIT ended();
    });
    checks->start(checkInterval);
    return true;
}

void SessionView::setSimulated(bool simulated)
{
    m_simulated->setVisible(simulated);
}

void SessionView::setNumbersVisible(bool visible)
{
    if (m_numbers)
        m_numbers->setVisible(visible);
}

void SessionView::setStatus(const QString &text)
{
    m_counts->setText(text);
}

void SessionView::save(QSettings &settings) const
{
    settings.setValue(QStringLiteral("splitter"), m_splitter->saveState());
    m_plot->savePanels(settings);
    m_plot->saveView(settings);
    if (m_numbers)
        m_numbers->save(settings);
}

void SessionView::restore(QSettings &settings)
{
    m_splitter->restoreState(settings.value(QStringLiteral("splitter")).toByteArray());
    m_plot->restorePanels(settings);
    m_plot->restoreView(settings);
    if (m_numbers)
        m_numbers->restore(settings);
}

} // namespace Explorer
