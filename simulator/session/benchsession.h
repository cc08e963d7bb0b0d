// SPDX-License-Identifier: MIT
#pragma once

#include "journal.h"
#include "model/faults.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace sondixsim::session {

/// Why a session cannot be started or used, for users.
struct SessionError : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/// A bench file. A session keeps the text with which it was started.
struct BenchText
{
    std::string name; ///< for error messages
    std::string text;
    std::string folder; ///< of files that the text names
};

/// A bench that lives on between programs and that several programs use at the same time.
///
/// There is no server. A session is a folder with the bench file, a journal of what happened on the bench, locks of the
/// sensors that are open, and a small file that all processes map into their memory. Each process simulates the sensors
/// that it has opened: values depend on seed, time and settings only, so that all processes would simulate the same ones.
///
/// Every function may be called from any thread. They throw SessionError or std::system_error.
class BenchSession
{
public:
    using Event = Journal::Event;
    using Apply = std::function<void(const Event &event)>;

    /// \name Sessions of this user
    /// \{
    static std::filesystem::path folderOfAll();
    static std::vector<std::string> names();
    /// Starts one with a bench that has \a counters faults and expectations of its own, and with \a clock as its first
    /// event.
    static void start(const std::string &name, const BenchText &bench, std::size_t counters, Event clock,
                      bool isLogged);
    static void stop(const std::string &name); ///< for all programs that use it
    /// \}

    explicit BenchSession(const std::string &name);

    const std::string &name() const { return m_name; }
    BenchText bench() const;
    double age() const; ///< seconds of real time since its start

    /// How many programs have used its sensors, each time that they attached to it. Those that only control the bench do
    /// not count.
    /// \{
    void noteUse()
    {
        if (!m_isUsed.exchange(true))
            ++m_state->users;
    }
    std::uint32_t users() const { return m_state->users.load(); }
    /// \}

    /// \name Events
    /// \a apply is called for each event, in the order in which they happened, never by two threads at a time. If it
    /// throws, the exception is passed on, and the events behind are applied later.
    /// \{
    bool isBehind() const { return m_journal.isBehind() || m_isUnapplied.load(std::memory_order_relaxed); }
    void follow(const Apply &apply); ///< applies what happened in other processes
    /// Appends \a event with the bench time \a now, and applies it here after all that happened before.
    void publish(Event event, double now, const Apply &apply);
    /// \}

    /// \name Sensors
    /// By their number in the bench file, from 0. One process can claim a sensor.
    /// \{
    bool claim(std::size_t sensor);
    void release(std::size_t sensor);
    bool isClaimedByOther(std::size_t sensor);
    /// The process that has claimed a sensor last, as "<number> <program>"; also this one. Empty if none has.
    std::string claimer(std::size_t sensor);
    /// \}

    /// The time of a virtual clock, in nanoseconds.
    std::atomic<std::int64_t> &virtualTime() { return m_state->virtualTime; }
    void setVirtualTime(double seconds);
    static constexpr std::size_t maxFaults = 4000;
    model::FaultCounter &faultCounter(int number)
    {
        return m_state->faults.at(static_cast<std::size_t>(number) - 1);
    }
    /// A number for a further fault, from 1. The faults and expectations of the bench file have the first numbers.
    int newFault();

    /// \name Log of calls
    /// \{
    /// Whether calls of a C function are logged now: transfers and the look for values only while somebody follows the log.
    bool isLogged(const char *function = "") const;
    void keepFollowing(); ///< logs all calls for the next three seconds
    std::filesystem::path logFile() const { return m_folder / "calls.log"; }
    void log(const std::string &line);
    /// \}

private:
    /// In memory that all processes of the session share.
    struct State
    {
        std::atomic<std::uint64_t> journalEnd;
        std::atomic<std::int64_t> virtualTime;
        std::atomic<std::int64_t> followedUntil; ///< milliseconds of the system clock
        std::atomic<std::uint32_t> isStopped;
        std::atomic<std::uint32_t> isLogged;
        std::atomic<std::uint32_t> users;
        std::atomic<std::uint64_t> lastFault;
        std::array<model::FaultCounter, maxFaults> faults;
    };
    static_assert(std::atomic<std::uint64_t>::is_always_lock_free &&
                  std::atomic<std::int64_t>::is_always_lock_free);

    struct Folders
    {
        std::optional<std::filesystem::path> running;
        long long last = 0; ///< number of the last one
    };
    static Folders foldersOf(const std::string &name); ///< removes those of stopped sessions
    /// Of programs that were killed while they started a session, and of stopped sessions that a program was using.
    static void removeLeftovers();
    static bool isStopped(const std::filesystem::path &folder);
    void checkIsRunning() const; // throws SessionError
    static bool isRunning(const std::filesystem::path &folder);
    void readNew(const Apply &apply);
    bool isFollowed() const;

    const std::string m_name;
    const std::filesystem::path m_folder;
    MappedFile m_memory;
    State *const m_state;
    LockFile m_locks;
    std::mutex m_mutex; ///< guards the journal
    Journal m_journal;
    std::deque<Event> m_unapplied; ///< events that were read, but not applied yet
    std::atomic<bool> m_isUnapplied{false};
    std::atomic<bool> m_isUsed{false}; ///< by this process
    std::mutex m_logMutex;             ///< guards the change to another log file
};

} // namespace sondixsim::session
