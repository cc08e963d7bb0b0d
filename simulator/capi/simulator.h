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

/// The state of the process. Never destroyed: applications may call the library from static destructors.
class Simulator
{
public:
    static Simulator &get();

    model::Clock clock;
    model::Faults faults;
    CallLog callLog;
    Instances instances;
    std::atomic<bool> lineSpeed{true}; ///< whether calls last as long as their bytes on a serial line

    /// The bench in use. The first call loads the one that SONDIX_BENCH names, else the built-in one. Null when that
    /// file has an error.
    std::shared_ptr<const model::Bench> bench();

    void load(std::string_view text, const std::string &name, const std::string &folder); ///< throws BenchError
    void loadFile(const std::string &path);                                               ///< throws BenchError
    void loadBuiltIn();

    /// Keeps a failure without a handle for lastFailure(); returns its code.
    std::int32_t fail(const model::Outcome &outcome);
    model::Outcome lastFailure();

private:
    void use(const std::shared_ptr<const model::Bench> &bench);
    void loadFirst();

    std::mutex m_loading; ///< locked while a bench is loaded
    std::mutex m_mutex;   ///< guards the members below
    std::shared_ptr<const model::Bench> m_bench;
    bool m_loaded = false;
    model::Outcome m_loadFailure;
    model::Outcome m_lastFailure;
};

} // namespace sondixsim::capi
