// SPDX-License-Identifier: MIT
#include "sensorinstance_p.h"

namespace SondixQt {

ErrorCode SensorInstancePrivate::fillCommandTables(QString *errorText)
{
    const ErrorCode result = fillVideoCommandsForSensor(video.infos, errorText);
    fillTriggerCommandsForSensor();
    fillSyncCommandsForSensor();
    fillAvailableMeasModiForSensor();
    return result;
}

void SensorInstancePrivate::checkTriggerAndSync(QString *errorText)
{
    if (trigger.supported)
        checkIfTriggerIsEnabled(errorText);
    if (sync.supported)
        checkIfSyncIsEnabled(errorText);
}

} // namespace SondixQt
