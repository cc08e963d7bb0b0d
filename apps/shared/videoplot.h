// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QImage>
#include <QRect>
#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>

namespace SondixApp {

/// Decodes the pixels of one video line: 16 bits each, little-endian. Nothing if \a data are empty or end within a
/// pixel.
std::optional<QVector<int>> videoPixels(const QByteArray &data);

/// What is written beside the pixels of a line.
struct VideoTexts
{
    QString title;
    QString sensor;
    QString time;
    bool simulated = false;
};

/// Plots \a pixels, at least one, over their position, with numbers at the axes. The vertical axis goes from 0 to
/// \a resolution - 1, or to the maximum of the pixels if that is higher. Needs a QGuiApplication, of any platform.
QImage videoPicture(const QVector<int> &pixels, int resolution, const VideoTexts &texts);
/// Where the picture has the plot, without axes.
QRect videoPlotArea();

/// The pixels as CSV: the texts as lines that begin with "#", the line "pixel,value", and a line for each pixel.
QByteArray videoCsv(const QVector<int> &pixels, const VideoTexts &texts);

/// The same plot as lines of text, \a columns wide and \a rows high without the axes. A column that covers several
/// pixels shows their maximum.
QStringList videoText(const QVector<int> &pixels, int resolution, int columns, int rows);

} // namespace SondixApp
