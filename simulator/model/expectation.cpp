// SPDX-License-Identifier: MIT
#include "expectation.h"

#include "objectreader.h"
#include "speccheck.h"
#include "specreader.h"

#include <algorithm>
#include <cstring>

namespace sondixsim::model {

namespace {

/// The fates of frames, with the names of the bench file.
const struct
{
    const char *name;
    std::uint64_t FrameCounts::*frames;
    const char *description;
} frameRows[] = {
    {"generated", &FrameCounts::generated, "measured"},
    {"fetched", &FrameCounts::fetched, "fetched by a program"},
    {"lost", &FrameCounts::lost, "lost because the ring was full"},
    {"unsent", &FrameCounts::unsent, "measured while the sensor was silent or unplugged"},
    {"discarded", &FrameCounts::discarded, "discarded by a command, by closing or by opening again"},
};

std::vector<Choice> frameChoices()
{
    std::vector<Choice> choices;
    for (const auto &row : frameRows)
        choices.push_back({row.name, row.description});
    return choices;
}

constexpr double longestExpectation = 1.0e9;

std::string nameOf(const Fault &calls)
{
    std::string name = "calls of " + (calls.function.empty() ? std::string("SensorCommand") : calls.function);
    for (const std::string &filter : {calls.command, calls.parameter}) {
        if (!filter.empty())
            name += " \"" + filter + '"';
    }
    if (calls.duration)
        return name + " from " + toText(calls.begin) + " s to " + toText(calls.begin + *calls.duration) + " s";
    return calls.begin > 0.0 ? name + " from " + toText(calls.begin) + " s on" : name;
}

void readFrames(ObjectReader &reader, SpecExpectation &expectation)
{
    std::string name;
    reader.read("frames", name);
    for (const auto &row : frameRows) {
        if (name == row.name)
            expectation.frames = row.frames;
    }
    expectation.name = "frames " + name;
}

void readCalls(ObjectReader &reader, const Node &node, SpecExpectation &expectation)
{
    Fault &calls = expectation.calls;
    reader.read("function", calls.function);
    reader.read("command", calls.command);
    reader.read("parameter", calls.parameter);
    reader.read("at", calls.begin);
    reader.read("for", calls.duration);
    checkFault(node, calls);
    expectation.name = nameOf(calls);
}

void readCount(ObjectReader &reader, SpecExpectation &expectation)
{
    const auto count = [&reader](const char *key) -> std::optional<std::int64_t> {
        std::int32_t number = 0;
        return reader.read(key, number) ? std::optional<std::int64_t>(number) : std::nullopt;
    };
    expectation.minimum = count("atLeast");
    expectation.maximum = count("atMost");
    const auto exactly = count("exactly");
    if (exactly)
        expectation.minimum = expectation.maximum = exactly;
    if (expectation.minimum && expectation.maximum && *expectation.minimum > *expectation.maximum)
        throw ParseError(reader.line(), "\"atLeast\" must not be greater than \"atMost\"");
}

SpecExpectation readExpectation(const Node &node, bool ofSensor)
{
    ObjectReader reader(node, expectationRules());
    SpecExpectation expectation;
    expectation.line = node.line;
    const Node *const frames = reader.optional("frames");
    const Node *const setting = reader.optional("setting");
    reader.checkGroups(); // before the keys of one kind are asked for
    if (setting != nullptr && !ofSensor)
        throw ParseError(setting->line, "only a sensor has settings: \"setting\" belongs into its own \"expect\"");
    if (setting != nullptr) {
        reader.read("setting", expectation.setting);
        expectation.value = readValue(reader.required("value"), "\"value\"");
        expectation.name = expectation.setting;
    } else {
        if (frames != nullptr)
            readFrames(reader, expectation);
        else
            readCalls(reader, node, expectation);
        readCount(reader, expectation);
    }
    reader.read("name", expectation.name);
    reader.finish();
    return expectation;
}

} // namespace

const ObjectRules &expectationRules()
{
    using namespace keys;
    static const char *const call = "function command";
    // clang-format off
    static const auto &rules = *new ObjectRules{"expectation", "an expectation", {
        {"name",      optional, word(),                                "Its name in reports"},
        {"function",  optional, oneOf(functionChoices, "function"),                "Function of the C interface whose calls are counted"},
        {"command",   optional, usually(word(), commandChoices),       "Command whose calls are counted; alone it means SensorCommand"},
        {"parameter", optional, word(),                                "Parameter that the function sets or gets", nullptr, call},
        {"at",        optional, number(0.0, longestExpectation),       "Bench time in seconds before which no call counts (0)", nullptr, call},
        {"for",       optional, number(0.0, longestExpectation),       "Seconds after \"at\" in which calls count (without end)", nullptr, call},
        {"frames",    optional, oneOf(frameChoices, "kind of frames"),                   "What has become of the frames that are counted"},
        {"setting",   optional, word(),                                "Setting whose value at the end is compared"},
        {"value",     optional, value(),                               "Its value", nullptr, "setting"},
        {"exactly",   optional, whole(0),                              "The expected number of calls or frames"},
        {"atLeast",   optional, whole(0),                              "The minimum expected number of calls or frames"},
        {"atMost",    optional, whole(0),                              "The maximum expected number of calls or frames"},
    }, nullptr, {}, {{call, "frames", "setting"}, {"value", "exactly", "atLeast atMost"}}};
    // clang-format on
    return rules;
}

const ObjectRules &benchExpectationRules()
{
    static const auto &rules = *[] {
        auto *all = new ObjectRules(expectationRules());
        all->name = "benchExpectation";
        for (const char *const key : {"setting", "value"})
            all->keys.erase(std::find_if(all->keys.begin(), all->keys.end(),
                                         [key](const KeyRule &rule) { return std::strcmp(rule.key, key) == 0; }));
        return all;
    }();
    return rules;
}

std::string SpecExpectation::expected() const
{
    if (!setting.empty())
        return toText(value);
    if (minimum == maximum)
        return "exactly " + std::to_string(*minimum);
    const std::string lower = minimum ? "at least " + std::to_string(*minimum) : std::string();
    const std::string upper = maximum ? "at most " + std::to_string(*maximum) : std::string();
    return lower + (minimum && maximum ? " and " : "") + upper;
}

bool SpecExpectation::isMetBy(std::int64_t count) const
{
    return count >= minimum.value_or(count) && count <= maximum.value_or(count);
}

std::vector<SpecExpectation> readExpectations(const Node &node, bool ofSensor)
{
    std::vector<SpecExpectation> expectations;
    for (const Node &expectation : readArray(node, "\"expect\""))
        expectations.push_back(readExpectation(expectation, ofSensor));
    return expectations;
}

} // namespace sondixsim::model
