// SPDX-License-Identifier: MIT
#pragma once

#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <optional>

namespace SondixApp {

/// Whether \a text can be the name of a command, a parameter or an answer.
bool isCommandWord(const QString &text);

/// The parameters that \a words, each "NAME=VALUE", stand for; nothing, with a sentence in \a problem, when
/// one of them stands for none.
///
/// A value is an integer or a decimal number (with a point) where it reads as one, else a text. Double quotes
/// around it, which are no part of it, make it a text in any case.
std::optional<QMap<QString, QVariant>> commandParameters(const QStringList &words, QString &problem);

} // namespace SondixApp
