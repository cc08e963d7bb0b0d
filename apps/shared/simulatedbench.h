// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace SondixApp {

/// Has the simulator play the bench in \a file. To be called before anything asks it for a sensor.
void useBench(const QString &file);

} // namespace SondixApp
