// SPDX-License-Identifier: MIT
#include "call.h"
#include "model/models.h"
#include "sondix.h"

#include <utility>

using namespace sondixsim::capi;
namespace model = sondixsim::model;

namespace {

Observed plain(std::uint32_t handle)
{
    Observed observed;
    observed.handle = handle;
    return observed;
}

std::uint32_t create(std::int32_t sensorType)
{
    Simulator &simulator = Simulator::get();
    if (!simulator.bench())
        return 0;
    if (model::modelOfBaseType(sensorType) == nullptr) {
        simulator.fail(
            model::failure(model::UnknownSensorType, "There is no sensor type " + std::to_string(sensorType)));
        return 0;
    }
    const std::uint32_t handle = simulator.instances.create(sensorType);
    if (handle == 0)
        simulator.fail(model::failure(model::TooManyInstances, "There are too many instances"));
    return handle;
}

/// The outcome of a call becomes its result, and its failure the error of the instance.
std::int32_t finish(Instance &instance, const model::Outcome &outcome)
{
    instance.duration = outcome.duration;
    return outcome.ok() ? outcome.code : instance.fail(outcome);
}

std::int32_t openInstance(Instance &instance)
{
    Simulator &simulator = Simulator::get();
    const model::ParameterList staged = instance.takeStaged();
    const auto bench = simulator.bench();
    const double now = simulator.clock.now(); // of this bench: loading one starts the clock anew before it is used
    const std::int32_t code = finish(instance, instance.session.open(*bench, staged, now, instance.answers));
    if (code != model::Success)
        simulator.noteFailure(instance, now);
    return code;
}

std::int32_t closeInstance(Instance &instance)
{
    Simulator &simulator = Simulator::get();
    simulator.callers.forget(instance.session.handle);
    return finish(instance, instance.session.close(simulator.clock.now()));
}

std::int32_t command(Instance &instance)
{
    Simulator &simulator = Simulator::get();
    const model::ParameterList staged = instance.takeStaged();
    const model::Value *const name = staged.find("S_Command");
    if (name == nullptr)
        return finish(instance, model::failure(model::NoCommand, "There is no S_Command"));
    instance.lastCommand = model::toText(*name);
    const auto bench = simulator.bench();
    const double now = simulator.clock.now(); // of this bench, as for opening
    const std::int32_t code =
        finish(instance, instance.session.command({instance.lastCommand, staged, now, instance.answers, bench}));
    const bool isProgress = instance.lastCommand == "Get_FindSensorProgress";
    if (code == model::ConnectionLost || code == model::TimedOut)
        simulator.noteFailure(instance, now);
    else if (isProgress && instance.session.search && instance.session.search->progress() < 100.0)
        simulator.noteAnswer(instance, now, false);
    else if (isProgress || instance.lastCommand == "Abort_FindSensor")
        simulator.callers.forget(instance.session.handle);
    return code;
}

/// Makes a call and waits as long as it takes on the bench. The instance is not locked meanwhile.
std::int32_t timed(std::uint32_t handle, std::int32_t (*body)(Instance &))
{
    double duration = 0.0;
    std::shared_ptr<model::Sensor> sensor;
    const std::int32_t result = withInstance(handle, [&](Instance &instance) {
        const std::int32_t code = body(instance);
        duration = std::exchange(instance.duration, 0.0);
        sensor = instance.session.sensor;
        return code;
    });
    Simulator &simulator = Simulator::get();
    if (sensor)
        simulator.publishChanges(*sensor);
    if (!(duration > 0.0) || !simulator.lineSpeed.load())
        return result;
    const double now = simulator.clock.now();
    const bool waits = !simulator.clock.isVirtual();
    const double end = sensor ? sensor->line().time().reserve(now, duration, waits) : now + duration;
    if (!waits)
        return result;
    simulator.clock.waitUntil(end, now);
    simulator.follow();
    if (result != model::Success || !sensor || sensor->isPlugged(simulator.clock.now()))
        return result;
    return withInstance(handle, [](Instance &instance) {
        instance.answers.clear();
        instance.answerText.clear();
        return instance.fail(model::failure(model::ConnectionLost, "The connection to the sensor is lost"));
    });
}

} // namespace

extern "C" {

std::uint32_t CreateSensorInstance(std::int32_t sensorType)
{
    std::uint32_t handle = 0;
    const auto describe = [&] {
        Observed observed;
        observed.arguments = {std::to_string(sensorType)};
        observed.sensorType = sensorType;
        observed.created = &handle;
        return observed;
    };
    const auto body = [&]() -> std::int32_t {
        handle = create(sensorType);
        return model::Success;
    };
    contained(0, [&] {
        Simulator &simulator = Simulator::get();
        simulator.bench(); // before the call is observed: the bench may have faults for it
        if (auto *const session = simulator.session())
            session->noteUse();
        return invoke("CreateSensorInstance", 0, describe, body);
    });
    return handle;
}

std::int32_t ReleaseSensorInstance(std::uint32_t handle)
{
    return invoke(
        "ReleaseSensorInstance", handle, [&] { return plain(handle); },
        [&]() -> std::int32_t {
            Simulator &simulator = Simulator::get();
            simulator.callers.forget(handle);
            if (simulator.instances.release(handle, simulator.clock.now()))
                return model::Success;
            return simulator.fail(model::failure(model::UnknownHandle, "There is no instance with this handle"));
        });
}

std::int32_t OpenSensor(std::uint32_t handle)
{
    return invoke(
        "OpenSensor", handle, [&] { return plain(handle); }, [&] { return timed(handle, openInstance); });
}

std::int32_t CloseSensor(std::uint32_t handle)
{
    return invoke(
        "CloseSensor", handle, [&] { return plain(handle); }, [&] { return withInstance(handle, closeInstance); });
}

std::int32_t SensorCommand(std::uint32_t handle)
{
    return invoke(
        "SensorCommand", handle, [&] { return plain(handle); }, [&] { return timed(handle, command); });
}
}
