// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <fstream>
#include <memory>
#include <mutex>
#include <string>

namespace sondixsim::model {

/// The lines that the library itself writes: bits of the type with which logging is enabled.
enum LogKind : std::int32_t { LogConnections = 1, LogCommands = 2, LogErrors = 4 };

/// The log of one handle. May be written from any thread.
class LogFile
{
public:
    /// "%[n]" in the name is replaced by a number from 0 to n - 1, or to \a count - 1 when that is less and not 0: that
    /// of the first file that does not exist, else of the oldest one. \a append keeps the content of the file,
    /// \a flush flushes after every line. Null when the file cannot be written.
    static std::shared_ptr<LogFile> open(const std::string &name, std::int32_t type, std::int32_t level,
                                         bool append, bool flush, std::int32_t count);

    void write(LogKind kind, const std::string &message);
    /// Writes the line if \a level is one of those with which logging is enabled.
    void writeLevel(std::int32_t level, const std::string &source, const std::string &message);

private:
    void line(const std::string &text);

    std::mutex m_mutex;
    std::ofstream m_file;
    std::int32_t m_type = 0;
    std::int32_t m_level = 0;
    bool m_flush = false;
};

} // namespace sondixsim::model
