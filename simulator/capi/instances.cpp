// SPDX-License-Identifier: MIT
#include "instances.h"

#include "model/text.h"

namespace sondixsim::capi {

std::int32_t Instance::fail(const model::Outcome &outcome)
{
    errorCode = outcome.code;
    errorText = model::toWindows1250Lossy(outcome.text);
    if (session.log)
        session.log->write(model::LogErrors, "error " + std::to_string(errorCode) + ": " + errorText);
    return outcome.code;
}

model::ParameterList Instance::takeStaged()
{
    answers.clear();
    answerText.clear();
    model::ParameterList taken = std::move(staged);
    staged.clear();
    return taken;
}

void Instance::reset(double now)
{
    session.closeSensor(now);
    session = {};
    takeStaged();
    lastCommand.clear();
    errorCode = 0;
    errorText.clear();
}

std::uint32_t Instances::create(std::int32_t sensorType)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::uint32_t handle = 0;
    if (!m_free.empty()) {
        handle = m_free.back();
        m_free.pop_back();
    } else if (m_used + 1 < slots) {
        handle = ++m_used;
        m_instances[handle].store(new Instance, std::memory_order_release);
    } else {
        return 0;
    }
    Instance *const instance = m_instances[handle % slots].load(std::memory_order_acquire);
    const std::lock_guard<std::mutex> instanceLock(instance->mutex);
    instance->session.handle = handle;
    instance->session.sensorType = sensorType;
    instance->handle.store(handle, std::memory_order_release);
    return handle;
}

LockedInstance Instances::lock(std::uint32_t handle)
{
    Instance *const instance = m_instances[handle % slots].load(std::memory_order_acquire);
    if (handle == 0 || instance == nullptr)
        return {};
    std::unique_lock<std::mutex> lock(instance->mutex);
    if (instance->handle.load(std::memory_order_relaxed) != handle)
        return {};
    return {instance, std::move(lock)};
}

bool Instances::release(std::uint32_t handle, double now)
{
    {
        const LockedInstance instance = lock(handle);
        if (!instance)
            return false;
        instance->reset(now);
        instance->handle.store(0, std::memory_order_release);
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    // The slot is reused under another number, so that the released handle stays invalid.
    m_free.push_back(handle + slots);
    return true;
}

void Instances::forEach(const std::function<void(Instance &)> &action)
{
    for (auto &slot : m_instances) {
        Instance *const instance = slot.load(std::memory_order_acquire);
        if (instance == nullptr)
            continue;
        const std::lock_guard<std::mutex> lock(instance->mutex);
        if (instance->handle.load(std::memory_order_relaxed) != 0)
            action(*instance);
    }
}

} // namespace sondixsim::capi
