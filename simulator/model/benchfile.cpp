// SPDX-License-Identifier: MIT
#include "bench.h"
#include "models.h"
#include "specreader.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

namespace sondixsim::model {

namespace {

struct ReadSensor
{
    SensorSpec spec;
    int line = 0;
};

SensorSpec readModelName(const Node &node)
{
    const auto found = models().find(readPlainText(node, "\"model\""));
    if (found == models().end())
        throw ParseError(node.line, "there is no model \"" + node.text + '"');
    return found->second;
}

/// A locally administered address, derived from the serial number.
std::string defaultMacAddress(const std::string &serialNumber)
{
    unsigned hash = 2166136261u;
    for (const char c : serialNumber)
        hash = (hash ^ static_cast<unsigned char>(c)) * 16777619u;
    char text[18];
    std::snprintf(text, sizeof text, "02-5D-%02X-%02X-%02X-%02X", hash >> 24, (hash >> 16) & 0xFF,
                  (hash >> 8) & 0xFF, hash & 0xFF);
    return text;
}

void readAfterOpening(ObjectReader &reader, SensorSpec &spec)
{
    constexpr double maxSeconds = 1.0e9;
    const std::pair<const char *, std::optional<double> &> keys[] = {
        {"silentAfter", spec.silentAfter},
        {"unplugAfter", spec.unplugAfter},
        {"plugAfter", spec.plugAfter},
    };
    for (const auto &[key, target] : keys) {
        if (const Node *seconds = reader.optional(key))
            target = readNumber(*seconds, '"' + std::string(key) + '"', 0.0, maxSeconds);
    }
    if (spec.plugAfter && !(spec.unplugAfter < spec.plugAfter && spec.unplugAfter))
        throw ParseError(reader.optional("plugAfter")->line, "\"plugAfter\" must follow \"unplugAfter\"");
}

void readSensorKeys(ObjectReader &reader, SensorSpec &spec)
{
    spec.serialNumber = readText(reader.required("serialNumber"), "\"serialNumber\"");
    spec.place = readPlace(reader.required("place"), spec.bus);
    if (spec.place.interface->network)
        spec.macAddress = defaultMacAddress(spec.serialNumber);
    if (const Node *mac = reader.optional("macAddress"))
        spec.macAddress = readText(*mac, "\"macAddress\"");
    if (const Node *answering = reader.optional("answering"))
        spec.answering = readBool(*answering, "\"answering\"");
    readAfterOpening(reader, spec);
    if (const Node *members = reader.optional("members")) {
        if (!spec.multi)
            throw ParseError(members->line,
                             spec.model + " cannot have members: it does not stand for several sensors");
        for (const Node &member : readArray(*members, "\"members\""))
            spec.members.push_back(readText(member, "a member"));
    }
    if (const Node *faults = reader.optional("faults")) {
        for (const Node &fault : readArray(*faults, "\"faults\""))
            spec.faults.push_back(readFault(fault));
    }
    if (const Node *rate = reader.optional("rate")) {
        const double hertz = readNumber(*rate, "\"rate\"", 0.0);
        if (!spec.tracking.empty())
            throw ParseError(rate->line,
                             "the rate of a " + spec.model + " cannot be set: its tracking command decides");
        const std::string reason = spec.rate.apply(hertz, spec.settings);
        if (!reason.empty())
            throw ParseError(rate->line, reason);
    }
}

ReadSensor readSensor(const Node &node, const std::string &folder)
{
    ObjectReader reader(node, "a sensor");
    ReadSensor sensor{readModelName(reader.required("model")), node.line};
    readCommonKeys(reader, sensor.spec, folder);
    readSensorKeys(reader, sensor.spec);
    reader.finish();
    for (const auto &[key, range] : sensor.spec.limits) {
        const Value *const value = sensor.spec.settings.find(key);
        const auto number = value != nullptr ? toDouble(*value) : std::nullopt;
        if (number && (*number < range.first || *number > range.second)) {
            throw ParseError(node.line, '"' + key + "\" is " + formatDouble(*number) + ", it must be from " +
                                            formatDouble(range.first) + " to " + formatDouble(range.second));
        }
    }
    return sensor;
}

void checkAgainst(const ReadSensor &sensor, const std::vector<ReadSensor> &others)
{
    for (const ReadSensor &other : others) {
        if (other.spec.serialNumber == sensor.spec.serialNumber) {
            throw ParseError(sensor.line, "the serial number \"" + sensor.spec.serialNumber +
                                              "\" is already used in line " + std::to_string(other.line));
        }
        if (other.spec.place.isSameAs(sensor.spec.place)) {
            throw ParseError(sensor.line, "the place " + sensor.spec.place.text() +
                                              " is already taken by the sensor in line " +
                                              std::to_string(other.line));
        }
    }
}

ClockSetting readClock(const Node &node)
{
    ObjectReader reader(node, "\"clock\"");
    ClockSetting clock;
    if (const Node *isVirtual = reader.optional("virtual"))
        clock.isVirtual = readBool(*isVirtual, "\"virtual\"");
    if (const Node *speed = reader.optional("speed"))
        clock.speed = readNumber(*speed, "\"speed\"", 0.001, 1000.0);
    reader.finish();
    return clock;
}

SearchTimes readSearchTimes(const Node &node)
{
    SearchTimes times;
    const std::pair<const char *, double *> keys[] = {
        {"TCP/IP", &times.tcpip}, {"WinUSB", &times.winUsb},     {"DriverX_USB", &times.driverXUsb},
        {"USBIO", &times.usbIo},  {"RS232", &times.rs232},       {"XA100_USB", &times.xa100Usb},
        {"XA100", &times.xa100},  {"XA200", &times.xa200},       {"XA200_ETH", &times.xa200Eth},
        {"bus", &times.bus},      {"quickBus", &times.quickBus},
    };
    ObjectReader reader(node, "\"search\"");
    for (const auto &[key, target] : keys) {
        if (const Node *seconds = reader.optional(key))
            *target = readNumber(*seconds, '"' + std::string(key) + '"', 0.0, 3600.0);
    }
    reader.finish();
    return times;
}

/// The members must exist already. Without signals of its own the sensor has those of its members.
std::shared_ptr<Sensor> makeSensor(ReadSensor &sensor, const Bench &bench)
{
    std::vector<std::shared_ptr<Sensor>> members;
    std::vector<Signal> signals;
    for (const std::string &serialNumber : sensor.spec.members) {
        auto member = bench.find(serialNumber);
        if (!member || member->spec().multi)
            throw ParseError(sensor.line, "there is no sensor \"" + serialNumber + "\" that can be a member");
        const std::vector<Signal> &theirs = member->spec().signals;
        signals.insert(signals.end(), theirs.begin(), theirs.end());
        for (const auto &[key, text] : member->spec().errorTexts)
            sensor.spec.errorTexts.emplace(key, text);
        sensor.spec.polled = sensor.spec.polled || member->spec().polled;
        members.push_back(std::move(member));
    }
    if (sensor.spec.multi && members.empty())
        throw ParseError(sensor.line, "a " + sensor.spec.model + " needs \"members\"");
    if (sensor.spec.signals.empty())
        sensor.spec.signals = std::move(signals);
    return std::make_shared<Sensor>(std::move(sensor.spec), bench.seed, std::move(members));
}

} // namespace

std::shared_ptr<Sensor> Bench::find(const std::string &serialNumber) const
{
    for (const auto &sensor : sensors) {
        if (sensor->spec().serialNumber == serialNumber)
            return sensor;
    }
    return nullptr;
}

void Bench::setPlugged(Sensor &sensor, bool plugged, double now) const
{
    sensor.setPlugged(plugged, now);
    for (const auto &other : sensors) // those that it is a member of
        other->followMembers(now);
}

std::shared_ptr<const Bench> readBench(std::string_view text, const std::string &folder)
{
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (text.substr(0, byteOrderMark.size()) == byteOrderMark)
        text.remove_prefix(byteOrderMark.size());
    const Node root = parseJson(text);
    ObjectReader reader(root, "the bench");
    auto bench = std::make_shared<Bench>();
    if (const Node *name = reader.optional("name"))
        bench->name = readText(*name, "\"name\"");
    if (const Node *seed = reader.optional("seed"))
        bench->seed = static_cast<std::uint64_t>(readInt(*seed, "\"seed\"", 0));
    if (const Node *clock = reader.optional("clock"))
        bench->clock = readClock(*clock);
    if (const Node *times = reader.optional("search"))
        bench->searchTimes = readSearchTimes(*times);
    if (const Node *lineSpeed = reader.optional("lineSpeed"))
        bench->lineSpeed = readBool(*lineSpeed, "\"lineSpeed\"");
    std::vector<ReadSensor> sensors;
    for (const Node &node : readArray(reader.required("sensors"), "\"sensors\"")) {
        ReadSensor sensor = readSensor(node, folder);
        checkAgainst(sensor, sensors);
        sensors.push_back(std::move(sensor));
    }
    reader.finish();

    // Sensors with members are created last; the list keeps the order of the file.
    std::vector<std::shared_ptr<Sensor>> inOrder(sensors.size());
    for (const bool multi : {false, true}) {
        for (std::size_t i = 0; i < sensors.size(); ++i) {
            if (!inOrder[i] && sensors[i].spec.multi == multi) {
                inOrder[i] = makeSensor(sensors[i], *bench);
                bench->sensors.push_back(inOrder[i]);
            }
        }
    }
    bench->sensors = std::move(inOrder);
    return bench;
}

} // namespace sondixsim::model
