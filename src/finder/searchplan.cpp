// SPDX-License-Identifier: MIT
#include "searchplan_p.h"

#include "catalogue/basetype_p.h"
#include "catalogue/searchtables_p.h"

#include <algorithm>
#include <iterator>

namespace SondixQt {

namespace {

// The base types whose search finds all their variants. The colour sensors come first: only their own search reports
// all addresses of a sensor.
constexpr SensorType searchFamilies[] = {HV2, GenericKVBus, XA300};

/// The family whose search finds \a type, or NoSensor.
SensorType familyOf(SensorType type)
{
    const auto family =
        std::find_if(std::begin(searchFamilies), std::end(searchFamilies), [type](SensorType candidate) {
            return baseType(type) == candidate || type == searchRow(candidate).alsoFinds;
        });
    return family == std::end(searchFamilies) ? NoSensor : *family;
}

// Its search does not scan serial lines.
bool isInterfaceCard(SensorType type)
{
    return searchRow(type).card != NoInterface;
}

} // namespace

SearchPlan fewestSearches(const QList<SensorType> &wanted)
{
    SearchPlan plan;
    for (const SensorType family : searchFamilies)
        if (std::any_of(wanted.cbegin(), wanted.cend(),
                        [family](SensorType type) { return familyOf(type) == family; }))
            plan.types += family;

    QList<SensorType> others;
    std::copy_if(wanted.cbegin(), wanted.cend(), std::back_inserter(others),
                 [](SensorType type) { return familyOf(type) == NoSensor; });
    if (others.isEmpty())
        return plan;
    const auto first = std::find_if_not(others.cbegin(), others.cend(), isInterfaceCard);
    plan.types += first == others.cend() ? others.first() : *first;
    plan.similar = others.size() > 1;
    return plan;
}

} // namespace SondixQt
