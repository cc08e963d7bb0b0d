// SPDX-License-Identifier: MIT
#pragma once

#include <optional>

namespace SondixApp {

/// The key of the error that the scaled value \a value stands for; nothing for a measured value.
/// Sensors report failed measurements (no target, out of range ...) as values of -1.0e10 and below.
std::optional<int> errorKey(double value);

} // namespace SondixApp
