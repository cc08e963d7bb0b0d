// SPDX-License-Identifier: MIT
#pragma once

#include "console.h"
#include "interruptwatcher.h"
#include "searchoptions.h"

#include <SondixQt/sensorfinder.h>

#include <chrono>
#include <functional>

/// How a search ended.
struct SearchOutcome
{
    enum End {
        Completed, ///< or stopped
        TimedOut,
        Refused, ///< nothing or not everything was searched, see problem
    };
    End end = Completed;
    QString problem;
};

/// Runs a search with a progress bar. It ends when it is complete, on Ctrl-C, at \a timeLimit (0: none), or when
/// \a onFound, which is called for each sensor, returns false.
SearchOutcome runSearch(const SearchRequest &request, Console &console, InterruptWatcher &interrupt,
                        const std::function<bool(const SondixQt::SensorInfo &)> &onFound,
                        std::chrono::milliseconds timeLimit = {});
