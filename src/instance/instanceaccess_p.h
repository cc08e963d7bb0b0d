// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>

#include <mutex>

/// \file
/// Access to a SensorInstance for other parts of the library, beyond its public functions.

namespace SondixQt {

class SensorInstance;
class SensorInstancePrivate;

/// Locks the recursive mutex of an instance, so that commands of other threads cannot interrupt a sequence.
class InstanceLock
{
public:
    explicit InstanceLock(SensorInstance *instance);
    explicit InstanceLock(const SensorInstancePrivate *d);

private:
    std::lock_guard<std::recursive_mutex> guard;
};

/// The bytes of the answer parameter \a name of the last command; empty if it is missing, which is not reported as
/// a failure. The caller must hold an InstanceLock from before the command on.
QByteArray optionalAnswer(SensorInstance *instance, const QString &name);

/// The texts of all error values, see SensorInstance::getErrorValueText(); they are read from the sensor if that has
/// not been done before.
QHash<int, QString> errorValueTexts(SensorInstance *instance);

/// Reads again whether the sensor waits for a trigger; otherwise only open() does. Does nothing for a model without a
/// trigger.
void readTriggerState(SensorInstance *instance);

/// Forgets what the sensor has reported about itself; open() alone keeps what the sensor does not report again.
void forgetSensorInformation(SensorInstance *instance);

} // namespace SondixQt
