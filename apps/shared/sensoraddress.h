// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sensorinfo.h>

#include <QMap>
#include <QString>
#include <QVariant>
#include <QVector>

#include <optional>

namespace SondixApp {

/// An interface parameter under the name that users give it.
struct AddressKey
{
    QString name;      ///< such as "port"
    QString parameter; ///< such as "IP_Port"
    bool isText;       ///< whether its value is a text although it may look like a number; else it is an integer
    int least;         ///< the least value of an integer ...
    int greatest;      ///< ... and the greatest one
    QString help;      ///< what it means
};

/// The interface parameters that have a name of their own, in the order in which an address shows them.
const QVector<AddressKey> &addressKeys();

/// How to reach one sensor: its model and the interface parameters that open it.
///
/// As a text it reads "<model>@<interface>,<name>=<value>,...", such as
/// "TX270@RS232,port=COM3,baudrate=115200", which no shell takes apart. Parameters without a name of
/// their own stand under the sensor-access library's name; other characters than letters, digits and
/// a few signs are percent-encoded.
struct SensorAddress
{
    SondixQt::SensorType type = SondixQt::NoSensor;
    QMap<QString, QVariant> parameters;

    /// The way to the sensor that a search found.
    static SensorAddress of(const SondixQt::SensorInfo &info);
    /// The address that \a text means; nothing, with a sentence in \a problem, when it means none.
    static std::optional<SensorAddress> parse(const QString &text, QString &problem);

    QString toString() const;
};

/// The value of the interface parameter \a parameter that \a text means: a number where it reads as one,
/// unless the parameter is known to be a text.
QVariant parameterValue(const QString &parameter, const QString &text);

/// What is wrong with \a text as the value of the interface parameter \a parameter; empty when nothing is.
QString valueProblem(const QString &parameter, const QString &text);

/// Whether \a text is a list of baud rates to search at: whole numbers with commas between them.
bool isBaudRateList(const QString &text);

/// The interface that \a parameters name in "IP_Interface"; NoInterface when they name none.
SondixQt::SensorInterface interfaceOf(const QMap<QString, QVariant> &parameters);

/// Where on its interface a sensor hangs, in words: "COM3", "192.168.0.10", "card 0, channel 1".
QString placeOf(const QMap<QString, QVariant> &parameters);

} // namespace SondixApp
