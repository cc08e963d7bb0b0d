// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QCoreApplication>
#include <QString>

namespace Explorer {

class TimePlot;

/// Saves a plot as a picture.
class PlotPicture
{
    Q_DECLARE_TR_FUNCTIONS(Explorer::PlotPicture)
public:
    /// The suffixes of the formats that can be written.
    static QStringList suffixes();
    /// Draws \a plot as it is, with a legend, and returns the content of a file with the suffix of \a path. PNG has the
    /// colours of the screen; documents have dark lines on white. Empty if the picture is too large.
    static QByteArray draw(TimePlot &plot, const QString &path);
    /// Writes \a content, which draw() has returned; may be called in any thread. An existing file is replaced only if
    /// everything has been written. Returns what went wrong; empty: nothing.
    static QString write(const QString &path, const QByteArray &content);
};

} // namespace Explorer
