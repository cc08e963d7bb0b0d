// SPDX-License-Identifier: MIT
#include "mainwindow.h"

#include "findpanel.h"
#include "logpanel.h"
#include "parameterpanel.h"
#include "recordingloader.h"
#include "sensorpage.h"
#include "sessionarea.h"
#include "sessionview.h"

#include "explorer/plot/plotview.h"

#include <QApplication>
#include <QBoxLayout>
#include <QCloseEvent>
#include <QDockWidget>
#include <QDragEnterEvent>
#include <QFileInfo>
#include <QLabel>
#include <QLocale>
#include <QMenu>
#include <QMimeData>
#include <QPushButton>
#include <QStackedWidget>
#include <QTimer>
#include <QUrl>

#include <algorithm>
#include <memory>

using namespace SondixQt;
using State = SondixQt::SensorReader::State;

namespace Explorer {

namespace {

/// How long a closing window waits for its sensors.
constexpr int longestQuitting = 2500;

} // namespace

MainWindow::MainWindow(QWidget *parent)
    : QMainWindow(parent)
    , m_find(new FindPanel)
    , m_parameters(new ParameterPanel(m_undoGroup))
    , m_page(new SensorPage)
    , m_log(new LogPanel)
{
    setWindowTitle(QApplication::applicationName());
    setDockNestingEnabled(true);
    setAcceptDrops(true); // recordings
    makeCentre();
    makeDocks();
    makeToolBar();
    makeMenus();
    connectPanels();
    restoreChoices();
    showCurrent();
}

MainWindow::~MainWindow()
{
    // All readers end at the same time, before their pages are destroyed one after another.
    for (SessionView *view : views()) {
        if (view->session())
            view->session()->close();
    }
    // The undo group must not see stacks whose pages are gone.
    m_parameters->setSession(nullptr, nullptr);
    m_page->setSession(nullptr);
}

void MainWindow::makeCentre()
{
    m_centre = new QStackedWidget;
    m_area = new SessionArea;
    m_simulated =
        new QLabel(tr("\u26a0 Simulated: these values come from the bench simulator and are not measurements."));
    m_simulated->setObjectName(QStringLiteral("simulatedBanner"));
    m_simulated->setAlignment(Qt::AlignCenter);
    m_simulated->setWordWrap(true);
    m_simulated->setMargin(4);
    m_simulated->setAutoFillBackground(true);
    QPalette colours;
    colours.setColor(QPalette::Window, QColor(0xf0, 0xc0, 0x4a));
    colours.setColor(QPalette::WindowText, Qt::black);
    m_simulated->setPalette(colours);
    m_simulated->hide();
    m_centre->addWidget(makeWelcome());
    m_centre->addWidget(m_area);
    auto *widget = new QWidget;
    auto *layout = new QVBoxLayout(widget);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_simulated);
    layout->addWidget(m_centre, 1);
    setCentralWidget(widget);
}

QWidget *MainWindow::makeWelcome()
{
    auto *title = new QLabel(tr("See a sensor"));
    QFont large = title->font();
    large.setPointSizeF(large.pointSizeF() * 1.6);
    large.setBold(true);
    title->setFont(large);
    auto *text = new QLabel(tr("Search for the sensors that are connected to this computer, or open one whose "
                               "address is known. Its values "
                               "then appear here; its settings are on the right. Sensors that were found once "
                               "stay in the list on the left: "
                               "a double click opens them."));
    text->setWordWrap(true);
    auto *search = new QPushButton(tr("Search for sensors"));
    auto *open = new QPushButton(tr("Open by address ..."));
    search->setObjectName(QStringLiteral("welcomeSearch"));
    open->setObjectName(QStringLiteral("welcomeOpen"));
    connect(search, &QPushButton::clicked, this, &MainWindow::startSearch);
    connect(open, &QPushButton::clicked, this, &MainWindow::focusAddress);
    auto *welcome = new QWidget;
    welcome->setObjectName(QStringLiteral("welcome"));
    auto *block = new QWidget;
    block->setMaximumWidth(fontMetrics().averageCharWidth() * 70);
    auto *blockLayout = new QVBoxLayout(block);
    blockLayout->addWidget(title);
    blockLayout->addWidget(text);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(search);
    buttons->addWidget(open);
    buttons->addStretch(1);
    blockLayout->addLayout(buttons);
    auto *centring = new QHBoxLayout;
    centring->addStretch(1);
    centring->addWidget(block, 8);
    centring->addStretch(1);
    auto *layout = new QVBoxLayout(welcome);
    layout->addStretch(1);
    layout->addLayout(centring);
    layout->addStretch(2);
    return welcome;
}

QDockWidget *MainWindow::addDock(Qt::DockWidgetArea area, const QString &title, const char *name, QWidget *widget)
{
    auto *dock = new QDockWidget(title, this);
    dock->setObjectName(QLatin1String(name));
    dock->setWidget(widget);
    addDockWidget(area, dock);
    m_docks.append(dock);
    return dock;
}

void MainWindow::makeDocks()
{
    setCorner(Qt::BottomLeftCorner, Qt::LeftDockWidgetArea);
    setCorner(Qt::BottomRightCorner, Qt::RightDockWidgetArea);
    QDockWidget *const find = addDock(Qt::LeftDockWidgetArea, tr("Sensors"), "sensorsDock", m_find);
    QDockWidget *const parameters =
        addDock(Qt::RightDockWidgetArea, tr("Settings"), "parametersDock", m_parameters);
    QDockWidget *const page = addDock(Qt::RightDockWidgetArea, tr("Sensor"), "sensorDock", m_page);
    QDockWidget *const log = addDock(Qt::BottomDockWidgetArea, tr("Log"), "logDock", m_log);
    tabifyDockWidget(parameters, page);
    parameters->raise();
    const int character = fontMetrics().averageCharWidth();
    resizeDocks({find, parameters}, {34 * character, 42 * character}, Qt::Horizontal);
    resizeDocks({log}, {fontMetrics().height() * 9}, Qt::Vertical);
}

void MainWindow::connectPanels()
{
    connect(m_find, &FindPanel::openRequested, this, &MainWindow::openSensor);
    connect(m_find, &FindPanel::problemOccurred, this,
            [this](const QString &text) { reportProblem(tr("Search"), text); });
    connect(m_parameters, &ParameterPanel::answered, this,
            [this](const QString &source, const QString &text, bool isProblem) {
                m_log->model().add(isProblem ? LogModel::Problem : LogModel::Answer, source, text);
            });
    connect(m_area, &SessionArea::currentChanged, this, &MainWindow::showCurrent);
    connect(m_area, &SessionArea::closeRequested, this,
            [this](QWidget *page) { closePage(qobject_cast<SessionView *>(page)); });
}

QVector<SessionView *> MainWindow::views() const
{
    QVector<SessionView *> all;
    for (int i = 0; i < m_area->count(); ++i)
        all.append(static_cast<SessionView *>(m_area->page(i)));
    return all;
}

SessionView *MainWindow::currentView() const
{
    return static_cast<SessionView *>(m_area->current());
}

SensorSession *MainWindow::currentSession() const
{
    const SessionView *const view = currentView();
    return view ? view->session() : nullptr;
}

SessionView *MainWindow::openSensor(const SensorAddress &address, const QString &title)
{
    for (SessionView *view : views()) {
        if (view->session() && view->session()->address() == address) {
            m_area->setCurrent(view);
            if (view->session()->state() == State::Failed)
                view->session()->reopen();
            return view;
        }
    }
    auto *const view = new SessionView(new SensorSession(address, title));
    connectSession(view);
    restoreView(*view);
    view->session()->history().setKeepSeconds(SensorPage::chosenKeepSeconds());
    m_find->sensors().addOpened(address, {}, {});
    m_find->sensors().setOpen(address, true);
    addPage(view);
    view->session()->open();
    return view;
}

void MainWindow::addPage(SessionView *view)
{
    view->setNumbersVisible(m_numbersAction->isChecked());
    m_area->add(view, view->title());
    m_centre->setCurrentWidget(m_area);
    Q_EMIT viewAdded(view);
    showCurrent();
}

void MainWindow::connectSession(SessionView *view)
{
    SensorSession *const session = view->session();
    connect(session, &SensorSession::changed, this, [this, view] {
        takeIdentity(view->session());
        showTitle(view);
        if (view == currentView())
            showCurrent();
    });
    connect(session, &SensorSession::happened, this, [this, session](const QString &text, bool isProblem) {
        m_log->model().add(isProblem ? LogModel::Problem : LogModel::Event, session->title(), text);
    });
    const ParameterModel *const parameters = view->parameters();
    connect(parameters, &ParameterModel::refused, this,
            [this, session](const QModelIndex &index, const QString &sentence) {
                const QString name = index.siblingAtColumn(ParameterModel::NameColumn).data().toString();
                m_log->model().add(LogModel::Problem, session->title(), tr("%1 refused: %2").arg(name, sentence));
            });
    connect(parameters, &ParameterModel::accepted, this, [this, session](const QString &title) {
        m_log->model().add(LogModel::Answer, session->title(), tr("set %1").arg(title));
    });
}

void MainWindow::takeIdentity(SensorSession *session)
{
    if (!session->serialNumber().isEmpty())
        m_find->sensors().addOpened(session->address(), session->serialNumber(),
                                    session->information().value(InterfaceParameter::SoftwareVersion).toString());
}

void MainWindow::showTitle(SessionView *view)
{
    const SensorSession *const session = view->session();
    const QString title = QStringLiteral("%1 %2").arg(symbolOf(session->state()), session->title());
    m_area->setTitle(view, title,
                     QStringLiteral("%1\n%2").arg(session->stateText(), session->address().toString()));
}

void MainWindow::showCurrent()
{
    SessionView *const view = currentView();
    SensorSession *const session = currentSession();
    const bool isOther = m_parameters->property("view").value<QObject *>() != view;
    if (isOther) {
        m_parameters->setProperty("view", QVariant::fromValue<QObject *>(view));
        m_parameters->setSession(session, view ? view->parameters() : nullptr);
        m_page->setSession(session);
    }
    m_centre->setCurrentIndex(view ? 1 : 0);
    m_simulated->setVisible(session && session->isSimulated());
    for (QAction *action : qAsConst(m_sessionActions))
        action->setEnabled(session);
    m_state->setText(
        session
            ? QStringLiteral("%1   %2 %3").arg(session->title(), symbolOf(session->state()), session->stateText())
            : QString());
    setWindowTitle(view ? QStringLiteral("%1 \u2013 %2").arg(view->title(), QApplication::applicationName())
                        : QApplication::applicationName());
    if (isOther)
        Q_EMIT currentViewChanged(view);
}

void MainWindow::closePage(SessionView *view)
{
    if (!view)
        return;
    saveView(*view);
    m_area->take(view);
    SensorSession *const session = view->session();
    showCurrent();
    if (!session) {
        view->deleteLater();
        return;
    }
    m_find->sensors().setOpen(session->address(), false);
    m_closing.append(view);
    view->setParent(this);
    view->hide();
    connect(session, &SensorSession::closed, view, [this, view] {
        m_closing.removeAll(view);
        view->deleteLater();
    });
    session->close();
}

bool MainWindow::openArgument(const QString &text)
{
    if (QFileInfo::exists(text))
        return openFile(text) != nullptr;
    QString problem;
    if (const auto address = SensorAddress::parse(text, &problem)) {
        openSensor(*address);
        return true;
    }
    reportProblem(tr("Open"), problem);
    return false;
}

SessionView *MainWindow::openFile(const QString &path)
{
    const QString name = QFileInfo(path).fileName();
    auto loader = std::make_unique<RecordingLoader>(path);
    if (!loader->start()) {
        reportProblem(name, loader->problem());
        return nullptr;
    }
    RecordingLoader *const recording = loader.release();
    auto *const view = new SessionView(&recording->history(), name);
    recording->setParent(view);
    view->plot()->setErrorText([recording](double value) { return recording->errorText(value); });
    view->plot()->showEverything();
    connect(recording, &RecordingLoader::advanced, view, [view, recording] {
        const QString frames = tr("%1 frames").arg(QLocale().toString(recording->frames()));
        view->setStatus(recording->isComplete()
                            ? frames
                            : tr("%1, %2 % read").arg(frames).arg(qRound(recording->progress() * 100.0)));
    });
    connect(recording, &RecordingLoader::finished, this, [this, recording, name] {
        if (!recording->note().isEmpty())
            reportProblem(name, recording->note());
    });
    addPage(view);
    return view;
}

void MainWindow::addSessionView(const QString &title, QWidget *view)
{
    if (SessionView *const current = currentView())
        current->addView(title, view);
}

void MainWindow::reportProblem(const QString &source, const QString &text)
{
    m_log->model().add(LogModel::Problem, source, text);
    m_docks.last()->show();
}

void MainWindow::startSearch()
{
    m_docks.first()->show();
    m_docks.first()->raise();
    m_find->toggleSearch();
}

void MainWindow::focusAddress()
{
    m_docks.first()->show();
    m_docks.first()->raise();
    m_find->focusAddress();
}

bool MainWindow::isBusy() const
{
    return std::any_of(m_closing.begin(), m_closing.end(), [](const auto &view) { return !view.isNull(); });
}

// The window disappears at once; the program ends when what the sensors have sent was delivered.
void MainWindow::closeEvent(QCloseEvent *event)
{
    if (m_isQuitting) {
        event->accept();
        return;
    }
    saveChoices();
    const QVector<SessionView *> open = views();
    for (SessionView *view : open)
        closePage(view);
    if (!isBusy()) {
        event->accept();
        return;
    }
    event->ignore();
    hide();
    m_isQuitting = true;
    auto *waiting = new QTimer(this);
    auto *limit = new QTimer(this);
    const auto end = [this, waiting, limit] {
        waiting->stop();
        limit->stop();
        close();
        QApplication::quit();
    };
    connect(waiting, &QTimer::timeout, this, [this, end] {
        if (!isBusy())
            end();
    });
    connect(limit, &QTimer::timeout, this, end);
    constexpr int checkInterval = 20;
    waiting->start(checkInterval);
    limit->setSingleShot(true);
    limit->start(longestQuitting);
}

void MainWindow::dragEnterEvent(QDragEnterEvent *event)
{
    if (event->mimeData()->hasUrls())
        event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent *event)
{
    const QList<QUrl> urls = event->mimeData()->urls();
    for (const QUrl &url : urls) {
        if (url.isLocalFile())
            openFile(url.toLocalFile());
    }
    event->acceptProposedAction();
}

void MainWindow::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    if (event->type() != QEvent::PaletteChange || !m_area)
        return;
    // Labels with colours of their own are set anew when all widgets have the new palette.
    QMetaObject::invokeMethod(
        this,
        [this] {
            for (SessionView *view : views()) {
                if (view->session())
                    Q_EMIT view->session()->changed();
            }
        },
        Qt::QueuedConnection);
}

} // namespace Explorer
