// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace sondixsim::model {

/// The bytes as a gzip file without name and time, so that the same bytes give the same file.
std::string gzip(const std::string &bytes);

} // namespace sondixsim::model
