// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

/// The names of the signals of a description, read by code that is compiled with Qt's keywords.
QStringList signalNamesWithKeywords();

/// The same, read by code that is compiled without them.
QStringList signalNamesWithoutKeywords();

/// Whether a class whose signal is declared with the keyword still has a signal.
bool keywordStillDeclaresSignals();
