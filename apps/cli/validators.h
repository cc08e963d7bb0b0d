// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <optional>
#include <string>

/// Checks of option values as the parser takes them: they return an error message, or an empty text for a valid value.
namespace Validators {

using Check = std::function<std::string(const std::string &)>;

/// Any text that is not empty: an empty value usually comes from an unset variable in a script.
Check notEmpty();
/// A decimal number of seconds above 0 and at most \a maximum.
Check seconds(double maximum);
/// A number of bytes: a whole number above 0, with k, M or G for 10^3, 10^6 or 10^9.
Check size();
/// The number of bytes that \a text means, which size() accepts; nothing for any other text.
std::optional<long long> sizeOf(const std::string &text);
/// A whole number from 1 to \a maximum.
Check count(long long maximum);

} // namespace Validators
