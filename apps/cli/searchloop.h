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

/// Runs a search with a progress bar. It ends when it is complete, on Ctrl-C, after \a seconds (0: no limit), or when
/// \a onFound, which is called for each sensor, returns false.
SearchOutcome runSearch(const SondixApp::SearchRun::Plan &plan, Console &console, InterruptWatcher &interrupt,
                        const std::function<bool(const SondixQt::SensorInfo &)> &onFound, double seconds = 0.0);
