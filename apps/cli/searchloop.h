// SPDX-License-Identifier: MIT
#pragma once

#include "console.h"
#include "interruptwatcher.h"

#include "shared/searchrun.h"

#include <functional>

/// How a search ended.
struct SearchOutcome
{
    SondixApp::SearchRun::End end = SondixApp::SearchRun::Completed;
    bool timedOut = false;
    QString problem;
};

/// Searches with a progress bar until the search has ended, Ctrl-C or \a seconds (0: no limit) end it or
/// \a onFound, called for each sensor, returns false.
SearchOutcome runSearch(const SondixApp::SearchRun::Plan &plan, Console &console, InterruptWatcher &interrupt,
                        const std::function<bool(const SondixQt::SensorInfo &)> &onFound, double seconds = 0.0);
