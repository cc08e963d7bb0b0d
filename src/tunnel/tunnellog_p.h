// SPDX-License-Identifier: MIT
#pragma once

#include <QLoggingCategory>

namespace SondixQt {

Q_DECLARE_LOGGING_CATEGORY(tunnelLog)

/// A line for each request. Off by default, because a single open page sends a request every second.
Q_DECLARE_LOGGING_CATEGORY(tunnelRequestLog)

} // namespace SondixQt
