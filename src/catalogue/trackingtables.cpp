// SPDX-License-Identifier: MIT
#include "trackingtables_p.h"

#include "tablewords_p.h"

#include <algorithm>

namespace SondixQt {

namespace {

constexpr int unknownMode = -1;

// clang-format off

constexpr TrackingMode modesRG52x[] = {
    {0, "DistanceTracking",     yes},
    {1, "DistanceTracking7m",   yes},
    {2, "DistanceTracking10Hz", yes},
    {3, "DistanceTracking50Hz", yes},
    {4, "DistanceTriggered",    yes},
    {5, "DistanceTracking10Hz", no},
    {6, "DistanceTracking10Hz", no},
    {7, "DistanceTracking10Hz", no},
    {8, "DistanceTracking10Hz", no},
};
constexpr TrackingMode modesRG53x[] = {
    {5, "SpeedTracking",        yes},
};

constexpr const char *quietRG52x[] = {"DistanceTracking", "Get_Samplerate"};
constexpr const char *quietRG53x[] = {"SpeedTracking", "DistanceTracking", "Get_Samplerate"};

constexpr TrackingRow trackingRows[] = {
    //                               other               other      asks   best
    // type              modes       command             autostart  again  effort  commands without tracking
    {SensorType::RG52x,  modesRG52x, "",                 2,         no,    yes,    quietRG52x},
    {SensorType::RG53x,  modesRG53x, "DistanceTracking", 2,         yes,   no,     quietRG53x},
};

// clang-format on

static_assert(isAscending(trackingRows, &TrackingRow::type));

const TrackingMode *findMode(const TrackingRow &row, int number)
{
    const auto mode = std::find_if(row.modes.begin(), row.modes.end(),
                                   [number](const TrackingMode &candidate) { return candidate.number == number; });
    return mode == row.modes.end() ? nullptr : mode;
}

} // namespace

const TrackingRow *trackingRow(SensorType type)
{
    return findRow(trackingRows, &TrackingRow::type, type);
}

const char *trackingCommand(const TrackingRow &row, int mode)
{
    const TrackingMode *known = findMode(row, mode);
    return known ? known->command : row.otherCommand;
}

int autostartMode(const TrackingRow &row, int answer)
{
    if (answer == unknownMode && row.asksAgain)
        return unknownMode;
    const TrackingMode *known = findMode(row, answer);
    return known && known->autostart ? answer : row.otherAutostart;
}

} // namespace SondixQt
