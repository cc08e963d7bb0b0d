// SPDX-License-Identifier: MIT
#pragma once

#include "requestreader.h"
#include "SondixSimulator/control.h"

namespace sondixsim::capi {

/// A fault with the members that the struct Fault has, in JSON. Its texts become windows-1250.
Fault readFault(RequestReader &request);

/// The same members, those that are set.
json faultMembers(const Fault &fault);

} // namespace sondixsim::capi
