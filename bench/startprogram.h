// SPDX-License-Identifier: MIT
#pragma once

struct Start
{
    double wallSeconds = 0.0;
    double processorSeconds = 0.0;
    bool succeeded = false;
};

/// Starts a program and waits for its end.
Start start(const char *program);
