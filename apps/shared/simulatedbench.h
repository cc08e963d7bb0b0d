// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace SondixApp {

/// Makes the simulator load the bench \a file. Call this before the first call of the sensor-access library.
void useBench(const QString &file);

} // namespace SondixApp
