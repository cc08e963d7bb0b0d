// SPDX-License-Identifier: MIT
#include "catalogue/sensortypes.h"
#include "instancelog_p.h"
#include "sensorinstance_p.h"
#include "sondix/sondixapi_p.h"

namespace SondixQt {

bool SensorInstancePrivate::readsResults(ErrorCode code, SensorInstance::ErrorHandling errorHandling)
{
    if (code == NoError || errorHandling == SensorInstance::ReadAlways)
        return true;
    return errorHandling == SensorInstance::ReadAfterPartialFail &&
           (code == PartialFailure26 || code == PartialFailure27);
}

ErrorCode SensorInstance::sendCommand(const QString &command, const QMap<QString, QVariant> &parameters,
                                      const QMap<QString, QVariant> &results, QString *errorText,
                                      ErrorHandling errorHandling)
{
    Q_D(SensorInstance);
    const InstanceLock lock(d);
    ErrorCode result = d->setParameters(parameters, errorText);
    if (result != NoError)
        return result;
    result = sendCommand(command, errorText);
    return d->readsResults(result, errorHandling) ? d->getParameters(results, errorText) : result;
}

ErrorCode SensorInstance::sendCommand(const QString &command, const QMap<QString, QVariant> &parameters,
                                      QString *errorText)
{
    Q_D(SensorInstance);
    const InstanceLock lock(d);
    const ErrorCode result = d->setParameters(parameters, errorText);
    return result == NoError ? sendCommand(command, errorText) : result;
}

ErrorCode SensorInstance::sendCommand(const QString &command, QString *errorText)
{
    Q_D(SensorInstance);
    const InstanceLock lock(d);
    const ErrorCode result =
        d->check(SetParameterString(d->handle, "S_Command", command.toLatin1().constData()), errorText);
    if (result != NoError)
        return result;
    const ErrorCode answer = d->check(SensorCommand(d->handle), errorText);
    qCDebug(instanceCallLog).noquote() << sensorName(d->sensorType, true) << command << "->" << int(answer);
    return answer;
}

ErrorCode SensorInstance::sendCommandGetAll(const QString &command, const QMap<QString, QVariant> &parameters,
                                            QMap<QString, QVariant> &results, QString *errorText,
                                            ErrorHandling errorHandling)
{
    Q_D(SensorInstance);
    const InstanceLock lock(d);
    ErrorCode result = d->setParameters(parameters, errorText);
    if (result != NoError)
        return result;
    result = sendCommand(command, errorText);
    return d->readsResults(result, errorHandling) ? d->getAllParameters(results, errorText) : result;
}

template<typename Value>
ErrorCode SensorInstancePrivate::sendCommandGet(const QString &command, const QString &resultName, Value &value,
                                                QString *errorText)
{
    const InstanceLock lock(this);
    const ErrorCode result = q_func()->sendCommand(command, errorText);
    return result == NoError ? getParameter(resultName, value, errorText) : result;
}

ErrorCode SensorInstance::sendCommandGetInt(const QString &command, const QString &resultName, int &value,
                                            QString *errorText)
{
    Q_D(SensorInstance);
    return d->sendCommandGet(command, resultName, value, errorText);
}

ErrorCode SensorInstance::sendCommandGetDouble(const QString &command, const QString &resultName, double &value,
                                               QString *errorText)
{
    Q_D(SensorInstance);
    return d->sendCommandGet(command, resultName, value, errorText);
}

ErrorCode SensorInstance::sendCommandGetString(const QString &command, const QString &resultName, QString &value,
                                               QString *errorText)
{
    Q_D(SensorInstance);
    return d->sendCommandGet(command, resultName, value, errorText);
}

template<typename Value>
ErrorCode SensorInstancePrivate::sendCommandWith(const QString &command, const QString &parameterName,
                                                 const Value &value, QString *errorText)
{
    const InstanceLock lock(this);
    const ErrorCode result = setParameter(parameterName, value, errorText);
    return result == NoError ? q_func()->sendCommand(command, errorText) : result;
}

ErrorCode SensorInstance::sendCommand(const QString &command, const QString &parameterName, const QString &value,
                                      QString *errorText)
{
    Q_D(SensorInstance);
    return d->sendCommandWith(command, parameterName, value, errorText);
}

ErrorCode SensorInstance::sendCommand(const QString &command, const QString &parameterName, int value,
                                      QString *errorText)
{
    Q_D(SensorInstance);
    return d->sendCommandWith(command, parameterName, value, errorText);
}

ErrorCode SensorInstance::sendCommand(const QString &command, const QString &parameterName, double value,
                                      QString *errorText)
{
    Q_D(SensorInstance);
    return d->sendCommandWith(command, parameterName, value, errorText);
}

ErrorCode SensorInstance::sendCommand(const QString &command, const QString &parameterName, bool value,
                                      QString *errorText)
{
    return sendCommand(command, parameterName, int(value), errorText);
}

} // namespace SondixQt
