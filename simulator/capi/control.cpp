// SPDX-License-Identifier: MIT
#include "SondixSimulator/control.h"

#include "events.h"
#include "faultjson.h"
#include "model/schema.h"
#include "model/text.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace sondixsim {

namespace {

using capi::Simulator;

/// Loads the first bench if necessary. Doing that later would reset what the caller is about to set.
Simulator &loaded()
{
    Simulator &simulator = Simulator::get();
    simulator.bench();
    simulator.follow();
    return simulator;
}

std::shared_ptr<model::Sensor> sensorOf(const std::string &serialNumber)
{
    const auto bench = loaded().bench();
    auto sensor = bench ? bench->find(serialNumber) : nullptr;
    if (!sensor)
        throw std::invalid_argument("the bench has no sensor \"" + serialNumber + '"');
    return sensor;
}

session::BenchSession &sessionInUse()
{
    session::BenchSession *const session = loaded().session();
    if (session == nullptr)
        throw std::runtime_error("only a bench session has a log of calls");
    return *session;
}

nlohmann::json sensorEvent(const char *action, const std::string &serialNumber)
{
    return {{"do", action}, {"sensor", model::fromWindows1250(sensorOf(serialNumber)->spec().serialNumber)}};
}

} // namespace

void loadBench(const std::string &json, const std::string &name)
{
    Simulator::get().load(json, name, {});
}

void loadBenchFile(const std::string &path)
{
    Simulator::get().loadFile(path);
}

void loadBuiltInBench()
{
    Simulator::get().loadBuiltIn();
}

std::string benchSchema()
{
    return model::benchSchema();
}

void useRealClock(double speed)
{
    if (!(speed > 0.0) || !std::isfinite(speed))
        throw std::invalid_argument("the speed of a clock must be greater than 0");
    Simulator &simulator = loaded();
    if (simulator.session() != nullptr)
        simulator.perform(capi::clockEvent(simulator.clock.now(), {false, speed, 0.0}));
    else
        simulator.clock.useReal(speed);
}

void useVirtualClock()
{
    Simulator &simulator = loaded();
    if (session::BenchSession *const session = simulator.session()) {
        session->setVirtualTime(simulator.clock.now());
        simulator.perform(capi::clockEvent(simulator.clock.now(), {true, 1.0, 0.0}));
    } else {
        simulator.clock.useVirtual();
    }
}

void advance(double seconds)
{
    if (!(seconds >= 0.0) || !std::isfinite(seconds))
        throw std::invalid_argument("a clock cannot be set back");
    constexpr double latest = 9.0e9; // nanoseconds in 64 bits
    if (loaded().clock.now() + seconds > latest)
        throw std::invalid_argument("a clock goes to 9000000000 s, which are 285 years");
    loaded().clock.advance(seconds);
}

double now()
{
    return loaded().clock.now();
}

void setLineSpeedEffect(bool on)
{
    Simulator &simulator = loaded();
    simulator.lineSpeed.store(on);
    simulator.bench()->setLineSpeed(on, simulator.clock.now());
}

double lineTime(const std::string &serialNumber)
{
    return sensorOf(serialNumber)->line().usedSeconds();
}

void startSession(const std::string &name, const std::string &benchFile, bool isLogged)
{
    Simulator::startSession(name, benchFile, isLogged);
}

void stopSession(const std::string &name)
{
    session::BenchSession::stop(name);
}

std::string sessionLogFile()
{
    return sessionInUse().logFile().u8string();
}

void followSessionLog()
{
    sessionInUse().keepFollowing();
}

std::vector<std::string> sessions()
{
    return session::BenchSession::names();
}

void setSettings(const std::string &serialNumber, const std::string &pairs)
{
    const auto sensor = sensorOf(serialNumber);
    model::SensorChanges changes;
    const model::Outcome outcome = sensor->check(model::parsePairs(pairs), changes);
    if (!outcome.ok())
        throw std::invalid_argument(outcome.text);
    if (!changes.empty())
        loaded().perform(capi::settingEvent(*sensor, changes));
}

void recordCalls(bool on)
{
    loaded().callLog.record(on);
}

std::vector<Call> calls()
{
    return loaded().callLog.calls();
}

void clearCalls()
{
    loaded().callLog.clear();
}

int inject(const Fault &fault)
{
    const auto isIt = [&fault](const char *name) { return fault.function == name; };
    if (!fault.function.empty() && std::none_of(std::begin(functionNames), std::end(functionNames), isIt))
        throw std::invalid_argument("the C interface has no function \"" + fault.function + '"');
    if (const std::string problem = model::faultProblem(fault); !problem.empty())
        throw std::invalid_argument(problem);
    if (!fault.sensor.empty())
        sensorOf(fault.sensor); // throws if there is none
    Simulator &simulator = loaded();
    session::BenchSession *const session = simulator.session();
    if (session == nullptr)
        return simulator.faults.add(fault);
    const int number = session->newFault();
    nlohmann::json event = capi::faultMembers(fault);
    event["do"] = "inject";
    event["fault"] = number;
    simulator.perform(event);
    return number;
}

void removeFault(int number)
{
    loaded().perform({{"do", "clear"}, {"fault", number}});
}

void clearFaults()
{
    loaded().perform({{"do", "clear"}});
}

void releaseHangs()
{
    loaded().perform({{"do", "release"}});
}

void unplug(const std::string &serialNumber)
{
    loaded().perform(sensorEvent("unplug", serialNumber));
}

void plug(const std::string &serialNumber)
{
    loaded().perform(sensorEvent("plug", serialNumber));
}

void setSilent(const std::string &serialNumber, bool silent)
{
    nlohmann::json event = sensorEvent("silent", serialNumber);
    event["silent"] = silent;
    loaded().perform(event);
}

void setPage(const std::string &serialNumber, const std::string &path, const std::string &header,
             const std::string &body)
{
    if (!sensorOf(serialNumber)->setPage(path, {header, body}))
        throw std::invalid_argument("the sensor \"" + serialNumber + "\" has no web interface");
}

void pushData(const std::string &serialNumber, const std::vector<std::int32_t> &raw,
              const std::vector<double> &scaled, double timestamp)
{
    if (!raw.empty() && !scaled.empty() && raw.size() != scaled.size())
        throw std::invalid_argument("raw and scaled values differ in number");
    if (!sensorOf(serialNumber)->push(loaded().clock.now(), raw, scaled, timestamp))
        throw std::invalid_argument("the sensor \"" + serialNumber + "\" is not open");
}

void trigger(const std::string &serialNumber)
{
    loaded().perform(sensorEvent("trigger", serialNumber));
}

FrameCounts frameCounts(const std::string &serialNumber)
{
    return sensorOf(serialNumber)->frameCounts(loaded().clock.now());
}

FrameCounts totalFrameCounts(const std::string &serialNumber)
{
    return sensorOf(serialNumber)->totalFrameCounts(loaded().clock.now());
}

std::uint64_t generatedFrames(const std::string &serialNumber)
{
    return frameCounts(serialNumber).generated;
}

std::vector<Expectation> expectations()
{
    Simulator &simulator = loaded();
    return simulator.expectations.check(simulator.clock.now());
}

std::uint64_t lostFrames(const std::string &serialNumber)
{
    return frameCounts(serialNumber).lost;
}

} // namespace sondixsim
