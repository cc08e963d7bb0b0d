// SPDX-License-Identifier: MIT
#include "SondixSimulator/controlcall.h"

#include "model/text.h"
#include "simulator.h"
#include "SondixSimulator/control.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <nlohmann/json.hpp>

namespace sondixsim::capi {

namespace {

using nlohmann::json;

struct RequestError : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/// The members of a request. Each must be read, or finish() reports it.
class RequestReader
{
public:
    explicit RequestReader(const json &request)
        : m_request(request)
    {
    }

    bool has(const char *key) const { return m_request.contains(key); }

    template<typename T>
    void read(const char *key, T &value)
    {
        const auto found = m_request.find(key);
        if (found == m_request.end())
            return;
        m_known.emplace_back(key);
        convert(*found, key, value);
    }
    template<typename T>
    void read(const char *key, std::optional<T> &value)
    {
        if (!has(key))
            return;
        value.emplace();
        read(key, *value);
    }
    template<typename T>
    T required(const char *key)
    {
        if (!has(key))
            throw RequestError(std::string("the request lacks \"") + key + '"');
        T value{};
        read(key, value);
        return value;
    }
    /// Throws if there is a member that was not read.
    void finish() const
    {
        for (const auto &[key, value] : m_request.items()) {
            if (std::find(m_known.begin(), m_known.end(), key) == m_known.end())
                throw RequestError("the request has an unknown member \"" + key + '"');
        }
    }

private:
    [[noreturn]] static void refuse(const char *key, const char *kind)
    {
        throw RequestError(std::string("\"") + key + "\" must be " + kind);
    }
    static void convert(const json &from, const char *key, std::string &to)
    {
        if (!from.is_string())
            refuse(key, "a text");
        to = from.get<std::string>();
    }
    static void convert(const json &from, const char *key, bool &to)
    {
        if (!from.is_boolean())
            refuse(key, "true or false");
        to = from.get<bool>();
    }
    static void convert(const json &from, const char *key, double &to)
    {
        if (!from.is_number() || !std::isfinite(from.get<double>()) || from.get<double>() < 0.0)
            refuse(key, "a number that is not negative");
        to = from.get<double>();
    }
    template<typename Integer>
    static void convert(const json &from, const char *key, Integer &to)
    {
        constexpr auto lowest = static_cast<double>(std::numeric_limits<Integer>::min());
        constexpr auto highest = static_cast<double>(std::numeric_limits<Integer>::max());
        if (!from.is_number_integer() || from.get<double>() < lowest || from.get<double>() > highest)
            refuse(key, "a whole number");
        to = from.get<Integer>();
    }

    const json &m_request;
    std::vector<std::string> m_known;
};

/// The texts of the simulator are windows-1250.
std::string inLibraryText(const std::string &utf8, const char *key)
{
    const auto text = model::toWindows1250(utf8);
    if (!text)
        throw RequestError(std::string("\"") + key + "\" has characters that do not exist in windows-1250");
    return *text;
}

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
    const double now = Simulator::get().clock.now();
    json sensors = json::array();
    for (const auto &sensor : bench->sensors)
        sensors.push_back({{"serialNumber", model::fromWindows1250(sensor->spec().serialNumber)},
                           {"model", sensor->spec().model},
                           {"place", model::fromWindows1250(sensor->spec().place.text())},
                           {"plugged", sensor->isPlugged(now)},
                           {"open", sensor->owner() != 0},
                           {"silent", sensor->isSilent(now)}});
    return {{"bench", model::fromWindows1250(bench->name)}, {"sensors", sensors}};
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
    Fault fault;
    request.read("function", fault.function);
    request.read("command", fault.command);
    request.read("parameter", fault.parameter);
    request.read("sensor", fault.sensor);
    request.read("sensorType", fault.sensorType);
    request.read("handle", fault.handle);
    request.read("from", fault.from);
    request.read("times", fault.times);
    request.read("probability", fault.probability);
    request.read("code", fault.code);
    request.read("text", fault.text);
    request.read("silent", fault.silent);
    request.read("delay", fault.delay);
    request.read("hang", fault.hang);
    request.read("answer", fault.answer);
    request.read("count", fault.count);
    request.finish();
    // A fault of every call would also hit those that look for the reason.
    if (fault.function.empty() && fault.command.empty() && fault.parameter.empty())
        throw RequestError("a fault needs a \"function\", a \"command\" or a \"parameter\"");
    fault.sensor = inLibraryText(fault.sensor, "sensor");
    fault.text = inLibraryText(fault.text, "text");
    if (fault.answer)
        fault.answer = inLibraryText(*fault.answer, "answer");
    return {{"fault", inject(fault)}};
}

json faultMembers(int number, const Fault &fault)
{
    json object{
        {"fault", number}, {"times", fault.times}, {"from", fault.from}, {"probability", fault.probability}};
    const auto addText = [&object](const char *key, const std::string &text) {
        if (!text.empty())
            object[key] = model::fromWindows1250(text);
    };
    addText("function", fault.function);
    addText("command", fault.command);
    addText("parameter", fault.parameter);
    addText("sensor", fault.sensor);
    addText("text", fault.text);
    if (fault.sensorType)
        object["sensorType"] = *fault.sensorType;
    if (fault.handle)
        object["handle"] = *fault.handle;
    if (fault.code != 0)
        object["code"] = fault.code;
    if (fault.delay > 0.0)
        object["delay"] = fault.delay;
    for (const auto &[key, isSet] : {std::pair("silent", fault.silent), std::pair("hang", fault.hang)}) {
        if (isSet)
            object[key] = true;
    }
    if (fault.answer)
        addText("answer", *fault.answer);
    if (fault.count)
        object["count"] = *fault.count;
    return object;
}

json faultList(RequestReader &request)
{
    request.finish();
    presentBench();
    json faults = json::array();
    for (const auto &[number, fault] : Simulator::get().faults.list())
        faults.push_back(faultMembers(number, fault));
    return {{"faults", faults}};
}

json clear(RequestReader &request)
{
    std::optional<std::int32_t> number;
    request.read("fault", number);
    request.finish();
    if (number) {
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
