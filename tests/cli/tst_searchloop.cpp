// SPDX-License-Identifier: MIT
#include "benches.h"

#include "cli/searchloop.h"

#include <SondixSimulator/control.h>

#include <QtTest>

#include <algorithm>

using namespace SondixQt;
using namespace std::chrono_literals;

namespace {

bool wasSent(const char *command)
{
    const std::string wanted = std::string("SetParameterString(\"S_Command\", \"") + command + "\")";
    const auto calls = sondixsim::calls();
    return std::any_of(calls.begin(), calls.end(),
                       [&wanted](const sondixsim::Call &call) { return call.text() == wanted; });
}

void refuse(const char *function, const char *command, int type = -1)
{
    sondixsim::Fault fault;
    fault.function = function;
    fault.command = command;
    fault.code = -3;
    fault.text = "refused by the test";
    if (type >= 0)
        fault.sensorType = type;
    sondixsim::inject(fault);
}

SearchRequest requestFor(SensorType type, SensorInterfaces interfaces = SensorInterfaces(~0))
{
    SearchRequest request;
    request.type = type;
    request.interfaces = interfaces;
    return request;
}

} // namespace

/// The tool's search, without the program around it.
class TestSearchLoop : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { load(Benches::of(Benches::laser(100) + "," + Benches::usbLaser)); }
    void cleanup() { sondixsim::clearFaults(); }

    void reportsWhatIsOnTheInterfacesAskedFor();
    void reportsAnAddressOnceAlthoughSeveralSearchesFindIt();
    void endsWhenNoMoreIsWanted();
    void endsAtTheTimeLimit();
    void aRefusedStartIsAFailure();
    void aModelThatIsSkippedIsNamed();
    void nothingButSkippedModelsIsAFailure();

private:
    static void load(const QByteArray &bench)
    {
        sondixsim::loadBench(bench.toStdString());
        sondixsim::recordCalls(true);
        sondixsim::clearCalls();
    }
    SearchOutcome search(const SearchRequest &request, std::chrono::milliseconds limit = {}, int wanted = -1)
    {
        Console console;
        InterruptWatcher interrupt;
        m_found.clear();
        const auto onFound = [&](const SensorInfo &info) {
            m_found += info;
            return m_found.size() != wanted;
        };
        return runSearch(request, console, interrupt, onFound, limit);
    }
    QList<SensorInfo> m_found;
};

void TestSearchLoop::reportsWhatIsOnTheInterfacesAskedFor()
{
    const SearchOutcome outcome = search(requestFor(TX270, RS232));
    QCOMPARE(outcome.end, SearchOutcome::Completed);
    QCOMPARE(outcome.problem, QString());
    QCOMPARE(m_found.size(), 1);
    QCOMPARE(m_found.first().interfaceType(), RS232);
}

void TestSearchLoop::reportsAnAddressOnceAlthoughSeveralSearchesFindIt()
{
    load(Benches::of(R"({ "model": "HV210", "serialNumber": "5",
                          "place": { "interface": "TCP/IP", "ip": [ "10.0.0.1", "10.0.0.2" ] } })"));
    SearchRequest request = requestFor(NoSensor);
    request.group = Color;
    request.similar = true;
    request.thorough = true;
    QCOMPARE(search(request).end, SearchOutcome::Completed);
    QStringList addresses;
    for (const SensorInfo &info : qAsConst(m_found))
        addresses += info.getParameter("IP_RemoteAddr").toString();
    addresses.sort();
    QCOMPARE(addresses, QStringList({"10.0.0.1", "10.0.0.2"}));
}

void TestSearchLoop::endsWhenNoMoreIsWanted()
{
    load(Benches::of(Benches::laser(100) + "," + Benches::usbLaser, R"("RS232": 0.01, "XA200_ETH": 3600)"));
    QCOMPARE(search(requestFor(TX270), {}, 1).end, SearchOutcome::Completed);
    QCOMPARE(m_found.size(), 1);
    QVERIFY(wasSent("Abort_FindSensor"));
}

void TestSearchLoop::endsAtTheTimeLimit()
{
    load(Benches::of(Benches::laser(100), R"("RS232": 0.01, "XA200_ETH": 3600)"));
    const SearchOutcome outcome = search(requestFor(TX270), 600ms);
    QCOMPARE(outcome.end, SearchOutcome::TimedOut);
    QCOMPARE(outcome.problem, "the search did not end within 0.6 s");
    QCOMPARE(m_found.size(), 1);
    QVERIFY(wasSent("Abort_FindSensor"));
}

void TestSearchLoop::aRefusedStartIsAFailure()
{
    refuse("", "Start_FindSensor");
    const SearchOutcome outcome = search(requestFor(TX270));
    QCOMPARE(outcome.end, SearchOutcome::Refused);
    QCOMPARE(outcome.problem, "the search for Tavrin TX270 was refused: refused by the test");
}

void TestSearchLoop::aModelThatIsSkippedIsNamed()
{
    refuse("CreateSensorInstance", "", HV2);
    const SearchOutcome outcome = search(requestFor(NoSensor));
    QCOMPARE(outcome.end, SearchOutcome::Completed);
    QCOMPARE(outcome.problem, "Huvar HV2 cannot be searched for: refused by the test");
    QCOMPARE(m_found.size(), 2);
}

void TestSearchLoop::nothingButSkippedModelsIsAFailure()
{
    refuse("CreateSensorInstance", "");
    for (const SensorType type : {NoSensor, TX270}) {
        const SearchOutcome outcome = search(requestFor(type));
        QCOMPARE(outcome.end, SearchOutcome::Refused);
        QVERIFY2(outcome.problem.endsWith(" cannot be searched for: refused by the test"),
                 qPrintable(outcome.problem));
    }
    QVERIFY(!wasSent("Start_FindSensor"));
}

QTEST_GUILESS_MAIN(TestSearchLoop)
#include "tst_searchloop.moc"
