// SPDX-License-Identifier: MIT
#include "specialsensorinstance.h"
#include "specialsensorinstance_p.h"

#include <QScopedValueRollback>

namespace SondixQt {

namespace {

constexpr int unknownTrackingMode = -1;
constexpr int speedTrackingMode = 5;

const QString &distanceTracking()
{
    static const QString command = QStringLiteral("DistanceTracking");
    return command;
}

const QString &speedTracking()
{
    static const QString command = QStringLiteral("SpeedTracking");
    return command;
}

} // namespace

ErrorCode SpecialSensorInstancePrivate::readAutostartMode(int &mode, QString *errorText)
{
    const InstanceLock lock(this);
    const QScopedValueRollback<bool> guard(inAction, true);
    return q_func()->SensorInstance::sendCommandGetInt(QStringLiteral("Get_Autostart"),
                                                       QStringLiteral("SA_AutostartCommand"), mode, errorText);
}

SpecialSensorInstanceRG52x::SpecialSensorInstanceRG52x(unsigned long handle)
    : SpecialSensorInstance(*new SpecialSensorInstanceRG52xPrivate, RG52x, handle)
{
    addToExcludedCommandList({distanceTracking(), QStringLiteral("Get_Samplerate")});
}

SpecialSensorInstanceRG52x::~SpecialSensorInstanceRG52x() = default;

int SpecialSensorInstanceRG52x::getTrackingMode() const
{
    Q_D(const SpecialSensorInstanceRG52x);
    return d->trackingMode;
}

void SpecialSensorInstanceRG52x::setTrackingMode(int mode)
{
    Q_D(SpecialSensorInstanceRG52x);
    d->trackingMode = mode;
}

QString SpecialSensorInstanceRG52x::convertMeasurementModeToCommand(int mode) const
{
    switch (mode) {
    case 0:
        return distanceTracking();
    case 1:
        return QStringLiteral("DistanceTracking7m");
    case 2:
    case 5:
    case 6:
    case 7:
    case 8:
        return QStringLiteral("DistanceTracking10Hz");
    case 3:
        return QStringLiteral("DistanceTracking50Hz");
    case 4:
        return QStringLiteral("DistanceTriggered");
    default:
        return {};
    }
}

ErrorCode SpecialSensorInstanceRG52xPrivate::learnTrackingMode(QString *errorText)
{
    int mode = trackingMode;
    const ErrorCode result = readAutostartMode(mode, errorText);
    if (result == NoError)
        trackingMode = mode >= 0 && mode <= 4 ? mode : 2;
    return result;
}

ErrorCode SpecialSensorInstanceRG52x::actionAfterSendCommand(const QString &, QString *errorText)
{
    Q_D(SpecialSensorInstanceRG52x);
    if (d->trackingMode == unknownTrackingMode) {
        const ErrorCode result = d->learnTrackingMode(errorText);
        if (result != NoError)
            return result;
    }
    SensorInstance::sendCommand(convertMeasurementModeToCommand(d->trackingMode), errorText);
    return NoError;
}

SpecialSensorInstanceRG531::SpecialSensorInstanceRG531(unsigned long handle)
    : SpecialSensorInstance(*new SpecialSensorInstanceRG531Private, RG53x, handle)
{
    addToExcludedCommandList({speedTracking(), distanceTracking(), QStringLiteral("Get_Samplerate")});
}

SpecialSensorInstanceRG531::~SpecialSensorInstanceRG531() = default;

int SpecialSensorInstanceRG531::getTrackingMode() const
{
    Q_D(const SpecialSensorInstanceRG531);
    return d->trackingMode;
}

void SpecialSensorInstanceRG531::setTrackingMode(int mode)
{
    Q_D(SpecialSensorInstanceRG531);
    d->trackingMode = mode;
}

QString SpecialSensorInstanceRG531::convertMeasurementModeToCommand(int mode) const
{
    return mode == speedTrackingMode ? speedTracking() : distanceTracking();
}

ErrorCode SpecialSensorInstanceRG531Private::learnTrackingMode(QString *errorText)
{
    int mode = trackingMode;
    const ErrorCode result = readAutostartMode(mode, errorText);
    if (result == NoError && mode != unknownTrackingMode)
        trackingMode = mode == speedTrackingMode ? speedTrackingMode : 2;
    return result;
}

ErrorCode SpecialSensorInstanceRG531::actionBeforeSendCommand(const QString &, QString *errorText)
{
    return SensorInstance::sendCommand(QStringLiteral("StopTracking"), errorText);
}

ErrorCode SpecialSensorInstanceRG531::actionAfterSendCommand(const QString &, QString *errorText)
{
    Q_D(SpecialSensorInstanceRG531);
    if (d->trackingMode == unknownTrackingMode) {
        const ErrorCode result = d->learnTrackingMode(errorText);
        if (result != NoError)
            return result;
    }
    return SensorInstance::sendCommand(convertMeasurementModeToCommand(d->trackingMode), errorText);
}

} // namespace SondixQt
