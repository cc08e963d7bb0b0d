// SPDX-License-Identifier: MIT
#include "call.h"
#include "model/models.h"

namespace sondixsim::capi {

namespace {

using model::Outcome;
using model::ParameterList;

Outcome openState(Instance &instance, const ParameterList & /*staged*/)
{
    if (instance.sensor && !instance.sensor->isPlugged())
        return model::failure(model::ConnectionLost, "The connection to the sensor is lost");
    instance.answers.set("IA_SensorOpen", instance.sensor ? 1 : 0);
    return {};
}

Outcome startSearch(Instance &instance, const ParameterList &staged)
{
    Simulator &simulator = Simulator::get();
    const auto bench = simulator.bench();
    if (!bench)
        return model::failure(model::BenchUnusable, "There is no bench");
    instance.search = std::make_unique<model::Search>(bench, staged, instance.sensorType, instance.handle.load(),
                                                      simulator.clock.now());
    return {};
}

Outcome noSearch()
{
    return model::failure(model::NoSearch, "No search has been started");
}

Outcome searchProgress(Instance &instance, const ParameterList & /*staged*/)
{
    if (!instance.search)
        return noSearch();
    instance.search->update(Simulator::get().clock.now());
    instance.answers.set("IA_Progress", instance.search->progress());
    instance.answers.set("IA_Found", static_cast<std::int32_t>(instance.search->found().size()));
    return {};
}

Outcome foundSensor(Instance &instance, const ParameterList &staged)
{
    if (!instance.search)
        return noSearch();
    const model::Value *const index = staged.find("IP_Index");
    if (index == nullptr)
        return model::failure(model::ParameterMissing, "\"Get_FoundSensor\" needs IP_Index");
    instance.search->update(Simulator::get().clock.now());
    const auto &found = instance.search->found();
    const std::int32_t number = model::toInt(*index).value_or(-1);
    if (number < 0 || number >= static_cast<std::int32_t>(found.size()))
        return model::failure(model::NoSuchResult, "There is no result number " + std::to_string(number));
    instance.answers = found[static_cast<std::size_t>(number)]->foundParameters();
    return {};
}

Outcome abortSearch(Instance &instance, const ParameterList & /*staged*/)
{
    if (instance.search)
        instance.search->abort(Simulator::get().clock.now());
    return {};
}

Outcome enableLogging(Instance &instance, const ParameterList &staged)
{
    const model::Value *const value = staged.find("IP_EnableLogging");
    if (value == nullptr)
        return model::failure(model::ParameterMissing, "\"Enable_Logging\" needs IP_EnableLogging");
    instance.log.reset();
    if (model::toInt(*value).value_or(0) == 0)
        return {};
    constexpr std::int32_t everything = 0x7FFFFFFF;
    if (!instance.logName.empty())
        instance.log = model::LogFile::open(instance.logName, everything, everything, true, false, 0);
    if (!instance.log)
        return model::failure(model::LogFileUnusable, "There is no log file to write to");
    return {};
}

Outcome errorTexts(Instance &instance, const ParameterList &staged)
{
    if (instance.sensor) {
        return instance.sensor->command("Get_SensorErrorValueText", staged, Simulator::get().clock.now(),
                                        instance.answers);
    }
    const model::SensorSpec *const spec = model::modelOfBaseType(instance.sensorType);
    instance.answers.set(
        "SA_SensorErrorValueText",
        model::errorTextLines(spec != nullptr ? spec->errorTexts : std::map<std::int32_t, std::string>()));
    return {};
}

/// The commands that need no connection.
struct LibraryCommand
{
    const char *name;
    Outcome (*run)(Instance &, const ParameterList &);
};
constexpr LibraryCommand libraryCommands[] = {
    {"Get_OpenState", openState},
    {"Start_FindSensor", startSearch},
    {"Get_FindSensorProgress", searchProgress},
    {"Get_FoundSensor", foundSensor},
    {"Abort_FindSensor", abortSearch},
    {"Enable_Logging", enableLogging},
    {"Get_SensorErrorValueText", errorTexts},
};

Outcome run(Instance &instance, const std::string &command, const ParameterList &staged)
{
    for (const LibraryCommand &known : libraryCommands) {
        if (command == known.name)
            return known.run(instance, staged);
    }
    if (!instance.sensor)
        return model::failure(model::NotOpen, "The sensor is not open, \"" + command + "\" cannot be sent");
    return instance.sensor->command(command, staged, Simulator::get().clock.now(), instance.answers);
}

} // namespace

std::int32_t runCommand(Instance &instance)
{
    const ParameterList staged = instance.takeStaged();
    const model::Value *const name = staged.find("S_Command");
    if (name == nullptr)
        return instance.fail(model::failure(model::NoCommand, "There is no S_Command"));
    instance.lastCommand = model::toText(*name);
    const Outcome outcome = run(instance, instance.lastCommand, staged);
    instance.takes = outcome.takes;
    if (instance.log)
        instance.log->write(model::LogCommands, instance.lastCommand + ": " + std::to_string(outcome.code));
    return outcome.ok() ? outcome.code : instance.fail(outcome);
}

} // namespace sondixsim::capi
