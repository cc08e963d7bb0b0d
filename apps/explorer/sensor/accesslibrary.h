// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace Explorer {

/// The file of the sensor-access library "Sondix" that this program has loaded; empty if it cannot be determined.
QString accessLibraryFile();

} // namespace Explorer
