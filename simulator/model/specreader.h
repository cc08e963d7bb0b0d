// SPDX-License-Identifier: MIT
#pragma once

#include "objectreader.h"
#include "sensorspec.h"

namespace sondixsim::model {

/// Reads the keys that models and sensors have in common; \a spec keeps the values of keys that are absent. File names
/// are relative to \a folder.
void readCommonKeys(ObjectReader &reader, SensorSpec &spec, const std::string &folder);

std::vector<Signal> readSignals(const Node &node, const std::string &folder);

SpecFault readFault(const Node &node);

} // namespace sondixsim::model
