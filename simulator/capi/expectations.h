// SPDX-License-Identifier: MIT
#pragma once

#include "model/bench.h"
#include "model/faults.h"
#include "SondixSimulator/control.h"

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace sondixsim::capi {

/// What the bench file expects of the programs that use the bench, and the counters for it. Any thread may call it.
class Expectations
{
public:
    /// Gives the counter of the expectation with this index, from 0 in the order of countOf().
    using CounterAt = std::function<std::shared_ptr<model::FaultCounter>(std::size_t index)>;

    /// How many a bench has.
    static std::size_t countOf(const model::Bench &bench);
    /// Replaces all by those of \a bench.
    void use(const std::shared_ptr<const model::Bench> &bench, const CounterAt &counterAt);

    bool countCalls() const { return m_calls.any(); }
    void count(const model::CallDetails &call) { m_calls.match(call); }

    std::vector<Expectation> check(double now); ///< in the order of the bench file

private:
    struct Entry
    {
        model::SpecExpectation spec;
        std::shared_ptr<model::Sensor> sensor;                      ///< null: all sensors
        std::vector<std::shared_ptr<model::Sensor>> countedSensors; ///< whose frames count
        std::shared_ptr<model::FaultCounter> counter;
    };
    static std::vector<Entry> entriesOf(const model::Bench &bench);

    std::mutex m_mutex; ///< guards the entries
    std::vector<Entry> m_entries;
    model::Faults m_calls; ///< without an effect: they count calls
};

} // namespace sondixsim::capi
