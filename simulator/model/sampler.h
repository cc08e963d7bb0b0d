// SPDX-License-Identifier: MIT
#pragma once

#include "ring.h"
#include "serialline.h"
#include "settings.h"

#include <optional>

namespace sondixsim::model {

/// Produces the frames of a sensor at its rate and keeps them until they are fetched. Frames are computed on demand, up
/// to the bench time of the call. Has no lock of its own: the sensor's mutex guards it.
class Sampler
{
public:
    Sampler(const SensorSpec &spec, std::uint64_t seed, const Settings &settings, const SerialLine &line);

    void start(double now); ///< when the sensor is opened
    void stop(double now);

    void catchUp(double now); ///< computes frames up to now; call it before settings or the baud rate change,
    void followSettings(double now); ///< and this after the change
    void discard(double now);        ///< all values that were not fetched
    void track(std::size_t command, double now);
    void stopTracking(double now);
    void trigger(double now); ///< one frame, if the sensor waits for a trigger
    bool isSilent() const { return m_silent; }
    void setSilent(bool silent, double now);       ///< it goes on measuring in both cases,
    void setConnected(bool connected, double now); ///< but what it measures meanwhile is not sent

    std::int32_t available(double now);
    std::int32_t transfer(double now, std::int32_t *raw, double *scaled, std::int32_t maxCount, double *timestamp);
    /// False when the sensor is not open. One of \a raw and \a scaled may be empty: it follows from the other.
    bool push(double now, const std::vector<std::int32_t> &raw, const std::vector<double> &scaled,
              double timestamp);
    FrameCounts frameCounts(double now); ///< since start()
    FrameCounts totalFrameCounts(double now);

    const std::vector<Signal> &frame() const { return *m_frame; } ///< of the present measuring mode
    double frameRate() const;                                     ///< Hz, without regard to triggers
    bool usesSerialLine() const; ///< whether the output of values on the serial line is switched on
    struct Frame
    {
        std::uint64_t number = 0;
        std::vector<double> scaled;
    };
    Frame lastFrame(double now);                         ///< the last one that was measured
    std::vector<double> presentValues(double now) const; ///< measured now; does not change the ring

private:
    std::uint64_t seedOf(std::size_t signal) const;
    bool isSending() const { return m_connected && !m_silent; }
    bool sendsValues() const; ///< over the interface at which the sensor is open
    double sentRate() const;
    double measuredFrames(double now) const;
    std::uint64_t dueFrames(double now) const; ///< measured since the last catchUp()
    double period() const;                     ///< seconds; 0 while no frames are sent
    double timeOf(std::uint64_t frame, double period) const;
    void catchUpUnlessPolled(double now);
    void selectFrame();
    bool hasStandingValues() const;
    void fillStanding();
    void restart(double now);
    void trackAtPowerUp(double now);
    void generate(std::uint64_t first, std::size_t frames, std::int32_t *raw, double *scaled) const;

    const SensorSpec &m_spec;
    const std::uint64_t m_seed;
    const Settings &m_settings;
    const SerialLine &m_line;

    bool m_running = false;
    const std::vector<Signal> *m_frame = nullptr;
    std::optional<std::size_t> m_tracking; ///< index of the tracking command that is active
    bool m_silent = false;
    bool m_connected = true;
    FrameCounts m_counts;       ///< since start()
    FrameCounts m_formerCounts; ///< of all earlier runs
    Ring m_ring{m_counts};
    double m_rate = 0.0;       ///< Hz since m_anchorTime
    double m_anchorTime = 0.0; ///< frame m_anchorFrame is measured one period later
    std::uint64_t m_anchorFrame = 0;
    std::uint64_t m_nextFrame = 0;
    std::uint64_t m_sequence = 0; ///< changes wherever the frames in the ring have a gap or another period
    std::vector<std::int32_t> m_standingRaw;
    std::vector<double> m_standingScaled;
};

} // namespace sondixsim::model
