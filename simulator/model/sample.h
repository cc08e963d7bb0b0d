// SPDX-License-Identifier: MIT
#pragma once

#include "generator.h"

#include <cstdint>
#include <string>
#include <vector>

namespace sondixsim::model {

/// One value of a frame. Texts are windows-1250.
struct Signal
{
    std::string rawName;
    std::string scaledName;
    std::string rawUnit;
    std::string scaledUnit;
    std::string info;
    double rawMin = 0.0;
    double rawMax = 65535.0;
    double scaledMin = 0.0;
    double scaledMax = 10.0;
    double viewRange = 10.0;
    bool major = true;
    std::vector<Generator> generators;
    std::vector<ErrorValues> errors;
    std::int32_t outOfRangeKey = 0; ///< error value of a value outside the range; 0: it is limited to the range
};

/// A value of a signal in both forms.
struct Sample
{
    std::int32_t raw = 0;
    double scaled = 0.0;
};

/// A frame is the mean of so many measurements, which follow each other at this period and end with the frame.
struct Averaging
{
    std::int32_t number = 1;
    double period = 0.0; ///< seconds
};

/// The sample of a signal in one frame. It depends on the arguments alone, so that every way of reading a sensor gives
/// the same values.
Sample sampleOf(const Signal &signal, double time, std::uint64_t frame, std::uint64_t seed,
                const Averaging &averaging = {});

/// The sample of a measured value: outside the range it is an error value, or limited to the range.
Sample sampleOfValue(const Signal &signal, double value);

/// Conversion between the two forms. Error values have raw values above the range.
std::int32_t rawOf(const Signal &signal, double scaled);
double scaledOf(const Signal &signal, std::int32_t raw);

} // namespace sondixsim::model
