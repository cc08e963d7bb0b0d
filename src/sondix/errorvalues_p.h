// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QString>

namespace SondixQt {

/// Parses the lines "key: text" of \a source and adds them to \a texts. A later line replaces an earlier one with
/// the same key; malformed lines are skipped.
void addErrorValueTexts(const QString &source, QHash<int, QString> &texts);

} // namespace SondixQt
