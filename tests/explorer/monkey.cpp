// SPDX-License-Identifier: MIT
#include "monkey.h"

#include "processortime.h"

#include "explorer/application/extensions.h"
#include "explorer/extras/recordingwidget.h"
#include "explorer/extras/webtunnel.h"
#include "explorer/window/sessionview.h"

#include <QDialog>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenu>
#include <QTimer>

#include <chrono>
#include <cstdio>

using namespace Explorer;
using namespace SondixQt;

namespace {

constexpr int maxActionsKept = 40;
constexpr int deepestNesting = 4;
constexpr int repairInterval = 400; // events
constexpr int longRun = 10000;      // events; the progress of such a run is printed

constexpr auto longestStandstill = std::chrono::seconds(30);

} // namespace

Monkey::Monkey(quint64 seed, int events)
    : m_random(seed)
    , m_events(events)
    , m_isTracing(qEnvironmentVariableIsSet("SONDIXQT_MONKEY_TRACE"))
    , m_bench(new QObject)
{
    m_sinceStart.start();
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    sondixsim::loadBuiltInBench();
    constexpr double clockSpeed = 10.0; // sensors do as much between two events as they do for a person
    sondixsim::useRealClock(clockSpeed);
    m_bench->moveToThread(&m_benchThread);
    connect(&m_benchThread, &QThread::finished, m_bench, &QObject::deleteLater);
    m_benchThread.start();
    m_watchdog = std::thread([this] { watch(); });

    const auto addFile = [this](const QString &name, const QByteArray &content) {
        m_files += m_window.folder() + '/' + name;
        QFile file(m_files.last());
        if (file.open(QIODevice::WriteOnly))
            file.write(content);
    };
    QByteArray table = "# sensor: TX270-10\n# rate: 1000 Hz\nframe,time [s],Distance 1 [mm]\n";
    for (int i = 0; i < 5000; ++i)
        table +=
            QByteArray::number(i) + ',' + QByteArray::number(0.001 * i) + ',' + QByteArray::number(i % 97) + '\n';
    addFile("good.csv", table);
    addFile("cut.csv", table.left(table.size() / 2 - 3));
    addFile("nonsense.csv", "\xff\xfe,,,\n1,2\n");
    addFile("empty.npy", {});
    addFile("bench.json", R"({ "sensors": [ { "model": "CC430", "serialNumber": "2421018",
        "place": { "interface": "TCP/IP", "ip": "169.254.168.150" } } ] })");
    addFile("wrong.json", "{ \"sensors\": [ { \"model\": 7 } ] }");
}

Monkey::~Monkey()
{
    m_isEnding = true;
    m_watchdog.join();
    sondixsim::releaseHangs();
    m_benchThread.quit();
    m_benchThread.wait();
    sondixsim::clearFaults();
}

void Monkey::openWindow()
{
    QSettings().setValue("recording/folder", m_window.folder());
    m_window.open();
    ++m_windows;
    m_extensions = new Extensions(*m_window);
    connect(&*m_window, &MainWindow::viewAdded, this, [this](SessionView *view) {
        if (RecordingWidget *const recording = m_extensions->recording(view))
            m_recordings.watch(*view->session(), recording->control());
        if (WebTunnel *const web = m_extensions->web(view))
            web->setBrowser([](const QUrl &) { return true; });
    });
    restartMeasuring();
}

void Monkey::closeWindow()
{
    sondixsim::releaseHangs();
    m_window.close();
    m_recordings.compareFinished([this] { ++m_heartbeat; });
}

void Monkey::run()
{
    openWindow();
    scheduleStep();
    while (m_done < m_events) {
        QCoreApplication::exec(); // until the window was closed
        if (!m_window->isVisible() && m_done < m_events) {
            closeWindow();
            openWindow();
        }
    }
    if (!m_window->isVisible()) {
        closeWindow();
        openWindow();
    }
    recordToTheEnd();
    QTimer::singleShot(0, &*m_window, &QWidget::close);
    QCoreApplication::exec();
    closeWindow();
}

// After all that has happened the explorer still works; the recording goes on when the window is closed.
void Monkey::recordToTheEnd()
{
    for (SessionView *view : m_window->views())
        m_window->closePage(view);
    repairBench();
    atBench([] { sondixsim::loadBuiltInBench(); });
    bool isReady = false;
    QMetaObject::invokeMethod(m_bench,
                              [this, &isReady] { QTimer::singleShot(0, this, [&isReady] { isReady = true; }); });
    constexpr int longestWait = 10000;
    QVERIFY(QTest::qWaitFor([&isReady] { return isReady; }, longestWait));
    QVERIFY(m_window->openArgument("TX270@RS232,port=COM3"));
    SessionView *const view = m_window->currentView();
    QVERIFY(QTest::qWaitFor([view] { return view->session()->framesRead() > 0; }, longestWait));
    RecordingControl &control = m_extensions->recording(view)->control();
    QVERIFY(control.start(m_window.folder() + "/last.csv", nullptr));
    QVERIFY(QTest::qWaitFor([&control] { return control.frames() > 1000; }, longestWait));
}

QStringList Monkey::unfinishedFiles() const
{
    return QDir(m_window.folder()).entryList({"*.partial"});
}

// Each step is a timer of its own: a running timer would not fire in an event loop inside of its slot.
void Monkey::scheduleStep(int delay)
{
    QTimer::singleShot(delay, this, &Monkey::step);
}

void Monkey::restartMeasuring()
{
    m_sinceStep.start();
    m_processorSeconds = threadProcessorSeconds();
}

void Monkey::measure()
{
    const double processor = threadProcessorSeconds() - m_processorSeconds;
    const double seconds = static_cast<double>(m_sinceStep.nsecsElapsed()) * 1e-9;
    m_longestSeconds = qMax(m_longestSeconds, seconds);
    if (processor > m_longestProcessorSeconds) {
        m_longestProcessorSeconds = processor;
        m_longestAction = m_lastActions.isEmpty() ? QString() : m_lastActions.last();
    }
}

void Monkey::watch()
{
    using Clock = std::chrono::steady_clock;
    int last = m_heartbeat;
    auto since = Clock::now();
    while (!m_isEnding) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        if (m_heartbeat != last) {
            last = m_heartbeat;
            since = Clock::now();
        }
        if (Clock::now() - since < longestStandstill)
            continue;
        const QMutexLocker locker(&m_lock);
        std::fprintf(stderr, "The event loop stands still. The last actions:\n%s\n",
                     qPrintable(m_lastActions.join('\n')));
        std::abort();
    }
}

void Monkey::note(const QString &action)
{
    const QString text = QString("%1 (%2): %3").arg(m_done).arg(m_depth).arg(action);
    if (m_isTracing)
        std::fprintf(stderr, "%s\n", qPrintable(text));
    const QMutexLocker locker(&m_lock);
    m_lastActions += text;
    if (m_lastActions.size() > maxActionsKept)
        m_lastActions.removeFirst();
}

void Monkey::step()
{
    if (!m_window->isVisible()) { // it is closing, which is no sign of life
        if (m_depth > 0)
            endNesting();
        scheduleStep(10);
        restartMeasuring();
        return;
    }
    ++m_heartbeat;
    measure();
    if (m_depth == 0)
        m_recordings.compareFinished([this] { ++m_heartbeat; });
    restartMeasuring();
    if (m_done >= m_events) {
        endNesting();
        if (m_depth == 0)
            QCoreApplication::quit();
        else
            scheduleStep();
        return;
    }
    scheduleStep();
    ++m_done;
    printProgress();
    endLongRecordings();
    ++m_depth;
    act();
    --m_depth;
}

void Monkey::printProgress() const
{
    const int share = m_events / 20;
    if (m_events < longRun || m_done % share != 0)
        return;
    std::printf("%d of %d events after %lld s, %d windows, %d recordings compared\n", m_done, m_events,
                static_cast<long long>(m_sinceStart.elapsed() / 1000), m_windows, m_recordings.finished());
    std::fflush(stdout);
}

// Sensors send in real time: under a sanitizer comparing what they have sent would take longer than the events.
void Monkey::endLongRecordings()
{
    constexpr int checkInterval = 20;  // events
    constexpr qint64 longest = 200000; // frames
    if (m_done % checkInterval != 0)
        return;
    for (SessionView *view : m_window->views()) {
        RecordingWidget *const recording = m_extensions->recording(view);
        if (recording && recording->control().frames() > longest)
            recording->control().stop();
    }
}

void Monkey::act()
{
    for (QWidget *window : QApplication::topLevelWidgets()) {
        auto *const dialog = qobject_cast<QFileDialog *>(window);
        if (dialog && dialog->isVisible()) {
            // Not with keys and clicks: it can delete and rename files.
            answer(*dialog);
            return;
        }
    }
    const bool isNested = m_depth > 1 || QApplication::activePopupWidget() || QApplication::activeModalWidget();
    if (m_depth > deepestNesting || (isNested && chance(15))) {
        endNesting();
        return;
    }
    if (m_done % repairInterval == 0)
        repairBench();
    using Action = void (Monkey::*)();
    struct Share
    {
        int share;
        bool isNested; // possible inside of a menu or a dialog
        Action action;
    };
    static constexpr Share shares[] = {
        {300, true, &Monkey::pressKey},    {60, true, &Monkey::typeText},
        {300, true, &Monkey::clickMouse},  {60, true, &Monkey::dragMouse},
        {60, true, &Monkey::turnWheel},    {100, false, &Monkey::triggerAction},
        {15, false, &Monkey::changeSize},  {20, false, &Monkey::openSomething},
        {4, false, &Monkey::dropFile},     {20, false, &Monkey::toggleRecording},
        {10, false, &Monkey::sendCommand}, {6, false, &Monkey::closeAPage},
        {1, false, &Monkey::leave},        {15, true, &Monkey::pullOrPlug},
        {5, true, &Monkey::silence},       {10, true, &Monkey::trigger},
        {10, true, &Monkey::injectFault},  {4, true, &Monkey::repairBench},
    };
    int sum = 0;
    for (const Share &share : shares)
        sum += !isNested || share.isNested ? share.share : 0;
    int ticket = random(sum);
    for (const Share &share : shares) {
        if (isNested && !share.isNested)
            continue;
        ticket -= share.share;
        if (ticket < 0) {
            (this->*share.action)();
            return;
        }
    }
}

void Monkey::endNesting()
{
    note("close what is open");
    if (QWidget *const popup = QApplication::activePopupWidget())
        popup->close();
    else if (auto *const dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget()))
        dialog->reject();
    else if (QWidget *const focus = QApplication::focusWidget())
        QTest::keyClick(focus, Qt::Key_Escape); // ends dragging
}

void Monkey::answer(QFileDialog &dialog)
{
    QDialog &base = dialog; // accept() is protected in QFileDialog
    if (QApplication::activeModalWidget() != &dialog && QApplication::activeModalWidget()) {
        endNesting(); // a question of the dialog
        return;
    }
    if (chance(40)) {
        note("cancel " + dialog.windowTitle());
        base.reject();
        return;
    }
    QString file = oneOf(m_files);
    if (dialog.acceptMode() == QFileDialog::AcceptSave) {
        static const QStringList suffixes{"csv", "npy", "jsonl", "png", "svg", "pdf", "json", "xyz"};
        file = QString("%1/saved %2.%3").arg(m_window.folder()).arg(++m_fileNumber).arg(oneOf(suffixes));
        if (dialog.windowTitle().contains("settings"))
            m_files += file;
    }
    note(QString("%1: %2").arg(dialog.windowTitle(), file));
    dialog.selectFile(file);
    base.accept();
    if (dialog.isVisible())
        base.reject();
}

QWidget *Monkey::usableWindow()
{
    if (QWidget *const popup = QApplication::activePopupWidget())
        return popup;
    if (QWidget *const dialog = QApplication::activeModalWidget())
        return dialog;
    return m_window->isVisible() ? &*m_window : nullptr;
}

QWidget *Monkey::randomWidget()
{
    QWidget *const window = usableWindow();
    if (!window)
        return nullptr;
    // What a person would hit: large widgets more often than small ones, and none that is covered.
    for (int attempt = 0; attempt < 5; ++attempt) {
        QWidget *const widget = window->childAt(randomPoint(*window));
        if (widget && widget->isEnabled())
            return widget;
    }
    return window;
}

QPoint Monkey::randomPoint(const QWidget &widget)
{
    return {random(qMax(1, widget.width())), random(qMax(1, widget.height()))};
}

int Monkey::random(int below)
{
    return below < 1 ? 0 : std::uniform_int_distribution<int>(0, below - 1)(m_random);
}
