// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

class QCoreApplication;

namespace Explorer {

/// The value of the option --lang among \a arguments; empty if there is none. The texts of the other options need it before
/// the command line is parsed.
QString languageOption(const QStringList &arguments);

/// Loads the texts in \a language, such as "de", or in the language of the system if that is empty. English needs none.
/// Call it before the first window is made.
void installTranslations(QCoreApplication &application, const QString &language);

} // namespace Explorer
