// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// The exit codes of the tool.
enum class ExitCode {
    Done = 0,
    Failed = 1,
    Usage = 2,
    NothingFound = 3,
    CannotOpen = 4,
    TimedOut = 5,
    Refused = 6,
    DataLost = 7,
    NotMet = 8,
    Interrupted = 130,
};

/// An exception that ends a command with an error message on stderr. Never thrown through an event loop.
struct Failure
{
    ExitCode code;
    QString text;
};
