// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sensortypes.h>

#include <QMap>

namespace SondixQt {

/// The kind of web interface that a model offers.
enum WebInterface : qint32 {
    NoWebInterface = 0,
    NativeWebInterface = 1,
    SerialWebInterface = 2,
};

/// What the library knows of one model.
struct SONDIXQT_EXPORT SensorFeatures
{
    SensorType type = NoSensor;
    qint32 order = 0;
    bool hasHelp = false;
    bool hasGetAllParameters = false;
    bool hasASCIIProtocol = false;
    bool hidden = false;
    SensorGroups group = NoGroup;
    QString name;
    QString shortName;
    QString image;
};

/// The features of all models, valid while the library is loaded. Any thread may read it.
SONDIXQT_EXPORT const QMap<SensorType, SensorFeatures> &getSensorFeatures();

} // namespace SondixQt
