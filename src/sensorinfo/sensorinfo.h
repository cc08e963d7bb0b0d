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
/// A value: copy it freely; distinct objects may be used on different threads.
class SONDIXQT_EXPORT SensorInfo
{
public:
    SensorInfo();
    SensorInfo(const QMap<QString, QVariant> &params, SensorType type);

    SensorType sensorType() const;
    bool contains(const QString &key) const;
    QVariant getParameter(const QString &key) const;
    QMap<QString, QVariant> getParameters(const QStringList &keys) const;
    SensorInterface interfaceType() const;
    QMap<QString, QVariant> getInterfaceParameters() const;
    WebInterface getWebInterfaceSupport() const;
    bool supportsASCIIProtocol() const;
    bool supportsGetAllParameters() const;
    bool supportsHelp() const;

    bool operator==(const SensorInfo &other) const;
    bool operator!=(const SensorInfo &other) const { return !(*this == other); }

private:
    SensorType getSensorTypeFromParams() const;
    SensorType getRealSensorTypeFromParams(const QString &name) const;

    QMap<QString, QVariant> parameters;
    SensorType type = NoSensor;
};

/// Whether \a name is, or is a part of, the name of a bus sensor that the XA300 converter carries.
SONDIXQT_EXPORT bool isKVBusSensorSupportedByXA300ETH(const QString &name);

} // namespace SondixQt

Q_DECLARE_METATYPE(SondixQt::SensorInfo)
