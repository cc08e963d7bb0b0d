// SPDX-License-Identifier: MIT
#include "support/unit.h"

#include "readerbench.h"

#include "reader/reconnectplan_p.h"

using namespace SondixQt;
using State = SensorReader::State;

namespace {

Reconnect quickly()
{
    Reconnect reconnect;
    reconnect.first = 1ms;
    reconnect.longest = 20ms;
    return reconnect;
}

} // namespace

class ReaderReconnectTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { loadReaderBench(); }
    void cleanup()
    {
        sondixsim::releaseHangs();
        sondixsim::clearFaults();
    }

    void pausesGrowUntilTheTimeIsOver();
    void absurdPausesAreLimited();
    void unlimitedTimesAreAllowed();
    void readsOnAfterACableWasPulled();
    void takesASilentSensorForGone();
    void aSensorThatNeedsNoTriggerAnyMoreIsNotSilentAtOnce();
    void aSensorThatIsGoneAtTheEndLeavesAGap();
    void otherErrorsEndReading();
    void givesUpAfterTheTime();
    void aGarbledDescriptionIsReadAgain();
    void anotherSensorIsAnError();
    void theSerialNumberMayBeUnknownAtFirst();
    void settingsAreAppliedAgainInOrder();
    void aSettingReplacesAnEarlierOneOfItsKind();
    void aRefusedSettingIsForgotten();
    void aRefusedSettingDoesNotReplaceTheEarlierOne();
    void forgottenSettingsAreNotApplied();
    void settingsForgottenMeanwhileAreNotApplied();
    void aChangedFrameIsReported();
    void anInstanceOfTheCallerIsOpenedAgain();
    void canBeStoppedWhileReconnecting();
    void commandsWaitForTheSensor();
};

void ReaderReconnectTest::pausesGrowUntilTheTimeIsOver()
{
    Reconnect reconnect;
    reconnect.first = 500ms;
    reconnect.longest = 3s;
    ReconnectPlan endless(reconnect);
    QCOMPARE(endless.next(0ms), std::optional(500ms));
    QCOMPARE(endless.next(600ms), std::optional(1000ms));
    QCOMPARE(endless.next(1700ms), std::optional(2000ms));
    QCOMPARE(endless.next(1h), std::optional<std::chrono::milliseconds>(3s));
    QCOMPARE(endless.next(24h), std::optional<std::chrono::milliseconds>(3s));
    reconnect.giveUpAfter = 2s;
    ReconnectPlan limited(reconnect);
    QCOMPARE(limited.next(0ms), std::optional(500ms));
    QCOMPARE(limited.next(600ms), std::optional(1000ms));
    QCOMPARE(limited.next(1700ms), std::optional(300ms));
    QVERIFY(!limited.next(2000ms));
}

void ReaderReconnectTest::absurdPausesAreLimited()
{
    Reconnect reconnect;
    reconnect.first = -5s;
    reconnect.longest = -1s;
    ReconnectPlan plan(reconnect);
    QCOMPARE(plan.next(0ms), std::optional(1ms));
    QCOMPARE(plan.next(1ms), std::optional(1ms));
    reconnect.giveUpAfter = -1s;
    QVERIFY(!ReconnectPlan(reconnect).next(0ms));
}

void ReaderReconnectTest::unlimitedTimesAreAllowed()
{
    constexpr auto endless = std::chrono::milliseconds::max();
    Reconnect reconnect;
    reconnect.first = reconnect.longest = endless;
    reconnect.silence = reconnect.giveUpAfter = endless;
    ReconnectPlan plan(reconnect);
    for (int i = 0; i < 3; ++i) {
        const auto pause = plan.next(0ms);
        QVERIFY(pause && *pause >= 24h && *pause <= 24h * 366);
    }
    SensorReader reader(readerAddress());
    reader.setReconnect(reconnect);
    reader.setDeliveryInterval(endless);
    QCOMPARE(reader.deliveryInterval(), std::chrono::milliseconds(1h));
    Recording recording(reader);
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    sondixsim::advance(0.1);
    bool answered = false;
    reader.post("Get_Samplerate", {}, this, [&](const CommandResult &) { answered = true; });
    QTRY_VERIFY(answered);
    reader.stop();
    QTRY_COMPARE(reader.state(), SensorReader::Stopped);
    QCOMPARE(recording.delivered, 100);
    QVERIFY(recording.errors.isEmpty());
}

void ReaderReconnectTest::readsOnAfterACableWasPulled()
{
    SensorReader reader(readerAddress());
    reader.setReconnect(quickly());
    Recording recording(reader);
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    for (int i = 1; i <= 10; ++i) {
        sondixsim::advance(0.1);
        QTRY_COMPARE(recording.delivered, 100 * i);
        sondixsim::unplug(serialNumber);
        QTRY_COMPARE(reader.state(), SensorReader::Reconnecting);
        sondixsim::advance(60.0);
        sondixsim::plug(serialNumber);
        QTRY_COMPARE(reader.state(), SensorReader::Reading);
        QCOMPARE(recording.gaps.size(), i);
        QCOMPARE(recording.errors.size(), i);
    }
    QCOMPARE(recording.holes, 0);
    QCOMPARE(recording.unknownGaps, 10);
    for (const DataGap &gap : qAsConst(recording.gaps)) {
        QCOMPARE(gap.reason, DataGap::Disconnected);
        QVERIFY(!gap.frames);
        QVERIFY(gap.beginTime);
        QCOMPARE(gap.firstFrame, 100);
    }
    QCOMPARE(recording.blocks.last().run(), 9);
    QCOMPARE(recording.frames.size(), 1); // it has not changed
}

void ReaderReconnectTest::takesASilentSensorForGone()
{
    SensorReader reader(readerAddress());
    Reconnect reconnect = quickly();
    reconnect.silence = 100ms;
    reader.setReconnect(reconnect);
    Recording recording(reader);
    reader.start();
    QTRY_VERIFY(recording.states.count(SensorReader::Reconnecting) > 0); // the clock stands still
    QCOMPARE(recording.errors.first(), SilenceError);
    QTRY_VERIFY(recording.states.count(SensorReader::Reading) > 1);
}

void ReaderReconnectTest::aSensorThatNeedsNoTriggerAnyMoreIsNotSilentAtOnce()
{
    SensorReader reader(readerAddress());
    Reconnect reconnect = quickly();
    reconnect.silence = 500ms;
    reader.setReconnect(reconnect);
    reader.addSetting("Set_TriggerMode", {{"SP_TriggerMode", 1}});
    Recording recording(reader);
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::WaitingForTrigger);
    QTest::qWait(600); // longer than the sensor may be silent
    reader.addSetting("Set_TriggerMode", {{"SP_TriggerMode", 0}}, this,
                      [](const CommandResult &) { sondixsim::advance(0.1); });
    QTRY_COMPARE(recording.delivered, 100);
    reader.stop();
    QTRY_COMPARE(reader.state(), SensorReader::Stopped);
    QCOMPARE(recording.states.count(SensorReader::Reconnecting), 0);
}

void ReaderReconnectTest::aSensorThatIsGoneAtTheEndLeavesAGap()
{
    SensorReader reader(readerAddress());
    Recording recording(reader);
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    sondixsim::Fault stuck;
    stuck.command = "Get_Info";
    stuck.hang = true;
    sondixsim::inject(stuck);
    sondixsim::recordCalls(true);
    reader.post("Get_Info", {});
    QTRY_VERIFY(isCommandStaged("Get_Info"));
    reader.stop();
    sondixsim::advance(0.1);
    sondixsim::unplug(serialNumber);
    QTRY_VERIFY((sondixsim::releaseHangs(), reader.state() == SensorReader::Stopped));
    QCOMPARE(recording.delivered, 0);
    QCOMPARE(recording.unknownGaps, 1);
    QCOMPARE(recording.gaps.first().reason, DataGap::Disconnected);
}

void ReaderReconnectTest::otherErrorsEndReading()
{
    SensorReader reader(readerAddress());
    Reconnect reconnect = quickly();
    reconnect.errors = {ErrorCode(-99)};
    reader.setReconnect(reconnect);
    Recording recording(reader);
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    const int fault = scriptFailure("DataAvail", -99, "gone");
    QTRY_COMPARE(reader.state(), SensorReader::Reconnecting);
    QCOMPARE(reader.errorString(), QString("gone"));
    sondixsim::removeFault(fault);
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    scriptFailure("DataAvail", -98, "broken");
    QTRY_COMPARE(reader.state(), SensorReader::Failed);
    QCOMPARE(reader.error(), ErrorCode(-98));
}

void ReaderReconnectTest::givesUpAfterTheTime()
{
    SensorReader reader(readerAddress());
    Reconnect reconnect = quickly();
    reconnect.giveUpAfter = 100ms;
    reader.setReconnect(reconnect);
    Recording recording(reader);
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    sondixsim::unplug(serialNumber);
    QTRY_COMPARE(reader.state(), SensorReader::Failed);
    QCOMPARE(recording.states, QVector<State>({SensorReader::Opening, SensorReader::Reading,
                                               SensorReader::Reconnecting, SensorReader::Failed}));
    QCOMPARE(recording.errors.size(), 2);
}

void ReaderReconnectTest::aGarbledDescriptionIsReadAgain()
{
    SensorReader reader(readerAddress());
    reader.setReconnect(quickly());
    Recording recording(reader);
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    sondixsim::unplug(serialNumber);
    QTRY_COMPARE(reader.state(), SensorReader::Reconnecting);
    sondixsim::Fault garbled;
    garbled.command = "Get_TransmittedDataInfo";
    garbled.answer = "nonsense";
    garbled.times = 1;
    sondixsim::inject(garbled);
    sondixsim::plug(serialNumber);
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    QCOMPARE(reader.frame().valuesPerFrame, 2);
    QCOMPARE(recording.frames.size(), 1);
}

void ReaderReconnectTest::anotherSensorIsAnError()
{
    SensorReader reader(readerAddress());
    reader.setReconnect(quickly());
    Recording recording(reader);
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    sondixsim::unplug(serialNumber);
    QTRY_COMPARE(reader.state(), SensorReader::Reconnecting);
    sondixsim::loadBench(R"({ "sensors": [ { "model": "TX270", "serialNumber": "2002",
        "place": { "interface": "RS232", "port": "3" } } ] })");
    QTRY_COMPARE(reader.state(), SensorReader::Failed);
    QCOMPARE(reader.error(), OtherSensorError);
    QVERIFY(reader.errorString().contains("2002"));
    QVERIFY(reader.errorString().contains(serialNumber));
    SensorInstance other(TX270);
    QCOMPARE(other.open(readerAddress().parameters), NoError); // it was closed
}

void ReaderReconnectTest::theSerialNumberMayBeUnknownAtFirst()
{
    SensorInstance opened(TX270);
    QCOMPARE(opened.open(readerAddress().parameters), NoError);
    SensorInstance instance(NoSensor);
    instance = std::move(opened); // does not take over what the sensor has reported
    instance.storeInterfaceParameters(readerAddress().parameters);
    SensorReader reader(instance);
    reader.setReconnect(quickly());
    Recording recording(reader);
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    for (int i = 0; i < 2; ++i) {
        sondixsim::unplug(serialNumber);
        QTRY_COMPARE(reader.state(), SensorReader::Reconnecting);
        sondixsim::plug(serialNumber);
        QTRY_VERIFY(reader.state() != SensorReader::Reconnecting);
        QCOMPARE(reader.state(), SensorReader::Reading);
    }
}

void ReaderReconnectTest::settingsAreAppliedAgainInOrder()
{
    SensorReader reader(readerAddress());
    reader.setReconnect(quickly());
    Recording recording(reader);
    reader.addSetting("Set_Samplerate", {{"SP_Measrate", 2.0}});
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    bool answered = false;
    reader.addSetting("Set_TriggerMode", {{"SP_TriggerMode", 0}}, this,
                      [&](const CommandResult &result) { answered = result.code == NoError; });
    reader.post("Get_Samplerate", {});
    QTRY_VERIFY(answered);
    CallRecorder recorder;
    sondixsim::unplug(serialNumber);
    QTRY_COMPARE(reader.state(), SensorReader::Reconnecting);
    sondixsim::plug(serialNumber);
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
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

void ReaderReconnectTest::aSettingReplacesAnEarlierOneOfItsKind()
{
    SensorReader reader(readerAddress());
    reader.addSetting("Set_Samplerate", {{"SP_Measrate", 4.0}});
    reader.addSetting("Set_Samplerate", {{"SP_Measrate", 2.0}});
    sondixsim::recordCalls(true);
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    int sent = 0;
    const auto calls = sondixsim::calls();
    for (const sondixsim::Call &call : calls)
        sent += QString::fromStdString(call.text()).contains("\"Set_Samplerate\"") ? 1 : 0;
    QCOMPARE(sent, 1);
}

void ReaderReconnectTest::aRefusedSettingIsForgotten()
{
    SensorReader reader(readerAddress());
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    ErrorCode code = NoError;
    reader.addSetting("Set_Samplerate", {{"SP_Measrate", 1e9}}, this,
                      [&](const CommandResult &result) { code = result.code; });
    QTRY_VERIFY(code != NoError);
    reader.stop();
    QTRY_COMPARE(reader.state(), SensorReader::Stopped);
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
}

void ReaderReconnectTest::aRefusedSettingDoesNotReplaceTheEarlierOne()
{
    SensorReader reader(readerAddress());
    Recording recording(reader);
    reader.addSetting("Set_Samplerate", {{"SP_Measrate", 2.0}});
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    ErrorCode code = NoError;
    reader.addSetting("Set_Samplerate", {{"SP_Measrate", 1e9}}, this,
                      [&](const CommandResult &result) { code = result.code; });
    QTRY_VERIFY(code != NoError);
    reader.stop();
    QTRY_COMPARE(reader.state(), SensorReader::Stopped);
    SensorInstance other(TX270);
    QCOMPARE(other.open(readerAddress().parameters), NoError);
    QCOMPARE(other.sendCommand("Set_Samplerate", {{"SP_Measrate", 1.0}}), NoError);
    other.close();
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    sondixsim::advance(1.0);
    QTRY_COMPARE(recording.delivered, 2000);
}

void ReaderReconnectTest::forgottenSettingsAreNotApplied()
{
    SensorReader reader(readerAddress());
    reader.setReconnect(quickly());
    reader.addSetting("Set_Samplerate", {{"SP_Measrate", 2.0}});
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    reader.clearSettings();
    scriptCommandFailure("Set_Samplerate", -33);
    sondixsim::unplug(serialNumber);
    QTRY_COMPARE(reader.state(), SensorReader::Reconnecting);
    sondixsim::plug(serialNumber);
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
}

void ReaderReconnectTest::settingsForgottenMeanwhileAreNotApplied()
{
    SensorReader reader(readerAddress());
    reader.setReconnect(quickly());
    reader.addSetting("Set_Samplerate", {{"SP_Measrate", 2.0}});
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    sondixsim::unplug(serialNumber);
    QTRY_COMPARE(reader.state(), SensorReader::Reconnecting);
    reader.clearSettings();
    scriptCommandFailure("Set_Samplerate", -33);
    sondixsim::plug(serialNumber);
    QTRY_VERIFY(reader.state() != SensorReader::Reconnecting);
    QCOMPARE(reader.state(), SensorReader::Reading);
}

void ReaderReconnectTest::aChangedFrameIsReported()
{
    SensorReader reader(readerAddress());
    reader.setReconnect(quickly());
    Recording recording(reader);
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    sondixsim::unplug(serialNumber);
    QTRY_COMPARE(reader.state(), SensorReader::Reconnecting);
    sondixsim::loadBench(R"({ "sensors": [ { "model": "TX270", "serialNumber": "1001", "rate": 1000,
        "place": { "interface": "RS232", "port": "3" }, "signals": [ { "name": "Only" } ] } ] })");
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    QCOMPARE(recording.frames.size(), 2);
    QCOMPARE(reader.frame().valuesPerFrame, 1);
    sondixsim::advance(0.1);
    QTRY_COMPARE(recording.delivered, 100);
    QCOMPARE(recording.blocks.last().valuesPerFrame(), 1);
}

void ReaderReconnectTest::anInstanceOfTheCallerIsOpenedAgain()
{
    SensorInstance instance(TX270);
    QCOMPARE(instance.open(readerAddress().parameters), NoError);
    SensorReader reader(instance);
    reader.setReconnect(quickly());
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    sondixsim::unplug(serialNumber);
    QTRY_COMPARE(reader.state(), SensorReader::Reconnecting);
    sondixsim::plug(serialNumber);
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    reader.stop();
    QTRY_COMPARE(reader.state(), SensorReader::Stopped);
    QVERIFY(instance.isOpen()); // as before
}

void ReaderReconnectTest::canBeStoppedWhileReconnecting()
{
    SensorReader reader(readerAddress());
    Reconnect reconnect;
    reconnect.first = 1h;
    reconnect.longest = 1h;
    reader.setReconnect(reconnect);
    Recording recording(reader);
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    sondixsim::unplug(serialNumber);
    QTRY_COMPARE(reader.state(), SensorReader::Reconnecting);
    reader.stop();
    QTRY_COMPARE(reader.state(), SensorReader::Stopped);
    QCOMPARE(recording.errors.size(), 1);
}

void ReaderReconnectTest::commandsWaitForTheSensor()
{
    SensorReader reader(readerAddress());
    reader.setReconnect(quickly());
    reader.start();
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    sondixsim::unplug(serialNumber);
    QTRY_COMPARE(reader.state(), SensorReader::Reconnecting);
    ErrorCode code = ErrorCode(1);
    reader.post("Get_Samplerate", {}, this, [&](const CommandResult &result) { code = result.code; });
    QTest::qWait(50); // time for a mistake: it must still wait
    QCOMPARE(code, ErrorCode(1));
    sondixsim::plug(serialNumber);
    QTRY_COMPARE(code, NoError);
}

QTEST_GUILESS_MAIN(ReaderReconnectTest)
#include "tst_readerreconnect.moc"
