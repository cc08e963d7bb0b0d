// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QPalette>

namespace Explorer {

/// Whether \a palette is one of light text on a dark background.
bool isDark(const QPalette &palette);

/// The colour of a signal. The first eight differ for people with any kind of colour blindness and have enough contrast to
/// the background of \a palette; further signals take them in turn, lighter or darker.
QColor signalColour(int signal, const QPalette &palette);

} // namespace Explorer
