// SPDX-License-Identifier: MIT
#include "support/unit.h"

#include "explorerwindow.h"

#include "explorer/plot/plotview.h"
#include "explorer/sensor/sensorsession.h"
#include "explorer/window/findpanel.h"
#include "explorer/window/logpanel.h"
#include "explorer/window/numbersview.h"
#include "explorer/window/numbertile.h"
#include "explorer/window/sessionview.h"
#include "support/scripting.h"

#include <SondixQt/sensorinstance.h>

#include <QClipboard>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>
#include <QTabBar>
#include <QToolButton>
#include <QTreeWidget>

using namespace Explorer;
using namespace SondixQt;
using State = SensorReader::State;

/// The window, driven by mouse and keys as a person would.
class WindowMainTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void explainsItselfAtTheFirstStart();
    void accessesNoSensorAtTheStart();
    void findsAndOpensASensor();
    void opensByAddress();
    void checksTheAddressWhileItIsTyped();
    void showsThatASensorIsGone();
    void showsThatASensorIsSilent();
    void opensAgainAfterAFailure();
    void sensorsAreShownSideBySide();
    void closingAPageEndsItsSensor();
    void aSensorThatIsStillClosingIsOpenedAgain();
    void theLogIsFilteredAndCopied();
    void tellsTheMemoryOfTheValuesKept();
    void exportsTellTheSensor();
    void showsARecording();
    void recordingsOfTheSimulatorAreMarked();
    void exportsOfARecordingTellItsSensor();
    void refusesFilesThatAreNoRecordings();
    void remembersSensorsAndChoices();
    void tellsTheKeys();
    void tellsWhichLibraryIsLoaded();

private:
    /// The lines of the head of a table with everything that the plot of \a view has.
    QStringList exportedHead(SessionView &view);

    std::unique_ptr<ExplorerWindow> window;
};

void WindowMainTest::init()
{
    QLocale::setDefault(QLocale::c());
    loadExplorerBench();
    window = std::make_unique<ExplorerWindow>();
    window->open();
    QVERIFY(QTest::qWaitForWindowExposed(&**window));
}

void WindowMainTest::cleanup()
{
    sondixsim::releaseHangs();
    sondixsim::clearFaults();
    window.reset();
}

void WindowMainTest::explainsItselfAtTheFirstStart()
{
    QVERIFY(window->child<QWidget>("welcome")->isVisible());
    QTest::mouseClick(window->child<QPushButton>("welcomeOpen"), Qt::LeftButton);
    (*window)->activateWindow();
    QTRY_COMPARE(QApplication::focusWidget(), static_cast<QWidget *>(window->child<QLineEdit>("addressEdit")));
    QTest::mouseClick(window->child<QPushButton>("welcomeSearch"), Qt::LeftButton);
    QVERIFY((*window)->findPanel()->search().isRunning());
}

void WindowMainTest::accessesNoSensorAtTheStart()
{
    window->close();
    sondixsim::clearCalls();
    sondixsim::recordCalls(true);
    window->open();
    QVERIFY(QTest::qWaitForWindowExposed(&**window));
    QTest::qWait(50);
    QVERIFY(sondixsim::calls().empty());
    sondixsim::recordCalls(false);
}

void WindowMainTest::findsAndOpensASensor()
{
    sondixsim::useRealClock(50.0);
    auto *button = window->child<QPushButton>("searchButton");
    auto *list = window->child<QListView>("sensorList");
    QTest::mouseClick(button, Qt::LeftButton);
    QVERIFY((*window)->findPanel()->search().isRunning());
    QTRY_VERIFY_WITH_TIMEOUT(!(*window)->findPanel()->search().isRunning(), 30000);
    QCOMPARE(list->model()->rowCount(), 2);
    QVERIFY(window->child<QLabel>("searchState")->text().startsWith("Sensors found: 2"));
    const QModelIndex row =
        list->model()->index((*window)->findPanel()->sensors().at(0).address.type == TX270 ? 0 : 1, 0);
    list->setCurrentIndex(row);
    list->setFocus();
    QTest::keyClick(list, Qt::Key_Return);
    QTRY_VERIFY((*window)->currentSession());
    QTRY_COMPARE((*window)->currentSession()->state(), State::Reading);
    QCOMPARE((*window)->currentSession()->title(), QString("TX270 1001"));
    QVERIFY(window->child<QLabel>("simulatedBanner")->isVisible());
    QVERIFY(!window->child<QWidget>("welcome")->isVisible());
    QVERIFY(row.data(SensorListModel::OpenRole).toBool());
    // Opening it again shows the same page.
    (*window)->openSensor((*window)->currentSession()->address());
    QCOMPARE((*window)->views().size(), 1);
}

void WindowMainTest::opensByAddress()
{
    auto *field = window->child<QLineEdit>("addressEdit");
    QTest::keyClicks(field, "tx270@rs232,port=3");
    QTest::keyClick(field, Qt::Key_Return);
    QVERIFY((*window)->currentSession());
    QTRY_COMPARE((*window)->currentSession()->state(), State::Reading);
    QVERIFY((*window)->windowTitle().startsWith("TX270 1001"));
    QVERIFY(window->child<QLabel>("currentState")->text().contains("reading"));
}

void WindowMainTest::checksTheAddressWhileItIsTyped()
{
    auto *field = window->child<QLineEdit>("addressEdit");
    auto *problem = window->child<QLabel>("addressProblem");
    auto *open = window->child<QPushButton>("openButton");
    QVERIFY(!open->isEnabled());
    QVERIFY(!problem->isVisible());
    QTest::keyClicks(field, "TX271@RS232");
    QVERIFY(problem->isVisible());
    QVERIFY2(problem->text().contains("did you mean"), qPrintable(problem->text()));
    QVERIFY(!open->isEnabled());
    QTest::keyClick(field, Qt::Key_Return);
    QVERIFY(!(*window)->currentSession());
    field->setText("TX270@RS232,port=COM3");
    QVERIFY(!problem->isVisible());
    QVERIFY(open->isEnabled());
}

void WindowMainTest::showsThatASensorIsGone()
{
    SessionView *const view = window->openFirst();
    QVERIFY(view);
    sondixsim::unplug("1001");
    auto *problem = view->findChild<QLabel *>("sessionProblem");
    QTRY_VERIFY(problem->isVisible());
    QVERIFY(problem->text().contains("connection"));
    QVERIFY(view->findChild<QLabel *>("sessionState")->text().contains("reconnecting"));
    QVERIFY(window->child<QLabel>("currentState")->text().contains("reconnecting"));
    QVERIFY(window->child<QLabel>("sensorState")->text().contains("reconnecting"));
    sondixsim::plug("1001");
    QTRY_VERIFY(!problem->isVisible());
    QVERIFY(view->findChild<QLabel *>("sessionState")->text().contains("reading"));
    const QString log = window->logText();
    QVERIFY(log.contains("reconnecting"));
    QVERIFY(log.contains("The connection to the sensor is lost"));
}

void WindowMainTest::showsThatASensorIsSilent()
{
    SessionView *const view = window->openFirst(); // the virtual clock stands still: it sends nothing
    QVERIFY(view);
    auto *state = view->findChild<QLabel *>("sessionState");
    QVERIFY(state->text().contains("reading"));
    QTRY_VERIFY_WITH_TIMEOUT(state->text().contains("no values for"), 8000);
    sondixsim::advance(0.1);
    QTRY_VERIFY(state->text().contains("reading"));
}

void WindowMainTest::opensAgainAfterAFailure()
{
    sondixsim::unplug("1001");
    SessionView *const view = (*window)->openSensor(firstAddress());
    QTRY_COMPARE(view->session()->state(), State::Failed);
    auto *problem = view->findChild<QLabel *>("sessionProblem");
    QVERIFY(problem->isVisible());
    QVERIFY(problem->text().contains(view->session()->reader().errorString()));
    sondixsim::plug("1001");
    window->action("reopenAction")->trigger();
    QTRY_COMPARE(view->session()->state(), State::Reading);
    QVERIFY(!problem->isVisible());
}

void WindowMainTest::sensorsAreShownSideBySide()
{
    SessionView *const first = window->openFirst();
    QVERIFY(first);
    SessionView *const second = (*window)->openSensor(secondAddress());
    QTRY_COMPARE(second->session()->state(), State::Reading);
    QVERIFY(!first->isVisible());
    QVERIFY(second->isVisible());
    QTRY_VERIFY(!window->shownValue("SA_LaserPower").parent().isValid() ||
                window->shownValue("SA_MeasureMode").isValid());
    window->action("sideBySideAction")->trigger();
    QVERIFY(first->isVisible());
    QVERIFY(second->isVisible());
    QTest::mouseClick(first->numbers(), Qt::LeftButton);
    QCOMPARE((*window)->currentView(), first);
    // With the keyboard as well.
    (*window)->activateWindow();
    QTRY_VERIFY((*window)->isActiveWindow());
    second->numbers()->tile(0)->setFocus(Qt::TabFocusReason);
    QTRY_COMPARE(QApplication::focusWidget(), static_cast<QWidget *>(second->numbers()->tile(0)));
    QTRY_COMPARE((*window)->currentView(), second);
    first->numbers()->tile(0)->setFocus(Qt::TabFocusReason);
    QTRY_COMPARE((*window)->currentView(), first);
    // The pages are in the order of the tabs.
    const auto left = [](QWidget *page) { return page->mapTo(page->window(), QPoint()).x(); };
    QVERIFY(left(first) < left(second));
    window->child<QTabBar>("sessionTabs")->moveTab(0, 1);
    QTRY_VERIFY(left(first) > left(second));
    QCOMPARE((*window)->currentView(), first);
    QVERIFY(first->isVisible() && second->isVisible());
    window->child<QTabBar>("sessionTabs")->moveTab(1, 0);
    QTRY_VERIFY(left(first) < left(second));
    window->action("sideBySideAction")->trigger();
    QVERIFY(!second->isVisible());
    window->action("nextPageAction")->trigger();
    QCOMPARE((*window)->currentView(), second);
    QVERIFY((*window)->windowTitle().startsWith("CC430 1002"));
}

void WindowMainTest::closingAPageEndsItsSensor()
{
    QVERIFY(window->openFirst());
    window->action("closePageAction")->trigger();
    QVERIFY(!(*window)->currentSession());
    QVERIFY(window->child<QWidget>("welcome")->isVisible());
    const auto isClosed = [] {
        SensorInstance instance(TX270);
        return instance.open(firstAddress().parameters) == NoError;
    };
    QTRY_VERIFY(isClosed());
    QVERIFY(window->openFirst()); // and it can be opened again
}

void WindowMainTest::aSensorThatIsStillClosingIsOpenedAgain()
{
    SessionView *const first = window->openFirst();
    QVERIFY(first);
    sondixsim::Fault slow;
    slow.function = "CloseSensor";
    slow.hang = true;
    slow.times = 1;
    sondixsim::inject(slow);
    sondixsim::clearCalls();
    sondixsim::recordCalls(true);
    const auto callsOf = [](const char *function) {
        const auto calls = sondixsim::calls();
        return std::count_if(calls.begin(), calls.end(),
                             [function](const auto &call) { return call.function == function; });
    };
    QPointer<SessionView> closing(first);
    (*window)->closePage(first);
    QPointer<SessionView> given(nullptr);
    // A page that is closed while it waits does not open the sensor, nor does it stop the next one.
    given = (*window)->openSensor(firstAddress());
    QVERIFY(given && given != closing);
    (*window)->closePage(given);
    QTRY_VERIFY(!given);
    SessionView *const second = (*window)->openSensor(firstAddress());
    QVERIFY(closing);
    QCOMPARE(second->session()->state(), State::Stopped);
    sondixsim::releaseHangs();
    QTRY_COMPARE(second->session()->state(), State::Reading);
    QVERIFY(!closing);
    QCOMPARE(callsOf("OpenSensor"), 1);
    sondixsim::recordCalls(false);
}

void WindowMainTest::theLogIsFilteredAndCopied()
{
    LogModel &model = (*window)->logPanel()->model();
    model.clear();
    model.add(LogModel::Event, "A", "opening");
    model.add(LogModel::Problem, "B", "no answer");
    model.add(LogModel::Answer, "A", "Get_Info: done");
    auto *tree = window->child<QTreeView>("logView");
    QCOMPARE(tree->model()->rowCount(), 3);
    auto *filter = window->child<QLineEdit>("logFilter");
    QTest::keyClicks(filter, "answer");
    QCOMPARE(tree->model()->rowCount(), 1);
    QVERIFY(window->logText().endsWith("\tB\tno answer"));
    filter->clear();
    for (int i = 0; i < LogModel::maxEntries + 10; ++i)
        model.add(LogModel::Event, "A", QString::number(i));
    QVERIFY(model.rowCount() <= LogModel::maxEntries);
    QVERIFY(window->logText().endsWith("\tA\t" + QString::number(LogModel::maxEntries + 9)));
    QTest::mouseClick(window->child<QToolButton>("clearLog"), Qt::LeftButton);
    QCOMPARE(model.rowCount(), 0);
    (*window)->logPanel()->setDetailed(true);
    QVERIFY(window->openFirst());
    QTRY_VERIFY(window->logText().contains("TX270 open -> 0"));
    (*window)->logPanel()->setDetailed(false);
}

void WindowMainTest::tellsTheMemoryOfTheValuesKept()
{
    SessionView *const view = window->openFirst();
    QVERIFY(view);
    auto *keep = window->child<QComboBox>("keepValues");
    auto *memory = window->child<QLabel>("keptMemory");
    QCOMPARE(view->session()->history().keepSeconds(), 600.0);
    QCOMPARE(keep->currentText(), QString("10 minutes"));
    const auto shown = [](double seconds) {
        return "at most " + QLocale().formattedDataSize(SignalHistory::bytesFor(seconds, 1000.0, 2));
    };
    QCOMPARE(memory->text(), shown(600.0));
    keep->setFocus();
    keep->setCurrentIndex(keep->findText("1 hour"));
    Q_EMIT keep->activated(keep->currentIndex());
    QCOMPARE(view->session()->history().keepSeconds(), 3600.0);
    QCOMPARE(memory->text(), shown(3600.0));
    window->action("closePageAction")->trigger();
    SessionView *const next = (*window)->openSensor(secondAddress());
    QCOMPARE(next->session()->history().keepSeconds(), 3600.0);
}

QStringList WindowMainTest::exportedHead(SessionView &view)
{
    QFile file(window->folder() + "/exported.csv");
    QString problem;
    if (!view.plot()->exportTo(file.fileName(), PlotView::ExportRange::Everything, &problem) ||
        !file.open(QIODevice::ReadOnly))
        return {problem};
    QStringList head;
    for (QByteArray line = file.readLine(); line.startsWith('#'); line = file.readLine())
        head += QString::fromUtf8(line.mid(1)).trimmed();
    return head;
}

void WindowMainTest::exportsTellTheSensor()
{
    SessionView *const view = window->openFirst();
    QVERIFY(view);
    sondixsim::advance(1.0);
    QTRY_VERIFY(view->session()->framesRead() > 0);
    const QStringList head = exportedHead(*view);
    const QString all = head.join('\n');
    QVERIFY2(head.contains("serial number: 1001"), qPrintable(all));
    QVERIFY2(head.contains("address: " + firstAddress().toString()), qPrintable(all));
    QVERIFY2(head.contains("rate: 1000 Hz"), qPrintable(all));
    QVERIFY2(!head.filter(QRegularExpression("^sensor: TX270")).isEmpty(), qPrintable(all));
    QVERIFY2(!head.filter(QRegularExpression("^written by: SondixQt Explorer")).isEmpty(), qPrintable(all));
}

void WindowMainTest::showsARecording()
{
    QFile file(window->folder() + "/values.csv");
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("# sensor: TX270-10\n# rate: 1000 Hz\nframe,time [s],Distance 1 [mm]\n");
    for (int i = 0; i < 1000; ++i)
        file.write(QByteArray::number(i) + ',' + QByteArray::number(100.0 + 0.001 * i, 'f', 3) + ',' +
                   QByteArray::number(i % 10) + '\n');
    file.close();
    QVERIFY((*window)->openArgument(file.fileName()));
    QTRY_VERIFY((*window)->currentView());
    SessionView *const view = (*window)->currentView();
    QVERIFY(!view->session());
    QVERIFY(!(*window)->currentSession());
    QCOMPARE(view->title(), QString("values.csv"));
    auto *status = view->findChild<QLabel *>("sessionCounts");
    QTRY_COMPARE(status->text(), QString("1000 frames"));
    QVERIFY(!window->action("zeroAction")->isEnabled());
    QVERIFY(!view->findChild<QLabel *>("simulatedBanner")->isVisible());
    window->action("closePageAction")->trigger();
    QVERIFY(!(*window)->currentView());
}

// Beside a page of a real sensor it says which values are simulated.
void WindowMainTest::recordingsOfTheSimulatorAreMarked()
{
    QFile file(window->folder() + "/values.csv");
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("# sensor: TX270-10\n# firmware: 1.0 (simulator)\nframe,time [s],Distance 1 [mm]\n0,0,1\n");
    file.close();
    QVERIFY((*window)->openArgument(file.fileName()));
    QTRY_VERIFY((*window)->currentView());
    QVERIFY((*window)->currentView()->findChild<QLabel *>("simulatedBanner")->isVisible());
}

void WindowMainTest::exportsOfARecordingTellItsSensor()
{
    QFile file(window->folder() + "/values.csv");
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("# sensor: TX270-10\n# serial number: 4711\n# address: TX270@RS232,port=COM3\n# rate: 250 Hz\n"
               "# written by: another program\nframe,time [s],Distance 1 [mm]\n0,1.000,5\n1,1.004,6\n");
    file.close();
    QVERIFY((*window)->openArgument(file.fileName()));
    QTRY_VERIFY((*window)->currentView());
    SessionView *const view = (*window)->currentView();
    auto *status = view->findChild<QLabel *>("sessionCounts");
    QTRY_COMPARE(status->text(), QString("2 frames"));
    const QStringList head = exportedHead(*view);
    for (const char *line :
         {"sensor: TX270-10", "serial number: 4711", "address: TX270@RS232,port=COM3", "rate: 250 Hz"})
        QVERIFY2(head.contains(line), qPrintable(head.join('\n')));
    QVERIFY(!head.filter(QRegularExpression("^written by: SondixQt Explorer")).isEmpty());
}

void WindowMainTest::refusesFilesThatAreNoRecordings()
{
    QFile file(window->folder() + "/picture.png");
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("\x89PNG\r\n\x1a\n");
    file.close();
    (*window)->openFile(file.fileName());
    QTRY_VERIFY2(window->logText().contains("not the columns of a recording"), qPrintable(window->logText()));
    QVERIFY2(window->logText().contains("picture.png"), qPrintable(window->logText()));
    QVERIFY(!(*window)->currentView());
    QVERIFY(!(*window)->openArgument("TX271@RS232"));
    QVERIFY(window->logText().contains("did you mean"));
}

void WindowMainTest::remembersSensorsAndChoices()
{
    SessionView *view = window->openFirst();
    QVERIFY(view);
    DisplayLimits limits;
    limits.upper = 0.1;
    view->numbers()->tile(0)->setLimits(limits);
    Q_EMIT view->numbers()->tile(0)->limitsChanged();
    window->child<QComboBox>("groups")->setCurrentIndex(2);
    const QString group = window->child<QComboBox>("groups")->currentText();
    window->child<QWidget>("logDock")->hide();
    window->action("numbersAction")->trigger();
    (*window)->resize(1444, 777);
    window->close();

    window->open();
    QCOMPARE((*window)->size(), QSize(1444, 777));
    QVERIFY(!window->child<QWidget>("logDock")->isVisible());
    QCOMPARE(window->child<QComboBox>("groups")->currentText(), group);
    QVERIFY(!window->action("numbersAction")->isChecked());
    QCOMPARE((*window)->findPanel()->sensors().rowCount(), 1);
    QCOMPARE((*window)->findPanel()->sensors().at(0).title(), QString("TX270 1001"));
    view = window->openFirst();
    QVERIFY(view);
    QVERIFY(!view->numbers()->isVisible());
    QCOMPARE(view->numbers()->tile(0)->limits().upper, std::optional<double>(0.1));
}

void WindowMainTest::tellsTheKeys()
{
    window->action("keyboardAction")->trigger();
    auto *list = window->child<QTreeWidget>("keyboardList");
    QVERIFY(list->isVisible());
    const QList<QTreeWidgetItem *> search = list->findItems("Search for sensors", Qt::MatchExactly, 1);
    QCOMPARE(search.size(), 1);
    QCOMPARE(search.first()->text(0), QString("F5"));
    QPointer<QWidget> dialog = list->window();
    QTest::keyClick(list, Qt::Key_Escape);
    QTRY_VERIFY(!dialog);
}

void WindowMainTest::tellsWhichLibraryIsLoaded()
{
    window->action("aboutAction")->trigger();
    auto *box = window->child<QMessageBox>("aboutBox");
    QVERIFY2(box->informativeText().contains("Sondix"), qPrintable(box->informativeText()));
    QVERIFY(!box->informativeText().contains("not known"));
    box->close();
}

QTEST_MAIN(WindowMainTest)
#include "tst_windowmain.moc"
