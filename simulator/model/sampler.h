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
    void
    receive(double now); ///< like catchUp(), without the frames that wait for the end of a command on their line
    void discard(double now); ///< all values that were not fetched
    void track(std::size_t command, double now);
    void stopTracking(double now);
    void trigger(double now); ///< one frame, if the sensor waits for a trigger
    bool isRunning() const { return m_running; }
    bool isTriggeredOnly() const; ///< without trigger(), no frame would be measured now, or trigger() does nothing
    /// Has the effect of \a count calls of trigger() whose frames are all overwritten by later ones.
    void skipTriggers(std::uint64_t count);
    double secondsPerFrame() const; ///< on the line
    bool isSilent() const { return m_silent; }
    void setSilent(bool silent, double now);       ///< it goes on measuring in both cases,
    void setConnected(bool connected, double now); ///< but what it measures meanwhile is not sent

    void setFrozen(bool frozen, double now); ///< all frames then have the values of this moment
    /// A movement of the zero of all signals.
    struct Drift
    {
        double begin = 0.0;    ///< bench time
        double duration = 1.0; ///< seconds until it has reached its end, where it stays
        double by = 0.0;       ///< share of the measuring range
    };
    void addDrift(const Drift &drift, double now);
    void loseNext(std::uint64_t frames, double now); ///< the next frames are lost on their way
    void limitByLine(bool limited, double now);      ///< or frames arrive however slow the line is

    std::int32_t available(double now);
    std::int32_t transfer(double now, std::int32_t *raw, double *scaled, std::int32_t maxCount, double *timestamp);
    /// False when the sensor is not open. One of \a raw and \a scaled may be empty: it follows from the other.
    bool push(double now, const std::vector<std::int32_t> &raw, const std::vector<double> &scaled,
              double timestamp);
    FrameCounts frameCounts(double now); ///< since start()
    FrameCounts totalFrameCounts(double now);
    FrameCounts accountedFrames() const; ///< like totalFrameCounts() up to the last call, without those waiting

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
    void receiveUnlessPolled(double now);
    void produceUpTo(double now); ///< while the part of the frames that arrives is the same
    std::uint64_t arriving(std::uint64_t first, std::uint64_t frames) const; ///< of so many from this one on
    void appendArriving(std::uint64_t frames);                               ///< the next ones
    void needLine(double now);
    bool canBeTriggered() const;
    void takeLineChanges(double now);
    void selectFrame();
    bool hasStandingValues() const;
    void fillStanding();
    void restart(double now);
    void trackAtPowerUp(double now);
    const FrameRate *rateRule() const;  ///< null while a tracking sensor does not track
    const Recording *recording() const; ///< of the present frame; null if it is generated
    Averaging averaging() const;
    Sample sample(std::size_t signal, double time, std::uint64_t frame, const Averaging &averaging) const;
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
    struct Moment
    {
        double time = 0.0;
        std::uint64_t frame = 0;
    };
    std::optional<Moment> m_frozen;
    std::vector<Drift> m_drifts;
    std::uint64_t m_losing = 0; ///< frames still to be lost
    FrameCounts m_counts;       ///< since start()
    FrameCounts m_formerCounts; ///< of all earlier runs
    Ring m_ring{m_counts};
    bool m_isLimited = true; ///< by the line
    double m_arriving = 1.0; ///< part of the frames from m_arrivingFrom on that the line carries
    std::uint64_t m_arrivingFrom = 0;
    double m_triggeredUntil = 0.0; ///< time at which the line has carried the triggered frames
    double m_rate = 0.0;           ///< Hz since m_anchorTime
    double m_anchorTime = 0.0;     ///< frame m_anchorFrame is measured one period later
    std::uint64_t m_anchorFrame = 0;
    std::uint64_t m_nextFrame = 0;
    std::uint64_t m_sequence = 0; ///< changes wherever the frames in the ring have a gap or another period
    std::vector<std::int32_t> m_standingRaw;
    std::vector<double> m_standingScaled;
};

} // namespace sondixsim::model
