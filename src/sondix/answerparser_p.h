// SPDX-License-Identifier: MIT
#pragma once

#include <QMap>
#include <QString>
#include <QVariant>

namespace SondixQt {

/// Parses the "key=value" pairs of a sensor's complete answer in one pass.
///
/// Agrees with matching `([^\s"]+)=("(?:[^"\\]++|\\.)*+"|[^"\s]+)` globally: a key is a run of
/// characters that are neither white space nor a double quote and reaches to the last "=" that a
/// value follows. A quoted value loses all its quotes and is a string; else a "." makes it a double,
/// a "0x" a string, and everything else an int. A later value replaces an earlier one of the same
/// key; one that cannot be converted removes it.
QMap<QString, QVariant> parseAllParameters(const QString &answer);

} // namespace SondixQt
