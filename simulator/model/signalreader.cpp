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

constexpr double longestPeriod = 1.0e9;
constexpr double shortestPeriod = 1.0e-6;

/// Numbers from one column of a text file; lines whose column is no number (a heading) are left out.
std::vector<double> readRecord(const Node &node, const std::string &folder, int column)
{
    const std::string name = readPlainText(node, "\"file\"");
    std::ifstream file(pathFromUtf8(folder) / pathFromUtf8(name));
    if (!file)
        throw Mistake(node.line, "the recorded values in \"" + name + "\" cannot be read");
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
        throw Mistake(node.line, "\"" + name + "\" has no number in column " + std::to_string(column));
    return record;
}

Generator readGenerator(const Node &node, const std::string &folder)
{
    ObjectReader reader(node, "a generator");
    Generator generator;
    const std::string kind = readPlainText(reader.need("kind"), "\"kind\"");
    const auto need = [&](const char *key) { return readNumber(reader.need(key), '"' + std::string(key) + '"'); };
    const auto period = [&](const char *key) {
        return readNumber(reader.need(key), '"' + std::string(key) + '"', shortestPeriod, longestPeriod);
    };
    const auto part = [&](const char *key, double standard) {
        const Node *value = reader.find(key);
        return value != nullptr ? readNumber(*value, '"' + std::string(key) + '"', 0.0, 1.0) : standard;
    };
    if (kind == "constant") {
        generator.low = need("value");
    } else if (kind == "sine") {
        const Node *middle = reader.find("middle");
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
        generator.high = readNumber(reader.need("sigma"), "\"sigma\"", 0.0);
    } else if (kind == "drift") {
        generator.kind = Generator::Kind::Drift;
        generator.high = need("by");
        generator.period = period("in");
    } else if (kind == "csv") {
        generator.kind = Generator::Kind::Recorded;
        const Node *column = reader.find("column");
        generator.record = readRecord(reader.need("file"), folder,
                                      column != nullptr ? readInt(*column, "\"column\"", 1, 1000) : 1);
    } else {
        throw Mistake(reader.need("kind").line,
                      "there is no generator \"" + kind +
                          "\"; there are: constant, sine, ramp, step, noise, drift, csv");
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
    errors.key = readInt(reader.need("key"), "\"key\"", -1000000, -1);
    if (const Node *every = reader.find("every"))
        errors.every = static_cast<std::uint64_t>(readInt(*every, "\"every\"", 1));
    if (const Node *length = reader.find("length"))
        errors.length = static_cast<std::uint64_t>(readInt(*length, "\"length\"", 1));
    if (const Node *probability = reader.find("probability"))
        errors.probability = readNumber(*probability, "\"probability\"", 0.0, 1.0);
    reader.finish();
    if ((errors.every > 0) == (errors.probability > 0.0))
        throw Mistake(node.line, "an error value needs either \"every\" or \"probability\"");
    if (errors.every > 0 && errors.length > errors.every)
        throw Mistake(node.line, "\"length\" must not be more than \"every\"");
    return errors;
}

/// Slowly up and down in the middle of the range, with a little noise.
std::vector<Generator> standardGenerators(const Signal &signal)
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
        if (const Node *value = reader.find(key))
            target = readText(*value, '"' + std::string(key) + '"');
    };
    signal.scaledName = readText(reader.need("name"), "\"name\"");
    signal.rawName = signal.scaledName;
    signal.rawUnit = "Digits";
    text("rawName", signal.rawName);
    text("unit", signal.scaledUnit);
    text("rawUnit", signal.rawUnit);
    text("info", signal.info);
    if (const Node *range = reader.find("range"))
        std::tie(signal.scaledMin, signal.scaledMax) = readRange(*range, "\"range\"");
    if (const Node *range = reader.find("rawRange")) {
        std::tie(signal.rawMin, signal.rawMax) = readRange(*range, "\"rawRange\"");
        // Raw error values lie above the range and must be whole 32-bit numbers as well.
        constexpr double greatest = 2146000000.0;
        if (signal.rawMin < -greatest || signal.rawMax > greatest)
            throw Mistake(range->line, "\"rawRange\" must lie within 32 bits");
    }
    const Node *view = reader.find("viewRange");
    signal.viewRange = view != nullptr ? readNumber(*view, "\"viewRange\"") : signal.scaledMax - signal.scaledMin;
    if (const Node *major = reader.find("major"))
        signal.major = readBool(*major, "\"major\"");
    const Node *generator = reader.find("generator");
    signal.generators = generator != nullptr ? readGenerators(*generator, folder) : standardGenerators(signal);
    if (const Node *errors = reader.find("errors")) {
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
    constexpr std::size_t most = 512;
    if (signals.size() > most)
        throw Mistake(node.line, "more than " + std::to_string(most) + " signals");
    return signals;
}

} // namespace sondixsim::model
