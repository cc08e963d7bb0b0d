// SPDX-License-Identifier: MIT
#pragma once

#include "sensorreader.h"

#include <algorithm>

namespace SondixQt {

/// The pauses between the attempts to open a sensor again.
class ReconnectPlan
{
public:
    using Milliseconds = std::chrono::milliseconds;

    explicit ReconnectPlan(const Reconnect &reconnect)
        : options(reconnect)
        , longest(std::clamp(reconnect.longest, shortest, unlimited))
        , pause(std::clamp(reconnect.first, shortest, longest))
    {
    }

    /// The pause before the next attempt, \a elapsed after the sensor was lost; empty if it is to be given up. The last
    /// attempt is made at the end of the time.
    std::optional<Milliseconds> next(Milliseconds elapsed)
    {
        Milliseconds result = pause;
        pause = std::min(pause * 2, longest);
        if (options.giveUpAfter) {
            if (elapsed >= *options.giveUpAfter)
                return std::nullopt;
            result = std::min(result, *options.giveUpAfter - elapsed);
        }
        return result;
    }

private:
    static constexpr Milliseconds shortest{1};
    static constexpr Milliseconds unlimited = std::chrono::hours(24 * 365);

    Reconnect options;
    Milliseconds longest;
    Milliseconds pause;
};

} // namespace SondixQt
