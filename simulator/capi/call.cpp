// SPDX-License-Identifier: MIT
#include "call.h"

#include "model/text.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
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
    details.time = simulator.clock.now();
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
    simulator.noteFailure(*instance, simulator.clock.now());
    instance->errorCode = effect.silent ? 0 : effect.code;
    instance->errorText = effect.silent ? std::string() : effect.text;
    return effect.code;
}

/// Damages the answer of a command or of an open.
void damageAnswer(const Observed &observed, Damage damage)
{
    const LockedInstance instance = Simulator::get().instances.lock(observed.handle);
    if (!instance)
        return;
    const std::string whole =
        instance->answerText.empty() ? model::pairsText(instance->answers, "\r\n") : instance->answerText;
    instance->answerText = model::damaged(whole, damage);
    instance->answers = model::parsePairs(instance->answerText);
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

/// Bench time and its duration in milliseconds, process, program, thread, handle, call and result.
void logCall(const Simulator &simulator, const Call &call, double begun)
{
    session::BenchSession *const session = simulator.session();
    if (session == nullptr)
        return;
    char head[96];
    std::snprintf(head, sizeof head, "%12.6f %8.3f  ", begun, (simulator.clock.now() - begun) * 1e3);
    static const std::string process = std::to_string(session::processNumber()) + ' ' + session::programName();
    std::string line = head + process + '#' + std::to_string(call.thread) + "  " + std::to_string(call.handle) +
                       ' ' + model::fromWindows1250(call.text()) + " = " + std::to_string(call.result);
    // One line a call, whatever a text contains.
    const auto isControl = [](unsigned char character) { return character < ' '; };
    std::replace_if(line.begin(), line.end(), isControl, ' ');
    try {
        session->log(line + '\n');
    } catch (const std::exception &) {
        return; // a full disk must not change what the call does
    }
}

} // namespace

std::int32_t failWith(std::uint32_t handle, const std::exception &error) noexcept
{
    const bool noMemory = dynamic_cast<const std::bad_alloc *>(&error) != nullptr;
    const model::Code code = noMemory ? model::OutOfMemory : model::InternalError;
    try {
        const model::Outcome outcome = model::failure(
            code, noMemory ? "There is not enough memory" : std::string("Internal error: ") + error.what());
        if (const LockedInstance instance = Simulator::get().instances.lock(handle))
            return instance->fail(outcome);
        return Simulator::get().fail(outcome);
    } catch (const std::exception &) {
        return code; // without a text: there is no memory for it
    }
}

std::int32_t invokeObserved(const char *function, const Observed &observed,
                            const std::function<std::int32_t()> &body)
{
    Simulator &simulator = Simulator::get();
    const bool recorded = simulator.callLog.isOn();
    const bool logged = isLogged(simulator, function);
    const double begun = simulator.clock.now();
    CallLog::Ticket ticket;
    if (recorded)
        ticket = simulator.callLog.begin({function, observed.handle, observed.arguments, 0, 0});

    model::FaultEffect effect;
    if (simulator.faults.any() || simulator.expectations.countCalls() || simulator.callEvents.any()) {
        const model::CallDetails details = detailsOf(function, observed);
        simulator.expectations.count(details);
        for (const nlohmann::json &event : simulator.callEvents.at(details))
            simulator.perform(event);
        effect = simulator.faults.match(details);
    }
    if (effect.delay > 0.0)
        std::this_thread::sleep_for(std::chrono::duration<double>(effect.delay));
    if (effect.hang)
        simulator.faults.hang([&simulator] { simulator.follow(); });

    std::int32_t result = effect.code != 0 ? applyFailure(function, observed, effect) : body();
    if (effect.answer && consumesParameters(function))
        result = replaceAnswer(function, observed, effect, result);
    if (effect.damage != Damage::None && consumesParameters(function))
        damageAnswer(observed, effect.damage);
    if (effect.count && observed.setCount)
        observed.setCount(*effect.count);
    const std::uint32_t handle = observed.created != nullptr ? *observed.created : observed.handle;
    if (recorded)
        simulator.callLog.end(ticket, result, handle);
    if (logged)
        logCall(simulator, {function, handle, observed.arguments, result, threadNumber()}, begun);
    return result;
}

} // namespace sondixsim::capi
