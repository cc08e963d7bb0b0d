// SPDX-License-Identifier: MIT
#include "command.h"
#include "models.h"
#include "session.h"

// The commands that a handle answers, whether a sensor is open or not.

namespace sondixsim::model::commands {

namespace {

Outcome noSearch()
{
    return failure(NoSearch, "No search has been started");
}

} // namespace

Outcome openState(Session &session, const CommandCall &call)
{
    if (session.sensor && !session.sensor->isPlugged(call.now))
        return failure(ConnectionLost, "The connection to the sensor is lost");
    call.answers.set("IA_SensorOpen", session.sensor ? 1 : 0);
    return {};
}

Outcome startSearch(Session &session, const CommandCall &call)
{
    session.search =
        std::make_unique<Search>(call.bench, call.staged, session.sensorType, session.handle, call.now);
    return {};
}

Outcome searchProgress(Session &session, const CommandCall &call)
{
    if (!session.search)
        return noSearch();
    session.search->update(call.now);
    call.answers.set("IA_Progress", session.search->progress());
    call.answers.set("IA_Found", static_cast<std::int32_t>(session.search->found().size()));
    return {};
}

Outcome foundSensor(Session &session, const CommandCall &call)
{
    if (!session.search)
        return noSearch();
    const Value *const index = call.staged.find("IP_Index");
    if (index == nullptr)
        return failure(ParameterMissing, "\"Get_FoundSensor\" needs IP_Index");
    session.search->update(call.now);
    const auto &found = session.search->found();
    const std::int32_t number = toInt(*index).value_or(-1);
    if (number < 0 || number >= static_cast<std::int32_t>(found.size()))
        return failure(NoSuchResult, "There is no result number " + std::to_string(number));
    call.answers = found[static_cast<std::size_t>(number)]->foundParameters();
    return {};
}

Outcome abortSearch(Session &session, const CommandCall &call)
{
    if (session.search)
        session.search->abort(call.now);
    return {};
}

Outcome enableLogging(Session &session, const CommandCall &call)
{
    const Value *const value = call.staged.find("IP_EnableLogging");
    if (value == nullptr)
        return failure(ParameterMissing, "\"Enable_Logging\" needs IP_EnableLogging");
    session.log.reset();
    if (toInt(*value).value_or(0) == 0)
        return {};
    constexpr std::int32_t everything = 0x7FFFFFFF;
    if (!session.logName.empty())
        session.log = LogFile::open(session.logName, everything, everything, true, false, 0);
    if (!session.log)
        return failure(LogFileUnusable, "There is no log file to write to");
    return {};
}

Outcome errorTextsOfModel(Session &session, const CommandCall &call)
{
    const SensorSpec *const spec = modelOfBaseType(session.sensorType);
    call.answers.set("SA_SensorErrorValueText", spec != nullptr ? spec->errorTextLines() : std::string());
    return {};
}

} // namespace sondixsim::model::commands
