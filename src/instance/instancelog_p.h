// SPDX-License-Identifier: MIT
#pragma once

#include <QLoggingCategory>

namespace SondixQt {

/// "SondixQt.SensorInstance": failures of the sensor-access library.
Q_DECLARE_LOGGING_CATEGORY(instanceLog)

} // namespace SondixQt
