// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

/// The number of heap allocations of this thread since the program started.
std::uint64_t allocationCount();
