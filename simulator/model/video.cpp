// SPDX-License-Identifier: MIT
#include "video.h"

#include "random.h"

#include <algorithm>
#include <cmath>

namespace sondixsim::model {

namespace {

// Heights are fractions of the resolution, widths fractions of the line.
constexpr double floorHeight = 0.06;
constexpr double floorPattern = 0.004; // fixed differences between pixels
constexpr double lampHeight = 0.7;
constexpr double lampDrop = 0.3; // from the middle to the ends
constexpr double peakHeight = 0.6;
constexpr double peakWidth = 0.012;
constexpr double edgeWidth = 0.002;
constexpr double noiseHeight = 0.003;

double lampAt(double x)
{
    const double fromMiddle = 2.0 * x - 1.0;
    return lampHeight * (1.0 - lampDrop * fromMiddle * fromMiddle);
}

double peaksAt(double x, const std::vector<double> &positions)
{
    double light = 0.0;
    for (const double position : positions) {
        const double away = (x - position) / peakWidth;
        light += peakHeight * std::exp(-0.5 * away * away);
    }
    return light;
}

/// The fraction of the light that passes objects of these widths in the middle of the line, 0 to 1.
double lightPast(double x, const std::vector<double> &widths)
{
    double left = 1.0;
    for (const double width : widths)
        left *= 1.0 / (1.0 + std::exp((0.5 * width - std::fabs(x - 0.5)) / edgeWidth));
    return left;
}

} // namespace

std::int32_t Video::pixelsOf(const ParameterList &info) const
{
    const Value *const value = rangeParameter.empty() ? nullptr : info.find(rangeParameter);
    return value != nullptr && toDouble(*value) == range ? pixelsAtRange : pixels;
}

namespace {

const struct
{
    const char *name;
    unsigned parts;
    const char *description;
} videoKindRows[] = {
    {"raw", VideoLine::Floor | VideoLine::Peaks | VideoLine::Noise, "a dark floor with a peak for each value"},
    {"corr", VideoLine::Peaks | VideoLine::Noise, "the peaks without the floor"},
    {"dark", VideoLine::Floor | VideoLine::Noise, "the floor"},
    {"light", VideoLine::Floor | VideoLine::Lamp | VideoLine::Noise, "the floor and the light source"},
    {"darkTable", VideoLine::Floor, "the floor without noise"},
    {"lightTable", VideoLine::Floor | VideoLine::Lamp, "the floor and the light source without noise"},
    {"shadow", VideoLine::Floor | VideoLine::Lamp | VideoLine::Shadow | VideoLine::Noise,
     "the light source with a gap in the middle whose width is the value"},
};

} // namespace

std::vector<Choice> videoKinds()
{
    std::vector<Choice> choices;
    for (const auto &row : videoKindRows)
        choices.push_back({row.name, row.description});
    return choices;
}

unsigned partsOfLine(const std::string &kind)
{
    const auto *const found = std::find_if(std::begin(videoKindRows), std::end(videoKindRows),
                                           [&kind](const auto &known) { return kind == known.name; });
    return found != std::end(videoKindRows) ? found->parts : 0;
}

Bytes drawLine(const VideoLine &line, std::int32_t pixels, std::int32_t resolution,
               const std::vector<double> &positions, std::uint64_t seed, std::uint64_t frame)
{
    Bytes bytes;
    bytes.reserve(2 * static_cast<std::size_t>(pixels));
    const std::uint64_t pattern = mix(seed, std::string_view("pixels"));
    const std::uint64_t noise = mix(mix(seed, std::string_view(line.answer)), frame);
    const double maximum = std::min(resolution, 65536) - 1;
    for (std::int32_t pixel = 0; pixel < pixels; ++pixel) {
        const auto number = static_cast<std::uint64_t>(pixel);
        const double x = pixels > 1 ? static_cast<double>(pixel) / (pixels - 1) : 0.0;
        double light = 0.0;
        if ((line.parts & VideoLine::Lamp) != 0)
            light += lampAt(x);
        if ((line.parts & VideoLine::Shadow) != 0)
            light *= lightPast(x, positions);
        if ((line.parts & VideoLine::Peaks) != 0)
            light += peaksAt(x, positions);
        if ((line.parts & VideoLine::Floor) != 0)
            light += floorHeight + floorPattern * normal(mix(pattern, number));
        if ((line.parts & VideoLine::Noise) != 0)
            light += noiseHeight * normal(mix(noise, number));
        const auto value =
            static_cast<std::uint32_t>(std::clamp(std::nearbyint(light * resolution), 0.0, maximum));
        bytes.push_back(static_cast<unsigned char>(value & 0xFF));
        bytes.push_back(static_cast<unsigned char>(value >> 8));
    }
    return bytes;
}

} // namespace sondixsim::model
