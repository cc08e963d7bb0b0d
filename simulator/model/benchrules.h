// SPDX-License-Identifier: MIT
#pragma once

#include "rules.h"

namespace sondixsim::model {

/// \name Rules of a bench file
/// Those of the objects in it are beside their readers.
/// \{
const ObjectRules &benchRules();
const ObjectRules &clockRules();
const ObjectRules &searchRules();
const ObjectRules &sensorRules();
/// \}

} // namespace sondixsim::model
