// SPDX-License-Identifier: MIT
#include "support/unit.h"

#include "readerbench.h"
#include "support/callrecorder.h"

#include "reader/reconnectplan_p.h"

using namespace SondixQt;
using State = SensorReader::State;

class ReaderReconnectTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { loadReaderBench(); }
    void cleanup() { clearReaderBench(); }

    void pausesGrowUntilTheTimeIsOver();
    void absurdPausesAreLimited();
    void unlimitedTimesAreAllowed();
    void readsOnAfterACableWasPulled();
    void takesASilentSensorForGone();
    void aSensorThatNeedsNoTriggerAnyMoreIsNotSilentAtOnce();
    void aLongCommandIsNoSilence();
    void aStoppedProcessIsNoSilence();
    void aSensorThatIsGoneAtTheEndLeavesAGap();
    void otherErrorsEndReading();
    void aSensorThatOpensButSendsNothingIsGivenUp_data();
    void aSensorThatOpensButSendsNothingIsGivenUp();
    void givesUpAfterTheTime();
    void aGarbledDescriptionIsReadAgain();
    void identifiesSensorsByTheirNumbers_data();
    void identifiesSensorsByTheirNumbers();
    void anotherSensorIsAnError();
    void theSerialNumberMayBeUnknownAtFirst();
    void aSensorThatDoesNotTellItsNumberIsOpenedAgain();
    void anInstanceOfTheCallerForgetsTheOldNumber();
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
    QVERIFY(startReading(reader));
    sondixsim::advance(0.1);
    bool answered = false;
    reader.post("Get_Samplerate", {}, this, [&](const CommandResult &) { answered = true; });
    QTRY_VERIFY(answered);
    QVERIFY(stopReading(reader));
    QCOMPARE(recording.delivered, 100);
    QVERIFY(recording.errors.isEmpty());
}

void ReaderReconnectTest::readsOnAfterACableWasPulled()
{
    SensorReader reader(readerAddress());
    reader.setReconnect(quickly());
    Recording recording(reader);
    QVERIFY(startReading(reader));
    for (int i = 1; i <= 10; ++i) {
        sondixsim::advance(0.1);
        QTRY_COMPARE(recording.delivered, 100 * i);
        QVERIFY(unplugSensor(reader));
        sondixsim::advance(60.0);
        QVERIFY(plugSensor(reader));
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
    QVERIFY(stopReading(reader));
    QCOMPARE(recording.states.count(SensorReader::Reconnecting), 0);
}

// The sensor has sent values meanwhile, but it takes a moment until they have passed the operating system and the
// sensor-access library. Here a call that hangs keeps the reader from looking.
void ReaderReconnectTest::aStoppedProcessIsNoSilence()
{
    constexpr int silenceMs = 2000;
    SensorReader reader(readerAddress());
    Reconnect reconnect = quickly();
    reconnect.silence = std::chrono::milliseconds(silenceMs);
    reader.setReconnect(reconnect);
    Recording recording(reader);
    QVERIFY(startReading(reader));
    sondixsim::Fault fault;
    fault.function = "DataAvail";
    fault.hang = true;
    CallRecorder recorder;
    const int number = sondixsim::inject(fault);
    QTest::qWait(silenceMs / 2);
    recorder.take();
    QTest::qWait(silenceMs / 2 + 200); // together longer than the sensor may be silent
    QCOMPARE(recorder.take(), QStringList());
    sondixsim::removeFault(number);
    sondixsim::releaseHangs();
    QTRY_VERIFY(!sondixsim::calls().empty()); // it has looked, and there was nothing
    sondixsim::advance(0.1);
    QTRY_COMPARE(recording.delivered, 100);
    QVERIFY(stopReading(reader));
    QCOMPARE(recording.states.count(SensorReader::Reconnecting), 0);
}

void ReaderReconnectTest::aLongCommandIsNoSilence()
{
    SensorReader reader(readerAddress());
    Reconnect reconnect = quickly();
    reconnect.silence = 500ms;
    reader.setReconnect(reconnect);
    Recording recording(reader);
    QVERIFY(startReading(reader));
    bool answered = false;
    const auto takesLong = [](SensorInstance &) {
        QThread::msleep(700); // longer than the sensor may be silent; it measures nothing meanwhile
        return CommandResult();
    };
    reader.call(takesLong, SensorReader::OnlyReads, this, [&](const CommandResult &) { answered = true; });
    QTRY_VERIFY(answered);
    // The reader has looked for values again when it answers the next command.
    answered = false;
    reader.post("Get_Samplerate", {}, this, [&](const CommandResult &) {
        answered = true;
        sondixsim::advance(0.1);
    });
    QTRY_VERIFY(answered);
    QTRY_COMPARE(recording.delivered, 100);
    QVERIFY(stopReading(reader));
    QCOMPARE(recording.errors, QVector<ErrorCode>());
}

void ReaderReconnectTest::aSensorThatIsGoneAtTheEndLeavesAGap()
{
    SensorReader reader(readerAddress());
    Recording recording(reader);
    QVERIFY(startReading(reader));
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

void ReaderReconnectTest::aSensorThatOpensButSendsNothingIsGivenUp_data()
{
    QTest::addColumn<bool>("fails");
    QTest::newRow("silence") << false;
    QTest::newRow("failing transfers") << true;
}

void ReaderReconnectTest::aSensorThatOpensButSendsNothingIsGivenUp()
{
    QFETCH(const bool, fails);
    SensorReader reader(readerAddress());
    Reconnect reconnect = quickly();
    reconnect.longest = 10s;
    reconnect.giveUpAfter = 300ms;
    if (!fails)
        reconnect.silence = 50ms;
    reader.setReconnect(reconnect);
    Recording recording(reader);
    QVERIFY(startReading(reader));
    if (fails)
        scriptFailure("DataAvail", -33);
    QTRY_COMPARE(reader.state(), SensorReader::Failed);
    QVERIFY(recording.states.count(SensorReader::Reconnecting) > 1);
    QCOMPARE(recording.gaps.size(), 1);
    QCOMPARE(recording.gaps.first().reason, DataGap::Disconnected);
    QVERIFY(!recording.gaps.first().frames);
}

void ReaderReconnectTest::otherErrorsEndReading()
{
    SensorReader reader(readerAddress());
    Reconnect reconnect = quickly();
    reconnect.errors = {ErrorCode(-99)};
    reader.setReconnect(reconnect);
    Recording recording(reader);
    QVERIFY(startReading(reader));
    const int fault = scriptFailure("DataAvail", -99, "gone");
    QTRY_COMPARE(reader.state(), SensorReader::Reconnecting);
    QCOMPARE(reader.errorString(), QString("gone"));
    sondixsim::removeFault(fault);
    QTRY_COMPARE(reader.state(), SensorReader::Reading);
    scriptFailure("DataAvail", -98, "broken");
    QTRY_COMPARE(reader.state(), SensorReader::Failed);
    QCOMPARE(reader.error(), ErrorCode(-98));
    QCOMPARE(recording.gaps.size(), 2); // one until a frame arrives, however often the sensor is opened
    QCOMPARE(recording.gaps.last().reason, DataGap::Disconnected);
    QVERIFY(!recording.gaps.last().frames);
    QCOMPARE(recording.holes, 0);
}

void ReaderReconnectTest::givesUpAfterTheTime()
{
    SensorReader reader(readerAddress());
    Reconnect reconnect = quickly();
    reconnect.giveUpAfter = 100ms;
    reader.setReconnect(reconnect);
    Recording recording(reader);
    QVERIFY(startReading(reader));
    sondixsim::unplug(serialNumber);
    QTRY_COMPARE(reader.state(), SensorReader::Failed);
    QCOMPARE(recording.states, QVector<State>({SensorReader::Opening, SensorReader::Reading,
                                               SensorReader::Reconnecting, SensorReader::Failed}));
    QCOMPARE(recording.errors.size(), 2);
    QCOMPARE(recording.gaps.size(), 1);
}

void ReaderReconnectTest::aGarbledDescriptionIsReadAgain()
{
    SensorReader reader(readerAddress());
    reader.setReconnect(quickly());
    Recording recording(reader);
    QVERIFY(startReading(reader));
    QVERIFY(unplugSensor(reader));
    sondixsim::Fault garbled;
    garbled.command = "Get_TransmittedDataInfo";
    garbled.answer = "nonsense";
    garbled.times = 1;
    sondixsim::inject(garbled);
    QVERIFY(plugSensor(reader));
    QCOMPARE(reader.frame().valuesPerFrame, 2);
    QCOMPARE(recording.frames.size(), 1);
}

void ReaderReconnectTest::identifiesSensorsByTheirNumbers_data()
{
    QTest::addColumn<QStringList>("before");
    QTest::addColumn<QStringList>("now");
    QTest::addColumn<int>("expected");
    const auto row = [](const char *name, const QStringList &before, const QStringList &now, Identity expected) {
        QTest::newRow(name) << before << now << int(expected);
    };
    row("same", {"1", "2"}, {"1", "2"}, Identity::Same);
    row("never known", {""}, {"1"}, Identity::Same);
    row("one of two known later", {"1", ""}, {"1", "2"}, Identity::Same);
    row("other", {"1"}, {"2"}, Identity::Other);
    row("one of two is another", {"1", "2"}, {"", "3"}, Identity::Other);
    row("one more", {"1"}, {"1", "2"}, Identity::Other);
    row("nothing reported", {"1", "2"}, {}, Identity::Unknown);
    row("not reported", {"1"}, {""}, Identity::Unknown);
    row("one of two not reported", {"1", "2"}, {"1", ""}, Identity::Unknown);
}

void ReaderReconnectTest::identifiesSensorsByTheirNumbers()
{
    QFETCH(QStringList, before);
    QFETCH(QStringList, now);
    QFETCH(int, expected);
    QCOMPARE(int(compareIdentity(before, now)), expected);
}

void ReaderReconnectTest::anotherSensorIsAnError()
{
    SensorReader reader(readerAddress());
    reader.setReconnect(quickly());
    Recording recording(reader);
    QVERIFY(startReading(reader));
    QVERIFY(unplugSensor(reader));
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
    QVERIFY(startReading(reader));
    for (int i = 0; i < 2; ++i) {
        QVERIFY(unplugSensor(reader));
        sondixsim::plug(serialNumber);
        QTRY_VERIFY(reader.state() != SensorReader::Reconnecting);
        QCOMPARE(reader.state(), SensorReader::Reading);
    }
}

void ReaderReconnectTest::aSensorThatDoesNotTellItsNumberIsOpenedAgain()
{
    SensorReader reader(readerAddress());
    reader.setReconnect(quickly());
    Recording recording(reader);
    QVERIFY(startReading(reader));
    QVERIFY(unplugSensor(reader));
    sondixsim::Fault unreadable;
    unreadable.parameter = "SA_SensorInformation";
    unreadable.code = -33;
    unreadable.times = 2;
    sondixsim::inject(unreadable);
    sondixsim::plug(serialNumber);
    QTRY_VERIFY(reader.state() != SensorReader::Reconnecting);
    QCOMPARE(reader.state(), SensorReader::Reading);
    QCOMPARE(reader.sensorInformation().value(0).value("SA_SerialNumber").toString(), QString(serialNumber));
}

void ReaderReconnectTest::anInstanceOfTheCallerForgetsTheOldNumber()
{
    SensorInstance instance(TX270);
    QCOMPARE(instance.open(readerAddress().parameters), NoError);
    SensorReader reader(instance);
    Reconnect reconnect = quickly();
    reconnect.giveUpAfter = 300ms;
    reader.setReconnect(reconnect);
    QVERIFY(startReading(reader));
    scriptParameterFailure("SA_SensorInformation", -33);
    QVERIFY(unplugSensor(reader));
    sondixsim::plug(serialNumber);
    QTRY_VERIFY(reader.state() != SensorReader::Reconnecting);
    QCOMPARE(reader.state(), SensorReader::Failed); // nobody knows which sensor it is
    QCOMPARE(reader.error(), OtherSensorError);
    QVERIFY(instance.getInfoParameter("SA_SerialNumber", 1).toString().isEmpty());
}

void ReaderReconnectTest::aChangedFrameIsReported()
{
    SensorReader reader(readerAddress());
    reader.setReconnect(quickly());
    Recording recording(reader);
    QVERIFY(startReading(reader));
    QVERIFY(unplugSensor(reader));
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
    QVERIFY(startReading(reader));
    QVERIFY(unplugSensor(reader));
    QVERIFY(plugSensor(reader));
    QVERIFY(stopReading(reader));
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
    QVERIFY(startReading(reader));
    QVERIFY(unplugSensor(reader));
    QVERIFY(stopReading(reader));
    QCOMPARE(recording.errors.size(), 1);
}

void ReaderReconnectTest::commandsWaitForTheSensor()
{
    SensorReader reader(readerAddress());
    reader.setReconnect(quickly());
    QVERIFY(startReading(reader));
    QVERIFY(unplugSensor(reader));
    ErrorCode code = ErrorCode(1);
    reader.post("Get_Samplerate", {}, this, [&](const CommandResult &result) { code = result.code; });
    QTest::qWait(50); // time for a mistake: it must still wait
    QCOMPARE(code, ErrorCode(1));
    sondixsim::plug(serialNumber);
    QTRY_COMPARE(code, NoError);
}

QTEST_GUILESS_MAIN(ReaderReconnectTest)
#include "tst_readerreconnect.moc"
