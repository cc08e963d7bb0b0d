// SPDX-License-Identifier: MIT
#pragma once

#include "simulator.h"

#include <functional>
#include <string>
#include <vector>

namespace sondixsim::capi {

/// A call as faults and the call log see it.
struct Observed
{
    std::uint32_t handle = 0;
    std::string parameter;                      ///< name of the parameter in the arguments
    std::vector<std::string> arguments;         ///< as Call::text shows them
    std::function<void(std::int32_t)> setCount; ///< overwrites the count that the call returns
    std::int32_t sensorType = 0;                ///< argument of CreateSensorInstance
    const std::uint32_t *created = nullptr;     ///< receives the handle that it creates
};

std::int32_t invokeObserved(const char *function, const Observed &observed,
                            const std::function<std::int32_t()> &body);

/// Runs a call of the C interface. Fast path: without recording and faults only \a body; \a describe allocates.
template<typename Describe, typename Body>
std::int32_t invoke(const char *function, Describe &&describe, Body &&body)
{
    Simulator &simulator = Simulator::get();
    if (!simulator.callLog.isOn() && !simulator.faults.any())
        return body();
    return invokeObserved(function, describe(), body);
}

/// Runs \a body with the instance of \a handle locked.
template<typename Body>
std::int32_t withInstance(std::uint32_t handle, Body &&body)
{
    Simulator &simulator = Simulator::get();
    LockedInstance instance = simulator.instances.lock(handle);
    if (!instance)
        return simulator.fail(model::failure(model::UnknownHandle, "There is no instance with this handle"));
    return body(*instance);
}

inline std::string quoted(const char *text)
{
    return text == nullptr ? std::string("null") : '"' + std::string(text) + '"';
}

} // namespace sondixsim::capi
