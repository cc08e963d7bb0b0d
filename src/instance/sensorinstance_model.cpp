// SPDX-License-Identifier: MIT
#include "sensorinstance_p.h"

namespace SondixQt {

// No model has command tables yet: there is nothing to fill, to check or to refresh.

ErrorCode SensorInstancePrivate::fillCommandTables()
{
    return NoError;
}

void SensorInstancePrivate::checkTriggerAndSync(QString *) {}

void SensorInstancePrivate::refreshVideoInformation() {}

} // namespace SondixQt
