// SPDX-License-Identifier: MIT
#include "record.h"

#include "encoding.h"

#include "model/text.h"

#include <algorithm>
#include <limits>
#include <map>
#include <optional>

namespace sondixrec {

using nlohmann::json;
using std::string_view;

namespace {

enum class Kind { Int32, UInt32, Real, Bytes, Flag, Ints, Reals };

struct Member
{
    const char *key;
    Kind kind;
};

struct Function
{
    std::vector<Member> arguments;
    std::vector<Member> answers;
};

/// The arguments, except the handle, and the answers of each function.
const std::map<string_view, Function> &functions()
{
    const Member name{"name", Kind::Bytes};
    const Member buffer{"buffer", Kind::Flag};
    const Member length{"length", Kind::UInt32};
    const std::vector<Member> transfer = {{"raw", Kind::Flag}, {"scaled", Kind::Flag}, {"maxCount", Kind::Int32}};
    const std::vector<Member> values = {
        {"read", Kind::Int32}, {"raw", Kind::Ints}, {"scaled", Kind::Reals}, {"timestamp", Kind::Real}};
    static const std::map<string_view, Function> table = {
        {"CreateSensorInstance", {{{"sensorType", Kind::Int32}}, {}}},
        {"ReleaseSensorInstance", {}},
        {"SetParameterInt", {{name, {"value", Kind::Int32}}, {}}},
        {"SetParameterDouble", {{name, {"value", Kind::Real}}, {}}},
        {"SetParameterString", {{name, {"value", Kind::Bytes}}, {}}},
        {"SetParameterBinary", {{name, {"data", Kind::Bytes}, length}, {}}},
        {"GetParameterInt", {{name}, {{"value", Kind::Int32}}}},
        {"GetParameterDouble", {{name}, {{"value", Kind::Real}}}},
        {"GetParameterString", {{name, buffer, length}, {length, {"text", Kind::Bytes}}}},
        {"GetParameterBinary", {{name, buffer, length}, {length, {"data", Kind::Bytes}}}},
        {"GetParameters", {{buffer, length}, {length, {"text", Kind::Bytes}}}},
        {"ClearAllParameters", {}},
        {"OpenSensor", {}},
        {"CloseSensor", {}},
        {"SensorCommand", {}},
        {"DataAvail", {{}, {{"available", Kind::Int32}}}},
        {"TransferData", {transfer, values}},
        {"TransferDataTS", {transfer, values}},
        {"GetError", {{{"size", Kind::UInt32}}, {{"text", Kind::Bytes}}}},
        {"EnableLogging", {}},
        {"LogToFile", {}},
    };
    return table;
}

template<typename Integer>
bool isInteger(const json &value)
{
    if (value.is_number_unsigned())
        return value.get<std::uint64_t>() <= static_cast<std::uint64_t>(std::numeric_limits<Integer>::max());
    return value.is_number_integer() &&
           value.get<std::int64_t>() >= static_cast<std::int64_t>(std::numeric_limits<Integer>::min());
}

bool isReal(const json &value)
{
    return value.is_number() || (value.is_string() && doubleOfText(value.get_ref<const std::string &>()));
}

std::optional<std::string> bytesOf(const json &value)
{
    if (value.is_string())
        return sondixsim::model::toWindows1250(value.get_ref<const std::string &>());
    const auto base64 = value.is_object() ? value.find("base64") : value.end();
    if (!value.is_object() || base64 == value.end() || !base64->is_string())
        return std::nullopt;
    return bytesOfBase64(base64->get_ref<const std::string &>());
}

bool is(const json &value, Kind kind)
{
    switch (kind) {
    case Kind::Int32:
        return isInteger<std::int32_t>(value);
    case Kind::UInt32:
        return isInteger<std::uint32_t>(value);
    case Kind::Real:
        return isReal(value);
    case Kind::Bytes:
        return bytesOf(value).has_value();
    case Kind::Flag:
        return value.is_boolean();
    case Kind::Ints:
        return value.is_array() && std::all_of(value.begin(), value.end(), isInteger<std::int32_t>);
    case Kind::Reals:
        return value.is_array() && std::all_of(value.begin(), value.end(), isReal);
    }
    return false;
}

/// Reads the lines of a record.
class Reader
{
public:
    explicit Reader(const std::string &name)
        : m_name(name)
    {
    }

    Record read(string_view text)
    {
        while (!text.empty()) {
            const std::size_t end = text.find('\n');
            if (end == string_view::npos) {
                m_record.isCut = true;
                break;
            }
            ++m_line;
            readLine(text.substr(0, end));
            text.remove_prefix(end + 1);
        }
        if (m_record.processes.empty())
            fail(m_record.isCut ? "the record ends within its first line" : "this is no record: it is empty");
        for (Process &process : m_record.processes)
            std::stable_sort(process.calls.begin(), process.calls.end(),
                             [](const Call &a, const Call &b) { return a.number < b.number; });
        return std::move(m_record);
    }

private:
    [[noreturn]] void fail(const std::string &reason) const
    {
        throw RecordError(m_name + ':' + std::to_string(std::max(1, m_line)) + ": " + reason);
    }

    void readLine(string_view text)
    {
        const json line = json::parse(text.begin(), text.end(), nullptr, false);
        if (!line.is_object())
            fail(m_record.processes.empty() ? "this is no record: the line is no JSON object"
                                            : "the line is no JSON object");
        if (line.contains("format"))
            readHead(line);
        else if (m_record.processes.empty())
            fail("this is no record: it does not begin with a head");
        else
            readCall(line);
    }

    void readHead(const json &line)
    {
        if (line["format"] != "sondix calls")
            fail("this is no record: its \"format\" is not \"sondix calls\"");
        if (!line.contains("version") || line["version"] != 1)
            fail("a record of this version cannot be read, only version 1");
        Process process;
        process.number = number<std::uint32_t>(line, "process");
        process.date = text(line, "date");
        process.program = text(line, "program");
        if (const auto redacted = line.find("redacted"); redacted != line.end())
            process.isRedacted = *redacted == true;
        m_record.processes.push_back(std::move(process));
    }

    void readCall(const json &line)
    {
        const auto owner = number<std::uint32_t>(line, "process");
        // The number of a process that has ended is used again.
        const auto process = std::find_if(m_record.processes.rbegin(), m_record.processes.rend(),
                                          [&](const Process &candidate) { return candidate.number == owner; });
        if (process == m_record.processes.rend())
            fail("there is no head for process " + std::to_string(owner));
        Call call;
        call.number = number<std::uint64_t>(line, "call");
        call.thread = number<unsigned>(line, "thread");
        call.time = number<std::int64_t>(line, "time");
        call.took = number<std::int64_t>(line, "took");
        call.function = text(line, "function");
        const auto function = functions().find(call.function);
        if (function == functions().end())
            fail("there is no function \"" + call.function + '"');
        const bool creates = call.function == "CreateSensorInstance";
        call.handle = creates ? 0 : number<std::uint32_t>(line, "handle");
        call.result = creates ? static_cast<long long>(number<std::uint32_t>(line, "result"))
                              : number<std::int32_t>(line, "result");
        call.arguments = members(line, "arguments", function->second.arguments);
        call.answers = members(line, "answers", function->second.answers);
        process->calls.push_back(std::move(call));
    }

    json members(const json &line, const char *section, const std::vector<Member> &known) const
    {
        const auto found = line.find(section);
        if (found == line.end())
            return json::object();
        if (!found->is_object())
            fail('"' + std::string(section) + "\" is no object");
        for (const Member &member : known) {
            const auto value = found->find(member.key);
            if (value != found->end() && !value->is_null() && !is(*value, member.kind))
                fail("\"" + std::string(member.key) + "\" has a wrong value");
        }
        return *found;
    }

    template<typename Integer>
    Integer number(const json &line, const char *key) const
    {
        const auto found = line.find(key);
        if (found == line.end() || !isInteger<Integer>(*found))
            fail('"' + std::string(key) + "\" must be a whole number");
        return found->get<Integer>();
    }

    std::string text(const json &line, const char *key) const
    {
        const auto found = line.find(key);
        if (found == line.end() || !found->is_string())
            fail('"' + std::string(key) + "\" must be a text");
        return found->get<std::string>();
    }

    const std::string &m_name;
    int m_line = 0;
    Record m_record;
};

/// A value that is there and not null; null if it is not.
const json *valueOf(const json &values, const char *key)
{
    const auto found = values.find(key);
    return found == values.end() || found->is_null() ? nullptr : &*found;
}

} // namespace

long long Call::integer(const json &values, const char *key, long long fallback) const
{
    const json *const value = valueOf(values, key);
    return value != nullptr && value->is_number() ? value->get<long long>() : fallback;
}

double Call::real(const json &values, const char *key) const
{
    const json *const value = valueOf(values, key);
    return value != nullptr ? realOf(*value) : 0.0;
}

std::string Call::bytes(const json &values, const char *key) const
{
    const json *const value = valueOf(values, key);
    return value != nullptr ? bytesOf(*value).value_or("") : "";
}

double realOf(const json &value)
{
    if (value.is_string())
        return doubleOfText(value.get_ref<const std::string &>()).value_or(0.0);
    return value.is_number() ? value.get<double>() : 0.0;
}

Record readRecord(string_view text, const std::string &name)
{
    return Reader(name).read(text);
}

} // namespace sondixrec
