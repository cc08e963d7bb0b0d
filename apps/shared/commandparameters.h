// SPDX-License-Identifier: MIT
#pragma once

#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <optional>

namespace SondixApp {

/// Whether \a text has the form of the name of a command, a parameter or an answer.
bool isCommandWord(const QString &text);

/// Parses \a words, each of the form "NAME=VALUE". If one is malformed, returns nothing and an error message in
/// \a problem.
///
/// A value that looks like an integer or a decimal number (with a point) is one, anything else is a text. A value in
/// double quotes is always a text; the quotes are removed.
std::optional<QMap<QString, QVariant>> commandParameters(const QStringList &words, QString &problem);

} // namespace SondixApp
