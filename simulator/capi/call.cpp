// SPDX-License-Identifier: MIT
#include "call.h"

#include <chrono>
#include <string_view>
#include <thread>

namespace sondixsim::capi {

namespace {

using std::string_view;

bool consumesParameters(string_view function)
{
    return function == "SensorCommand" || function == "OpenSensor";
}

model::CallDetails detailsOf(const char *function, const Observed &observed)
{
    Simulator &simulator = Simulator::get();
    model::CallDetails details;
    details.function = function;
    details.handle = observed.handle;
    details.parameter = observed.parameter;
    details.sensorType = observed.sensorType;
    const LockedInstance instance = simulator.instances.lock(observed.handle);
    if (!instance)
        return details;
    details.sensorType = instance->session.sensorType;
    const model::Value *const command = instance->staged.find("S_Command");
    details.command = command != nullptr ? model::toText(*command) : instance->lastCommand;
    auto sensor = instance->session.sensor;
    if (!sensor && details.function == string_view("OpenSensor")) {
        model::Outcome ignored;
        sensor = model::findSensor(*simulator.bench(), details.sensorType, instance->staged, simulator.clock.now(),
                                   ignored);
    }
    if (sensor)
        details.sensor = sensor->spec().serialNumber;
    return details;
}

std::int32_t applyFailure(const char *function, const Observed &observed, const model::FaultEffect &effect)
{
    Simulator &simulator = Simulator::get();
    const LockedInstance instance = simulator.instances.lock(observed.handle);
    if (!instance) {
        simulator.fail(effect.silent ? model::Outcome{} : model::Outcome{effect.code, effect.text});
        return effect.code;
    }
    if (consumesParameters(function)) {
        const model::ParameterList taken = instance->takeStaged();
        if (const model::Value *command = taken.find("S_Command"))
            instance->lastCommand = model::toText(*command);
    }
    instance->errorCode = effect.silent ? 0 : effect.code;
    instance->errorText = effect.silent ? std::string() : effect.text;
    return effect.code;
}

/// Replaces the answer of a command or of an open. Without a code the command succeeds, even if it is unknown.
std::int32_t replaceAnswer(const std::string &function, const Observed &observed, const model::FaultEffect &effect,
                           std::int32_t result)
{
    const LockedInstance instance = Simulator::get().instances.lock(observed.handle);
    if (!instance)
        return result;
    instance->answers = model::parsePairs(*effect.answer);
    instance->answerText = *effect.answer;
    if (function != "SensorCommand" || effect.code != 0)
        return result;
    instance->errorCode = 0;
    instance->errorText.clear();
    return 0;
}

} // namespace

std::int32_t invokeObserved(const char *function, const Observed &observed,
                            const std::function<std::int32_t()> &body)
{
    Simulator &simulator = Simulator::get();
    const bool recorded = simulator.callLog.isOn();
    CallLog::Ticket ticket;
    if (recorded)
        ticket = simulator.callLog.begin({function, observed.handle, observed.arguments, 0, 0});

    model::FaultEffect effect;
    if (simulator.faults.any())
        effect = simulator.faults.match(detailsOf(function, observed));
    if (effect.delay > 0.0)
        std::this_thread::sleep_for(std::chrono::duration<double>(effect.delay));
    if (effect.hang)
        simulator.faults.hang();

    std::int32_t result = effect.code != 0 ? applyFailure(function, observed, effect) : body();
    if (effect.answer && consumesParameters(function))
        result = replaceAnswer(function, observed, effect, result);
    if (effect.count && observed.setCount)
        observed.setCount(*effect.count);
    if (recorded)
        simulator.callLog.end(ticket, result, observed.created != nullptr ? *observed.created : observed.handle);
    return result;
}

} // namespace sondixsim::capi
