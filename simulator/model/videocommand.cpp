// SPDX-License-Identifier: MIT
#include "command.h"
#include "sensor.h"

#include <algorithm>

namespace sondixsim::model::commands {

namespace {

bool modeAllowsVideo(const SensorParts &sensor)
{
    const auto hasVideo = [](const MeasuringMode &mode) { return mode.video; };
    const std::vector<MeasuringMode> &modes = sensor.spec.modes;
    const MeasuringMode *const mode = sensor.settings.measuringMode();
    return (mode != nullptr && mode->video) || std::none_of(modes.begin(), modes.end(), hasVideo);
}

bool isSwitchedOn(const SensorParts &sensor, const VideoLine &line)
{
    const bool network = std::string_view(sensor.spec.place.interface->name) == "TCP/IP";
    return sensor.settings.number("SA_" + line.switchName + (network ? "_ETH" : "_RS422"), 0) != 0;
}

/// The values that a line shows, as positions in their ranges from 0 to 1, without error values.
std::vector<double> positionsOf(const VideoLine &line, const std::vector<Signal> &frame,
                                const std::vector<double> &values)
{
    std::vector<double> positions;
    for (const std::int32_t number : line.signals) {
        const auto index = static_cast<std::size_t>(number) - 1;
        if (index >= values.size() || values[index] <= errorValueBase)
            continue;
        const Signal &signal = frame[index];
        positions.push_back((values[index] - signal.scaledMin) / (signal.scaledMax - signal.scaledMin));
    }
    return positions;
}

} // namespace

std::int32_t videoSignalsPerFrame(const SensorParts &sensor)
{
    if (!modeAllowsVideo(sensor))
        return 0;
    const std::vector<VideoLine> &lines = sensor.spec.video.lines;
    const auto isOn = [&sensor](const VideoLine &line) { return isSwitchedOn(sensor, line); };
    return static_cast<std::int32_t>(std::count_if(lines.begin(), lines.end(), isOn));
}

Outcome video(SensorParts &sensor, const CommandCall &call)
{
    const Video &video = sensor.spec.video;
    const Sampler::Frame last = sensor.sampler.lastFrame(call.now);
    const std::int32_t pixels = video.pixelsOf(sensor.spec.info);
    if (!modeAllowsVideo(sensor))
        return failure(NoVideo, "The measuring mode of the sensor sends no video");
    bool sent = false;
    for (const VideoLine &line : video.lines) {
        if (!line.switchName.empty() && !isSwitchedOn(sensor, line))
            continue;
        const auto positions = positionsOf(line, sensor.sampler.frame(), last.scaled);
        call.answers.set(line.answer,
                         drawLine(line, pixels, video.resolution, positions, sensor.seed, last.number));
        sent = true;
    }
    return sent ? Outcome() : failure(NoVideo, "No video signal is switched on");
}

} // namespace sondixsim::model::commands
