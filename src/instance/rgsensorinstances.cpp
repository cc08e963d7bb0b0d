// SPDX-License-Identifier: MIT
#include "catalogue/trackingtables_p.h"
#include "specialsensorinstance.h"
#include "specialsensorinstance_p.h"

#include <QScopedValueRollback>

namespace SondixQt {

namespace {

constexpr int unknownTrackingMode = -1;
constexpr int speedTrackingMode = 5;

} // namespace

TrackingInstancePrivate::TrackingInstancePrivate(SensorType type)
    : row(*trackingRow(type))
{
}

QStringList TrackingInstancePrivate::commandsWithoutTracking() const
{
    QStringList commands;
    for (const char *command : row.commandsWithoutTracking)
        commands.append(QString::fromLatin1(command));
    return commands;
}

QString TrackingInstancePrivate::commandOf(int mode) const
{
    return QString::fromLatin1(trackingCommand(row, mode));
}

ErrorCode TrackingInstancePrivate::readTrackingMode(QString *errorText)
{
    const InstanceLock lock(this);
    const QScopedValueRollback<bool> guard(inAction, true);
    int answer = trackingMode;
    const ErrorCode result = q_func()->SensorInstance::sendCommandGetInt(
        QStringLiteral("Get_Autostart"), QStringLiteral("SA_AutostartCommand"), answer, errorText);
    if (result == NoError)
        trackingMode = autostartMode(row, answer);
    return result;
}

ErrorCode TrackingInstancePrivate::restartTracking(QString *errorText)
{
    if (trackingMode == unknownTrackingMode) {
        const ErrorCode result = readTrackingMode(errorText);
        if (result != NoError)
            return result;
    }
    const ErrorCode result = q_func()->SensorInstance::sendCommand(commandOf(trackingMode), errorText);
    return row.bestEffort ? NoError : result;
}

SpecialSensorInstanceRG52xPrivate::SpecialSensorInstanceRG52xPrivate()
    : TrackingInstancePrivate(RG52x)
{
}

QString SpecialSensorInstanceRG52xPrivate::distanceTrackingCommand() const
{
    return commandOf(trackingMode);
}

SpecialSensorInstanceRG52x::SpecialSensorInstanceRG52x(unsigned long handle)
    : SpecialSensorInstance(*new SpecialSensorInstanceRG52xPrivate, RG52x, handle)
{
    Q_D(SpecialSensorInstanceRG52x);
    addToExcludedCommandList(d->commandsWithoutTracking());
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
    Q_D(const SpecialSensorInstanceRG52x);
    return d->commandOf(mode);
}

ErrorCode SpecialSensorInstanceRG52x::actionAfterSendCommand(const QString &, QString *errorText)
{
    Q_D(SpecialSensorInstanceRG52x);
    return d->restartTracking(errorText);
}

SpecialSensorInstanceRG531Private::SpecialSensorInstanceRG531Private()
    : TrackingInstancePrivate(RG53x)
{
}

bool SpecialSensorInstanceRG531Private::isSpeedTracking() const
{
    return trackingMode == speedTrackingMode;
}

SpecialSensorInstanceRG531::SpecialSensorInstanceRG531(unsigned long handle)
    : SpecialSensorInstance(*new SpecialSensorInstanceRG531Private, RG53x, handle)
{
    Q_D(SpecialSensorInstanceRG531);
    addToExcludedCommandList(d->commandsWithoutTracking());
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
    Q_D(const SpecialSensorInstanceRG531);
    return d->commandOf(mode);
}

ErrorCode SpecialSensorInstanceRG531::actionBeforeSendCommand(const QString &, QString *errorText)
{
    return SensorInstance::sendCommand(QStringLiteral("StopTracking"), errorText);
}

ErrorCode SpecialSensorInstanceRG531::actionAfterSendCommand(const QString &, QString *errorText)
{
    Q_D(SpecialSensorInstanceRG531);
    return d->restartTracking(errorText);
}

} // namespace SondixQt
