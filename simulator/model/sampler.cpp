// SPDX-License-Identifier: MIT
#include "sampler.h"

#include "random.h"

#include <algorithm>
#include <cmath>

namespace sondixsim::model {

namespace {

FrameCounts sum(const FrameCounts &a, const FrameCounts &b)
{
    return {a.generated + b.generated, a.fetched + b.fetched, a.waiting + b.waiting,
            a.lost + b.lost,           a.unsent + b.unsent,   a.discarded + b.discarded};
}

} // namespace

Sampler::Sampler(const SensorSpec &spec, std::uint64_t seed, const Settings &settings, const SerialLine &line)
    : m_spec(spec)
    , m_seed(seed)
    , m_settings(settings)
    , m_line(line)
{
    selectFrame();
}

void Sampler::start(double now)
{
    stop(now);
    m_formerCounts = sum(m_formerCounts, m_counts);
    m_counts = {};
    m_running = true;
    m_nextFrame = m_anchorFrame = 0;
    m_ring.reset(static_cast<std::size_t>(m_spec.ringFrames), frame().size());
    restart(now);
    trackAtPowerUp(now);
    fillStanding();
}

void Sampler::stop(double now)
{
    if (!m_running)
        return;
    if (!m_spec.polled && !hasStandingValues()) {
        const std::uint64_t due = dueFrames(now);
        m_counts.generated += due;
        if (!isSending())
            m_counts.unsent += due;
    }
    m_ring.reset(0, 1); // discards what was not fetched, and what is due
    m_running = false;
}

void Sampler::setSilent(bool silent, double now)
{
    catchUp(now);
    m_silent = silent;
    ++m_sequence;
}

void Sampler::setConnected(bool connected, double now)
{
    catchUp(now);
    m_connected = connected;
    ++m_sequence;
}

void Sampler::followSettings(double now)
{
    const std::vector<Signal> *const before = m_frame;
    selectFrame();
    if (m_frame != before || sentRate() != m_rate)
        restart(now);
}

void Sampler::discard(double now)
{
    catchUp(now);
    m_ring.clear();
}

void Sampler::track(std::size_t command, double now)
{
    catchUp(now);
    m_tracking = command;
    restart(now);
}

void Sampler::stopTracking(double now)
{
    catchUp(now);
    m_tracking.reset();
    restart(now);
}

void Sampler::trackAtPowerUp(double now)
{
    if (m_spec.tracking.empty())
        return;
    const std::int32_t mode = m_settings.number(m_spec.autostart, -1);
    for (std::size_t i = 0; i < m_spec.tracking.size(); ++i) {
        if (m_spec.tracking[i].mode == mode)
            track(i, now);
    }
}

void Sampler::trigger(double now)
{
    if (!m_running || !m_settings.waitsForTrigger() || !sendsValues() || frame().empty())
        return;
    catchUp(now);
    restart(now);
    m_rate = 0.0; // the frame is measured now, not a period later
    std::vector<std::int32_t> raw(frame().size());
    std::vector<double> scaled(frame().size());
    generate(m_nextFrame, 1, raw.data(), scaled.data());
    if (isSending()) {
        m_ring.append(raw.data(), scaled.data(), raw.size(), now, {m_sequence, 0.0});
    } else {
        ++m_counts.generated;
        ++m_counts.unsent;
    }
    ++m_nextFrame;
    restart(now);
}

std::int32_t Sampler::available(double now)
{
    if (hasStandingValues())
        return isSending() ? m_spec.standing : 0;
    catchUpUnlessPolled(now);
    return static_cast<std::int32_t>(std::min<std::size_t>(m_ring.size(), INT32_MAX));
}

std::int32_t Sampler::transfer(double now, std::int32_t *raw, double *scaled, std::int32_t maxCount,
                               double *timestamp)
{
    const auto wanted = static_cast<std::size_t>(std::max(maxCount, 0));
    if (timestamp != nullptr)
        *timestamp = now;
    if (hasStandingValues()) {
        const std::size_t count = std::min(wanted, static_cast<std::size_t>(isSending() ? m_spec.standing : 0));
        if (raw != nullptr)
            std::copy_n(m_standingRaw.data(), count, raw);
        if (scaled != nullptr)
            std::copy_n(m_standingScaled.data(), count, scaled);
        return static_cast<std::int32_t>(count);
    }
    catchUpUnlessPolled(now);
    return static_cast<std::int32_t>(m_ring.take(raw, scaled, wanted, timestamp));
}

bool Sampler::push(double now, const std::vector<std::int32_t> &raw, const std::vector<double> &scaled,
                   double timestamp)
{
    if (!m_running)
        return false;
    catchUpUnlessPolled(now);
    const std::size_t count = std::max(raw.size(), scaled.size());
    std::vector<std::int32_t> allRaw = raw;
    std::vector<double> allScaled = scaled;
    static const Signal plain;
    for (std::size_t i = 0; i < count; ++i) {
        const Signal &signal = frame().empty() ? plain : frame()[i % frame().size()];
        if (raw.empty())
            allRaw.push_back(rawOf(signal, scaled[i]));
        if (scaled.empty())
            allScaled.push_back(scaledOf(signal, raw[i]));
    }
    m_ring.append(allRaw.data(), allScaled.data(), count, timestamp, {++m_sequence, period()});
    ++m_sequence; // the generated frames that follow do not continue this block
    return true;
}

FrameCounts Sampler::frameCounts(double now)
{
    catchUpUnlessPolled(now);
    FrameCounts counts = m_counts;
    counts.waiting = counts.generated - counts.fetched - counts.lost - counts.unsent - counts.discarded;
    return counts;
}

FrameCounts Sampler::totalFrameCounts(double now)
{
    return sum(m_formerCounts, frameCounts(now));
}

double Sampler::frameRate() const
{
    if (m_spec.tracking.empty())
        return m_spec.rate.of(m_settings.all());
    return m_tracking ? m_spec.tracking[*m_tracking].rate.of(m_settings.all()) : 0.0;
}

bool Sampler::usesSerialLine() const
{
    return m_line.baudrate() != 0 && m_settings.number(m_spec.web.output, 0) != 0;
}

Sampler::Frame Sampler::lastFrame(double now)
{
    catchUpUnlessPolled(now);
    Frame last;
    last.number = m_nextFrame > 0 ? m_nextFrame - 1 : 0;
    std::vector<std::int32_t> raw(frame().size());
    last.scaled.resize(frame().size());
    generate(last.number, 1, raw.data(), last.scaled.data());
    return last;
}

std::vector<double> Sampler::presentValues(double now) const
{
    std::uint64_t number = m_nextFrame > 0 ? m_nextFrame - 1 : 0;
    double time = m_anchorTime;
    const double nominal = frameRate();
    if (m_rate > 0.0) {
        const double measured = std::max(1.0, measuredFrames(now));
        number = m_anchorFrame + static_cast<std::uint64_t>(measured) - 1;
        time = m_anchorTime + measured / m_rate;
    } else if (!m_settings.waitsForTrigger() && nominal > 0.0) { // it measures without sending
        number = static_cast<std::uint64_t>(std::max(0.0, now * nominal));
        time = now;
    }
    std::vector<double> values(frame().size());
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = sampleOf(frame()[i], time, number, seedOf(i)).scaled;
    return values;
}

std::uint64_t Sampler::seedOf(std::size_t signal) const
{
    return mix(m_seed, signal);
}

bool Sampler::sendsValues() const
{
    const bool canBeSwitchedOff = m_line.baudrate() != 0 && m_spec.web.present;
    return m_line.isAtSensorsRate() && (!canBeSwitchedOff || usesSerialLine());
}

/// Frames per second that arrive by themselves.
double Sampler::sentRate() const
{
    if (!sendsValues())
        return 0.0;
    return m_settings.waitsForTrigger() ? std::min(m_spec.triggerRate, frameRate()) : frameRate();
}

/// Frames since the anchor, as a whole number.
double Sampler::measuredFrames(double now) const
{
    constexpr double tolerance = 1.0e-6; // of a frame: sums of steps of the clock are not exact
    return std::floor((now - m_anchorTime) * m_rate + tolerance);
}

double Sampler::period() const
{
    return m_rate > 0.0 ? 1.0 / m_rate : 0.0;
}

double Sampler::timeOf(std::uint64_t frame, double period) const
{
    return m_anchorTime + static_cast<double>(frame - m_anchorFrame + 1) * period;
}

bool Sampler::hasStandingValues() const
{
    return m_spec.standing > 0 && !frame().empty();
}

void Sampler::catchUpUnlessPolled(double now)
{
    if (!m_spec.polled)
        catchUp(now);
}

void Sampler::selectFrame()
{
    const MeasuringMode *const mode = m_settings.measuringMode();
    const std::vector<Signal> *const wanted =
        mode != nullptr && !mode->signals.empty() ? &mode->signals : &m_spec.signals;
    if (m_frame == wanted)
        return;
    m_frame = wanted;
    if (!m_running)
        return;
    // A reader could not tell values of the old frame from those of the new one.
    m_ring.reset(static_cast<std::size_t>(m_spec.ringFrames), frame().size());
    fillStanding();
}

void Sampler::fillStanding()
{
    if (!hasStandingValues())
        return;
    const auto values = static_cast<std::size_t>(m_spec.standing);
    const std::size_t frames = values / frame().size() + 1;
    m_standingRaw.resize(frames * frame().size());
    m_standingScaled.resize(m_standingRaw.size());
    generate(m_anchorFrame, frames, m_standingRaw.data(), m_standingScaled.data());
}

void Sampler::restart(double now)
{
    m_anchorTime = now;
    m_anchorFrame = m_nextFrame;
    m_rate = sentRate();
    ++m_sequence;
}

std::uint64_t Sampler::dueFrames(double now) const
{
    const double measured = measuredFrames(now);
    const auto done = static_cast<double>(m_nextFrame - m_anchorFrame);
    if (!m_running || !(measured > done) || frame().empty())
        return 0;
    return static_cast<std::uint64_t>(std::min(measured - done, 1.0e15));
}

void Sampler::catchUp(double now)
{
    std::uint64_t due = dueFrames(now);
    if (due == 0)
        return;
    if (hasStandingValues()) { // nobody can fetch the frames of the present
        m_nextFrame += due;
        return;
    }
    if (!isSending()) {
        m_counts.generated += due;
        m_counts.unsent += due;
        m_nextFrame += due;
        return;
    }
    const std::size_t perFrame = frame().size();
    const auto room = static_cast<std::uint64_t>(m_spec.ringFrames);
    if (due > room) {
        // Frames that would be overwritten at once are only counted.
        m_ring.lose(due - room);
        ++m_sequence;
        m_nextFrame += due - room;
        due = room;
    }
    constexpr std::uint64_t block = 256;
    std::vector<std::int32_t> raw(static_cast<std::size_t>(std::min(due, block)) * perFrame);
    std::vector<double> scaled(raw.size());
    const double period = this->period();
    while (due > 0) {
        const auto frames = static_cast<std::size_t>(std::min(due, block));
        generate(m_nextFrame, frames, raw.data(), scaled.data());
        m_ring.append(raw.data(), scaled.data(), frames * perFrame, timeOf(m_nextFrame, period),
                      {m_sequence, period});
        m_nextFrame += frames;
        due -= frames;
    }
}

void Sampler::generate(std::uint64_t first, std::size_t frames, std::int32_t *raw, double *scaled) const
{
    const std::size_t perFrame = frame().size();
    const double period = this->period();
    for (std::size_t s = 0; s < perFrame; ++s) {
        const std::uint64_t seed = seedOf(s);
        for (std::size_t i = 0; i < frames; ++i) {
            const std::uint64_t number = first + i;
            const Sample sample = sampleOf(frame()[s], timeOf(number, period), number, seed);
            raw[i * perFrame + s] = sample.raw;
            scaled[i * perFrame + s] = sample.scaled;
        }
    }
}

} // namespace sondixsim::model
