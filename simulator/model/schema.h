// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace sondixsim::model {

/// The JSON schema (draft 7) of bench files, by which editors complete and check them. It is made of the rules by which
/// benches are read. It accepts every file that the simulator accepts, and refuses unknown keys, values of a wrong
/// type, out of their range or not among the possible ones. It does not know which settings a model has.
std::string benchSchema();

} // namespace sondixsim::model
