// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

namespace sondixsim::model {

/// Why a file cannot be read: what() does not name the file.
struct InputError : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/// The content of a bench file, or of a file that one names. Throws InputError. Only regular files are read: a pipe may
/// block, a device may never end.
std::string readInputFile(const std::filesystem::path &path);

} // namespace sondixsim::model
