// SPDX-License-Identifier: MIT
#include "sensor.h"

#include <algorithm>
#include <cmath>

namespace sondixsim::model {

namespace {

/// Commands that the library answers itself; the sensor goes on measuring undisturbed.
bool isAnsweredByLibrary(const std::string &name)
{
    static const char *const names[] = {"Get_TransmittedDataInfo", "Clear_Buffers",  "Automatic_Setup",
                                        "Get_DrvSetting",          "Get_Samplerate", "Get_SensorErrorValueText"};
    return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

/// What follows \a head in \a name; empty when it does not begin with it.
std::string after(const std::string &name, const char *head)
{
    const std::string prefix = head;
    return name.compare(0, prefix.size(), prefix) == 0 ? name.substr(prefix.size()) : std::string();
}

std::string settingTarget(const std::string &name)
{
    const std::string set = after(name, "Set_");
    return set.empty() ? after(name, "Update_") : set;
}

} // namespace

bool Sensor::commandKnown(const std::string &name) const
{
    if (isAnsweredByLibrary(name) || name == "Get_Info" || name == "Get_AllParameters" ||
        name == m_spec.stopTracking)
        return true;
    if (name == "Get_Measure")
        return m_spec.polled;
    if (name == "Get_Video")
        return !m_spec.video.lines.empty();
    if (name == "Get_HTTP")
        return m_spec.web.present && m_baudrate != 0;
    if (name == "Cmd_Generic")
        return m_spec.web.present;
    const auto isName = [&name](const TrackingCommand &command) { return command.command == name; };
    if (std::any_of(m_spec.tracking.begin(), m_spec.tracking.end(), isName))
        return true;
    const std::string target = settingTarget(name);
    return m_spec.answers.count(name) > 0 || m_spec.groups.count(after(name, "Get_")) > 0 ||
           m_spec.groups.count(target) > 0 || m_settings.find("SA_" + target) != nullptr;
}

Outcome Sensor::command(const std::string &name, const ParameterList &staged, double now, ParameterList &answers)
{
    if (!isPlugged())
        return failure(ConnectionLost, "The connection to the sensor is lost");
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!isHeard())
        return noAnswerAt(m_spec, m_openBaudrate);
    if (name.empty() || !commandKnown(name))
        return failure(UnknownCommand, m_spec.model + " does not know the command \"" + name + '"');

    for (std::size_t i = 0; i < m_spec.tracking.size(); ++i) {
        if (m_spec.tracking[i].command == name) {
            track(static_cast<int>(i), now);
            return {};
        }
    }
    // These sensors serve a command or measure, not both.
    if (!m_spec.tracking.empty() && !isAnsweredByLibrary(name))
        track(-1, now);

    if (name == "Clear_Buffers") {
        produce(now);
        m_ring.clear();
    } else if (name == "Get_Measure") {
        return measure(staged, now);
    } else if (name == "Get_Video") {
        return video(now, answers);
    } else if (name == "Get_HTTP") {
        return http(staged, now, answers);
    } else if (name == "Cmd_Generic") {
        return generic(staged, now, answers);
    } else if (name == "Get_TransmittedDataInfo") {
        describeFrame(answers);
    } else if (name == "Get_DrvSetting") {
        describeDriver(answers);
    } else if (name == "Get_SensorErrorValueText") {
        answers.set("SA_SensorErrorValueText", errorTextLines(m_spec.errorTexts));
    } else if (name == "Get_Info") {
        answers.add(identity());
        answers.add(m_spec.info);
    } else if (name == "Get_AllParameters") {
        answers.add(m_settings);
    } else if (m_spec.groups.count(after(name, "Get_")) > 0) {
        return readGroup(after(name, "Get_"), answers);
    } else if (!settingTarget(name).empty() && m_spec.answers.count(name) == 0) {
        return write(settingTarget(name), staged, now);
    }
    const auto answer = m_spec.answers.find(name);
    if (answer != m_spec.answers.end())
        answers.add(answer->second);
    return {};
}

Outcome Sensor::measure(const ParameterList &staged, double now)
{
    if (m_spec.multi) {
        const Value *const index = staged.find("IP_SensorIndex");
        if (index == nullptr)
            return failure(ParameterMissing, "\"Get_Measure\" needs IP_SensorIndex");
        const std::int32_t number = toInt(*index).value_or(0);
        if (number < 1 || number > static_cast<std::int32_t>(m_members.size()))
            return failure(OutOfRange, "There is no sensor number " + std::to_string(number));
    }
    produce(now);
    return {};
}

Outcome Sensor::readGroup(const std::string &group, ParameterList &answers) const
{
    for (const std::string &key : m_spec.groups.at(group))
        answers.set(key, *m_settings.find(key));
    return {};
}

Outcome Sensor::checkSetting(const std::string &group, const Parameter &parameter, std::string &key,
                             Value &value) const
{
    key = "SA_" + parameter.name.substr(3);
    const Value *const before = m_settings.find(key);
    const auto found = m_spec.groups.find(group);
    const bool inGroup = found == m_spec.groups.end() ||
                         std::find(found->second.begin(), found->second.end(), key) != found->second.end();
    if (before == nullptr || !inGroup)
        return failure(UnknownParameter, m_spec.model + " has no \"" + parameter.name + "\" in \"" + group + '"');
    return checkValue(key, parameter.name, parameter.value, value);
}

Outcome Sensor::checkValue(const std::string &key, const std::string &shownName, const Value &wanted,
                           Value &value) const
{
    const auto converted = convertedLike(wanted, *m_settings.find(key));
    if (!converted)
        return failure(WrongType, "\"" + shownName + "\" has the wrong type");
    value = *converted;
    const auto limits = m_spec.limits.find(key);
    const auto number = toDouble(value);
    if (number && !std::isfinite(*number))
        return failure(OutOfRange, "\"" + shownName + "\" must be a finite number");
    if (limits != m_spec.limits.end() && number &&
        (*number < limits->second.first || *number > limits->second.second)) {
        return failure(OutOfRange, "\"" + shownName + "\" must be from " + formatDouble(limits->second.first) +
                                       " to " + formatDouble(limits->second.second));
    }
    return {};
}

void Sensor::apply(const ParameterList &changes, double now)
{
    produce(now);
    m_settings.add(changes);
    selectFrame();
    restart(now);
}

Outcome Sensor::write(const std::string &group, const ParameterList &staged, double now)
{
    ParameterList changes;
    for (const Parameter &parameter : staged) {
        if (parameter.name.compare(0, 3, "SP_") != 0)
            continue;
        std::string key;
        Value value;
        Outcome outcome = checkSetting(group, parameter, key, value);
        if (!outcome.ok())
            return outcome;
        changes.set(key, std::move(value));
    }
    if (changes.empty())
        return failure(ParameterMissing, "Nothing is given to be set in \"" + group + '"');
    apply(changes, now);
    return {};
}

} // namespace sondixsim::model
