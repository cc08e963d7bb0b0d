// SPDX-License-Identifier: MIT
#pragma once

#include "errors.h"
#include "value.h"

#include <memory>
#include <string>

namespace sondixsim::model {

struct Bench;
struct SensorParts;
struct Session;

/// What a command is sent with and where its answers go.
struct CommandCall
{
    const std::string &name;
    const ParameterList &staged;
    double now; ///< bench time in seconds
    ParameterList &answers;
    const std::shared_ptr<const Bench> &bench; ///< never null: there are no handles before a bench is loaded
};

/// Who answers a command.
enum class AnsweredBy {
    Handle,       ///< the library, whether a sensor is open or not
    ClosedHandle, ///< the library while no sensor is open
    Library,      ///< the library for an open sensor, which goes on tracking
    Sensor,       ///< the open sensor; a sensor with tracking commands stops tracking for it
};

/// A row of the table of commands.
struct Command
{
    using OnHandle = Outcome (*)(Session &, const CommandCall &);
    using OnSensor = Outcome (*)(SensorParts &, const CommandCall &);
    using Offered = bool (*)(const SensorParts &, const std::string &name);

    constexpr Command(const char *commandName, AnsweredBy by, OnHandle handler)
        : name(commandName)
        , answeredBy(by)
        , runOnHandle(handler)
    {
    }
    constexpr Command(const char *commandName, AnsweredBy by, Offered isOffered, OnSensor handler)
        : name(commandName)
        , answeredBy(by)
        , offered(isOffered)
        , runOnSensor(handler)
    {
    }

    const char *name; ///< a "*" at the end stands for any text
    AnsweredBy answeredBy;
    Offered offered = nullptr;      ///< which sensors know it; null in rows of handles
    OnHandle runOnHandle = nullptr; ///< one of the two
    OnSensor runOnSensor = nullptr;
};

/// The command of that name that a handle answers, null when there is none.
const Command *findHandleCommand(const std::string &name, bool sensorOpen);
/// The names of the commands that models have, in alphabetical order. Bench files may define more.
std::vector<std::string> commandNames();

/// The command of that name that this open sensor knows, null when there is none.
const Command *findSensorCommand(const std::string &name, const SensorParts &sensor);

// The handlers of the table. One that succeeds may have stored answers; the texts of failures are UTF-8.

namespace commands {

// handlecommands.cpp
Outcome openState(Session &session, const CommandCall &call);
Outcome startSearch(Session &session, const CommandCall &call);
Outcome searchProgress(Session &session, const CommandCall &call);
Outcome foundSensor(Session &session, const CommandCall &call);
Outcome abortSearch(Session &session, const CommandCall &call);
Outcome enableLogging(Session &session, const CommandCall &call);
Outcome errorTextsOfModel(Session &session, const CommandCall &call);

// sensorcommands.cpp
bool readsGroup(const SensorParts &sensor, const std::string &name);
bool writesSetting(const SensorParts &sensor, const std::string &name);
bool hasFixedAnswer(const SensorParts &sensor, const std::string &name);
bool startsTracking(const SensorParts &sensor, const std::string &name);
bool stopsTracking(const SensorParts &sensor, const std::string &name);
Outcome fixedAnswer(SensorParts &sensor, const CommandCall &call);
Outcome transmittedData(SensorParts &sensor, const CommandCall &call);
Outcome clearBuffers(SensorParts &sensor, const CommandCall &call);
Outcome driverSetting(SensorParts &sensor, const CommandCall &call);
Outcome errorTexts(SensorParts &sensor, const CommandCall &call);
Outcome sampleRate(SensorParts &sensor, const CommandCall &call);
Outcome info(SensorParts &sensor, const CommandCall &call);
Outcome allParameters(SensorParts &sensor, const CommandCall &call);
Outcome measure(SensorParts &sensor, const CommandCall &call);
Outcome readGroup(SensorParts &sensor, const CommandCall &call);
Outcome writeSetting(SensorParts &sensor, const CommandCall &call);
Outcome startTracking(SensorParts &sensor, const CommandCall &call);

// videocommand.cpp
std::int32_t videoSignalsPerFrame(const SensorParts &sensor);
Outcome video(SensorParts &sensor, const CommandCall &call);

// webcommands.cpp
Outcome page(SensorParts &sensor, const CommandCall &call);
Outcome generic(SensorParts &sensor, const CommandCall &call);

} // namespace commands

} // namespace sondixsim::model
