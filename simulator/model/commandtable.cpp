// SPDX-License-Identifier: MIT
#include "command.h"
#include "models.h"
#include "sensor.h"

#include <set>
#include <string_view>

namespace sondixsim::model {

namespace {

using namespace commands;

bool always(const SensorParts & /*sensor*/, const std::string & /*name*/)
{
    return true;
}

bool isPolled(const SensorParts &sensor, const std::string & /*name*/)
{
    return sensor.spec.polled;
}

bool hasVideo(const SensorParts &sensor, const std::string & /*name*/)
{
    return !sensor.spec.video.lines.empty();
}

bool hasPages(const SensorParts &sensor, const std::string & /*name*/)
{
    return sensor.spec.web.present && sensor.line.baudrate() != 0;
}

bool hasGenericCommands(const SensorParts &sensor, const std::string & /*name*/)
{
    return sensor.spec.web.present;
}

// All commands. A row with the full name decides; otherwise the first row with "*" that matches and is offered. The
// rows with "*" are for what the files of models and benches define: groups of settings, fixed answers and tracking
// commands.
// clang-format off
constexpr Command commandTable[] = {
    // Name                      Answered by               Offered             Handler
    {"Get_OpenState",            AnsweredBy::Handle,                           openState},
    {"Start_FindSensor",         AnsweredBy::Handle,                           startSearch},
    {"Get_FindSensorProgress",   AnsweredBy::Handle,                           searchProgress},
    {"Get_FoundSensor",          AnsweredBy::Handle,                           foundSensor},
    {"Abort_FindSensor",         AnsweredBy::Handle,                           abortSearch},
    {"Enable_Logging",           AnsweredBy::Handle,                           enableLogging},
    {"Get_SensorErrorValueText", AnsweredBy::ClosedHandle,                     errorTextsOfModel},

    {"Get_SensorErrorValueText", AnsweredBy::Library,      always,             errorTexts},
    {"Get_TransmittedDataInfo",  AnsweredBy::Library,      always,             transmittedData},
    {"Get_DrvSetting",           AnsweredBy::Library,      always,             driverSetting},
    {"Get_Samplerate",           AnsweredBy::Library,      always,             sampleRate},
    {"Automatic_Setup",          AnsweredBy::Library,      always,             fixedAnswer},
    {"Clear_Buffers",            AnsweredBy::Library,      always,             clearBuffers},

    {"Get_Info",                 AnsweredBy::Sensor,       always,             info},
    {"Get_AllParameters",        AnsweredBy::Sensor,       always,             allParameters},
    {"Get_Measure",              AnsweredBy::Sensor,       isPolled,           measure},
    {"Get_Video",                AnsweredBy::Sensor,       hasVideo,           video},
    {"Get_HTTP",                 AnsweredBy::Sensor,       hasPages,           page},
    {"Cmd_Generic",              AnsweredBy::Sensor,       hasGenericCommands, generic},

    {"*",                        AnsweredBy::Sensor,       startsTracking,     startTracking},
    {"*",                        AnsweredBy::Sensor,       stopsTracking,      fixedAnswer},
    {"Get_*",                    AnsweredBy::Sensor,       readsGroup,         readGroup},
    {"*",                        AnsweredBy::Sensor,       hasFixedAnswer,     fixedAnswer},
    {"Set_*",                    AnsweredBy::Sensor,       writesSetting,      writeSetting},
    {"Update_*",                 AnsweredBy::Sensor,       writesSetting,      writeSetting},
};
// clang-format on

bool matchesPattern(std::string_view pattern, std::string_view name)
{
    if (pattern.back() != '*')
        return false;
    pattern.remove_suffix(1);
    return name.substr(0, pattern.size()) == pattern;
}

} // namespace

std::vector<std::string> commandNames()
{
    std::set<std::string> names;
    for (const Command &command : commandTable) {
        const std::string_view name = command.name;
        if (name.back() != '*')
            names.emplace(name);
    }
    for (const auto &[model, spec] : models()) {
        for (const auto &[group, settings] : spec.groups) {
            for (const char *const verb : {"Get_", "Set_", "Update_"})
                names.insert(verb + group);
        }
        for (const auto &[command, answer] : spec.answers)
            names.insert(command);
        for (const TrackingCommand &tracking : spec.tracking)
            names.insert(tracking.command);
        if (!spec.stopTracking.empty())
            names.insert(spec.stopTracking);
    }
    return {names.begin(), names.end()};
}

const Command *findHandleCommand(const std::string &name, bool sensorOpen)
{
    for (const Command &command : commandTable) {
        const bool answers = command.answeredBy == AnsweredBy::Handle ||
                             (command.answeredBy == AnsweredBy::ClosedHandle && !sensorOpen);
        if (answers && name == command.name)
            return &command;
    }
    return nullptr;
}

const Command *findSensorCommand(const std::string &name, const SensorParts &sensor)
{
    if (name.empty())
        return nullptr;
    for (const Command &command : commandTable) {
        if (command.runOnSensor == nullptr)
            continue;
        if (name == command.name)
            return command.offered(sensor, name) ? &command : nullptr;
        if (matchesPattern(command.name, name) && command.offered(sensor, name))
            return &command;
    }
    return nullptr;
}

} // namespace sondixsim::model
