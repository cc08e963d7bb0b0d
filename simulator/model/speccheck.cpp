// SPDX-License-Identifier: MIT
#include "speccheck.h"

#include "SondixSimulator/control.h"

#include <algorithm>
#include <initializer_list>
#include <iterator>
#include <set>

namespace sondixsim::model {

namespace {

const Node *memberOf(const Node &object, const char *key)
{
    for (const Member &member : object.members) {
        if (member.key == key)
            return &member.value;
    }
    return nullptr;
}

void needSetting(const SensorSpec &spec, const std::string &name, int line)
{
    if (spec.settings.find(name) == nullptr)
        throw ParseError(line, spec.model + " has no setting \"" + name + '"');
}

/// The settings that the texts of these keys name.
void needSettings(const SensorSpec &spec, const Node &object, std::initializer_list<const char *> keys)
{
    for (const char *const key : keys) {
        if (const Node *name = memberOf(object, key))
            needSetting(spec, name->text, name->line);
    }
}

/// Throws when two of the elements have the same value of \a key.
void checkUnique(const std::vector<Node> &elements, const char *key)
{
    std::set<std::pair<std::string, std::int64_t>> seen;
    for (const Node &element : elements) {
        const Node *const value = memberOf(element, key);
        if (value != nullptr && !seen.emplace(value->text, value->integer).second) {
            const bool isText = value->kind == Node::Kind::Text;
            throw ParseError(value->line, '"' + std::string(key) + "\" " +
                                              (isText ? '"' + value->text + '"' : std::to_string(value->integer)) +
                                              " is given twice");
        }
    }
}

void checkRate(const Node &rate, const SensorSpec &spec)
{
    needSettings(spec, rate, {"parameter", "divisor", "averageType", "averageNumber"});
}

void checkTracking(const Node &tracking, const SensorSpec &spec)
{
    needSettings(spec, tracking, {"autostart"});
    const Node *const commands = memberOf(tracking, "commands");
    for (const char *const key : {"command", "mode"})
        checkUnique(commands->elements, key);
    for (const Node &command : commands->elements)
        checkRate(*memberOf(command, "rate"), spec);
}

void checkVideoLine(const Node &node, const VideoLine &line, const SensorSpec &spec)
{
    if (!line.switchName.empty()) {
        const auto isSetting = [&](const char *end) {
            return spec.settings.find("SA_" + line.switchName + end) != nullptr;
        };
        if (!isSetting("") && !isSetting("_ETH") && !isSetting("_RS422"))
            throw ParseError(memberOf(node, "switch")->line,
                             spec.model + " has no setting \"SA_" + line.switchName + '"');
    }
    const bool showsValues = (line.parts & (VideoLine::Peaks | VideoLine::Shadow)) != 0;
    if (showsValues && line.signals.empty())
        throw ParseError(node.line, "the video line \"" + line.answer + "\" needs \"signals\" to show");
    std::size_t count = spec.signals.size();
    for (const MeasuringMode &mode : spec.modes)
        count = std::max(count, mode.signals.size());
    for (const std::int32_t number : line.signals) {
        if (static_cast<std::size_t>(number) > count)
            throw ParseError(memberOf(node, "signals")->line, "there is no signal " + std::to_string(number) +
                                                                  ": " + spec.model + " has " +
                                                                  std::to_string(count));
    }
}

void checkVideo(const Node &video, const SensorSpec &spec)
{
    const Node *const lines = memberOf(video, "lines");
    if (lines->elements.empty())
        throw ParseError(lines->line, "\"lines\" must have a video line; a model without video has null");
    checkUnique(lines->elements, "answer");
    for (std::size_t i = 0; i < spec.video.lines.size(); ++i)
        checkVideoLine(lines->elements[i], spec.video.lines[i], spec);
    if (const Node *other = memberOf(video, "pixelsAtRange")) {
        const Node *const parameter = memberOf(*other, "parameter");
        if (spec.info.find(parameter->text) == nullptr)
            throw ParseError(parameter->line,
                             "\"Get_Info\" of a " + spec.model + " has no \"" + parameter->text + '"');
    }
}

bool isName(const std::string &text)
{
    return !text.empty() && std::all_of(text.begin(), text.end(), [](unsigned char c) {
        return c > ' ' && c <= '~' && c != '=' && c != '"';
    });
}

/// Names of parameters and commands are words: an answer has "name=value" pairs.
void checkNames(const Node &object, const char *what)
{
    for (const Member &member : object.members) {
        if (!isName(member.key))
            throw ParseError(member.line, '"' + member.key + "\" is no name of a " + what);
    }
}

} // namespace

void checkFault(const Node &node, const Fault &fault)
{
    if (fault.parameter.empty())
        return;
    const std::string &function = fault.function;
    const bool hasParameter = function.size() > 3 && function.compare(3, 9, "Parameter") == 0;
    if (!hasParameter || function == "GetParameters")
        throw ParseError(memberOf(node, "parameter")->line,
                         "only a \"function\" that sets or gets a parameter has a \"parameter\"");
}

void checkReferences(const Node &node, const SensorSpec &spec)
{
    const auto ifGiven = [&node](const char *key, const auto &check) {
        const Node *const value = memberOf(node, key);
        if (value != nullptr && value->kind != Node::Kind::Null)
            check(*value);
    };
    ifGiven("info", [](const Node &info) { checkNames(info, "parameter"); });
    ifGiven("settings", [](const Node &settings) {
        checkNames(settings, "group of settings");
        for (const Member &group : settings.members)
            checkNames(group.value, "parameter");
    });
    ifGiven("answers", [](const Node &answers) {
        checkNames(answers, "command");
        for (const Member &answer : answers.members)
            checkNames(answer.value, "parameter");
    });
    ifGiven("limits", [&spec](const Node &limits) {
        for (const Member &limit : limits.members)
            needSetting(spec, limit.key, limit.line);
    });
    ifGiven("rateRule", [&spec](const Node &rate) { checkRate(rate, spec); });
    ifGiven("averaging", [&spec](const Node &averaging) { needSettings(spec, averaging, {"number", "type"}); });
    ifGiven("tracking", [&spec](const Node &tracking) { checkTracking(tracking, spec); });
    ifGiven("trigger", [&spec](const Node &trigger) { needSettings(spec, trigger, {"parameter"}); });
    ifGiven("measureModes", [&spec](const Node &modes) {
        needSettings(spec, modes, {"parameter"});
        checkUnique(memberOf(modes, "modes")->elements, "mode");
    });
    ifGiven("video", [&spec](const Node &video) { checkVideo(video, spec); });
    ifGiven("faults", [&spec](const Node &faults) {
        for (std::size_t i = 0; i < spec.faults.size(); ++i)
            checkFault(faults.elements[i], spec.faults[i].fault);
    });
}

} // namespace sondixsim::model
