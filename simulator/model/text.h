// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace sondixsim::model {

/// Bench files are UTF-8, the C interface is windows-1250. Nothing when a character has no place there.
std::optional<std::string> toWindows1250(std::string_view utf8);

/// The same with "?" for what has no place, for texts that must come through.
std::string toWindows1250Lossy(std::string_view utf8);

/// Bytes that stand for no character become "?".
std::string fromWindows1250(std::string_view text);

} // namespace sondixsim::model
