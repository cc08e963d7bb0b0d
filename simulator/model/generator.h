// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <vector>

namespace sondixsim::model {

/// One component of a signal. Its value depends on time, frame number and seed only.
struct Generator
{
    enum class Kind { Constant, Sine, Ramp, Step, Noise, Drift, Counter, Recorded, Temperature };

    Kind kind = Kind::Constant;
    double low = 0.0;     ///< constant: the value; sine: the middle; ramp, step: first level
    double high = 0.0;    ///< sine: amplitude; ramp, step: last level; noise: standard deviation; drift: limit;
                          ///< temperature: units per kelvin
    double period = 1.0;  ///< seconds; drift: time from 0 to the limit; counter: the number of frames it counts
    double rise = 0.0;    ///< temperature: kelvins by which the sensor warms up, with the time constant "period"
    double swing = 0.0;   ///< temperature: amplitude of the surroundings in kelvins
    double day = 86400.0; ///< temperature: period of the surroundings
    double share = 0.5;   ///< step: part of the period at the first level; sine: phase in periods
    std::vector<double> record; ///< recorded: one value per frame, repeated from the start

    double at(double time, std::uint64_t frame, std::uint64_t seed) const;
};

/// Frames whose value is an error instead of a measurement.
struct ErrorValues
{
    std::int32_t key = -1;
    std::uint64_t every = 0; ///< frames; 0: by probability
    std::uint64_t length = 1;
    double probability = 0.0;

    bool hits(std::uint64_t frame, std::uint64_t seed) const;
};

/// Scaled values up to this one are errors: this value plus the key, which is negative.
constexpr double errorValueBase = -1.0e10;

} // namespace sondixsim::model
