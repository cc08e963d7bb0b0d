// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <ctime>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>

namespace sondixsim::model {

// Functions that differ between operating systems.

/// An environment variable in UTF-8 (elsewhere than on Windows: its bytes); nullopt when it is not set.
std::optional<std::string> environmentVariable(const char *name);

/// The path of a name in UTF-8 (elsewhere than on Windows: its bytes).
std::filesystem::path pathFromUtf8(const std::string &name);

/// The name of a path in UTF-8 (elsewhere than on Windows: its bytes), from the root on; that of the present folder for
/// an empty one.
std::string absoluteUtf8(const std::string &name);

/// The path of a name that is passed to the C interface: on Windows in the 8-bit code page of the system.
std::filesystem::path pathFromNative(const std::string &name);

/// The time of the last write, for comparing files of one system. Its resolution is much better than a second.
std::int64_t lastWritten(const std::filesystem::path &file, std::error_code &error);

std::tm localTime(std::time_t seconds);

} // namespace sondixsim::model
