// SPDX-License-Identifier: MIT
#include "sensorspec.h"

namespace sondixsim::model {

ParameterList SensorSpec::identity() const
{
    ParameterList identity;
    if (!name.empty())
        identity.set("SA_Sensor", name);
    if (!controllerName.empty())
        identity.set("SA_ControllerName", controllerName);
    identity.set("SA_SerialNumber", serialNumber);
    identity.set("SA_ArticleNumber", articleNumber);
    identity.set("SA_Softwareversion", firmware + " (simulator)");
    if (!macAddress.empty())
        identity.set("SA_MacAddress", macAddress);
    return identity;
}

std::string SensorSpec::errorTextLines() const
{
    std::string lines;
    for (const auto &[key, text] : errorTexts)
        lines += (lines.empty() ? "" : "\r\n") + std::to_string(key) + ": " + text;
    return lines;
}

} // namespace sondixsim::model
