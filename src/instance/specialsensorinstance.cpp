// SPDX-License-Identifier: MIT
#include "specialsensorinstance.h"

#include "specialsensorinstance_p.h"

#include <QScopedValueRollback>

namespace SondixQt {

using Action = SpecialSensorInstance::ExecSpecialAction;

SpecialSensorInstance::SpecialSensorInstance(SensorType type, unsigned long handle)
    : SpecialSensorInstance(*new SpecialSensorInstancePrivate, type, handle)
{
}

SpecialSensorInstance::SpecialSensorInstance(SpecialSensorInstancePrivate &dd, SensorType type,
                                             unsigned long handle)
    : SensorInstance(dd, type, handle)
{
}

SpecialSensorInstance::~SpecialSensorInstance() = default;

void SpecialSensorInstance::addToExcludedCommandList(const QStringList &commands)
{
    Q_D(SpecialSensorInstance);
    for (const QString &command : commands)
        d->excludedCommands.insert(command);
}

void SpecialSensorInstance::setExcludedCommandList(const QStringList &commands)
{
    Q_D(SpecialSensorInstance);
    d->excludedCommands.clear();
    addToExcludedCommandList(commands);
}

ErrorCode SpecialSensorInstance::actionBeforeSendCommand(const QString &, QString *)
{
    return NoError;
}

ErrorCode SpecialSensorInstance::actionAfterSendCommand(const QString &, QString *)
{
    return NoError;
}

bool SpecialSensorInstancePrivate::executeActionBefore(const QString &command, Action action) const
{
    return (action & (SpecialSensorInstance::ActionBefore | SpecialSensorInstance::ActionBeforeAndAfter)) != 0 &&
           !inAction && !excludedCommands.contains(command);
}

bool SpecialSensorInstancePrivate::executeActionAfter(const QString &command, Action action) const
{
    return (action & (SpecialSensorInstance::ActionAfter | SpecialSensorInstance::ActionBeforeAndAfter)) != 0 &&
           !inAction && !excludedCommands.contains(command);
}

template<typename Send>
ErrorCode SpecialSensorInstancePrivate::sendBetweenActions(const QString &command, Action action,
                                                           QString *errorText, Send send)
{
    Q_Q(SpecialSensorInstance);
    const InstanceLock lock(this);
    if (executeActionBefore(command, action)) {
        const ErrorCode result = q->actionBeforeSendCommand(command, errorText);
        if (result != NoError)
            return result;
    }
    ErrorCode result = NoError;
    {
        const QScopedValueRollback<bool> guard(inAction, true);
        result = send();
    }
    return executeActionAfter(command, action) ? q->actionAfterSendCommand(command, errorText) : result;
}

ErrorCode SpecialSensorInstance::sendCommand(const QString &command, const QMap<QString, QVariant> &parameters,
                                             const QMap<QString, QVariant> &results, QString *errorText,
                                             ErrorHandling errorHandling)
{
    return sendCommand(command, parameters, results, ActionBeforeAndAfter, errorText, errorHandling);
}

ErrorCode SpecialSensorInstance::sendCommand(const QString &command, const QMap<QString, QVariant> &parameters,
                                             QString *errorText)
{
    return sendCommand(command, parameters, ActionBeforeAndAfter, errorText);
}

ErrorCode SpecialSensorInstance::sendCommand(const QString &command, QString *errorText)
{
    return sendCommand(command, ActionBeforeAndAfter, errorText);
}

ErrorCode SpecialSensorInstance::sendCommandGetAll(const QString &command,
                                                   const QMap<QString, QVariant> &parameters,
                                                   QMap<QString, QVariant> &results, QString *errorText,
                                                   ErrorHandling errorHandling)
{
    return sendCommandGetAll(command, parameters, results, ActionBeforeAndAfter, errorText, errorHandling);
}

ErrorCode SpecialSensorInstance::sendCommandGetInt(const QString &command, const QString &resultName, int &value,
                                                   QString *errorText)
{
    return sendCommandGetInt(command, resultName, value, ActionBeforeAndAfter, errorText);
}

ErrorCode SpecialSensorInstance::sendCommandGetDouble(const QString &command, const QString &resultName,
                                                      double &value, QString *errorText)
{
    return sendCommandGetDouble(command, resultName, value, ActionBeforeAndAfter, errorText);
}

ErrorCode SpecialSensorInstance::sendCommandGetString(const QString &command, const QString &resultName,
                                                      QString &value, QString *errorText)
{
    return sendCommandGetString(command, resultName, value, ActionBeforeAndAfter, errorText);
}

ErrorCode SpecialSensorInstance::sendCommand(const QString &command, const QMap<QString, QVariant> &parameters,
                                             const QMap<QString, QVariant> &results, ExecSpecialAction action,
                                             QString *errorText, ErrorHandling errorHandling)
{
    Q_D(SpecialSensorInstance);
    return d->sendBetweenActions(command, action, errorText, [&] {
        return SensorInstance::sendCommand(command, parameters, results, errorText, errorHandling);
    });
}

ErrorCode SpecialSensorInstance::sendCommand(const QString &command, const QMap<QString, QVariant> &parameters,
                                             ExecSpecialAction action, QString *errorText)
{
    Q_D(SpecialSensorInstance);
    return d->sendBetweenActions(command, action, errorText,
                                 [&] { return SensorInstance::sendCommand(command, parameters, errorText); });
}

ErrorCode SpecialSensorInstance::sendCommand(const QString &command, ExecSpecialAction action, QString *errorText)
{
    Q_D(SpecialSensorInstance);
    const InstanceLock lock(d);
    if (d->executeActionBefore(command, action)) {
        const ErrorCode result = actionBeforeSendCommand(command, errorText);
        if (result != NoError)
            return result;
    }
    const ErrorCode result = SensorInstance::sendCommand(command, errorText);
    if (result != NoError || !d->executeActionAfter(command, action))
        return result;
    return actionAfterSendCommand(command, errorText);
}

ErrorCode SpecialSensorInstance::sendCommandGetAll(const QString &command,
                                                   const QMap<QString, QVariant> &parameters,
                                                   QMap<QString, QVariant> &results, ExecSpecialAction action,
                                                   QString *errorText, ErrorHandling errorHandling)
{
    Q_D(SpecialSensorInstance);
    return d->sendBetweenActions(command, action, errorText, [&] {
        return SensorInstance::sendCommandGetAll(command, parameters, results, errorText, errorHandling);
    });
}

ErrorCode SpecialSensorInstance::sendCommandGetInt(const QString &command, const QString &resultName, int &value,
                                                   ExecSpecialAction action, QString *errorText)
{
    Q_D(SpecialSensorInstance);
    return d->sendBetweenActions(command, action, errorText, [&] {
        return SensorInstance::sendCommandGetInt(command, resultName, value, errorText);
    });
}

ErrorCode SpecialSensorInstance::sendCommandGetDouble(const QString &command, const QString &resultName,
                                                      double &value, ExecSpecialAction action, QString *errorText)
{
    Q_D(SpecialSensorInstance);
    return d->sendBetweenActions(command, action, errorText, [&] {
        return SensorInstance::sendCommandGetDouble(command, resultName, value, errorText);
    });
}

ErrorCode SpecialSensorInstance::sendCommandGetString(const QString &command, const QString &resultName,
                                                      QString &value, ExecSpecialAction action, QString *errorText)
{
    Q_D(SpecialSensorInstance);
    return d->sendBetweenActions(command, action, errorText, [&] {
        return SensorInstance::sendCommandGetString(command, resultName, value, errorText);
    });
}

} // namespace SondixQt
