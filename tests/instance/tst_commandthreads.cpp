// SPDX-License-Identifier: MIT
#include <SondixQt/SpecialSensorInstance>

#include "support/callrecorder.h"
#include "support/testbench.h"

#include <functional>
#include <thread>

using namespace SondixQt;
using Parameters = QMap<QString, QVariant>;

namespace {

QString name(const char *text)
{
    return QString::fromLatin1(text);
}

void answer(const char *command, const char *text)
{
    sondixsim::Fault fault;
    fault.command = command;
    fault.answer = text;
    sondixsim::inject(fault);
}

QString staged(const char *parameter, int value)
{
    return name("SetParameterInt(\"%1\", %2)").arg(name(parameter)).arg(value);
}

/// Lets two threads work on one instance; the first call that belongs to no whole sequence, or empty.
QString firstTornCall(const std::function<void()> &first, const std::function<void()> &second,
                      const QList<QStringList> &sequences)
{
    constexpr int rounds = 300;
    CallRecorder recorder;
    const auto repeat = [](const std::function<void()> &work) {
        for (int i = 0; i < rounds; ++i)
            work();
    };
    std::thread one(repeat, first);
    std::thread two(repeat, second);
    one.join();
    two.join();
    const QStringList calls = recorder.take();
    int position = 0;
    while (position < calls.size()) {
        const auto whole = std::find_if(sequences.cbegin(), sequences.cend(), [&](const QStringList &sequence) {
            return calls.mid(position, sequence.size()) == sequence;
        });
        if (whole == sequences.cend())
            return name("call %1: ").arg(position) + calls.at(position);
        position += whole->size();
    }
    return calls.isEmpty() ? name("no call at all") : QString();
}

} // namespace

/// Two threads on one instance: what belongs together stays together.
class CommandThreadsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();

    void stagingFormsStayWhole();
    void loggingSwitchStaysWhole();
    void actionsStayAroundTheirCommand();
};

void CommandThreadsTest::init()
{
    loadTestBench();
    answer("Do_A", "SA_X=1");
    answer("Do_B", "SA_X=2");
}

void CommandThreadsTest::stagingFormsStayWhole()
{
    OpenSensorInstance sensor(TX270);
    const QString torn = firstTornCall(
        [&] {
            sensor->sendCommand(name("Do_A"), name("SP_A"), 1);
            sensor->sendCommand(name("Do_A"), Parameters{{name("SP_A"), 1}});
        },
        [&] {
            sensor->sendCommand(name("Do_B"), name("SP_B"), true);
            sensor->clearAllParameters();
            sensor->sendCommand(name("Do_B"), Parameters{{name("SP_B"), 1}});
        },
        {QStringList(staged("SP_A", 1)) + commandCalls(name("Do_A")),
         QStringList(staged("SP_B", 1)) + commandCalls(name("Do_B")),
         {name("ClearAllParameters()")}});
    QCOMPARE(torn, QString());
}

void CommandThreadsTest::loggingSwitchStaysWhole()
{
    OpenSensorInstance sensor(TX270);
    const QString torn = firstTornCall(
        [&] { sensor->disableLogging(); }, [&] { sensor->sendCommand(name("Do_B"), name("SP_B"), 1); },
        {QStringList(staged("IP_EnableLogging", 0)) + commandCalls(name("Enable_Logging")),
         QStringList(staged("SP_B", 1)) + commandCalls(name("Do_B"))});
    QCOMPARE(torn, QString());
}

void CommandThreadsTest::actionsStayAroundTheirCommand()
{
    SpecialSensorInstanceRG531 sensor;
    QCOMPARE(sensor.open(testBenchParameters(RG53x)), NoError);
    sensor.setTrackingMode(5);
    const auto between = [](const QStringList &calls) {
        return commandCalls(name("StopTracking")) + calls + commandCalls(name("SpeedTracking"));
    };
    const QStringList readX(name("GetParameterInt(\"SA_X\")"));
    const QString torn = firstTornCall(
        [&] {
            int value = 0;
            sensor.sendCommandGetInt(name("Do_A"), name("SA_X"), value);
        },
        [&] {
            sensor.sendCommand(name("Do_B"), Parameters{{name("SP_B"), 1}});
        },
        {between(commandCalls(name("Do_A")) + readX),
         between(QStringList(staged("SP_B", 1)) + commandCalls(name("Do_B")))});
    QCOMPARE(torn, QString());
}

QTEST_GUILESS_MAIN(CommandThreadsTest)
#include "tst_commandthreads.moc"
