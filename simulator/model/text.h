// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace sondixsim::model {

/// Bench files are UTF-8, texts of the C interface windows-1250. nullopt when a character does not exist there.
std::optional<std::string> toWindows1250(std::string_view utf8);

/// The same with "?" for such characters.
std::string toWindows1250Lossy(std::string_view utf8);

/// Bytes without a character become "?".
std::string fromWindows1250(std::string_view text);

} // namespace sondixsim::model
