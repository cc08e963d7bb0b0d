// SPDX-License-Identifier: MIT
#pragma once

#include "value.h"

#include <cstdint>
#include <string>
#include <vector>

namespace sondixsim::model {

/// One line that a model can send besides its measured values.
struct VideoLine
{
    /// What the line is made of.
    enum Part : unsigned {
        Floor = 1,  ///< what the receiver shows without light
        Lamp = 2,   ///< the light source over the whole line
        Peaks = 4,  ///< light where the measured values are
        Shadow = 8, ///< a gap in the light as wide as the measured value
        Noise = 16,
    };

    std::string answer;     ///< answer that carries it
    std::string switchName; ///< switch without "SA_" and the interface; empty: sent whenever it is asked for
    unsigned parts = 0;
    std::vector<std::int32_t> signals; ///< numbers, from 1, of the values that it shows
};

/// What video a model has.
struct Video
{
    std::int32_t pixels = 512;
    std::int32_t resolution = 1024; ///< pixels are below this
    std::string rangeParameter;     ///< where this information ...
    double range = 0.0;             ///< ... is this number,
    std::int32_t pixelsAtRange = 0; ///< a line has so many pixels instead
    std::vector<VideoLine> lines;

    std::int32_t pixelsOf(const ParameterList &info) const;
};

/// The parts of a kind of line, 0 for a name that is none.
unsigned partsOfLine(const std::string &kind);

/// One line as 16-bit pixels, the low byte first. \a places are the values shown, 0 to 1 for their range;
/// \a seed is the sensor's, \a frame the number of the frame that it belongs to.
Bytes drawLine(const VideoLine &line, std::int32_t pixels, std::int32_t resolution,
               const std::vector<double> &places, std::uint64_t seed, std::uint64_t frame);

} // namespace sondixsim::model
