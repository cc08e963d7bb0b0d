// SPDX-License-Identifier: MIT
#pragma once

#include "model/session.h"

#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace sondixsim::capi {

/// The state of a handle. The mutex guards everything except the number.
struct Instance
{
    std::mutex mutex;
    std::atomic<std::uint32_t> handle{0}; ///< 0 while unused
    model::Session session;
    model::ParameterList staged;
    model::ParameterList answers;
    std::string answerText; ///< unless empty, GetParameters returns it instead of the answers
    std::string lastCommand;
    std::int32_t errorCode = 0;
    std::string errorText; ///< windows-1250
    double duration = 0.0; ///< bench seconds that pass before the call under way returns

    std::int32_t fail(const model::Outcome &outcome);
    model::ParameterList takeStaged(); ///< for an open or a command; also clears the last answers
    void reset(double now);            ///< to the state of a new instance
};

/// An instance with its mutex locked; empty for an unknown handle.
class LockedInstance
{
public:
    LockedInstance() = default;
    LockedInstance(Instance *instance, std::unique_lock<std::mutex> lock)
        : m_instance(instance)
        , m_lock(std::move(lock))
    {
    }
    explicit operator bool() const { return m_instance != nullptr; }
    Instance *operator->() const { return m_instance; }
    Instance &operator*() const { return *m_instance; }

private:
    Instance *m_instance = nullptr;
    std::unique_lock<std::mutex> m_lock;
};

/// All handles. Instances are reused and never deleted, so that looking one up needs no lock.
class Instances
{
public:
    std::uint32_t create(std::int32_t sensorType); ///< 0 when there are too many
    LockedInstance lock(std::uint32_t handle);
    bool release(std::uint32_t handle, double now);
    void forEach(const std::function<void(Instance &)> &action); ///< each with its mutex locked

private:
    static constexpr std::uint32_t slotBits = 12;
    static constexpr std::uint32_t slots = 1u << slotBits;

    std::mutex m_mutex;
    std::array<std::atomic<Instance *>, slots> m_instances{};
    std::vector<std::uint32_t> m_free; ///< handles to give out next
    std::uint32_t m_used = 0;          ///< slots ever used
};

} // namespace sondixsim::capi
