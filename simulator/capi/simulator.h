// SPDX-License-Identifier: MIT
#pragma once

#include "calllog.h"
#include "instances.h"
#include "model/clock.h"
#include "model/faults.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <string>

namespace sondixsim::capi {

/// Everything that there is once in a process. Never destroyed: an application's last objects call the
/// library while the program ends.
class Simulator
{
public:
    static Simulator &get();

    model::Clock clock;
    model::Faults faults;
    CallLog callLog;
    Instances instances;
    std::atomic<bool> lineSpeed{true}; ///< serial lines take their time

    /// The bench in use; loads the one that SONDIX_BENCH names, or the built-in one, when none is yet. Null
    /// when that cannot be used.
    std::shared_ptr<const model::Bench> bench();

    void load(std::string_view text, const std::string &name, const std::string &folder); ///< throws BenchError
    void loadFile(const std::string &path);                                               ///< throws BenchError
    void loadBuiltIn();

    /// The last failure that belongs to no handle.
    std::int32_t fail(const model::Outcome &outcome);
    model::Outcome lastFailure();

private:
    void use(const std::shared_ptr<const model::Bench> &bench);
    void loadFirst();

    std::mutex m_loading; ///< held while a bench is read and put in place
    std::mutex m_mutex;   ///< guards the members below
    std::shared_ptr<const model::Bench> m_bench;
    bool m_loaded = false;
    model::Outcome m_loadFailure;
    model::Outcome m_lastFailure;
};

} // namespace sondixsim::capi
