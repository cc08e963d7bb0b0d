// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// What the tool tells the caller with its exit status.
enum class ExitCode {
    Done = 0,
    Failed = 1,
    Usage = 2,
    NothingFound = 3,
    CannotOpen = 4,
    TimedOut = 5,
    Refused = 6,
    DataLost = 7,
    Interrupted = 130,
};

/// Ends a command with one sentence on stderr. Never thrown through an event loop.
struct Failure
{
    ExitCode code;
    QString text;
};
