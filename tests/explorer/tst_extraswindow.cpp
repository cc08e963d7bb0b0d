// SPDX-License-Identifier: MIT
#include "explorerwindow.h"

#include "explorer/application/extensions.h"
#include "explorer/extras/benchmenu.h"
#include "explorer/extras/recordingwidget.h"
#include "explorer/extras/videoview.h"
#include "explorer/extras/webtunnel.h"
#include "explorer/window/logpanel.h"
#include "explorer/window/sessionview.h"

#include <QCheckBox>
#include <QMenuBar>

using namespace Explorer;
using namespace SondixQt;

/// What is added to the main window: recording, video, web interface and the bench.
class ExtrasWindowTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        loadExplorerBench();
        sondixsim::setLineSpeedEffect(false);
        m_window = std::make_unique<ExplorerWindow>();
        m_window->open();
        QSettings().setValue("recording/folder", m_window->folder());
        m_extensions = new Extensions(**m_window);
    }
    void cleanup() { m_window.reset(); }

    void nothingIsPossibleWithoutASensor();
    void recordsThePageInFront();
    void closingThePageFinishesTheFile();
    void showsVideoBesideThePlot();
    void settingsFollowWhatTheVideoViewSwitches();
    void opensTheWebInterface();
    void whatBeginsOnAClosedPageIsEnded_data();
    void whatBeginsOnAClosedPageIsEnded();
    void hasTheMenuOfTheBench();

private:
    SessionView *open(const SensorAddress &address)
    {
        SessionView *view = (*m_window)->openSensor(address);
        QElapsedTimer timer;
        timer.start();
        while (view->session()->state() != SensorReader::Reading && timer.elapsed() < 5000)
            QTest::qWait(10);
        return view;
    }
    QString logText() const
    {
        const LogModel &log = (*m_window)->logPanel()->model();
        QList<int> rows;
        for (int row = 0; row < log.rowCount(); ++row)
            rows.append(row);
        return log.text(rows);
    }

    std::unique_ptr<ExplorerWindow> m_window;
    Extensions *m_extensions = nullptr;
};

void ExtrasWindowTest::nothingIsPossibleWithoutASensor()
{
    for (const char *name : {"menuRecordAction", "menuRecordToAction", "menuVideoAction", "menuWebAction"})
        QVERIFY2(!m_window->action(name)->isEnabled(), name);
}

void ExtrasWindowTest::recordsThePageInFront()
{
    SessionView *view = open(firstAddress());
    QCOMPARE(view->session()->state(), SensorReader::Reading);
    RecordingWidget *recording = m_extensions->recording(view);
    QVERIFY(recording);
    m_window->action("menuRecordAction")->trigger();
    QTRY_VERIFY(recording->control().isRecording());
    QVERIFY(m_window->action("menuRecordAction")->isChecked());
    sondixsim::advance(0.5);
    QTRY_VERIFY(recording->control().frames() >= 400);
    // Another page is not recorded.
    open(secondAddress());
    QVERIFY(!m_window->action("menuRecordAction")->isChecked());
    recording->control().stop();
    QTRY_VERIFY(!recording->control().isRecording());
    QCOMPARE(QDir(m_window->folder()).entryList({"*.csv"}).size(), 1);
    QVERIFY2(logText().contains("1001"), qPrintable(logText()));
}

void ExtrasWindowTest::closingThePageFinishesTheFile()
{
    SessionView *view = open(firstAddress());
    m_window->action("menuRecordAction")->trigger();
    QTRY_VERIFY(m_extensions->recording(view)->control().isRecording());
    sondixsim::advance(0.3);
    QTRY_VERIFY(m_extensions->recording(view)->control().frames() >= 200);
    QPointer<SessionView> guard(view);
    (*m_window)->closePage(view);
    QTRY_VERIFY(!guard);
    QCOMPARE(QDir(m_window->folder()).entryList({"*.csv"}).size(), 1);
    QVERIFY(QDir(m_window->folder()).entryList({"*.partial"}).isEmpty());
    QVERIFY(!m_window->action("menuRecordAction")->isEnabled());
}

void ExtrasWindowTest::showsVideoBesideThePlot()
{
    SessionView *view = open(secondAddress());
    QVERIFY(!m_extensions->video(view));
    m_window->action("menuVideoAction")->trigger();
    VideoView *video = m_extensions->video(view);
    QVERIFY(video);
    QTRY_VERIFY(video->isVisible());
    QTRY_VERIFY(!video->state().available.isEmpty());
    m_window->action("menuVideoAction")->trigger();
    QCOMPARE(m_extensions->video(view), video);
}

void ExtrasWindowTest::settingsFollowWhatTheVideoViewSwitches()
{
    SessionView *view = open(secondAddress());
    const QModelIndex value = m_window->shownValue("SA_OutputVideoRaw_ETH");
    QVERIFY(value.isValid());
    m_window->action("menuVideoAction")->trigger();
    VideoView *video = m_extensions->video(view);
    QTRY_VERIFY(video->findChild<QCheckBox *>("OutputVideoRaw"));
    const int before = value.data(Qt::EditRole).toInt();
    const QPersistentModelIndex shown(value);
    video->findChild<QCheckBox *>("OutputVideoRaw")->click();
    QTRY_VERIFY(shown.data(Qt::EditRole).toInt() != before);
}

void ExtrasWindowTest::opensTheWebInterface()
{
    SessionView *view = open(firstAddress());
    WebTunnel *web = m_extensions->web(view);
    QVERIFY(web);
    QUrl shown;
    web->setBrowser([&shown](const QUrl &url) {
        shown = url;
        return true;
    });
    m_window->action("menuWebAction")->trigger();
    QTRY_COMPARE(web->state(), WebTunnel::Open);
    QCOMPARE(shown, web->url());
    QVERIFY(m_window->action("menuWebAction")->isChecked());
    m_window->action("menuWebAction")->trigger();
    QTRY_COMPARE(view->session()->state(), SensorReader::Reading);
    open(secondAddress());
    QVERIFY(!m_window->action("menuWebAction")->isEnabled());
}

void ExtrasWindowTest::whatBeginsOnAClosedPageIsEnded_data()
{
    QTest::addColumn<bool>("isWeb");
    QTest::newRow("recording") << false;
    QTest::newRow("web interface") << true;
}

/// Such as by an action that was triggered before the page was closed.
void ExtrasWindowTest::whatBeginsOnAClosedPageIsEnded()
{
    QFETCH(bool, isWeb);
    const QPointer<SessionView> view = open(firstAddress());
    QVERIFY(view);
    RecordingControl &recording = m_extensions->recording(view)->control();
    WebTunnel *const web = m_extensions->web(view);
    web->setBrowser([](const QUrl &) { return true; });
    bool hasBegun = false;
    (*m_window)->closePage(view);
    connect(view->session(), &SensorSession::closed, this, [&] { // the page has begun to end
        if (isWeb)
            web->action()->trigger();
        else
            recording.start(m_window->folder() + "/late.csv", nullptr);
        hasBegun = isWeb ? web->state() != WebTunnel::Closed : recording.isRecording();
    });
    QTRY_VERIFY_WITH_TIMEOUT(!view, 10000);
    QVERIFY(hasBegun);
}

void ExtrasWindowTest::hasTheMenuOfTheBench()
{
    auto *menu = m_window->child<BenchMenu>("benchMenu");
    QVERIFY((*m_window)->menuBar()->actions().contains(menu->menuAction()));
    QSignalSpy refreshed(menu, &BenchMenu::refreshed);
    menu->refresh();
    QVERIFY(refreshed.wait(longestTestWait));
    m_window->child<QMenu>("cablesMenu")->actions().first()->trigger();
    QTRY_VERIFY(logText().contains("unplugged"));
}

QTEST_MAIN(ExtrasWindowTest)
#include "tst_extraswindow.moc"
