// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace Explorer {

/// A sentence that the library or the code that applications share says in English, in the language of the explorer. A
/// sentence that is not known, such as one of a sensor, is returned as it is.
QString shownText(const QString &english);

} // namespace Explorer
