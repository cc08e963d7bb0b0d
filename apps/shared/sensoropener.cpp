// SPDX-License-Identifier: MIT
#include "sensoropener.h"

#include <SondixQt/sensorinfo.h>
#include <SondixQt/specialsensorinstance.h>

#include <algorithm>
#include <initializer_list>

using namespace SondixQt;

namespace SondixApp {

namespace {

// Whether \a general is \a type or a family that it belongs to.
bool isGeneral(SensorType general, SensorType type)
{
    constexpr int step = 10000;
    const auto isOneOf = [type](std::initializer_list<SensorType> types) {
        return std::find(types.begin(), types.end(), type) != types.end();
    };
    return general == type || general == type % step || (general == MV4xx && isOneOf({MV410, MV420, MV430})) ||
           (general == MV4xx_XA300ETH && isOneOf({MV410_XA300ETH, MV420_XA300ETH, MV430_XA300ETH}));
}

} // namespace

ErrorCode openInstance(SensorInstance &instance, const QMap<QString, QVariant> &parameters, QString *errorText)
{
    const ErrorCode code = instance.open(parameters, errorText);
    if (code == NoError && qobject_cast<SpecialSensorInstance *>(&instance)) {
        // Any command makes these instances read the mode. Failure is ignored: the sensor can be read all the same.
        int mode = 0;
        instance.sendCommandGetInt(QStringLiteral("Get_Autostart"), QStringLiteral("SA_AutostartCommand"), mode);
    }
    return code;
}

SensorAddress answeringSensor(const SensorInstance &instance, const SensorAddress &address)
{
    // A multi-sensor answers with the descriptions of its members.
    if (address.type == MultiSensor || instance.getInfoParameters().isEmpty())
        return address;
    const SensorType reported = SensorInfo(instance.getInfoParameters().first(), NoSensor).sensorType();
    if (reported == NoSensor || isGeneral(reported, address.type) || isGeneral(address.type, reported))
        return address;
    return {reported, address.parameters};
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
