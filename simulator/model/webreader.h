// SPDX-License-Identifier: MIT
#pragma once

#include "objectreader.h"
#include "sensorspec.h"

namespace sondixsim::model {

std::vector<KeyRule> webKeys();
/// Reads the keys of a model or a sensor for the web interface.
void readWebKeys(ObjectReader &reader, SensorSpec &spec, const std::string &folder);

} // namespace sondixsim::model
