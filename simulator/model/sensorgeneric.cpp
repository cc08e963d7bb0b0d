// SPDX-License-Identifier: MIT
#include "sensor.h"

#include <algorithm>

namespace sondixsim::model {

namespace {

constexpr const char *lineEnd = "\r\n";

/// What a text setting may hold, so that it comes through every code page and fits a line.
bool isPlainText(const std::string &text)
{
    constexpr std::size_t longest = 64;
    return text.size() <= longest &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

/// A line that sets what it tells.
std::string settingLine(const std::string &name, const Value &value)
{
    const std::string text = toText(value);
    return name + (text.empty() || text.front() == '=' ? '=' : ' ') + text;
}

} // namespace

Outcome Sensor::generic(const ParameterList &staged, double now, ParameterList &answers)
{
    const Value *const text = staged.find("SP_CmdStr");
    if (text == nullptr)
        return failure(ParameterMissing, "\"Cmd_Generic\" needs SP_CmdStr");
    const std::string command = toText(*text);
    const std::vector<GenericLine> lines = genericLines(command);
    if (lines.empty())
        return failure(ParameterMissing, "The generic command is empty");
    const double perByte = secondsPerByte(); // the answer to a change of the rate still comes at the old one
    std::string answer;
    Outcome outcome = runGeneric(lines, now, answer);
    const std::size_t bytes = command.size() + (outcome.ok() ? answer.size() : outcome.text.size());
    outcome.takes = perByte * static_cast<double>(bytes);
    m_lineTime += outcome.takes;
    if (!outcome.ok())
        return outcome;
    answers.set("SA_CompleteAnswer", answer);
    const Value *const initialise = staged.find("CP_InitAfterSensorCommand");
    if (initialise != nullptr && toInt(*initialise).value_or(0) != 0) {
        produce(now);
        m_ring.clear();
    }
    return outcome;
}

Outcome Sensor::runGeneric(const std::vector<GenericLine> &lines, double now, std::string &answer)
{
    if (lines.size() == 1)
        return runGenericLine(lines.front(), now, answer);
    answer = std::to_string(lines.size()) + " settings imported";
    return importSettings(lines, now);
}

Outcome Sensor::runGenericLine(const GenericLine &line, double now, std::string &answer)
{
    if (line.name == "BAUDRATE" && m_baudrate != 0) {
        Outcome outcome = line.value ? changeBaudrate(*line.value, now) : Outcome();
        answer = line.name + ' ' + std::to_string(m_baudrate);
        return outcome;
    }
    if (line.name == "EXPORT" && !line.value) {
        answer = exportedSettings();
        return {};
    }
    if (line.name == "SETDEFAULT" && !line.value) {
        apply(m_spec.settings, now);
        answer = "All settings have their default values";
        return {};
    }
    std::string key;
    Value value;
    Outcome outcome = checkGeneric(line, key, value);
    if (!outcome.ok())
        return outcome;
    if (line.value) {
        ParameterList changes;
        changes.set(key, value);
        apply(changes, now);
    }
    answer = settingLine(line.name, value);
    return {};
}

/// What the line sets, or what it asks for.
Outcome Sensor::checkGeneric(const GenericLine &line, std::string &key, Value &value) const
{
    const auto isNamed = [&line](const Parameter &setting) { return genericName(setting.name) == line.name; };
    const auto setting = std::find_if(m_settings.begin(), m_settings.end(), isNamed);
    if (setting == m_settings.end())
        return failure(UnknownParameter, m_spec.model + " has no setting or command \"" + line.name + '"');
    key = setting->name;
    value = setting->value;
    if (!line.value)
        return {};
    if (std::holds_alternative<std::string>(setting->value)) {
        if (!isPlainText(*line.value))
            return failure(OutOfRange, '"' + line.name + "\" takes up to 64 letters, digits and signs of ASCII");
        value = *line.value;
        return {};
    }
    const auto number = convertedLike(*line.value, Value(0.0));
    if (!number)
        return failure(WrongType, '"' + line.name + "\" needs a number, \"" + *line.value + "\" is none");
    Outcome outcome = checkValue(key, line.name, *number, value);
    if (outcome.ok() && toDouble(value) != toDouble(*number))
        return failure(WrongType, '"' + line.name + "\" needs a whole number");
    return outcome;
}

Outcome Sensor::importSettings(const std::vector<GenericLine> &lines, double now)
{
    const auto inLine = [](const GenericLine &line, Outcome outcome) {
        outcome.text = "Line " + std::to_string(line.number) + ": " + outcome.text;
        return outcome;
    };
    ParameterList changes;
    for (const GenericLine &line : lines) {
        std::string key;
        Value value;
        if (!line.value)
            return inLine(line, failure(ParameterMissing, '"' + line.name + "\" has no value"));
        Outcome outcome = checkGeneric(line, key, value);
        if (!outcome.ok())
            return inLine(line, outcome);
        changes.set(key, std::move(value));
    }
    apply(changes, now);
    return {};
}

Outcome Sensor::changeBaudrate(const std::string &text, double now)
{
    const auto rate = convertedLike(text, Value(0.0));
    const std::vector<std::int32_t> &allowed = m_spec.web.baudrates;
    const auto isIt = [&rate](std::int32_t one) { return rate && toDouble(*rate) == one; };
    const auto found = std::find_if(allowed.begin(), allowed.end(), isIt);
    if (found == allowed.end()) {
        std::string all;
        for (const std::int32_t one : allowed)
            all += (all.empty() ? "" : ", ") + std::to_string(one);
        return failure(OutOfRange, "\"BAUDRATE\" must be one of " + all);
    }
    produce(now);
    m_baudrate.store(*found, std::memory_order_release);
    restart(now);
    return {};
}

std::string Sensor::exportedSettings() const
{
    std::string text;
    for (const Parameter &setting : m_settings)
        text += settingLine(genericName(setting.name), setting.value) + lineEnd;
    return text;
}

} // namespace sondixsim::model
