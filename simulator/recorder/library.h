// SPDX-License-Identifier: MIT
#pragma once

#include "functions.h"

#include "SondixSimulator/controlcall.h"

#include <string>

namespace sondixrec {

/// The functions of the library that is recorded, which the first call loads. Without one they fail, and GetError()
/// gives the reason. Threads: any.
const Functions &libraryBehind();
/// Its path; empty if there is none.
std::string libraryBehindName();
/// The control function of the simulator; null if the library has none.
SondixSimControlFunction controlBehind();

} // namespace sondixrec
