// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QImage>
#include <QStringList>
#include <QVector>

#include <optional>

namespace SondixApp {

/// Decodes the pixels of one video line: 16 bits each, little-endian. Nothing if \a data are empty or end within a
/// pixel.
std::optional<QVector<int>> videoPixels(const QByteArray &data);

/// Plots \a pixels, at least one, over their position. The vertical axis goes from 0 to \a resolution - 1, or to the
/// maximum of the pixels if that is higher. Needs no application object and no display.
QImage videoPicture(const QVector<int> &pixels, int resolution);

/// The same plot as lines of text, \a columns wide and \a rows high without the axes. A column that covers several
/// pixels shows their maximum.
QStringList videoText(const QVector<int> &pixels, int resolution, int columns, int rows);

} // namespace SondixApp
