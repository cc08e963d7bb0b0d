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

std::int32_t open(Instance &instance)
{
    Simulator &simulator = Simulator::get();
    const model::ParameterList staged = instance.takeStaged();
    const auto bench = simulator.bench();
    if (!bench)
        return instance.fail(model::failure(model::BenchUnusable, "There is no bench"));
    model::Outcome outcome;
    const auto sensor = findSensor(*bench, instance.sensorType, staged, outcome);
    instance.takes = outcome.takes;
    if (!sensor)
        return instance.fail(outcome);
    if (instance.sensor != sensor) {
        if (!sensor->claim(instance.handle.load())) {
            return instance.fail(
                model::failure(model::SensorInUse, "The sensor at " + sensor->spec().place.text() + " is in use"));
        }
        instance.close();
        instance.sensor = sensor;
    }
    sensor->open(simulator.clock.now(), sensor->rateIn(staged));
    const auto &members = sensor->members();
    instance.answers.set("SA_SensorInformation",
                         members.empty() ? sensor->information() : members.front()->information());
    for (std::size_t i = 0; i < members.size(); ++i)
        instance.answers.set("SA_SensorInformation#S" + std::to_string(i + 1), members[i]->information());
    if (instance.log)
        instance.log->write(model::LogConnections, "opened the simulated sensor " + sensor->spec().serialNumber);
    return model::Success;
}

std::int32_t close(Instance &instance)
{
    if (!instance.sensor)
        return instance.fail(model::failure(model::NotOpen, "The sensor is not open"));
    instance.close();
    if (instance.log)
        instance.log->write(model::LogConnections, "closed");
    return model::Success;
}

/// Makes a call that may take its time, during which the instance is free for other threads.
std::int32_t timed(std::uint32_t handle, std::int32_t (*body)(Instance &))
{
    double takes = 0.0;
    std::shared_ptr<model::Sensor> sensor;
    const std::int32_t result = withInstance(handle, [&](Instance &instance) {
        const std::int32_t code = body(instance);
        takes = std::exchange(instance.takes, 0.0);
        if (takes > 0.0)
            sensor = instance.sensor;
        return code;
    });
    Simulator &simulator = Simulator::get();
    if (!(takes > 0.0) || !simulator.lineSpeed.load() || simulator.clock.isVirtual())
        return result;
    const double now = simulator.clock.now();
    simulator.clock.waitUntil(sensor ? sensor->reserveLine(now, takes) : now + takes, now);
    if (result != model::Success || !sensor || sensor->isPlugged())
        return result;
    return withInstance(handle, [](Instance &instance) {
        instance.answers.clear();
        instance.answerText.clear();
        return instance.fail(model::failure(model::ConnectionLost, "The connection to the sensor is lost"));
    });
}

} // namespace

namespace sondixsim::capi {

std::shared_ptr<model::Sensor> findSensor(const model::Bench &bench, std::int32_t sensorType,
                                          const model::ParameterList &staged, model::Outcome &failure)
{
    const model::Value *const serialNumber = staged.find("SA_SerialNumber");
    const auto isMeant = [&](const model::SensorSpec &spec) {
        return spec.place.agreesWith(staged) &&
               (serialNumber == nullptr || model::toText(*serialNumber) == spec.serialNumber);
    };
    std::string others;
    const model::Sensor *deaf = nullptr;
    for (const auto &sensor : bench.sensors) {
        if (!sensor->isPlugged() || !isMeant(sensor->spec()))
            continue;
        const bool hears = sensor->rateIn(staged) == sensor->baudrate();
        const bool isRightType = sensor->spec().baseType() == sensorType;
        if (isRightType && hears)
            return sensor;
        if (isRightType && deaf == nullptr)
            deaf = sensor.get();
        if (!isRightType && hears && others.empty())
            others = "At " + sensor->spec().place.text() + " is a " + sensor->spec().model + ", not a ";
    }
    if (deaf != nullptr) {
        failure = model::noAnswerAt(deaf->spec(), deaf->rateIn(staged));
        return nullptr;
    }
    const model::SensorSpec *const wanted = model::modelOfBaseType(sensorType);
    const std::string name = wanted != nullptr ? wanted->model : std::to_string(sensorType);
    failure = model::failure(model::NoSensorAnswers,
                             !others.empty() && !staged.empty() ? others + name : "No " + name + " answers there");
    return nullptr;
}

} // namespace sondixsim::capi

extern "C" {

std::uint32_t CreateSensorInstance(std::int32_t sensorType)
{
    Simulator &simulator = Simulator::get();
    std::uint32_t handle = 0;
    const auto describe = [&] {
        Observed observed;
        observed.arguments = {std::to_string(sensorType)};
        observed.sensorType = sensorType;
        observed.created = &handle;
        return observed;
    };
    simulator.bench();
    const auto body = [&]() -> std::int32_t {
        handle = create(sensorType);
        return model::Success;
    };
    invoke("CreateSensorInstance", describe, body);
    return handle;
}

std::int32_t ReleaseSensorInstance(std::uint32_t handle)
{
    return invoke(
        "ReleaseSensorInstance", [&] { return plain(handle); },
        [&]() -> std::int32_t {
            Simulator &simulator = Simulator::get();
            if (simulator.instances.release(handle))
                return model::Success;
            return simulator.fail(model::failure(model::UnknownHandle, "There is no instance with this handle"));
        });
}

std::int32_t OpenSensor(std::uint32_t handle)
{
    return invoke(
        "OpenSensor", [&] { return plain(handle); }, [&] { return timed(handle, open); });
}

std::int32_t CloseSensor(std::uint32_t handle)
{
    return invoke(
        "CloseSensor", [&] { return plain(handle); }, [&] { return withInstance(handle, close); });
}

std::int32_t SensorCommand(std::uint32_t handle)
{
    return invoke(
        "SensorCommand", [&] { return plain(handle); }, [&] { return timed(handle, runCommand); });
}
}
