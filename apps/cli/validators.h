// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>

/// What is wrong with the values of options, in the parser's form: an empty text for nothing.
namespace Validators {

using Check = std::function<std::string(const std::string &)>;

/// Any text but an empty one, which is mostly a variable of a script that is not set.
Check notEmpty();
/// A decimal number of seconds above 0 and at most \a longest.
Check seconds(double longest);
/// A whole number from 1 to \a greatest.
Check count(long long greatest);

} // namespace Validators
