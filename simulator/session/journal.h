// SPDX-License-Identifier: MIT
#pragma once

#include "files.h"

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <vector>

namespace sondixsim::session {

/// What happened on a bench, in the order in which it happened: one JSON object a line, with a number "seq". All processes
/// append to it and read what others appended.
///
/// A line counts when its end is in the shared position: what a killed process has written in part is cut off by the next
/// one that appends. The journal is replaced by a shorter one, with the same effect, when it has become long.
///
/// Not thread-safe. Every function throws std::system_error if a file cannot be used.
class Journal
{
public:
    using Event = nlohmann::json;
    /// Shortens a list of events.
    using Fold = std::vector<Event> (*)(std::vector<Event>);

    /// \a position lies in memory that all processes share.
    Journal(std::filesystem::path folder, std::atomic<std::uint64_t> &position, Fold fold);

    /// Whether others have appended something that was not read yet. May be called at any time by any thread.
    bool isBehind() const
    {
        return m_position.load(std::memory_order_acquire) != m_seen.load(std::memory_order_relaxed);
    }

    /// The events that were not read yet.
    std::vector<Event> read();

    /// Takes everything for read.
    void skip() { m_seen.store(m_position.load()); }

    /// Appends \a event with its number, while the journal is locked. Call it only after read().
    void append(Event event);

private:
    struct Place
    {
        std::uint64_t generation;
        std::uint64_t size;
    };
    static Place unpacked(std::uint64_t position);
    static std::uint64_t packed(Place place);
    std::filesystem::path file(std::uint64_t generation) const;
    void replace(Place place);

    const std::filesystem::path m_folder;
    std::atomic<std::uint64_t> &m_position;
    const Fold m_fold;
    std::atomic<std::uint64_t> m_seen{0}; ///< what has been read, as a position
    std::uint64_t m_last = 0;             ///< number of the last event that was read
    std::uint64_t m_longest;              ///< size after which it is replaced
};

} // namespace sondixsim::session
