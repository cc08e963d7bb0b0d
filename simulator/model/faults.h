// SPDX-License-Identifier: MIT
#pragma once

#include "SondixSimulator/control.h"

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace sondixsim::model {

/// The properties of a call that faults filter by.
struct CallDetails
{
    const char *function = "";
    std::uint32_t handle = 0;
    std::int32_t sensorType = 0;
    std::string command;
    std::string parameter;
    std::string sensor;
};

/// The combined effect of all faults that hit a call.
struct FaultEffect
{
    std::int32_t code = 0;
    std::string text;
    bool silent = false;
    double delay = 0.0;
    bool hang = false;
    std::optional<std::string> answer;
    std::optional<std::int32_t> count;
};

class Faults
{
public:
    int add(const Fault &fault);
    void remove(int number);
    void clear();
    void reset(std::uint64_t seed); ///< removes all faults and restarts the random numbers

    std::vector<std::pair<int, Fault>> list(); ///< with their numbers, in the order of add()
    bool any() const { return m_any.load(std::memory_order_acquire); }
    FaultEffect match(const CallDetails &details); ///< counts the call for every fault with matching filters

    void hang(); ///< returns after releaseHangs()
    void releaseHangs();

private:
    struct Entry
    {
        int number = 0;
        std::uint64_t stream = 0; ///< selects its random numbers; counted from reset()
        Fault fault;
        int seen = 0;
        int hits = 0;
    };
    bool hits(Entry &entry);

    std::mutex m_mutex;
    std::condition_variable m_released;
    std::uint64_t m_releases = 0;
    std::vector<Entry> m_entries;
    std::atomic<bool> m_any{false};
    std::uint64_t m_seed = 1;
    std::uint64_t m_lastStream = 0;
    int m_lastNumber = 0;
};

} // namespace sondixsim::model
