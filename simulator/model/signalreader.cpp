// SPDX-License-Identifier: MIT
#include "inputfile.h"
#include "platform.h"
#include "specreader.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <tuple>

namespace sondixsim::model {

namespace {

constexpr double maxPeriod = 1.0e9;
constexpr double minPeriod = 1.0e-6;

std::string readRecordFile(const Node &node, const std::string &name, const std::string &folder)
{
    try {
        return readInputFile(pathFromUtf8(folder) / pathFromUtf8(name));
    } catch (const InputError &error) {
        throw ParseError(node.line, "the recorded values in \"" + name + "\" cannot be read: " + error.what());
    }
}

/// The numbers in one column of a text file. Lines without a number there, such as headings, are skipped.
std::vector<double> readRecord(const Node &node, const std::string &folder, int column)
{
    const std::string name = readPlainText(node, "\"file\"");
    const std::string content = readRecordFile(node, name, folder);
    std::vector<double> record;
    for (std::string_view text = content; !text.empty();) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        std::size_t start = 0;
        for (int i = 1; i < column && start != std::string_view::npos; ++i) {
            start = line.find_first_of(",;\t", start);
            start = start == std::string_view::npos ? start : start + 1;
        }
        if (start == std::string_view::npos)
            continue;
        start = std::min(line.find_first_not_of(' ', start), line.size());
        double value = 0.0;
        const char *const end = line.data() + line.size();
        if (std::from_chars(line.data() + start, end, value).ec == std::errc() && std::isfinite(value))
            record.push_back(value);
    }
    if (record.empty())
        throw ParseError(node.line, "\"" + name + "\" has no number in column " + std::to_string(column));
    return record;
}

const struct
{
    const char *name;
    Generator::Kind kind;
    const char *description;
} generatorRows[] = {
    {"constant", Generator::Kind::Constant, "always the same"},
    {"sine", Generator::Kind::Sine, "a sine"},
    {"ramp", Generator::Kind::Ramp, "rises from one value to the other, and begins again"},
    {"step", Generator::Kind::Step, "changes between two values"},
    {"noise", Generator::Kind::Noise, "normal noise"},
    {"drift", Generator::Kind::Drift, "a slow change from 0, and back"},
    {"temperature", Generator::Kind::Temperature, "follows the temperature of the sensor"},
    {"counter", Generator::Kind::Counter, "the number of the frame since the sensor was opened"},
    {"csv", Generator::Kind::Recorded, "a recorded column, one value for each frame, repeated from the start"},
};

std::vector<Choice> generatorKinds()
{
    std::vector<Choice> choices;
    for (const auto &row : generatorRows)
        choices.push_back({row.name, row.description});
    return choices;
}

constexpr double quarterOfAnHour = 900.0;
constexpr double maxKelvins = 1000.0;
constexpr double maxModulo = 4503599627370496.0; // 2^52

const ObjectRules &generatorRules()
{
    using namespace keys;
    // clang-format off
    static const auto &rules = *new ObjectRules{"generator", "a generator", {
        {"kind",         required, oneOf(generatorKinds, "generator"),            "What it generates"},
        {"value",        required, number(),                         "The value",                                       "constant"},
        {"amplitude",    required, number(),                         "Amplitude",                                       "sine"},
        {"middle",       optional, number(),                         "Mean value (0)",                                  "sine"},
        {"phase",        optional, number(0.0, 1.0),                 "Phase in periods (0)",                            "sine"},
        {"from",         required, number(),                         "First value",                                     "ramp step"},
        {"to",           required, number(),                         "Last value",                                      "ramp step"},
        {"period",       required, number(minPeriod, maxPeriod),     "Seconds",                                         "sine ramp step"},
        {"share",        optional, number(0.0, 1.0),                 "Part of the period at the first value (0.5)",     "step"},
        {"sigma",        required, number(0.0),                      "Standard deviation",                              "noise"},
        {"by",           required, number(),                         "Largest change",                                  "drift"},
        {"in",           required, number(minPeriod, maxPeriod),     "Seconds until then",                              "drift"},
        {"perKelvin",    required, number(),                         "Change of the value per kelvin",                  "temperature"},
        {"warmUp",       optional, number(-maxKelvins, maxKelvins),  "Kelvins by which the sensor warms up (0)",        "temperature"},
        {"timeConstant", optional, number(minPeriod, maxPeriod),     "Seconds, of warming up (900)",                    "temperature"},
        {"swing",        optional, number(0.0, maxKelvins),          "Amplitude of the surroundings in kelvins (0)",    "temperature"},
        {"day",          optional, number(minPeriod, maxPeriod),     "Period of the surroundings in seconds (86400)",   "temperature"},
        {"modulo",       required, number(1.0, maxModulo),           "The number that it does not reach",               "counter"},
        {"file",         required, plainText(),                      "Text file, relative to the bench file",           "csv"},
        {"column",       optional, whole(1, 1000),                   "Column of this file, from 1 (1)",                 "csv"},
    }, "kind"};
    // clang-format on
    return rules;
}

const ObjectRules &errorValueRules()
{
    using namespace keys;
    // clang-format off
    static const auto &rules = *new ObjectRules{"errorValue", "an error value", {
        {"key",         required, whole(-1000000, -1), "The scaled value is -1.0e10 plus this key"},
        {"every",       optional, whole(1),            "Period in frames"},
        {"length",      optional, whole(1),            "Number of error values at the end of each period (1)"},
        {"probability", optional, number(0.0, 1.0),    "Probability of an error value in a frame"},
    }, nullptr, {}, {{"every", "probability"}}};
    // clang-format on
    return rules;
}

Generator readGenerator(const Node &node, const std::string &folder)
{
    ObjectReader reader(node, generatorRules());
    Generator generator;
    const std::string kind = reader.readKind();
    for (const auto &row : generatorRows) {
        if (kind == row.name)
            generator.kind = row.kind;
    }
    if (generator.kind == Generator::Kind::Sine)
        generator.share = 0.0;
    if (generator.kind == Generator::Kind::Temperature)
        generator.period = quarterOfAnHour;
    // Each kind has only some of these keys.
    reader.read("value", generator.low);
    reader.read("middle", generator.low);
    reader.read("amplitude", generator.high);
    reader.read("phase", generator.share);
    reader.read("from", generator.low);
    reader.read("to", generator.high);
    reader.read("period", generator.period);
    reader.read("share", generator.share);
    reader.read("sigma", generator.high);
    reader.read("by", generator.high);
    reader.read("in", generator.period);
    reader.read("perKelvin", generator.high);
    reader.read("warmUp", generator.rise);
    reader.read("swing", generator.swing);
    reader.read("day", generator.day);
    reader.read("timeConstant", generator.period);
    if (reader.read("modulo", generator.period))
        generator.period = std::floor(generator.period);
    std::int32_t column = 1;
    reader.read("column", column);
    if (const Node *file = reader.optional("file"))
        generator.record = readRecord(*file, folder, column);
    reader.finish();
    return generator;
}

std::vector<Generator> readGenerators(const Node &node, const std::string &folder)
{
    std::vector<Generator> generators;
    if (node.kind == Node::Kind::Object) {
        generators.push_back(readGenerator(node, folder));
        return generators;
    }
    for (const Node &element : readArray(node, "\"generator\""))
        generators.push_back(readGenerator(element, folder));
    return generators;
}

ErrorValues readErrorValues(const Node &node)
{
    ObjectReader reader(node, errorValueRules());
    ErrorValues errors;
    reader.read("key", errors.key);
    reader.read("every", errors.every);
    reader.read("length", errors.length);
    reader.read("probability", errors.probability);
    reader.finish();
    if (errors.every > 0 && errors.length > errors.every)
        throw ParseError(node.line, "\"length\" must not be more than \"every\"");
    return errors;
}

/// A slow sine in the middle of the range with a little noise.
std::vector<Generator> defaultGenerators(const Signal &signal)
{
    const double span = signal.scaledMax - signal.scaledMin;
    Generator wave;
    wave.kind = Generator::Kind::Sine;
    wave.low = signal.scaledMin + 0.5 * span;
    wave.high = 0.3 * span;
    wave.period = 5.0;
    wave.share = 0.0;
    Generator noise;
    noise.kind = Generator::Kind::Noise;
    noise.high = 0.001 * span;
    return {wave, noise};
}

Signal readSignal(const Node &node, const std::string &folder)
{
    ObjectReader reader(node, signalRules());
    Signal signal;
    reader.read("name", signal.scaledName);
    signal.rawName = signal.scaledName;
    signal.rawUnit = "Digits";
    reader.read("rawName", signal.rawName);
    reader.read("unit", signal.scaledUnit);
    reader.read("rawUnit", signal.rawUnit);
    reader.read("info", signal.info);
    std::pair<double, double> range;
    if (reader.read("range", range))
        std::tie(signal.scaledMin, signal.scaledMax) = range;
    if (reader.read("rawRange", range)) {
        std::tie(signal.rawMin, signal.rawMax) = range;
        // Raw error values lie above the range and must fit 32 bits, too.
        constexpr double limit = 2146000000.0;
        if (signal.rawMin < -limit || signal.rawMax > limit)
            throw ParseError(reader.required("rawRange").line, "\"rawRange\" must lie within 32 bits");
    }
    signal.viewRange = signal.scaledMax - signal.scaledMin;
    reader.read("viewRange", signal.viewRange);
    reader.read("major", signal.major);
    const Node *generator = reader.optional("generator");
    signal.generators = generator != nullptr ? readGenerators(*generator, folder) : defaultGenerators(signal);
    if (const Node *errors = reader.optional("errors")) {
        for (const Node &element : readArray(*errors, "\"errors\""))
            signal.errors.push_back(readErrorValues(element));
    }
    reader.finish();
    return signal;
}

} // namespace

const ObjectRules &signalRules()
{
    using namespace keys;
    // clang-format off
    static const auto &rules = *new ObjectRules{"signal", "a signal", {
        {"name",      required, word(),                           "Name of the scaled value"},
        {"rawName",   optional, name(),                           "Name of the raw value (\"name\")"},
        {"unit",      optional, name(),                           "Unit of the scaled value"},
        {"rawUnit",   optional, name(),                           "Unit of the raw value (\"Digits\")"},
        {"range",     optional, range(),                          "Scaled range ([0, 10]); a value outside it is an error value or limited to it, see \"outOfRange\""},
        {"rawRange",  optional, range(),                          "Raw range ([0, 65535]); scaled values are rounded to raw steps"},
        {"viewRange", optional, number(),                         "\"IA_ViewRange\" (the width of \"range\")"},
        {"major",     optional, boolean(),                        "\"IA_MajorSignal\"; the others, such as an intensity, are limited to their range (true)"},
        {"info",      optional, name(),                           "\"IA_AdditionalInfo\""},
        {"generator", optional, either(object(generatorRules), arrayOf(object(generatorRules))), "A generator, or an array of generators whose values are added (a slow sine with a little noise)"},
        {"errors",    optional, arrayOf(object(errorValueRules)), "Error values, which replace measurements"},
    }};
    // clang-format on
    return rules;
}

std::vector<Signal> readSignals(const Node &node, const std::string &folder)
{
    std::vector<Signal> signals;
    for (const Node &element : readArray(node, "\"signals\""))
        signals.push_back(readSignal(element, folder));
    constexpr std::size_t maxSignals = 512;
    if (signals.size() > maxSignals)
        throw ParseError(node.line, "there are more than " + std::to_string(maxSignals) + " signals");
    return signals;
}

} // namespace sondixsim::model
