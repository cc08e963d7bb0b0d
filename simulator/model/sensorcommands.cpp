// SPDX-License-Identifier: MIT
#include "command.h"
#include "sensor.h"

#include <algorithm>

namespace sondixsim::model::commands {

namespace {

/// "X" for "Get_X", "Set_X" or "Update_X".
std::string targetOf(const std::string &name)
{
    return name.substr(name.find('_') + 1);
}

const TrackingCommand *trackingCommand(const SensorSpec &spec, const std::string &name)
{
    const auto isNamed = [&name](const TrackingCommand &command) { return command.command == name; };
    const auto found = std::find_if(spec.tracking.begin(), spec.tracking.end(), isNamed);
    return found != spec.tracking.end() ? &*found : nullptr;
}

void describeSignal(const Signal &signal, int number, double rate, ParameterList &answers)
{
    const auto set = [&answers, suffix = std::to_string(number)](const char *key, Value value) {
        answers.append("IA_" + std::string(key) + suffix, std::move(value));
    };
    set("Index", number);
    set("Raw_Name", signal.rawName);
    set("Scaled_Name", signal.scaledName);
    set("Raw_RangeMin", signal.rawMin);
    set("Raw_RangeMax", signal.rawMax);
    set("Scaled_RangeMin", signal.scaledMin);
    set("Scaled_RangeMax", signal.scaledMax);
    set("ViewRange", signal.viewRange);
    set("Raw_Unit", signal.rawUnit);
    set("Scaled_Unit", signal.scaledUnit);
    set("Raw_Datarate", rate);
    set("Scaled_Datarate", rate);
    set("MajorSignal", signal.major ? 1 : 0);
    set("AdditionalInfo", signal.info);
}

} // namespace

bool readsGroup(const SensorParts &sensor, const std::string &name)
{
    return sensor.spec.groups.count(targetOf(name)) > 0;
}

bool writesSetting(const SensorParts &sensor, const std::string &name)
{
    const std::string target = targetOf(name);
    return sensor.spec.groups.count(target) > 0 || sensor.settings.find("SA_" + target) != nullptr;
}

bool hasFixedAnswer(const SensorParts &sensor, const std::string &name)
{
    return sensor.spec.answers.count(name) > 0;
}

bool startsTracking(const SensorParts &sensor, const std::string &name)
{
    return trackingCommand(sensor.spec, name) != nullptr;
}

bool stopsTracking(const SensorParts &sensor, const std::string &name)
{
    return name == sensor.spec.stopTracking;
}

/// Adds what the bench file says that the command answers, which may be nothing.
Outcome fixedAnswer(SensorParts &sensor, const CommandCall &call)
{
    const auto answer = sensor.spec.answers.find(call.name);
    if (answer != sensor.spec.answers.end())
        call.answers.add(answer->second);
    return {};
}

Outcome transmittedData(SensorParts &sensor, const CommandCall &call)
{
    const std::vector<Signal> &frame = sensor.sampler.frame();
    const double rate = sensor.sampler.frameRate();
    std::size_t maximum = sensor.spec.signals.size();
    for (const MeasuringMode &mode : sensor.spec.modes)
        maximum = std::max(maximum, mode.signals.size());
    call.answers.set("IA_Datarate", rate);
    call.answers.set("IA_ValuesPerFrame", static_cast<std::int32_t>(frame.size()));
    call.answers.set("IA_MaxValuesPerFrame", static_cast<std::int32_t>(maximum));
    call.answers.set("IA_VideoSignalsPerFrame", videoSignalsPerFrame(sensor));
    int number = 0;
    for (const Signal &signal : frame)
        describeSignal(signal, ++number, rate, call.answers);
    return fixedAnswer(sensor, call);
}

Outcome clearBuffers(SensorParts &sensor, const CommandCall &call)
{
    sensor.sampler.discard(call.now);
    return fixedAnswer(sensor, call);
}

Outcome driverSetting(SensorParts &sensor, const CommandCall &call)
{
    call.answers.set("IA_SensorCount", std::max(1, static_cast<std::int32_t>(sensor.members.size())));
    if (sensor.members.empty())
        call.answers.set("IA_SensorType#1", sensor.spec.reportedType());
    int number = 0;
    for (const auto &member : sensor.members)
        call.answers.set("IA_SensorType#" + std::to_string(++number), member->spec().reportedType());
    return fixedAnswer(sensor, call);
}

Outcome errorTexts(SensorParts &sensor, const CommandCall &call)
{
    call.answers.set("SA_SensorErrorValueText", sensor.spec.errorTextLines());
    return fixedAnswer(sensor, call);
}

Outcome sampleRate(SensorParts &sensor, const CommandCall &call)
{
    return readsGroup(sensor, call.name) ? readGroup(sensor, call) : fixedAnswer(sensor, call);
}

Outcome info(SensorParts &sensor, const CommandCall &call)
{
    call.answers.add(sensor.spec.identity());
    call.answers.add(sensor.spec.info);
    return fixedAnswer(sensor, call);
}

Outcome allParameters(SensorParts &sensor, const CommandCall &call)
{
    call.answers.add(sensor.settings.all());
    return fixedAnswer(sensor, call);
}

Outcome measure(SensorParts &sensor, const CommandCall &call)
{
    if (sensor.spec.multi) {
        const Value *const index = call.staged.find("IP_SensorIndex");
        if (index == nullptr)
            return failure(ParameterMissing, "\"Get_Measure\" needs IP_SensorIndex");
        const std::int32_t number = toInt(*index).value_or(0);
        if (number < 1 || number > static_cast<std::int32_t>(sensor.members.size()))
            return failure(OutOfRange, "There is no sensor number " + std::to_string(number));
    }
    sensor.sampler.receive(call.now);
    return {};
}

Outcome readGroup(SensorParts &sensor, const CommandCall &call)
{
    for (const std::string &key : sensor.spec.groups.at(targetOf(call.name)))
        call.answers.set(key, *sensor.settings.find(key));
    return {};
}

Outcome writeSetting(SensorParts &sensor, const CommandCall &call)
{
    ParameterList changes;
    Outcome outcome = sensor.settings.checkGroup(targetOf(call.name), call.staged, changes);
    if (outcome.ok())
        sensor.change(changes, call.now);
    return outcome;
}

Outcome startTracking(SensorParts &sensor, const CommandCall &call)
{
    const TrackingCommand *const command = trackingCommand(sensor.spec, call.name);
    sensor.sampler.track(static_cast<std::size_t>(command - sensor.spec.tracking.data()), call.now);
    return {};
}

} // namespace sondixsim::model::commands
