// SPDX-License-Identifier: MIT
#include <SondixQt/SpecialSensorInstance>

#include "support/callrecorder.h"
#include "support/scripting.h"
#include "support/testbench.h"

#include <functional>
#include <memory>
#include <thread>

using namespace SondixQt;
using Parameters = QMap<QString, QVariant>;

namespace {

QString staged(const char *parameter, int value)
{
    return QString("SetParameterInt(\"%1\", %2)").arg(QString(parameter)).arg(value);
}

/// Runs two threads on one instance. Returns the first call that is not part of a complete sequence, or an empty
/// string.
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
            return QString("call %1: ").arg(position) + calls.at(position);
        position += whole->size();
    }
    return calls.isEmpty() ? "no call at all" : QString();
}

} // namespace

/// Two threads on one instance: their command sequences are not interleaved.
class CommandThreadsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();

    void stagingFormsStayWhole();
    void loggingSwitchStaysWhole();
    void actionsStayAroundTheirCommand_data();
    void actionsStayAroundTheirCommand();
};

void CommandThreadsTest::init()
{
    loadTestBench();
    scriptAnswer("Do_A", "SA_X=1");
    scriptAnswer("Do_B", "SA_X=2");
}

void CommandThreadsTest::stagingFormsStayWhole()
{
    OpenSensorInstance sensor(TX270);
    const QString torn = firstTornCall(
        [&] {
            sensor->sendCommand("Do_A", "SP_A", 1);
            sensor->sendCommand("Do_A", Parameters{{"SP_A", 1}});
        },
        [&] {
            sensor->sendCommand("Do_B", "SP_B", true);
            sensor->clearAllParameters();
            sensor->sendCommand("Do_B", Parameters{{"SP_B", 1}});
        },
        {QStringList(staged("SP_A", 1)) + commandCalls("Do_A"),
         QStringList(staged("SP_B", 1)) + commandCalls("Do_B"),
         {"ClearAllParameters()"}});
    QCOMPARE(torn, QString());
}

void CommandThreadsTest::loggingSwitchStaysWhole()
{
    OpenSensorInstance sensor(TX270);
    const QString torn =
        firstTornCall([&] { sensor->disableLogging(); }, [&] { sensor->sendCommand("Do_B", "SP_B", 1); },
                      {QStringList(staged("IP_EnableLogging", 0)) + commandCalls("Enable_Logging"),
                       QStringList(staged("SP_B", 1)) + commandCalls("Do_B")});
    QCOMPARE(torn, QString());
}

void CommandThreadsTest::actionsStayAroundTheirCommand_data()
{
    QTest::addColumn<bool>("created");
    QTest::newRow("constructed") << false;
    QTest::newRow("created") << true;
}

void CommandThreadsTest::actionsStayAroundTheirCommand()
{
    QFETCH(bool, created);
    const std::unique_ptr<SensorInstance> owned =
        created ? SensorInstance::create(RG53x) : std::make_unique<SpecialSensorInstanceRG531>();
    auto &sensor = *qobject_cast<SpecialSensorInstanceRG531 *>(owned.get());
    QCOMPARE(sensor.open(testBenchParameters(RG53x)), NoError);
    sensor.setTrackingMode(5);
    const auto between = [](const QStringList &calls) {
        return commandCalls("StopTracking") + calls + commandCalls("SpeedTracking");
    };
    const QStringList readX("GetParameterInt(\"SA_X\")");
    const QString torn = firstTornCall(
        [&] {
            int value = 0;
            sensor.sendCommandGetInt("Do_A", "SA_X", value);
        },
        [&] {
            sensor.sendCommand("Do_B", Parameters{{"SP_B", 1}});
        },
        {between(commandCalls("Do_A") + readX), between(QStringList(staged("SP_B", 1)) + commandCalls("Do_B"))});
    QCOMPARE(torn, QString());
}

QTEST_GUILESS_MAIN(CommandThreadsTest)
#include "tst_commandthreads.moc"
