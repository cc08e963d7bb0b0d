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

/// Whether the sensor that was opened again is the same.
enum class Identity {
    Same,
    Unknown, ///< it does not report a serial number that it has reported before
    Other,
};

/// Compares the serial numbers of the sensors of an instance \a before and \a now; an empty one is not known.
inline Identity compareIdentity(const QStringList &before, const QStringList &now)
{
    const auto isUnknown = [](const QString &number) { return number.isEmpty(); };
    if (std::all_of(before.begin(), before.end(), isUnknown))
        return Identity::Same;
    if (std::all_of(now.begin(), now.end(), isUnknown))
        return Identity::Unknown;
    if (before.size() != now.size())
        return Identity::Other;
    Identity result = Identity::Same;
    for (int i = 0; i < now.size(); ++i) {
        if (isUnknown(before[i]) || before[i] == now[i])
            continue;
        if (!isUnknown(now[i]))
            return Identity::Other;
        result = Identity::Unknown;
    }
    return result;
}

} // namespace SondixQt
