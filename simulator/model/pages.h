// SPDX-License-Identifier: MIT
#pragma once

#include "sampler.h"

namespace sondixsim::model {

/// The pages of a sensor's web interface: those that a test sets, those of the bench file, those that all sensors
/// have, and the data behind them. Has no lock of its own: the sensor's mutex guards it.
class Pages
{
public:
    Pages(const SensorSpec &spec, const Settings &settings, const SerialLine &line, const Sampler &sampler);

    void set(const std::string &path, HttpAnswer answer) { m_set[path] = std::move(answer); }
    HttpAnswer answer(const HttpRequest &request, double now) const;

private:
    std::string values(double now) const; ///< "/values.json"
    std::string settings() const;         ///< "/settings.json"

    const SensorSpec &m_spec;
    const Settings &m_settings;
    const SerialLine &m_line;
    const Sampler &m_sampler;
    std::map<std::string, HttpAnswer> m_set;
};

} // namespace sondixsim::model
