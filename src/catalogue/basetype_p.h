// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sensortypes.h>

namespace SondixQt {

/// The step between the variants of a model in the numbers of the sensor types.
constexpr qint32 variantStep = 10000;

/// The type of which \a type is a variant; \a type itself if it is none. Not for File, which is no model: check for
/// it first.
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
