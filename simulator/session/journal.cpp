// SPDX-License-Identifier: MIT
#include "journal.h"

#include <algorithm>
#include <system_error>

namespace sondixsim::session {

namespace fs = std::filesystem;

namespace {

constexpr unsigned sizeBits = 40;
constexpr std::uint64_t longSize = 1 << 20;

std::string lineOf(const Journal::Event &event)
{
    return event.dump(-1, ' ', false, Journal::Event::error_handler_t::replace) + '\n';
}

std::vector<Journal::Event> parsed(const std::string &text)
{
    std::vector<Journal::Event> events;
    std::size_t end = 0;
    for (std::size_t line = 0; (end = text.find('\n', line)) != std::string::npos; line = end + 1) {
        auto event = Journal::Event::parse(text.substr(line, end - line), nullptr, false);
        if (event.is_object())
            events.push_back(std::move(event));
    }
    return events;
}

} // namespace

Journal::Journal(fs::path folder, std::atomic<std::uint64_t> &position, Fold fold)
    : m_folder(std::move(folder))
    , m_position(position)
    , m_fold(fold)
    , m_longest(longSize)
{
}

Journal::Place Journal::unpacked(std::uint64_t position)
{
    return {position >> sizeBits, position & ((std::uint64_t(1) << sizeBits) - 1)};
}

std::uint64_t Journal::packed(Place place)
{
    return (place.generation << sizeBits) | place.size;
}

fs::path Journal::file(std::uint64_t generation) const
{
    return m_folder / ("journal-" + std::to_string(generation) + ".jsonl");
}

std::vector<Journal::Event> Journal::read()
{
    std::vector<Event> unread;
    while (isBehind()) {
        const std::uint64_t position = m_position.load(std::memory_order_acquire);
        const Place end = unpacked(position);
        const Place seen = unpacked(m_seen.load(std::memory_order_relaxed));
        const std::uint64_t begin = end.generation == seen.generation ? seen.size : 0;
        std::string text;
        try {
            text = readFrom(file(end.generation), begin, end.size - begin);
        } catch (const std::system_error &) {
            if (m_position.load(std::memory_order_acquire) == position)
                throw;
            continue; // it has just been replaced
        }
        if (text.size() != end.size - begin)
            throw std::system_error(std::make_error_code(std::errc::io_error), file(end.generation).string());
        for (Event &event : parsed(text)) {
            // A journal that has replaced another begins with events that were read already.
            const auto number = event.value("seq", std::uint64_t(0));
            if (number <= m_last)
                continue;
            m_last = number;
            unread.push_back(std::move(event));
        }
        m_seen.store(position, std::memory_order_relaxed);
    }
    return unread;
}

void Journal::append(Event event)
{
    const Place end = unpacked(m_position.load(std::memory_order_acquire));
    const fs::path path = file(end.generation);
    event["seq"] = ++m_last;
    const std::string line = lineOf(event);
    try {
        writeAt(path, end.size, line);
    } catch (...) {
        --m_last;
        throw;
    }
    const Place after{end.generation, end.size + line.size()};
    m_position.store(packed(after), std::memory_order_release);
    m_seen.store(packed(after), std::memory_order_relaxed);
    if (after.size <= m_longest)
        return;
    try {
        replace(after);
    } catch (const std::system_error &) {
        m_longest = 2 * after.size; // a full disk, perhaps: the event is in the long one
    }
}

void Journal::replace(Place place)
{
    std::string text;
    for (const Event &event : m_fold(parsed(readFrom(file(place.generation), 0, place.size))))
        text += lineOf(event);
    const Place after{place.generation + 1, text.size()};
    // A process that was killed here may have left a part of the new file.
    std::error_code ignored;
    fs::remove(file(after.generation), ignored);
    writeAt(file(after.generation), 0, text);
    m_position.store(packed(after), std::memory_order_release);
    m_seen.store(packed(after), std::memory_order_relaxed);
    fs::remove(file(place.generation), ignored);
    m_longest = std::max(longSize, 2 * after.size);
}

} // namespace sondixsim::session
