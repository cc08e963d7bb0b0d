// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sensortypes.h>

namespace SondixQt {

/// The step between the variants of a model in the numbers of the sensor types.
constexpr qint32 variantStep = 10000;

/// The type whose variant \a type is: itself for a model that is none. File, which is no model, has no base type:
/// whoever may hold it must ask for it first.
constexpr SensorType baseType(SensorType type)
{
    return SensorType(type % variantStep);
}

/// Whether \a type is a variant of another one. True for File as well.
constexpr bool isVariant(SensorType type)
{
    return type > variantStep;
}

} // namespace SondixQt
