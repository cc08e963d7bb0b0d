// SPDX-License-Identifier: MIT
#pragma once

#include "constantlist_p.h"

#include <SondixQt/sensortypes.h>

namespace SondixQt {

/// The commands by which a setting is read and written, with the parameter that carries its value.
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
    int offValue; ///< every other value means that the sensor waits for a trigger
};

/// The synchronisation of one model; 0 means off.
struct SyncRow
{
    SensorType type;
    SettingCommands commands;
    bool sharedWithTrigger; ///< one setting serves sync and trigger
    bool hasTermination;    ///< the line's termination is switched off along with it
};

/// One of the modes in which a model can measure.
struct MeasuringMode
{
    const char *name;
    int number; ///< as "SP_MeasureMode" carries it
};

/// The modes of one model.
struct MeasuringModesRow
{
    SensorType type;
    ConstantList<MeasuringMode> modes;
};

/// The modes between which a model and all bus variants of it are switched to measure or to send video.
struct SwitchedModesRow
{
    SensorType model; ///< a base type
    int measuringMode;
    int videoMode;
};

/// The rows of \a type, or null when it has none. Bus variants have none of their base type's rows.
const TriggerRow *triggerRow(SensorType type);
/// \copydoc triggerRow
const SyncRow *syncRow(SensorType type);
/// \copydoc triggerRow
const MeasuringModesRow *measuringModesRow(SensorType type);

/// The row of the base type \a model, or null when it has none.
const SwitchedModesRow *switchedModesRow(SensorType model);

} // namespace SondixQt
