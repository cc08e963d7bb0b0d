// SPDX-License-Identifier: MIT
#pragma once

#include "recordcolumns.h"

#include <QDateTime>
#include <QJsonObject>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVector>

#include <optional>

namespace SondixApp {

/// What has to be known about a recording years later.
struct RecordHead
{
    QString program;                          ///< name and version of the program
    QString address;                          ///< where the sensor was connected
    QVector<QMap<QString, QVariant>> sensors; ///< what the sensor has reported about itself, one map per sensor
    std::optional<double> rate;               ///< frames per second
    QDateTime start;                   ///< time of the first frame, or of the beginning if that is not known
    std::optional<double> uncertainty; ///< of the times on the clock of the computer, in seconds
    bool isWallClock = false;          ///< the times are on the clock of the computer

    /// One "name: value" a line.
    QStringList lines(const RecordColumns &columns) const;
    QJsonObject toJson(const RecordColumns &columns) const;
};

/// \a time in ISO 8601 with milliseconds and the offset of the time zone of the computer.
QString zonedTime(const QDateTime &time);

} // namespace SondixApp
