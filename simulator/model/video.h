// SPDX-License-Identifier: MIT
#pragma once

#include "rules.h"
#include "value.h"

#include <cstdint>
#include <string>
#include <vector>

namespace sondixsim::model {

/// A video line that a model can send in addition to its measured values.
struct VideoLine
{
    /// The components of a line.
    enum Part : unsigned {
        Floor = 1,  ///< the signal of the receiver without light
        Lamp = 2,   ///< the light source over the whole line
        Peaks = 4,  ///< light at the positions of the measured values
        Shadow = 8, ///< a gap in the light as wide as the measured value
        Noise = 16,
    };

    std::string answer;     ///< name of the answer
    std::string switchName; ///< setting without "SA_" and the interface; empty: always on
    unsigned parts = 0;
    std::vector<std::int32_t> signals; ///< numbers, from 1, of the signals that it shows
};

/// The video of a model.
struct Video
{
    std::int32_t pixels = 512;
    std::int32_t resolution = 1024; ///< pixel values are less than this
    std::string rangeParameter;     ///< a line has pixelsAtRange pixels when this information
    double range = 0.0;             ///< has this value
    std::int32_t pixelsAtRange = 0;
    std::vector<VideoLine> lines;

    std::int32_t pixelsOf(const ParameterList &info) const;
};

std::vector<Choice> videoKinds(); ///< the kinds of lines in bench files
/// The components of a kind of line in bench files, 0 for an unknown kind.
unsigned partsOfLine(const std::string &kind);

/// One line as 16-bit pixels, little endian. \a positions are those of the values in their ranges, 0 to 1. The noise
/// follows from the seed of the sensor and the number of the frame.
Bytes drawLine(const VideoLine &line, std::int32_t pixels, std::int32_t resolution,
               const std::vector<double> &positions, std::uint64_t seed, std::uint64_t frame);

} // namespace sondixsim::model
