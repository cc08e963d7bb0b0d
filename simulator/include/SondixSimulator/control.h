// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

/// \file
/// Controls the bench simulator from a test: loads a bench, steps its clock, injects faults and records the
/// calls of the C interface. Applications use the C interface only and do not need this header.
///
/// Every function may be called from any thread. Those with a serial number throw std::invalid_argument for a sensor that
/// is not on the bench.

#if defined(_WIN32)
#    if defined(SONDIX_BUILD_SIMULATOR)
#        define SONDIXSIM_EXPORT __declspec(dllexport)
#    else
#        define SONDIXSIM_EXPORT __declspec(dllimport)
#    endif
#    define SONDIXSIM_TYPE
#else
#    define SONDIXSIM_EXPORT __attribute__((visibility("default")))
#    define SONDIXSIM_TYPE __attribute__((visibility("default")))
#endif

namespace sondixsim {

/// An error in a bench file: what() is "<name>:<line>: <reason>", or "<name>: <reason>" when it could not be read.
class SONDIXSIM_TYPE BenchError : public std::runtime_error
{
public:
    BenchError(const std::string &text, int lineNumber)
        : std::runtime_error(text)
        , line(lineNumber)
    {
    }
    int line; ///< from 1; 0 when the file could not be read
};

/// \name Bench
/// Loading replaces the sensors, removes all faults and recorded calls, stops recording and sets the clock to 0. The
/// clock stays real or virtual unless the file chooses one. Existing handles stay valid, but their sensors are closed.
/// docs/bench-files.md describes the files.
/// \throws BenchError and keeps the present bench when the file has an error
/// \{
SONDIXSIM_EXPORT void loadBench(const std::string &json, const std::string &name = "bench");
SONDIXSIM_EXPORT void loadBenchFile(const std::string &path);
SONDIXSIM_EXPORT void loadBuiltInBench();
/// \}

/// The JSON schema (draft 7) of bench files, in UTF-8. It accepts every file that loadBench() accepts; of what that refuses
/// it accepts only what does not follow from the file's form, such as settings that a model does not have.
SONDIXSIM_EXPORT std::string benchSchema();

/// \name Sessions
/// A session is a bench that lives on between programs and that several programs use at the same time. A program uses it
/// by loading the file "session:NAME", or by the value "session:NAME" of the environment variable SONDIX_BENCH. All that
/// these functions do to the bench (plugging, faults, triggers, settings, the clock) then happens in all its programs.
/// A recorded call, a page and a pushed block belong to one program.
/// \throws std::runtime_error if the session, or a session of this name, cannot be used
/// \{
SONDIXSIM_EXPORT void startSession(const std::string &name, const std::string &benchFile = {},
                                   bool logCalls = false);  ///< without a file: with the built-in bench
SONDIXSIM_EXPORT void stopSession(const std::string &name); ///< its programs find all sensors unplugged
SONDIXSIM_EXPORT std::vector<std::string> sessions();       ///< the names of those that this user has started
/// The file with the calls that all programs of the session in use have made, one a line, in UTF-8: bench time in seconds,
/// duration in milliseconds, process, program and thread, handle, call and result. It contains all calls but the transfers
/// if the session was started with \a logCalls, and all of them while somebody follows it. It is missing before the first
/// call. A file of 16 MiB is renamed to "calls.old.log", and a new one begins.
/// \throws std::runtime_error without a session
SONDIXSIM_EXPORT std::string sessionLogFile();
/// Logs the calls of all programs of the session in use for the next three seconds, transfers too.
/// \throws std::runtime_error without a session
SONDIXSIM_EXPORT void followSessionLog();
/// \}

/// \name Clock
/// \{
SONDIXSIM_EXPORT void useRealClock(double speed = 1.0); ///< runs \a speed times as fast as real time
SONDIXSIM_EXPORT void useVirtualClock();                ///< stands still until advance()
SONDIXSIM_EXPORT void advance(double seconds);          ///< steps the virtual clock, to 9,000,000,000 s at most
SONDIXSIM_EXPORT double now();                          ///< seconds of bench time since the bench was loaded
/// \}

/// One call of the C interface.
struct SONDIXSIM_TYPE Call
{
    std::string function;               ///< name, such as "SetParameterInt"
    std::uint32_t handle = 0;           ///< the handle passed (for CreateSensorInstance the one returned)
    std::vector<std::string> arguments; ///< the others, as text() shows them
    std::int32_t result = 0;
    unsigned thread = 0; ///< number of the calling thread, in the order of their first calls

    /// The call as text, such as `SetParameterString("S_Command", "Get_Info")`. The handle and pointers to single
    /// results are left out. Buffers show as `null` or their size, transfer buffers as `null`, `raw` or `scaled`,
    /// binary data as their length.
    SONDIXSIM_EXPORT std::string text() const;
};

/// \name Call log
/// Recording takes time; it is off after a bench was loaded.
/// \{
SONDIXSIM_EXPORT void recordCalls(bool on);
SONDIXSIM_EXPORT std::vector<Call> calls(); ///< in the order in which they were made
SONDIXSIM_EXPORT void clearCalls();
/// \}

/// The functions of the C interface, as faults and calls name them.
inline constexpr const char *functionNames[] = {
    "CreateSensorInstance",
    "ReleaseSensorInstance",
    "SetParameterInt",
    "SetParameterDouble",
    "SetParameterString",
    "SetParameterBinary",
    "GetParameterInt",
    "GetParameterDouble",
    "GetParameterString",
    "GetParameterBinary",
    "GetParameters",
    "ClearAllParameters",
    "OpenSensor",
    "CloseSensor",
    "SensorCommand",
    "DataAvail",
    "TransferData",
    "TransferDataTS",
    "GetError",
    "EnableLogging",
    "LogToFile",
};

/// What happens to an answer on its way: its second half is missing, some of its characters are others, or it is empty.
enum class Damage { None, Cut, Garbled, Empty };

/// A fault: which calls it matches, which of those it hits, and what it does to them. A call must match all filters
/// that are set.
struct SONDIXSIM_TYPE Fault
{
    // Filters.
    std::string function;  ///< one of functionNames; empty: "SensorCommand" when command is set, else any
    std::string command;   ///< the command in S_Command, staged or last sent
    std::string parameter; ///< the parameter name in the arguments
    std::string sensor;    ///< serial number of the sensor that the handle opens or has opened
    std::optional<std::int32_t> sensorType; ///< type of the handle, or the argument of CreateSensorInstance
    std::optional<std::uint32_t> handle;

    // Which of the matching calls.
    int from = 1;   ///< number of the first matching call that is hit
    int times = -1; ///< how many are hit; -1: all
    double probability = 1.0;
    double begin = 0.0;             ///< bench time before which no call matches
    std::optional<double> duration; ///< seconds after that in which calls match; no value: for ever

    // Effect. Without a code the call is executed, and the other effects are applied to it.
    std::int32_t code = 0; ///< result of the call (CreateSensorInstance then returns 0)
    std::string text;      ///< error text for GetError
    bool silent = false;   ///< the failure leaves GetError at 0
    double delay = 0.0;    ///< seconds of real time by which the call is delayed
    bool hang = false;     ///< the call returns only after releaseHangs()
    /// "key=value" pairs that replace the answer of a command or an open, with a code, too. Without a code the
    /// command succeeds, even if the sensor does not know it. GetParameters returns exactly these bytes.
    std::optional<std::string> answer;
    Damage damage = Damage::None;      ///< to the answer of a command or an open
    std::optional<std::int32_t> count; ///< replaces the count or length that the call returns
};

/// \name Faults
/// \{
/// Several faults may hit one call: delays are added, of all other effects the first one wins.
/// \return the number of the fault, for removeFault()
/// \throws std::invalid_argument for a fault that could never have an effect: a function that is none of functionNames, a
/// sensor that the bench does not have, CreateSensorInstance with a sensor, a command or a handle, an answer of a function
/// that has none, \c from below 1, \c times of 0, no effect at all; for a probability that is not from 0 to 1, and for a
/// delay that is not from 0 to 3600 seconds
SONDIXSIM_EXPORT int inject(const Fault &fault);
SONDIXSIM_EXPORT void removeFault(int number);
SONDIXSIM_EXPORT void clearFaults();
SONDIXSIM_EXPORT void releaseHangs();
/// An unplugged sensor is not found and cannot be opened, and every call to it fails. An open one goes on measuring: the
/// frames that it measures meanwhile do not arrive, values that had arrived before can be fetched after it was plugged in.
SONDIXSIM_EXPORT void unplug(const std::string &serialNumber);
SONDIXSIM_EXPORT void plug(const std::string &serialNumber);
/// A silent sensor can be opened, executes commands and goes on measuring, but sends no frames.
SONDIXSIM_EXPORT void setSilent(const std::string &serialNumber, bool silent);
/// \}

/// \name Web interface
/// Sensors with a web interface on a serial line serve pages with "Get_HTTP" and execute commands with "Cmd_Generic".
/// These calls last as long as their bytes take at the baud rate of the line. With a virtual clock they return at once.
/// \{
/// Whether lines take time: calls last that long, and frames arrive only as fast as the baud rate allows. Loading a
/// bench sets it to the file's "lineSpeed", which is on by default.
SONDIXSIM_EXPORT void setLineSpeedEffect(bool on);
/// Seconds of bench time that these calls to a sensor have taken on the line since the bench was loaded, whether or
/// not they waited.
SONDIXSIM_EXPORT double lineTime(const std::string &serialNumber);
/// Answers every request for \a path with exactly these bytes. The header may be empty; both may contain zero bytes.
/// \throws std::invalid_argument also for a sensor without a web interface
SONDIXSIM_EXPORT void setPage(const std::string &serialNumber, const std::string &path, const std::string &header,
                              const std::string &body);
/// \}

/// Changes settings at the sensor itself, as "SA_Key=value" pairs separated by white space or semicolons.
/// \throws std::invalid_argument also for an unknown setting or a value that it cannot have
SONDIXSIM_EXPORT void setSettings(const std::string &serialNumber, const std::string &pairs);

/// Appends a block to the data ring of an open sensor, after the generated values. One of \a raw and \a scaled may be
/// empty: it is then computed from the other and the ranges of the signals.
/// \throws std::invalid_argument also for a sensor that is not open, or blocks of different size
SONDIXSIM_EXPORT void pushData(const std::string &serialNumber, const std::vector<std::int32_t> &raw,
                               const std::vector<double> &scaled, double timestamp);

/// Triggers a sensor once: if it is open and waits for a trigger, it measures one frame now.
SONDIXSIM_EXPORT void trigger(const std::string &serialNumber);

/// What has become of the frames that a sensor has measured:
/// generated = fetched + waiting + lost + unsent + discarded.
struct SONDIXSIM_TYPE FrameCounts
{
    std::uint64_t generated = 0; ///< all of them; a polled sensor measures when it is polled
    std::uint64_t fetched = 0;   ///< their last value was fetched
    std::uint64_t waiting = 0;   ///< they can still be fetched
    std::uint64_t lost = 0;      ///< the ring was full
    std::uint64_t unsent = 0;    ///< the sensor was silent or unplugged, or its line did not carry them
    std::uint64_t discarded = 0; ///< by "Clear_Buffers", a change of the frame, closing or opening again
};

/// \name Frames
/// Each call is a snapshot. Blocks of pushData() count as generated; "standing" values are not counted.
/// \{
SONDIXSIM_EXPORT FrameCounts frameCounts(const std::string &serialNumber); ///< since the sensor was last opened
SONDIXSIM_EXPORT FrameCounts totalFrameCounts(const std::string &serialNumber);  ///< since the bench was loaded
SONDIXSIM_EXPORT std::uint64_t generatedFrames(const std::string &serialNumber); ///< frameCounts().generated
SONDIXSIM_EXPORT std::uint64_t lostFrames(const std::string &serialNumber);      ///< frameCounts().lost
/// \}

/// What a bench file expects of the programs that use the bench ("expect"), and what was found so far. Texts are UTF-8.
struct SONDIXSIM_TYPE Expectation
{
    std::string
        name; ///< its name in the file, or what is expected, such as `calls of SensorCommand "Set_Samplerate"`
    std::string sensor;   ///< serial number; empty: all sensors
    std::string model;    ///< of the sensor
    std::string expected; ///< such as "exactly 2"
    std::string found;
    bool isMet = false;
    int line = 0; ///< in the bench file
};

/// The expectations of the bench file, in its order. In a session they count what all programs have done.
SONDIXSIM_EXPORT std::vector<Expectation> expectations();

} // namespace sondixsim
