// SPDX-License-Identifier: MIT
#include "generator.h"

#include "random.h"

#include <algorithm>
#include <cmath>

namespace sondixsim::model {

namespace {

constexpr double twoPi = 6.283185307179586;

double partOfPeriod(double time, double period)
{
    const double periods = time / period;
    return periods - std::floor(periods);
}

} // namespace

double Generator::at(double time, std::uint64_t frame, std::uint64_t seed) const
{
    switch (kind) {
    case Kind::Constant:
        return low;
    case Kind::Sine:
        return low + high * std::sin(twoPi * (partOfPeriod(time, period) + share));
    case Kind::Ramp:
        return low + (high - low) * partOfPeriod(time, period);
    case Kind::Step:
        return partOfPeriod(time, period) < share ? low : high;
    case Kind::Noise:
        return high * normal(mix(seed, frame));
    case Kind::Drift: {
        // Up and down, so that a sensor that runs for days stays in its range.
        const double part = partOfPeriod(time, 2.0 * period);
        return high * (part < 0.5 ? 2.0 * part : 2.0 - 2.0 * part);
    }
    case Kind::Temperature:
        return high * (rise * (1.0 - std::exp(-std::max(0.0, time) / period)) +
                       swing * std::sin(twoPi * partOfPeriod(time, day)));
    case Kind::Counter:
        return static_cast<double>(frame % static_cast<std::uint64_t>(period));
    case Kind::Recorded:
        return record[frame % record.size()];
    }
    return 0.0;
}

bool ErrorValues::hits(std::uint64_t frame, std::uint64_t seed) const
{
    if (every > 0)
        return frame % every >= every - length;
    return uniform(mix(seed, frame)) < probability;
}

} // namespace sondixsim::model
