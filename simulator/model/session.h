// SPDX-License-Identifier: MIT
#pragma once

#include "bench.h"
#include "command.h"
#include "logfile.h"
#include "search.h"
#include "sensor.h"

namespace sondixsim::model {

/// What a handle stands for on a bench: a type of sensor, the sensor that is open, a search, a log. It works with
/// values alone; staging parameters, keeping answers and error texts is up to the C interface. One thread at a time.
struct Session
{
    std::uint32_t handle = 0;
    std::int32_t sensorType = 0;
    std::shared_ptr<Sensor> sensor; ///< null while closed
    std::unique_ptr<Search> search;
    std::shared_ptr<LogFile> log; ///< null while nothing is logged
    std::string logName;

    Outcome open(const Bench &bench, const ParameterList &staged, double now, ParameterList &answers);
    Outcome close(double now);
    Outcome command(const CommandCall &call);
    void closeSensor(double now); ///< does nothing while closed

private:
    void openClaimed(const ParameterList &staged, double now, ParameterList &answers);
};

/// The sensor that \a staged interface parameters lead to; null with the reason in \a failure when there is none.
std::shared_ptr<Sensor> findSensor(const Bench &bench, std::int32_t sensorType, const ParameterList &staged,
                                   double now, Outcome &failure);

} // namespace sondixsim::model
