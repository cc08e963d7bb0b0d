// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <utility>

namespace sondixsim::model {

/// Results of the C interface. -26 and -27 are not used: a command that fails with one of them may still have answers,
/// which happens here only because of a fault.
enum Code : std::int32_t {
    Success = 0,
    UnknownHandle = -1,
    InvalidArgument = -2,
    UnknownSensorType = -3,
    TooManyInstances = -4,
    BenchUnusable = -5,
    NoSuchAnswer = -6,
    WrongType = -7,
    BufferTooSmall = -8,
    NotOpen = -9,
    NoSensorAnswers = -10,
    SensorInUse = -11,
    ConnectionLost = -12,
    NoCommand = -13,
    UnknownCommand = -14,
    ParameterMissing = -15,
    UnknownParameter = -16,
    OutOfRange = -17,
    NoSearch = -18,
    NoSuchResult = -19,
    LogFileUnusable = -20,
    NoVideo = -21,
    TimedOut = -22,
    OutOfMemory = -23,
    InternalError = -24
};

/// The results that faults usually have.
struct CodeRow
{
    Code code;
    const char *description;
};
constexpr CodeRow codeRows[] = {
    {NoSensorAnswers, "no sensor answers"},
    {SensorInUse, "the sensor is in use"},
    {ConnectionLost, "the connection is lost"},
    {UnknownCommand, "unknown command"},
    {OutOfRange, "a value is out of range"},
    {TimedOut, "timed out"},
    {OutOfMemory, "out of memory"},
    {InternalError, "internal error"},
};

/// The result of a call: Success, or a code with its text in UTF-8.
struct Outcome
{
    std::int32_t code = Success;
    std::string text;
    double duration = 0.0; ///< seconds of bench time that pass before the call returns

    bool ok() const { return code == Success; }
};

inline Outcome failure(Code code, std::string text)
{
    return Outcome{code, std::move(text), 0.0};
}

} // namespace sondixsim::model
