// SPDX-License-Identifier: MIT
#include "modetables_p.h"

namespace SondixQt {

namespace {

// clang-format off

//                                         read                 answer              write                   parameter
constexpr SettingCommands trgMode       = {"Get_Trigger",       "SA_TrgMode",       "Update_Trigger",       "SP_TrgMode"};
constexpr SettingCommands outputMode    = {"Get_Settings",      "SA_OutputMode",    "Set_OutputMode",       "SP_OutputMode"};
constexpr SettingCommands triggerMode   = {"Get_TriggerMode",   "SA_TriggerMode",   "Update_TriggerMode",   "SP_TriggerMode"};
constexpr SettingCommands measureMode   = {"Get_MeasureMode",   "SA_MeasureMode",   "Set_MeasureMode",      "SP_MeasureMode"};
constexpr SettingCommands triggerSource = {"Get_TriggerSource", "SA_TriggerSource", "Update_TriggerSource", "SP_TriggerSource"};
constexpr SettingCommands syncTrgMode   = {"Get_Settings",      "SA_Sync_TrgMode",  "Set_Sync_TrgMode",     "SP_Sync_TrgMode"};
constexpr SettingCommands syncMode      = {"Get_SyncMode",      "SA_SyncMode",      "Set_SyncMode",         "SP_SyncMode"};

constexpr TriggerRow triggerRows[] = {
    // type                    commands       off
    {SensorType::CP710,        trgMode,       0},
    {SensorType::CB910,        trgMode,       0},
    {SensorType::TX240,        outputMode,    0},
    {SensorType::TX250,        outputMode,    0},
    {SensorType::CC430,        triggerMode,   0},
    {SensorType::EC810,        measureMode,   1},
    {SensorType::TX260,        triggerMode,   0},
    {SensorType::CC440,        triggerMode,   0},
    {SensorType::CP730,        trgMode,       0},
    {SensorType::XA300,        trgMode,       0},
    {SensorType::PG110,        triggerMode,   0},
    {SensorType::MC340,        triggerMode,   0},
    {SensorType::QUnit,        triggerMode,   0},
    {SensorType::CC450,        triggerMode,   0},
    {SensorType::TX270,        triggerMode,   0},
    {SensorType::TX280,        triggerMode,   0},
    {SensorType::GenericKVBus, trgMode,       0},
    {SensorType::CC460,        triggerMode,   0},
    {SensorType::CB92xx,       trgMode,       0},
    {SensorType::CC470,        triggerSource, 0},
    {SensorType::CC480,        triggerSource, 0},
    {SensorType::Spessa,       triggerMode,   0},
    {SensorType::TX290,        triggerSource, 0},
    {SensorType::CP750,        trgMode,       0},
    {SensorType::WI610,        triggerSource, 0},
    {SensorType::TX300,        triggerMode,   0},
    {SensorType::TX310,        triggerSource, 0},
    {SensorType::WI620,        triggerSource, 0},
    {SensorType::RG540,        triggerMode,   0},
    {SensorType::CC490,        triggerSource, 0},
    {SensorType::CC495,        triggerSource, 0},
};

constexpr SyncRow syncRows[] = {
    // type              commands     shared termination
    {SensorType::TX220,  syncTrgMode, true,  false},
    {SensorType::CC430,  syncMode,    false, false},
    {SensorType::TX260,  syncMode,    false, true },
    {SensorType::CC440,  syncMode,    false, false},
    {SensorType::PG110,  syncMode,    false, false},
    {SensorType::MC340,  syncMode,    false, false},
    {SensorType::QUnit,  syncMode,    false, false},
    {SensorType::CC450,  syncMode,    false, false},
    {SensorType::CC460,  syncMode,    false, false},
    {SensorType::CC470,  syncMode,    false, false},
    {SensorType::CC480,  syncMode,    false, false},
    {SensorType::Spessa, syncMode,    false, false},
    {SensorType::TX290,  syncMode,    false, false},
    {SensorType::WI610,  syncMode,    false, false},
    {SensorType::TX310,  syncMode,    false, false},
    {SensorType::WI620,  syncMode,    false, false},
    {SensorType::CC490,  syncMode,    false, false},
    {SensorType::CC495,  syncMode,    false, false},
};

constexpr MeasuringMode triangulationModes[] = {
    {"Distance diffuse", 0},
    {"Distance direct",  1},
    {"Thickness",        2},
    {"Video",            3},
};
constexpr MeasuringMode confocalModes[] = {
    {"Distance",    0},
    {"Thickness",   1},
    {"VideoStream", 4},
};

constexpr MeasuringModesRow measuringModesRows[] = {
    // type             modes
    {SensorType::CC430, confocalModes},
    {SensorType::TX260, triangulationModes},
    {SensorType::CC440, confocalModes},
    {SensorType::CC450, confocalModes},
    {SensorType::CC460, confocalModes},
};

constexpr SwitchedModesRow switchedModesRows[] = {
    // model         measuring video
    {SensorType::CC430, 0,     4},
    {SensorType::TX260, 0,     3},
    {SensorType::CC440, 0,     4},
    {SensorType::CC450, 0,     4},
    {SensorType::CC460, 0,     4},
};

// clang-format on

static_assert(isAscending(triggerRows, &TriggerRow::type));
static_assert(isAscending(syncRows, &SyncRow::type));
static_assert(isAscending(measuringModesRows, &MeasuringModesRow::type));
static_assert(isAscending(switchedModesRows, &SwitchedModesRow::model));

} // namespace

const TriggerRow *triggerRow(SensorType type)
{
    return findRow(triggerRows, &TriggerRow::type, type);
}

const SyncRow *syncRow(SensorType type)
{
    return findRow(syncRows, &SyncRow::type, type);
}

const MeasuringModesRow *measuringModesRow(SensorType type)
{
    return findRow(measuringModesRows, &MeasuringModesRow::type, type);
}

const SwitchedModesRow *switchedModesRow(SensorType model)
{
    return findRow(switchedModesRows, &SwitchedModesRow::model, model);
}

} // namespace SondixQt
