// SPDX-License-Identifier: MIT
#pragma once

#include <optional>

namespace SondixApp {

/// The error key of the scaled value \a value; nothing for a measured value. Sensors report failed measurements
/// (no target, out of range ...) as values of -1.0e10 and below.
std::optional<int> errorKey(double value);

} // namespace SondixApp
