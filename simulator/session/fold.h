// SPDX-License-Identifier: MIT
#pragma once

#include "journal.h"

namespace sondixsim::session {

/// Leaves out the events and values that later ones have replaced or ended. What is left has the same effect on a bench
/// that begins, also together with the timelines of its sensors, and keeps its numbers, times and order. The last clock
/// also comes first.
std::vector<Journal::Event> folded(std::vector<Journal::Event> events);

} // namespace sondixsim::session
