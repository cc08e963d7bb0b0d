// SPDX-License-Identifier: MIT
#pragma once

#include "sensoraddress.h"

#include <SondixQt/sensorinstance.h>

#include <memory>

namespace SondixApp {

/// An instance of the class that the model needs. Its commands return their own result, whatever the model.
std::unique_ptr<SondixQt::SensorInstance> createInstance(SondixQt::SensorType type);

/// Opens the sensor of \a instance and has the models that measure on their own tell in which mode they
/// do, so that their sample rate is known.
SondixQt::ErrorCode openInstance(SondixQt::SensorInstance &instance, const QMap<QString, QVariant> &parameters,
                                 QString *errorText);

/// The sensor that answers, by what the open \a instance was told when it was opened: \a address, with another model
/// where the sensor's words contradict it, as when several models hang on one bus.
SensorAddress answeringSensor(const SondixQt::SensorInstance &instance, const SensorAddress &address);

/// Why the sensor-access library could not create \a instance, in its words or, where it has none, ours.
QString creationProblem(const SondixQt::SensorInstance &instance);

} // namespace SondixApp
