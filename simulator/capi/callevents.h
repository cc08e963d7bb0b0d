// SPDX-License-Identifier: MIT
#pragma once

#include "expectations.h"

#include <nlohmann/json.hpp>

namespace sondixsim::capi {

/// The events of timelines that happen at certain calls. Any thread may call it.
class CallEvents
{
public:
    /// How many a bench has.
    static std::size_t countOf(const model::Bench &bench);
    /// Replaces all by those of \a bench, whose counters have indices from 0 to countOf() - 1.
    void use(const model::Bench &bench, const Expectations::CounterAt &counterAt);

    bool any() const { return m_calls.any(); }
    /// What happens at a call, as applyEvent() takes it.
    std::vector<nlohmann::json> at(const model::CallDetails &call);

private:
    struct Entry
    {
        std::string sensor; ///< serial number
        std::size_t event = 0;
        Fault call;
    };
    static std::vector<Entry> entriesOf(const model::Bench &bench);

    std::mutex m_mutex; ///< guards the entries
    std::vector<Entry> m_entries;
    model::Faults m_calls; ///< without an effect; the number of a fault is that of the entry, from 1
};

} // namespace sondixsim::capi
