// SPDX-License-Identifier: MIT
#include "everyfunction.h"
#include "handle.h"
#include "SondixSimulator/control.h"
#include "support/faultkinds.h"

#include <QTest>
#include <stdexcept>

namespace {

/// A fault of one of all kinds.
sondixsim::Fault someFault(Arguments &arguments)
{
    sondixsim::Fault fault;
    switch (arguments.below(5)) {
    case 0:
        fault.command = "Get_Info";
        break;
    case 1:
        fault.parameter = "S_Command";
        break;
    case 2:
        fault.sensor = "1018001";
        break;
    case 3:
        fault.sensorType = SensorType::TX270;
        break;
    default:
        fault.function = sondixsim::functionNames[arguments.below(int(std::size(sondixsim::functionNames)))];
    }
    switch (arguments.below(5)) {
    case 0:
        fault.code = arguments.oneOf<std::int32_t>({-26, -27, -501, 5, INT32_MIN});
        fault.text = arguments.oneOf<std::string>({"", "The sensor is busy", arguments.longText});
        fault.silent = arguments.rarely();
        break;
    case 1:
        fault.delay = 1e-6;
        break;
    case 2:
        fault.hang = true;
        break;
    case 3:
        fault.answer = arguments.oneOf<std::string>(
            {"", "=", "a", "a=\"b", "IA_Progress=1e400", std::string("x=\0y", 4), arguments.longText});
        break;
    default:
        fault.count = arguments.oneOf<std::int32_t>({INT32_MIN, -1, 0, 1, INT32_MAX});
    }
    fault.from = arguments.below(3);
    fault.times = arguments.below(20);
    fault.probability = arguments.oneOf<double>({0.0, 0.5, 1.0});
    return fault;
}

/// Something that happens to the sensors meanwhile.
void disturb(Arguments &arguments)
{
    const auto sensor = arguments.oneOf<std::string>({"1018001", "7160214", "2421018", "3430003", "5700001"});
    switch (arguments.below(8)) {
    case 0:
        try {
            sondixsim::inject(someFault(arguments));
        } catch (const std::invalid_argument &) { // it could have had no effect
        }
        break;
    case 1:
        sondixsim::clearFaults();
        break;
    case 2:
        sondixsim::unplug(sensor);
        break;
    case 3:
        sondixsim::plug(sensor);
        break;
    case 4:
        sondixsim::setSilent(sensor, arguments.below(2) == 0);
        break;
    case 5:
        sondixsim::trigger(sensor);
        break;
    case 6:
        sondixsim::recordCalls(arguments.below(2) == 0);
        sondixsim::clearCalls();
        break;
    default:
        sondixsim::advance(arguments.oneOf<double>({0.0, 1e-9, 0.01, 1.0, 3600.0, 1e9}));
    }
}

} // namespace

class TestCapiRandom : public QObject
{
    Q_OBJECT

private:
    static void openAll(Arguments &arguments)
    {
        for (const std::int32_t type : {41, 26, 20, 51, 43, 57, 41, 29}) {
            const std::uint32_t handle = CreateSensorInstance(type);
            QVERIFY(handle != 0);
            arguments.add(handle);
            OpenSensor(handle);
        }
    }
    static void releaseAll(Arguments &arguments)
    {
        sondixsim::clearFaults();
        for (const std::uint32_t handle : arguments.takeHandles())
            ReleaseSensorInstance(handle); // some are released already
    }

private Q_SLOTS:
    void everyFunctionIsCalled()
    {
        QCOMPARE(everyFunction().size(), std::size(sondixsim::functionNames));
        for (std::size_t i = 0; i < everyFunction().size(); ++i)
            QCOMPARE(everyFunction()[i].name, sondixsim::functionNames[i]);
    }

    void anyOrderOfCallsGivesResultsOnly_data()
    {
        QTest::addColumn<unsigned>("seed");
        for (unsigned seed = 1; seed <= 12; ++seed)
            QTest::addRow("seed %u", seed) << seed;
    }
    void anyOrderOfCallsGivesResultsOnly()
    {
        QFETCH(unsigned, seed);
        sondixsim::loadBuiltInBench();
        sondixsim::useVirtualClock();
        Arguments arguments(seed);
        const HangReleaser releaser;
        openAll(arguments);
        int succeeded = 0;
        for (int i = 0; i < 4000; ++i) {
            if (i % 16 == 0)
                disturb(arguments);
            const EveryFunction &function = everyFunction()[std::size_t(arguments.below(21))];
            const std::uint32_t handle = arguments.handle();
            try {
                succeeded += function.call(arguments, handle) == 0 ? 1 : 0;
            } catch (...) {
                QFAIL(function.name);
            }
            QVERIFY2(arguments.guardsAreIntact(), function.name);
        }
        QVERIFY(succeeded > 500); // not only refused calls
        releaseAll(arguments);

        // No sensor stays claimed or broken by what was done to it.
        sondixsim::plug("7160214");
        sondixsim::setSilent("7160214", false);
        Handle handle(SensorType::RG52x);
        QCOMPARE(handle.open(), 0);
        QCOMPARE(handle.command("DistanceTracking50Hz"), 0);
        sondixsim::advance(1.0);
        QCOMPARE(handle.available(), 50);
    }

    /// Every function with every kind of fault: the result is that of the fault, or that of the call.
    void everyFaultOfEveryFunctionHasItsResult_data()
    {
        QTest::addColumn<int>("index");
        for (std::size_t i = 0; i < everyFunction().size(); ++i)
            QTest::newRow(everyFunction()[i].name) << int(i);
    }
    void everyFaultOfEveryFunctionHasItsResult()
    {
        QFETCH(int, index);
        const EveryFunction &function = everyFunction()[std::size_t(index)];
        sondixsim::loadBuiltInBench();
        sondixsim::useVirtualClock();
        const HangReleaser releaser;
        Arguments arguments(99);
        openAll(arguments);
        const bool isGetError = QByteArray(function.name) == "GetError";
        const bool isAnswered = QByteArrayList{"SensorCommand", "OpenSensor"}.contains(function.name);
        const bool creates = QByteArray(function.name) == "CreateSensorInstance";
        for (int round = 0; round < 200; ++round) {
            sondixsim::Fault fault = someFault(arguments);
            fault.function = function.name;
            fault.command.clear();
            fault.parameter.clear();
            fault.sensor.clear();
            fault.sensorType.reset();
            fault.from = 1;
            fault.times = -1;
            fault.probability = 1.0;
            if (fault.answer && !isAnswered)
                continue;
            const std::uint32_t handle = arguments.handle();
            const bool isKnown = ClearAllParameters(handle) == 0;
            const int number = sondixsim::inject(fault);
            const std::int32_t result = function.call(arguments, handle);
            sondixsim::removeFault(number);
            if (fault.code != 0 && !(creates && fault.silent))
                QCOMPARE(result, fault.code);
            if (fault.code != 0 && !creates && !isGetError && isKnown)
                QCOMPARE(GetError(handle, nullptr, 0), fault.silent ? 0 : fault.code);
        }
        releaseAll(arguments);
    }
};

QTEST_GUILESS_MAIN(TestCapiRandom)
#include "tst_capirandom.moc"
