// SPDX-License-Identifier: MIT
#include "random.h"
#include "sensor.h"

#include <algorithm>

namespace sondixsim::model {

bool Sensor::modeAllowsVideo() const
{
    const auto hasVideo = [](const MeasuringMode &mode) { return mode.video; };
    const MeasuringMode *const mode = currentMode();
    return (mode != nullptr && mode->video) || std::none_of(m_spec.modes.begin(), m_spec.modes.end(), hasVideo);
}

bool Sensor::isSwitchedOn(const VideoLine &line) const
{
    const bool network = std::string_view(m_spec.place.interface->name) == "TCP/IP";
    const Value *const value = m_settings.find("SA_" + line.switchName + (network ? "_ETH" : "_RS422"));
    return value != nullptr && toInt(*value).value_or(0) != 0;
}

std::int32_t Sensor::videoSignalsPerFrame() const
{
    if (!modeAllowsVideo())
        return 0;
    const auto isOn = [this](const VideoLine &line) { return isSwitchedOn(line); };
    return static_cast<std::int32_t>(std::count_if(m_spec.video.lines.begin(), m_spec.video.lines.end(), isOn));
}

/// Where in their ranges the values of a frame are that a line shows; errors are nowhere.
std::vector<double> Sensor::placesOf(const VideoLine &line, const std::vector<double> &values) const
{
    std::vector<double> places;
    for (const std::int32_t number : line.signals) {
        const auto index = static_cast<std::size_t>(number) - 1;
        if (index >= values.size() || values[index] <= errorValueBase)
            continue;
        const Signal &signal = frame()[index];
        places.push_back((values[index] - signal.scaledMin) / (signal.scaledMax - signal.scaledMin));
    }
    return places;
}

Outcome Sensor::video(double now, ParameterList &answers)
{
    if (!m_spec.polled)
        produce(now);
    const std::uint64_t last = m_nextFrame > 0 ? m_nextFrame - 1 : 0;
    std::vector<std::int32_t> raw(frame().size());
    std::vector<double> values(frame().size());
    generate(last, 1, raw.data(), values.data());
    const std::int32_t pixels = m_spec.video.pixelsOf(m_spec.info);
    const bool allowed = modeAllowsVideo();
    bool sent = false;
    for (const VideoLine &line : m_spec.video.lines) {
        if (!allowed || !(line.switchName.empty() || isSwitchedOn(line)))
            continue;
        answers.set(line.answer,
                    drawLine(line, pixels, m_spec.video.resolution, placesOf(line, values), m_seed, last));
        sent = true;
    }
    if (sent)
        return {};
    return failure(NoVideo,
                   allowed ? "No video signal is switched on" : "The measuring mode of the sensor sends no video");
}

} // namespace sondixsim::model
