// SPDX-License-Identifier: MIT
#pragma once

#include "constantlist_p.h"

namespace SondixQt {

/// One of the modes in which a model measures continuously.
struct TrackingMode
{
    int number;
    const char *command; ///< starts it
    bool autostart;      ///< the sensor may start in it by itself
};

/// The tracking of one model.
struct TrackingRow
{
    SensorType type;
    ConstantList<TrackingMode> modes;
    const char *otherCommand; ///< starts every mode that is not listed
    int otherAutostart;       ///< the mode that any other answer to "Get_Autostart" means
    bool asksAgain;           ///< -1 from "Get_Autostart" leaves the mode unknown: the next command asks again
    bool bestEffort;          ///< a failure to restart tracking is not the result of the command before it
    ConstantList<const char *> commandsWithoutTracking; ///< tracking is neither stopped nor restarted around these
};

/// The row of exactly \a type, or null when it does not track.
const TrackingRow *trackingRow(SensorType type);

/// The command that starts \a mode, empty if there is none.
const char *trackingCommand(const TrackingRow &row, int mode);

/// The mode that \a answer to "Get_Autostart" means; -1 if it is unknown.
int autostartMode(const TrackingRow &row, int answer);

} // namespace SondixQt
