// SPDX-License-Identifier: MIT
#include "SondixSimulator/control.h"

#include "simulator.h"

#include <cmath>

namespace sondixsim {

namespace {

using capi::Simulator;

/// Loads the first bench if necessary. Doing that later would reset what the caller is about to set.
Simulator &loaded()
{
    Simulator &simulator = Simulator::get();
    simulator.bench();
    return simulator;
}

std::shared_ptr<model::Sensor> sensorOf(const std::string &serialNumber)
{
    const auto bench = Simulator::get().bench();
    auto sensor = bench ? bench->find(serialNumber) : nullptr;
    if (!sensor)
        throw std::invalid_argument("the bench has no sensor \"" + serialNumber + '"');
    return sensor;
}

void setPlugged(const std::string &serialNumber, bool plugged)
{
    const auto sensor = sensorOf(serialNumber);
    loaded().bench()->setPlugged(*sensor, plugged, loaded().clock.now());
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

void useRealClock(double speed)
{
    if (!(speed > 0.0) || !std::isfinite(speed))
        throw std::invalid_argument("the speed of a clock must be greater than 0");
    loaded().clock.useReal(speed);
}

void useVirtualClock()
{
    loaded().clock.useVirtual();
}

void advance(double seconds)
{
    if (!(seconds >= 0.0) || !std::isfinite(seconds))
        throw std::invalid_argument("a clock cannot be set back");
    loaded().clock.advance(seconds);
}

double now()
{
    return loaded().clock.now();
}

void setLineSpeedEffect(bool on)
{
    loaded().lineSpeed.store(on);
}

double lineTime(const std::string &serialNumber)
{
    return sensorOf(serialNumber)->line().usedSeconds();
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
    return loaded().faults.add(fault);
}

void removeFault(int number)
{
    loaded().faults.remove(number);
}

void clearFaults()
{
    loaded().faults.clear();
}

void releaseHangs()
{
    loaded().faults.releaseHangs();
}

void unplug(const std::string &serialNumber)
{
    setPlugged(serialNumber, false);
}

void plug(const std::string &serialNumber)
{
    setPlugged(serialNumber, true);
}

void setSilent(const std::string &serialNumber, bool silent)
{
    sensorOf(serialNumber)->setSilent(silent, loaded().clock.now());
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
    sensorOf(serialNumber)->trigger(loaded().clock.now());
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

std::uint64_t lostFrames(const std::string &serialNumber)
{
    return frameCounts(serialNumber).lost;
}

} // namespace sondixsim
