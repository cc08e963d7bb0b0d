// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace sondixsim::model {

/// Whether a device can have this address: IPv4 or IPv6, with or without a prefix length such as "/16". Not for the
/// unspecified address, broadcast and multicast.
bool isDeviceAddress(std::string_view text);

} // namespace sondixsim::model
