// SPDX-License-Identifier: MIT
#pragma once

#include "SondixSimulator/control.h"

#include <atomic>
#include <mutex>
#include <vector>

namespace sondixsim::capi {

unsigned threadNumber(); ///< of the calling thread, in the order of their first calls

/// The C calls made while recording is on, in the order in which they began.
class CallLog
{
public:
    bool isOn() const { return m_on.load(std::memory_order_relaxed); }
    void record(bool on) { m_on.store(on, std::memory_order_relaxed); }

    struct Ticket
    {
        std::size_t index = 0;
        std::uint64_t generation = 0;
    };
    Ticket begin(Call call);
    void end(Ticket ticket, std::int32_t result, std::uint32_t handle);

    std::vector<Call> calls() const;
    void clear();

private:
    mutable std::mutex m_mutex;
    std::atomic<bool> m_on{false};
    std::vector<Call> m_calls;
    std::uint64_t m_generation = 1; ///< incremented by clear(): older tickets are invalid
};

} // namespace sondixsim::capi
