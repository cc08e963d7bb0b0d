// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sondixqtnamespace.h>

#include <QMap>
#include <QString>

namespace SondixQt {

/// What the library knows of one model. A plain record: copy and move it freely.
struct SONDIXQT_EXPORT SensorFeatures
{
    SensorType type = NoSensor;       ///< for information; the key in the table counts, and may differ
    qint32 order = 0;                 ///< place in lists; hundreds and tens group the families
    bool hasHelp = false;             ///< answers the request for help
    bool hasGetAllParameters = false; ///< delivers all its settings in one request
    bool hasASCIIProtocol = false;    ///< speaks the ASCII command protocol
    bool hidden = false;              ///< a variant that lists leave out unless asked for
    SensorGroups group = NoGroup;     ///< the families that the model belongs to
    QString name;                     ///< display name
    QString shortName;                ///< short display name
    QString image;                    ///< resource path of the picture
};

/// The features of all models by type, valid and unchanged while the library is loaded. Any thread may read it.
SONDIXQT_EXPORT const QMap<SensorType, SensorFeatures> &getSensorFeatures();

} // namespace SondixQt
