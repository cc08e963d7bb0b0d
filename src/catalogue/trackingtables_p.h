// SPDX-License-Identifier: MIT
#pragma once

#include "constantlist_p.h"

namespace SondixQt {

/// A mode in which a model measures continuously.
struct TrackingMode
{
    int number;
    const char *command; ///< starts it
    bool autostart;      ///< "Get_Autostart" may answer with this mode
};

/// The tracking of one model.
struct TrackingRow
{
    SensorType type;
    ConstantList<TrackingMode> modes;
    const char *otherCommand; ///< starts any mode that is not listed
    int otherAutostart;       ///< the mode for any other answer to "Get_Autostart"
    bool asksAgain;           ///< the answer -1 leaves the mode unknown: the next command asks again
    bool bestEffort;          ///< a failure to restart tracking is not returned
    ConstantList<const char *> commandsWithoutTracking; ///< they neither stop nor restart tracking
};

/// The row of exactly \a type, or null if it has no tracking modes.
const TrackingRow *trackingRow(SensorType type);

/// The command that starts \a mode; empty if there is none.
const char *trackingCommand(const TrackingRow &row, int mode);

/// The mode for the \a answer to "Get_Autostart"; -1 if it is unknown.
int autostartMode(const TrackingRow &row, int answer);

} // namespace SondixQt
