// SPDX-License-Identifier: MIT
#include "framerate.h"

#include "objectreader.h"

#include <cmath>

namespace sondixsim::model {

namespace {

double numberOf(const ParameterList &settings, const std::string &name)
{
    const Value *value = settings.find(name);
    return value != nullptr ? toDouble(*value).value_or(0.0) : 0.0;
}

bool isClose(double a, double b)
{
    return std::fabs(a - b) <= 1e-6 * std::fabs(b);
}

} // namespace

double FrameRate::of(const ParameterList &settings) const
{
    const double value = numberOf(settings, parameter);
    double rate = 0.0;
    switch (unit) {
    case Unit::Fixed:
        rate = hertz;
        break;
    case Unit::KiloHertz:
        rate = value * 1000.0;
        break;
    case Unit::Hertz:
        rate = value / factor;
        break;
    case Unit::Microseconds:
        rate = 1.0e6 / value;
        break;
    case Unit::Periods:
        rate = 1.0 / (value * factor);
        break;
    case Unit::Index:
        if (value >= 0.0 && value < static_cast<double>(table.size()))
            rate = table[static_cast<std::size_t>(value)] * 1000.0;
        break;
    }
    if (!divisor.empty())
        rate /= numberOf(settings, divisor);
    if (!averageType.empty() && numberOf(settings, averageType) == 3.0)
        rate /= 2.0 * (numberOf(settings, averageNumber) + 1.0) + 1.0;
    return std::isfinite(rate) && rate > 0.0 ? rate : 0.0;
}

std::string FrameRate::apply(double wanted, ParameterList &settings)
{
    if (wanted < minimum || wanted > maximum) {
        return "the rate " + formatDouble(wanted) + " Hz is out of range: this model offers " +
               formatDouble(minimum) + " to " + formatDouble(maximum) + " Hz";
    }
    if (unit == Unit::Fixed) {
        hertz = wanted;
        return {};
    }
    const double undivided = wanted * (divisor.empty() ? 1.0 : numberOf(settings, divisor));
    if (unit == Unit::Index) {
        std::string rates;
        for (std::size_t i = 0; i < table.size(); ++i) {
            settings.set(parameter, static_cast<std::int32_t>(i));
            if (isClose(of(settings), wanted))
                return {};
            rates += (rates.empty() ? "" : ", ") + formatDouble(of(settings));
        }
        return "the model cannot send at " + formatDouble(wanted) + " Hz, only at " + rates + " Hz";
    }
    double value = undivided * (unit == Unit::Hertz ? factor : 1.0);
    if (unit == Unit::KiloHertz)
        value = undivided / 1000.0;
    else if (unit == Unit::Microseconds)
        value = 1.0e6 / undivided;
    else if (unit == Unit::Periods)
        value = 1.0 / (undivided * factor);
    const Value *const before = settings.find(parameter);
    settings.set(parameter, convertedLike(value, before != nullptr ? *before : Value(value)).value_or(value));
    if (!isClose(of(settings), wanted))
        return "the model cannot send at exactly " + formatDouble(wanted) + " Hz; the nearest rate is " +
               formatDouble(of(settings)) + " Hz";
    return {};
}

FrameRate readFrameRate(const Node &node)
{
    FrameRate rate;
    ObjectReader reader(node, "a rate rule");
    const auto text = [&reader](const char *key, std::string &target) {
        if (const Node *value = reader.optional(key))
            target = readPlainText(*value, '"' + std::string(key) + '"');
    };
    const auto number = [&reader](const char *key, double &target) {
        if (const Node *value = reader.optional(key))
            target = readNumber(*value, '"' + std::string(key) + '"', 0.0);
    };
    std::string unit = "fixed";
    text("unit", unit);
    text("parameter", rate.parameter);
    text("divisor", rate.divisor);
    text("averageType", rate.averageType);
    text("averageNumber", rate.averageNumber);
    number("hertz", rate.hertz);
    number("factor", rate.factor);
    number("least", rate.minimum);
    number("greatest", rate.maximum);
    if (const Node *table = reader.optional("kHz")) {
        for (const Node &entry : readArray(*table, "\"kHz\""))
            rate.table.push_back(readNumber(entry, "\"kHz\"", 0.0));
    }
    reader.finish();

    using Unit = FrameRate::Unit;
    static const std::pair<const char *, Unit> units[] = {
        {"fixed", Unit::Fixed},     {"kHz", Unit::KiloHertz},   {"Hz", Unit::Hertz},
        {"us", Unit::Microseconds}, {"periods", Unit::Periods}, {"index", Unit::Index},
    };
    for (const auto &[name, value] : units) {
        if (unit == name) {
            rate.unit = value;
            return rate;
        }
    }
    throw ParseError(node.line, "there is no rate unit \"" + unit + '"');
}

} // namespace sondixsim::model
