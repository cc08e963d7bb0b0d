// SPDX-License-Identifier: MIT
#include "instance/transferbench.h"

#include <QElapsedTimer>

#include <atomic>
#include <thread>

using namespace SondixQt;

/// Two threads on one instance: one sends commands, the other transfers values.
class TestTransferThreads : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void commandsAndTransfersDoNotMix();
};

namespace {

constexpr int operationsPerRound = 200;

int secondsToRun()
{
    bool set = false;
    const int seconds = qEnvironmentVariableIntValue("SONDIXQT_THREAD_TEST_SECONDS", &set);
    return set ? seconds : SONDIXQT_THREAD_TEST_SECONDS;
}

/// The sequences of C calls of the two threads.
QString commandSequence()
{
    return "SetParameterInt(\"SP_LaserPower\", 1) SetParameterString(\"S_Command\", \"Set_LaserPower\") "
           "SensorCommand() GetParameterInt(\"SA_LaserPower\")";
}

QString questionSequence()
{
    return "SetParameterString(\"S_Command\", \"Get_Samplerate\") SensorCommand() "
           "GetParameterDouble(\"SA_Measrate\")";
}

QString descriptionSequence()
{
    return "SetParameterString(\"S_Command\", \"Get_TransmittedDataInfo\") SensorCommand() "
           "GetParameters() GetParameters()";
}

/// The text of a call without sizes, which are irrelevant here.
QString textOf(const sondixsim::Call &call)
{
    return call.function == "GetParameters" ? "GetParameters()" : QString::fromStdString(call.text());
}

/// Skips one complete sequence of one thread. False if the calls do not begin with one.
bool takeSequence(const std::vector<sondixsim::Call> &calls, std::size_t &position)
{
    static const QStringList whole = {commandSequence(),
                                      questionSequence(),
                                      descriptionSequence(),
                                      "DataAvail() TransferDataTS(null, scaled, 3)",
                                      "DataAvail() TransferDataTS(raw, null, 3)",
                                      "DataAvail() TransferData(null, scaled, 3)",
                                      "TransferDataTS(raw, scaled, 3)"};
    QStringList sequence;
    for (std::size_t i = position; i < calls.size() && calls[i].thread == calls[position].thread; ++i) {
        sequence.append(textOf(calls[i]));
        if (whole.contains(sequence.join(' '))) {
            position = i + 1;
            return true;
        }
        if (sequence.size() == 4)
            break;
    }
    return false;
}

void sendCommands(SensorInstance &instance, std::atomic<int> &failures)
{
    for (int i = 0; i < operationsPerRound; ++i) {
        int power = 0;
        const ErrorCode set = instance.sendCommand("Set_LaserPower", {{"SP_LaserPower", 1}},
                                                   {{"SA_LaserPower", SensorInstance::resultPointer(&power)}});
        double rate = 0.0;
        TransmittedDataInfo info;
        if (set != NoError || power != 1 || instance.getSampleRateInKhz(&rate) != NoError || rate <= 0.0 ||
            instance.transmittedDataInfo(info) != NoError || info.signals.isEmpty())
            ++failures;
    }
}

void takeValues(SensorInstance &instance, std::atomic<int> &failures)
{
    QVector<double> scaled(3);
    QVector<int> raw(3);
    double timestamp = 0.0;
    for (int i = 0; i < operationsPerRound; ++i) {
        int count = 3;
        const bool taken = instance.transferDataScaled(scaled, timestamp) == NoError && scaled.size() == 3 &&
                           instance.transferDataRaw(raw, timestamp) == NoError && raw.size() == 3 &&
                           instance.transferData(scaled) == NoError && scaled.size() == 3 &&
                           instance.transferData(scaled.data(), raw.data(), &timestamp, count) == NoError;
        if (!taken || count != 3)
            ++failures;
    }
}

} // namespace

void TestTransferThreads::commandsAndTransfersDoNotMix()
{
    sondixsim::loadBench(R"({ "sensors": [ {
        "model": "TX270", "serialNumber": "1001", "standing": 3, "place": { "interface": "RS232", "port": "COM3" },
        "answers": { "Set_LaserPower": { "SA_LaserPower": 1 } }
    } ] })");
    SensorInstance instance(SensorType::TX270);
    QCOMPARE(instance.open(), NoError);

    std::atomic<int> failures{0};
    QElapsedTimer timer;
    timer.start();
    int rounds = 0;
    for (; rounds == 0 || timer.elapsed() < secondsToRun() * 1000; ++rounds) {
        CallRecorder recorder;
        std::thread commander([&] { sendCommands(instance, failures); });
        std::thread taker([&] { takeValues(instance, failures); });
        commander.join();
        taker.join();
        QCOMPARE(failures.load(), 0);

        const std::vector<sondixsim::Call> calls = sondixsim::calls();
        QCOMPARE(calls.size(), std::size_t(operationsPerRound * (4 + 3 + 4 + 3 * 2 + 1)));
        std::size_t position = 0;
        while (position < calls.size()) {
            const std::size_t begin = position;
            QVERIFY2(takeSequence(calls, position),
                     qPrintable(QStringLiteral("mixed at call %1: %2")
                                    .arg(begin)
                                    .arg(QString::fromStdString(calls[begin].text()))));
        }
    }
    qInfo("%d rounds", rounds);
}

QTEST_GUILESS_MAIN(TestTransferThreads)
#include "tst_transferthreads.moc"
