// SPDX-License-Identifier: MIT
#include "cli/benches.h"
#include "shared/sensoropener.h"

#include <SondixSimulator/control.h>

#include <QtTest>

using namespace SondixQt;
using namespace SondixApp;

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

void refuse(const char *command, const char *text)
{
    sondixsim::Fault fault;
    fault.command = command;
    fault.code = -77;
    fault.text = text;
    sondixsim::inject(fault);
}

} // namespace

class TestTrackingInstance : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void eachCommandMethodReturnsItsOwnResult_data();
    void eachCommandMethodReturnsItsOwnResult();
    void theRestartFollowsOnce();
    void noRestartAfterACommandThatDoesNotStop();
    void noRestartWhenItWasNotStopped();
    void aFailingRestartIsLogged();

private:
    using Parameters = QMap<QString, QVariant>;
    std::unique_ptr<SensorInstance> m_sensor;
};

void TestTrackingInstance::init()
{
    sondixsim::loadBench(
        Benches::of(
            R"({ "model": "RG53x", "serialNumber": "53", "place": { "interface": "RS232", "port": "COM5" } })")
            .toStdString());
    m_sensor = createInstance(RG53x);
    QString text;
    QCOMPARE(int(openInstance(*m_sensor, {{"IP_Interface", "RS232"}}, &text)), 0);
    sondixsim::recordCalls(true);
}

void TestTrackingInstance::cleanup()
{
    sondixsim::clearFaults();
    m_sensor.reset();
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
    refuse("Get_Average", "it is tired");
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
    refuse("StopTracking", "it cannot stop");
    Parameters answer;
    QString text;
    QCOMPARE(int(m_sensor->sendCommandGetAll("Get_Average", {}, answer, &text)), -77);
    QCOMPARE(text, QStringLiteral("it cannot stop"));
    QCOMPARE(commandsSent(), QStringList("StopTracking"));
}

void TestTrackingInstance::aFailingRestartIsLogged()
{
    refuse("DistanceTracking", "it does not start");
    QTest::ignoreMessage(QtWarningMsg,
                         "the sensor did not start to measure again after Set_Average: it does not start");
    QString text;
    QCOMPARE(int(m_sensor->sendCommand("Set_Average", {{"SP_Average", 10}}, &text)), 0);
    QCOMPARE(text, QString());
}

QTEST_GUILESS_MAIN(TestTrackingInstance)
#include "tst_trackinginstance.moc"
