// SPDX-License-Identifier: MIT
#pragma once

#include "simulator.h"

#include <nlohmann/json.hpp>

namespace sondixsim::capi {

/// Does to the bench of this process what \a event says: "do" and its members, as in the journal of a session. A sensor
/// that is not on the bench is ignored.
void applyEvent(Simulator &simulator, const nlohmann::json &event);

/// The event of settings, as applyEvent() takes it.
nlohmann::json settingEvent(const model::Sensor &sensor, const model::SensorChanges &changes);

/// The event that sets the clock of a session from now on.
nlohmann::json clockEvent(double benchTime, const model::ClockSetting &clock);

/// Lets the sensors of a bench be opened by one process of the session only.
void reserveSensors(const model::Bench &bench, session::BenchSession &session);

} // namespace sondixsim::capi
