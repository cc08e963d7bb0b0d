// SPDX-License-Identifier: MIT
#include "support/unit.h"

#include "explorerwindow.h"

#include "explorer/sensor/sensorsession.h"
#include "explorer/window/findpanel.h"
#include "explorer/window/logpanel.h"
#include "explorer/window/numbersview.h"
#include "explorer/window/numbertile.h"
#include "explorer/window/parameterpanel.h"
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
#include <QTabBar>
#include <QTreeView>
#include <QUndoStack>

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
    void showsNumbersOfASensor();
    void numbersHaveLimitsAndAZero();
    void changesAParameterInPlace();
    void showsARefusalAtTheField();
    void undoesAChange();
    void sendsACommandLine();
    void savesAndLoadsSettings();
    void showsThatASensorIsGone();
    void showsThatASensorIsSilent();
    void opensAgainAfterAFailure();
    void sensorsAreShownSideBySide();
    void closingAPageEndsItsSensor();
    void theLogIsFilteredAndCopied();
    void tellsTheMemoryOfTheValuesKept();
    void showsARecording();
    void refusesFilesThatAreNoRecordings();
    void remembersSensorsAndChoices();
    void tellsWhichLibraryIsLoaded();
    void aSlowSensorDoesNotBlockTheWindow();
    void closingIsQuickWhileTheSensorHangs();

private:
    SessionView *openFirst();
    QModelIndex shownValue(const QString &answer);
    void type(const QModelIndex &index, const QString &text);
    QString logText();

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

SessionView *WindowMainTest::openFirst()
{
    SessionView *const view = (*window)->openSensor(firstAddress());
    const bool isOpen = QTest::qWaitFor([view] { return view->session()->state() == State::Reading; });
    return isOpen ? view : nullptr;
}

// The value of a setting in the tree of the panel.
QModelIndex WindowMainTest::shownValue(const QString &answer)
{
    const auto *tree = window->child<QTreeView>("parameterView");
    const auto *model = tree->model();
    for (int group = 0; model && group < model->rowCount(); ++group) {
        const QModelIndex parent = model->index(group, 0);
        for (int row = 0; row < model->rowCount(parent); ++row) {
            const QModelIndex value = model->index(row, ParameterModel::ValueColumn, parent);
            if (value.data(ParameterModel::AnswerRole) == answer)
                return value;
        }
    }
    return {};
}

// Types into a field of the tree.
void WindowMainTest::type(const QModelIndex &index, const QString &text)
{
    auto *tree = window->child<QTreeView>("parameterView");
    tree->scrollTo(index);
    tree->setCurrentIndex(index);
    tree->setFocus();
    QTest::keyClick(tree, Qt::Key_F2);
    auto *field = tree->viewport()->findChild<QLineEdit *>();
    QVERIFY(field);
    field->selectAll();
    QTest::keyClicks(field, text);
    QTest::keyClick(field, Qt::Key_Return);
}

QString WindowMainTest::logText()
{
    (*window)->logPanel()->copy();
    return QApplication::clipboard()->text();
}

void WindowMainTest::explainsItselfAtTheFirstStart()
{
    QVERIFY(window->child<QWidget>("welcome")->isVisible());
    QVERIFY(!window->child<QLabel>("simulatedBanner")->isVisible());
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

void WindowMainTest::showsNumbersOfASensor()
{
    SessionView *const view = openFirst();
    QVERIFY(view);
    sondixsim::advance(0.5);
    QTRY_COMPARE(view->session()->framesRead(), 500);
    NumberTile *const tile = view->numbers()->tile(0);
    QVERIFY(tile);
    const double present = *view->session()->values().at(0).present;
    QTRY_COMPARE(tile->exactText(), QString::number(present, 'f', 0));
    QVERIFY(view->numbers()->tile(1));
    QVERIFY(!view->numbers()->tile(2));
    window->action("copyValuesAction")->trigger();
    const double second = *view->session()->values().at(1).present;
    QCOMPARE(QApplication::clipboard()->text(), exactNumber(present) + "\n" + exactNumber(second));
    QCOMPARE(exactNumber(second).toDouble(), second);
    window->action("resetAction")->trigger();
    QVERIFY(!view->session()->values().at(0).minimum);
    // An error value shows the sensor's words.
    sondixsim::pushData("1001", {}, {-1.0e10 - 4, 3.25}, 0.6);
    QTRY_COMPARE(tile->shownText(), QString("Target out of range"));
    QTRY_COMPARE(view->numbers()->tile(1)->exactText(), QString("3.25"));
    QLocale::setDefault(QLocale(QLocale::German));
    sondixsim::pushData("1001", {}, {2.5, 1234.5}, 0.7);
    QTRY_COMPARE(tile->exactText(), QString("2.5")); // exact with a point
}

void WindowMainTest::numbersHaveLimitsAndAZero()
{
    SessionView *const view = openFirst();
    QVERIFY(view);
    NumberTile *const tile = view->numbers()->tile(0);
    QCOMPARE(tile->limitText(), QString());
    DisplayLimits limits;
    limits.lower = 10.0;
    limits.upper = 20.0;
    tile->setLimits(limits);
    const auto show = [&](double value) {
        sondixsim::pushData("1001", {}, {value, 0.0}, 0.0);
        return QTest::qWaitFor([&] { return tile->exactText() == exactNumber(value - tile->limits().offset); });
    };
    QVERIFY(show(15.0));
    QVERIFY(tile->limitText().contains("within"));
    QVERIFY(show(9.5));
    QVERIFY(tile->limitText().contains("below"));
    QVERIFY(show(20.5));
    QVERIFY(tile->limitText().contains("above"));
    window->action("zeroAction")->trigger();
    QCOMPARE(tile->exactText(), QString("0"));
    QVERIFY(tile->limitText().contains("below")); // limits apply to what is shown
    QVERIFY(show(32.0));
    QCOMPARE(tile->exactText(), QString("11.5"));
    QCOMPARE(*view->session()->values().at(0).present, 32.0); // on the screen only
    window->action("clearZeroAction")->trigger();
    QCOMPARE(tile->exactText(), QString("32"));
}

void WindowMainTest::changesAParameterInPlace()
{
    SessionView *const view = openFirst();
    QVERIFY(view);
    QTRY_VERIFY(shownValue("SA_Measrate").isValid());
    type(shownValue("SA_Measrate"), "2.5");
    QTRY_COMPARE(shownValue("SA_Measrate").data().toString(), QString("2.5 kHz"));
    QTRY_VERIFY(!view->parameters()->isBusy());
    QCOMPARE(view->parameters()->settings().value("Set_Samplerate").value("SA_Measrate"), QVariant(2.5));
    QVERIFY(shownValue("SA_Measrate").data(ParameterModel::DiffersRole).toBool());
    QVERIFY(logText().contains("Sample rate: 2.5 kHz"));
}

void WindowMainTest::showsARefusalAtTheField()
{
    QVERIFY(openFirst());
    QTRY_VERIFY(shownValue("SA_Measrate").isValid());
    type(shownValue("SA_Measrate"), "900");
    auto *message = window->child<QLabel>("parameterMessage");
    QTRY_VERIFY(message->isVisible());
    QTRY_VERIFY2(message->text().contains("must be from 0.05 to 100"), qPrintable(message->text()));
    QCOMPARE(shownValue("SA_Measrate").data().toString(), QString("1 kHz"));
    const QModelIndex note = shownValue("SA_Measrate").siblingAtColumn(ParameterModel::NoteColumn);
    QVERIFY(note.data().toString().contains("must be from 0.05 to 100"));
    QVERIFY(logText().contains("must be from 0.05 to 100"));
    type(shownValue("SA_Measrate"), "fast");
    QTRY_VERIFY2(message->text().contains("'fast' is not a number"), qPrintable(message->text()));
}

void WindowMainTest::undoesAChange()
{
    SessionView *const view = openFirst();
    QVERIFY(view);
    QTRY_VERIFY(shownValue("SA_Measrate").isValid());
    type(shownValue("SA_Measrate"), "2.5");
    QTRY_VERIFY(view->parameters()->undoStack()->canUndo());
    auto *undo = window->child<QAbstractButton>("undoParameter");
    QTRY_VERIFY(undo->isEnabled());
    QTest::mouseClick(undo, Qt::LeftButton);
    QTRY_COMPARE(shownValue("SA_Measrate").data().toString(), QString("1 kHz"));
    QTest::mouseClick(window->child<QAbstractButton>("redoParameter"), Qt::LeftButton);
    QTRY_COMPARE(shownValue("SA_Measrate").data().toString(), QString("2.5 kHz"));
}

void WindowMainTest::sendsACommandLine()
{
    SessionView *const view = openFirst();
    QVERIFY(view);
    auto *line = window->child<QLineEdit>("commandLine");
    QTest::keyClicks(line, "Get_LaserPower");
    QTest::keyClick(line, Qt::Key_Return);
    QTRY_VERIFY(logText().contains("Get_LaserPower: SA_LaserPower=1"));
    QCOMPARE(line->text(), QString());
    line->setText("Set_LaserPower SP_LaserPower=0");
    QTest::keyClick(line, Qt::Key_Return);
    QTRY_COMPARE(shownValue("SA_LaserPower").data(Qt::EditRole).toInt(), 0); // the tree is read again
    line->setText("Get_Nothing");
    QTest::keyClick(line, Qt::Key_Return);
    auto *message = window->child<QLabel>("parameterMessage");
    QTRY_VERIFY2(message->text().contains("does not know the command"), qPrintable(message->text()));
    line->setText("Set_X nonsense");
    QTest::keyClick(line, Qt::Key_Return);
    QVERIFY(message->text().contains("PARAMETER=VALUE"));
    QCOMPARE(line->text(), QString("Set_X nonsense")); // what was typed is not lost
}

void WindowMainTest::savesAndLoadsSettings()
{
    SessionView *const view = openFirst();
    QVERIFY(view);
    ParameterPanel *const panel = (*window)->parameterPanel();
    const QString path = window->folder() + "/settings.json";
    QVERIFY(panel->saveTo(path));
    type(shownValue("SA_Measrate"), "2.5");
    QTRY_COMPARE(shownValue("SA_Measrate").data().toString(), QString("2.5 kHz"));
    QVERIFY(panel->compareWith(path));
    QTRY_VERIFY(view->parameters()->differsFromReference());
    QTRY_VERIFY(!view->parameters()->isBusy());
    QVERIFY(panel->loadFrom(path));
    QTRY_COMPARE(shownValue("SA_Measrate").data().toString(), QString("1 kHz"));
    QTRY_VERIFY(!view->parameters()->differsFromReference());

    auto *message = window->child<QLabel>("parameterMessage");
    QString problem;
    const ParameterFile other{"CC430", "1", {{"Set_Samplerate", {{"SA_Measrate", 9.0}}}}};
    QVERIFY(other.save(path, &problem));
    QVERIFY(!panel->loadFrom(path));
    QVERIFY2(message->text().contains("of a CC430, this sensor is a TX270"), qPrintable(message->text()));
    QVERIFY(!panel->loadFrom(window->folder() + "/missing.json"));
    QVERIFY(message->text().contains("cannot be loaded"));
    QCOMPARE(shownValue("SA_Measrate").data().toString(), QString("1 kHz"));
}

void WindowMainTest::showsThatASensorIsGone()
{
    SessionView *const view = openFirst();
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
    const QString log = logText();
    QVERIFY(log.contains("reconnecting"));
    QVERIFY(log.contains("The connection to the sensor is lost"));
}

void WindowMainTest::showsThatASensorIsSilent()
{
    SessionView *const view = openFirst(); // the virtual clock stands still: it sends nothing
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
    SessionView *const first = openFirst();
    QVERIFY(first);
    SessionView *const second = (*window)->openSensor(secondAddress());
    QTRY_COMPARE(second->session()->state(), State::Reading);
    QVERIFY(!first->isVisible());
    QVERIFY(second->isVisible());
    QTRY_VERIFY(!shownValue("SA_LaserPower").parent().isValid() || shownValue("SA_MeasureMode").isValid());
    window->action("sideBySideAction")->trigger();
    QVERIFY(first->isVisible());
    QVERIFY(second->isVisible());
    QTest::mouseClick(first->numbers(), Qt::LeftButton);
    QCOMPARE((*window)->currentView(), first);
    window->action("sideBySideAction")->trigger();
    QVERIFY(!second->isVisible());
    window->action("nextPageAction")->trigger();
    QCOMPARE((*window)->currentView(), second);
    QVERIFY((*window)->windowTitle().startsWith("CC430 1002"));
}

void WindowMainTest::closingAPageEndsItsSensor()
{
    QVERIFY(openFirst());
    window->action("closePageAction")->trigger();
    QVERIFY(!(*window)->currentSession());
    QVERIFY(window->child<QWidget>("welcome")->isVisible());
    const auto isClosed = [] {
        SensorInstance instance(TX270);
        return instance.open(firstAddress().parameters) == NoError;
    };
    QTRY_VERIFY(isClosed());
    QVERIFY(openFirst()); // and it can be opened again
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
    QVERIFY(logText().endsWith("\tB\tno answer"));
    filter->clear();
    for (int i = 0; i < LogModel::mostEntries + 10; ++i)
        model.add(LogModel::Event, "A", QString::number(i));
    QVERIFY(model.rowCount() <= LogModel::mostEntries);
    QVERIFY(logText().endsWith("\tA\t" + QString::number(LogModel::mostEntries + 9)));
    QTest::mouseClick(window->child<QPushButton>("clearLog"), Qt::LeftButton);
    QCOMPARE(model.rowCount(), 0);
    (*window)->logPanel()->setDetailed(true);
    QVERIFY(openFirst());
    QTRY_VERIFY(logText().contains("TX270 open -> 0"));
    (*window)->logPanel()->setDetailed(false);
}

void WindowMainTest::tellsTheMemoryOfTheValuesKept()
{
    SessionView *const view = openFirst();
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
    SessionView *const view = (*window)->currentView();
    QVERIFY(view);
    QVERIFY(!view->session());
    QVERIFY(!(*window)->currentSession());
    QCOMPARE(view->title(), QString("values.csv"));
    auto *status = view->findChild<QLabel *>("sessionCounts");
    QTRY_COMPARE(status->text(), QString("1000 frames"));
    QVERIFY(!window->action("zeroAction")->isEnabled());
    QVERIFY(!window->child<QLabel>("simulatedBanner")->isVisible());
    window->action("closePageAction")->trigger();
    QVERIFY(!(*window)->currentView());
}

void WindowMainTest::refusesFilesThatAreNoRecordings()
{
    QFile file(window->folder() + "/picture.png");
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("\x89PNG\r\n\x1a\n");
    file.close();
    QVERIFY(!(*window)->openArgument(file.fileName()));
    QVERIFY(!(*window)->currentView());
    QVERIFY2(logText().contains("picture.png"), qPrintable(logText()));
    QVERIFY(!(*window)->openArgument("TX271@RS232"));
    QVERIFY(logText().contains("did you mean"));
}

void WindowMainTest::remembersSensorsAndChoices()
{
    SessionView *view = openFirst();
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
    view = openFirst();
    QVERIFY(view);
    QVERIFY(!view->numbers()->isVisible());
    QCOMPARE(view->numbers()->tile(0)->limits().upper, std::optional<double>(0.1));
}

void WindowMainTest::tellsWhichLibraryIsLoaded()
{
    window->action("aboutAction")->trigger();
    auto *box = window->child<QMessageBox>("aboutBox");
    QVERIFY2(box->informativeText().contains("Sondix"), qPrintable(box->informativeText()));
    QVERIFY(!box->informativeText().contains("not known"));
    box->close();
}

void WindowMainTest::aSlowSensorDoesNotBlockTheWindow()
{
    // The longest time between two steps of the event loop.
    qint64 longest = 0;
    QElapsedTimer sinceStep;
    QTimer steps;
    connect(&steps, &QTimer::timeout, this, [&] { longest = qMax(longest, sinceStep.restart()); });
    sinceStep.start();
    steps.start(5);

    constexpr qint64 sensorDelay = 1500;
    sondixsim::Fault slow;
    slow.delay = sensorDelay / 1000.0;
    slow.function = "OpenSensor";
    sondixsim::inject(slow);
    slow.function.clear();
    slow.command = "Set_Samplerate";
    sondixsim::inject(slow);
    slow.command = "Start_FindSensor";
    sondixsim::inject(slow);
    QElapsedTimer total;
    total.start();
    SessionView *const view = openFirst();
    QVERIFY(view);
    QVERIFY(total.elapsed() >= sensorDelay);
    type(shownValue("SA_Measrate"), "2.5");
    QTRY_VERIFY(view->parameters()->isBusy());
    QTRY_VERIFY(!view->parameters()->isBusy());
    QVERIFY(total.elapsed() >= 2 * sensorDelay);
    QTest::mouseClick(window->child<QPushButton>("searchButton"), Qt::LeftButton);
    QTest::mouseClick(window->child<QPushButton>("searchButton"), Qt::LeftButton); // cancelled
    QTRY_VERIFY_WITH_TIMEOUT(!(*window)->findPanel()->search().isRunning(), 20000);
    window->action("closePageAction")->trigger();
    QVERIFY(total.elapsed() >= 3 * sensorDelay);
    QVERIFY2(longest < sensorDelay / 3, qPrintable(QString::number(longest)));
}

void WindowMainTest::closingIsQuickWhileTheSensorHangs()
{
    QVERIFY(openFirst());
    sondixsim::Fault fault;
    fault.function = "DataAvail";
    fault.hang = true;
    sondixsim::inject(fault);
    QTest::qWait(150); // the reader hangs in its next call
    QElapsedTimer timer;
    timer.start();
    (*window)->close();
    QVERIFY(timer.elapsed() < 100);
    QVERIFY(!(*window)->isVisible());
    sondixsim::releaseHangs();
    window.reset();
    QVERIFY(timer.elapsed() < 3000);
}

QTEST_MAIN(WindowMainTest)
#include "tst_windowmain.moc"
