// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sensorinstance.h>

#include <QMap>
#include <QStringList>
#include <QVariant>

namespace SondixApp {

/// The answers to \a command that are bytes. The whole answer is a text and leaves them out.
QStringList binaryAnswers(SondixQt::SensorInstance &instance, const QString &command);

/// Sends \a command once more and returns those of its answers \a names that the sensor gives as bytes.
QMap<QString, QVariant> askBinary(SondixQt::SensorInstance &instance, const QString &command,
                                  const QMap<QString, QVariant> &parameters, const QStringList &names);

} // namespace SondixApp
