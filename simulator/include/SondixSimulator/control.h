// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

/// \file
/// The bench simulator seen from a test: choose the bench, step its clock, inject faults, read which
/// C calls were made. Applications never need this header: they see the C interface alone.
///
/// Every function may be called from any thread.

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

/// A bench file that cannot be used: what() is "<name>:<line>: <reason>".
class SONDIXSIM_TYPE BenchError : public std::runtime_error
{
public:
    BenchError(const std::string &text, int lineNumber)
        : std::runtime_error(text)
        , line(lineNumber)
    {
    }
    int line; ///< from 1; 0 when the file could not be read at all
};

/// \name Bench
/// Loading replaces the sensors, forgets faults and calls, stops recording and sets the clock back to 0;
/// whether that is real or virtual only changes when the file says so. Handles that exist stay valid, their
/// sensors are closed. docs/bench-files.md describes the files. They throw BenchError.
/// \{
SONDIXSIM_EXPORT void loadBench(const std::string &json, const std::string &name = "bench");
SONDIXSIM_EXPORT void loadBenchFile(const std::string &path);
SONDIXSIM_EXPORT void loadBuiltInBench();
/// \}

/// \name Clock
/// \{
SONDIXSIM_EXPORT void useRealClock(double speed = 1.0); ///< runs \a speed times as fast as real time
SONDIXSIM_EXPORT void useVirtualClock();                ///< stands still until advance()
SONDIXSIM_EXPORT void advance(double seconds);          ///< steps the virtual clock
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

    /// Such as `SetParameterString("S_Command", "Get_Info")`: without the handle and without plain
    /// output pointers; buffers show as `null` or their size, transfer buffers as `null`, `raw`,
    /// `scaled`; binary data as their length.
    SONDIXSIM_EXPORT std::string text() const;
};

/// \name Call log
/// Off after loading: it costs time.
/// \{
SONDIXSIM_EXPORT void recordCalls(bool on);
SONDIXSIM_EXPORT std::vector<Call> calls(); ///< in the order in which they were made
SONDIXSIM_EXPORT void clearCalls();
/// \}

/// What goes wrong, and when. A call matches when every filter that is set fits.
struct SONDIXSIM_TYPE Fault
{
    // Filters.
    std::string function;                   ///< C function; empty: "SensorCommand" when command is set, else any
    std::string command;                    ///< the command in S_Command, staged or last sent
    std::string parameter;                  ///< the parameter that the call names
    std::string sensor;                     ///< serial number of the sensor that the handle has opened
    std::optional<std::int32_t> sensorType; ///< type of the handle, or the argument of CreateSensorInstance
    std::optional<std::uint32_t> handle;

    // When.
    int from = 1;   ///< the nth matching call is the first that is hit
    int times = -1; ///< how many are hit; -1: all
    double probability = 1.0;

    // What. Without a code the call is made as usual, with the rest applied.
    std::int32_t code = 0; ///< result of the call (CreateSensorInstance then returns 0)
    std::string text;      ///< what GetError tells
    bool silent = false;   ///< the failure leaves GetError at 0
    double delay = 0.0;    ///< seconds of real time that the call takes longer
    bool hang = false;     ///< the call returns only after releaseHangs()
    /// "key=value" pairs that replace the answer of a command or an open, also with a code. Without a code
    /// such a command succeeds even if the sensor does not know it. GetParameters tells this text byte for byte.
    std::optional<std::string> answer;
    std::optional<std::int32_t> count; ///< available or read count, or length, that the call reports instead
};

/// \name Faults
/// \{
/// Several faults may hit one call: delays add up, of everything else the first one counts.
/// \return its number, for removeFault
SONDIXSIM_EXPORT int inject(const Fault &fault);
SONDIXSIM_EXPORT void removeFault(int number);
SONDIXSIM_EXPORT void clearFaults();
SONDIXSIM_EXPORT void releaseHangs();
/// A sensor that is gone: it is not found, cannot be opened, and every call to it fails.
SONDIXSIM_EXPORT void unplug(const std::string &serialNumber);
SONDIXSIM_EXPORT void plug(const std::string &serialNumber);
/// \}

/// \name Web interface
/// Sensors with a web interface that hang on a serial line serve pages with "Get_HTTP" and take commands with
/// "Cmd_Generic", at the speed of the line: the calls last as long as their bytes do at its baud rate. On a
/// virtual clock nothing is waited for.
/// \{
/// Whether calls last so long; loading a bench sets it to what the file says, which is on unless it says otherwise.
SONDIXSIM_EXPORT void setLineSpeedEffect(bool on);
/// Seconds of bench time that these calls to a sensor have lasted since the bench was loaded, or would have
/// lasted if they were waited for.
SONDIXSIM_EXPORT double lineTime(const std::string &serialNumber);
/// From now on a page is answered with these bytes exactly, whatever the request says besides the path; the header
/// may be empty, both may hold zero bytes.
/// \throws std::invalid_argument for a sensor that is not on the bench or has no web interface
SONDIXSIM_EXPORT void setPage(const std::string &serialNumber, const std::string &path, const std::string &header,
                              const std::string &body);
/// \}

/// Puts a block into an open sensor's data ring, after what the generators have put there. One of \a raw and
/// \a scaled may be empty: it then follows from the other and the signals' ranges.
/// \throws std::invalid_argument for a sensor that is not open or not on the bench, or blocks of different size
SONDIXSIM_EXPORT void pushData(const std::string &serialNumber, const std::vector<std::int32_t> &raw,
                               const std::vector<double> &scaled, double timestamp);

/// One trigger at a sensor's input: if it is open and waits for a trigger, one frame arises now.
SONDIXSIM_EXPORT void trigger(const std::string &serialNumber);

/// Frames that a sensor's full ring has lost since it was opened.
SONDIXSIM_EXPORT std::uint64_t lostFrames(const std::string &serialNumber);

} // namespace sondixsim
