// SPDX-License-Identifier: MIT
#pragma once

#include "errors.h"
#include "sensorspec.h"

namespace sondixsim::model {

/// The settings of a sensor, the rules for changing them and what follows from them alone. Has no lock of its own:
/// the sensor's mutex guards it.
class Settings
{
public:
    explicit Settings(const SensorSpec &spec);

    const ParameterList &all() const { return m_values; }
    const Value *find(std::string_view key) const { return m_values.find(key); }
    /// A setting as an integer; \a otherwise when there is no such setting or it is not a number.
    std::int32_t number(std::string_view key, std::int32_t otherwise) const;
    const ParameterList &defaults() const { return m_spec.settings; }

    const MeasuringMode *measuringMode() const; ///< null when the present mode has no entry of its own
    bool waitsForTrigger() const;
    std::int32_t averagedMeasurements() const; ///< in a frame, at least 1

    /// Converts \a wanted to the type of the setting \a key and checks its limits. Errors call it \a shownName.
    Outcome check(const std::string &key, const std::string &shownName, const Value &wanted, Value &value) const;
    /// Collects in \a changes what the "SP_" parameters among \a staged change in a group or a single setting.
    Outcome checkGroup(const std::string &group, const ParameterList &staged, ParameterList &changes) const;
    void change(const ParameterList &changes) { m_values.add(changes); }

private:
    const SensorSpec &m_spec;
    ParameterList m_values;
};

} // namespace sondixsim::model
