// SPDX-License-Identifier: MIT
#include "player.h"

#include "encoding.h"
#include "record.h"
#include "system.h"

#include "model/platform.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <mutex>

namespace sondixrec {

namespace {

using nlohmann::json;

constexpr std::int32_t notInRecord = -1001;

enum Lane { Commands, Data, Errors, LaneCount };

Lane laneOf(const std::string &function)
{
    if (function == "DataAvail" || function == "TransferData" || function == "TransferDataTS")
        return Data;
    return function == "GetError" ? Errors : Commands;
}

/// The calls of one recorded instance that have not been made yet.
struct Instance
{
    const Call *creation = nullptr;
    std::array<std::vector<const Call *>, LaneCount> lanes;
    std::array<std::size_t, LaneCount> next{};
    std::string deviation; ///< the text of GetError after a call that is not in the record
};

class Player
{
public:
    explicit Player(const Process &process)
        : m_calls(process.calls)
    {
        std::map<std::uint32_t, std::size_t> open;
        for (const Call &call : m_calls) {
            if (call.function == "CreateSensorInstance") {
                open[static_cast<std::uint32_t>(call.result)] = m_recorded.size();
                m_recorded.emplace_back();
                m_recorded.back().creation = &call;
            } else if (const auto instance = open.find(call.handle); instance != open.end()) {
                m_recorded[instance->second].lanes[laneOf(call.function)].push_back(&call);
            } else if (call.handle == 0 && call.function == "GetError") {
                m_creationErrors.push_back(&call);
            }
        }
    }

    std::uint32_t create(std::int32_t type)
    {
        const std::lock_guard lock(m_mutex);
        for (std::size_t i = 0; i < m_recorded.size(); ++i) {
            Instance &instance = m_recorded[i];
            if (instance.creation == nullptr ||
                instance.creation->integer(instance.creation->arguments, "sensorType") != type)
                continue;
            const auto handle = static_cast<std::uint32_t>(instance.creation->result);
            instance.creation = nullptr;
            if (handle != 0)
                m_open[handle] = i;
            return handle;
        }
        report("CreateSensorInstance", {{"sensorType", type}});
        return 0;
    }

    /// The recorded call that answers this one; null, with the result in \a result, if there is none. \a mustMatch are
    /// the arguments that must be those of the recorded call.
    const Call *take(std::uint32_t handle, const char *function, const json &mustMatch, std::int32_t &result)
    {
        const std::lock_guard lock(m_mutex);
        const auto open = m_open.find(handle);
        result = notInRecord;
        if (open == m_open.end())
            return handle == 0 ? takeCreationError(result) : nullptr;
        Instance &instance = m_recorded[open->second];
        const Lane lane = laneOf(function);
        const std::vector<const Call *> &calls = instance.lanes[lane];
        std::size_t &next = instance.next[lane];
        for (std::size_t i = next; i < calls.size(); ++i) {
            if (calls[i]->function != function || !matches(*calls[i], mustMatch))
                continue;
            next = i + 1;
            instance.deviation.clear();
            result = static_cast<std::int32_t>(calls[i]->result);
            return calls[i];
        }
        if (lane == Data)
            result = 0; // nothing has come
        else if (lane == Commands)
            instance.deviation = report(function, mustMatch);
        return nullptr;
    }

    std::string deviationOf(std::uint32_t handle)
    {
        const std::lock_guard lock(m_mutex);
        const auto open = m_open.find(handle);
        return open != m_open.end() && !m_recorded[open->second].deviation.empty()
                   ? m_recorded[open->second].deviation
                   : "The record has no such call";
    }

private:
    const Call *takeCreationError(std::int32_t &result)
    {
        if (m_nextCreationError == m_creationErrors.size())
            return nullptr;
        const Call *const call = m_creationErrors[m_nextCreationError++];
        result = static_cast<std::int32_t>(call->result);
        return call;
    }

    static bool matches(const Call &call, const json &mustMatch)
    {
        return std::all_of(mustMatch.items().begin(), mustMatch.items().end(), [&](const auto &item) {
            const auto recorded = call.arguments.find(item.key());
            return recorded != call.arguments.end() && *recorded == item.value();
        });
    }

    std::string report(const char *function, const json &arguments)
    {
        std::string text = "The record has no further call " + std::string(function) +
                           arguments.dump(-1, ' ', false, json::error_handler_t::replace);
        if (!m_hasReported)
            std::fprintf(stderr, "sondixqt: the program deviates from its record: %s\n", text.c_str());
        m_hasReported = true;
        return text;
    }

    const std::vector<Call> m_calls;
    std::vector<Instance> m_recorded;
    std::vector<const Call *> m_creationErrors;
    std::size_t m_nextCreationError = 0;
    std::mutex m_mutex;
    std::map<std::uint32_t, std::size_t> m_open;
    bool m_hasReported = false;
};

Player *player = nullptr; // lives until the process ends

json textArgument(const char *text)
{
    if (text == nullptr)
        return nullptr;
    std::string encoded;
    appendBytes(encoded, text);
    return json::parse(encoded);
}

std::int32_t play(std::uint32_t handle, const char *function, const json &arguments = json::object())
{
    std::int32_t result = 0;
    player->take(handle, function, arguments, result);
    return result;
}

json realArgument(double value)
{
    std::string encoded;
    appendDouble(encoded, value);
    return json::parse(encoded);
}

/// Copies a recorded text or binary answer into the buffer of a call.
std::int32_t playBuffer(std::uint32_t handle, const char *function, json arguments, const char *key, void *buffer,
                        std::uint32_t *length)
{
    arguments["buffer"] = buffer != nullptr;
    std::int32_t result = 0;
    const Call *const call = player->take(handle, function, arguments, result);
    if (call == nullptr || length == nullptr)
        return result;
    const std::uint32_t room = *length;
    *length = static_cast<std::uint32_t>(call->integer(call->answers, "length"));
    if (buffer == nullptr || result != 0)
        return result;
    std::string bytes = call->bytes(call->answers, key);
    if (*length > bytes.size())
        bytes += '\0';
    std::memcpy(buffer, bytes.data(), std::min<std::size_t>(bytes.size(), room));
    return result;
}

template<typename Number, typename Get>
std::int32_t playNumber(std::uint32_t handle, const char *function, const char *name, Number *value,
                        const Get &get)
{
    std::int32_t result = 0;
    const Call *const call = player->take(handle, function, {{"name", textArgument(name)}}, result);
    if (call != nullptr && value != nullptr && call->answers.contains("value"))
        *value = get(*call);
    return result;
}

std::int32_t playTransfer(std::uint32_t handle, const char *function, std::int32_t *raw, double *scaled,
                          std::int32_t maxCount, std::int32_t *read, double *timestamp)
{
    std::int32_t result = 0;
    const Call *const call = player->take(handle, function, json::object(), result);
    if (read != nullptr)
        *read = 0;
    if (call == nullptr || read == nullptr)
        return result;
    const json &answers = call->answers;
    *read = std::min(maxCount, static_cast<std::int32_t>(call->integer(answers, "read")));
    const auto copy = [&](const char *key, auto *values, const auto &get) {
        const auto recorded = answers.find(key);
        for (std::int32_t i = 0; values != nullptr && i < *read; ++i) {
            const auto at = static_cast<std::size_t>(i);
            const bool isKnown = recorded != answers.end() && recorded->is_array() && at < recorded->size();
            values[i] = isKnown ? get((*recorded)[at]) : 0;
        }
    };
    copy("raw", raw, [](const json &value) { return value.get<std::int32_t>(); });
    copy("scaled", scaled, realOf);
    if (timestamp != nullptr && answers.contains("timestamp"))
        *timestamp = call->real(answers, "timestamp");
    return result;
}

/// Sets the functions that a player has.
void setFunctions(Functions &functions)
{
    functions.CreateSensorInstance = [](std::int32_t type) { return player->create(type); };
    functions.ReleaseSensorInstance = [](std::uint32_t handle) { return play(handle, "ReleaseSensorInstance"); };
    functions.SetParameterInt = [](std::uint32_t handle, const char *name, std::int32_t value) {
        return play(handle, "SetParameterInt", {{"name", textArgument(name)}, {"value", value}});
    };
    functions.SetParameterDouble = [](std::uint32_t handle, const char *name, double value) {
        return play(handle, "SetParameterDouble", {{"name", textArgument(name)}, {"value", realArgument(value)}});
    };
    functions.SetParameterString = [](std::uint32_t handle, const char *name, const char *value) {
        return play(handle, "SetParameterString", {{"name", textArgument(name)}, {"value", textArgument(value)}});
    };
    functions.SetParameterBinary = [](std::uint32_t handle, const char *name, const void *data,
                                      std::uint32_t length) {
        json arguments{{"name", textArgument(name)}, {"length", length}};
        if (data != nullptr) {
            std::string encoded;
            appendBase64(encoded, {static_cast<const char *>(data), length});
            arguments["data"] = json::parse(encoded);
        }
        return play(handle, "SetParameterBinary", arguments);
    };
    functions.GetParameterInt = [](std::uint32_t handle, const char *name, std::int32_t *value) {
        return playNumber(handle, "GetParameterInt", name, value, [](const Call &call) {
            return static_cast<std::int32_t>(call.integer(call.answers, "value"));
        });
    };
    functions.GetParameterDouble = [](std::uint32_t handle, const char *name, double *value) {
        return playNumber(handle, "GetParameterDouble", name, value,
                          [](const Call &call) { return call.real(call.answers, "value"); });
    };
    functions.GetParameterString = [](std::uint32_t handle, const char *name, char *buffer,
                                      std::uint32_t *length) {
        return playBuffer(handle, "GetParameterString", {{"name", textArgument(name)}}, "text", buffer, length);
    };
    functions.GetParameterBinary = [](std::uint32_t handle, const char *name, void *buffer,
                                      std::uint32_t *length) {
        return playBuffer(handle, "GetParameterBinary", {{"name", textArgument(name)}}, "data", buffer, length);
    };
    functions.GetParameters = [](std::uint32_t handle, char *buffer, std::uint32_t *length) {
        return playBuffer(handle, "GetParameters", json::object(), "text", buffer, length);
    };
    functions.ClearAllParameters = [](std::uint32_t handle) { return play(handle, "ClearAllParameters"); };
    functions.OpenSensor = [](std::uint32_t handle) { return play(handle, "OpenSensor"); };
    functions.CloseSensor = [](std::uint32_t handle) { return play(handle, "CloseSensor"); };
    functions.SensorCommand = [](std::uint32_t handle) { return play(handle, "SensorCommand"); };
    functions.DataAvail = [](std::uint32_t handle, std::int32_t *available) {
        std::int32_t result = 0;
        const Call *const call = player->take(handle, "DataAvail", json::object(), result);
        if (available != nullptr)
            *available =
                call != nullptr ? static_cast<std::int32_t>(call->integer(call->answers, "available")) : 0;
        return result;
    };
    functions.TransferData = [](std::uint32_t handle, std::int32_t *raw, double *scaled, std::int32_t maxCount,
                                std::int32_t *read) {
        return playTransfer(handle, "TransferData", raw, scaled, maxCount, read, nullptr);
    };
    functions.TransferDataTS = [](std::uint32_t handle, std::int32_t *raw, double *scaled, std::int32_t maxCount,
                                  std::int32_t *read, double *timestamp) {
        return playTransfer(handle, "TransferDataTS", raw, scaled, maxCount, read, timestamp);
    };
    functions.GetError = [](std::uint32_t handle, char *text, std::uint32_t size) {
        std::int32_t result = 0;
        const Call *const call = player->take(handle, "GetError", json::object(), result);
        if (text == nullptr || size == 0)
            return result;
        const std::string recorded =
            call != nullptr ? call->bytes(call->answers, "text") : player->deviationOf(handle);
        const std::size_t length = std::min<std::size_t>(recorded.size(), size - 1);
        std::memcpy(text, recorded.data(), length);
        text[length] = '\0';
        return result;
    };
    // Names of log files and the texts in them are different in every run.
    functions.EnableLogging = [](std::uint32_t handle, std::int32_t enable, std::int32_t, std::int32_t,
                                 const char *, std::int32_t, std::int32_t, std::int32_t) {
        return play(handle, "EnableLogging", {{"enable", enable}});
    };
    functions.LogToFile = [](std::uint32_t handle, std::int32_t level, const char *, const char *) {
        return play(handle, "LogToFile", {{"level", level}});
    };
}

std::string baseName(const std::string &path)
{
    return path.substr(path.find_last_of("/\\") + 1);
}

} // namespace

bool playRecord(const std::string &file, Functions &functions, std::string &problem)
{
    std::ifstream stream(sondixsim::model::pathFromUtf8(file), std::ios::binary);
    if (!stream) {
        problem = "the record " + file + " cannot be read";
        return false;
    }
    const std::string text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    try {
        const Record record = readRecord(text, file);
        const std::string own = baseName(programPath());
        const auto same = std::find_if(record.processes.begin(), record.processes.end(),
                                       [&](const Process &process) { return baseName(process.program) == own; });
        player = new Player(same != record.processes.end() ? *same : record.processes.front());
    } catch (const RecordError &error) {
        problem = error.what();
        return false;
    }
    setFunctions(functions);
    return true;
}

} // namespace sondixrec
