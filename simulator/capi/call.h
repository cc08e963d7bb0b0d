// SPDX-License-Identifier: MIT
#pragma once

#include "simulator.h"

#include <exception>
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

/// The result of a call that ended in \a error, which also becomes the error of \a handle, or that without a handle.
std::int32_t failWith(std::uint32_t handle, const std::exception &error) noexcept;

/// Runs \a body. Its exceptions end here: none may leave the C interface.
template<typename Body>
std::int32_t contained(std::uint32_t handle, Body &&body)
{
    // All exceptions of the simulator are std::exceptions. What cancels a thread is not, and must pass through.
    try {
        return body();
    } catch (const std::exception &error) {
        return failWith(handle, error);
    }
}

/// Whether a call goes into the log of the session.
inline bool isLogged(const Simulator &simulator, const char *function)
{
    const session::BenchSession *const session = simulator.session();
    return session != nullptr && session->isLogged(function);
}

/// Runs a call of the C interface. Fast path: without recording and faults only \a body; \a describe allocates.
template<typename Describe, typename Body>
std::int32_t invoke(const char *function, std::uint32_t handle, Describe &&describe, Body &&body)
{
    return contained(handle, [&] {
        Simulator &simulator = Simulator::get();
        simulator.follow();
        if (!simulator.callLog.isOn() && !simulator.faults.any() && !simulator.expectations.countCalls() &&
            !simulator.callEvents.any() && !isLogged(simulator, function))
            return body();
        return invokeObserved(function, describe(), body);
    });
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
