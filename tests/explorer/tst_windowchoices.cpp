// SPDX-License-Identifier: MIT
#include "explorerwindow.h"

#include "explorer/extras/recordingcontrol.h"
#include "explorer/plot/plotview.h"
#include "explorer/plot/timeplot.h"
#include "explorer/sensor/filenames.h"
#include "explorer/window/parameterpanel.h"

#include <QDir>
#include <QFileInfo>
#include <QToolButton>

using namespace Explorer;
using namespace SondixQt;

/// What the window remembers from one start to the next.
class WindowChoicesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void remembersThePlotOfASensor();
    void aNewSensorHasThePanelsChosenLast();
    void remembersThatEverythingIsShown();
    void aHiddenSignalStaysHiddenWhenTheFrameChanges();
    void sensorsWithAnyCharactersHaveChoicesOfTheirOwn();
    void proposedFilesHaveNoForbiddenCharacters();

private:
    static bool isOn(const SessionView &view, const char *action)
    {
        return view.plot()->plotAction(action)->isChecked();
    }
    /// Measures 4 seconds.
    static void measure(SessionView &view);

    std::unique_ptr<ExplorerWindow> window;
};

void WindowChoicesTest::init()
{
    QLocale::setDefault(QLocale::c());
    loadExplorerBench();
    window = std::make_unique<ExplorerWindow>();
    window->open();
    QVERIFY(QTest::qWaitForWindowExposed(&**window));
}

void WindowChoicesTest::cleanup()
{
    sondixsim::releaseHangs();
    sondixsim::clearFaults();
    window.reset();
}

void WindowChoicesTest::measure(SessionView &view)
{
    const qint64 before = view.session()->framesRead();
    sondixsim::advance(4.0);
    QTRY_VERIFY(view.session()->framesRead() >= before + 4000);
    QTRY_VERIFY(view.plot()->plot().shownFrames().count() > 400);
}

void WindowChoicesTest::remembersThePlotOfASensor()
{
    SessionView *view = window->openFirst();
    QVERIFY(view);
    measure(*view);
    for (const char *action : {"statisticsAction", "spectrumAction", "clockTimeAction"})
        view->plot()->plotAction(action)->setChecked(true);
    view->plot()->setSpan(0.5);
    QTest::mouseClick(view->plot()->findChild<QToolButton *>("signal1"), Qt::LeftButton);
    QVERIFY(!view->plot()->plot().isShown(1));
    window->close();

    window->open();
    view = window->openFirst();
    QVERIFY(view);
    measure(*view);
    QVERIFY(isOn(*view, "statisticsAction"));
    QVERIFY(isOn(*view, "spectrumAction"));
    QVERIFY(isOn(*view, "clockTimeAction"));
    QVERIFY(!isOn(*view, "histogramAction"));
    QVERIFY(view->plot()->findChild<QWidget *>("statisticsTable")->isVisible());
    QVERIFY(view->plot()->plot().isShown(0));
    QVERIFY(!view->plot()->plot().isShown(1));
    QVERIFY(!view->plot()->findChild<QToolButton *>("signal1")->isChecked());
    QVERIFY2(qAbs(view->plot()->window().width() - 0.5) < 1e-9,
             qPrintable(QString::number(view->plot()->window().width())));
    // A signal that is shown again is remembered as well.
    QTest::mouseClick(view->plot()->findChild<QToolButton *>("signal1"), Qt::LeftButton);
    (*window)->closePage(view);
    view = window->openFirst();
    QVERIFY(view);
    measure(*view);
    QVERIFY(view->plot()->plot().isShown(1));
}

void WindowChoicesTest::aNewSensorHasThePanelsChosenLast()
{
    SessionView *view = window->openFirst();
    QVERIFY(view);
    measure(*view);
    view->plot()->plotAction("histogramAction")->setChecked(true);
    view->plot()->setSpan(0.5);
    (*window)->closePage(view);
    view = (*window)->openSensor(secondAddress());
    QTRY_COMPARE(view->session()->state(), SensorReader::Reading);
    QVERIFY(isOn(*view, "histogramAction"));
    QVERIFY(!isOn(*view, "statisticsAction"));
    // Its own choice is kept when that of the other is changed.
    view->plot()->plotAction("histogramAction")->setChecked(false);
    (*window)->closePage(view);
    view = window->openFirst();
    QVERIFY(view);
    QVERIFY(isOn(*view, "histogramAction"));
}

void WindowChoicesTest::remembersThatEverythingIsShown()
{
    SessionView *view = window->openFirst();
    QVERIFY(view);
    measure(*view);
    view->plot()->showEverything();
    (*window)->closePage(view);
    view = window->openFirst();
    QVERIFY(view);
    QCOMPARE(view->plot()->mode(), PlotView::Everything);
    measure(*view);
    QTRY_VERIFY(view->plot()->window().width() > 3.9);
}

void WindowChoicesTest::aHiddenSignalStaysHiddenWhenTheFrameChanges()
{
    SessionView *const view = window->openFirst();
    QVERIFY(view);
    measure(*view);
    QTest::mouseClick(view->plot()->findChild<QToolButton *>("signal1"), Qt::LeftButton);
    view->session()->reader().addSetting("Set_Samplerate", {{"SP_Measrate", 2.0}});
    QTRY_VERIFY(view->session()->rate().value_or(0.0) > 1999.0);
    measure(*view);
    view->plot()->refresh();
    QVERIFY(!view->plot()->plot().isShown(1));
    QVERIFY(view->plot()->plot().isShown(0));
}

void WindowChoicesTest::sensorsWithAnyCharactersHaveChoicesOfTheirOwn()
{
    QStringList groups;
    QSettings settings;
    for (const QString &port :
         {QString("/dev/ttyS0"), QString("\\dev\\ttyS0"), QString("|dev|ttyS0"), QString("%2Fdev%2FttyS0"),
          QString("dev ttyS0"), QString("Prüfstand 1/2"), QString(300, 'x'), QString(300, 'x') + "y"}) {
        const SensorAddress address{TX270, {{"IP_Interface", "RS232"}, {"IP_Port", port}}};
        const QString group = settingsGroupOf(address);
        QVERIFY2(!groups.contains(group), qPrintable(group));
        groups += group;
        QVERIFY2(!group.contains('/') && !group.contains('\\') && group.size() < 255, qPrintable(group));
        settings.setValue(group + "/port", port);
    }
    settings.sync();
    QSettings again;
    for (const QString &group : qAsConst(groups)) {
        const QString port = again.value(group + "/port").toString();
        QCOMPARE(settingsGroupOf({TX270, {{"IP_Interface", "RS232"}, {"IP_Port", port}}}), group);
    }
    QStringList stored = again.childGroups();
    stored.sort();
    groups.sort();
    QCOMPARE(stored, groups); // none of them is a group in a group
}

void WindowChoicesTest::proposedFilesHaveNoForbiddenCharacters()
{
    QCOMPARE(fileNameOf("TX270 1/2\\3:4*5?6\"7<8>9|0\n"), QString("TX270 1_2_3_4_5_6_7_8_9_0_"));
    SensorAddress address = firstAddress();
    address.parameters["IP_Port"] = 99; // which is not there, so that it has the name given here
    SessionView *const view = (*window)->openSensor(address, "Line 1/2: a\\b");
    const QFileInfo settings((*window)->parameterPanel()->proposedPath());
    QCOMPARE(settings.fileName(), QString("Line_1_2__a_b.json"));
    QVERIFY(settings.dir().exists());
    const RecordingControl recording(*view->session());
    const QFileInfo file(RecordingControl::freePath(window->folder(), recording.proposedName(), "csv"));
    QVERIFY2(file.fileName().startsWith("Line 1_2_ a_b 20"), qPrintable(file.fileName()));
    QCOMPARE(QDir(file.path()), QDir(window->folder()));
}

QTEST_MAIN(WindowChoicesTest)
#include "tst_windowchoices.moc"
