// SPDX-License-Identifier: MIT
#pragma once

#include <QMap>
#include <QString>
#include <QVariant>

#include <optional>

namespace Explorer {

/// Settings by the commands that change them ("Set_Samplerate") and the names of their parameters as answers
/// ("SA_Measrate"). The settings of the second sensor of a multi-sensor have the key "Set_Samplerate#2".
using SensorSettings = QMap<QString, QMap<QString, QVariant>>;

/// A file with the settings of a sensor, in JSON. Values are whole numbers, decimal numbers and texts.
struct ParameterFile
{
    QString model;        ///< short name of the model
    QString serialNumber; ///< for people: settings may be loaded into another sensor of the model
    SensorSettings settings;

    /// Writes the file \a path, or leaves a file of this name as it is and returns false with a message for users.
    bool save(const QString &path, QString *problem) const;
    /// Reads the file \a path. Nothing if it is no such file; \a problem receives a message for users.
    static std::optional<ParameterFile> load(const QString &path, QString *problem);
};

} // namespace Explorer
