// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

namespace Explorer {

/// The main memory of this computer in bytes; 0 if it cannot be determined.
qint64 computerMemory();

} // namespace Explorer
