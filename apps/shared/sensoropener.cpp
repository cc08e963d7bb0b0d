// SPDX-License-Identifier: MIT
#include "sensoropener.h"

#include "trackinginstance.h"

using namespace SondixQt;

namespace SondixApp {

Q_LOGGING_CATEGORY(trackingLog, "SondixQt.Application.Tracking")

std::unique_ptr<SensorInstance> createInstance(SensorType type)
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

ErrorCode openInstance(SensorInstance &instance, const QMap<QString, QVariant> &parameters, QString *errorText)
{
    const ErrorCode code = instance.open(parameters, errorText);
    if (code == NoError && qobject_cast<SpecialSensorInstance *>(&instance)) {
        // Any command makes these instances learn the mode; a sensor that does not tell it can still be read.
        int mode = 0;
        instance.sendCommandGetInt(QStringLiteral("Get_Autostart"), QStringLiteral("SA_AutostartCommand"), mode);
    }
    return code;
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
