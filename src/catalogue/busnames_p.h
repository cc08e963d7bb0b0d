// SPDX-License-Identifier: MIT
#pragma once

#include "constantlist_p.h"

#include <QString>

namespace SondixQt {

/// A part of a reported model name and the type that it means.
struct NamePart
{
    SensorType type;
    const char *text;
};

/// A family of bus sensors, whose names are compared with parts of their own.
struct BusFamily
{
    SensorType type;
    const char *text; ///< in the name of every model of the family
    ConstantList<NamePart> models;
};

/// The bus sensors behind an XA300, by the name that the converter reports. The first part that the name contains
/// decides.
ConstantList<NamePart> converterModels();

/// The families of bus sensors. The first one whose type was reported or whose text is in the name decides; the last
/// one takes every name. Of its models the first part that the name contains decides.
ConstantList<BusFamily> busFamilies();

/// The model that an inertial bus sensor means by the name it reports; other names are returned as
/// they are.
QString busSensorModel(const QString &reportedName);

} // namespace SondixQt
