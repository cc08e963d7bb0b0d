// SPDX-License-Identifier: MIT
#include "session.h"

#include "models.h"

namespace sondixsim::model {

Outcome Session::open(const Bench &bench, const ParameterList &staged, double now, ParameterList &answers)
{
    Outcome outcome;
    const auto found = findSensor(bench, sensorType, staged, now, outcome);
    if (!found)
        return outcome;
    if (sensor != found) {
        if (!found->claim(handle))
            return failure(SensorInUse, "The sensor at " + found->spec().place.text() + " is in use");
        closeSensor(now);
        sensor = found;
    }
    try {
        openClaimed(staged, now, answers);
    } catch (const std::exception &) { // exhausted memory: no sensor stays open in part
        closeSensor(now);
        throw;
    }
    if (log)
        log->write(LogConnections, "opened the simulated sensor " + sensor->spec().serialNumber);
    return {};
}

void Session::openClaimed(const ParameterList &staged, double now, ParameterList &answers)
{
    sensor->open(now, sensor->line().baudrateIn(staged));
    const auto &members = sensor->members();
    answers.set("SA_SensorInformation", members.empty() ? sensor->information() : members.front()->information());
    for (std::size_t i = 0; i < members.size(); ++i)
        answers.set("SA_SensorInformation#S" + std::to_string(i + 1), members[i]->information());
}

Outcome Session::close(double now)
{
    if (!sensor)
        return failure(NotOpen, "The sensor is not open");
    closeSensor(now);
    if (log)
        log->write(LogConnections, "closed");
    return {};
}

Outcome Session::command(const CommandCall &call)
{
    Outcome outcome;
    if (const Command *const command = findHandleCommand(call.name, sensor != nullptr))
        outcome = command->runOnHandle(*this, call);
    else if (sensor)
        outcome = sensor->command(call);
    else
        outcome = failure(NotOpen, "The sensor is not open, \"" + call.name + "\" cannot be sent");
    if (log)
        log->write(LogCommands, call.name + ": " + std::to_string(outcome.code));
    return outcome;
}

void Session::closeSensor(double now)
{
    if (sensor)
        sensor->close(now);
    sensor.reset();
}

std::shared_ptr<Sensor> findSensor(const Bench &bench, std::int32_t sensorType, const ParameterList &staged,
                                   double now, Outcome &failure)
{
    const Value *const serialNumber = staged.find("SA_SerialNumber");
    const auto isMeant = [&](const SensorSpec &spec) {
        return spec.place.agreesWith(staged) &&
               (serialNumber == nullptr || toText(*serialNumber) == spec.serialNumber);
    };
    const Sensor *atOtherBaudrate = nullptr;
    std::string otherType;
    for (const auto &sensor : bench.sensors) {
        const SensorSpec &spec = sensor->spec();
        if (!sensor->isPlugged(now) || !isMeant(spec))
            continue;
        const bool answers = sensor->line().baudrateIn(staged) == sensor->line().baudrate();
        const bool isRightType = spec.baseType() == sensorType;
        if (isRightType && answers)
            return sensor;
        if (isRightType && atOtherBaudrate == nullptr)
            atOtherBaudrate = sensor.get();
        if (!isRightType && answers && otherType.empty())
            otherType = "At " + spec.place.text() + " is a " + spec.model + ", not a ";
    }
    if (atOtherBaudrate != nullptr) {
        const SensorSpec &spec = atOtherBaudrate->spec();
        failure = noAnswerAt(spec.model, spec.place, atOtherBaudrate->line().baudrateIn(staged));
        return nullptr;
    }
    const SensorSpec *const wanted = modelOfBaseType(sensorType);
    const std::string name = wanted != nullptr ? wanted->model : std::to_string(sensorType);
    failure =
        model::failure(NoSensorAnswers,
                       !otherType.empty() && !staged.empty() ? otherType + name : "No " + name + " answers there");
    return nullptr;
}

} // namespace sondixsim::model
