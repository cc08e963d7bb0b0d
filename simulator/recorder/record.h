// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace sondixrec {

/// A mistake in a record: what() is "<name>:<line>: <reason>".
struct RecordError : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/// One call of the C interface. Its arguments and answers have the types that appear in the line of this function, but
/// each of them may be missing.
struct Call
{
    std::uint64_t number = 0; ///< in the order in which the calls of the process began
    unsigned thread = 0;
    long long time = 0; ///< microseconds since the process loaded the library
    long long took = 0; ///< microseconds
    std::string function;
    std::uint32_t handle = 0;
    long long result = 0;
    nlohmann::json arguments = nlohmann::json::object();
    nlohmann::json answers = nlohmann::json::object();

    /// \name Values by name
    /// The default if there is none, or if it is null.
    /// \{
    long long integer(const nlohmann::json &values, const char *key, long long fallback = 0) const;
    double real(const nlohmann::json &values, const char *key) const;
    /// In windows-1250.
    std::string bytes(const nlohmann::json &values, const char *key) const;
    /// \}
};

/// The calls of one process.
struct Process
{
    std::uint32_t number = 0;
    std::string date;
    std::string program;
    bool isRedacted = false;
    std::vector<Call> calls; ///< in the order in which they began
};

struct Record
{
    std::vector<Process> processes; ///< in the order in which they loaded the library
    bool isCut = false;             ///< the last line is not whole, and was left out
};

/// Reads a record; \a name is that of the file, for messages.
/// \throws RecordError
Record readRecord(std::string_view text, const std::string &name);

/// One element of an array of answers.
double realOf(const nlohmann::json &value);

} // namespace sondixrec
