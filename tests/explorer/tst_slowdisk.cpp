// SPDX-License-Identifier: MIT
#include "explorerwindow.h"
#include "historydata.h"

#include "explorer/application/extensions.h"
#include "explorer/extras/recordingwidget.h"
#include "explorer/extras/webtunnel.h"
#include "explorer/plot/exportbar.h"
#include "explorer/plot/plotview.h"
#include "explorer/plot/timeplot.h"
#include "explorer/sensor/diskthread.h"
#include "explorer/sensor/parameterfile.h"
#include "explorer/window/parameterpanel.h"
#include "explorer/window/recordingloader.h"

#include <QDir>
#include <QFile>
#include <QLabel>
#include <QMessageBox>
#include <QSemaphore>
#include <QtTest>

#include <memory>

#ifdef Q_OS_UNIX
#    include <fcntl.h>
#    include <sys/stat.h>
#    include <unistd.h>
#endif

using namespace Explorer;
using namespace HistoryData;
using namespace SondixQt;

namespace {

/// A disk that does nothing until release().
class HangingDisk
{
public:
    HangingDisk()
    {
        DiskThread::setDelay([works = m_works, reached = m_reached] {
            reached->release();
            works->acquire();
        });
    }
    ~HangingDisk() { release(); }
    Q_DISABLE_COPY(HangingDisk)

    void release()
    {
        DiskThread::setDelay({});
        m_works->release(100000);
    }
    /// Work has arrived at the disk.
    bool isReached() const { return m_reached->available() > 0; }

private:
    std::shared_ptr<QSemaphore> m_works = std::make_shared<QSemaphore>();
    std::shared_ptr<QSemaphore> m_reached = std::make_shared<QSemaphore>();
};

/// Whether events are processed while the disk hangs.
bool eventsRunBeside(const HangingDisk &disk)
{
    int events = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &timer, [&events] { ++events; });
    timer.start(1);
    return QTest::qWaitFor([&] { return disk.isReached() && events >= 10; });
}

/// The question that a closed window asks while files are being written; null: none.
QMessageBox *waitingBox()
{
    for (QWidget *widget : QApplication::topLevelWidgets())
        if (widget->objectName() == "waitingForFiles" && widget->isVisible())
            return static_cast<QMessageBox *>(widget);
    return nullptr;
}

} // namespace

/// Disks that do not answer: the window goes on, and nothing is lost.
class SlowDiskTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void settingsAreSavedAndLoaded();
    void anotherSensorDoesNotGetTheSettings();
    void exportsGoOn_data();
    void exportsGoOn();
    void aCancelledExportIsRemovedLater();
    void aViewEndsBeforeItsDisk();
    void aClosedPageFinishesItsExport();
    void aClosedRecordingFinishesItsExport();
    void theWindowWaitsForItsFiles_data();
    void theWindowWaitsForItsFiles();
    void theWindowWaitsForItsRecordings();
    void theFolderOfARecordingMayHang();
    void aRecordingThatHangsIsClosed();

private:
    QString path(const QString &name) const { return m_dir->filePath(name); }
    QStringList files() const { return QDir(m_dir->path()).entryList(QDir::Files); }
    std::unique_ptr<PlotView> makeView();

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<ExplorerWindow> m_window;
    std::unique_ptr<SignalHistory> m_history;
};

void SlowDiskTest::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    QLocale::setDefault(QLocale::c());
    loadExplorerBench();
    m_window = std::make_unique<ExplorerWindow>();
    m_window->open();
    QVERIFY(QTest::qWaitForWindowExposed(&**m_window));
}

void SlowDiskTest::cleanup()
{
    m_window.reset();
    QTRY_COMPARE(DiskThread::unfinishedWrites(), 0);
}

// 100000 frames, more than are exported at once.
std::unique_ptr<PlotView> SlowDiskTest::makeView()
{
    constexpr int count = 100000;
    m_history = std::make_unique<SignalHistory>();
    m_history->begin(frameOf(2));
    QVector<double> values(2 * count);
    for (int i = 0; i < values.size(); ++i)
        values[i] = i / 2;
    m_history->append(DataBlock(0, 0, 2, values, QVector<qint32>(values.size()), 50.0, 0.001));
    auto view = std::make_unique<PlotView>();
    view->resize(640, 400);
    view->setHistory(m_history.get());
    return view;
}

void SlowDiskTest::settingsAreSavedAndLoaded()
{
    SessionView *const view = m_window->openFirst();
    QVERIFY(view);
    QTRY_VERIFY(!view->parameters()->isBusy());
    ParameterPanel *const panel = (*m_window)->parameterPanel();
    QSignalSpy done(panel, &ParameterPanel::fileDone);
    {
        HangingDisk disk;
        QVERIFY(panel->saveTo(path("settings.json")));
        QVERIFY(eventsRunBeside(disk));
        QVERIFY(done.isEmpty());
        QVERIFY(files().isEmpty());
        QVERIFY(m_window->child<QLabel>("parameterMessage")->text().contains("Saving"));
    }
    QTRY_COMPARE(done.size(), 1);
    QCOMPARE(done.first().at(1).toString(), QString());
    QString problem;
    QVERIFY(ParameterFile::load(path("settings.json"), &problem));
    m_window->type(m_window->shownValue("SA_Measrate"), "2.5");
    QTRY_COMPARE(m_window->shownValue("SA_Measrate").data().toString(), QString("2.5 kHz"));
    QTRY_VERIFY(!view->parameters()->isBusy());
    {
        HangingDisk disk;
        QVERIFY(panel->loadFrom(path("settings.json")));
        QVERIFY(eventsRunBeside(disk));
        QCOMPARE(done.size(), 1);
        QCOMPARE(m_window->shownValue("SA_Measrate").data().toString(), QString("2.5 kHz"));
    }
    QTRY_COMPARE(m_window->shownValue("SA_Measrate").data().toString(), QString("1 kHz"));
    QCOMPARE(done.size(), 2);
}

void SlowDiskTest::anotherSensorDoesNotGetTheSettings()
{
    SessionView *const view = m_window->openFirst();
    QVERIFY(view);
    QTRY_VERIFY(!view->parameters()->isBusy());
    ParameterPanel *const panel = (*m_window)->parameterPanel();
    QSignalSpy done(panel, &ParameterPanel::fileDone);
    HangingDisk disk;
    QVERIFY(panel->loadFrom(path("settings.json")));
    QVERIFY(eventsRunBeside(disk));
    m_window->action("closePageAction")->trigger();
    disk.release();
    QTRY_COMPARE(done.size(), 1);
    QVERIFY2(done.first().at(1).toString().contains("another sensor"), qPrintable(done.first().at(1).toString()));
}

void SlowDiskTest::exportsGoOn_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"all.csv", "all.npy", "all.jsonl", "plot.png", "plot.pdf"})
        QTest::newRow(name) << name;
}

void SlowDiskTest::exportsGoOn()
{
    QFETCH(QString, name);
    const std::unique_ptr<PlotView> view = makeView();
    QSignalSpy finished(view.get(), &PlotView::exportFinished);
    HangingDisk disk;
    view->startExport(path(name), PlotView::ExportRange::Everything);
    QVERIFY(eventsRunBeside(disk));
    QVERIFY(finished.isEmpty());
    QVERIFY(view->isExporting());
    QVERIFY(files().isEmpty());
    disk.release();
    QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, 30000);
    QCOMPARE(finished.first().at(1).toString(), QString());
    QVERIFY(!view->isExporting());
    QFile file(path(name));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray content = file.readAll();
    QVERIFY(!content.isEmpty());
    if (name.endsWith("csv"))
        QVERIFY2(content.trimmed().endsWith(",99999,99999"), content.right(60).constData());
}

void SlowDiskTest::aCancelledExportIsRemovedLater()
{
    const std::unique_ptr<PlotView> view = makeView();
    QSignalSpy finished(view.get(), &PlotView::exportFinished);
    HangingDisk disk;
    view->startExport(path("first.csv"), PlotView::ExportRange::Everything);
    QVERIFY(eventsRunBeside(disk));
    view->startExport(path("first.csv"), PlotView::ExportRange::Everything);
    QCOMPARE(finished.size(), 1); // reported although the disk hangs
    QVERIFY(finished.first().at(1).toString().contains("cancelled"));
    disk.release();
    QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 2, 30000);
    QCOMPARE(finished.at(1).at(1).toString(), QString());
    QCOMPARE(files(), QStringList{"first.csv"});
}

void SlowDiskTest::aViewEndsBeforeItsDisk()
{
    std::unique_ptr<PlotView> view = makeView();
    HangingDisk disk;
    view->startExport(path("all.csv"), PlotView::ExportRange::Everything);
    QVERIFY(eventsRunBeside(disk));
    view.reset(); // would never return if it waited for the disk
    m_history.reset();
    QVERIFY(DiskThread::unfinishedWrites() > 0);
    disk.release();
    QTRY_COMPARE(DiskThread::unfinishedWrites(), 0);
    QCOMPARE(files(), QStringList());
}

void SlowDiskTest::aClosedPageFinishesItsExport()
{
    SessionView *const view = m_window->openFirst();
    QVERIFY(view);
    sondixsim::advance(1.0);
    QTRY_VERIFY(view->session()->framesRead() > 100);
    HangingDisk disk;
    view->plot()->startExport(path("all.csv"), PlotView::ExportRange::Everything);
    QVERIFY(eventsRunBeside(disk));
    m_window->action("closePageAction")->trigger();
    QTRY_VERIFY2(m_window->logText().contains("goes on"), qPrintable(m_window->logText()));
    disk.release();
    QTRY_VERIFY2(m_window->logText().contains("Exported to"), qPrintable(m_window->logText()));
    QCOMPARE(files(), QStringList{"all.csv"});
    QTRY_VERIFY((*m_window)->findChildren<SessionView *>().isEmpty());
}

// Its page has no sensor: nothing looks for one while the export goes on.
void SlowDiskTest::aClosedRecordingFinishesItsExport()
{
    QFile recording(path("recording.csv"));
    QVERIFY(recording.open(QIODevice::WriteOnly));
    recording.write("# sensor: TX270-10\n# rate: 1000 Hz\nframe,time [s],Distance 1 [mm]\n0,0,1\n1,0.001,2\n");
    recording.close();
    (*m_window)->openArgument(path("recording.csv"));
    QTRY_VERIFY((*m_window)->currentView());
    QTRY_VERIFY((*m_window)->currentView()->plot()->plot().history()->endFrame() == 2);
    HangingDisk disk;
    (*m_window)->currentView()->plot()->startExport(path("all.csv"), PlotView::ExportRange::Everything);
    QVERIFY(eventsRunBeside(disk));
    m_window->action("closePageAction")->trigger();
    SessionView *const view = m_window->openFirst();
    QVERIFY(view);
    disk.release();
    QTRY_VERIFY2(m_window->logText().contains("Exported to"), qPrintable(m_window->logText()));
    QVERIFY(QFile::exists(path("all.csv")));
}

void SlowDiskTest::theWindowWaitsForItsFiles_data()
{
    QTest::addColumn<bool>("hangs");
    QTest::newRow("alone") << false;
    QTest::newRow("beside a web interface that hangs") << true;
}

void SlowDiskTest::theWindowWaitsForItsFiles()
{
    QFETCH(bool, hangs);
    auto *const extensions = new Extensions(**m_window);
    SessionView *const view = m_window->openFirst();
    QVERIFY(view);
    QTRY_VERIFY(!view->parameters()->isBusy());
    if (hangs) {
        WebTunnel *const web = extensions->web(view);
        web->setBrowser([](const QUrl &) { return true; });
        web->action()->trigger();
        QTRY_COMPARE(web->state(), WebTunnel::Open);
        sondixsim::Fault fault;
        fault.function = "CloseSensor";
        fault.hang = true;
        sondixsim::inject(fault);
    }
    HangingDisk disk;
    QVERIFY((*m_window)->parameterPanel()->saveTo(path("settings.json")));
    QVERIFY(eventsRunBeside(disk));
    (*m_window)->close();
    QVERIFY(!(*m_window)->isVisible());
    QTRY_VERIFY(waitingBox());
    QVERIFY(waitingBox()->text().contains("still being written"));
    disk.release();
    QTRY_VERIFY(QFile::exists(path("settings.json")));
    QTRY_VERIFY(!waitingBox());
    sondixsim::clearFaults(); // and ends the hanging call
}

void SlowDiskTest::theWindowWaitsForItsRecordings()
{
    auto *const extensions = new Extensions(**m_window);
    SessionView *const view = m_window->openFirst();
    QVERIFY(view);
    HangingDisk disk;
    QVERIFY(extensions->recording(view)->control().start(path("values.csv"), nullptr));
    QVERIFY(eventsRunBeside(disk));
    sondixsim::advance(1.0);
    QTRY_COMPARE(view->session()->framesRead(), 1000);
    (*m_window)->close();
    QVERIFY(!(*m_window)->isVisible());
    QTRY_VERIFY(waitingBox());
    QVERIFY(files().isEmpty());
    disk.release();
    QTRY_COMPARE(files(), QStringList{"values.csv"});
    QTRY_VERIFY(!waitingBox());
    QFile file(path("values.csv"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray last = file.readAll().trimmed().split('\n').last();
    QVERIFY2(last.startsWith("999,"), last.constData());
}

void SlowDiskTest::theFolderOfARecordingMayHang()
{
    auto *const extensions = new Extensions(**m_window);
    SessionView *const view = m_window->openFirst();
    QVERIFY(view);
    QSettings().setValue("recording/folder", m_dir->path());
    RecordingWidget *const recording = extensions->recording(view);
    {
        HangingDisk disk;
        recording->recordAction()->trigger();
        QVERIFY(eventsRunBeside(disk));
        QVERIFY(recording->recordAction()->isChecked());
        QVERIFY(!recording->control().isRecording());
        recording->recordAction()->trigger(); // not any more
    }
    recording->recordAction()->trigger();
    QTRY_VERIFY(recording->control().isRecording());
    recording->recordAction()->trigger();
    QTRY_VERIFY(!recording->control().isRecording());
    QCOMPARE(files().size(), 1);
}

void SlowDiskTest::aRecordingThatHangsIsClosed()
{
#ifdef Q_OS_UNIX
    // Opening a pipe waits for the other side.
    const QByteArray pipe = QFile::encodeName(path("pipe.csv"));
    QCOMPARE(mkfifo(pipe.constData(), 0600), 0);
    auto loader = std::make_unique<RecordingLoader>(path("pipe.csv"));
    QSignalSpy opened(loader.get(), &RecordingLoader::opened);
    QSignalSpy refused(loader.get(), &RecordingLoader::refused);
    int writer = -1;
    QTRY_VERIFY((writer = open(pipe.constData(), O_WRONLY | O_NONBLOCK)) >= 0); // fails until it is being read
    QVERIFY(opened.isEmpty());
    QVERIFY(refused.isEmpty());
    QElapsedTimer timer;
    timer.start();
    loader.reset();
    constexpr qint64 waitOfBefore = 5000;
    QVERIFY2(timer.elapsed() < waitOfBefore / 2, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(::write(writer, "#", 1), 1); // it is still being read
    ::close(writer);
#else
    QSKIP("needs a named pipe");
#endif
}

QTEST_MAIN(SlowDiskTest)
#include "tst_slowdisk.moc"
