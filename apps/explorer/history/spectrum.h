// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

namespace Explorer {

/// The amplitudes of a signal over its frequencies.
struct Spectrum
{
    enum Problem {
        NoProblem,
        NoRate,    ///< the frames have no known distance in time
        TooShort,  ///< less than Spectrum::fewest values
        HasGap,    ///< frames are missing in the range
        HasErrors, ///< there are error values in the range
    };
    static constexpr int fewest = 16;
    static constexpr int maxCount = 1 << 16;

    Problem problem = NoProblem;
    double step = 0.0;              ///< distance of the frequencies in Hz; the first one is 0
    std::vector<double> amplitudes; ///< in the unit of the signal: a sine of amplitude 1 gives 1 at its frequency
};

/// The amplitudes of \a values, whose number is a power of two of at least Spectrum::fewest. Their mean is removed and a
/// Hann window is applied. There are half as many amplitudes and one.
std::vector<double> amplitudesOf(const std::vector<double> &values);

} // namespace Explorer
