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

/// Each byte carries six bits of a raw value; no model sends less than three for a value.
int bytesOf(const Signal &signal)
{
    constexpr int minBytes = 3;
    constexpr int maxBytes = 6;
    int bytes = minBytes;
    while (bytes < maxBytes && signal.rawMax - signal.rawMin >= std::ldexp(1.0, 6 * bytes))
        ++bytes;
    return bytes;
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
    m_losing = 0;
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
        m_counts.unsent += isSending() ? due - arriving(m_nextFrame, due) : due;
    }
    m_ring.reset(0, 1); // discards what was not fetched, and what is due
    m_running = false;
    needLine(now);
}

void Sampler::setSilent(bool silent, double now)
{
    catchUp(now);
    m_silent = silent;
    ++m_sequence;
    needLine(now);
}

void Sampler::setConnected(bool connected, double now)
{
    catchUp(now);
    m_connected = connected;
    ++m_sequence;
    needLine(now);
}

void Sampler::setFrozen(bool frozen, double now)
{
    catchUp(now);
    m_frozen = frozen ? std::optional(Moment{now, m_nextFrame}) : std::nullopt;
}

void Sampler::addDrift(const Drift &drift, double now)
{
    catchUp(now);
    m_drifts.push_back(drift);
}

void Sampler::loseNext(std::uint64_t frames, double now)
{
    catchUp(now);
    if (m_running)
        m_losing += frames;
}

void Sampler::limitByLine(bool limited, double now)
{
    catchUp(now);
    m_isLimited = limited;
    needLine(now);
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

bool Sampler::canBeTriggered() const
{
    return m_running && m_settings.waitsForTrigger() && sendsValues() && !frame().empty();
}

bool Sampler::isTriggeredOnly() const
{
    return !canBeTriggered() || (m_rate == 0.0 && sentRate() == 0.0 && !hasStandingValues());
}

void Sampler::skipTriggers(std::uint64_t count)
{
    if (!canBeTriggered())
        return;
    if (isSending()) {
        m_ring.lose(count);
    } else {
        m_counts.generated += count;
        m_counts.unsent += count;
    }
    m_nextFrame += count;
    m_anchorFrame = m_nextFrame;
    ++m_sequence;
}

void Sampler::trigger(double now)
{
    if (!canBeTriggered())
        return;
    catchUp(now);
    restart(now);
    m_rate = 0.0; // the frame is measured now, not a period later
    std::vector<std::int32_t> raw(frame().size());
    std::vector<double> scaled(frame().size());
    generate(m_nextFrame, 1, raw.data(), scaled.data());
    const double seconds = secondsPerFrame();
    if (isSending() && m_triggeredUntil <= now + seconds) { // at most one frame waits for the line
        m_triggeredUntil = std::max(now, m_triggeredUntil) + seconds;
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
    receiveUnlessPolled(now);
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
    receiveUnlessPolled(now);
    return static_cast<std::int32_t>(m_ring.take(raw, scaled, wanted, timestamp));
}

bool Sampler::push(double now, const std::vector<std::int32_t> &raw, const std::vector<double> &scaled,
                   double timestamp)
{
    if (!m_running)
        return false;
    receiveUnlessPolled(now);
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
    receiveUnlessPolled(now);
    FrameCounts counts = m_counts;
    counts.waiting = counts.generated - counts.fetched - counts.lost - counts.unsent - counts.discarded;
    return counts;
}

FrameCounts Sampler::totalFrameCounts(double now)
{
    return sum(m_formerCounts, frameCounts(now));
}

FrameCounts Sampler::accountedFrames() const
{
    return sum(m_formerCounts, m_counts);
}

double Sampler::frameRate() const
{
    const FrameRate *const rule = rateRule();
    return rule != nullptr ? rule->of(m_settings.all()) : 0.0;
}

bool Sampler::usesSerialLine() const
{
    return m_line.baudrate() != 0 && m_settings.number(m_spec.web.output, 0) != 0;
}

Sampler::Frame Sampler::lastFrame(double now)
{
    receiveUnlessPolled(now);
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
    const Averaging averaging = this->averaging();
    std::vector<double> values(frame().size());
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = sample(i, time, number, averaging).scaled;
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

void Sampler::receive(double now)
{
    catchUp(m_isLimited ? m_line.time().carriedUpTo(now) : now);
}

void Sampler::receiveUnlessPolled(double now)
{
    if (!m_spec.polled)
        receive(now);
}

/// Seconds for which a frame occupies the line; 0 for one that takes no time.
double Sampler::secondsPerFrame() const
{
    if (!m_isLimited)
        return 0.0;
    int bytes = 0;
    for (const Signal &signal : frame())
        bytes += bytesOf(signal);
    return bytes * m_line.secondsPerByte(false);
}

/// Tells the line how much of its time the frames need from now on.
void Sampler::needLine(double now)
{
    const bool needs = m_running && isSending() && !hasStandingValues();
    const double demand = needs ? m_rate * secondsPerFrame() : 0.0;
    m_line.time().setDemand(m_line.user(), now, demand);
    takeLineChanges(now);
    if (demand == 0.0)
        m_arriving = 1.0;
}

void Sampler::takeLineChanges(double now)
{
    while (m_line.time().nextChange(m_line.user()) <= now) {
        m_arriving = m_line.time().takeChange(m_line.user()).arriving;
        m_arrivingFrom = m_nextFrame;
    }
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
    needLine(now);
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
    const LineTime &line = m_line.time();
    while (line.nextChange(m_line.user()) <= now) {
        const double change = line.nextChange(m_line.user());
        produceUpTo(change);
        takeLineChanges(change);
    }
    produceUpTo(now);
}

std::uint64_t Sampler::arriving(std::uint64_t first, std::uint64_t frames) const
{
    if (m_arriving >= 1.0)
        return frames;
    constexpr double tolerance = 1.0e-6; // of a frame: products are not exact
    const auto before = [this](std::uint64_t frame) {
        return std::floor(static_cast<double>(frame - m_arrivingFrom) * m_arriving + tolerance);
    };
    return static_cast<std::uint64_t>(before(first + frames) - before(first));
}

/// Appends those of the next frames that arrive; the others are counted as unsent.
void Sampler::appendArriving(std::uint64_t frames)
{
    const std::size_t perFrame = frame().size();
    const double period = this->period();
    std::vector<std::int32_t> raw(static_cast<std::size_t>(frames) * perFrame);
    std::vector<double> scaled(raw.size());
    const std::uint64_t end = m_nextFrame + frames;
    for (std::uint64_t first = m_nextFrame; first < end;) {
        const bool arrives = m_arriving >= 1.0 || arriving(first, 1) == 1;
        std::uint64_t next = m_arriving >= 1.0 ? end : first + 1;
        while (next < end && (arriving(next, 1) == 1) == arrives)
            ++next;
        if (arrives) {
            const auto count = static_cast<std::size_t>(next - first);
            generate(first, count, raw.data(), scaled.data());
            m_ring.append(raw.data(), scaled.data(), count * perFrame, timeOf(first, period),
                          {m_sequence, period});
        } else {
            m_counts.generated += next - first;
            m_counts.unsent += next - first;
            ++m_sequence;
        }
        first = next;
    }
    m_nextFrame = end;
}

void Sampler::produceUpTo(double now)
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
    if (m_losing > 0) {
        const std::uint64_t lost = std::min(due, m_losing);
        m_counts.generated += lost;
        m_counts.lost += lost;
        m_losing -= lost;
        m_nextFrame += lost;
        due -= lost;
        ++m_sequence;
        if (due == 0)
            return;
    }
    const Recording *const recorded = recording();
    const auto room = static_cast<double>(m_spec.ringFrames);
    const std::uint64_t present = recorded != nullptr ? recorded->presentFrames(m_nextFrame, due) : due;
    // Frames that would be overwritten at once are only counted. Those that do not arrive overwrite none.
    const double kept = m_arriving > 0.0 ? std::ceil(room / m_arriving) : static_cast<double>(present);
    std::uint64_t losing = static_cast<double>(present) > kept ? present - static_cast<std::uint64_t>(kept) : 0;
    if (recorded != nullptr && m_arriving < 1.0)
        losing = 0; // what is missing in a recording changes how many arrive
    constexpr std::uint64_t block = 256;
    while (due > 0) {
        const Recording::Run run =
            recorded != nullptr ? recorded->runFrom(m_nextFrame, due) : Recording::Run{due, false};
        std::uint64_t frames = run.frames;
        if (run.isMissing) {
            m_counts.generated += frames;
            m_counts.unsent += frames;
            m_nextFrame += frames;
            ++m_sequence;
        } else if (losing > 0) {
            frames = std::min(frames, losing);
            const std::uint64_t lost = arriving(m_nextFrame, frames);
            m_ring.lose(lost);
            m_counts.generated += frames - lost;
            m_counts.unsent += frames - lost;
            m_nextFrame += frames;
            losing -= frames;
            ++m_sequence;
        } else {
            frames = std::min(frames, block);
            appendArriving(frames);
        }
        due -= frames;
    }
}

const FrameRate *Sampler::rateRule() const
{
    if (m_spec.tracking.empty())
        return &m_spec.rate;
    return m_tracking ? &m_spec.tracking[*m_tracking].rate : nullptr;
}

const Recording *Sampler::recording() const
{
    return m_frame == &m_spec.signals ? m_spec.recording.get() : nullptr;
}

Averaging Sampler::averaging() const
{
    constexpr double maxMeasurements = 1.0e9;
    const FrameRate *const rule = rateRule();
    const double rate = frameRate();
    if (rate <= 0.0)
        return {m_settings.averagedMeasurements(), 0.0};
    const double perFrame = std::min(rule->measurementsPerFrame(m_settings.all()), maxMeasurements);
    if (perFrame > 1.0) // they follow each other faster than the frames do
        return {static_cast<std::int32_t>(perFrame), 1.0 / (rate * perFrame)};
    return {m_settings.averagedMeasurements(), 1.0 / rate};
}

Sample Sampler::sample(std::size_t signal, double time, std::uint64_t frame, const Averaging &averaging) const
{
    if (const Recording *const recorded = recording())
        return recorded->sample(frame, signal);
    const Signal &description = (*m_frame)[signal];
    const Moment moment = m_frozen.value_or(Moment{time, frame});
    const Sample value = sampleOf(description, moment.time, moment.frame, seedOf(signal), averaging);
    double shift = 0.0;
    for (const Drift &drift : m_drifts)
        shift += drift.by * std::clamp((moment.time - drift.begin) / drift.duration, 0.0, 1.0);
    if (shift == 0.0 || value.scaled <= errorValueBase)
        return value;
    return sampleOfValue(description, value.scaled + shift * (description.scaledMax - description.scaledMin));
}

void Sampler::generate(std::uint64_t first, std::size_t frames, std::int32_t *raw, double *scaled) const
{
    const std::size_t perFrame = frame().size();
    const double period = this->period();
    const Averaging averaging = this->averaging();
    for (std::size_t s = 0; s < perFrame; ++s) {
        for (std::size_t i = 0; i < frames; ++i) {
            const std::uint64_t number = first + i;
            const Sample value = sample(s, timeOf(number, period), number, averaging);
            raw[i * perFrame + s] = value.raw;
            scaled[i * perFrame + s] = value.scaled;
        }
    }
}

} // namespace sondixsim::model
