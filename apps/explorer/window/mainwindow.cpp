// SPDX-License-Identifier: MIT
#include "mainwindow.h"

#include "findpanel.h"
#include "logpanel.h"
#include "parameterpanel.h"
#include "recordingloader.h"
#include "sensorpage.h"
#include "sessionarea.h"
#include "sessionview.h"

#include "explorer/plot/drawnicon.h"
#include "explorer/plot/flowlayout.h"
#include "explorer/plot/plotview.h"
#include "explorer/sensor/diskthread.h"
#include "explorer/sensor/englishtexts.h"
#include "explorer/sensor/librarytexts.h"

#include <QApplication>
#include <QBoxLayout>
#include <QCloseEvent>
#include <QDockWidget>
#include <QDragEnterEvent>
#include <QFileInfo>
#include <QImage>
#include <QLabel>
#include <QLocale>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QScrollArea>
#include <QStackedWidget>
#include <QTimer>
#include <QUrl>

#include <algorithm>

using namespace SondixQt;
using State = SondixQt::SensorReader::State;

namespace Explorer {

namespace {

/// How long a closing window waits for its sensors.
constexpr int longestQuitting = 2500;
/// How long it then waits for recordings of sensors that have not ended, before the user is asked.
constexpr int timeForEnding = 500;

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
    m_centre->addWidget(makeWelcome());
    m_centre->addWidget(m_area);
    setCentralWidget(m_centre);
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
    search->setIcon(drawnIcon(Drawing::Search));
    open->setIcon(drawnIcon(Drawing::Open));
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
    auto *buttons = new QWidget;
    auto *buttonLayout = new FlowLayout(buttons);
    buttonLayout->setContentsMargins(0, 0, 0, 0);
    buttonLayout->setKeepsHeight(true);
    buttonLayout->addWidget(search);
    buttonLayout->addWidget(open);
    blockLayout->addWidget(buttons);
    blockLayout->addSpacing(fontMetrics().height());
    blockLayout->addWidget(makeFamilies());
    auto *centring = new QHBoxLayout;
    centring->addStretch(1);
    centring->addWidget(block, 8);
    centring->addStretch(1);
    auto *layout = new QVBoxLayout(welcome);
    layout->addStretch(1);
    layout->addLayout(centring);
    layout->addStretch(2);
    auto *area = new QScrollArea; // for small windows
    area->setWidgetResizable(true);
    area->setFrameShape(QFrame::NoFrame);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff); // the text is wrapped
    area->setBackgroundRole(QPalette::Base);
    welcome->setBackgroundRole(QPalette::Base);
    area->setWidget(welcome);
    return area;
}

// A picture of each family of sensors that the library supports.
QWidget *MainWindow::makeFamilies()
{
    constexpr int size = 64;
    auto *families = new QWidget;
    auto *layout = new FlowLayout(families);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(fontMetrics().averageCharWidth());
    layout->setKeepsHeight(true);
    const QList<SensorGroup> groups = sensorGroups();
    QVector<QImage> shown{getSensorGroupImage(NoGroup).toImage()}; // the picture of families without one
    for (const SensorGroup group : groups) {
        const QPixmap image = getSensorGroupImage(group);
        if (group == AllGroups || shown.contains(image.toImage())) // some families share one
            continue;
        shown += image.toImage();
        auto *picture = new QLabel;
        picture->setFixedSize(size, size);
        picture->setScaledContents(true);
        picture->setPixmap(image);
        picture->setToolTip(sensorGroupName(group));
        picture->setAccessibleName(picture->toolTip());
        layout->addWidget(picture);
    }
    return families;
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
    resizeDocks({find, parameters}, {34 * character, 46 * character}, Qt::Horizontal);
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
    openWhenFree(view);
    return view;
}

// A page that is still closing has the sensor: it is in use until then.
void MainWindow::openWhenFree(SessionView *view)
{
    const auto closing = std::find_if(m_closing.cbegin(), m_closing.cend(), [view](const auto &other) {
        return other && other != view && other->session() && // a recording whose export goes on has none
               other->session()->address() == view->session()->address();
    });
    if (closing == m_closing.cend())
        view->session()->open();
    else
        connect(*closing, &SessionView::ended, view, [this, view] { openWhenFree(view); });
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
    connect(session, &SensorSession::gapHappened, this,
            [this, session](const DataGap &gap) { m_log->model().add(session->title(), gap); });
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
    if (!session && !view->plot()->isExporting()) {
        view->deleteLater();
        return;
    }
    m_closing.append(view);
    view->setParent(this);
    view->hide();
    finishExport(*view);
    connect(view, &SessionView::ended, this, [this, view] {
        m_closing.removeAll(view);
        view->deleteLater();
    });
    if (!session) {
        view->end();
        return;
    }
    m_find->sensors().setOpen(session->address(), false);
    connect(session, &SensorSession::closed, view, &SessionView::end);
    session->close();
}

// The values are kept until the file is complete. The page no longer shows what becomes of it: the log does.
void MainWindow::finishExport(SessionView &view)
{
    PlotView *const plot = view.plot();
    if (!plot->isExporting())
        return;
    const QString title = view.title();
    m_log->model().add(LogModel::Event, title,
                       tr("The page was closed; the export to %1 goes on.").arg(plot->exportPath()));
    connect(plot, &PlotView::exportFinished, this, [this, title](const QString &path, const QString &problem) {
        if (problem.isEmpty())
            m_log->model().add(LogModel::Event, title, tr("Exported to %1").arg(path));
        else
            reportProblem(title, tr("The export to %1 has failed: %2").arg(path, problem));
    });
    view.addEnding([] {}, [plot] { return plot->isExporting(); });
}

bool MainWindow::openArgument(const QString &text)
{
    if (QFileInfo::exists(text)) {
        openFile(text);
        return true;
    }
    QString problem;
    if (const auto address = SensorAddress::parse(text, &problem)) {
        openSensor(*address);
        return true;
    }
    reportProblem(tr("Open"), shownText(problem));
    return false;
}

void MainWindow::openFile(const QString &path)
{
    const QString name = QFileInfo(path).fileName();
    auto *const recording = new RecordingLoader(path, this);
    m_log->model().add(LogModel::Event, name, tr("opening"));
    connect(recording, &RecordingLoader::opened, this,
            [this, recording, name] { showRecording(recording, name); });
    connect(recording, &RecordingLoader::refused, this, [this, recording, name](const QString &problem) {
        reportProblem(name, shownText(problem));
        recording->deleteLater();
    });
}

void MainWindow::showRecording(RecordingLoader *recording, const QString &name)
{
    auto *const view = new SessionView(&recording->history(), name);
    recording->setParent(view);
    view->plot()->setErrorText([recording](double value) { return recording->errorText(value); });
    view->plot()->setRecordHead([recording] { return recording->head(); });
    const QVector<QMap<QString, QVariant>> sensors = recording->head().sensors;
    view->setSimulated(std::any_of(sensors.cbegin(), sensors.cend(), isSimulated));
    restoreView(*view);
    view->plot()->showEverything();
    connect(recording, &RecordingLoader::advanced, view, [view, recording] {
        const QString frames = tr("%1 frames").arg(QLocale().toString(recording->frames()));
        const QString text = recording->isComplete()
                                 ? frames
                                 : tr("%1, %2 % read").arg(frames).arg(qRound(recording->progress() * 100.0));
        const QString cut = shownCut(recording->history());
        view->setStatus(cut.isEmpty() ? text : text + QStringLiteral("   ") + cut);
    });
    connect(recording, &RecordingLoader::finished, this, [this, recording, name] {
        if (!recording->note().isEmpty())
            reportProblem(name, shownText(recording->note()));
        const SignalHistory &history = recording->history();
        if (history.cutFrames() > 0)
            reportProblem(name,
                          tr("The memory is not enough for the whole recording: of %1 frames only the last %2 are "
                             "shown.")
                              .arg(QLocale().toString(recording->frames()),
                                   QLocale().toString(history.endFrame() - history.firstFrame())));
    });
    addPage(view);
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
    return isWriting() ||
           std::any_of(m_closing.begin(), m_closing.end(), [](const auto &view) { return !view.isNull(); });
}

bool MainWindow::isWriting() const
{
    return DiskThread::unfinishedWrites() > 0 ||
           std::any_of(m_closing.begin(), m_closing.end(),
                       [](const auto &view) { return view && view->plot()->isExporting(); });
}

// Recordings end although their sensors have not. False if they were ending before.
bool MainWindow::endClosingPages()
{
    bool hasBegun = false;
    for (const QPointer<SessionView> &view : qAsConst(m_closing))
        hasBegun = (view && view->end()) || hasBegun;
    return hasBegun;
}

// The window disappears at once; the program ends when what the sensors have sent was delivered and files are written.
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
        delete m_waitingBox;
        close();
        QApplication::quit();
    };
    connect(waiting, &QTimer::timeout, this, [this, end] {
        if (!(m_isWaitingForFilesOnly ? isWriting() : isBusy()))
            end();
    });
    connect(limit, &QTimer::timeout, this, [this, limit, end] {
        m_isWaitingForFilesOnly = true;
        if (!isWriting())
            end();
        else if (endClosingPages())
            limit->start(timeForEnding);
        else
            askToWait(*limit, end);
    });
    constexpr int checkInterval = 20;
    waiting->start(checkInterval);
    limit->setSingleShot(true);
    limit->start(longestQuitting);
}

// A user who chooses to wait is asked again later: the window is closed, and the disk may never respond.
void MainWindow::askToWait(QTimer &limit, const std::function<void()> &end)
{
    m_waitingBox =
        new QMessageBox(QMessageBox::Information, QApplication::applicationName(),
                        tr("Files are still being written. The program ends as soon as they are complete."),
                        QMessageBox::NoButton);
    m_waitingBox->setObjectName(QStringLiteral("waitingForFiles"));
    m_waitingBox->setAttribute(Qt::WA_DeleteOnClose);
    const QPushButton *const leave = m_waitingBox->addButton(tr("End without them"), QMessageBox::DestructiveRole);
    QPushButton *const wait = m_waitingBox->addButton(tr("Wait"), QMessageBox::RejectRole);
    m_waitingBox->setDefaultButton(wait);
    m_waitingBox->setEscapeButton(wait);
    // Not within the button's own signal: the box is destroyed.
    connect(leave, &QPushButton::clicked, this, end, Qt::QueuedConnection);
    // Not only by the button: the box may also be closed by the window manager.
    connect(m_waitingBox, &QDialog::finished, &limit, [&limit] {
        constexpr int nextQuestion = 20000;
        limit.start(nextQuestion);
    });
    m_waitingBox->show();
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
