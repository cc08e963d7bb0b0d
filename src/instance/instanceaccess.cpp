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

void readTriggerState(SensorInstance *instance)
{
    SensorInstancePrivate *const d = SensorInstancePrivate::get(instance);
    if (d->trigger.supported && !d->trigger.getCommand.isEmpty())
        d->checkIfTriggerIsEnabled(nullptr);
}

} // namespace SondixQt
