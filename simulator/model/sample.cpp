// SPDX-License-Identifier: MIT
#include "sample.h"

#include "random.h"

#include <algorithm>
#include <cmath>

namespace sondixsim::model {

namespace {

/// The mean of what a generator gives in the measurements that become one frame.
double meanOf(const Generator &generator, double time, std::uint64_t frame, std::uint64_t seed,
              const Averaging &averaging)
{
    const double value = generator.at(time, frame, seed);
    if (averaging.number <= 1)
        return value;
    if (generator.kind == Generator::Kind::Noise)
        return value / std::sqrt(static_cast<double>(averaging.number));
    if (generator.kind == Generator::Kind::Counter || generator.kind == Generator::Kind::Recorded)
        return value; // one value per frame, whatever it is the mean of
    // A frame needs the same time whatever the number is: many measurements are represented by some of them.
    constexpr std::int32_t maxNumber = 64;
    const std::int32_t count = std::min(averaging.number, maxNumber);
    const double step = averaging.period * (averaging.number - 1) / (count - 1);
    double sum = value;
    for (std::int32_t i = 1; i < count; ++i)
        sum += generator.at(time - i * step, frame, seed);
    return sum / count;
}

} // namespace

Sample sampleOf(const Signal &signal, double time, std::uint64_t frame, std::uint64_t seed,
                const Averaging &averaging)
{
    double value = 0.0;
    std::uint64_t stream = 0;
    for (const Generator &generator : signal.generators)
        value += meanOf(generator, time, frame, mix(seed, ++stream), averaging);
    for (const ErrorValues &errors : signal.errors) {
        if (errors.hits(frame, mix(seed, ++stream))) {
            const double error = errorValueBase + errors.key;
            return {rawOf(signal, error), error};
        }
    }
    return sampleOfValue(signal, value);
}

Sample sampleOfValue(const Signal &signal, double value)
{
    if (signal.outOfRangeKey != 0 && (value < signal.scaledMin || value > signal.scaledMax)) {
        const double error = errorValueBase + signal.outOfRangeKey;
        return {rawOf(signal, error), error};
    }
    const std::int32_t raw = rawOf(signal, std::clamp(value, signal.scaledMin, signal.scaledMax));
    return {raw, scaledOf(signal, raw)};
}

std::int32_t rawOf(const Signal &signal, double scaled)
{
    if (scaled <= errorValueBase)
        return static_cast<std::int32_t>(std::min(signal.rawMax - (scaled - errorValueBase), 2147483647.0));
    const double part = (scaled - signal.scaledMin) / (signal.scaledMax - signal.scaledMin);
    const double raw = std::nearbyint(signal.rawMin + part * (signal.rawMax - signal.rawMin));
    return static_cast<std::int32_t>(std::clamp(raw, -2147483648.0, 2147483647.0));
}

double scaledOf(const Signal &signal, std::int32_t raw)
{
    const double part = (raw - signal.rawMin) / (signal.rawMax - signal.rawMin);
    return signal.scaledMin + part * (signal.scaledMax - signal.scaledMin);
}

} // namespace sondixsim::model
