// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <mutex>

/// \file
/// What the other parts of the library may do with an instance beyond its public functions.

namespace SondixQt {

class SensorInstance;
class SensorInstancePrivate;

/// Holds the recursive mutex of an instance: no other thread's command comes between those sent meanwhile.
class InstanceLock
{
public:
    explicit InstanceLock(SensorInstance *instance);
    explicit InstanceLock(const SensorInstancePrivate *d);

private:
    std::lock_guard<std::recursive_mutex> guard;
};

/// The bytes of the last command's answer \a name, empty if there is none. Unlike any other answer, one that is
/// missing is not reported as a failure. Hold an InstanceLock since the command.
QByteArray optionalAnswer(SensorInstance *instance, const QString &name);

} // namespace SondixQt
