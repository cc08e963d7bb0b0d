// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QString>

namespace SondixQt {

/// The key of the error that the scaled \a value stands for; 0 for a measured value and for one that
/// no error can have: not a number, or a key that no int can hold.
int errorValueKey(double value);

/// Adds the texts of \a source, lines "key: text", to \a texts; a later line replaces an earlier one
/// of the same key, and lines of another form are skipped.
void addErrorValueTexts(const QString &source, QHash<int, QString> &texts);

} // namespace SondixQt
