// SPDX-License-Identifier: MIT
#pragma once

#include "constantlist_p.h"

#include <QString>

namespace SondixQt {

/// A part of a reported model name and the type that it identifies.
struct NamePart
{
    SensorType type;
    const char *text;
};

/// A family of bus sensors with the name parts of its models.
struct BusFamily
{
    SensorType type;
    const char *text; ///< contained in the name of every model of the family
    ConstantList<NamePart> models;
};

/// The bus sensors behind an XA300, keyed by a part of the name that the converter reports. The first row whose
/// text the name contains is used.
ConstantList<NamePart> converterModels();

/// The families of bus sensors. The first family whose type was reported, or whose text the name contains, is
/// used; the last one matches every name. Within a family, the first model whose text the name contains is used.
ConstantList<BusFamily> busFamilies();

/// Translates the name that an inertial bus sensor reports into its model name. Other names are returned
/// unchanged.
QString busSensorModel(const QString &reportedName);

} // namespace SondixQt
