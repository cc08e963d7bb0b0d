// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sensorinstance.h>

#include <memory>

namespace SondixApp {

/// An instance of the class that the model needs.
std::unique_ptr<SondixQt::SensorInstance> createInstance(SondixQt::SensorType type);

/// Why the sensor-access library could not create \a instance, in its words or, where it has none, ours.
QString creationProblem(const SondixQt::SensorInstance &instance);

} // namespace SondixApp
