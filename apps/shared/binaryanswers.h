// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sensorinstance.h>

#include <QMap>
#include <QStringList>
#include <QVariant>

namespace SondixApp {

/// The names of the binary values in the answer to \a command. SensorInstance::sendCommandGetAll() leaves them out.
QStringList binaryAnswers(SondixQt::SensorInstance &instance, const QString &command);

/// Sends \a command and returns those of the values \a names that the sensor sends as bytes.
QMap<QString, QVariant> askBinary(SondixQt::SensorInstance &instance, const QString &command,
                                  const QMap<QString, QVariant> &parameters, const QStringList &names);

} // namespace SondixApp
