// SPDX-License-Identifier: MIT
#pragma once

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
    /// Writes \a plot as it is, with a legend. The format follows from the suffix of \a path. PNG has the colours of the
    /// screen; documents have dark lines on white. An existing file is replaced only if everything has been written.
    /// False and the reason in \a problem otherwise.
    static bool save(TimePlot &plot, const QString &path, QString *problem);
};

} // namespace Explorer
