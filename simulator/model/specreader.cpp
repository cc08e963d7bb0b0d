// SPDX-License-Identifier: MIT
#include "specreader.h"

#include "modereader.h"
#include "webreader.h"

#include <algorithm>
#include <charconv>

namespace sondixsim::model {

namespace {

bool startsWith(const std::string &text, const char *head)
{
    return text.rfind(head, 0) == 0;
}

ParameterList readParameters(const Node &node, const std::string &what)
{
    ParameterList parameters;
    for (const Member &member : readObject(node, what))
        parameters.set(member.key, readValue(member.value, '"' + member.key + '"'));
    return parameters;
}

void readSettings(const Node &node, SensorSpec &spec)
{
    for (const Member &group : readObject(node, "\"settings\"")) {
        std::vector<std::string> &keys = spec.groups[group.key];
        if (group.value.kind == Node::Kind::Null) { // removes a group of the extended model
            for (const std::string &key : keys)
                spec.settings.remove(key);
            spec.groups.erase(group.key);
            continue;
        }
        for (const Member &setting : readObject(group.value, "the group \"" + group.key + '"')) {
            if (!startsWith(setting.key, "SA_"))
                throw ParseError(setting.line, "the setting \"" + setting.key + "\" must begin with SA_");
            if (std::find(keys.begin(), keys.end(), setting.key) == keys.end())
                keys.push_back(setting.key);
            Value value = readValue(setting.value, '"' + setting.key + '"');
            if (const Value *before = spec.settings.find(setting.key)) {
                const auto converted = convertedLike(value, *before);
                if (!converted)
                    throw ParseError(setting.value.line, "\"" + setting.key + "\" must be a number");
                value = *converted;
            }
            spec.settings.set(setting.key, value);
        }
    }
}

void readErrorTexts(const Node &node, SensorSpec &spec)
{
    for (const Member &member : readObject(node, "\"errorTexts\"")) {
        std::int32_t key = 0;
        const char *const end = member.key.data() + member.key.size();
        if (std::from_chars(member.key.data(), end, key).ptr != end)
            throw ParseError(member.line, "\"" + member.key + "\" is not a whole number");
        spec.errorTexts[key] = readText(member.value, "an error text");
    }
}

/// Error values without a text get their number as text.
void nameErrorValues(const std::vector<Signal> &signals, std::map<std::int32_t, std::string> &texts)
{
    for (const Signal &signal : signals) {
        for (const ErrorValues &errors : signal.errors)
            texts.emplace(errors.key, "Error " + std::to_string(errors.key));
    }
}

void readTracking(const Node &node, SensorSpec &spec)
{
    ObjectReader reader(node, "\"tracking\"");
    spec.autostart = readPlainText(reader.required("autostart"), "\"autostart\"");
    if (const Node *stop = reader.optional("stop"))
        spec.stopTracking = readPlainText(*stop, "\"stop\"");
    spec.tracking.clear();
    for (const Node &element : readArray(reader.required("commands"), "\"commands\"")) {
        ObjectReader commandReader(element, "a tracking command");
        TrackingCommand command;
        command.command = readPlainText(commandReader.required("command"), "\"command\"");
        command.mode = readInt(commandReader.required("mode"), "\"mode\"", 0);
        command.rate = readFrameRate(commandReader.required("rate"));
        commandReader.finish();
        spec.tracking.push_back(std::move(command));
    }
    reader.finish();
}

} // namespace

void readCommonKeys(ObjectReader &reader, SensorSpec &spec, const std::string &folder)
{
    const auto text = [&reader](const char *key, std::string &target) {
        if (const Node *value = reader.optional(key))
            target = readText(*value, '"' + std::string(key) + '"');
    };
    text("name", spec.name);
    text("controllerName", spec.controllerName);
    text("articleNumber", spec.articleNumber);
    text("firmware", spec.firmware);
    if (const Node *frames = reader.optional("ring"))
        spec.ringFrames = readInt(*frames, "\"ring\"", 1, 10000000);
    if (const Node *standing = reader.optional("standing"))
        spec.standing = readInt(*standing, "\"standing\"", 0, 10000000);
    if (const Node *info = reader.optional("info"))
        spec.info.add(readParameters(*info, "\"info\""));
    if (const Node *settings = reader.optional("settings"))
        readSettings(*settings, spec);
    if (const Node *limits = reader.optional("limits")) {
        for (const Member &member : readObject(*limits, "\"limits\""))
            spec.limits[member.key] = readRange(member.value, '"' + member.key + '"');
    }
    if (const Node *answers = reader.optional("answers")) {
        for (const Member &member : readObject(*answers, "\"answers\""))
            spec.answers[member.key] = readParameters(member.value, "the answer of \"" + member.key + '"');
    }
    if (const Node *signals = reader.optional("signals"))
        spec.signals = readSignals(*signals, folder);
    if (const Node *errorTexts = reader.optional("errorTexts"))
        readErrorTexts(*errorTexts, spec);
    if (const Node *rule = reader.optional("rateRule"))
        spec.rate = readFrameRate(*rule);
    if (const Node *tracking = reader.optional("tracking"))
        readTracking(*tracking, spec);
    readModeKeys(reader, spec, folder);
    readWebKeys(reader, spec, folder);
    for (const MeasuringMode &mode : spec.modes)
        nameErrorValues(mode.signals, spec.errorTexts);
    nameErrorValues(spec.signals, spec.errorTexts);
}

SpecFault readFault(const Node &node)
{
    ObjectReader reader(node, "a fault");
    SpecFault fault;
    const auto text = [&reader](const char *key, std::string &target) {
        if (const Node *value = reader.optional(key))
            target = readPlainText(*value, '"' + std::string(key) + '"');
    };
    text("function", fault.function);
    text("command", fault.command);
    text("parameter", fault.parameter);
    if (const Node *words = reader.optional("text"))
        fault.text = readText(*words, "\"text\"");
    if (const Node *from = reader.optional("from"))
        fault.from = readInt(*from, "\"from\"", 1);
    if (const Node *times = reader.optional("times"))
        fault.times = readInt(*times, "\"times\"", 1);
    if (const Node *probability = reader.optional("probability"))
        fault.probability = readNumber(*probability, "\"probability\"", 0.0, 1.0);
    if (const Node *code = reader.optional("code"))
        fault.code = readInt(*code, "\"code\"");
    if (const Node *delay = reader.optional("delay"))
        fault.delay = readNumber(*delay, "\"delay\"", 0.0, 3600.0);
    reader.finish();
    if (fault.function.empty() && fault.command.empty())
        throw ParseError(node.line, "a fault needs a \"function\" or a \"command\"");
    if (fault.code == 0 && fault.delay == 0.0)
        throw ParseError(node.line, "a fault needs a \"code\" other than 0 or a \"delay\"");
    return fault;
}

} // namespace sondixsim::model
