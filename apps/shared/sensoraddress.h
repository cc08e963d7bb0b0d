// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sensorinfo.h>

#include <QMap>
#include <QString>
#include <QVariant>
#include <QVector>

#include <optional>

namespace SondixApp {

/// An interface parameter and its name in addresses and options.
struct AddressKey
{
    QString name;      ///< such as "port"
    QString parameter; ///< such as "IP_Port"
    bool isText;       ///< the value is always a text; otherwise it is an integer
    int minimum;       ///< minimum of an integer
    int maximum;       ///< maximum of an integer
    QString help;      ///< help text of its option
};

/// All interface parameters with a name of their own, in the order in which an address shows them.
const QVector<AddressKey> &addressKeys();

/// How to reach one sensor: its model and the interface parameters that open it.
///
/// Its text form is "<model>@<interface>,<name>=<value>,...", such as "TX270@RS232,port=COM3,baudrate=115200", and
/// needs no quotes in a shell. Parameters that are not in addressKeys() have the sensor-access library's name.
/// Characters other than letters, digits and a few signs are percent-encoded.
struct SensorAddress
{
    SondixQt::SensorType type = SondixQt::NoSensor;
    QMap<QString, QVariant> parameters;

    /// The address of a sensor that a search has found.
    static SensorAddress of(const SondixQt::SensorInfo &info);
    /// Parses \a text. If it is not an address, returns nothing and an error message in \a problem.
    static std::optional<SensorAddress> parse(const QString &text, QString &problem);

    QString toString() const;
};

/// Converts \a text to a value of the interface parameter \a parameter: a number if it looks like one, unless the
/// parameter is known to be a text.
QVariant parameterValue(const QString &parameter, const QString &text);

/// The error message if \a text is no valid value of the interface parameter \a parameter; empty if it is valid.
QString valueProblem(const QString &parameter, const QString &text);

/// Whether \a text is a list of baud rates: whole numbers separated by commas.
bool isBaudRateList(const QString &text);

/// The interface in the parameter "IP_Interface"; NoInterface if it is missing or unknown.
SondixQt::SensorInterface interfaceOf(const QMap<QString, QVariant> &parameters);

/// The place of a sensor on its interface as shown to users: "COM3", "192.168.0.10", "card 0, channel 1".
QString placeOf(const QMap<QString, QVariant> &parameters);

} // namespace SondixApp
