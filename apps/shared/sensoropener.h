// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sensoraddress.h>
#include <SondixQt/sensorinstance.h>

namespace SondixApp {

/// Opens the sensor of \a instance. For the models that measure on their own it also reads their mode, on which the
/// sample rate depends.
SondixQt::ErrorCode openInstance(SondixQt::SensorInstance &instance, const QMap<QString, QVariant> &parameters,
                                 QString *errorText);

/// The address of the sensor that has answered the opening of \a instance: \a address, with another model if the sensor
/// reports another one, as on a bus with several models.
SondixQt::SensorAddress answeringSensor(const SondixQt::SensorInstance &instance,
                                        const SondixQt::SensorAddress &address);

/// The reason why the sensor-access library could not create \a instance: its error text, or ours if it has none.
QString creationProblem(const SondixQt::SensorInstance &instance);

} // namespace SondixApp
