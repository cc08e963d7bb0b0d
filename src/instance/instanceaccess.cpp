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

} // namespace SondixQt
