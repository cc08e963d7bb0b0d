// SPDX-License-Identifier: MIT
#pragma once

#include "search.h"
#include "sensor.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace sondixsim::model {

/// The clock that a bench file asks for.
struct ClockSetting
{
    bool isVirtual = false;
    double speed = 1.0;
    double step = 0.0; ///< by which a virtual clock steps itself; 0 if it does not
};

struct Bench
{
    std::string name;
    std::uint64_t seed = 1;
    std::optional<ClockSetting> clock;
    SearchTimes searchTimes;
    bool lineSpeed = true;
    std::vector<Fault> faults;                 ///< of calls to any sensor, or to none
    std::vector<SpecExpectation> expectations; ///< likewise
    std::vector<std::shared_ptr<Sensor>> sensors;

    std::shared_ptr<Sensor> find(const std::string &serialNumber) const; ///< null when there is none
    void setPlugged(Sensor &sensor, bool plugged, double now) const;
    void setLineSpeed(bool on, double now) const; ///< whether lines take time
};

/// Throws ParseError. File names in the text are relative to \a folder.
std::shared_ptr<const Bench> readBench(std::string_view text, const std::string &folder);

} // namespace sondixsim::model
