// SPDX-License-Identifier: MIT
#include "logfile.h"

#include "platform.h"

#include <array>
#include <cctype>
#include <chrono>
#include <cstdlib>
#include <ctime>

namespace sondixsim::model {

namespace {

std::string timeOfDay()
{
    const auto now = std::chrono::system_clock::now();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    const std::tm parts = localTime(seconds);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &parts);
    const auto milliseconds =
        std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
    const std::string fraction = std::to_string(1000 + milliseconds).substr(1);
    return std::string(text.data()) + '.' + fraction;
}

/// The name with "%[n]" replaced by a number. \a maxCount limits the number of files unless 0.
std::string nextFile(const std::string &name, std::int32_t maxCount)
{
    const std::size_t start = name.find("%[");
    const std::size_t end = start == std::string::npos ? start : name.find_first_not_of("0123456789", start + 2);
    if (end == std::string::npos || end == start + 2 || name[end] != ']')
        return name;
    long files = std::strtol(name.c_str() + start + 2, nullptr, 10);
    if (maxCount > 0 && maxCount < files)
        files = maxCount;
    std::string oldest;
    std::int64_t oldestTime = 0;
    for (long i = 0; i < files; ++i) {
        std::string candidate = name.substr(0, start) + std::to_string(i) + name.substr(end + 1);
        std::error_code absent;
        const std::int64_t time = lastWritten(pathFromNative(candidate), absent);
        if (absent)
            return candidate;
        if (oldest.empty() || time < oldestTime) {
            oldest = candidate;
            oldestTime = time;
        }
    }
    return oldest.empty() ? name : oldest;
}

} // namespace

std::shared_ptr<LogFile> LogFile::open(const std::string &name, std::int32_t type, std::int32_t level, bool append,
                                       bool flush, std::int32_t count)
{
    auto log = std::make_shared<LogFile>();
    // Binary, so that lines end in the same way on every system.
    const std::ios::openmode mode = std::ios::out | std::ios::binary | (append ? std::ios::app : std::ios::trunc);
    const std::filesystem::path path = pathFromNative(nextFile(name, count));
    std::error_code absent;
    if (std::filesystem::is_fifo(path, absent)) // opening a pipe waits for a reader
        return nullptr;
    log->m_file.open(path, mode);
    if (!log->m_file)
        return nullptr;
    log->m_type = type;
    log->m_level = level;
    log->m_flush = flush;
    log->line("Sondix bench simulator: no value in this log was measured");
    log->m_file.flush();
    return log;
}

void LogFile::line(const std::string &text)
{
    m_file << timeOfDay() << ' ' << text << '\n';
    if (m_flush)
        m_file.flush();
}

void LogFile::write(LogKind kind, const std::string &message)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if ((m_type & kind) != 0)
        line("Sondix: " + message);
}

void LogFile::writeLevel(std::int32_t level, const std::string &source, const std::string &message)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if ((level & m_level) == 0)
        return;
    line('[' + std::to_string(level) + "] " + source + ": " + message);
    m_file.flush();
}

} // namespace sondixsim::model
