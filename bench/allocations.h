// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

/// How often this thread has taken memory from the heap since the program began.
std::uint64_t allocationCount();
