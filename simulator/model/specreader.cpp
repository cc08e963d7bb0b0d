// SPDX-License-Identifier: MIT
#include "specreader.h"

#include "command.h"
#include "errors.h"
#include "faults.h"
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
        const auto result = std::from_chars(member.key.data(), end, key);
        if (result.ec != std::errc() || result.ptr != end)
            throw ParseError(member.line, "\"" + member.key + "\" is not a whole number");
        spec.errorTexts[key] = readName(member.value, "an error text");
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

const ObjectRules &trackingCommandRules()
{
    using namespace keys;
    // clang-format off
    static const auto &rules = *new ObjectRules{"trackingCommand", "a tracking command", {
        {"command", required, word(),            "The command"},
        {"mode",    required, whole(0),          "Value of the setting \"autostart\" with which it runs after opening"},
        {"rate",    required, object(rateRules), "The rate while the sensor tracks"},
    }};
    // clang-format on
    return rules;
}

const ObjectRules &trackingRules()
{
    using namespace keys;
    // clang-format off
    static const auto &rules = *new ObjectRules{"tracking", "\"tracking\"", {
        {"autostart", required, plainText(),                            "Setting that selects the tracking command that runs after opening"},
        {"stop",      optional, plainText(),                            "Command that stops tracking"},
        {"commands",  required, arrayOf(object(trackingCommandRules)),  "The tracking commands"},
    }};
    // clang-format on
    return rules;
}

const ObjectRules &averagingRules()
{
    using namespace keys;
    // clang-format off
    static const auto &rules = *new ObjectRules{"averaging", "\"averaging\"", {
        {"number", required, plainText(), "Setting: how many measurements a frame is the mean of"},
        {"type",   optional, plainText(), "Setting that switches averaging: with 0 the sensor does not average"},
    }};
    // clang-format on
    return rules;
}

void readTracking(const Node &node, SensorSpec &spec)
{
    ObjectReader reader(node, trackingRules());
    reader.read("autostart", spec.autostart);
    reader.read("stop", spec.stopTracking);
    spec.tracking.clear();
    for (const Node &element : readArray(reader.required("commands"), "\"commands\"")) {
        ObjectReader commandReader(element, trackingCommandRules());
        TrackingCommand command;
        commandReader.read("command", command.command);
        commandReader.read("mode", command.mode);
        command.rate = readFrameRate(commandReader.required("rate"));
        commandReader.finish();
        spec.tracking.push_back(std::move(command));
    }
    reader.finish();
}

void readAveraging(const Node &node, SensorSpec &spec)
{
    spec.averagingNumber.clear();
    spec.averagingType.clear();
    if (node.kind == Node::Kind::Null)
        return;
    ObjectReader reader(node, averagingRules());
    reader.read("number", spec.averagingNumber);
    reader.read("type", spec.averagingType);
    reader.finish();
}

std::vector<Choice> codeChoices()
{
    std::vector<Choice> choices;
    for (const CodeRow &row : codeRows)
        choices.push_back({std::to_string(row.code), row.description});
    return choices;
}

std::vector<Choice> damageChoices()
{
    return {{damageNames[1], "its second half is missing"},
            {damageNames[2], "some of its characters are others"},
            {damageNames[3], "it is empty"}};
}

void setOutOfRangeKey(std::vector<Signal> &signals, std::int32_t key)
{
    for (Signal &signal : signals)
        signal.outOfRangeKey = signal.major ? key : 0;
}

} // namespace

std::vector<Choice> functionChoices()
{
    std::vector<Choice> choices;
    for (const char *const function : functionNames)
        choices.push_back({function, {}});
    return choices;
}

std::vector<Choice> commandChoices()
{
    std::vector<Choice> choices;
    for (const std::string &command : commandNames())
        choices.push_back({command, {}});
    return choices;
}

std::vector<KeyRule> commonKeys()
{
    using namespace keys;
    const char *const parameterName = "^[!#-<>-~]+$";
    const char *const settingName = "^SA_[!#-<>-~]*$";
    // clang-format off
    std::vector<KeyRule> rules = {
        {"name",           optional, name(),               "\"SA_Sensor\" (the model's)"},
        {"controllerName", optional, name(),               "\"SA_ControllerName\" (the model's)"},
        {"articleNumber",  optional, name(),               "\"SA_ArticleNumber\" (the model's)"},
        {"firmware",       optional, name(),               "\"SA_Softwareversion\", without \"(simulator)\" (the model's)"},
        {"ring",           optional, whole(1, 10000000),   "Capacity of its data ring in frames. When the ring is full the oldest frames are lost and counted (32768)"},
        {"standing",       optional, whole(0, 10000000),   "Number of values that are always available and never used up; for measuring the speed of a reader (0)"},
        {"info",           optional, mapOf(value(), parameterName),                         "Further answers of \"Get_Info\""},
        {"settings",       optional, mapOf(orNull(mapOf(value(), settingName)), parameterName), "Settings by command: \"Get_...\" reads a group, \"Set_...\" changes it. null removes a group of the model"},
        {"limits",         optional, mapOf(range(), settingName),                           "Allowed values of settings"},
        {"answers",        optional, mapOf(mapOf(value(), parameterName), parameterName),   "Further commands and their answers"},
        {"signals",        optional, arrayOf(object(signalRules)),                          "The values of a frame (the model's)"},
        {"errorTexts",     optional, mapOf(name(), "^-?[0-9]+$"),                           "Texts of the error values by key (the model's)"},
        {"outOfRange",     optional, orNull(whole(-1000000, -1)),                           "Key of the error value for values outside the range; null: they are limited to the range (the model's)"},
        {"averaging",      optional, orNull(object(averagingRules)),                        "The settings for averaging; null: none (the model's)"},
        {"rateRule",       optional, object(rateRules),                                     "How the rate follows from settings (the model's)"},
        {"tracking",       optional, object(trackingRules),                                 "Commands that start continuous measuring (the model's)"},
    };
    // clang-format on
    for (const auto &more : {modeKeys(), webKeys()})
        rules.insert(rules.end(), more.begin(), more.end());
    return rules;
}

void readCommonKeys(ObjectReader &reader, SensorSpec &spec, const std::string &folder)
{
    reader.read("name", spec.name);
    reader.read("controllerName", spec.controllerName);
    reader.read("articleNumber", spec.articleNumber);
    reader.read("firmware", spec.firmware);
    reader.read("ring", spec.ringFrames);
    reader.read("standing", spec.standing);
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
    if (const Node *key = reader.optional("outOfRange"))
        spec.outOfRangeKey = key->kind == Node::Kind::Null ? 0 : readInt(*key, "\"outOfRange\"", -1000000, -1);
    if (const Node *averaging = reader.optional("averaging"))
        readAveraging(*averaging, spec);
    if (const Node *rule = reader.optional("rateRule"))
        spec.rate = readFrameRate(*rule);
    if (const Node *tracking = reader.optional("tracking"))
        readTracking(*tracking, spec);
    readModeKeys(reader, spec, folder);
    readWebKeys(reader, spec, folder);
    for (MeasuringMode &mode : spec.modes) {
        nameErrorValues(mode.signals, spec.errorTexts);
        setOutOfRangeKey(mode.signals, spec.outOfRangeKey);
    }
    setOutOfRangeKey(spec.signals, spec.outOfRangeKey);
    nameErrorValues(spec.signals, spec.errorTexts);
}

const ObjectRules &faultRules()
{
    using namespace keys;
    // clang-format off
    static const auto &rules = *new ObjectRules{"fault", "a fault", {
        {"function",    optional, oneOf(functionChoices, "function"),         "Function of the C interface whose calls it applies to"},
        {"command",     optional, usually(word(), commandChoices), "Command whose calls it applies to; alone it means SensorCommand"},
        {"parameter",   optional, word(),                         "Parameter that the function sets or gets"},
        {"text",        optional, text(),                         "Error text for GetError"},
        {"from",        optional, whole(1),                       "Number of the first matching call that can be hit (1)"},
        {"times",       optional, whole(1),                       "Maximum number of hits (no limit)"},
        {"probability", optional, number(0.0, 1.0),               "Probability of a hit for each of these calls (1)"},
        {"at",          optional, number(0.0),                    "Bench time in seconds before which no call matches (0)"},
        {"for",         optional, number(0.0),                    "Seconds after \"at\" in which calls match (without end)"},
        {"code",        optional, usually(whole(), codeChoices),  "Result of the call, not 0 (the call is executed)"},
        {"delay",       optional, number(0.0, 3600.0),            "Seconds of real time by which the call is delayed (0)"},
        {"hang",        optional, boolean(),                      "true: the call returns only after it was released (false)"},
        {"answer",      optional, text(),                         "\"key=value\" pairs that replace the answer of a command or an opening"},
        {"damage",      optional, oneOf(damageChoices, "damage"),           "What happens to that answer on its way"},
    }, nullptr, {{"function", "command"}, {"code", "delay", "hang", "answer", "damage"}}};
    // clang-format on
    return rules;
}

SpecFault readFault(const Node &node)
{
    ObjectReader reader(node, faultRules());
    SpecFault spec;
    Fault &fault = spec.fault;
    reader.read("function", fault.function);
    spec.line = reader.read("command", fault.command) ? reader.required("command").line : node.line;
    reader.read("parameter", fault.parameter);
    reader.read("text", fault.text);
    reader.read("from", fault.from);
    reader.read("times", fault.times);
    reader.read("probability", fault.probability);
    reader.read("at", fault.begin);
    reader.read("for", fault.duration);
    reader.read("code", fault.code);
    reader.read("delay", fault.delay);
    reader.read("hang", fault.hang);
    reader.read("answer", fault.answer);
    std::string damage;
    if (reader.read("damage", damage)) {
        const auto *const found = std::find(std::begin(damageNames), std::end(damageNames), damage);
        fault.damage = static_cast<Damage>(found - std::begin(damageNames));
    }
    reader.finish();
    if (const std::string problem = faultProblem(fault); !problem.empty())
        throw ParseError(node.line, problem);
    return spec;
}

} // namespace sondixsim::model
