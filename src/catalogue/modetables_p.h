// SPDX-License-Identifier: MIT
#pragma once

#include "constantlist_p.h"

#include <SondixQt/sensortypes.h>

namespace SondixQt {

/// The commands that read and write a setting, with the parameters that carry its value.
struct SettingCommands
{
    const char *getCommand;
    const char *getParameter;
    const char *setCommand;
    const char *setParameter;
};

/// The trigger of one model.
struct TriggerRow
{
    SensorType type;
    SettingCommands commands;
    int offValue; ///< with any other value the sensor waits for a trigger
};

/// The synchronisation of one model. The value 0 switches it off.
struct SyncRow
{
    SensorType type;
    SettingCommands commands;
    bool sharedWithTrigger; ///< sync and trigger are the same setting
    bool hasTermination;    ///< the line termination is switched off together with sync
};

/// A measuring mode of a model.
struct MeasuringMode
{
    const char *name;
    int number; ///< the value of "SP_MeasureMode"
};

/// The measuring modes of one model.
struct MeasuringModesRow
{
    SensorType type;
    ConstantList<MeasuringMode> modes;
};

/// The values of "SP_MeasureMode" that switch a model and all its bus variants to measuring and to video.
struct SwitchedModesRow
{
    SensorType model; ///< a base type
    int measuringMode;
    int videoMode;
};

/// The row of exactly \a type, or null if it has none. A bus variant does not inherit the row of its base type.
const TriggerRow *triggerRow(SensorType type);
/// \copydoc triggerRow
const SyncRow *syncRow(SensorType type);
/// \copydoc triggerRow
const MeasuringModesRow *measuringModesRow(SensorType type);

/// The row of the base type \a model, or null if it has none.
const SwitchedModesRow *switchedModesRow(SensorType model);

} // namespace SondixQt
