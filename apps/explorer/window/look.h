// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sensorreader.h>

#include <QColor>
#include <QPalette>
#include <QString>

class QLabel;

namespace Explorer {

/// The colours of the windows.
enum class Theme { System, Light, Dark };

/// Gives all windows the colours of \a theme.
void applyTheme(Theme theme);

/// Colours with a meaning, readable on the background of \a palette and distinct for people with red-green colour
/// blindness. They are never used alone: a symbol or a word says the same.
enum class Meaning { Good, Waiting, Problem };
QColor colourOf(Meaning meaning, const QPalette &palette);

/// The symbol and the colour of a state of reading.
QString symbolOf(SondixQt::SensorReader::State state);
QColor colourOf(SondixQt::SensorReader::State state, const QPalette &palette);

/// \a seconds as "00:12:31".
QString shownDuration(double seconds);
/// A rate in Hz such as "2 kHz".
QString shownRate(double hertz);
/// Lets \a label look like a list that has no entries yet, with a hint.
void makePlaceholder(QLabel &label);

} // namespace Explorer
