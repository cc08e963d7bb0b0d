// SPDX-License-Identifier: MIT
#pragma once

#include "functions.h"

#include <string>

namespace sondixrec {

/// Makes \a functions answer as the calls in a record were answered. Returns false, with the reason in \a problem, if the
/// record cannot be played. Threads: any.
///
/// Each instance gets the answers of the recorded instance of the same type, in their order: commands and parameters apart
/// from data and from error texts, so that it does not matter how often a program looks for data between two commands.
/// Recorded calls that the program leaves out are skipped. A call that does not come in the rest of the record fails, and
/// when the data are used up there are no more.
bool playRecord(const std::string &file, Functions &functions, std::string &problem);

} // namespace sondixrec
