// SPDX-License-Identifier: MIT
#include "catalogue/interfaceparameters.h"
#include "sensorinstance_p.h"
#include "sondix/answerparser_p.h"

#include <QDateTime>

namespace SondixQt {

void SensorInstance::addInfoParameters(const QMap<QString, QVariant> &map, int sensorIndex)
{
    Q_D(SensorInstance);
    if (map.isEmpty())
        return;
    const int element = sensorIndex > 0 ? sensorIndex - 1 : -1;
    if (element >= 0 && element < d->infoParameters.size()) {
        QMap<QString, QVariant> &known = d->infoParameters[element];
        for (auto it = map.cbegin(); it != map.cend(); ++it)
            known.insert(it.key(), it.value());
    } else {
        d->infoParameters.append(map);
    }
    if (element >= 0 && element < d->infoParameters.size()) {
        d->infoParameters[element].insert(
            QStringLiteral("StorageTime"),
            QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd_hh-mm-ss.zzz")));
    }
}

void SensorInstance::addInfoParameters(const QString &answer, int sensorIndex)
{
    Q_D(SensorInstance);
    const QStringList lines = answer.split(QStringLiteral("\r\n"));
    for (QString line : lines) {
        // The parameters of a recorded "Set_" command are the current settings of the sensor.
        const bool isSetting = line.startsWith(QLatin1String("S_Command=\"Set_"));
        if (isSetting)
            line.replace(QLatin1String("SP_"), QLatin1String("SA_"));
        QMap<QString, QVariant> parameters = parseAllParameters(line);
        addInfoParameters(parameters, sensorIndex);
        if (isSetting) {
            const QString command = parameters.take(QStringLiteral("S_Command")).toString();
            d->infoSettings[sensorIndex].insert(command, parameters);
        }
    }
}

QVariant SensorInstance::getInfoParameter(const QString &name, int sensorIndex) const
{
    Q_D(const SensorInstance);
    if (sensorIndex < 1 || sensorIndex > d->infoParameters.size())
        return {};
    return d->infoParameters.at(sensorIndex - 1).value(name);
}

const QVector<QMap<QString, QVariant>> &SensorInstance::getInfoParameters() const
{
    Q_D(const SensorInstance);
    return d->infoParameters;
}

QMap<QString, QMap<QString, QVariant>> SensorInstance::getInfoSettings(int sensorIndex) const
{
    Q_D(const SensorInstance);
    return d->infoSettings.value(sensorIndex);
}

void SensorInstance::storeInterfaceParameters(const QMap<QString, QVariant> &parameters)
{
    Q_D(SensorInstance);
    const InstanceLock lock(d);
    d->interfaceParameters = parameters;
    d->tcpInterface =
        parameters.value(InterfaceParameter::Interface).toString().contains(interfaceName(TCPIP, true));
}

QMap<QString, QVariant> SensorInstance::storedInterfaceParameters() const
{
    Q_D(const SensorInstance);
    const InstanceLock lock(d);
    return d->interfaceParameters;
}

} // namespace SondixQt
