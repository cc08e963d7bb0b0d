// SPDX-License-Identifier: MIT
#include "eventloopwatch.h"
#include "explorerwindow.h"

#include "explorer/application/extensions.h"
#include "explorer/extras/benchmenu.h"
#include "explorer/extras/recordingwidget.h"
#include "explorer/extras/videoview.h"
#include "explorer/extras/webtunnel.h"
#include "explorer/plot/plotpicture.h"
#include "explorer/plot/plotview.h"
#include "explorer/window/findpanel.h"
#include "explorer/window/parameterpanel.h"
#include "explorer/window/sessionview.h"

#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>

using namespace Explorer;
using namespace SondixQt;
using State = SensorReader::State;

/// Nothing keeps the window from its events for more than 100 ms, however slow sensor and disk are. See EventLoopWatch
/// for what is measured.
class WindowBlockingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void theWatchSeesWorkAndWaits();
    void search();
    void openAndClose();
    void settings();
    void recording();
    void showARecording();
    void webInterface();
    void closeAPageWithItsWebInterface();
    void closingIsQuickWhileTheSensorHangs();
    void videoLine();
    void bench();
    void zoom();
    void exportTables_data();
    void exportTables();
    void everyAction_data();
    void everyAction();

private:
    static constexpr double sensorDelay = 1.2; // seconds
    // The bounds are those of a program with optimisation.
#if defined(__SANITIZE_ADDRESS__) || !defined(NDEBUG)
    static constexpr double slowness = 3.0;
#else
    static constexpr double slowness = 1.0;
#endif
    static constexpr double waitShare = 0.3;
    static constexpr double longestWork = 100.0 * slowness;              // milliseconds
    static constexpr double longestWait = 1e3 * sensorDelay * waitShare; // milliseconds

    static void slowDown(const char *function, const char *command = "");
    void check(const char *what);

    std::unique_ptr<ExplorerWindow> m_window;
    Extensions *m_extensions = nullptr;
    std::unique_ptr<EventLoopWatch> m_watch;
};

void WindowBlockingTest::init()
{
    loadExplorerBench();
    sondixsim::setLineSpeedEffect(false);
    m_window = std::make_unique<ExplorerWindow>();
    m_window->open();
    m_extensions = new Extensions(**m_window);
    QSettings().setValue("recording/folder", m_window->folder());
    QVERIFY(QTest::qWaitForWindowExposed(&**m_window));
    m_watch = std::make_unique<EventLoopWatch>();
}

void WindowBlockingTest::cleanup()
{
    sondixsim::releaseHangs();
    sondixsim::clearFaults();
    m_watch.reset();
    m_window.reset();
}

void WindowBlockingTest::slowDown(const char *function, const char *command)
{
    sondixsim::Fault slow;
    slow.delay = sensorDelay;
    slow.function = function;
    slow.command = command;
    sondixsim::inject(slow);
}

void WindowBlockingTest::check(const char *what)
{
    const double work = m_watch->longestWork();
    const double wait = m_watch->longestWait();
    QVERIFY2(work < longestWork, qPrintable(QString("%1: %2 ms of work").arg(what).arg(work)));
    QVERIFY2(wait < longestWait, qPrintable(QString("%1: %2 ms of waiting").arg(what).arg(wait)));
    m_watch->restart();
}

void WindowBlockingTest::theWatchSeesWorkAndWaits()
{
    QTimer::singleShot(0, this, [] {
        const double begin = threadProcessorSeconds();
        while (threadProcessorSeconds() - begin < 0.2) {
        }
    });
    QTest::qWait(20);
    QVERIFY(m_watch->longestWork() >= 190.0);
    m_watch->restart();
    QTimer::singleShot(0, this, [] { QThread::msleep(700); });
    QTest::qWait(20);
    QVERIFY(m_watch->longestWait() >= 600.0);
}

void WindowBlockingTest::search()
{
    sondixsim::loadBuiltInBench();
    sondixsim::useRealClock(50.0);
    auto *button = m_window->child<QPushButton>("searchButton");
    QTest::mouseClick(button, Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(!(*m_window)->findPanel()->search().isRunning(), 60000);
    QVERIFY((*m_window)->findPanel()->sensors().rowCount() > 20);
    check("search");
    slowDown("", "Start_FindSensor");
    QTest::mouseClick(button, Qt::LeftButton);
    QTest::qWait(100);
    QTest::mouseClick(button, Qt::LeftButton); // cancelled
    QTRY_VERIFY_WITH_TIMEOUT(!(*m_window)->findPanel()->search().isRunning(), 60000);
    check("cancel a search");
}

void WindowBlockingTest::openAndClose()
{
    slowDown("OpenSensor");
    slowDown("CloseSensor");
    QVERIFY(m_window->openFirst());
    check("open");
    m_window->action("closePageAction")->trigger();
    QTRY_VERIFY((*m_window)->findChildren<SessionView *>().isEmpty());
    check("close");
}

void WindowBlockingTest::settings()
{
    SessionView *const view = m_window->openFirst();
    QVERIFY(view);
    QTRY_VERIFY(!view->parameters()->isBusy());
    check("read settings");
    slowDown("", "Set_Samplerate");
    QVERIFY((*m_window)->parameterPanel()->saveTo(m_window->folder() + "/settings.json"));
    auto *line = m_window->child<QLineEdit>("commandLine");
    line->setText("Set_Samplerate SP_Measrate=2.5");
    QTest::keyClick(line, Qt::Key_Return);
    QTRY_VERIFY(line->text().isEmpty());
    QTest::qWait(static_cast<int>(1e3 * sensorDelay));
    QVERIFY((*m_window)->parameterPanel()->loadFrom(m_window->folder() + "/settings.json"));
    QTRY_VERIFY(!view->parameters()->isBusy());
    check("change settings");
}

void WindowBlockingTest::recording()
{
    SessionView *const view = m_window->openFirst();
    QVERIFY(view);
    RecordingControl &control = m_extensions->recording(view)->control();
    for (const QString &suffix : RecordingControl::suffixes()) {
        QSettings().setValue("recording/suffix", suffix);
        m_window->action("menuRecordAction")->trigger();
        QTRY_VERIFY(control.isRecording());
        for (int i = 0; i < 2; ++i) {
            sondixsim::advance(25.0);
            QTRY_VERIFY(control.frames() >= (i + 1) * 22500);
        }
        m_window->action("menuRecordAction")->trigger();
        QTRY_VERIFY(!control.isRecording());
        check(qPrintable("record " + suffix));
    }
}

void WindowBlockingTest::showARecording()
{
    QFile file(m_window->folder() + "/long.csv");
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("# sensor: TX270-10\n# rate: 1000 Hz\n");
    for (int i = 0; i < 400000; ++i) // reading the head takes time as well
        file.write("# a note of the user\n");
    file.write("frame,time [s],Distance 1 [mm],Distance 2 [mm]\n");
    constexpr int frames = 300000;
    for (int i = 0; i < frames; ++i)
        file.write(QByteArray::number(i) + ',' + QByteArray::number(0.001 * i, 'f', 3) + ",5.25," +
                   QByteArray::number(i % 10) + '\n');
    file.close();
    m_watch->restart();
    QVERIFY((*m_window)->openArgument(file.fileName()));
    QTRY_VERIFY_WITH_TIMEOUT((*m_window)->currentView(), 60000);
    SessionView *const view = (*m_window)->currentView();
    QTRY_VERIFY_WITH_TIMEOUT(
        view->findChild<QLabel *>("sessionCounts")->text() == QLocale().toString(frames) + " frames", 60000);
    check("read a recording");
    m_window->action("closePageAction")->trigger();
    QTest::qWait(50);
    check("close a recording");
}

void WindowBlockingTest::webInterface()
{
    SessionView *const view = m_window->openFirst();
    QVERIFY(view);
    WebTunnel *const web = m_extensions->web(view);
    web->setBrowser([](const QUrl &) { return true; });
    slowDown("", "Get_DataOutInterface");
    slowDown("OpenSensor");
    m_window->action("menuWebAction")->trigger();
    QTRY_COMPARE(web->state(), WebTunnel::Open);
    check("open the web interface");
    m_window->action("menuWebAction")->trigger();
    QTRY_COMPARE(view->session()->state(), State::Reading);
    check("close the web interface");
}

void WindowBlockingTest::closeAPageWithItsWebInterface()
{
    QPointer<SessionView> view = m_window->openFirst();
    QVERIFY(view);
    WebTunnel *const web = m_extensions->web(view);
    web->setBrowser([](const QUrl &) { return true; });
    m_window->action("menuWebAction")->trigger();
    QTRY_COMPARE(web->state(), WebTunnel::Open);
    slowDown("CloseSensor");
    m_watch->restart();
    m_window->action("closePageAction")->trigger();
    QVERIFY((*m_window)->views().isEmpty());
    QTRY_VERIFY(!view);
    check("close a page with its web interface");
}

void WindowBlockingTest::closingIsQuickWhileTheSensorHangs()
{
    QVERIFY(m_window->openFirst());
    sondixsim::Fault fault;
    fault.function = "DataAvail";
    fault.hang = true;
    sondixsim::inject(fault);
    QTest::qWait(150); // the reader hangs in its next call
    QElapsedTimer timer;
    timer.start();
    m_watch->restart();
    (*m_window)->close();
    check("close while the sensor hangs");
    QVERIFY(!(*m_window)->isVisible());
    sondixsim::releaseHangs();
    m_window.reset();
    QVERIFY(timer.elapsed() < 30000); // the reader's thread has ended
}

void WindowBlockingTest::videoLine()
{
    SessionView *const view = (*m_window)->openSensor(secondAddress());
    QTRY_COMPARE(view->session()->state(), State::Reading);
    slowDown("GetParameterBinary");
    m_window->action("menuVideoAction")->trigger();
    QTRY_VERIFY(!m_extensions->video(view)->state().available.isEmpty());
    QTest::qWait(500);
    check("video line");
}

void WindowBlockingTest::bench()
{
    SessionView *const view = m_window->openFirst();
    QVERIFY(view);
    sondixsim::Fault hang;
    hang.function = "DataAvail";
    hang.hang = true;
    hang.times = 1;
    sondixsim::inject(hang);
    QTest::qWait(200); // the reader hangs in its next call
    m_watch->restart();
    auto *menu = m_window->child<BenchMenu>("benchMenu");
    menu->refresh(); // has to wait for the sensor
    QTest::qWait(static_cast<int>(1e3 * sensorDelay));
    sondixsim::releaseHangs();
    QTRY_VERIFY(!m_window->child<QMenu>("cablesMenu")->isEmpty());
    m_window->child<QMenu>("cablesMenu")->actions().first()->trigger();
    QTRY_COMPARE(view->session()->state(), State::Reconnecting);
    m_window->child<QMenu>("cablesMenu")->actions().first()->trigger();
    QTRY_COMPARE(view->session()->state(), State::Reading);
    check("bench");
}

void WindowBlockingTest::zoom()
{
    SessionView *const view = m_window->openFirst();
    QVERIFY(view);
    for (int i = 0; i < 10; ++i) { // ten minutes
        sondixsim::advance(60.0);
        QTRY_VERIFY(view->session()->framesRead() >= (i + 1) * 59400);
    }
    for (const char *name : {"statisticsAction", "histogramAction", "spectrumAction", "cursorsAction"})
        view->plot()->plotAction(name)->trigger();
    check("show ten minutes with statistics, histogram and spectrum");
    for (int i = 0; i < 10; ++i) {
        view->plot()->showEverything();
        QTest::qWait(30);
        view->plot()->setWindow({i + 1.0, i + 1.001});
        QTest::qWait(30);
    }
    check("zoom");
}

void WindowBlockingTest::exportTables_data()
{
    QTest::addColumn<QString>("name");
    QStringList suffixes = PlotPicture::suffixes();
    suffixes += {"csv", "npy", "jsonl"};
    for (const QString &suffix : qAsConst(suffixes))
        QTest::newRow(qPrintable(suffix)) << "all." + suffix;
}

void WindowBlockingTest::exportTables()
{
    QFETCH(QString, name);
    SessionView *const view = m_window->openFirst();
    QVERIFY(view);
    for (int i = 0; i < 2; ++i) {
        sondixsim::advance(50.0);
        QTRY_VERIFY(view->session()->framesRead() >= (i + 1) * 49500);
    }
    QSignalSpy finished(view->plot(), &PlotView::exportFinished);
    QTest::qWait(100);
    m_watch->restart();
    view->plot()->startExport(m_window->folder() + '/' + name, PlotView::ExportRange::Everything);
    QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, 60000);
    QCOMPARE(finished.first()[1].toString(), QString());
    check(qPrintable(name));
}

void WindowBlockingTest::everyAction_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"keyboardAction", "aboutAction", "sideBySideAction", "numbersAction"})
        QTest::newRow(name) << name;
}

void WindowBlockingTest::everyAction()
{
    QFETCH(QString, name);
    QVERIFY(m_window->openFirst());
    (*m_window)->openSensor(secondAddress());
    QTest::qWait(300);
    m_watch->restart();
    for (int i = 0; i < 2; ++i) {
        m_window->action(qPrintable(name))->trigger();
        QTest::qWait(100);
        check(qPrintable(name));
        if (QWidget *const dialog = QApplication::activeModalWidget())
            dialog->close();
    }
}

QTEST_MAIN(WindowBlockingTest)
#include "tst_windowblocking.moc"
