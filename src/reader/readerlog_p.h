// SPDX-License-Identifier: MIT
#pragma once

#include <QLoggingCategory>

namespace SondixQt {

/// "SondixQt.Reader": what a reader does with its sensor.
Q_DECLARE_LOGGING_CATEGORY(readerLog)

} // namespace SondixQt
