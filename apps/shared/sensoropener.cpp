// SPDX-License-Identifier: MIT
#include "sensoropener.h"

#include <SondixQt/specialsensorinstance.h>

using namespace SondixQt;

namespace SondixApp {

std::unique_ptr<SensorInstance> createInstance(SensorType type)
{
    switch (type) {
    case RG52x:
        return std::make_unique<SpecialSensorInstanceRG52x>();
    case RG53x:
        return std::make_unique<SpecialSensorInstanceRG531>();
    default:
        return std::make_unique<SensorInstance>(type);
    }
}

QString creationProblem(const SensorInstance &instance)
{
    QString text;
    instance.checkError(ErrorCode(-1), &text, false);
    if (text.isEmpty())
        text = QStringLiteral("the sensor-access library does not support the model %1")
                   .arg(sensorName(instance.sensorTypeFull(), true));
    return text;
}

} // namespace SondixApp
