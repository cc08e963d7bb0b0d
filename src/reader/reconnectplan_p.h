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
        , pause(std::max(reconnect.first, shortest))
    {
    }

    /// The pause before the next attempt, \a elapsed after the sensor was lost; empty if it is to be given up. The last
    /// attempt is made at the end of the time.
    std::optional<Milliseconds> next(Milliseconds elapsed)
    {
        Milliseconds result = std::min(pause, std::max(options.longest, shortest));
        pause = std::min(pause * 2, std::max(options.longest, shortest));
        if (options.giveUpAfter) {
            if (elapsed >= *options.giveUpAfter)
                return std::nullopt;
            result = std::min(result, *options.giveUpAfter - elapsed);
        }
        return result;
    }

private:
    static constexpr Milliseconds shortest{1};

    Reconnect options;
    Milliseconds pause;
};

} // namespace SondixQt
