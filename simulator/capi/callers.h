// SPDX-License-Identifier: MIT
#pragma once

#include "model/clock.h"

#include <cstdint>
#include <map>
#include <mutex>

namespace sondixsim::capi {

/// Finds out when all that a program does with the bench waits for time to pass. Every function may be called from any
/// thread.
///
/// An instance waits from a call that was in vain, such as one for values that have not arisen, to the next step of the
/// clock. One that was not called while others were called many times in vain is not waited for: the program has
/// turned to something else.
class Callers
{
public:
    /// A call with the instance \a handle, at the bench time \a time, was in vain. Steps \a clock if all wait now.
    void wait(std::uint32_t handle, double time, model::Clock &clock);
    void goOn(std::uint32_t handle);   ///< a call with it was not in vain
    void forget(std::uint32_t handle); ///< it is closed, or its search has ended
    void clear();

private:
    struct Caller
    {
        bool isWaiting = false;
        std::uint64_t lastCall = 0; ///< number of calls in vain at its last call
    };

    std::mutex m_mutex;
    std::map<std::uint32_t, Caller> m_callers; ///< by handle
    std::uint64_t m_calls = 0;                 ///< in vain
};

} // namespace sondixsim::capi
