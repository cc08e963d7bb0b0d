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

const struct
{
    const char *name;
    FrameRate::Unit unit;
    const char *description;
} rateUnitRows[] = {
    {"fixed", FrameRate::Unit::Fixed, "no setting, always \"hertz\""},
    {"kHz", FrameRate::Unit::KiloHertz, "the setting is the rate in kHz"},
    {"Hz", FrameRate::Unit::Hertz, "the setting is the rate in Hz"},
    {"us", FrameRate::Unit::Microseconds, "the setting is the period in microseconds"},
    {"periods", FrameRate::Unit::Periods, "the setting is the period in units of \"factor\""},
    {"index", FrameRate::Unit::Index, "the setting is an index of \"kHz\""},
};

std::vector<Choice> rateUnits()
{
    std::vector<Choice> choices;
    for (const auto &row : rateUnitRows)
        choices.push_back({row.name, row.description});
    return choices;
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
    rate /= measurementsPerFrame(settings);
    return std::isfinite(rate) && rate > 0.0 ? rate : 0.0;
}

double FrameRate::measurementsPerFrame(const ParameterList &settings) const
{
    double count = divisor.empty() ? 1.0 : numberOf(settings, divisor);
    if (!averageType.empty() && numberOf(settings, averageType) == 3.0)
        count *= 2.0 * (numberOf(settings, averageNumber) + 1.0) + 1.0;
    return count;
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

const ObjectRules &rateRules()
{
    using namespace keys;
    // clang-format off
    static const auto &rules = *new ObjectRules{"rateRule", "a rate rule", {
        {"unit",          optional, oneOf(rateUnits, "rate unit"),      "How the rate follows from the setting"},
        {"parameter",     optional, plainText(),           "Setting that decides on the rate"},
        {"divisor",       optional, plainText(),           "Setting that the rate is divided by"},
        {"averageType",   optional, plainText(),           "Setting for the type of averaging: with the value 3 the rate is divided by 2 (n + 1) + 1"},
        {"averageNumber", optional, plainText(),           "Setting with this n"},
        {"hertz",         optional, number(0.0),           "With the unit \"fixed\": the rate"},
        {"factor",        optional, number(0.0),           "\"periods\": seconds for each unit of the setting; \"Hz\": divides (1)"},
        {"minimum",       optional, number(0.0),           "Lowest rate in Hz (0.001)"},
        {"maximum",       optional, number(0.0),           "Highest rate in Hz (1000000)"},
        {"kHz",           optional, arrayOf(number(0.0)),  "With the unit \"index\": the rate at each value of the setting"},
    }};
    // clang-format on
    return rules;
}

FrameRate readFrameRate(const Node &node)
{
    FrameRate rate;
    ObjectReader reader(node, rateRules());
    std::string unit = rateUnitRows[0].name;
    reader.read("unit", unit);
    for (const auto &row : rateUnitRows) {
        if (unit == row.name)
            rate.unit = row.unit;
    }
    reader.read("parameter", rate.parameter);
    reader.read("divisor", rate.divisor);
    reader.read("averageType", rate.averageType);
    reader.read("averageNumber", rate.averageNumber);
    reader.read("hertz", rate.hertz);
    reader.read("factor", rate.factor);
    reader.read("minimum", rate.minimum);
    reader.read("maximum", rate.maximum);
    if (const Node *table = reader.optional("kHz")) {
        for (const Node &entry : readArray(*table, "\"kHz\""))
            rate.table.push_back(readNumber(entry, "\"kHz\"", 0.0));
    }
    reader.finish();
    return rate;
}

} // namespace sondixsim::model
