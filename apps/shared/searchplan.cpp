// SPDX-License-Identifier: MIT
#include "searchplan.h"

#include <algorithm>
#include <array>
#include <iterator>

using namespace SondixQt;

namespace SondixApp {

namespace {

constexpr int variantStep = 10000;

/// A base type whose search also finds all its variants.
struct Family
{
    SensorType base;
    SensorType alsoFound; ///< another type that the same search finds; NoSensor: none
};

// The colour sensors come first: only their own search reports all addresses of a sensor.
constexpr std::array<Family, 3> families{{
    {HV2, NoSensor},
    {GenericKVBus, CP740},
    {XA300, NoSensor},
}};

// A search for one of these does not scan serial lines.
constexpr std::array<SensorType, 4> interfaceCards{{XA100PCI, XA200PCI, XA100USB, XA200ETH}};

const Family *familyOf(SensorType type)
{
    const auto found = std::find_if(families.begin(), families.end(), [type](const Family &family) {
        return type % variantStep == family.base || type == family.alsoFound;
    });
    return found == families.end() ? nullptr : &*found;
}

bool isInterfaceCard(SensorType type)
{
    return std::find(interfaceCards.begin(), interfaceCards.end(), type) != interfaceCards.end();
}

} // namespace

Searches fewestSearches(const QList<SensorType> &wanted)
{
    Searches searches;
    for (const Family &family : families)
        if (std::any_of(wanted.cbegin(), wanted.cend(),
                        [&family](SensorType type) { return familyOf(type) == &family; }))
            searches.types += family.base;

    QList<SensorType> others;
    std::copy_if(wanted.cbegin(), wanted.cend(), std::back_inserter(others),
                 [](SensorType type) { return !familyOf(type); });
    if (others.isEmpty())
        return searches;
    const auto first = std::find_if_not(others.cbegin(), others.cend(), isInterfaceCard);
    searches.types += first == others.cend() ? others.first() : *first;
    searches.similar = others.size() > 1;
    return searches;
}

QList<SensorType> allSearchedTypes()
{
    // A multi-sensor belongs to no group.
    return sensorsInGroup(AllGroups, true) + QList<SensorType>{MultiSensor};
}

} // namespace SondixApp
