// SPDX-License-Identifier: MIT
#include "call.h"
#include "sondix.h"

using namespace sondixsim::capi;
namespace model = sondixsim::model;

namespace {

/// Runs \a body with the open sensor of a handle. Its failure becomes the error of the handle.
/// \a count is the number of values that it returns.
template<typename Body>
std::int32_t withSensor(std::uint32_t handle, const std::int32_t *count, bool othersGiven, Body &&body)
{
    return withInstance(handle, [&](Instance &instance) -> std::int32_t {
        if (count == nullptr || !othersGiven)
            return instance.fail(model::failure(model::InvalidArgument, "The pointer to the result is null"));
        if (!instance.session.sensor)
            return instance.fail(model::failure(model::NotOpen, "The sensor is not open"));
        const double now = Simulator::get().clock.now();
        const model::Outcome outcome = body(*instance.session.sensor, now);
        if (outcome.ok())
            Simulator::get().noteAnswer(instance, now, *count > 0);
        else if (outcome.code == model::ConnectionLost)
            Simulator::get().noteFailure(instance, now);
        return outcome.ok() ? outcome.code : instance.fail(outcome);
    });
}

Observed transfer(std::uint32_t handle, const std::int32_t *raw, const double *scaled, std::int32_t maxCount,
                  std::int32_t *read)
{
    Observed observed;
    observed.handle = handle;
    observed.arguments = {raw != nullptr ? "raw" : "null", scaled != nullptr ? "scaled" : "null",
                          std::to_string(maxCount)};
    if (read != nullptr)
        observed.setCount = [read](std::int32_t count) { *read = count; };
    return observed;
}

} // namespace

extern "C" {

std::int32_t DataAvail(std::uint32_t handle, std::int32_t *available)
{
    const auto describe = [&] {
        Observed observed;
        observed.handle = handle;
        if (available != nullptr)
            observed.setCount = [available](std::int32_t count) { *available = count; };
        return observed;
    };
    return invoke("DataAvail", handle, describe, [&] {
        return withSensor(handle, available, true,
                          [&](model::Sensor &sensor, double now) { return sensor.available(now, available); });
    });
}

std::int32_t TransferData(std::uint32_t handle, std::int32_t *raw, double *scaled, std::int32_t maxCount,
                          std::int32_t *read)
{
    return invoke(
        "TransferData", handle, [&] { return transfer(handle, raw, scaled, maxCount, read); },
        [&] {
            return withSensor(handle, read, true, [&](model::Sensor &sensor, double now) {
                return sensor.transfer(now, raw, scaled, maxCount, read, nullptr);
            });
        });
}

std::int32_t TransferDataTS(std::uint32_t handle, std::int32_t *raw, double *scaled, std::int32_t maxCount,
                            std::int32_t *read, double *timestamp)
{
    return invoke(
        "TransferDataTS", handle, [&] { return transfer(handle, raw, scaled, maxCount, read); },
        [&] {
            return withSensor(handle, read, timestamp != nullptr, [&](model::Sensor &sensor, double now) {
                return sensor.transfer(now, raw, scaled, maxCount, read, timestamp);
            });
        });
}
}
