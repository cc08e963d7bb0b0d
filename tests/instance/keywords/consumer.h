// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

/// The names of the signals of a description, read by code that is compiled with Qt's keywords.
QStringList signalNamesWithKeywords();

/// The same, read by code that is compiled without them.
QStringList signalNamesWithoutKeywords();

/// What a type, a set of interfaces and a described frame in a QVariant print as in code of either kind.
QString printedWithKeywords();
QString printedWithoutKeywords();

/// Whether a class whose signal is declared with the keyword still has a signal.
bool keywordStillDeclaresSignals();
