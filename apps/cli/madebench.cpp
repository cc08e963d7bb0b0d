// SPDX-License-Identifier: MIT
#include "madebench.h"

#include "exitcode.h"

#include <SondixQt/sensortypes.h>

#include <QDir>
#include <QFileInfo>
#include <QMetaEnum>
#include <QRegularExpression>
#include <QSaveFile>
#include <QSet>

#include <algorithm>
#include <charconv>

namespace MadeBench {

namespace {

/// A key of "place" and the interface parameter that it stands for.
struct PlaceKey
{
    const char *key;
    const char *parameter;
};

struct PlaceRow
{
    const char *interface;
    std::vector<PlaceKey> keys; ///< the first one is required
};

// clang-format off
const std::vector<PlaceRow> placeRows = {
    {"RS232",     {{"port", "IP_Port"}, {"baudrate", "IP_Baudrate"}, {"stopbits", "IP_Stopbits"},
                   {"byteSize", "IP_ByteSize"}, {"parity", "IP_Parity"}, {"busAddress", "IP_SensorAddress"}}},
    {"TCP/IP",    {{"ip", "IP_RemoteAddr"}, {"remotePort", "IP_RemotePort"}, {"dataPort", "IP_DataPort"},
                   {"addressFamily", "IP_AddressFamily"}}},
    {"WinUSB",    {{"device", "IP_DeviceInstance"}}},
    {"XA100",     {{"card", "IP_CardInstance"}, {"channel", "IP_ChannelNumber"}, {"baudrate", "IP_Baudrate"}}},
    {"XA200",     {{"card", "IP_CardInstance"}, {"channel", "IP_ChannelNumber"}, {"baudrate", "IP_Baudrate"},
                   {"parity", "IP_Parity"}}},
    {"XA100_USB", {{"port", "IP_Port"}, {"device", "IP_DeviceInstance"}, {"channel", "IP_ChannelNumber"},
                   {"baudrate", "IP_Baudrate"}, {"parity", "IP_Parity"}}},
    {"XA200_ETH", {{"ip", "IP_RemoteAddr"}, {"remotePort", "IP_RemotePort"}, {"card", "IP_CardInstance"},
                   {"device", "IP_DeviceInstance"}, {"channel", "IP_ChannelNumber"}, {"baudrate", "IP_Baudrate"},
                   {"parity", "IP_Parity"}, {"addressFamily", "IP_AddressFamily"}}},
};
// clang-format on

/// The identity that has a key of its own, and this key.
const std::map<std::string, const char *> identityKeys = {
    {"SA_Sensor", "name"},
    {"SA_ControllerName", "controllerName"},
    {"SA_ArticleNumber", "articleNumber"},
    {"SA_Softwareversion", "firmware"},
    {"SA_MacAddress", "macAddress"},
};

Json faultOf(const Fault &fault)
{
    Json json = Json::object();
    if (fault.command.empty())
        json["function"] = fault.function;
    else
        json["command"] = fault.command;
    json["from"] = fault.from;
    json["times"] = fault.times;
    json["code"] = fault.code;
    if (!fault.text.empty())
        json["text"] = fault.text;
    return json;
}

/// Whether the rate follows from a setting that was recorded.
bool hasRateSetting(const Sensor &sensor)
{
    for (const Json &group : sensor.settings) {
        if (!group.is_object())
            continue;
        for (auto value = group.begin(); value != group.end(); ++value) {
            if (QString::fromStdString(value.key()).contains(QLatin1String("rate"), Qt::CaseInsensitive) ||
                value.key() == "SA_SRIndex")
                return true;
        }
    }
    return false;
}

Json sensorOf(const Sensor &sensor)
{
    Json json = {{"model", sensor.model}, {"serialNumber", sensor.serialNumber()}, {"place", sensor.place}};
    Json info = Json::object();
    for (const auto &[name, value] : sensor.identity) {
        const auto key = identityKeys.find(name);
        if (key != identityKeys.end() && value.is_string()) {
            static const std::string mark = " (simulator)"; // the simulator adds it again
            std::string text = value.get<std::string>();
            if (text.size() > mark.size() && text.compare(text.size() - mark.size(), mark.size(), mark) == 0)
                text.resize(text.size() - mark.size());
            if (!text.empty())
                json[key->second] = text;
        } else if (key == identityKeys.end() && name.rfind("SA_", 0) == 0 && name != "SA_SerialNumber") {
            info[name] = value;
        }
    }
    const auto add = [&json](const char *key, const Json &value) {
        if (!value.empty())
            json[key] = value;
    };
    if (sensor.rate > 0.0 && std::isfinite(sensor.rate) && !hasRateSetting(sensor))
        json["rate"] = sensor.rate;
    add("info", info);
    add("settings", sensor.settings);
    add("answers", sensor.answers);
    add("signals", sensor.frame);
    Json texts = Json::object();
    for (const auto &[key, text] : sensor.errorTexts)
        texts[std::to_string(key)] = text;
    add("errorTexts", texts);
    Json faults = Json::array();
    for (const Fault &fault : sensor.faults)
        faults.push_back(faultOf(fault));
    add("faults", faults);
    return json;
}

void save(const QString &path, const QByteArray &content)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size() || !file.commit())
        throw Failure{ExitCode::Failed, QStringLiteral("cannot write %1: %2").arg(path, file.errorString())};
}

template<typename Number>
void appendCell(QByteArray &line, Number number)
{
    char digits[32];
    line += ',';
    line.append(digits, static_cast<int>(std::to_chars(digits, digits + sizeof digits, number).ptr - digits));
}

/// Frames by which the beginning of \a next is later than expected after \a before.
double delayOf(const Values &before, const Values &next, std::size_t perFrame, double rate)
{
    const std::size_t count = std::max(before.scaled.size(), before.raw.size()) / perFrame;
    const auto frames = static_cast<double>(count);
    return (*next.time - *before.time) * rate - frames;
}

bool haveTimes(const Values &before, const Values &next, double rate)
{
    return !next.isFirst && before.time && next.time && rate > 0.0;
}

/// Times of real sensors are not exact: a delay that is not much longer than the others is no gap.
double shortestGap(const Sensor &sensor, std::size_t perFrame)
{
    double jitter = 0.0;
    for (std::size_t i = 1; i < sensor.values.size(); ++i) {
        if (haveTimes(sensor.values[i - 1], sensor.values[i], sensor.rate))
            jitter = std::max(jitter, -delayOf(sensor.values[i - 1], sensor.values[i], perFrame, sensor.rate));
    }
    return std::max(0.5, 3.0 * jitter);
}

} // namespace

std::string Sensor::serialNumber() const
{
    const auto found = identity.find("SA_SerialNumber");
    if (found == identity.end())
        return {};
    return found->second.is_string() ? found->second.get<std::string>() : found->second.dump();
}

Json placeOf(const Parameters &parameters)
{
    const auto interface = parameters.find("IP_Interface");
    if (interface == parameters.end())
        return nullptr;
    for (const PlaceRow &row : placeRows) {
        if (interface->second != row.interface)
            continue;
        Json place = {{"interface", row.interface}};
        for (const auto &[key, parameter] : row.keys) {
            const auto value = parameters.find(parameter);
            if (value != parameters.end())
                place[key] = value->second;
        }
        const bool isComplete = place.contains(row.keys.front().key) ||
                                row.keys.front().key == std::string("card") ||
                                row.keys.front().key == std::string("device");
        return isComplete ? place : Json();
    }
    return nullptr;
}

std::string modelOf(int type)
{
    const char *const name = QMetaEnum::fromType<SondixQt::SensorType>().valueToKey(type);
    return name != nullptr && type != SondixQt::NoSensor ? name : "";
}

QByteArray valueLines(const Sensor &sensor)
{
    const std::size_t perFrame = sensor.frame.size();
    QByteArray lines = "frame";
    for (const Json &signal : sensor.frame) {
        const QByteArray name = QByteArray::fromStdString(signal.value("name", "")).replace(',', ' ').simplified();
        lines += ',' + name + ',' + name + " raw";
    }
    lines += '\n';
    const double gap = shortestGap(sensor, perFrame);
    qint64 number = 0;
    const Values *before = nullptr;
    for (const Values &values : sensor.values) {
        if (before != nullptr && values.missing) {
            number += *values.missing;
        } else if (before != nullptr && haveTimes(*before, values, sensor.rate)) {
            const double delay = delayOf(*before, values, perFrame, sensor.rate);
            constexpr double longest = 1.0e9; // frames
            number += delay >= gap && delay < longest ? std::llround(delay) : 0;
        }
        const std::size_t frames = std::max(values.scaled.size(), values.raw.size()) / perFrame;
        for (std::size_t frame = 0; frame < frames; ++frame, ++number) {
            lines += QByteArray::number(number);
            for (std::size_t i = frame * perFrame; i < (frame + 1) * perFrame; ++i) {
                if (i < values.scaled.size())
                    appendCell(lines, values.scaled[i]);
                else
                    lines += ',';
                if (i < values.raw.size())
                    appendCell(lines, values.raw[i]);
                else
                    lines += ',';
            }
            lines += '\n';
        }
        before = &values;
    }
    return lines;
}

bool isSameFile(const QString &a, const QString &b)
{
    const QString canonical = QFileInfo(a).canonicalFilePath();
    return !canonical.isEmpty() && canonical == QFileInfo(b).canonicalFilePath();
}

void write(Bench &bench, const QString &path, const QString &input)
{
    const auto refuseInput = [&input](const QString &output) {
        if (isSameFile(output, input))
            throw Failure{
                ExitCode::Usage,
                QStringLiteral("%1 would be overwritten, but the bench is made of it: choose another name")
                    .arg(input)};
    };
    refuseInput(path);
    const QFileInfo file(path);
    QSet<QString> names;
    Json sensors = Json::array();
    for (Sensor &sensor : bench.sensors) {
        Json json = sensorOf(sensor);
        if (!sensor.values.empty() && !sensor.frame.empty()) {
            static const QRegularExpression unusual(QStringLiteral("[^A-Za-z0-9_-]"));
            const QString serial =
                QString::fromStdString(sensor.serialNumber()).replace(unusual, QStringLiteral("_"));
            const QString stem = QStringLiteral("%1-%2").arg(file.completeBaseName(), serial);
            QString name = stem + QStringLiteral(".csv");
            // On Windows names that differ in case alone are the same.
            for (int number = 2; names.contains(name.toLower()); ++number)
                name = QStringLiteral("%1-%2.csv").arg(stem).arg(number);
            names.insert(name.toLower());
            refuseInput(file.dir().filePath(name));
            save(file.dir().filePath(name), valueLines(sensor));
            json["recording"] = name.toStdString();
        }
        sensors.push_back(std::move(json));
    }
    const Json whole = {{"name", file.completeBaseName().toStdString()}, {"sensors", std::move(sensors)}};
    save(path, QByteArray::fromStdString(whole.dump(4, ' ', false, Json::error_handler_t::replace)) + '\n');
}

} // namespace MadeBench
