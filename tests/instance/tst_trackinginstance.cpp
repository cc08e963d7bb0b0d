// SPDX-License-Identifier: MIT
#include <SondixQt/sensorfeatures.h>
#include <SondixQt/specialsensorinstance.h>

#include "support/scripting.h"
#include "support/testbench.h"

using namespace SondixQt;

namespace {

QStringList commandsSent()
{
    const std::string start = "SetParameterString(\"S_Command\", \"";
    QStringList commands;
    for (const sondixsim::Call &call : sondixsim::calls()) {
        const std::string text = call.text();
        if (text.compare(0, start.size(), start) == 0)
            commands += QString::fromStdString(text.substr(start.size(), text.size() - start.size() - 2));
    }
    return commands;
}

} // namespace

/// SensorInstance::create(), and the instances that it creates for models with a tracking mode.
class TestTrackingInstance : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void everyModelGetsTheClassThatItNeeds();
    void aTypeThatTheLibraryRefusesIsNotValid();
    void eachCommandMethodReturnsItsOwnResult_data();
    void eachCommandMethodReturnsItsOwnResult();
    void theRestartFollowsOnce();
    void noRestartAfterACommandThatDoesNotStop();
    void noRestartWhenItWasNotStopped();
    void aFailingRestartIsLogged_data();
    void aFailingRestartIsLogged();
    void aCommandFromASlotIsPartOfTheSequence();

private:
    using Parameters = QMap<QString, QVariant>;
    void open(SensorType type);
    std::unique_ptr<SensorInstance> m_sensor;
};

void TestTrackingInstance::init()
{
    loadTestBench();
    open(RG53x);
}

/// Opens the sensor of \a type, and lets the instance read the tracking mode.
void TestTrackingInstance::open(SensorType type)
{
    m_sensor = SensorInstance::create(type);
    QCOMPARE(m_sensor->open(testBenchParameters(type)), NoError);
    QCOMPARE(m_sensor->sendCommand("Get_Info"), NoError);
    sondixsim::clearCalls();
    sondixsim::recordCalls(true);
}

void TestTrackingInstance::cleanup()
{
    sondixsim::recordCalls(false);
    sondixsim::clearFaults();
    m_sensor.reset();
}

void TestTrackingInstance::everyModelGetsTheClassThatItNeeds()
{
    for (const SensorType type : getSensorFeatures().keys()) {
        const std::unique_ptr<SensorInstance> sensor = SensorInstance::create(type);
        QCOMPARE(sensor->sensorTypeFull(), type);
        QCOMPARE(qobject_cast<SpecialSensorInstanceRG52x *>(sensor.get()) != nullptr, type == RG52x);
        QCOMPARE(qobject_cast<SpecialSensorInstanceRG531 *>(sensor.get()) != nullptr, type == RG53x);
        QCOMPARE(sensor->isValid(), SensorInstance(type).isValid());
    }
}

void TestTrackingInstance::aTypeThatTheLibraryRefusesIsNotValid()
{
    scriptFailure("CreateSensorInstance", -3);
    for (const SensorType type : {TX270, RG52x, RG53x})
        QVERIFY(!SensorInstance::create(type)->isValid());
    for (const int number : {-1, 3, 10020, 99998}) {
        const std::unique_ptr<SensorInstance> sensor = SensorInstance::create(SensorType(number));
        QVERIFY(!sensor->isValid());
        QCOMPARE(int(sensor->sensorTypeFull()), number);
    }
}

void TestTrackingInstance::eachCommandMethodReturnsItsOwnResult_data()
{
    QTest::addColumn<int>("method");
    const char *const names[] = {"results", "parameters", "alone", "all", "int", "double", "string"};
    for (int i = 0; i < 7; ++i)
        QTest::newRow(names[i]) << i;
}

void TestTrackingInstance::eachCommandMethodReturnsItsOwnResult()
{
    QFETCH(int, method);
    const auto send = [&](QString &text) {
        const QString command = "Get_Average";
        const QString name = "SA_Average";
        Parameters answer;
        int number = 0;
        double real = 0.0;
        QString string;
        switch (method) {
        case 0:
            return m_sensor->sendCommand(command, Parameters(), {{name, SensorInstance::resultPointer(&number)}},
                                         &text);
        case 1:
            return m_sensor->sendCommand(command, Parameters(), &text);
        case 2:
            return m_sensor->sendCommand(command, &text);
        case 3:
            return m_sensor->sendCommandGetAll(command, {}, answer, &text);
        case 4:
            return m_sensor->sendCommandGetInt(command, name, number, &text);
        case 5:
            return m_sensor->sendCommandGetDouble(command, name, real, &text);
        default:
            return m_sensor->sendCommandGetString(command, name, string, &text);
        }
    };
    QString text;
    QVERIFY2(send(text) == NoError, qPrintable(text));
    scriptCommandFailure("Get_Average", -77, "it is tired");
    QCOMPARE(int(send(text)), -77);
    QCOMPARE(text, QStringLiteral("it is tired"));
    QCOMPARE(commandsSent().last(), QStringLiteral("DistanceTracking"));
}

void TestTrackingInstance::theRestartFollowsOnce()
{
    Parameters answer;
    QCOMPARE(int(m_sensor->sendCommandGetAll("Get_Average", {}, answer)), 0);
    QCOMPARE(commandsSent(), QStringList({"StopTracking", "Get_Average", "DistanceTracking"}));
    QCOMPARE(answer.value("SA_Average").toInt(), 20);
}

void TestTrackingInstance::noRestartAfterACommandThatDoesNotStop()
{
    Parameters answer;
    QCOMPARE(int(m_sensor->sendCommandGetAll("SpeedTracking", {}, answer)), 0);
    QCOMPARE(commandsSent(), QStringList("SpeedTracking"));
}

void TestTrackingInstance::noRestartWhenItWasNotStopped()
{
    scriptCommandFailure("StopTracking", -77, "it cannot stop");
    Parameters answer;
    QString text;
    QCOMPARE(int(m_sensor->sendCommandGetAll("Get_Average", {}, answer, &text)), -77);
    QCOMPARE(text, QStringLiteral("it cannot stop"));
    QCOMPARE(commandsSent(), QStringList("StopTracking"));
}

void TestTrackingInstance::aFailingRestartIsLogged_data()
{
    QTest::addColumn<SensorType>("type");
    QTest::addColumn<QString>("restart");
    QTest::newRow("RG52x") << RG52x << "DistanceTracking10Hz";
    QTest::newRow("RG53x") << RG53x << "DistanceTracking";
}

void TestTrackingInstance::aFailingRestartIsLogged()
{
    QFETCH(SensorType, type);
    QFETCH(QString, restart);
    open(type);
    scriptCommandFailure(restart.toStdString(), -77, "it does not start");
    QTest::ignoreMessage(QtWarningMsg,
                         "the sensor did not start to measure again after Get_Info: it does not start");
    QString text;
    QCOMPARE(int(m_sensor->sendCommand("Get_Info", Parameters(), &text)), 0);
    QCOMPARE(text, QString());
    QCOMPARE(commandsSent().last(), restart);
}

void TestTrackingInstance::aCommandFromASlotIsPartOfTheSequence()
{
    scriptCommandFailure("Get_Average", -77);
    bool sent = false;
    connect(m_sensor.get(), &SensorInstance::errorMessage, this, [&] {
        if (!std::exchange(sent, true))
            m_sensor->sendCommand("Get_Info");
    });
    QCOMPARE(int(m_sensor->sendCommand("Get_Average")), -77);
    QCOMPARE(commandsSent(), QStringList({"StopTracking", "Get_Average", "StopTracking", "Get_Info",
                                          "DistanceTracking", "DistanceTracking"}));
}

QTEST_GUILESS_MAIN(TestTrackingInstance)
#include "tst_trackinginstance.moc"
