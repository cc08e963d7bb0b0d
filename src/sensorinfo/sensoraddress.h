// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/interfaceparameters.h>
#include <SondixQt/sensortypes.h>

#include <QMap>
#include <QMetaType>
#include <QString>
#include <QVariant>
#include <QVector>

#include <optional>

namespace SondixQt {

class SensorInfo;

/// How to reach one sensor: its model and the interface parameters that open it. It can be kept as a text.
///
/// The text form is "<model>@<interface>,<name>=<value>,...", such as "TX270@RS232,port=COM3,baudrate=115200". It needs
/// no quotes in a shell. The names are those of keys(): port, baudrate, stopbits, bytesize, parity, sensor-address,
/// address, remote-port, data-port, address-family, card, device, channel and serial-number. Any other parameter has the
/// sensor-access library's name, such as "IP_Timeout". Characters other than letters, digits and "-._~:/+" are percent-encoded.
///
/// \par Threads
/// A value type: different objects may be used in different threads.
struct SONDIXQT_EXPORT SensorAddress
{
    SensorType type = NoSensor;
    /// The parameters for SensorInstance::open(), by the names in InterfaceParameter. Values are texts, int and double.
    QMap<QString, QVariant> parameters;

    /// The address of a sensor that a search has found.
    static SensorAddress of(const SensorInfo &info);

    /// The address with the text form \a text. Model, interface and the names of keys() may be written in any letter
    /// case, and models and interfaces also by their other names. Nothing if \a text is not an address; \a problem,
    /// which may be null, then receives a message for users.
    static std::optional<SensorAddress> parse(const QString &text, QString *problem = nullptr);

    /// The text form. The parameters "IP_SensorTypeName", "SA_Softwareversion" and "SA_MacAddress" are left out: they
    /// describe the sensor and are not needed to open it. parse() returns an equal address if model and interface are in
    /// the catalogue, and the names and types of the parameters are as described above.
    QString toString() const;

    /// The interface that the parameter "IP_Interface" names; NoInterface if it is missing or unknown.
    SensorInterface interfaceType() const;

    /// Where the sensor is on its interface, for users: "COM3", "192.168.0.10", "card 0, channel 1". Empty if it is
    /// not known.
    QString place() const;

    /// A parameter with a short name in the text form.
    struct SONDIXQT_EXPORT Key
    {
        QString name;      ///< such as "port"
        QString parameter; ///< such as "IP_Port"
    };
    /// The parameters with a short name, in the order of the text form.
    static QVector<Key> keys();

    /// The value of the interface parameter \a parameter that \a text represents. The parameters of keys() are known
    /// to be texts or integers in a range; nothing is returned for a \a text that is not such an integer, and \a problem,
    /// which may be null, receives a message for users. Any other parameter is an int or a double if \a text is a
    /// number, and a text otherwise.
    static std::optional<QVariant> parseValue(const QString &parameter, const QString &text,
                                              QString *problem = nullptr);

    /// Whether both have the same model and the same text form: parameters that only describe the sensor do not count.
    bool operator==(const SensorAddress &other) const;
    bool operator!=(const SensorAddress &other) const { return !(*this == other); }
};

} // namespace SondixQt

Q_DECLARE_METATYPE(SondixQt::SensorAddress)
