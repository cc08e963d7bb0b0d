// SPDX-License-Identifier: MIT
#include "support/unit.h"

#include "readerbench.h"

#include <QThread>

#include <memory>

using namespace SondixQt;
using State = SensorReader::State;

/// Commands through a reader, slots that stop, start or delete it, and calls that hang.
class ReaderCommandsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { loadReaderBench(); }
    void cleanup() { clearReaderBench(); }

    void commandsAnswerInTheThreadOfTheReader();
    void failuresAreAnswered();
    void commandsKeepTheirOrder();
    void aDestroyedContextGetsNoAnswer();
    void commandsOfAStoppedReaderAreNotSent();
    void commandsThatWaitAtTheEndAreNotSent();
    void commandsAfterARestartAreSent();
    void aStopInTheSlotOfTheEndKeepsTheReaderStopped();
    void slotsMayDeleteTheReader_data();
    void slotsMayDeleteTheReader();
    void slotsMayStopAndStartTheReader();
    void noLockIsHeldInASlot();
    void aHangingCallDelaysDestructionByTwoSecondsAtMost();
    void manyCommandsDoNotDelayReading();
    void manyCommandsDoNotDelayDelivery();
    void aSlowConsumerLeavesTheEventLoopItsOtherWork();
    void aFailedReaderCanBeStartedInASlot();
    void manyReadersReadAtOnce();
    void workIsDoneInTheThreadThatReads();
    void workThatOnlyReadsAsksNothingElse();
    void workOfAStoppedReaderIsNotDone();
};

void ReaderCommandsTest::aSlowConsumerLeavesTheEventLoopItsOtherWork()
{
    constexpr int count = 200;
    constexpr int slowness = 5; // milliseconds
    SensorReader reader(readerAddress());
    reader.start();
    QTRY_COMPARE(reader.state(), State::Reading);
    int answered = 0;
    for (int i = 0; i < count; ++i)
        reader.post("Get_Info", {}, this, [&answered](const CommandResult &) {
            ++answered;
            QThread::msleep(slowness);
        });
    // Behind the others: when it is answered, all answers are in the queue.
    std::atomic<bool> isDone{false};
    reader.call(
        [&isDone](SensorInstance &) {
            isDone = true;
            return CommandResult();
        },
        SensorReader::OnlyReads, this, {});
    QElapsedTimer limit;
    limit.start();
    while (!isDone && limit.elapsed() < 10000)
        QThread::msleep(1);
    QVERIFY(isDone);
    int turns = 0; // of the event loop
    QTimer other;
    connect(&other, &QTimer::timeout, this, [&turns] { ++turns; });
    other.start(0);
    QTRY_COMPARE(answered, count);
    // One turn after 20 of 200 answers would do.
    QVERIFY2(turns >= 10, qPrintable(QString::number(turns)));
}

void ReaderCommandsTest::workIsDoneInTheThreadThatReads()
{
    SensorReader reader(readerAddress());
    Recording recording(reader);
    reader.start();
    QTRY_COMPARE(reader.state(), State::Reading);
    std::atomic<QThread *> worker{nullptr};
    CommandResult result;
    QThread *receiver = nullptr;
    reader.call(
        [&worker](SensorInstance &instance) {
            worker = QThread::currentThread();
            CommandResult answer;
            answer.code = instance.sendCommand("Set_Samplerate", "SP_Measrate", 0.5);
            answer.answer.insert("bytes", QByteArray("\0\1", 2));
            return answer;
        },
        SensorReader::MayChange, this,
        [&](const CommandResult &answer) {
            result = answer;
            receiver = QThread::currentThread();
        });
    QTRY_VERIFY(receiver != nullptr);
    QCOMPARE(receiver, QThread::currentThread());
    QVERIFY(worker.load() != receiver);
    QCOMPARE(result.code, NoError);
    QCOMPARE(result.answer.value("bytes").toByteArray(), QByteArray("\0\1", 2));
    // The reader has noticed the new rate.
    QTRY_COMPARE(reader.frame().datarate, 500.0);
}

void ReaderCommandsTest::workThatOnlyReadsAsksNothingElse()
{
    SensorReader reader(readerAddress());
    reader.start();
    QTRY_COMPARE(reader.state(), State::Reading);
    CallRecorder recorder;
    int answers = 0;
    for (int i = 0; i < 3; ++i)
        reader.call(
            [](SensorInstance &instance) {
                CommandResult result;
                result.code = instance.sendCommand("Get_Averaging");
                return result;
            },
            SensorReader::OnlyReads, this, [&answers](const CommandResult &) { ++answers; });
    QTRY_COMPARE(answers, 3);
    const QStringList calls = recorder.take();
    QCOMPARE(calls.filter("SensorCommand()").size(), 3);
}

void ReaderCommandsTest::workOfAStoppedReaderIsNotDone()
{
    SensorReader reader(readerAddress());
    bool isDone = false;
    CommandResult result;
    reader.call(
        [&isDone](SensorInstance &) {
            isDone = true;
            return CommandResult();
        },
        SensorReader::OnlyReads, this, [&result](const CommandResult &answer) { result = answer; });
    QTRY_COMPARE(result.code, StoppedError);
    QVERIFY(!isDone);
}

void ReaderCommandsTest::commandsAnswerInTheThreadOfTheReader()
{
    SensorReader reader(readerAddress());
    reader.start();
    CommandResult result;
    QThread *thread = nullptr;
    reader.post("Get_Samplerate", {}, this, [&](const CommandResult &answer) {
        result = answer;
        thread = QThread::currentThread();
    });
    QTRY_VERIFY(thread != nullptr);
    QCOMPARE(thread, QThread::currentThread());
    QCOMPARE(result.code, NoError);
    QCOMPARE(result.answer.value("SA_Measrate").toDouble(), 1.0);
}

void ReaderCommandsTest::failuresAreAnswered()
{
    scriptCommandFailure("Set_Laser", -40, "no laser");
    SensorReader reader(readerAddress());
    reader.start();
    CommandResult result;
    reader.post("Set_Laser", {{"SP_Laser", 1}}, this, [&](const CommandResult &answer) { result = answer; });
    QTRY_COMPARE(result.code, ErrorCode(-40));
    QCOMPARE(result.errorText, QString("no laser"));
    QCOMPARE(reader.state(), SensorReader::Reading);
}

void ReaderCommandsTest::commandsKeepTheirOrder()
{
    SensorReader reader(readerAddress());
    reader.start();
    QVector<int> order;
    for (int i = 0; i < 50; ++i)
        reader.post("Get_Samplerate", {}, this, [&order, i](const CommandResult &) { order.append(i); });
    QTRY_COMPARE(order.size(), 50);
    QVERIFY(std::is_sorted(order.begin(), order.end()));
}

void ReaderCommandsTest::aDestroyedContextGetsNoAnswer()
{
    SensorReader reader(readerAddress());
    reader.start();
    bool called = false;
    bool last = false;
    {
        QObject context;
        reader.post("Get_Samplerate", {}, &context, [&](const CommandResult &) { called = true; });
    }
    reader.post("Get_Samplerate", {}, nullptr, [&](const CommandResult &) { last = true; });
    QTRY_VERIFY(last);
    QVERIFY(!called);
}

void ReaderCommandsTest::commandsOfAStoppedReaderAreNotSent()
{
    SensorReader reader(readerAddress());
    ErrorCode code = NoError;
    reader.post("Get_Samplerate", {}, this, [&](const CommandResult &result) { code = result.code; });
    QCOMPARE(code, NoError); // not before the event loop
    QTRY_COMPARE(code, StoppedError);
}

void ReaderCommandsTest::commandsThatWaitAtTheEndAreNotSent()
{
    sondixsim::Fault stuck;
    stuck.command = "Get_Samplerate";
    stuck.hang = true;
    stuck.from = 2; // the first one is the reader's own
    SensorReader reader(readerAddress());
    sondixsim::inject(stuck);
    QVERIFY(startReading(reader));
    QVector<ErrorCode> codes;
    for (int i = 0; i < 3; ++i)
        reader.post("Get_Samplerate", {}, this, [&](const CommandResult &result) { codes.append(result.code); });
    reader.stop();
    // The call may begin to hang only now.
    QTRY_VERIFY((sondixsim::releaseHangs(), reader.state() == SensorReader::Stopped));
    QCOMPARE(codes.size(), 3);
    QCOMPARE(codes.last(), StoppedError);
}

void ReaderCommandsTest::commandsAfterARestartAreSent()
{
    SensorReader reader(readerAddress());
    QVERIFY(startReading(reader));
    reader.stop();
    reader.start();
    ErrorCode code = ErrorCode(1);
    reader.post("Get_Samplerate", {}, this, [&](const CommandResult &result) { code = result.code; });
    QTRY_VERIFY(code != ErrorCode(1));
    QCOMPARE(code, NoError);
    reader.stop();
    reader.start();
    reader.post("Get_Samplerate", {}, this, [&](const CommandResult &result) { code = result.code; });
    reader.stop();
    QTRY_COMPARE(code, StoppedError);
    QTRY_COMPARE(reader.state(), SensorReader::Stopped);
}

void ReaderCommandsTest::aStopInTheSlotOfTheEndKeepsTheReaderStopped()
{
    SensorReader reader(readerAddress());
    QVector<State> states;
    ErrorCode code = NoError;
    connect(&reader, &SensorReader::stateChanged, this, [&](State state) {
        states.append(state);
        if (state == SensorReader::Stopped)
            reader.stop();
    });
    QVERIFY(startReading(reader));
    reader.stop();
    reader.start();
    reader.post("Get_Samplerate", {}, this, [&](const CommandResult &result) { code = result.code; });
    QTRY_COMPARE(code, StoppedError);
    QCOMPARE(states.last(), SensorReader::Stopped);
}

void ReaderCommandsTest::slotsMayDeleteTheReader_data()
{
    QTest::addColumn<QString>("place");
    for (const char *place : {"block", "gap", "state", "error", "frame", "answer"})
        QTest::newRow(place) << QString(place);
}

void ReaderCommandsTest::slotsMayDeleteTheReader()
{
    QFETCH(QString, place);
    auto *reader = new SensorReader(readerAddress());
    bool deleted = false;
    const auto remove = [&] {
        if (!deleted)
            delete reader;
        deleted = true;
    };
    if (place == "block")
        connect(reader, &SensorReader::blockReady, this, remove);
    if (place == "gap")
        connect(reader, &SensorReader::gapDetected, this, remove);
    if (place == "state")
        connect(reader, &SensorReader::stateChanged, this, remove);
    if (place == "error")
        connect(reader, &SensorReader::errorOccurred, this, remove);
    if (place == "frame")
        connect(reader, &SensorReader::frameChanged, this, remove);
    Reconnect reconnect;
    reconnect.first = 1ms;
    reader->setReconnect(reconnect);
    reader->start();
    if (place == "answer")
        reader->post("Get_Samplerate", {}, this, [&](const CommandResult &) { remove(); });
    if (place == "block" || place == "gap" || place == "error") {
        QTRY_COMPARE(reader->state(), SensorReader::Reading);
        sondixsim::advance(0.1);
    }
    if (place == "gap" || place == "error")
        sondixsim::unplug(serialNumber);
    QTRY_VERIFY(deleted);
}

void ReaderCommandsTest::slotsMayStopAndStartTheReader()
{
    SensorReader reader(readerAddress());
    Recording recording(reader);
    int starts = 0;
    connect(&reader, &SensorReader::blockReady, &reader, [&] { reader.stop(); });
    connect(&reader, &SensorReader::stateChanged, &reader, [&](State state) {
        if (state == SensorReader::Stopped && starts < 5) {
            ++starts;
            reader.start();
        }
        if (state == SensorReader::Reading)
            sondixsim::advance(0.1);
    });
    reader.start();
    QTRY_COMPARE(recording.states.count(SensorReader::Stopped), 6);
    QCOMPARE(starts, 5);
    QCOMPARE(reader.state(), SensorReader::Stopped);
}

void ReaderCommandsTest::noLockIsHeldInASlot()
{
    SensorInstance instance(TX270);
    QCOMPARE(instance.open(readerAddress().parameters), NoError);
    SensorReader reader(instance);
    bool sent = false;
    connect(&reader, &SensorReader::blockReady, this, [&] {
        // Another thread can use the instance meanwhile.
        std::thread other([&] { sent = instance.sendCommand("Get_Samplerate") == NoError; });
        other.join();
        reader.stop();
    });
    QVERIFY(startReading(reader));
    sondixsim::advance(0.1);
    QTRY_COMPARE(reader.state(), SensorReader::Stopped);
    QVERIFY(sent);
}

void ReaderCommandsTest::aHangingCallDelaysDestructionByTwoSecondsAtMost()
{
    auto reader = std::make_unique<SensorReader>(readerAddress());
    reader->start();
    QTRY_COMPARE(reader->state(), SensorReader::Reading);
    sondixsim::Fault stuck;
    stuck.function = "DataAvail";
    stuck.hang = true;
    stuck.times = 1;
    sondixsim::recordCalls(true);
    sondixsim::inject(stuck);
    QTest::qWait(100);
    QElapsedTimer clock;
    clock.start();
    reader.reset();
    QVERIFY(clock.elapsed() < 10000); // the call hangs until it is released
    sondixsim::releaseHangs();
    // The thread has let go of the sensor when the call returned.
    SensorInstance other(TX270);
    QTRY_COMPARE(other.open(readerAddress().parameters), NoError);
}

void ReaderCommandsTest::manyCommandsDoNotDelayReading()
{
    SensorReader reader(readerAddress());
    Recording recording(reader);
    QVERIFY(startReading(reader));
    int left = 300;
    SensorReader::Callback next = [&](const CommandResult &) {
        if (--left > 0)
            reader.post("Get_Samplerate", {}, this, next);
    };
    reader.post("Get_Samplerate", {}, this, next);
    QTRY_COMPARE(left, 0);
    sondixsim::advance(0.1);
    QTRY_COMPARE_WITH_TIMEOUT(recording.delivered, 100, 2000);
}

void ReaderCommandsTest::manyCommandsDoNotDelayDelivery()
{
    SensorReader reader(readerAddress());
    int answered = 0;
    int answeredBefore = -1;
    connect(&reader, &SensorReader::blockReady, this, [&] {
        if (answeredBefore < 0)
            answeredBefore = answered;
    });
    QVERIFY(startReading(reader));
    sondixsim::Fault slow;
    slow.command = "Get_Samplerate";
    slow.delay = 0.02;
    sondixsim::inject(slow);
    sondixsim::advance(0.1);
    constexpr int count = 50;
    for (int i = 0; i < count; ++i)
        reader.post("Get_Samplerate", {}, this, [&](const CommandResult &) { ++answered; });
    QTRY_COMPARE(answered, count);
    QVERIFY(answeredBefore >= 0 && answeredBefore < count / 2);
}

void ReaderCommandsTest::aFailedReaderCanBeStartedInASlot()
{
    sondixsim::unplug(serialNumber);
    SensorReader reader(readerAddress());
    Recording recording(reader);
    connect(&reader, &SensorReader::errorOccurred, &reader, [&] {
        sondixsim::plug(serialNumber);
        reader.start();
    });
    QVERIFY(startReading(reader));
    QCOMPARE(recording.states, QVector<State>({SensorReader::Opening, SensorReader::Failed, SensorReader::Opening,
                                               SensorReader::Reading}));
}

void ReaderCommandsTest::manyReadersReadAtOnce()
{
    QByteArray text = R"({ "sensors": [ )";
    constexpr int count = 20;
    for (int i = 1; i <= count; ++i) {
        text += QByteArray(i > 1 ? "," : "") + R"({ "model": "TX270", "serialNumber": ")" + QByteArray::number(i) +
                R"(", "rate": 1000, "place": { "interface": "RS232", "port": )" + '"' + QByteArray::number(i) +
                R"(" } })";
    }
    sondixsim::loadBench((text + "] }").toStdString());
    sondixsim::useVirtualClock();
    std::vector<std::unique_ptr<SensorReader>> readers;
    std::vector<std::unique_ptr<Recording>> recordings;
    for (int i = 1; i <= count; ++i) {
        readers.push_back(
            std::make_unique<SensorReader>(SensorAddress{TX270, {{"IP_Interface", "RS232"}, {"IP_Port", i}}}));
        recordings.push_back(std::make_unique<Recording>(*readers.back()));
        readers.back()->start();
    }
    for (const auto &reader : readers)
        QTRY_COMPARE(reader->state(), SensorReader::Reading);
    for (int i = 0; i < 20; ++i)
        sondixsim::advance(0.1);
    for (const auto &recording : recordings) {
        QTRY_COMPARE(recording->delivered + recording->lost, 2000);
        QCOMPARE(recording->holes, 0);
    }
}

QTEST_GUILESS_MAIN(ReaderCommandsTest)
#include "tst_readercommands.moc"
