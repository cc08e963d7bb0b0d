// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sensortypes.h>

namespace SondixQt {

/// The type of a variant is the type of its model plus a multiple of this.
constexpr qint32 variantStep = 10000;

/// The model that \a type is a variant of, or \a type itself if it is not a variant. Do not call it for File,
/// which is not a model.
constexpr SensorType baseType(SensorType type)
{
    return SensorType(type % variantStep);
}

/// Whether \a type is a variant of a model. Also true for File.
constexpr bool isVariant(SensorType type)
{
    return type > variantStep;
}

} // namespace SondixQt
