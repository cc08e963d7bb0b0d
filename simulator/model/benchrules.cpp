// SPDX-License-Identifier: MIT
#include "benchrules.h"

#include "models.h"
#include "specreader.h"

namespace sondixsim::model {

namespace {

std::vector<Choice> modelChoices()
{
    std::vector<Choice> choices;
    for (const std::string &name : modelNames())
        choices.push_back({name, {}});
    return choices;
}

} // namespace

const ObjectRules &clockRules()
{
    using namespace keys;
    // clang-format off
    static const auto &rules = *new ObjectRules{"clock", "\"clock\"", {
        {"virtual", optional, boolean(),               "true: the clock stands still until a test steps it (false)"},
        {"speed",   optional, number(0.001, 1000.0),   "Speed relative to real time (1)"},
        {"step",    optional, number(1.0e-6, 86400.0), "Seconds by which a virtual clock steps itself when all callers wait (it does not)"},
    }};
    // clang-format on
    return rules;
}

const ObjectRules &searchRules()
{
    using namespace keys;
    // clang-format off
    static const auto &rules = *new ObjectRules{"search", "\"search\"", {
        {"TCP/IP",      optional, number(0.0, 3600.0), "Seconds (0.35)"},
        {"WinUSB",      optional, number(0.0, 3600.0), "Seconds (0.1)"},
        {"DriverX_USB", optional, number(0.0, 3600.0), "Seconds (0.05); no sensor is found there"},
        {"USBIO",       optional, number(0.0, 3600.0), "Seconds (0.05); no sensor is found there"},
        {"RS232",       optional, number(0.0, 3600.0), "Seconds for each baud rate of the search, or twice when it names none (0.15)"},
        {"XA100_USB",   optional, number(0.0, 3600.0), "Seconds (0.1)"},
        {"XA100",       optional, number(0.0, 3600.0), "Seconds (0.1)"},
        {"XA200",       optional, number(0.0, 3600.0), "Seconds (0.1)"},
        {"XA200_ETH",   optional, number(0.0, 3600.0), "Seconds (0.15)"},
        {"bus",         optional, number(0.0, 3600.0), "Seconds in addition, when RS232 is scanned for a bus type (0.4)"},
        {"quickBus",    optional, number(0.0, 3600.0), "The same with the quick scan (0.1)"},
    }};
    // clang-format on
    return rules;
}

const ObjectRules &sensorRules()
{
    using namespace keys;
    constexpr double maxSeconds = 1.0e9;
    static const auto &rules = *[] {
        // clang-format off
        auto *all = new ObjectRules{"sensor", "a sensor", {
            {"model",        required, oneOf(modelChoices, "model"),         "The model, as 'sondixqt models --all' prints it"},
            {"serialNumber", required, word(),                      "Unique text; \"SA_SerialNumber\""},
            {"place",        required, object(placeRules),          "Where it is connected"},
            {"rate",         optional, number(0.0),                 "Frames per second; an error for a rate that the model does not offer (the model's)"},
            {"macAddress",   optional, name(),                      "\"SA_MacAddress\" (made from the serial number)"},
            {"answering",    optional, boolean(),                   "false: it is not found and cannot be opened (true)"},
            {"members",      optional, arrayOf(word()),             "Only for MULTI_SENSOR: serial numbers of the sensors that it stands for"},
            {"recording",    optional, plainText(),                 "File with recorded frames, relative to the bench file; the generators and \"errors\" of the signals are then not used"},
            {"faults",       optional, arrayOf(object(faultRules)), "Faults of calls to this sensor"},
            {"timeline",     optional, arrayOf(object(eventRules)), "What happens to the sensor at certain times"},
            {"expect",       optional, arrayOf(object(expectationRules)), "What is expected of the programs that use the sensor"},
            {"silentAfter",  optional, number(0.0, maxSeconds),     "Seconds of bench time after each opening: from then on the sensor sends no frames (never)"},
            {"unplugAfter",  optional, number(0.0, maxSeconds),     "Seconds of bench time after each opening: then the sensor is unplugged (never)"},
            {"plugAfter",    optional, number(0.0, maxSeconds),     "Seconds of bench time after each opening: then it is plugged in again (never)", nullptr, "unplugAfter"},
        }};
        // clang-format on
        const std::vector<KeyRule> common = commonKeys();
        all->keys.insert(all->keys.begin() + 3, common.begin(), common.end());
        return all;
    }();
    return rules;
}

const ObjectRules &benchRules()
{
    using namespace keys;
    // clang-format off
    static const auto &rules = *new ObjectRules{"bench", "the bench", {
        {"$schema",   optional, plainText(),                  "The schema by which an editor checks this file"},
        {"name",      optional, name(),                       "Name of the bench"},
        {"seed",      optional, whole(0),                     "With a virtual clock the same bench, seed and calls give exactly the same values (1)"},
        {"clock",     optional, object(clockRules),           "The clock of the bench (real)"},
        {"search",    optional, object(searchRules),          "Seconds of bench time that the scan of an interface adds to a search"},
        {"lineSpeed", optional, boolean(),                    "false: lines take no time: calls do not wait for them, and frames arrive however low the baud rate is (true)"},
        {"faults",    optional, arrayOf(object(faultRules)),  "Faults of calls that belong to no certain sensor"},
        {"expect",    optional, arrayOf(object(benchExpectationRules)), "What is expected of the programs that use the bench"},
        {"sensors",   required, arrayOf(object(sensorRules)), "The sensors"},
    }};
    // clang-format on
    return rules;
}

} // namespace sondixsim::model
