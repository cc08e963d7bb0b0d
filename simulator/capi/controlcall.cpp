// SPDX-License-Identifier: MIT
#include "SondixSimulator/controlcall.h"

#include "faultjson.h"
#include "simulator.h"
#include "SondixSimulator/control.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace sondixsim::capi {

namespace {

std::shared_ptr<const model::Bench> presentBench()
{
    Simulator &simulator = Simulator::get();
    auto bench = simulator.bench();
    if (!bench)
        throw RequestError(simulator.lastFailure().text);
    return bench;
}

/// The sensor that a request names. There are no other members.
std::string onlySensor(RequestReader &request)
{
    const auto name = request.required<std::string>("sensor");
    request.finish();
    return inLibraryText(name, "sensor");
}

json sensorList(RequestReader &request)
{
    request.finish();
    const auto bench = presentBench();
    Simulator &simulator = Simulator::get();
    session::BenchSession *const session = simulator.session();
    const double now = simulator.clock.now();
    json sensors = json::array();
    for (std::size_t i = 0; i < bench->sensors.size(); ++i) {
        model::Sensor &sensor = *bench->sensors[i];
        const bool isOpen = sensor.owner() != 0 || sensor.isHeldByOther(0, now);
        sensors.push_back({{"serialNumber", model::fromWindows1250(sensor.spec().serialNumber)},
                           {"model", sensor.spec().model},
                           {"place", model::fromWindows1250(sensor.spec().place.text())},
                           {"plugged", sensor.isPlugged(now)},
                           {"open", isOpen},
                           {"silent", sensor.isSilent(now)}});
        // Not the program that had it last, if the bench file says that it is in use.
        const bool isClaimed = sensor.owner() != 0 || (session != nullptr && session->isClaimedByOther(i));
        if (isClaimed && session != nullptr)
            sensors.back()["program"] = session->claimer(i);
        else if (isOpen && !isClaimed)
            sensors.back()["inUse"] = true;
    }
    json answer{{"bench", model::fromWindows1250(bench->name)}, {"time", now}, {"sensors", std::move(sensors)}};
    if (session != nullptr)
        answer["session"] = session->name();
    return answer;
}

json startSession(RequestReader &request)
{
    const auto name = request.required<std::string>("session");
    std::string file;
    bool isLogged = false;
    request.read("file", file);
    request.read("log", isLogged);
    request.finish();
    Simulator::startSession(name, file, isLogged);
    return json::object();
}

json stopSession(RequestReader &request)
{
    const auto name = request.required<std::string>("session");
    request.finish();
    session::BenchSession::stop(name);
    return json::object();
}

json sessionList(RequestReader &request)
{
    request.finish();
    json sessions = json::array();
    for (const std::string &name : session::BenchSession::names()) {
        try {
            const session::BenchSession session(name);
            sessions.push_back({{"session", name}, {"file", session.bench().name}, {"age", session.age()}});
        } catch (const std::runtime_error &) {
            continue; // it has been stopped meanwhile, or is damaged
        }
    }
    return {{"sessions", std::move(sessions)}};
}

json set(RequestReader &request)
{
    const auto values = request.required<std::string>("values");
    setSettings(onlySensor(request), inLibraryText(values, "values"));
    return json::object();
}

json step(RequestReader &request)
{
    const auto seconds = request.required<double>("seconds");
    request.finish();
    presentBench();
    if (!Simulator::get().clock.isVirtual())
        throw RequestError("the clock of the bench is not virtual: it cannot be stepped");
    try {
        advance(seconds);
    } catch (const std::invalid_argument &error) {
        throw RequestError(error.what());
    }
    return {{"time", now()}};
}

json logFile(RequestReader &request)
{
    bool isFollowed = false;
    request.read("follow", isFollowed);
    request.finish();
    presentBench();
    const std::string file = sessionLogFile();
    if (isFollowed)
        followSessionLog();
    return {{"file", file}, {"logged", Simulator::get().session()->isLogged()}};
}

json expectationList(RequestReader &request)
{
    request.finish();
    presentBench();
    json list = json::array();
    for (const Expectation &expectation : expectations()) {
        list.push_back({{"name", expectation.name},
                        {"expected", expectation.expected},
                        {"found", expectation.found},
                        {"met", expectation.isMet},
                        {"line", expectation.line}});
        if (!expectation.sensor.empty()) {
            list.back()["sensor"] = expectation.sensor;
            list.back()["model"] = expectation.model;
        }
    }
    json answer{{"expectations", std::move(list)}};
    if (const session::BenchSession *const session = Simulator::get().session())
        answer["users"] = session->users();
    return answer;
}

json schema(RequestReader &request)
{
    request.finish();
    return {{"schema", benchSchema()}};
}

json load(RequestReader &request)
{
    std::optional<std::string> file;
    request.read("file", file);
    request.finish();
    if (file)
        loadBenchFile(*file);
    else
        loadBuiltInBench();
    return json::object();
}

json silent(RequestReader &request)
{
    const auto isSilent = request.required<bool>("silent");
    setSilent(onlySensor(request), isSilent);
    return json::object();
}

json injectFault(RequestReader &request)
{
    const Fault fault = readFault(request);
    request.finish();
    // A fault of every call would also hit those that look for the reason.
    if (fault.function.empty() && fault.command.empty() && fault.parameter.empty())
        throw RequestError("a fault needs a \"function\", a \"command\" or a \"parameter\"");
    return {{"fault", inject(fault)}};
}

json faultList(RequestReader &request)
{
    request.finish();
    presentBench();
    json faults = json::array();
    for (const auto &[number, fault] : Simulator::get().faults.list()) {
        faults.push_back(faultMembers(fault));
        faults.back()["fault"] = number;
    }
    return {{"faults", faults}};
}

json clear(RequestReader &request)
{
    std::optional<std::int32_t> number;
    request.read("fault", number);
    request.finish();
    if (number) {
        const auto faults = Simulator::get().faults.list();
        if (std::none_of(faults.begin(), faults.end(), [&](const auto &fault) { return fault.first == *number; }))
            throw RequestError("there is no fault " + std::to_string(*number));
        removeFault(*number);
    } else {
        clearFaults();
        releaseHangs();
    }
    return json::object();
}

json carryOut(const json &request)
{
    if (!request.is_object())
        throw RequestError("the request is no JSON object");
    RequestReader reader(request);
    const auto action = reader.required<std::string>("do");
    const auto sensorAction = [&reader](void (*function)(const std::string &)) {
        function(onlySensor(reader));
        return json::object();
    };
    if (action == "sensors")
        return sensorList(reader);
    if (action == "load")
        return load(reader);
    if (action == "schema")
        return schema(reader);
    if (action == "start")
        return startSession(reader);
    if (action == "stop")
        return stopSession(reader);
    if (action == "sessions")
        return sessionList(reader);
    if (action == "set")
        return set(reader);
    if (action == "step")
        return step(reader);
    if (action == "log")
        return logFile(reader);
    if (action == "plug")
        return sensorAction(plug);
    if (action == "unplug")
        return sensorAction(unplug);
    if (action == "silent")
        return silent(reader);
    if (action == "trigger")
        return sensorAction(trigger);
    if (action == "inject")
        return injectFault(reader);
    if (action == "expectations")
        return expectationList(reader);
    if (action == "faults")
        return faultList(reader);
    if (action == "clear")
        return clear(reader);
    throw RequestError("there is no action \"" + action + '"');
}

/// The answer to a request, never an exception except for exhausted memory.
std::string answerTo(const char *request)
{
    json answer;
    try {
        answer = carryOut(json::parse(request, nullptr, false));
        answer["ok"] = true;
    } catch (const std::bad_alloc &) {
        throw;
    } catch (const std::exception &error) {
        answer = {{"error", error.what()}};
    }
    // Invalid UTF-8 in a text, such as a name in the request, becomes replacement characters.
    return answer.dump(-1, ' ', false, json::error_handler_t::replace);
}

} // namespace

} // namespace sondixsim::capi

extern "C" uint32_t SondixSimControl(const char *request, char *answer, uint32_t size)
{
    try {
        thread_local std::string last;
        if (request != nullptr)
            last = sondixsim::capi::answerTo(request);
        if (answer != nullptr && size > 0) {
            const std::size_t length = std::min<std::size_t>(last.size(), size - 1);
            std::memcpy(answer, last.data(), length);
            answer[length] = '\0';
        }
        return static_cast<uint32_t>(last.size() + 1);
    } catch (...) {
        return 0;
    }
}
