// SPDX-License-Identifier: MIT
#pragma once

#include "objectreader.h"
#include "sensorspec.h"

namespace sondixsim::model {

std::vector<KeyRule> modeKeys();
/// Reads the keys of a model or a sensor for measuring modes, trigger and video.
void readModeKeys(ObjectReader &reader, SensorSpec &spec, const std::string &folder);

} // namespace sondixsim::model
