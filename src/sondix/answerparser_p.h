// SPDX-License-Identifier: MIT
#pragma once

#include <QMap>
#include <QString>
#include <QVariant>

namespace SondixQt {

/// Parses the "key=value" pairs of a sensor's complete answer in one pass.
///
/// Equivalent to a global match of `([^\s"]+)=("(?:[^"\\]++|\\.)*+"|[^"\s]+)`: a key consists of characters other
/// than white space and double quotes, and extends to the last "=" that is followed by a value. A quoted value is
/// a string, without any of its quotes. An unquoted value that contains "." is a double, one that contains "0x" is
/// a string, any other is an int. A later value replaces an earlier one of the same key. A value that cannot be
/// converted removes its key.
QMap<QString, QVariant> parseAllParameters(const QString &answer);

} // namespace SondixQt
