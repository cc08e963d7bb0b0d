// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

/// \file
/// A stand-in for the sensor-access library whose calls take almost no time, so that benchmarks measure SondixQt's own
/// share.

#if defined(_WIN32)
#    define CHEAPSENSOR_EXPORT
#else
#    define CHEAPSENSOR_EXPORT __attribute__((visibility("default")))
#endif

namespace cheapsensor {

/// Sets the number of values that DataAvail() reports and each transfer delivers.
CHEAPSENSOR_EXPORT void setBlock(std::int32_t values);

/// Sets the number of sensors that a search finds, all of them on the first poll.
CHEAPSENSOR_EXPORT void setFoundSensors(int count);

/// Sets the size of the body of every page of the web interface, in bytes.
CHEAPSENSOR_EXPORT void setPage(std::size_t size);

/// Switches the measurement of the time spent inside the calls, which costs two clock readings per call.
CHEAPSENSOR_EXPORT void measureTime(bool on);
CHEAPSENSOR_EXPORT double secondsInside();

} // namespace cheapsensor
