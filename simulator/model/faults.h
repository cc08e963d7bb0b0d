// SPDX-License-Identifier: MIT
#pragma once

#include "SondixSimulator/control.h"

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
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
    double time = 0.0;
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
    Damage damage = Damage::None;
    std::optional<std::int32_t> count;
    std::vector<int> numbers; ///< of these faults
};

/// The texts of Damage in bench files and requests, in the order of its values.
constexpr const char *damageNames[] = {"none", "cut", "garbled", "empty"};

/// Why \a fault could never have an effect, whatever the bench is; empty: it could.
std::string faultProblem(const Fault &fault);

/// An answer after its way.
std::string damaged(std::string answer, Damage damage);

/// How often calls have matched a fault and were hit by it.
struct FaultCounter
{
    std::atomic<std::int64_t> seen{0};
    std::atomic<std::int64_t> hits{0};
};

class Faults
{
public:
    int add(const Fault &fault);
    void add(const Fault &fault, int number, std::shared_ptr<FaultCounter> counter);
    void remove(int number);
    void clear();
    void reset(std::uint64_t seed); ///< removes all faults and restarts the random numbers

    std::vector<std::pair<int, Fault>> list(); ///< with their numbers, in the order of add()
    bool any() const { return m_any.load(std::memory_order_acquire); }
    FaultEffect match(const CallDetails &details); ///< counts the call for every fault with matching filters

    /// Returns after releaseHangs(). Calls \a whileHanging now and then, which may release it.
    void hang(const std::function<void()> &whileHanging);
    void releaseHangs();

private:
    struct Entry
    {
        int number = 0;
        std::uint64_t stream = 0; ///< selects its random numbers; counted from reset()
        Fault fault;
        std::shared_ptr<FaultCounter> counter;
    };
    bool hits(const Entry &entry) const;

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
