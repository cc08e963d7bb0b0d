// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sensorinfo.h>
#include <SondixQt/transmitteddatainfo.h>

#include <QByteArray>
#include <QJsonObject>
#include <QMap>
#include <QVariant>

namespace Json {

/// One object on one line, with the line's end.
QByteArray line(const QJsonObject &object);

/// Bytes stand as an object whose "base64" holds them.
QJsonObject ofParameters(const QMap<QString, QVariant> &parameters);
QJsonObject ofModel(SondixQt::SensorType type);
QJsonObject ofFoundSensor(const SondixQt::SensorInfo &info);
/// The data frame; the sample rate is null where \a rateKhz is 0, not known.
QJsonObject ofFrame(const SondixQt::TransmittedDataInfo &frame, double rateKhz);

} // namespace Json
