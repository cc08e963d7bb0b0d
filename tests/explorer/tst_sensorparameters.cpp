// SPDX-License-Identifier: MIT
#include "support/unit.h"

#include "explorerbench.h"

#include "explorer/sensor/parametermodel.h"
#include "explorer/sensor/sensorsession.h"
#include "support/callrecorder.h"
#include "support/scripting.h"

#include <QTemporaryDir>

using namespace Explorer;
using namespace SondixQt;
using State = SensorReader::State;

namespace {

/// The value of a setting of the simulated sensor, asked through the reader.
QVariant valueInSensor(SensorSession &session, const QString &command, const QString &answer)
{
    QVariant value;
    bool isAnswered = false;
    session.post(command, {}, &session, [&](const CommandResult &result) {
        value = result.answer.value(answer);
        isAnswered = true;
    });
    return QTest::qWaitFor([&isAnswered] { return isAnswered; }, longestTestWait) ? value : QVariant();
}

} // namespace

/// The settings of a sensor as a tree.
class SensorParametersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void namesAreMadeOfWords_data();
    void namesAreMadeOfWords();
    void showsTheReportedSettingsWithoutACommand();
    void showsValuesAsPeopleReadThem();
    void namesTheMeasuringModesOfTheModel();
    void aChangeIsSentWithItsGroup();
    void showsWhatTheSensorHasMadeOfAChange();
    void aRefusedChangeLeavesTheOldValue();
    void wrongTextsAreNotSent_data();
    void wrongTextsAreNotSent();
    void changesAreUndoneAndRepeated();
    void changesInARowAreUndoneOneByOne();
    void aFileIsAppliedOnTopOfAChange();
    void aRefusedChangeIsNotUndone();
    void aRefusedUndoCanBeTriedAgain();
    void differencesToTheReferenceAreMarked();
    void severalGroupsAreOneChange();
    void aRefusalTakesTheWholeChangeBack();
    void settingsThatTheSensorLacksAreNotSent();
    void changesWithoutASensorAreNotSent();
    void changesAreSentAgainWhenTheSensorWasGone();
    void asksForGroupsThatAreNotReported();
    void eachSensorOfAMultiSensorHasItsSettings();
    void filesKeepValuesAndTypes();
    void wrongFilesAreExplained_data();
    void wrongFilesAreExplained();
    void anUnwritableFileIsExplained();

private:
    QVariant edit(const QString &answer) { return model->valueIndex(answer).data(Qt::EditRole); }
    bool set(const QString &answer, const QVariant &value)
    {
        return model->setData(model->valueIndex(answer), value, Qt::EditRole);
    }

    std::unique_ptr<SensorSession> session;
    std::unique_ptr<ParameterModel> model;
};

void SensorParametersTest::init()
{
    QLocale::setDefault(QLocale::c());
    loadExplorerBench();
    session = std::make_unique<SensorSession>(firstAddress());
    model = std::make_unique<ParameterModel>(session->reader());
    session->open();
    QTRY_COMPARE(session->state(), State::Reading);
}

void SensorParametersTest::cleanup()
{
    sondixsim::releaseHangs();
    sondixsim::clearFaults();
    model.reset();
    session.reset();
}

void SensorParametersTest::namesAreMadeOfWords_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("words");
    QTest::newRow("one") << "Average"
                         << "Average";
    QTest::newRow("two") << "LaserPower"
                         << "Laser power";
    QTest::newRow("abbreviation") << "OutputRS422"
                                  << "Output RS422";
    QTest::newRow("abbreviation first") << "SRIndex"
                                        << "SR index";
    QTest::newRow("underscore") << "OutputVideoRaw_ETH"
                                << "Output video raw ETH";
    QTest::newRow("digit") << "ErrorOut1"
                           << "Error out1";
    QTest::newRow("none") << ""
                          << "";
}

void SensorParametersTest::namesAreMadeOfWords()
{
    QFETCH(QString, name);
    QTEST(wordsOf(name), "words");
}

void SensorParametersTest::showsTheReportedSettingsWithoutACommand()
{
    session->close();
    QTRY_COMPARE(session->state(), State::Stopped);
    SensorSession other(firstAddress());
    ParameterModel shown(other.reader());
    QCOMPARE(shown.rowCount(), 0);
    CallRecorder recorder;
    other.open();
    QTRY_COMPARE(other.state(), State::Reading);
    QVERIFY(shown.rowCount() > 3);
    QVERIFY(recorder.take().filter("Get_LaserPower").isEmpty());
    QCOMPARE(shown.settings().value("Set_LaserPower").value("SA_LaserPower"), QVariant(1));
    QCOMPARE(shown.settings().value("Set_Samplerate").value("SA_Measrate"), QVariant(1.0));
    QCOMPARE(shown.columnCount(), int(ParameterModel::ColumnCount));
    QCOMPARE(shown.rowCount(shown.valueIndex("SA_OutputRS422").parent()), 4);
}

void SensorParametersTest::showsValuesAsPeopleReadThem()
{
    const QModelIndex rate = model->valueIndex("SA_Measrate");
    QCOMPARE(rate.data().toString(), QString("1 kHz"));
    QCOMPARE(rate.siblingAtColumn(ParameterModel::NameColumn).data().toString(), QString("Sample rate"));
    QCOMPARE(rate.parent().data().toString(), QString("Sample rate"));
    QCOMPARE(model->valueIndex("SA_OutputRS422").data().toString(), QString("on"));
    QCOMPARE(model->valueIndex("SA_OutputAnalog").data().toString(), QString("off"));
    QCOMPARE(model->valueIndex("SA_TriggerMode").data().toString(), QString("off"));
    QVERIFY(!model->valueIndex("SA_Nothing").isValid());
    QLocale::setDefault(QLocale(QLocale::German));
    QVERIFY(set("SA_Measrate", "2,5"));
    QTRY_COMPARE(edit("SA_Measrate"), QVariant(2.5));
    QCOMPARE(rate.data().toString(), QString("2,5 kHz"));
}

void SensorParametersTest::namesTheMeasuringModesOfTheModel()
{
    SensorSession other(secondAddress());
    ParameterModel shown(other.reader());
    other.open();
    QTRY_COMPARE(shown.valueIndex("SA_MeasureMode").data().toString(), QString("Distance"));
    const QModelIndex mode = shown.valueIndex("SA_MeasureMode");
    QCOMPARE(mode.data(ParameterModel::NamesRole).toStringList(),
             QStringList({"Distance", "Thickness", "VideoStream"}));
    QVERIFY(mode.data(ParameterModel::IsCompleteRole).toBool());
    QVERIFY(shown.setData(mode, "Thickness", Qt::EditRole));
    QTRY_COMPARE(mode.data(Qt::EditRole), QVariant(1));
}

void SensorParametersTest::aChangeIsSentWithItsGroup()
{
    QSignalSpy accepted(model.get(), &ParameterModel::accepted);
    CallRecorder recorder;
    QVERIFY(set("SA_AveragingNumber", 8));
    QVERIFY(model->isBusy());
    QCOMPARE(model->valueIndex("SA_AveragingNumber").data().toString(), QString("8"));
    QTRY_COMPARE(accepted.count(), 1);
    QVERIFY(!model->isBusy());
    const QStringList calls = recorder.take();
    QVERIFY(calls.contains("SetParameterInt(\"SP_AveragingNumber\", 8)"));
    QVERIFY(calls.contains("SetParameterInt(\"SP_AveragingType\", 0)"));
    QCOMPARE(edit("SA_AveragingNumber"), QVariant(8));
    QCOMPARE(valueInSensor(*session, "Get_Averaging", "SA_AveragingNumber"), QVariant(8));
}

void SensorParametersTest::showsWhatTheSensorHasMadeOfAChange()
{
    scriptAnswer("Get_Averaging", "SA_AveragingType=0 SA_AveragingNumber=16");
    QVERIFY(set("SA_AveragingNumber", 15));
    QTRY_COMPARE(edit("SA_AveragingNumber"), QVariant(16)); // the sensor takes powers of two only
}

void SensorParametersTest::aRefusedChangeLeavesTheOldValue()
{
    QSignalSpy refused(model.get(), &ParameterModel::refused);
    QVERIFY(set("SA_Measrate", "900"));
    QTRY_COMPARE(refused.count(), 1);
    const QString sentence = "\"SP_Measrate\" must be from 0.05 to 100";
    QVERIFY2(refused.first().at(1).toString().contains(sentence), qPrintable(refused.first().at(1).toString()));
    const QModelIndex rate = model->valueIndex("SA_Measrate");
    QCOMPARE(refused.first().at(0).toModelIndex(), rate);
    QCOMPARE(edit("SA_Measrate"), QVariant(1.0));
    QCOMPARE(rate.data().toString(), QString("1 kHz"));
    QVERIFY(rate.data(ParameterModel::ProblemRole).toString().contains(sentence));
    QVERIFY(rate.siblingAtColumn(ParameterModel::NoteColumn).data().toString().contains(sentence));
    QVERIFY(set("SA_Measrate", "2")); // the next change clears it
    QTRY_COMPARE(edit("SA_Measrate"), QVariant(2.0));
    QCOMPARE(rate.data(ParameterModel::ProblemRole).toString(), QString());
    QCOMPARE(session->state(), State::Reading);
}

void SensorParametersTest::wrongTextsAreNotSent_data()
{
    QTest::addColumn<QString>("answer");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("problem");
    QTest::newRow("no number") << "SA_Measrate"
                               << "fast"
                               << "'fast' is not a number";
    QTest::newRow("empty") << "SA_Measrate"
                           << ""
                           << "'' is not a number";
    QTest::newRow("not finite") << "SA_Measrate"
                                << "inf"
                                << "'inf' is not a number";
    QTest::newRow("no whole number") << "SA_AveragingNumber"
                                     << "2.5"
                                     << "'2.5' is not a whole number";
    QTest::newRow("too large") << "SA_AveragingNumber"
                               << "99999999999"
                               << "'99999999999' is not a whole number";
    QTest::newRow("no Latin text") << "SA_SensorName" << QString(QChar(0x4E2D))
                                   << QString(QChar(0x4E2D)).prepend("'") +
                                          "' has characters that cannot be sent to a sensor";
}

void SensorParametersTest::wrongTextsAreNotSent()
{
    QFETCH(QString, answer);
    QFETCH(QString, text);
    QSignalSpy refused(model.get(), &ParameterModel::refused);
    const QVariant before = edit(answer);
    CallRecorder recorder;
    QVERIFY(!set(answer, text));
    QCOMPARE(refused.count(), 1);
    QTEST(refused.first().at(1).toString(), "problem");
    QCOMPARE(edit(answer), before);
    QVERIFY(!model->isBusy());
    QVERIFY(recorder.take().filter("S_Command").isEmpty());
}

void SensorParametersTest::changesAreUndoneAndRepeated()
{
    QVERIFY(!model->undoStack()->canUndo());
    QVERIFY(set("SA_OutputAnalog", "on"));
    QTRY_COMPARE(edit("SA_OutputAnalog"), QVariant(1));
    QTRY_VERIFY(model->undoStack()->canUndo());
    QVERIFY(set("SA_Measrate", 4.0));
    QTRY_COMPARE(model->undoStack()->count(), 2);
    model->undoStack()->undo();
    QTRY_COMPARE(edit("SA_Measrate"), QVariant(1.0));
    QCOMPARE(edit("SA_OutputAnalog"), QVariant(1));
    QTRY_VERIFY(!model->isBusy());
    QCOMPARE(valueInSensor(*session, "Get_Samplerate", "SA_Measrate"), QVariant(1.0));
    model->undoStack()->undo();
    QTRY_COMPARE(edit("SA_OutputAnalog"), QVariant(0));
    QVERIFY(!model->undoStack()->canUndo());
    model->undoStack()->redo();
    model->undoStack()->redo();
    QTRY_COMPARE(edit("SA_Measrate"), QVariant(4.0));
    QTRY_COMPARE(edit("SA_OutputAnalog"), QVariant(1));
    QTRY_VERIFY(!model->isBusy());
    QCOMPARE(model->undoStack()->count(), 2);
}

// The second change is made before the sensor has answered the first one.
void SensorParametersTest::changesInARowAreUndoneOneByOne()
{
    QStringList shown;
    connect(model.get(), &ParameterModel::accepted, this,
            [&] { shown += model->valueIndex("SA_Measrate").data().toString(); });
    QVERIFY(set("SA_Measrate", 4.0));
    QVERIFY(set("SA_Measrate", 8.0));
    QCOMPARE(edit("SA_Measrate"), QVariant(8.0));
    QTRY_COMPARE(model->undoStack()->count(), 2);
    QCOMPARE(shown, QStringList({"8 kHz", "8 kHz"})); // the second change still waits when the first is answered
    model->disconnect(this);
    QTRY_VERIFY(!model->isBusy());
    model->undoStack()->undo();
    QTRY_VERIFY(!model->isBusy());
    QCOMPARE(valueInSensor(*session, "Get_Samplerate", "SA_Measrate"), QVariant(4.0));
    model->undoStack()->undo();
    QTRY_VERIFY(!model->isBusy());
    QCOMPARE(valueInSensor(*session, "Get_Samplerate", "SA_Measrate"), QVariant(1.0));
    // Back to the value before.
    QVERIFY(set("SA_Measrate", 4.0));
    QVERIFY(set("SA_Measrate", 1.0));
    QTRY_VERIFY(!model->isBusy());
    QCOMPARE(valueInSensor(*session, "Get_Samplerate", "SA_Measrate"), QVariant(1.0));
    // A refused change was never there.
    QSignalSpy refused(model.get(), &ParameterModel::refused);
    QVERIFY(set("SA_Measrate", 900.0));
    QVERIFY(set("SA_Measrate", 2.0));
    QTRY_VERIFY(!model->isBusy());
    QCOMPARE(refused.count(), 1);
    QCOMPARE(valueInSensor(*session, "Get_Samplerate", "SA_Measrate"), QVariant(2.0));
    model->undoStack()->undo();
    QTRY_VERIFY(!model->isBusy());
    QCOMPARE(valueInSensor(*session, "Get_Samplerate", "SA_Measrate"), QVariant(1.0));
}

void SensorParametersTest::aFileIsAppliedOnTopOfAChange()
{
    QVERIFY(set("SA_Measrate", 4.0));
    QString problem;
    QVERIFY(model->apply({{"Set_Samplerate", {{"SA_Measrate", 1.0}}}}, "a file", &problem));
    QCOMPARE(edit("SA_Measrate"), QVariant(1.0));
    QTRY_VERIFY(!model->isBusy());
    QCOMPARE(valueInSensor(*session, "Get_Samplerate", "SA_Measrate"), QVariant(1.0));
    model->undoStack()->undo();
    QTRY_VERIFY(!model->isBusy());
    QCOMPARE(valueInSensor(*session, "Get_Samplerate", "SA_Measrate"), QVariant(4.0));
}

void SensorParametersTest::aRefusedChangeIsNotUndone()
{
    QSignalSpy refused(model.get(), &ParameterModel::refused);
    QVERIFY(set("SA_Measrate", 900.0));
    QTRY_COMPARE(refused.count(), 1);
    QVERIFY(!model->undoStack()->canUndo());
}

void SensorParametersTest::aRefusedUndoCanBeTriedAgain()
{
    QVERIFY(set("SA_Measrate", 4.0));
    QTRY_VERIFY(model->undoStack()->canUndo());
    QTRY_VERIFY(!model->isBusy());
    QSignalSpy refused(model.get(), &ParameterModel::refused);
    sondixsim::Fault fault;
    fault.command = "Set_Samplerate";
    fault.code = -5;
    const int number = sondixsim::inject(fault);
    model->undoStack()->undo();
    QTRY_COMPARE(refused.count(), 1);
    QTRY_VERIFY(model->undoStack()->canUndo());
    QVERIFY(!model->undoStack()->canRedo());
    QCOMPARE(edit("SA_Measrate"), QVariant(4.0));
    sondixsim::removeFault(number);
    model->undoStack()->undo();
    QTRY_COMPARE(edit("SA_Measrate"), QVariant(1.0));
    QTRY_VERIFY(!model->isBusy());
    QVERIFY(!model->undoStack()->canUndo());
    // A sensor that is not open refuses at once.
    session->reader().stop();
    QTRY_COMPARE(session->state(), SensorReader::Stopped);
    model->undoStack()->redo();
    QCOMPARE(refused.count(), 2);
    QTRY_VERIFY(model->undoStack()->canRedo());
    QVERIFY(!model->undoStack()->canUndo());
}

void SensorParametersTest::differencesToTheReferenceAreMarked()
{
    const QModelIndex rate = model->valueIndex("SA_Measrate");
    QVERIFY(!model->differsFromReference());
    QVERIFY(set("SA_Measrate", 4.0));
    QTRY_VERIFY(rate.data(ParameterModel::DiffersRole).toBool());
    QCOMPARE(rate.siblingAtColumn(ParameterModel::NoteColumn).data().toString(), QString("as found: 1 kHz"));
    model->setReference({{"Set_Samplerate", {{"SA_Measrate", 4}}}}, "file");
    QVERIFY(!rate.data(ParameterModel::DiffersRole).toBool()); // 4 is 4.0
    QVERIFY(!model->differsFromReference());
    model->resetReference();
    QVERIFY(model->differsFromReference());
}

void SensorParametersTest::severalGroupsAreOneChange()
{
    QSignalSpy accepted(model.get(), &ParameterModel::accepted);
    QString problem;
    QVERIFY(model->apply({{"Set_Samplerate", {{"SA_Measrate", 8}}},
                          {"Set_LaserPower", {{"SA_LaserPower", 0}}},
                          {"Set_Averaging", {{"SA_AveragingType", 0}}}},
                         "a file", &problem));
    QTRY_COMPARE(accepted.count(), 1);
    QCOMPARE(accepted.first().first().toString(), QString("a file"));
    QCOMPARE(edit("SA_Measrate"), QVariant(8.0));
    QCOMPARE(edit("SA_LaserPower"), QVariant(0));
    QCOMPARE(model->undoStack()->count(), 1);
    model->undoStack()->undo();
    QTRY_COMPARE(edit("SA_Measrate"), QVariant(1.0));
    QTRY_COMPARE(edit("SA_LaserPower"), QVariant(1));
}

void SensorParametersTest::aRefusalTakesTheWholeChangeBack()
{
    QSignalSpy refused(model.get(), &ParameterModel::refused);
    QString problem;
    QVERIFY(model->apply({{"Set_LaserPower", {{"SA_LaserPower", 0}}}, {"Set_Samplerate", {{"SA_Measrate", 900}}}},
                         "a file", &problem));
    QTRY_COMPARE(refused.count(), 1);
    QTRY_COMPARE(edit("SA_LaserPower"), QVariant(1));
    QCOMPARE(edit("SA_Measrate"), QVariant(1.0));
    QCOMPARE(valueInSensor(*session, "Get_LaserPower", "SA_LaserPower"), QVariant(1));
    QCOMPARE(valueInSensor(*session, "Get_Samplerate", "SA_Measrate"), QVariant(1.0));
    QVERIFY(!model->undoStack()->canUndo());
    QVERIFY(!model->isBusy());
}

void SensorParametersTest::settingsThatTheSensorLacksAreNotSent()
{
    QString problem;
    QVERIFY(!model->apply({{"Set_LaserPower", {{"SA_LaserPower", 0}}}, {"Set_Zoom", {{"SA_Zoom", 1}}}}, "a",
                          &problem));
    QCOMPARE(problem, QString("the sensor has no group of settings 'Set_Zoom'"));
    QVERIFY(!model->apply({{"Set_LaserPower", {{"SA_Zoom", 0}}}}, "a", &problem));
    QCOMPARE(problem, QString("the sensor has no setting 'SA_Zoom' in 'Set_LaserPower'"));
    QVERIFY(!model->apply({{"Set_LaserPower", {{"SA_LaserPower", 0.5}}}}, "a", &problem));
    QVERIFY(problem.contains("is not a whole number"));
    QVERIFY(!model->isBusy());
    QCOMPARE(edit("SA_LaserPower"), QVariant(1));
}

void SensorParametersTest::changesWithoutASensorAreNotSent()
{
    session->close();
    QTRY_COMPARE(session->state(), State::Stopped);
    QSignalSpy refused(model.get(), &ParameterModel::refused);
    QVERIFY(set("SA_Measrate", 4.0));
    QCOMPARE(refused.count(), 1);
    QCOMPARE(refused.first().at(1).toString(), QString("not sent: the sensor is not open"));
    QCOMPARE(edit("SA_Measrate"), QVariant(1.0));
    QVERIFY(!model->isBusy());
}

void SensorParametersTest::changesAreSentAgainWhenTheSensorWasGone()
{
    QVERIFY(set("SA_Measrate", 4.0));
    QTRY_COMPARE(edit("SA_Measrate"), QVariant(4.0));
    QTRY_VERIFY(!model->isBusy());
    sondixsim::unplug("1001");
    QTRY_COMPARE(session->state(), State::Reconnecting);
    CallRecorder recorder;
    sondixsim::plug("1001");
    QTRY_COMPARE(session->state(), State::Reading);
    QVERIFY(recorder.take().contains("SetParameterDouble(\"SP_Measrate\", 4.0)"));
    QCOMPARE(edit("SA_Measrate"), QVariant(4.0));
}

void SensorParametersTest::asksForGroupsThatAreNotReported()
{
    session->close();
    QTRY_COMPARE(session->state(), State::Stopped);
    sondixsim::Fault fault;
    fault.function = "OpenSensor";
    fault.answer = "S_Command=\"Get_Info\" SA_SerialNumber=\"1001\"";
    sondixsim::inject(fault);
    SensorSession other(firstAddress());
    ParameterModel shown(other.reader());
    other.open();
    QTRY_COMPARE(other.state(), State::Reading);
    QCOMPARE(shown.rowCount(), 0);
    shown.askForKnownGroups();
    QTRY_VERIFY(shown.valueIndex("SA_LaserPower").isValid());
    QTRY_COMPARE(shown.valueIndex("SA_TriggerMode").data().toString(), QString("off"));
    QVERIFY(!shown.differsFromReference());
}

void SensorParametersTest::eachSensorOfAMultiSensorHasItsSettings()
{
    sondixsim::loadBench(R"({ "sensors": [
        { "model": "TX270", "serialNumber": "1", "place": { "interface": "RS232", "port": "1" } },
        { "model": "TX270", "serialNumber": "2", "place": { "interface": "RS232", "port": "2" } },
        { "model": "MULTI_SENSOR", "serialNumber": "9", "members": ["1", "2"],
          "place": { "interface": "RS232", "port": "9" } } ] })");
    SensorSession both(
        SensorAddress{MultiSensor, {{"IP_Interface", "RS232"}, {"IP_Port", 9}, {"IP_SensorCount", 2}}});
    ParameterModel settings(both.reader());
    both.open();
    QTRY_COMPARE(both.state(), State::Reading);
    const auto groupOf = [&settings](const QString &title) {
        for (int row = 0; row < settings.rowCount(); ++row)
            if (settings.index(row, 0).data().toString() == title)
                return settings.index(row, 0);
        return QModelIndex();
    };
    const QModelIndex first = groupOf("Sample rate (sensor 1)");
    const QModelIndex second = groupOf("Sample rate (sensor 2)");
    QVERIFY(first.isValid() && second.isValid());
    const QModelIndex value = settings.index(0, ParameterModel::ValueColumn, second);
    const double before = settings.index(0, ParameterModel::ValueColumn, first).data(Qt::EditRole).toDouble();
    const double wanted = before < 1.5 ? 2.0 : 1.0;
    QSignalSpy accepted(&settings, &ParameterModel::accepted);
    QSignalSpy refused(&settings, &ParameterModel::refused);
    CallRecorder recorder;
    QVERIFY(settings.setData(value, wanted, Qt::EditRole));
    QTRY_VERIFY(accepted.size() + refused.size() > 0);
    QVERIFY2(refused.isEmpty(), qPrintable(refused.value(0).value(1).toString()));
    QVERIFY(recorder.take().contains("SetParameterInt(\"IP_SensorIndex\", 2)"));
    // Read again: the second sensor has the value, the first one is as before.
    settings.refresh();
    bool isRead = false;
    both.post("Get_DrvSetting", {}, this, [&isRead](const CommandResult &) { isRead = true; });
    QTRY_VERIFY(isRead);
    QCOMPARE(value.data(Qt::EditRole).toDouble(), wanted);
    QCOMPARE(settings.index(0, ParameterModel::ValueColumn, first).data(Qt::EditRole).toDouble(), before);
    // And is what the second sensor says itself, when it is opened alone.
    both.close();
    QTRY_COMPARE(both.state(), State::Stopped);
    SensorSession alone(SensorAddress{TX270, {{"IP_Interface", "RS232"}, {"IP_Port", 2}}});
    alone.open();
    QTRY_COMPARE(alone.state(), State::Reading);
    QCOMPARE(valueInSensor(alone, "Get_Samplerate", "SA_Measrate").toDouble(), wanted);
}

void SensorParametersTest::filesKeepValuesAndTypes()
{
    QTemporaryDir folder;
    const QString path = folder.filePath("settings.json");
    const ParameterFile file{"TX270", "1001", model->settings()};
    QString problem;
    QVERIFY2(file.save(path, &problem), qPrintable(problem));
    const auto loaded = ParameterFile::load(path, &problem);
    QVERIFY2(loaded, qPrintable(problem));
    QCOMPARE(loaded->model, QString("TX270"));
    QCOMPARE(loaded->serialNumber, QString("1001"));
    QCOMPARE(loaded->settings.keys(), file.settings.keys());
    QVERIFY(set("SA_Measrate", 2.0));
    QTRY_VERIFY(!model->isBusy());
    QVERIFY(model->apply(loaded->settings, "file", &problem));
    QTRY_COMPARE(edit("SA_Measrate"), QVariant(1.0));
    QCOMPARE(edit("SA_Measrate").userType(), int(QMetaType::Double));
    QTRY_VERIFY(!model->isBusy());
    QCOMPARE(model->settings(), file.settings);
}

void SensorParametersTest::wrongFilesAreExplained_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("reason");
    const QByteArray head = R"({"format": "SondixQt settings", "version": 1, "model": "TX270", "settings": )";
    QTest::newRow("empty") << QByteArray() << "line 1:";
    QTest::newRow("no JSON") << QByteArray("{\n\"format\": oops}") << "line 2:";
    QTest::newRow("other JSON") << QByteArray("{}") << "not a file with settings";
    QTest::newRow("array") << QByteArray("[1]") << "not a file with settings";
    QTest::newRow("newer") << QByteArray(R"({"format": "SondixQt settings", "version": 2})") << "newer version";
    QTest::newRow("nothing in it") << head + "{}}"
                                   << "it has no settings";
    QTest::newRow("no group") << head + R"({"Set_Samplerate": 3}})"
                              << "'Set_Samplerate' has no settings";
    QTest::newRow("no value") << head + R"({"Set_Samplerate": {"SA_Measrate": [1]}}})"
                              << "'SA_Measrate' is neither a number nor a text";
}

void SensorParametersTest::wrongFilesAreExplained()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, reason);
    QTemporaryDir folder;
    QFile file(folder.filePath("wrong.json"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    file.close();
    QString problem;
    QVERIFY(!ParameterFile::load(file.fileName(), &problem));
    QVERIFY2(problem.contains(reason) && problem.contains("'wrong.json' cannot be loaded"), qPrintable(problem));
}

void SensorParametersTest::anUnwritableFileIsExplained()
{
    QTemporaryDir folder;
    QString problem;
    const ParameterFile file{"TX270", "1001", model->settings()};
    QVERIFY(!file.save(folder.filePath("missing/settings.json"), &problem));
    QVERIFY2(problem.contains("cannot be written"), qPrintable(problem));
}

QTEST_MAIN(SensorParametersTest)
#include "tst_sensorparameters.moc"
