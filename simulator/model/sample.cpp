// SPDX-License-Identifier: MIT
#include "sample.h"

#include "random.h"

#include <algorithm>
#include <cmath>

namespace sondixsim::model {

Sample sampleOf(const Signal &signal, double time, std::uint64_t frame, std::uint64_t seed)
{
    double value = 0.0;
    std::uint64_t stream = 0;
    for (const Generator &generator : signal.generators)
        value += generator.at(time, frame, mix(seed, ++stream));
    const std::int32_t raw = rawOf(signal, std::clamp(value, signal.scaledMin, signal.scaledMax));
    for (const ErrorValues &errors : signal.errors) {
        if (errors.hits(frame, mix(seed, ++stream))) {
            const double error = errorValueBase + errors.key;
            return {rawOf(signal, error), error};
        }
    }
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
