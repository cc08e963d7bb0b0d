// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sensorinstance.h>
#include <SondixQt/sensorreader.h>

#include <QMap>
#include <QPair>
#include <QStringList>
#include <QVector>

#include <optional>

namespace Explorer {

/// What is known of the video of a sensor.
struct VideoState
{
    QMap<int, QString> available; ///< names of the signals by position
    QMap<int, QString> enabled;
    QStringList answers;      ///< those of the enabled signals, in their order; empty: they are not transmitted
    bool isSupported = false; ///< over the interface of the sensor
    bool isVideoMode = false;
    bool isStreamMode = false; ///< measured values are sent besides
    int pixels = 0;
    int resolution = 0;
    std::optional<double> threshold;             ///< in the units of pixel values
    std::optional<QPair<double, double>> region; ///< in pixels
};

/// \name Work with a sensor, in the thread of its reader
/// \{

/// Reads all of \a state.
SondixQt::CommandResult readVideoState(SondixQt::SensorInstance &instance, VideoState &state);
/// Switches to video or to measured values.
SondixQt::CommandResult setVideoMode(SondixQt::SensorInstance &instance, bool on, VideoState &state);
SondixQt::CommandResult setVideoSignal(SondixQt::SensorInstance &instance, int position, bool on,
                                       VideoState &state);
/// Fetches one line of each of the answers \a names.
SondixQt::CommandResult fetchVideo(SondixQt::SensorInstance &instance, const QStringList &names,
                                   QVector<QVector<int>> &lines);
/// \}

/// The number in the answer to a command for a threshold.
std::optional<double> thresholdOf(const QMap<QString, QVariant> &answer);
/// Beginning and end in the answer to a command for a region.
std::optional<QPair<double, double>> regionOf(const QMap<QString, QVariant> &answer);

} // namespace Explorer
