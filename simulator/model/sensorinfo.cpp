// SPDX-License-Identifier: MIT
#include "sensor.h"

#include <algorithm>

namespace sondixsim::model {

ParameterList Sensor::identity() const
{
    ParameterList identity;
    if (!m_spec.name.empty())
        identity.set("SA_Sensor", m_spec.name);
    if (!m_spec.controllerName.empty())
        identity.set("SA_ControllerName", m_spec.controllerName);
    identity.set("SA_SerialNumber", m_spec.serialNumber);
    identity.set("SA_ArticleNumber", m_spec.articleNumber);
    identity.set("SA_Softwareversion", m_spec.firmware + " (simulator)");
    if (!m_spec.macAddress.empty())
        identity.set("SA_MacAddress", m_spec.macAddress);
    return identity;
}

ParameterList Sensor::foundParameters() const
{
    ParameterList found = m_spec.place.foundParameters();
    if (baudrate() != 0)
        found.set("IP_Baudrate", baudrate());
    found.set("IP_SensorType", m_spec.reportedType());
    found.set("IP_SensorTypeName", m_spec.model);
    found.add(identity());
    if (m_spec.baseType() == 53) {
        std::string all;
        for (const std::string &address : m_spec.place.addresses)
            all += (all.empty() ? "" : " ") + address;
        found.set("SA_CurrentIPAddresses", all);
    }
    found.set("SA_CompleteAnswer", pairsText(identity(), "\r\n"));
    return found;
}

std::string Sensor::settingsText() const
{
    std::string text;
    for (const auto &[group, keys] : m_spec.groups) {
        ParameterList line;
        line.set("S_Command", "Set_" + group);
        for (const std::string &key : keys)
            line.set("SP_" + key.substr(3), *m_settings.find(key));
        text += "\r\n" + pairsText(line, " ");
    }
    return text;
}

std::string Sensor::information() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    ParameterList info;
    info.set("S_Command", std::string("Get_Info"));
    info.set("IP_SensorType", m_spec.reportedType());
    info.add(identity());
    info.add(m_spec.info);
    return pairsText(info, " ") + settingsText();
}

void Sensor::describeFrame(ParameterList &answers) const
{
    std::size_t most = m_spec.signals.size();
    for (const MeasuringMode &mode : m_spec.modes)
        most = std::max(most, mode.signals.size());
    answers.set("IA_Datarate", frameRate());
    answers.set("IA_ValuesPerFrame", static_cast<std::int32_t>(frame().size()));
    answers.set("IA_MaxValuesPerFrame", static_cast<std::int32_t>(most));
    answers.set("IA_VideoSignalsPerFrame", videoSignalsPerFrame());
    int number = 0;
    for (const Signal &signal : frame())
        describeSignal(signal, ++number, answers);
}

void Sensor::describeSignal(const Signal &signal, int number, ParameterList &answers) const
{
    const auto set = [&answers, suffix = std::to_string(number)](const char *key, Value value) {
        answers.append("IA_" + std::string(key) + suffix, std::move(value));
    };
    set("Index", number);
    set("Raw_Name", signal.rawName);
    set("Scaled_Name", signal.scaledName);
    set("Raw_RangeMin", signal.rawMin);
    set("Raw_RangeMax", signal.rawMax);
    set("Scaled_RangeMin", signal.scaledMin);
    set("Scaled_RangeMax", signal.scaledMax);
    set("ViewRange", signal.viewRange);
    set("Raw_Unit", signal.rawUnit);
    set("Scaled_Unit", signal.scaledUnit);
    set("Raw_Datarate", frameRate());
    set("Scaled_Datarate", frameRate());
    set("MajorSignal", signal.major ? 1 : 0);
    set("AdditionalInfo", signal.info);
}

void Sensor::describeDriver(ParameterList &answers) const
{
    answers.set("IA_SensorCount", std::max(1, static_cast<std::int32_t>(m_members.size())));
    if (m_members.empty())
        answers.set("IA_SensorType#1", m_spec.reportedType());
    int number = 0;
    for (const auto &member : m_members)
        answers.set("IA_SensorType#" + std::to_string(++number), member->spec().reportedType());
}

std::string errorTextLines(const std::map<std::int32_t, std::string> &texts)
{
    std::string lines;
    for (const auto &[key, text] : texts)
        lines += (lines.empty() ? "" : "\r\n") + std::to_string(key) + ": " + text;
    return lines;
}

} // namespace sondixsim::model
