// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sensorfeatures.h>
#include <SondixQt/sensortypes.h>

#include <QMap>
#include <QMetaType>
#include <QString>
#include <QStringList>
#include <QVariant>

namespace SondixQt {

/// The description of a sensor: the parameters that the sensor-access library reports, and the type derived from
/// them.
///
/// An immutable value type. Reentrant: different objects may be used in different threads. No function fails:
/// missing parameters give NoSensor, NoInterface, an invalid QVariant, false or an empty map, and a value that is
/// not an integer is read as 0 where an integer is expected.
class SONDIXQT_EXPORT SensorInfo
{
public:
    /// A description without parameters, of type NoSensor.
    SensorInfo();

    /// Describes a sensor by its reported parameters \a params, keyed by the names of the sensor-access library.
    ///
    /// A \a type other than NoSensor is used as it is. Otherwise the type is the reported "IP_SensorType". If that
    /// is only a family (a sensor behind the XA300 converter or on the bus), the model is determined by the name
    /// in "SA_Sensor" or, if that is empty, in "SA_ControllerName". Without "IP_SensorType" the type is NoSensor.
    SensorInfo(const QMap<QString, QVariant> &params, SensorType type);

    /// The type that was passed to the constructor or derived from the parameters.
    SensorType sensorType() const;

    /// Whether the parameter \a key was reported (case-sensitive).
    bool contains(const QString &key) const;

    /// The value of the parameter \a key; invalid if it was not reported.
    QVariant getParameter(const QString &key) const;

    /// The parameters \a keys without those that are missing or invalid; all parameters if \a keys is empty.
    QMap<QString, QVariant> getParameters(const QStringList &keys) const;

    /// The interface on which the sensor was found ("IP_InterfaceIdx").
    SensorInterface interfaceType() const;

    /// The reported parameters that are needed to open the sensor on its interface.
    QMap<QString, QVariant> getInterfaceParameters() const;

    /// The kind of web interface of the type.
    WebInterface getWebInterfaceSupport() const;

    /// Whether the type supports the ASCII command protocol.
    bool supportsASCIIProtocol() const;

    /// Whether the type can return all its settings in one answer.
    bool supportsGetAllParameters() const;

    /// Whether the type supports the help command.
    bool supportsHelp() const;

    /// Compares the parameters only; the types are ignored.
    bool operator==(const SensorInfo &other) const;
    bool operator!=(const SensorInfo &other) const { return !(*this == other); }

private:
    SensorType getSensorTypeFromParams() const;
    SensorType getRealSensorTypeFromParams(const QString &name) const;

    QMap<QString, QVariant> parameters;
    SensorType type = NoSensor;
};

/// Whether \a name is contained in the short name of a bus sensor that can be connected to the XA300 converter.
/// The comparison is case-sensitive. True for an empty \a name. Thread-safe.
SONDIXQT_EXPORT bool isKVBusSensorSupportedByXA300ETH(const QString &name);

} // namespace SondixQt

Q_DECLARE_METATYPE(SondixQt::SensorInfo)
