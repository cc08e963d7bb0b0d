// SPDX-License-Identifier: MIT
#include "busnames_p.h"

namespace SondixQt {

namespace {

/// The name that a sensor reports on the bus and the name of its model.
struct ReportedName
{
    const char *reported;
    const char *model;
};

// clang-format off

// The order matters: "MV410" must come before "MV4".
constexpr NamePart converterNames[] = {
    {MV410_XA300ETH, "XA300/ETH_MV410"},
    {MV420_XA300ETH, "XA300/ETH_MV420"},
    {MV430_XA300ETH, "XA300/ETH_MV430"},
    {MV4xx_XA300ETH, "XA300/ETH_MV4"},
    {GY330_XA300ETH, "XA300/ETH_GY330"},
    {GY310_XA300ETH, "XA300/ETH_GY310D"},
    {CP740_XA300ETH, "XA300/ETH_CP740"},
    {DVxxx_XA300ETH, "XA300/ETH_DV-"},
};

constexpr NamePart morvikNames[] = {
    {MV410, "MV410"},
    {MV420, "MV420"},
    {MV430, "MV430"},
};

constexpr NamePart otherNames[] = {
    {EC840, "EC840"},
    {EC830, "EC830"},
    {EC850, "EC850"},
    {DVxxx, "DV-"},
};

constexpr BusFamily families[] = {
    {MV4xx,        "MV4", morvikNames},
    {GenericKVBus, "",    otherNames},
};

constexpr ReportedName reportedNames[] = {
    {"GYSENS1_A",   "GY330"},
    {"GYIS1_DYN_B", "GY310D"},
    {"GYIS1_B",     "GY310S"},
};

// clang-format on

} // namespace

ConstantList<NamePart> converterModels()
{
    return converterNames;
}

ConstantList<BusFamily> busFamilies()
{
    return families;
}

QString busSensorModel(const QString &reportedName)
{
    for (const ReportedName &name : reportedNames) {
        if (reportedName == QLatin1String(name.reported))
            return QString::fromLatin1(name.model);
    }
    return reportedName;
}

} // namespace SondixQt
