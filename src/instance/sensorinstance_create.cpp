// SPDX-License-Identifier: MIT
#include "trackinginstance_p.h"

namespace SondixQt {

std::unique_ptr<SensorInstance> SensorInstance::create(SensorType type)
{
    switch (type) {
    case RG52x:
        return std::make_unique<TrackingInstance<SpecialSensorInstanceRG52x>>();
    case RG53x:
        return std::make_unique<TrackingInstance<SpecialSensorInstanceRG531>>();
    default:
        return std::make_unique<SensorInstance>(type);
    }
}

} // namespace SondixQt
