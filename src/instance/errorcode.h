// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The result of sensor operations, ErrorCode.

#include <SondixQt/sondixqtnamespace.h>
