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

/// One sensor as the sensor-access library reports it: its parameters and the type decided for it.
///
/// A value that never changes except by assignment: copy it freely; distinct objects may be used on different
/// threads. Nothing here fails: what the parameters do not say reads as NoSensor, NoInterface, an invalid
/// QVariant, false or an empty map, and a value that is no integer counts as 0 where one is wanted.
class SONDIXQT_EXPORT SensorInfo
{
public:
    /// A description without parameters, of type NoSensor.
    SensorInfo();

    /// Describes a sensor by all its reported parameters, keyed by the names of the sensor-access library.
    ///
    /// A \a type other than NoSensor is kept. Otherwise the type is the reported "IP_SensorType"; where that is
    /// only a family (a sensor behind the XA300 converter or on the bus), the model name in "SA_Sensor", or
    /// else in "SA_ControllerName", decides which model it is. Without "IP_SensorType" the type stays NoSensor.
    SensorInfo(const QMap<QString, QVariant> &params, SensorType type);

    /// The type given or decided at construction.
    SensorType sensorType() const;

    /// Whether a parameter of exactly this name was reported.
    bool contains(const QString &key) const;

    /// The value of a parameter, invalid when there is none.
    QVariant getParameter(const QString &key) const;

    /// The parameters of the given names, without those that are absent or invalid; all for an empty list.
    QMap<QString, QVariant> getParameters(const QStringList &keys) const;

    /// The interface over which the sensor was found, from "IP_InterfaceIdx".
    SensorInterface interfaceType() const;

    /// The reported parameters that describe a connection over this sensor's interface.
    QMap<QString, QVariant> getInterfaceParameters() const;

    /// The kind of web interface that the type offers.
    WebInterface getWebInterfaceSupport() const;

    /// Whether the type speaks the ASCII command protocol.
    bool supportsASCIIProtocol() const;

    /// Whether the type delivers all its settings in one request.
    bool supportsGetAllParameters() const;

    /// Whether the type answers the request for help.
    bool supportsHelp() const;

    /// Compares the parameters only: descriptions of different type are equal when their parameters are.
    bool operator==(const SensorInfo &other) const;
    bool operator!=(const SensorInfo &other) const { return !(*this == other); }

private:
    SensorType getSensorTypeFromParams() const;
    SensorType getRealSensorTypeFromParams(const QString &name) const;

    QMap<QString, QVariant> parameters;
    SensorType type = NoSensor;
};

/// Whether \a name is, or is a part of, the short name of a bus sensor that the XA300 converter carries. The
/// comparison minds the case; an empty name is a part of every name. Any thread may call it.
SONDIXQT_EXPORT bool isKVBusSensorSupportedByXA300ETH(const QString &name);

} // namespace SondixQt

Q_DECLARE_METATYPE(SondixQt::SensorInfo)
