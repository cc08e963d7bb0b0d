// SPDX-License-Identifier: MIT
#include "platform.h"
#include "specreader.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <fstream>
#include <tuple>

namespace sondixsim::model {

namespace {

constexpr double maxPeriod = 1.0e9;
constexpr double minPeriod = 1.0e-6;

/// The numbers in one column of a text file. Lines without a number there, such as headings, are skipped.
std::vector<double> readRecord(const Node &node, const std::string &folder, int column)
{
    const std::string name = readPlainText(node, "\"file\"");
    std::ifstream file(pathFromUtf8(folder) / pathFromUtf8(name));
    if (!file)
        throw ParseError(node.line, "the recorded values in \"" + name + "\" cannot be read");
    std::vector<double> record;
    std::string line;
    while (std::getline(file, line)) {
        std::size_t start = 0;
        for (int i = 1; i < column && start != std::string::npos; ++i) {
            start = line.find_first_of(",;\t", start);
            start = start == std::string::npos ? start : start + 1;
        }
        if (start == std::string::npos)
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

Generator readGenerator(const Node &node, const std::string &folder)
{
    ObjectReader reader(node, "a generator");
    Generator generator;
    const std::string kind = readPlainText(reader.required("kind"), "\"kind\"");
    const auto need = [&](const char *key) {
        return readNumber(reader.required(key), '"' + std::string(key) + '"');
    };
    const auto period = [&](const char *key) {
        return readNumber(reader.required(key), '"' + std::string(key) + '"', minPeriod, maxPeriod);
    };
    const auto part = [&](const char *key, double defaultValue) {
        const Node *value = reader.optional(key);
        return value != nullptr ? readNumber(*value, '"' + std::string(key) + '"', 0.0, 1.0) : defaultValue;
    };
    if (kind == "constant") {
        generator.low = need("value");
    } else if (kind == "sine") {
        const Node *middle = reader.optional("middle");
        generator.kind = Generator::Kind::Sine;
        generator.low = middle != nullptr ? readNumber(*middle, "\"middle\"") : 0.0;
        generator.high = need("amplitude");
        generator.period = period("period");
        generator.share = part("phase", 0.0);
    } else if (kind == "ramp" || kind == "step") {
        generator.kind = kind == "ramp" ? Generator::Kind::Ramp : Generator::Kind::Step;
        generator.low = need("from");
        generator.high = need("to");
        generator.period = period("period");
        if (kind == "step")
            generator.share = part("share", 0.5);
    } else if (kind == "noise") {
        generator.kind = Generator::Kind::Noise;
        generator.high = readNumber(reader.required("sigma"), "\"sigma\"", 0.0);
    } else if (kind == "drift") {
        generator.kind = Generator::Kind::Drift;
        generator.high = need("by");
        generator.period = period("in");
    } else if (kind == "counter") {
        constexpr double maxModulo = 4503599627370496.0; // 2^52
        generator.kind = Generator::Kind::Counter;
        generator.period = std::floor(readNumber(reader.required("modulo"), "\"modulo\"", 1.0, maxModulo));
    } else if (kind == "csv") {
        generator.kind = Generator::Kind::Recorded;
        const Node *column = reader.optional("column");
        generator.record = readRecord(reader.required("file"), folder,
                                      column != nullptr ? readInt(*column, "\"column\"", 1, 1000) : 1);
    } else {
        throw ParseError(reader.required("kind").line,
                         "there is no generator \"" + kind +
                             "\"; there are: constant, sine, ramp, step, noise, drift, counter, csv");
    }
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
    ObjectReader reader(node, "an error value");
    ErrorValues errors;
    errors.key = readInt(reader.required("key"), "\"key\"", -1000000, -1);
    if (const Node *every = reader.optional("every"))
        errors.every = static_cast<std::uint64_t>(readInt(*every, "\"every\"", 1));
    if (const Node *length = reader.optional("length"))
        errors.length = static_cast<std::uint64_t>(readInt(*length, "\"length\"", 1));
    if (const Node *probability = reader.optional("probability"))
        errors.probability = readNumber(*probability, "\"probability\"", 0.0, 1.0);
    reader.finish();
    if ((errors.every > 0) == (errors.probability > 0.0))
        throw ParseError(node.line, "an error value needs either \"every\" or \"probability\"");
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
    ObjectReader reader(node, "a signal");
    Signal signal;
    const auto text = [&reader](const char *key, std::string &target) {
        if (const Node *value = reader.optional(key))
            target = readText(*value, '"' + std::string(key) + '"');
    };
    signal.scaledName = readText(reader.required("name"), "\"name\"");
    signal.rawName = signal.scaledName;
    signal.rawUnit = "Digits";
    text("rawName", signal.rawName);
    text("unit", signal.scaledUnit);
    text("rawUnit", signal.rawUnit);
    text("info", signal.info);
    if (const Node *range = reader.optional("range"))
        std::tie(signal.scaledMin, signal.scaledMax) = readRange(*range, "\"range\"");
    if (const Node *range = reader.optional("rawRange")) {
        std::tie(signal.rawMin, signal.rawMax) = readRange(*range, "\"rawRange\"");
        // Raw error values lie above the range and must fit 32 bits, too.
        constexpr double limit = 2146000000.0;
        if (signal.rawMin < -limit || signal.rawMax > limit)
            throw ParseError(range->line, "\"rawRange\" must lie within 32 bits");
    }
    const Node *view = reader.optional("viewRange");
    signal.viewRange = view != nullptr ? readNumber(*view, "\"viewRange\"") : signal.scaledMax - signal.scaledMin;
    if (const Node *major = reader.optional("major"))
        signal.major = readBool(*major, "\"major\"");
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
