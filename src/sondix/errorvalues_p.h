// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QString>

namespace SondixQt {

/// The error number that the scaled \a value encodes; 0 for a measured value, for NaN and for an error number
/// outside the range of int.
int errorValueKey(double value);

/// Parses the lines "key: text" of \a source and adds them to \a texts. A later line replaces an earlier one with
/// the same key; malformed lines are skipped.
void addErrorValueTexts(const QString &source, QHash<int, QString> &texts);

} // namespace SondixQt
