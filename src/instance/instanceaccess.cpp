// SPDX-License-Identifier: MIT
#include "instanceaccess_p.h"

#include "sensorinstance_p.h"

namespace SondixQt {

InstanceLock::InstanceLock(SensorInstance *instance)
    : InstanceLock(SensorInstancePrivate::get(instance))
{
}

QByteArray optionalAnswer(SensorInstance *instance, const QString &name)
{
    return SensorInstancePrivate::get(instance)->optionalAnswer(name);
}

QHash<int, QString> errorValueTexts(SensorInstance *instance)
{
    (void)instance->getErrorValueText(0.0);
    return SensorInstancePrivate::get(instance)->errorValueTexts;
}

void readTriggerState(SensorInstance *instance)
{
    SensorInstancePrivate *const d = SensorInstancePrivate::get(instance);
    if (d->trigger.supported && !d->trigger.getCommand.isEmpty())
        d->checkIfTriggerIsEnabled(nullptr);
}

void forgetSensorInformation(SensorInstance *instance)
{
    SensorInstancePrivate *const d = SensorInstancePrivate::get(instance);
    d->infoParameters.clear();
    d->infoSettings.clear();
}

} // namespace SondixQt
