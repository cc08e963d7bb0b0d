// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <fstream>
#include <memory>
#include <mutex>
#include <string>

namespace sondixsim::model {

/// Kinds of lines that the library itself writes, bits of the type that logging is enabled with.
enum LogKind : std::int32_t { LogConnections = 1, LogCommands = 2, LogErrors = 4 };

/// The log of one handle. May be written from any thread.
class LogFile
{
public:
    /// A "%[n]" in the name stands for a number from 0 to n - 1 (to \a count - 1 when that is less and not 0):
    /// the first file that is not there yet, else the one written longest ago. \a append keeps what the file
    /// holds, \a flush writes every line through. Null when the file cannot be written.
    static std::shared_ptr<LogFile> open(const std::string &name, std::int32_t type, std::int32_t level,
                                         bool append, bool flush, std::int32_t count);

    void write(LogKind kind, const std::string &message);
    /// Written when \a level is among the levels that logging is enabled with.
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
