// SPDX-License-Identifier: MIT
#pragma once

#include "sensorfeatures.h"

namespace SondixQt {

/// The web interfaces of the types that have one.
const QMap<SensorType, WebInterface> &webInterfaceTable();

} // namespace SondixQt
