// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

/// A long time of the bench's clock in which a sensor at 1 kHz is read, triggered, set to other rates, lost by full
/// rings, and unplugged again and again.
struct WeekPlan
{
    double seconds = 7.0 * 24 * 3600;
    int pulls = 10000;
    quint64 seed = 1;
};

/// Prints what happened; true if every frame is accounted for and the memory has not grown.
bool playWeek(const WeekPlan &plan);
