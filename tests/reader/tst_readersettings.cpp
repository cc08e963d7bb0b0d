// SPDX-License-Identifier: MIT
#include "support/unit.h"

#include "readerbench.h"

using namespace SondixQt;

/// The settings that a reader applies after every opening.
class ReaderSettingsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { loadReaderBench(); }
    void cleanup() { clearReaderBench(); }

    void settingsAreAppliedAgainInOrder();
    void aSettingReplacesAnEarlierOneOfItsKind();
    void aSettingAddedBeforeARestartIsSentOnce();
    void aSettingForgottenBeforeARestartIsNotKept();
    void aRefusedSettingIsForgotten();
    void aRefusedSettingDoesNotReplaceTheEarlierOne();
    void forgottenSettingsAreNotApplied();
    void settingsForgottenMeanwhileAreNotApplied();
};

void ReaderSettingsTest::settingsAreAppliedAgainInOrder()
{
    SensorReader reader(readerAddress());
    reader.setReconnect(quickly());
    Recording recording(reader);
    reader.addSetting("Set_Samplerate", {{"SP_Measrate", 2.0}});
    QVERIFY(startReading(reader));
    bool answered = false;
    reader.addSetting("Set_TriggerMode", {{"SP_TriggerMode", 0}}, this,
                      [&](const CommandResult &result) { answered = result.code == NoError; });
    reader.post("Get_Samplerate", {});
    QTRY_VERIFY(answered);
    CallRecorder recorder;
    QVERIFY(unplugSensor(reader));
    QVERIFY(plugSensor(reader));
    QStringList commands;
    const auto calls = sondixsim::calls();
    for (const sondixsim::Call &call : calls) {
        const QString text = QString::fromStdString(call.text());
        if (text.startsWith("SetParameterString(\"S_Command\", \"Set_"))
            commands.append(text.section('"', 3, 3));
    }
    QCOMPARE(commands, QStringList({"Set_Samplerate", "Set_TriggerMode"}));
    sondixsim::advance(0.1);
    QTRY_VERIFY(!recording.blocks.isEmpty());
    QVERIFY(qAbs(recording.blocks.last().frameInterval().value_or(0.0) - 0.0005) < 1e-9);
}

void ReaderSettingsTest::aSettingReplacesAnEarlierOneOfItsKind()
{
    SensorReader reader(readerAddress());
    reader.addSetting("Set_Samplerate", {{"SP_Measrate", 4.0}});
    reader.addSetting("Set_Samplerate", {{"SP_Measrate", 2.0}});
    sondixsim::recordCalls(true);
    QVERIFY(startReading(reader));
    int sent = 0;
    const auto calls = sondixsim::calls();
    for (const sondixsim::Call &call : calls)
        sent += QString::fromStdString(call.text()).contains("\"Set_Samplerate\"") ? 1 : 0;
    QCOMPARE(sent, 1);
}

void ReaderSettingsTest::aSettingAddedBeforeARestartIsSentOnce()
{
    SensorReader reader(readerAddress());
    reader.setReconnect(quickly());
    QVERIFY(startReading(reader));
    const auto sent = [] {
        const auto calls = sondixsim::calls();
        return std::count_if(calls.begin(), calls.end(), [](const sondixsim::Call &call) {
            return QString::fromStdString(call.text()).contains("\"Set_Samplerate\"");
        });
    };
    {
        CallRecorder recorder;
        bool accepted = false;
        reader.stop();
        reader.start();
        reader.addSetting("Set_Samplerate", {{"SP_Measrate", 2.0}}, this,
                          [&](const CommandResult &result) { accepted = result.code == NoError; });
        QTRY_VERIFY(accepted);
        QCOMPARE(sent(), 1);
    }
    CallRecorder recorder;
    QVERIFY(unplugSensor(reader));
    QVERIFY(plugSensor(reader));
    QCOMPARE(sent(), 1);
}

void ReaderSettingsTest::aSettingForgottenBeforeARestartIsNotKept()
{
    SensorReader reader(readerAddress());
    reader.setReconnect(quickly());
    QVERIFY(startReading(reader));
    bool accepted = false;
    reader.stop();
    reader.start();
    reader.addSetting("Set_Samplerate", {{"SP_Measrate", 2.0}}, this,
                      [&](const CommandResult &result) { accepted = result.code == NoError; });
    reader.clearSettings();
    QTRY_VERIFY(accepted);
    CallRecorder recorder;
    QVERIFY(unplugSensor(reader));
    QVERIFY(plugSensor(reader));
    QVERIFY(!isCommandStaged("Set_Samplerate"));
}

void ReaderSettingsTest::aRefusedSettingIsForgotten()
{
    SensorReader reader(readerAddress());
    QVERIFY(startReading(reader));
    ErrorCode code = NoError;
    reader.addSetting("Set_Samplerate", {{"SP_Measrate", 1e9}}, this,
                      [&](const CommandResult &result) { code = result.code; });
    QTRY_VERIFY(code != NoError);
    QVERIFY(stopReading(reader));
    QVERIFY(startReading(reader));
}

void ReaderSettingsTest::aRefusedSettingDoesNotReplaceTheEarlierOne()
{
    SensorReader reader(readerAddress());
    Recording recording(reader);
    reader.addSetting("Set_Samplerate", {{"SP_Measrate", 2.0}});
    QVERIFY(startReading(reader));
    ErrorCode code = NoError;
    reader.addSetting("Set_Samplerate", {{"SP_Measrate", 1e9}}, this,
                      [&](const CommandResult &result) { code = result.code; });
    QTRY_VERIFY(code != NoError);
    QVERIFY(stopReading(reader));
    SensorInstance other(TX270);
    QCOMPARE(other.open(readerAddress().parameters), NoError);
    QCOMPARE(other.sendCommand("Set_Samplerate", {{"SP_Measrate", 1.0}}), NoError);
    other.close();
    QVERIFY(startReading(reader));
    sondixsim::advance(1.0);
    QTRY_COMPARE(recording.delivered, 2000);
}

void ReaderSettingsTest::forgottenSettingsAreNotApplied()
{
    SensorReader reader(readerAddress());
    reader.setReconnect(quickly());
    reader.addSetting("Set_Samplerate", {{"SP_Measrate", 2.0}});
    QVERIFY(startReading(reader));
    reader.clearSettings();
    scriptCommandFailure("Set_Samplerate", -33);
    QVERIFY(unplugSensor(reader));
    QVERIFY(plugSensor(reader));
}

void ReaderSettingsTest::settingsForgottenMeanwhileAreNotApplied()
{
    SensorReader reader(readerAddress());
    reader.setReconnect(quickly());
    reader.addSetting("Set_Samplerate", {{"SP_Measrate", 2.0}});
    QVERIFY(startReading(reader));
    QVERIFY(unplugSensor(reader));
    reader.clearSettings();
    scriptCommandFailure("Set_Samplerate", -33);
    sondixsim::plug(serialNumber);
    QTRY_VERIFY(reader.state() != SensorReader::Reconnecting);
    QCOMPARE(reader.state(), SensorReader::Reading);
}

QTEST_GUILESS_MAIN(ReaderSettingsTest)
#include "tst_readersettings.moc"
