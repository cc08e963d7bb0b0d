// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

/// The names of the signals of a description, read by code compiled with Qt's keyword macros.
QStringList signalNamesWithKeywords();

/// The same for code compiled without the keyword macros.
QStringList signalNamesWithoutKeywords();

/// The debug output of a type, of a set of interfaces and of a description in a QVariant.
QString printedWithKeywords();
QString printedWithoutKeywords();

/// Whether moc recognises a signal that is declared with the keyword.
bool keywordStillDeclaresSignals();
