// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

/// \file
/// A stand-in for the sensor-access library whose every call costs next to nothing, so that what a
/// benchmark shows is the library's own share.

#if defined(_WIN32)
#    define CHEAPSENSOR_EXPORT
#else
#    define CHEAPSENSOR_EXPORT __attribute__((visibility("default")))
#endif

namespace cheapsensor {

/// What DataAvail announces and the transfers deliver.
CHEAPSENSOR_EXPORT void setBlock(std::int32_t values);

/// The sensors that a search finds, all at its first question.
CHEAPSENSOR_EXPORT void setFoundSensors(int count);

/// The size of the body of every page of the web interface.
CHEAPSENSOR_EXPORT void setPage(std::size_t size);

/// Whether the time spent inside the calls is added up; it costs two clock readings a call.
CHEAPSENSOR_EXPORT void measureTime(bool on);
CHEAPSENSOR_EXPORT double secondsInside();

} // namespace cheapsensor
