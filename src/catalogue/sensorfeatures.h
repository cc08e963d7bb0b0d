// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sondixqtnamespace.h>

#include <QMap>
#include <QString>

namespace SondixQt {

/// The properties of one model. A plain value type.
struct SONDIXQT_EXPORT SensorFeatures
{
    SensorType type = NoSensor; ///< informative; may differ from the key in the table, which is the type to use
    qint32 order = 0;           ///< sort key in lists; hundreds and tens group the families
    bool hasHelp = false;       ///< supports the help command
    bool hasGetAllParameters = false; ///< can return all its settings in one answer
    bool hasASCIIProtocol = false;    ///< supports the ASCII command protocol
    bool hidden = false;              ///< a variant that lists show only on demand
    SensorGroups group = NoGroup;     ///< the families that the model belongs to
    QString name;                     ///< display name
    QString shortName;                ///< short display name
    QString image;                    ///< resource path of the picture
};

/// The features of all models, keyed by type. The map is constant as long as the library is loaded. Thread-safe.
SONDIXQT_EXPORT const QMap<SensorType, SensorFeatures> &getSensorFeatures();

} // namespace SondixQt
