// SPDX-License-Identifier: MIT
#pragma once

#include "sensorinstance_p.h"
#include "specialsensorinstance.h"

#include <QSet>

namespace SondixQt {

class SpecialSensorInstancePrivate : public SensorInstancePrivate
{
public:
    SpecialSensorInstancePrivate();

    QSet<QString> excludedCommands;
    bool inAction = false;

    Q_DECLARE_PUBLIC(SpecialSensorInstance)
};

class SpecialSensorInstanceRG52xPrivate : public SpecialSensorInstancePrivate
{
public:
    int trackingMode = -1;

    Q_DECLARE_PUBLIC(SpecialSensorInstanceRG52x)
};

class SpecialSensorInstanceRG531Private : public SpecialSensorInstancePrivate
{
public:
    int trackingMode = -1;

    Q_DECLARE_PUBLIC(SpecialSensorInstanceRG531)
};

} // namespace SondixQt
