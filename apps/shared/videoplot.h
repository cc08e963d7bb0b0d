// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QImage>
#include <QStringList>
#include <QVector>

#include <optional>

namespace SondixApp {

/// The pixels of one video line in the form in which sensors send it: 16 bits each, the low byte first.
/// Nothing when \a data hold no whole number of pixels or none at all.
std::optional<QVector<int>> videoPixels(const QByteArray &data);

/// \a pixels, of which there must be one at least, over their position, from 0 to \a resolution - 1 or, when
/// there is more, to their maximum. Needs no application object and no display.
QImage videoPicture(const QVector<int> &pixels, int resolution);

/// The same as lines of text, \a columns wide and \a rows high without the axes. A column that stands for
/// several pixels shows the highest.
QStringList videoText(const QVector<int> &pixels, int resolution, int columns, int rows);

} // namespace SondixApp
