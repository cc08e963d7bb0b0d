// SPDX-License-Identifier: MIT
#include "bench.h"
#include "benchrules.h"
#include "command.h"
#include "models.h"
#include "settings.h"
#include "speccheck.h"
#include "specreader.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <unordered_map>

namespace sondixsim::model {

namespace {

struct ReadSensor
{
    SensorSpec spec;
    int line = 0;
};

SensorSpec readModelName(const Node &node)
{
    const SensorSpec *const found = modelNamed(readPlainText(node, "\"model\""));
    if (found == nullptr)
        throw ParseError(node.line, "there is no model \"" + node.text + '"');
    return *found;
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
    reader.read("silentAfter", spec.silentAfter);
    reader.read("unplugAfter", spec.unplugAfter);
    reader.read("plugAfter", spec.plugAfter);
    if (spec.plugAfter && !(spec.unplugAfter < spec.plugAfter && spec.unplugAfter))
        throw ParseError(reader.optional("plugAfter")->line, "\"plugAfter\" must follow \"unplugAfter\"");
}

void checkPlace(const SensorSpec &spec, int line)
{
    const char *const name = spec.place.interface->name;
    const auto has = [](const auto &list, const auto &value) {
        return std::find(list.begin(), list.end(), value) != list.end();
    };
    if (!spec.interfaces.empty() && !has(spec.interfaces, name))
        throw ParseError(line, "a " + spec.model + " cannot be connected to " + name + ", only to " +
                                   spec.interfaces.front());
    const Value *const baudrate = spec.place.parameters.find("IP_Baudrate");
    if (spec.web.present && baudrate != nullptr && !has(spec.web.baudrates, toInt(*baudrate).value_or(0)))
        throw ParseError(line, "a " + spec.model + " has no baud rate " + toText(*baudrate));
}

void readSensorKeys(ObjectReader &reader, SensorSpec &spec)
{
    reader.read("serialNumber", spec.serialNumber);
    const Node &place = reader.required("place");
    spec.place = readPlace(place, spec.bus);
    checkPlace(spec, place.line);
    if (spec.place.interface->network)
        spec.macAddress = defaultMacAddress(spec.serialNumber);
    reader.read("macAddress", spec.macAddress);
    reader.read("answering", spec.answering);
    readAfterOpening(reader, spec);
    if (const Node *members = reader.optional("members")) {
        if (!spec.multi)
            throw ParseError(members->line,
                             spec.model + " cannot have members: it does not stand for several sensors");
        for (const Node &member : readArray(*members, "\"members\""))
            spec.members.push_back(readName(member, "a member", true));
    }
    if (const Node *faults = reader.optional("faults")) {
        for (const Node &fault : readArray(*faults, "\"faults\""))
            spec.faults.push_back(readFault(fault));
    }
    if (const Node *timeline = reader.optional("timeline"))
        spec.timeline = readTimeline(*timeline);
    if (const Node *expectations = reader.optional("expect"))
        spec.expectations = readExpectations(*expectations, true);
    double hertz = 0.0;
    if (reader.read("rate", hertz)) {
        const int line = reader.required("rate").line;
        if (!spec.tracking.empty())
            throw ParseError(line, "the rate of a " + spec.model + " cannot be set: its tracking command decides");
        const std::string reason = spec.rate.apply(hertz, spec.settings);
        if (!reason.empty())
            throw ParseError(line, reason);
    }
}

/// The value of a setting, which it must be able to have, in the type of the sensor's own.
Value checkedSetting(const SensorSpec &spec, const Settings &settings, const std::string &name,
                     const Value &wanted, int line)
{
    if (settings.find(name) == nullptr)
        throw ParseError(line, "a " + spec.model + " has no setting \"" + name + '"');
    Value value;
    const Outcome outcome = settings.check(name, name, wanted, value);
    if (!outcome.ok())
        throw ParseError(line, outcome.text);
    return value;
}

/// Converts the settings of events to the types of the sensor's own.
void checkTimeline(SensorSpec &spec)
{
    const Settings settings(spec);
    for (TimelineEvent &event : spec.timeline) {
        ParameterList converted;
        for (const Parameter &setting : event.settings)
            converted.set(setting.name, checkedSetting(spec, settings, setting.name, setting.value, event.line));
        event.settings = std::move(converted);
        if (event.kind == TimelineEvent::Kind::Trigger && spec.triggerParameter.empty())
            throw ParseError(event.line, "a " + spec.model + " has no trigger");
    }
}

/// Converts the settings of expectations likewise.
void checkExpectedSettings(SensorSpec &spec)
{
    const Settings settings(spec);
    for (SpecExpectation &expectation : spec.expectations) {
        if (!expectation.setting.empty())
            expectation.value =
                checkedSetting(spec, settings, expectation.setting, expectation.value, expectation.line);
    }
}

ReadSensor readSensor(const Node &node, const std::string &folder)
{
    ObjectReader reader(node, sensorRules());
    ReadSensor sensor{readModelName(reader.required("model")), node.line};
    readCommonKeys(reader, sensor.spec, folder);
    readSensorKeys(reader, sensor.spec);
    if (const Node *recording = reader.optional("recording"))
        sensor.spec.recording = readRecording(*recording, folder, sensor.spec.signals);
    reader.finish();
    checkReferences(node, sensor.spec);
    checkTimeline(sensor.spec);
    checkExpectedSettings(sensor.spec);
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

/// Checks that no two sensors have the same serial number or place.
class Uniqueness
{
public:
    void add(const ReadSensor &sensor)
    {
        const auto [number, isNew] = m_serialNumbers.emplace(sensor.spec.serialNumber, sensor.line);
        if (!isNew) {
            throw ParseError(sensor.line, "the serial number \"" + sensor.spec.serialNumber +
                                              "\" is already used in line " + std::to_string(number->second));
        }
        for (const std::string &identity : sensor.spec.place.identities()) {
            const auto [place, isFree] = m_places.emplace(identity, sensor.line);
            if (!isFree) {
                throw ParseError(sensor.line, "the place " + sensor.spec.place.text() +
                                                  " is already taken by the sensor in line " +
                                                  std::to_string(place->second));
            }
        }
    }

private:
    std::unordered_map<std::string, int> m_serialNumbers; // with their lines
    std::unordered_map<std::string, int> m_places;
};

ClockSetting readClock(const Node &node)
{
    ObjectReader reader(node, clockRules());
    ClockSetting clock;
    reader.read("virtual", clock.isVirtual);
    reader.read("speed", clock.speed);
    const Node *const step = reader.optional("step");
    reader.read("step", clock.step);
    reader.finish();
    if (step != nullptr && !clock.isVirtual)
        throw ParseError(step->line, "\"step\" is for a virtual clock: \"virtual\" must be true");
    return clock;
}

SearchTimes readSearchTimes(const Node &node)
{
    SearchTimes times;
    ObjectReader reader(node, searchRules());
    reader.read("TCP/IP", times.tcpip);
    reader.read("WinUSB", times.winUsb);
    reader.read("DriverX_USB", times.driverXUsb);
    reader.read("USBIO", times.usbIo);
    reader.read("RS232", times.rs232);
    reader.read("XA100_USB", times.xa100Usb);
    reader.read("XA100", times.xa100);
    reader.read("XA200", times.xa200);
    reader.read("XA200_ETH", times.xa200Eth);
    reader.read("bus", times.bus);
    reader.read("quickBus", times.quickBus);
    reader.finish();
    return times;
}

/// The time of the lines to which the sensors of a bench are connected.
class Lines
{
public:
    std::shared_ptr<LineTime> at(const Place &place)
    {
        const Value *const port = place.parameters.find("IP_Port");
        if (port == nullptr || place.interface->hardware != ScanHardware::Rs232)
            return std::make_shared<LineTime>();
        auto &line = m_lines[toText(*port)];
        if (!line)
            line = std::make_shared<LineTime>();
        return line;
    }

private:
    std::unordered_map<std::string, std::shared_ptr<LineTime>> m_lines; // by port
};

/// The members must exist already. Without signals of its own the sensor has those of its members.
std::shared_ptr<Sensor> makeSensor(ReadSensor &sensor, const Bench &bench, Lines &lines)
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
    auto lineTime = lines.at(sensor.spec.place);
    auto made =
        std::make_shared<Sensor>(std::move(sensor.spec), bench.seed, std::move(members), std::move(lineTime));
    const auto checkCommand = [&made](const std::string &command, int line) {
        if (!command.empty() && !made->knows(command))
            throw ParseError(line, "a " + made->spec().model + " does not know the command \"" + command + '"');
    };
    for (const SpecFault &fault : made->spec().faults)
        checkCommand(fault.fault.command, fault.line);
    for (const SpecExpectation &expectation : made->spec().expectations)
        checkCommand(expectation.calls.command, expectation.line);
    for (const TimelineEvent &event : made->spec().timeline)
        checkCommand(event.call ? event.call->command : std::string(), event.line);
    return made;
}

/// Throws for a command that neither the library nor a sensor of the bench knows.
void checkCommands(const std::vector<std::pair<std::string, int>> &commands, const Bench &bench)
{
    for (const auto &command : commands) {
        const std::string &name = command.first;
        const auto knowsIt = [&name](const auto &sensor) { return sensor->knows(name); };
        if (!name.empty() && findHandleCommand(name, true) == nullptr &&
            findHandleCommand(name, false) == nullptr &&
            std::none_of(bench.sensors.begin(), bench.sensors.end(), knowsIt))
            throw ParseError(command.second, "no sensor of the bench knows the command \"" + name + '"');
    }
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

void Bench::setLineSpeed(bool on, double now) const
{
    for (const auto &sensor : sensors)
        sensor->limitByLine(on, now);
}

std::shared_ptr<const Bench> readBench(std::string_view text, const std::string &folder)
{
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (text.substr(0, byteOrderMark.size()) == byteOrderMark)
        text.remove_prefix(byteOrderMark.size());
    const Node root = parseJson(text);
    ObjectReader reader(root, benchRules());
    auto bench = std::make_shared<Bench>();
    std::string schema; // for editors only
    reader.read("$schema", schema);
    reader.read("name", bench->name);
    reader.read("seed", bench->seed);
    if (const Node *clock = reader.optional("clock"))
        bench->clock = readClock(*clock);
    if (const Node *times = reader.optional("search"))
        bench->searchTimes = readSearchTimes(*times);
    reader.read("lineSpeed", bench->lineSpeed);
    std::vector<std::pair<std::string, int>> commands; // with their lines
    if (const Node *faults = reader.optional("faults")) {
        for (const Node &fault : readArray(*faults, "\"faults\"")) {
            const SpecFault read = readFault(fault);
            checkFault(fault, read.fault);
            bench->faults.push_back(read.fault);
            commands.emplace_back(read.fault.command, read.line);
        }
    }
    if (const Node *expectations = reader.optional("expect"))
        bench->expectations = readExpectations(*expectations, false);
    for (const SpecExpectation &expectation : bench->expectations)
        commands.emplace_back(expectation.calls.command, expectation.line);
    std::vector<ReadSensor> sensors;
    Uniqueness uniqueness;
    for (const Node &node : readArray(reader.required("sensors"), "\"sensors\"")) {
        ReadSensor sensor = readSensor(node, folder);
        uniqueness.add(sensor);
        sensors.push_back(std::move(sensor));
    }
    reader.finish();

    // Sensors with members are created last; the list keeps the order of the file.
    Lines lines;
    std::vector<std::shared_ptr<Sensor>> inOrder(sensors.size());
    for (const bool multi : {false, true}) {
        for (std::size_t i = 0; i < sensors.size(); ++i) {
            if (!inOrder[i] && sensors[i].spec.multi == multi) {
                inOrder[i] = makeSensor(sensors[i], *bench, lines);
                bench->sensors.push_back(inOrder[i]);
            }
        }
    }
    bench->sensors = std::move(inOrder);
    bench->setLineSpeed(bench->lineSpeed, 0.0);
    checkCommands(commands, *bench);
    return bench;
}

} // namespace sondixsim::model
