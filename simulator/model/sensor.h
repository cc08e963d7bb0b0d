// SPDX-License-Identifier: MIT
#pragma once

#include "errors.h"
#include "genericcommand.h"
#include "ring.h"
#include "sensorspec.h"

#include <atomic>
#include <memory>
#include <mutex>

namespace sondixsim::model {

/// One sensor of a bench, alive: its settings, what it measures, whether it is there. Every function may
/// be called from any thread.
class Sensor
{
public:
    Sensor(SensorSpec spec, std::uint64_t seed, std::vector<std::shared_ptr<Sensor>> members);

    const SensorSpec &spec() const { return m_spec; }
    const std::vector<std::shared_ptr<Sensor>> &members() const { return m_members; }

    bool isPlugged() const; ///< one that stands for several is as long as all of them are
    void setPlugged(bool plugged) { m_plugged.store(plugged, std::memory_order_release); }

    /// The handle that has it open, 0 when none has.
    std::uint32_t owner() const { return m_owner.load(std::memory_order_acquire); }
    bool claim(std::uint32_t handle); ///< false when another handle has it or a member open

    /// Rate at which its serial line answers now, 0 where it has none.
    std::int32_t baudrate() const { return m_baudrate.load(std::memory_order_acquire); }
    /// The rate that interface parameters ask for; those that name none mean the one of the sensor's place.
    std::int32_t rateIn(const ParameterList &staged) const;

    void open(double now, std::int32_t baudrate);
    void close();

    Outcome available(double now, std::int32_t *count);
    Outcome transfer(double now, std::int32_t *raw, double *scaled, std::int32_t most, std::int32_t *read,
                     double *timestamp);
    Outcome command(const std::string &name, const ParameterList &staged, double now, ParameterList &answers);

    /// False when the sensor is not open. One of \a raw and \a scaled may be empty and follows from the other.
    bool push(double now, const std::vector<std::int32_t> &raw, const std::vector<double> &scaled,
              double timestamp);
    std::uint64_t lostFrames(double now);

    /// When the serial line has passed on something that takes so long, after what it is busy with.
    double reserveLine(double now, double seconds);
    double lineTime() const; ///< seconds that pages and generic commands have taken on the line so far
    /// An answer that the web interface gives as it is; false without a web interface.
    bool setPage(const std::string &path, HttpAnswer answer);

    /// Its trigger input sees one trigger; nothing happens unless it is open and waits for one.
    void trigger(double now);

    ParameterList identity() const;
    ParameterList foundParameters() const;
    std::string information() const; ///< "SA_SensorInformation"

private:
    // All of these expect m_mutex to be held.
    double frameRate() const; ///< when no trigger is waited for
    bool waitsForTrigger() const;
    bool isHeard() const;                     ///< the handle has opened it at the rate of its line
    bool sendsValues() const;                 ///< over the interface that it is opened at
    bool outputOnSerialLine() const;          ///< measured values share the line with everything else
    double secondsPerByte() const;            ///< on the serial line
    const MeasuringMode *currentMode() const; ///< null when there is nothing particular about it
    const std::vector<Signal> &frame() const { return *m_frame; }
    void selectFrame();
    void fillStanding();
    void restart(double now);
    void produce(double now);
    void generate(std::uint64_t first, std::size_t frames, std::int32_t *raw, double *scaled) const;
    void valueAt(std::size_t signal, std::uint64_t frameNumber, double time, std::int32_t &raw,
                 double &scaled) const;
    std::vector<double> presentValues(double now) const; ///< of the last frame; the ring is left alone
    void track(int index, double now);
    void trackAtPowerUp(double now);
    bool commandKnown(const std::string &name) const;

    Outcome measure(const ParameterList &staged, double now);
    Outcome readGroup(const std::string &group, ParameterList &answers) const;
    Outcome write(const std::string &what, const ParameterList &staged, double now);
    Outcome checkSetting(const std::string &group, const Parameter &parameter, std::string &key,
                         Value &value) const;
    Outcome checkValue(const std::string &key, const std::string &shownName, const Value &wanted,
                       Value &value) const;
    void apply(const ParameterList &changes, double now);
    Outcome http(const ParameterList &staged, double now, ParameterList &answers);
    HttpAnswer servePage(const HttpRequest &request, double now) const;
    std::string liveValues(double now) const;
    std::string liveSettings() const;
    Outcome generic(const ParameterList &staged, double now, ParameterList &answers);
    Outcome runGeneric(const std::vector<GenericLine> &lines, double now, std::string &answer);
    Outcome runGenericLine(const GenericLine &line, double now, std::string &answer);
    Outcome checkGeneric(const GenericLine &line, std::string &key, Value &value) const;
    Outcome importSettings(const std::vector<GenericLine> &lines, double now);
    Outcome changeBaudrate(const std::string &text, double now);
    std::string exportedSettings() const;
    Outcome video(double now, ParameterList &answers);
    bool modeAllowsVideo() const;
    bool isSwitchedOn(const VideoLine &line) const;
    std::int32_t videoSignalsPerFrame() const;
    std::vector<double> placesOf(const VideoLine &line, const std::vector<double> &values) const;
    void describeFrame(ParameterList &answers) const;
    void describeSignal(const Signal &signal, int number, ParameterList &answers) const;
    void describeDriver(ParameterList &answers) const;
    std::string settingsText() const;

    const SensorSpec m_spec;
    const std::uint64_t m_seed;
    const std::vector<std::shared_ptr<Sensor>> m_members;
    std::atomic<bool> m_plugged{true};
    std::atomic<std::uint32_t> m_owner{0};
    std::atomic<std::int32_t> m_baudrate{0};

    mutable std::mutex m_mutex;
    ParameterList m_settings;
    const std::vector<Signal> *m_frame = nullptr; ///< signals of the measuring mode
    bool m_open = false;
    std::int32_t m_openBaudrate = 0; ///< of the handle
    double m_lineTime = 0.0;
    double m_lineFree = 0.0; ///< bench time from which the line is idle
    std::map<std::string, HttpAnswer> m_setPages;
    int m_tracking = -1; ///< index of the tracking command under way
    Ring m_ring;
    std::uint64_t m_lost = 0;
    double m_rate = 0.0;       ///< frames a second since m_anchorTime
    double m_anchorTime = 0.0; ///< frame m_anchorFrame arises one period later
    std::uint64_t m_anchorFrame = 0;
    std::uint64_t m_nextFrame = 0;
    std::uint64_t m_origin = 0;
    std::vector<std::int32_t> m_standingRaw;
    std::vector<double> m_standingScaled;
};

/// "<key>: <text>" in lines, as "Get_SensorErrorValueText" answers.
std::string errorTextLines(const std::map<std::int32_t, std::string> &texts);

/// Raw value that stands for a scaled one, and back; an error value has a raw value above the range.
std::int32_t rawOf(const Signal &signal, double scaled);
double scaledOf(const Signal &signal, std::int32_t raw);

/// What a command meets that nobody answers at the rate of the line.
Outcome noAnswerAt(const SensorSpec &spec, std::int32_t baudrate);

} // namespace sondixsim::model
