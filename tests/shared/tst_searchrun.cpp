// SPDX-License-Identifier: MIT
#include "cli/benches.h"
#include "shared/searchrun.h"

#include <SondixSimulator/control.h>

#include <QSignalSpy>
#include <QtTest>

#include <algorithm>

using namespace SondixQt;
using namespace SondixApp;

Q_DECLARE_METATYPE(SondixApp::SearchRun::End)

namespace {

bool wasSent(const char *command)
{
    const std::string wanted = std::string("SetParameterString(\"S_Command\", \"") + command + "\")";
    const auto calls = sondixsim::calls();
    return std::any_of(calls.begin(), calls.end(),
                       [&wanted](const sondixsim::Call &call) { return call.text() == wanted; });
}

} // namespace

class TestSearchRun : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { qRegisterMetaType<SearchRun::End>(); }
    void init() { load(Benches::of(Benches::laser(100) + "," + Benches::usbLaser)); }
    void cleanup() { sondixsim::clearFaults(); }

    void announcesWhatIsOnTheInterfacesAskedFor();
    void announcesTheModelsAskedForOnly();
    void announcesASensorThatSeveralSearchesFindOnce();
    void endsOnceAlthoughSeveralTypesAreSearched();
    void stoppingAbortsTheSearchInTheLibrary();
    void aRefusedStartEndsTheRun();
    void aModelThatCannotBeCreatedIsSkipped();
    void saysWhyNoModelCanBeCreated();

private:
    static void load(const QByteArray &bench)
    {
        sondixsim::loadBench(bench.toStdString());
        sondixsim::recordCalls(true);
    }
    static SearchRun::Plan planFor(const QList<SensorType> &types,
                                   SensorInterfaces interfaces = SensorInterfaces(127))
    {
        SearchRun::Plan plan;
        plan.types = types;
        plan.interfaces = interfaces;
        return plan;
    }
    static SearchRun::End endOf(const QSignalSpy &finished)
    {
        return finished.value(0).value(0).value<SearchRun::End>();
    }
    static constexpr int longest = 20000;
};

void TestSearchRun::announcesWhatIsOnTheInterfacesAskedFor()
{
    SearchRun run(planFor({TX270}, RS232));
    QSignalSpy found(&run, &SearchRun::sensorFound);
    QSignalSpy finished(&run, &SearchRun::finished);
    run.start();
    QVERIFY(finished.wait(longest));
    QCOMPARE(endOf(finished), SearchRun::Completed);
    QCOMPARE(found.size(), 1);
    QCOMPARE(found.first().first().value<SensorInfo>().interfaceType(), RS232);
}

void TestSearchRun::announcesTheModelsAskedForOnly()
{
    load(Benches::of(Benches::laser(100) + "," + Benches::controller));
    SearchRun::Plan plan = planFor({TX270});
    plan.similar = true;
    plan.announced = {CC480, MC340};
    SearchRun run(plan);
    QSignalSpy found(&run, &SearchRun::sensorFound);
    QSignalSpy finished(&run, &SearchRun::finished);
    run.start();
    QVERIFY(finished.wait(longest));
    QCOMPARE(found.size(), 1);
    QCOMPARE(found.first().first().value<SensorInfo>().sensorType(), CC480);
}

void TestSearchRun::announcesASensorThatSeveralSearchesFindOnce()
{
    load(Benches::of(R"({ "model": "HV210", "serialNumber": "5",
                          "place": { "interface": "TCP/IP", "ip": [ "10.0.0.1", "10.0.0.2" ] } })"));
    SearchRun::Plan plan = planFor({HV2, TX270});
    plan.similar = true;
    SearchRun run(plan);
    QSignalSpy found(&run, &SearchRun::sensorFound);
    QSignalSpy finished(&run, &SearchRun::finished);
    run.start();
    QVERIFY(finished.wait(longest));
    QStringList addresses;
    for (const QList<QVariant> &one : qAsConst(found))
        addresses += one.first().value<SensorInfo>().getParameter("IP_RemoteAddr").toString();
    addresses.sort();
    QCOMPARE(addresses, QStringList({"10.0.0.1", "10.0.0.2"}));
}

void TestSearchRun::endsOnceAlthoughSeveralTypesAreSearched()
{
    SearchRun run(planFor({MC340, TX270}));
    QSignalSpy found(&run, &SearchRun::sensorFound);
    QSignalSpy finished(&run, &SearchRun::finished);
    run.start();
    QVERIFY(finished.wait(longest));
    QVERIFY(!finished.wait(600));
    QCOMPARE(finished.size(), 1);
    QCOMPARE(found.size(), 2);
}

void TestSearchRun::stoppingAbortsTheSearchInTheLibrary()
{
    load(Benches::of(Benches::laser(100), R"("RS232": 0.01, "XA200_ETH": 3600)"));
    SearchRun run(planFor({TX270}));
    QSignalSpy found(&run, &SearchRun::sensorFound);
    QSignalSpy finished(&run, &SearchRun::finished);
    run.start();
    QVERIFY(found.wait(longest));
    QVERIFY(!wasSent("Abort_FindSensor"));
    run.stop();
    QCOMPARE(finished.size(), 1);
    QCOMPARE(endOf(finished), SearchRun::Stopped);
    QVERIFY(wasSent("Abort_FindSensor"));
}

void TestSearchRun::aRefusedStartEndsTheRun()
{
    sondixsim::Fault fault;
    fault.command = "Start_FindSensor";
    fault.code = -55;
    fault.text = "no time to search";
    sondixsim::inject(fault);
    SearchRun run(planFor({TX270}));
    QSignalSpy finished(&run, &SearchRun::finished);
    run.start();
    QVERIFY(finished.wait(longest));
    QCOMPARE(endOf(finished), SearchRun::Refused);
    QCOMPARE(run.problem(), QStringLiteral("the sensor-access library refused the search"));
}

void TestSearchRun::aModelThatCannotBeCreatedIsSkipped()
{
    sondixsim::Fault fault;
    fault.function = "CreateSensorInstance";
    fault.sensorType = 37;
    fault.code = -3;
    fault.text = "there is no such model";
    sondixsim::inject(fault);
    SearchRun run(planFor({MC340, TX270, MC340}));
    QSignalSpy found(&run, &SearchRun::sensorFound);
    QSignalSpy finished(&run, &SearchRun::finished);
    run.start();
    QVERIFY(finished.wait(longest));
    QCOMPARE(endOf(finished), SearchRun::Completed);
    QCOMPARE(found.size(), 2);
}

void TestSearchRun::saysWhyNoModelCanBeCreated()
{
    sondixsim::Fault fault;
    fault.function = "CreateSensorInstance";
    fault.code = -3;
    fault.text = "there is no such model";
    sondixsim::inject(fault);
    SearchRun run(planFor({MC340, TX270}));
    QSignalSpy finished(&run, &SearchRun::finished);
    run.start();
    QCOMPARE(finished.size(), 1);
    QCOMPARE(endOf(finished), SearchRun::Refused);
    QCOMPARE(run.problem(), QStringLiteral("there is no such model"));
    QVERIFY(!wasSent("Start_FindSensor"));
}

QTEST_GUILESS_MAIN(TestSearchRun)
#include "tst_searchrun.moc"
