// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QVariant>
#include <QVector>

namespace Explorer {

/// A value that a setting may have, with its name.
struct NamedValue
{
    int value = 0;
    QString name;
};

/// How a setting of a sensor is shown to people.
struct ParameterPresentationEntry
{
    QString name;               ///< such as "Sample rate"
    QString unit;               ///< such as "kHz"; may be empty
    QVector<NamedValue> values; ///< empty if the values have no names
};

/// The presentation of the setting \a answer ("SA_Measrate"). A name that is not known is made from its words:
/// "SA_LaserPower" becomes "Laser power".
ParameterPresentationEntry presentationOf(const QString &answer);

/// The name of a group of settings, for example of the group of the command "Set_DataOutInterface".
QString groupTitle(const QString &writeCommand);

/// \a value with its name or with its unit, as people read it, in the locale.
QString presentedValue(const ParameterPresentationEntry &entry, const QVariant &value);

/// The display name of the parameter \a parameter of a connection or identity, translated; empty if it has none. See
/// SondixQt::friendlyParameterName().
QString friendlyName(const QString &parameter);

/// "AveragingNumber" as "Averaging number". Abbreviations stay as they are: "OutputRS422" becomes "Output RS422".
QString wordsOf(const QString &name);

} // namespace Explorer
