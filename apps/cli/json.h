// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sensorinfo.h>
#include <SondixQt/transmitteddatainfo.h>

#include <QByteArray>
#include <QJsonObject>
#include <QMap>
#include <QVariant>

namespace Json {

/// \a object on one line, with a line feed at the end.
QByteArray line(const QJsonObject &object);

/// Byte arrays become objects with the member "base64".
QJsonObject ofParameters(const QMap<QString, QVariant> &parameters);
QJsonObject ofModel(SondixQt::SensorType type);
QJsonObject ofFoundSensor(const SondixQt::SensorInfo &info);
/// The data frame; the sample rate is null if \a rateKhz is 0, which means unknown.
QJsonObject ofFrame(const SondixQt::TransmittedDataInfo &frame, double rateKhz);

} // namespace Json
