// SPDX-License-Identifier: MIT
#include "exitcode.h"
#include "madebench.h"

#include "shared/recordingreader.h"

#include <SondixQt/errorvalue.h>
#include <SondixQt/sensoraddress.h>

#include <algorithm>

using namespace SondixQt;
using namespace SondixApp;

namespace MadeBench {

namespace {

Json valueOf(const QVariant &value)
{
    switch (static_cast<QMetaType::Type>(value.type())) {
    case QMetaType::Int:
        return value.toInt();
    case QMetaType::Double:
        return value.toDouble();
    default:
        return value.toString().toStdString();
    }
}

Json signalOf(const SignalInfo &info, int number)
{
    Json signal = Json::object();
    signal["name"] = info.scaledName.isEmpty() ? "Value " + std::to_string(number) : info.scaledName.toStdString();
    if (!info.rawName.isEmpty())
        signal["rawName"] = info.rawName.toStdString();
    signal["unit"] = info.scaledUnit.toStdString();
    if (!info.rawUnit.isEmpty())
        signal["rawUnit"] = info.rawUnit.toStdString();
    if (info.scaledRangeMin < info.scaledRangeMax)
        signal["range"] = {info.scaledRangeMin, info.scaledRangeMax};
    if (info.rawRangeMin < info.rawRangeMax)
        signal["rawRange"] = {info.rawRangeMin, info.rawRangeMax};
    return signal;
}

void addBlock(Sensor &sensor, const DataBlock &block, RecordingReader &reader, std::optional<qint64> missing)
{
    Values values;
    values.missing = missing;
    for (const double value : block.scaledData()) {
        values.scaled.push_back(value);
        if (!isErrorValue(value) || std::isnan(value))
            continue;
        const QString text = reader.errorText(value);
        if (!text.isEmpty())
            sensor.errorTexts.emplace(errorValueKey(value), text.toStdString());
    }
    values.raw.assign(block.rawData().begin(), block.rawData().end());
    sensor.values.push_back(std::move(values));
}

/// A raw value above its range shows which error value it is, as on every bench.
void nameErrorValues(Sensor &sensor)
{
    constexpr double lowestKey = -1.0e6;
    for (Values &values : sensor.values) {
        for (std::size_t i = 0; i < values.scaled.size() && i < values.raw.size(); ++i) {
            const Json &signal = sensor.frame[i % sensor.frame.size()];
            if (!std::isnan(values.scaled[i]) || !signal.contains("rawRange"))
                continue;
            const double key = signal["rawRange"][1].get<double>() - values.raw[i];
            if (key < 0.0 && key >= lowestKey)
                values.scaled[i] = -1.0e10 + key;
        }
    }
}

/// A file without one of the two forms has been read with the other, or with zeros.
void leaveOutUnknownForms(Sensor &sensor)
{
    const auto all = [&sensor](const auto &holds) {
        return std::all_of(sensor.values.begin(), sensor.values.end(), holds);
    };
    const bool hasNoRaw = all([](const Values &values) {
        return std::all_of(values.raw.begin(), values.raw.end(), [](std::int32_t raw) { return raw == 0; });
    });
    const bool hasNoScaled = !hasNoRaw && all([](const Values &values) {
        return std::equal(values.scaled.begin(), values.scaled.end(), values.raw.begin(), values.raw.end(),
                          [](double scaled, std::int32_t raw) { return scaled == raw; });
    });
    for (Values &values : sensor.values) {
        if (hasNoRaw)
            values.raw.clear();
        if (hasNoScaled)
            values.scaled.clear();
    }
}

} // namespace

Bench ofRecording(const QString &path)
{
    RecordingReader reader(path);
    const auto refuse = [&](const QString &problem) {
        throw Failure{ExitCode::Failed, QStringLiteral("cannot read %1: %2").arg(path, problem)};
    };
    if (!reader.open())
        refuse(reader.problem());
    const RecordHead &head = reader.head();
    const auto address = SensorAddress::parse(head.address);
    if (!address)
        refuse(
            QStringLiteral("its head does not tell where the sensor was connected; 'sondixqt record' writes one"));
    Bench bench;
    bench.sensors.emplace_back();
    Sensor &sensor = bench.sensors.back();
    sensor.type = address->type;
    sensor.model = modelOf(sensor.type);
    Parameters place;
    const QMap<QString, QVariant> &parameters = address->parameters;
    for (auto parameter = parameters.begin(); parameter != parameters.end(); ++parameter)
        place[parameter.key().toStdString()] = valueOf(parameter.value());
    sensor.place = placeOf(place);
    if (sensor.place.is_null() || sensor.model.empty())
        refuse(QStringLiteral("the bench has no sensor like %1").arg(head.address));
    if (head.sensors.size() > 1)
        bench.notes += QStringLiteral("several sensors were read as one: the bench has only the first");
    if (!head.sensors.isEmpty()) {
        for (auto value = head.sensors.first().begin(); value != head.sensors.first().end(); ++value) {
            if (value.key().startsWith(QLatin1String("SA_")))
                sensor.identity[value.key().toStdString()] = valueOf(value.value());
        }
    }
    if (sensor.serialNumber().empty())
        sensor.identity["SA_SerialNumber"] = "recorded-1";
    sensor.rate = head.rate.value_or(0.0);
    for (const SignalInfo &info : reader.frame().signalList())
        sensor.frame.push_back(signalOf(info, static_cast<int>(sensor.frame.size()) + 1));

    std::optional<qint64> missing = 0;
    while (const auto item = reader.next()) {
        if (const auto *gap = std::get_if<DataGap>(&*item)) {
            if (!gap->frames)
                bench.notes += QStringLiteral("a gap of unknown length became one frame long");
            missing = *missing + gap->frames.value_or(1);
        } else {
            addBlock(sensor, std::get<DataBlock>(*item), reader, std::exchange(missing, 0));
        }
    }
    if (!reader.problem().isEmpty())
        refuse(reader.problem());
    if (!reader.warning().isEmpty())
        bench.notes += reader.warning();
    bench.notes.removeDuplicates();
    leaveOutUnknownForms(sensor);
    nameErrorValues(sensor);
    return bench;
}

} // namespace MadeBench
