// SPDX-License-Identifier: MIT
#pragma once

#include "sensorfeatures.h"

namespace SondixQt {

/// The types that offer a web interface; a type that is not in it has none.
const QMap<SensorType, WebInterface> &webInterfaceTable();

} // namespace SondixQt
