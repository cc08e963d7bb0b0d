// SPDX-License-Identifier: MIT
#pragma once

#include "json.h"
#include "sensorspec.h"

namespace sondixsim::model {

/// Checks what a model or a sensor in a file says about parts that it must have: the settings that limits, modes,
/// triggers and rates name, the signals of video lines, the functions of faults. Only what \a node itself says is checked,
/// against the whole \a spec. Throws ParseError with the line of the mistake.
void checkReferences(const Node &node, const SensorSpec &spec);

/// Checks the function and the parameter of a fault. Throws ParseError.
void checkFault(const Node &node, const Fault &fault);

} // namespace sondixsim::model
