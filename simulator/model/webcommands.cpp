// SPDX-License-Identifier: MIT
#include "command.h"
#include "genericcommand.h"
#include "sensor.h"

#include <algorithm>

// The commands of sensors with a web interface: its pages, and the sensor's own command language.

namespace sondixsim::model::commands {

namespace {

constexpr const char *lineEnd = "\r\n";

double secondsPerByte(const SensorParts &sensor)
{
    return sensor.line.secondsPerByte(sensor.sampler.usesSerialLine());
}

/// Whether a text setting may have this value: it must be the same in every code page and fit a line.
bool isPlainText(const std::string &text)
{
    constexpr std::size_t maxLength = 64;
    return text.size() <= maxLength &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

/// A setting in the form in which it can be sent back to set it.
std::string settingLine(const std::string &name, const Value &value)
{
    const std::string text = toText(value);
    return name + (text.empty() || text.front() == '=' ? '=' : ' ') + text;
}

/// Finds the setting that a line names. \a value becomes the one to be set, or the present one if the line has none.
Outcome checkLine(const SensorParts &sensor, const GenericLine &line, std::string &key, Value &value)
{
    const ParameterList &settings = sensor.settings.all();
    const auto isNamed = [&line](const Parameter &setting) { return genericName(setting.name) == line.name; };
    const auto setting = std::find_if(settings.begin(), settings.end(), isNamed);
    if (setting == settings.end()) {
        return failure(UnknownParameter, sensor.spec.model + " has no setting or command \"" + line.name + '"');
    }
    key = setting->name;
    value = setting->value;
    if (!line.value)
        return {};
    if (std::holds_alternative<std::string>(setting->value)) {
        if (!isPlainText(*line.value))
            return failure(OutOfRange, '"' + line.name + "\" must be up to 64 printable ASCII characters");
        value = *line.value;
        return {};
    }
    const auto number = convertedLike(*line.value, Value(0.0));
    if (!number)
        return failure(WrongType, '"' + line.name + "\" needs a number, not \"" + *line.value + '"');
    Outcome outcome = sensor.settings.check(key, line.name, *number, value);
    if (outcome.ok() && toDouble(value) != toDouble(*number))
        return failure(WrongType, '"' + line.name + "\" needs a whole number");
    return outcome;
}

Outcome changeBaudrate(SensorParts &sensor, const std::string &text, double now)
{
    const auto wanted = convertedLike(text, Value(0.0));
    const std::vector<std::int32_t> &offered = sensor.spec.web.baudrates;
    const auto isWanted = [&wanted](std::int32_t rate) { return wanted && toDouble(*wanted) == rate; };
    const auto found = std::find_if(offered.begin(), offered.end(), isWanted);
    if (found == offered.end()) {
        std::string all;
        for (const std::int32_t rate : offered)
            all += (all.empty() ? "" : ", ") + std::to_string(rate);
        return failure(OutOfRange, "\"BAUDRATE\" must be one of " + all);
    }
    sensor.changeBaudrate(*found, now);
    return {};
}

std::string exportedSettings(const Settings &settings)
{
    std::string text;
    for (const Parameter &setting : settings.all())
        text += settingLine(genericName(setting.name), setting.value) + lineEnd;
    return text;
}

Outcome runLine(SensorParts &sensor, const GenericLine &line, double now, std::string &answer)
{
    if (line.name == "BAUDRATE" && sensor.line.baudrate() != 0) {
        Outcome outcome = line.value ? changeBaudrate(sensor, *line.value, now) : Outcome();
        answer = line.name + ' ' + std::to_string(sensor.line.baudrate());
        return outcome;
    }
    if (line.name == "EXPORT" && !line.value) {
        answer = exportedSettings(sensor.settings);
        return {};
    }
    if (line.name == "SETDEFAULT" && !line.value) {
        sensor.change(sensor.settings.defaults(), now);
        answer = "All settings have their default values";
        return {};
    }
    std::string key;
    Value value;
    Outcome outcome = checkLine(sensor, line, key, value);
    if (!outcome.ok())
        return outcome;
    if (line.value) {
        ParameterList changes;
        changes.set(key, value);
        sensor.change(changes, now);
    }
    answer = settingLine(line.name, value);
    return {};
}

/// Several lines set all their settings or, after an error in one of them, none.
Outcome importLines(SensorParts &sensor, const std::vector<GenericLine> &lines, double now, std::string &answer)
{
    ParameterList changes;
    for (const GenericLine &line : lines) {
        std::string key;
        Value value;
        Outcome outcome = line.value ? checkLine(sensor, line, key, value)
                                     : failure(ParameterMissing, '"' + line.name + "\" has no value");
        if (!outcome.ok()) {
            outcome.text = "Line " + std::to_string(line.number) + ": " + outcome.text;
            return outcome;
        }
        changes.set(key, std::move(value));
    }
    sensor.change(changes, now);
    answer = std::to_string(lines.size()) + " settings imported";
    return {};
}

} // namespace

Outcome page(SensorParts &sensor, const CommandCall &call)
{
    const Value *const path = call.staged.find("SP_HTTPPath");
    const Value *const maxLength = call.staged.find("SP_HTTPMaxLength");
    const Value *const tag = call.staged.find("SP_HTTPeTag");
    if (path == nullptr || maxLength == nullptr)
        return failure(ParameterMissing, "\"Get_HTTP\" needs SP_HTTPPath and SP_HTTPMaxLength");
    const std::int32_t length = toInt(*maxLength).value_or(-1);
    if (length < 0)
        return failure(OutOfRange, "\"SP_HTTPMaxLength\" must be 0 or more");
    const HttpRequest request{barePath(toText(*path)), tag != nullptr ? toText(*tag) : std::string(),
                              static_cast<std::size_t>(length)};
    const HttpAnswer answer = sensor.pages.answer(request, call.now);
    call.answers.set("SA_HTTPHeader", answer.header);
    const auto *const body = reinterpret_cast<const unsigned char *>(answer.body.data());
    call.answers.set("SA_HTTPBody", Bytes(body, body + answer.body.size()));
    const std::size_t bytes = request.size() + answer.header.size() + answer.body.size();
    const double seconds = static_cast<double>(bytes) * secondsPerByte(sensor);
    sensor.line.addUse(seconds);
    return {Success, {}, seconds};
}

Outcome generic(SensorParts &sensor, const CommandCall &call)
{
    const Value *const text = call.staged.find("SP_CmdStr");
    if (text == nullptr)
        return failure(ParameterMissing, "\"Cmd_Generic\" needs SP_CmdStr");
    const std::string command = toText(*text);
    const std::vector<GenericLine> lines = genericLines(command);
    if (lines.empty())
        return failure(ParameterMissing, "The generic command is empty");
    const double perByte = secondsPerByte(sensor); // the answer to a change of the baud rate comes at the old one
    std::string answer;
    Outcome outcome = lines.size() == 1 ? runLine(sensor, lines.front(), call.now, answer)
                                        : importLines(sensor, lines, call.now, answer);
    const std::size_t bytes = command.size() + (outcome.ok() ? answer.size() : outcome.text.size());
    outcome.duration = perByte * static_cast<double>(bytes);
    sensor.line.addUse(outcome.duration);
    if (!outcome.ok())
        return outcome;
    call.answers.set("SA_CompleteAnswer", answer);
    const Value *const initialise = call.staged.find("CP_InitAfterSensorCommand");
    if (initialise != nullptr && toInt(*initialise).value_or(0) != 0)
        sensor.sampler.discard(call.now);
    return outcome;
}

} // namespace sondixsim::model::commands
