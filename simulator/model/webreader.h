// SPDX-License-Identifier: MIT
#pragma once

#include "objectreader.h"
#include "sensorspec.h"

namespace sondixsim::model {

/// Reads what a model or a sensor says about its web interface.
void readWebKeys(ObjectReader &reader, SensorSpec &spec, const std::string &folder);

} // namespace sondixsim::model
