// SPDX-License-Identifier: MIT
#include "settings.h"

#include <algorithm>
#include <cmath>

namespace sondixsim::model {

Settings::Settings(const SensorSpec &spec)
    : m_spec(spec)
    , m_values(spec.settings)
{
}

std::int32_t Settings::number(std::string_view key, std::int32_t otherwise) const
{
    const Value *const value = m_values.find(key);
    return value != nullptr ? toInt(*value).value_or(otherwise) : otherwise;
}

const MeasuringMode *Settings::measuringMode() const
{
    const std::int32_t number = this->number(m_spec.modeParameter, -1);
    const auto hasNumber = [number](const MeasuringMode &mode) { return mode.number == number; };
    const auto found = std::find_if(m_spec.modes.begin(), m_spec.modes.end(), hasNumber);
    return found != m_spec.modes.end() ? &*found : nullptr;
}

bool Settings::waitsForTrigger() const
{
    return number(m_spec.triggerParameter, m_spec.triggerOff) != m_spec.triggerOff;
}

std::int32_t Settings::averagedMeasurements() const
{
    const bool isOff = !m_spec.averagingType.empty() && number(m_spec.averagingType, 0) == 0;
    return isOff ? 1 : std::max(1, number(m_spec.averagingNumber, 1));
}

Outcome Settings::check(const std::string &key, const std::string &shownName, const Value &wanted,
                        Value &value) const
{
    const auto converted = convertedLike(wanted, *m_values.find(key));
    if (!converted)
        return failure(WrongType, "\"" + shownName + "\" has the wrong type");
    value = *converted;
    const auto number = toDouble(value);
    if (number && !std::isfinite(*number))
        return failure(OutOfRange, "\"" + shownName + "\" must be a finite number");
    const auto limits = m_spec.limits.find(key);
    if (limits != m_spec.limits.end() && number &&
        (*number < limits->second.first || *number > limits->second.second)) {
        return failure(OutOfRange, "\"" + shownName + "\" must be from " + formatDouble(limits->second.first) +
                                       " to " + formatDouble(limits->second.second));
    }
    return {};
}

Outcome Settings::checkGroup(const std::string &group, const ParameterList &staged, ParameterList &changes) const
{
    const auto found = m_spec.groups.find(group);
    const auto isInGroup = [&](const std::string &key) {
        return found == m_spec.groups.end() ||
               std::find(found->second.begin(), found->second.end(), key) != found->second.end();
    };
    for (const Parameter &parameter : staged) {
        if (parameter.name.compare(0, 3, "SP_") != 0)
            continue;
        const std::string key = "SA_" + parameter.name.substr(3);
        if (m_values.find(key) == nullptr || !isInGroup(key)) {
            return failure(UnknownParameter,
                           m_spec.model + " has no \"" + parameter.name + "\" in \"" + group + '"');
        }
        Value value;
        Outcome outcome = check(key, parameter.name, parameter.value, value);
        if (!outcome.ok())
            return outcome;
        changes.set(key, std::move(value));
    }
    if (changes.empty())
        return failure(ParameterMissing, "There is no parameter to set in \"" + group + '"');
    return {};
}

} // namespace sondixsim::model
