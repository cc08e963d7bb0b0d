// SPDX-License-Identifier: MIT
#pragma once

#include "redaction.h"
#include "system.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace sondixrec {

/// Builds the line of one call: its arguments, then its answers.
class Line
{
public:
    explicit Line(Redaction *redaction);

    void begin(std::uint32_t process, std::uint64_t number, unsigned thread, long long time, long long took,
               const char *function);
    /// The members that follow are arguments.
    void arguments();
    void handle(std::uint32_t handle); ///< begins the arguments as well
    /// The members that follow are answers.
    void answers();
    const std::string &end(long long result);

    void integer(const char *key, long long value);
    void real(const char *key, double value);
    void flag(const char *key, bool value);
    void null(const char *key);
    /// The name of a parameter, to which the next value belongs.
    void name(const char *name);
    void parameter(const char *key, std::int32_t value);
    void parameter(const char *key, const char *value);
    void parameter(const char *key, std::string_view value);
    void binary(const char *key, std::string_view bytes);
    void text(const char *key, std::string_view text);
    /// A text that a redacted record leaves out as a whole.
    void privateText(const char *key, const char *text);
    void array(const char *key, const std::int32_t *values, std::size_t count);
    void array(const char *key, const double *values, std::size_t count);

private:
    void key(const char *key);
    void open(const char *section);

    Redaction *const m_redaction;
    std::string m_json;
    std::string m_name;
    bool m_isFirst = true;
    bool m_isOpen = false;
};

/// Writes the record of this process. Threads: any; no lock is held while a call is forwarded or described.
class Recorder
{
public:
    /// The only one, which lives until the process ends.
    static Recorder &get();

    bool isOn() const { return m_isOn.load(std::memory_order_relaxed); }

    struct Begin
    {
        std::uint64_t number = 0;
        std::chrono::steady_clock::time_point time;
    };
    Begin begin() { return {++m_calls, std::chrono::steady_clock::now()}; }

    /// Writes the line of a call that has returned \a result. \a describe adds handle, arguments and answers.
    template<typename Describe>
    void end(const Begin &begin, const char *function, long long result, const Describe &describe) noexcept
    {
        const auto took = std::chrono::steady_clock::now() - begin.time;
        const int keptErrno = errno;
        try {
            Line line(m_redaction.get());
            line.begin(processNumber(), begin.number, threadNumber(), microseconds(begin.time - m_start),
                       microseconds(took), function);
            describe(line);
            write(line.end(result));
        } catch (...) { // memory is exhausted: the program goes on
            fail("memory is exhausted");
        }
        errno = keptErrno;
    }

private:
    Recorder();

    static long long microseconds(std::chrono::steady_clock::duration time)
    {
        return std::chrono::duration_cast<std::chrono::microseconds>(time).count();
    }
    unsigned threadNumber();
    void write(const std::string &line);
    void fail(const std::string &reason) noexcept;

    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
    std::string m_fileName;
    AppendedFile m_file;
    std::unique_ptr<Redaction> m_redaction;
    std::atomic<bool> m_isOn = false;
    std::atomic<std::uint64_t> m_calls = 0;
    std::atomic<unsigned> m_threads = 0;
};

} // namespace sondixrec
