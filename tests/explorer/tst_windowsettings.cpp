// SPDX-License-Identifier: MIT
#include "explorerwindow.h"

#include "explorer/window/parameterpanel.h"
#include "support/scripting.h"

#include <QLabel>
#include <QPushButton>
#include <QUndoStack>

using namespace Explorer;
using namespace SondixQt;

/// The panel with the settings of a sensor, driven by keys as a person would.
class WindowSettingsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void changesAParameterInPlace();
    void showsARefusalAtTheField();
    void undoesAChange();
    void sendsACommandLine();
    void aSettingOfTheCommandLineIsSentAgain();
    void savesAndLoadsSettings();
    void comparesWithTheSettingsOfItsModelOnly();
    void showsTheIdentityOfThePageInFront();

private:
    std::unique_ptr<ExplorerWindow> window;
};

void WindowSettingsTest::init()
{
    QLocale::setDefault(QLocale::c());
    loadExplorerBench();
    window = std::make_unique<ExplorerWindow>();
    window->open();
    QVERIFY(QTest::qWaitForWindowExposed(&**window));
}

void WindowSettingsTest::cleanup()
{
    sondixsim::releaseHangs();
    sondixsim::clearFaults();
    window.reset();
}

void WindowSettingsTest::changesAParameterInPlace()
{
    SessionView *const view = window->openFirst();
    QVERIFY(view);
    QTRY_VERIFY(window->shownValue("SA_Measrate").isValid());
    window->type(window->shownValue("SA_Measrate"), "2.5");
    QTRY_COMPARE(window->shownValue("SA_Measrate").data().toString(), QString("2.5 kHz"));
    QTRY_VERIFY(!view->parameters()->isBusy());
    QCOMPARE(view->parameters()->settings().value("Set_Samplerate").value("SA_Measrate"), QVariant(2.5));
    QVERIFY(window->shownValue("SA_Measrate").data(ParameterModel::DiffersRole).toBool());
    QVERIFY(window->logText().contains("Sample rate: 2.5 kHz"));
}

void WindowSettingsTest::showsARefusalAtTheField()
{
    QVERIFY(window->openFirst());
    QTRY_VERIFY(window->shownValue("SA_Measrate").isValid());
    window->type(window->shownValue("SA_Measrate"), "900");
    auto *message = window->child<QLabel>("parameterMessage");
    QTRY_VERIFY(message->isVisible());
    QTRY_VERIFY2(message->text().contains("must be from 0.05 to 100"), qPrintable(message->text()));
    QCOMPARE(window->shownValue("SA_Measrate").data().toString(), QString("1 kHz"));
    const QModelIndex note = window->shownValue("SA_Measrate").siblingAtColumn(ParameterModel::NoteColumn);
    QVERIFY(note.data().toString().contains("must be from 0.05 to 100"));
    QVERIFY(window->logText().contains("must be from 0.05 to 100"));
    window->type(window->shownValue("SA_Measrate"), "fast");
    QTRY_VERIFY2(message->text().contains("'fast' is not a number"), qPrintable(message->text()));
}

void WindowSettingsTest::undoesAChange()
{
    SessionView *const view = window->openFirst();
    QVERIFY(view);
    QTRY_VERIFY(window->shownValue("SA_Measrate").isValid());
    window->type(window->shownValue("SA_Measrate"), "2.5");
    QTRY_VERIFY(view->parameters()->undoStack()->canUndo());
    auto *undo = window->child<QAbstractButton>("undoParameter");
    QTRY_VERIFY(undo->isEnabled());
    QTest::mouseClick(undo, Qt::LeftButton);
    QTRY_COMPARE(window->shownValue("SA_Measrate").data().toString(), QString("1 kHz"));
    QTest::mouseClick(window->child<QAbstractButton>("redoParameter"), Qt::LeftButton);
    QTRY_COMPARE(window->shownValue("SA_Measrate").data().toString(), QString("2.5 kHz"));
}

void WindowSettingsTest::sendsACommandLine()
{
    SessionView *const view = window->openFirst();
    QVERIFY(view);
    auto *line = window->child<QLineEdit>("commandLine");
    QTest::keyClicks(line, "Get_LaserPower");
    QTest::keyClick(line, Qt::Key_Return);
    QTRY_VERIFY(window->logText().contains("Get_LaserPower: SA_LaserPower=1"));
    QCOMPARE(line->text(), QString());
    line->setText("Set_LaserPower SP_LaserPower=0");
    QTest::keyClick(line, Qt::Key_Return);
    QTRY_COMPARE(window->shownValue("SA_LaserPower").data(Qt::EditRole).toInt(), 0); // the tree is read again
    line->setText("Get_Nothing");
    QTest::keyClick(line, Qt::Key_Return);
    auto *message = window->child<QLabel>("parameterMessage");
    QTRY_VERIFY2(message->text().contains("does not know the command"), qPrintable(message->text()));
    line->setText("Set_X nonsense");
    QTest::keyClick(line, Qt::Key_Return);
    QVERIFY(message->text().contains("PARAMETER=VALUE"));
    QCOMPARE(line->text(), QString("Set_X nonsense")); // what was typed is not lost
}

// After a pulled cable the last change counts, whether it was made in the table or in the command line.
void WindowSettingsTest::aSettingOfTheCommandLineIsSentAgain()
{
    SessionView *const view = window->openFirst();
    QVERIFY(view);
    QTRY_VERIFY(window->shownValue("SA_Measrate").isValid());
    window->type(window->shownValue("SA_Measrate"), "2.5");
    QTRY_COMPARE(window->shownValue("SA_Measrate").data().toString(), QString("2.5 kHz"));
    QTRY_VERIFY(!view->parameters()->isBusy());
    auto *line = window->child<QLineEdit>("commandLine");
    line->setText("Set_Samplerate SP_Measrate=4");
    QTest::keyClick(line, Qt::Key_Return);
    QTRY_COMPARE(window->shownValue("SA_Measrate").data().toString(), QString("4 kHz"));
    sondixsim::unplug("1001");
    QTRY_COMPARE(view->session()->state(), SensorReader::Reconnecting);
    sondixsim::plug("1001");
    QTRY_COMPARE(view->session()->state(), SensorReader::Reading);
    QSignalSpy answers((*window)->parameterPanel(), &ParameterPanel::answered);
    line->setText("Get_Samplerate");
    QTest::keyClick(line, Qt::Key_Return);
    QTRY_COMPARE(answers.size(), 1);
    QVERIFY2(answers.first().at(1).toString().contains("SA_Measrate=4"),
             qPrintable(answers.first().at(1).toString()));
}

void WindowSettingsTest::savesAndLoadsSettings()
{
    SessionView *const view = window->openFirst();
    QVERIFY(view);
    ParameterPanel *const panel = (*window)->parameterPanel();
    const QString path = window->folder() + "/settings.json";
    QSignalSpy done(panel, &ParameterPanel::fileDone);
    QVERIFY(panel->saveTo(path));
    QTRY_COMPARE(done.size(), 1);
    window->type(window->shownValue("SA_Measrate"), "2.5");
    QTRY_COMPARE(window->shownValue("SA_Measrate").data().toString(), QString("2.5 kHz"));
    QVERIFY(panel->compareWith(path));
    QTRY_VERIFY(view->parameters()->differsFromReference());
    QTRY_VERIFY(!view->parameters()->isBusy());
    QVERIFY(panel->loadFrom(path));
    QTRY_COMPARE(window->shownValue("SA_Measrate").data().toString(), QString("1 kHz"));
    QTRY_VERIFY(!view->parameters()->differsFromReference());

    auto *message = window->child<QLabel>("parameterMessage");
    QString problem;
    const ParameterFile other{"CC430", "1", {{"Set_Samplerate", {{"SA_Measrate", 9.0}}}}};
    QVERIFY(other.save(path, &problem));
    done.clear();
    QVERIFY(panel->loadFrom(path));
    QTRY_COMPARE(done.size(), 1);
    QVERIFY2(message->text().contains("of a CC430, this sensor is a TX270"), qPrintable(message->text()));
    QVERIFY(panel->loadFrom(window->folder() + "/missing.json"));
    QTRY_COMPARE(done.size(), 2);
    QCOMPARE(done.at(1).at(1).toString(), message->text().section(' ', 1));
    QVERIFY(message->text().contains("cannot be loaded"));
    QCOMPARE(window->shownValue("SA_Measrate").data().toString(), QString("1 kHz"));
}

// The same sensor by two addresses has the same name, and as many parameters.
void WindowSettingsTest::comparesWithTheSettingsOfItsModelOnly()
{
    SessionView *const view = window->openFirst();
    QVERIFY(view);
    QTRY_VERIFY(!view->parameters()->isBusy());
    ParameterPanel *const panel = (*window)->parameterPanel();
    auto *message = window->child<QLabel>("parameterMessage");
    const QString path = window->folder() + "/settings.json";
    QSignalSpy done(panel, &ParameterPanel::fileDone);
    QString problem;
    const SensorSettings own = view->parameters()->settings();
    const auto compare = [&](const QString &model, const SensorSettings &settings) {
        const int before = done.size();
        const ParameterFile file{model, "1", settings};
        if (file.save(path, &problem) && panel->compareWith(path) &&
            QTest::qWaitFor([&] { return done.size() > before; }, longestTestWait))
            return message->text();
        return QString();
    };
    QVERIFY2(compare("CC430", own).contains("has the settings of a CC430, this sensor is a TX270"),
             qPrintable(message->text()));
    QVERIFY(!view->parameters()->differsFromReference());
    QCOMPARE(compare("TX270", own), QString("All settings are those of the file."));
    SensorSettings part = own;
    part["Set_Averaging"].remove("SA_AveragingType");
    part["Set_Zoom"]["SA_Zoom"] = 1;
    const QString text = compare("TX270", part);
    QVERIFY2(text.contains("The settings that both have are the same."), qPrintable(text));
    QVERIFY2(text.contains("Only in the file: SA_Zoom"), qPrintable(text));
    QVERIFY2(text.contains("Not in the file: SA_AveragingType"), qPrintable(text));
}

void WindowSettingsTest::showsTheIdentityOfThePageInFront()
{
    const auto shownAddress = [this] {
        for (const QLineEdit *field : window->child<QWidget>("sensorPage")->findChildren<QLineEdit *>())
            if (field->accessibleName() == "Address")
                return field->text();
        return QString();
    };
    SensorAddress one = firstAddress();
    SensorAddress other = firstAddress();
    one.parameters["IP_Port"] = 98; // where there is no sensor
    other.parameters["IP_Port"] = 99;
    SessionView *const first = (*window)->openSensor(one, "TX270 1001");
    QCOMPARE(shownAddress(), one.toString());
    (*window)->openSensor(other, "TX270 1001");
    QCOMPARE(shownAddress(), other.toString());
    (*window)->openSensor(one);
    QCOMPARE((*window)->currentView(), first);
    QCOMPARE(shownAddress(), one.toString());
}

QTEST_MAIN(WindowSettingsTest)
#include "tst_windowsettings.moc"
