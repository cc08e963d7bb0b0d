// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <ctime>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>

namespace sondixsim::model {

// Where operating systems differ.

/// An environment variable in UTF-8 (elsewhere than on Windows: its bytes); empty when it is not set.
std::optional<std::string> environmentVariable(const char *name);

/// The path of a name in UTF-8 (elsewhere than on Windows: its bytes).
std::filesystem::path pathFromUtf8(const std::string &name);

/// The path of a name as the C interface takes it: on Windows in the system's 8-bit code page.
std::filesystem::path pathFromNative(const std::string &name);

/// When a file was written last, in units that are the same for all files of a system and fine enough to
/// order files written one after the other.
std::int64_t lastWritten(const std::filesystem::path &file, std::error_code &error);

std::tm localTime(std::time_t seconds);

} // namespace sondixsim::model
