// SPDX-License-Identifier: MIT
#include "catalogue/modetables_p.h"
#include "instancelog_p.h"
#include "sensorinstance_p.h"
#include "sondix/sondixapi_p.h"

namespace SondixQt {

void SettingState::setCommands(const SettingCommands &commands)
{
    getCommand = QString::fromLatin1(commands.getCommand);
    getParameter = QString::fromLatin1(commands.getParameter);
    setCommand = QString::fromLatin1(commands.setCommand);
    setParameter = QString::fromLatin1(commands.setParameter);
}

void SettingState::clearGetCommand()
{
    getCommand.clear();
    getParameter.clear();
}

namespace {

int triggerOffValue(SensorType type)
{
    const TriggerRow *row = triggerRow(type);
    return row ? row->offValue : 0;
}

} // namespace

void SensorInstancePrivate::fillTriggerCommandsForSensor()
{
    const TriggerRow *row = triggerRow(sensorType);
    trigger.supported = row != nullptr;
    if (row) {
        trigger.setCommands(row->commands);
    } else {
        trigger.clearGetCommand();
        trigger.enabled = false;
    }
}

// Unlike trigger.enabled, sync.enabled is kept for a type without synchronisation.
void SensorInstancePrivate::fillSyncCommandsForSensor()
{
    const SyncRow *row = syncRow(sensorType);
    sync.supported = row != nullptr;
    if (!row) {
        sync.clearGetCommand();
        return;
    }
    sync.setCommands(row->commands);
    if (row->sharedWithTrigger)
        syncSharedWithTrigger = true;
}

void SensorInstancePrivate::fillAvailableMeasModiForSensor()
{
    measuringModes.clear();
    if (const MeasuringModesRow *row = measuringModesRow(sensorType)) {
        for (const MeasuringMode &mode : row->modes)
            measuringModes.append({QString::fromLatin1(mode.name), mode.number});
    }
}

ErrorCode SensorInstancePrivate::checkIfTriggerIsEnabled(QString *errorText)
{
    int value = -1;
    const ErrorCode result =
        q_func()->sendCommandGetInt(trigger.getCommand, trigger.getParameter, value, errorText);
    if (result == NoError)
        trigger.enabled = value != triggerOffValue(sensorType);
    else
        qCDebug(instanceLog) << "SensorInstance::checkIfTriggerIsEnabled()::err" << int(result);
    return result;
}

ErrorCode SensorInstancePrivate::checkIfSyncIsEnabled(QString *errorText)
{
    int value = -1;
    const ErrorCode result = q_func()->sendCommandGetInt(sync.getCommand, sync.getParameter, value, errorText);
    if (result == NoError)
        sync.enabled = value != 0;
    else
        qCDebug(instanceLog) << "SensorInstance::checkIfSyncIsEnabled()::err:" << int(result);
    return result;
}

const QVector<QPair<QString, int>> &SensorInstance::getAvailableMeasModi() const
{
    Q_D(const SensorInstance);
    return d->measuringModes;
}

ErrorCode SensorInstance::setMeasurementMode(int mode, QString *errorText)
{
    Q_D(SensorInstance);
    const ErrorCode result =
        sendCommand(QStringLiteral("Set_MeasureMode"), QStringLiteral("SP_MeasureMode"), mode, errorText);
    d->getVideoInformationFromSensor();
    return result;
}

ErrorCode SensorInstance::enableMeasMode(QString *errorText)
{
    Q_D(SensorInstance);
    const SwitchedModesRow *row = switchedModesRow(d->baseType());
    if (!row)
        return NoError;
    const ErrorCode result = setMeasurementMode(row->measuringMode, errorText);
    if (result == NoError)
        d->measuringModeEnabled = true;
    return result;
}

bool SensorInstance::isMeasModeEnabled() const
{
    Q_D(const SensorInstance);
    return d->measuringModeEnabled;
}

bool SensorInstance::isTriggerEnabled() const
{
    Q_D(const SensorInstance);
    return d->trigger.enabled;
}

ErrorCode SensorInstance::disableTrigger(QString *errorText)
{
    Q_D(SensorInstance);
    const ErrorCode result =
        sendCommand(d->trigger.setCommand, d->trigger.setParameter, triggerOffValue(d->sensorType), errorText);
    if (result == NoError)
        d->trigger.enabled = false;
    return result;
}

bool SensorInstance::isSyncEnabled() const
{
    Q_D(const SensorInstance);
    return d->sync.enabled;
}

ErrorCode SensorInstance::disableSync(QString *errorText)
{
    Q_D(SensorInstance);
    const InstanceLock lock(d);
    const SyncRow *row = syncRow(d->sensorType);
    if (row && row->hasTermination)
        d->check(SetParameterInt(d->handle, "SP_SyncTermination", 0), errorText);
    const ErrorCode result = sendCommand(d->sync.setCommand, d->sync.setParameter, 0, errorText);
    if (result == NoError)
        d->sync.enabled = false;
    return result;
}

bool SensorInstance::isSyncSharedWithTrigger() const
{
    Q_D(const SensorInstance);
    return d->syncSharedWithTrigger;
}

} // namespace SondixQt
