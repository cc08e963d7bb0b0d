// SPDX-License-Identifier: MIT
#pragma once

#include "objectreader.h"
#include "sensorspec.h"

namespace sondixsim::model {

/// Reads what models and sensors have in common on top of what \a spec holds already. Paths of recorded
/// values are relative to \a folder.
void readCommonKeys(ObjectReader &reader, SensorSpec &spec, const std::string &folder);

std::vector<Signal> readSignals(const Node &node, const std::string &folder);

SpecFault readFault(const Node &node);

} // namespace sondixsim::model
