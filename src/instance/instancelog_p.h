// SPDX-License-Identifier: MIT
#pragma once

#include <QLoggingCategory>

namespace SondixQt {

/// "SondixQt.SensorInstance": failures of the sensor-access library.
Q_DECLARE_LOGGING_CATEGORY(instanceLog)

/// "SondixQt.SensorInstance.Calls": every opening, closing and command, with its result. Off unless it is enabled.
Q_DECLARE_LOGGING_CATEGORY(instanceCallLog)

} // namespace SondixQt
