// SPDX-License-Identifier: MIT
#include "sensor.h"

#include "random.h"

#include <algorithm>
#include <cmath>

namespace sondixsim::model {

Sensor::Sensor(SensorSpec spec, std::uint64_t seed, std::vector<std::shared_ptr<Sensor>> members)
    : m_spec(std::move(spec))
    , m_seed(mix(seed, std::string_view(m_spec.serialNumber)))
    , m_members(std::move(members))
    , m_plugged(m_spec.answering)
    , m_baudrate(rateIn({}))
    , m_settings(m_spec.settings)
    , m_openBaudrate(m_baudrate)
{
    selectFrame();
}

bool Sensor::isPlugged() const
{
    return m_plugged.load(std::memory_order_acquire) &&
           std::all_of(m_members.begin(), m_members.end(), [](const auto &member) { return member->isPlugged(); });
}

bool Sensor::claim(std::uint32_t handle)
{
    std::uint32_t nobody = 0;
    if (!m_owner.compare_exchange_strong(nobody, handle) && nobody != handle)
        return false;
    for (auto member = m_members.begin(); member != m_members.end(); ++member) {
        if ((*member)->claim(handle))
            continue;
        std::for_each(m_members.begin(), member, [](const auto &claimed) { claimed->m_owner.store(0); });
        m_owner.store(0);
        return false;
    }
    return true;
}

std::int32_t Sensor::rateIn(const ParameterList &staged) const
{
    const Value *const own = m_spec.place.parameters.find("IP_Baudrate");
    if (own == nullptr)
        return 0;
    const Value *const wanted = staged.find("IP_Baudrate");
    const auto rate = convertedLike(wanted != nullptr ? *wanted : *own, *own);
    return rate ? toInt(*rate).value_or(-1) : -1;
}

bool Sensor::isHeard() const
{
    return m_openBaudrate == m_baudrate;
}

bool Sensor::outputOnSerialLine() const
{
    const Value *const output = m_settings.find(m_spec.web.output);
    return m_baudrate != 0 && output != nullptr && toInt(*output).value_or(0) != 0;
}

bool Sensor::sendsValues() const
{
    const bool canBeSwitchedOff = m_baudrate != 0 && m_spec.web.present;
    return isHeard() && (!canBeSwitchedOff || outputOnSerialLine());
}

void Sensor::open(double now, std::int32_t baudrate)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_open = true;
    m_openBaudrate = baudrate;
    m_lost = 0;
    m_nextFrame = m_anchorFrame = 0;
    m_ring.reset(static_cast<std::size_t>(m_spec.ringFrames), frame().size());
    restart(now);
    trackAtPowerUp(now);
    fillStanding();
}

void Sensor::fillStanding()
{
    if (m_spec.standing == 0 || frame().empty())
        return;
    const auto values = static_cast<std::size_t>(m_spec.standing);
    const std::size_t frames = values / frame().size() + 1;
    m_standingRaw.resize(frames * frame().size());
    m_standingScaled.resize(m_standingRaw.size());
    generate(m_anchorFrame, frames, m_standingRaw.data(), m_standingScaled.data());
}

void Sensor::close()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_open = false;
    m_ring.reset(0, 1);
    for (const auto &member : m_members)
        member->m_owner.store(0);
    m_owner.store(0);
}

double Sensor::frameRate() const
{
    if (m_spec.tracking.empty())
        return m_spec.rate.of(m_settings);
    return m_tracking < 0 ? 0.0 : m_spec.tracking[static_cast<std::size_t>(m_tracking)].rate.of(m_settings);
}

bool Sensor::waitsForTrigger() const
{
    const Value *const mode = m_settings.find(m_spec.triggerParameter);
    return mode != nullptr && toInt(*mode).value_or(m_spec.triggerOff) != m_spec.triggerOff;
}

const MeasuringMode *Sensor::currentMode() const
{
    const Value *const setting = m_settings.find(m_spec.modeParameter);
    const std::int32_t number = setting != nullptr ? toInt(*setting).value_or(-1) : -1;
    const auto isIt = [number](const MeasuringMode &mode) { return mode.number == number; };
    const auto found = std::find_if(m_spec.modes.begin(), m_spec.modes.end(), isIt);
    return found != m_spec.modes.end() ? &*found : nullptr;
}

void Sensor::selectFrame()
{
    const MeasuringMode *const mode = currentMode();
    const std::vector<Signal> *const wanted =
        mode != nullptr && !mode->signals.empty() ? &mode->signals : &m_spec.signals;
    if (m_frame == wanted)
        return;
    m_frame = wanted;
    if (!m_open)
        return;
    // Values of another frame would be taken for something that they are not.
    m_ring.reset(static_cast<std::size_t>(m_spec.ringFrames), frame().size());
    fillStanding();
}

void Sensor::restart(double now)
{
    m_anchorTime = now;
    m_anchorFrame = m_nextFrame;
    if (!sendsValues())
        m_rate = 0.0;
    else
        m_rate = waitsForTrigger() ? std::min(m_spec.triggerRate, frameRate()) : frameRate();
    ++m_origin;
}

void Sensor::track(int index, double now)
{
    produce(now);
    m_tracking = index;
    restart(now);
}

void Sensor::trackAtPowerUp(double now)
{
    if (m_spec.tracking.empty())
        return;
    const Value *const mode = m_settings.find(m_spec.autostart);
    const std::int32_t wanted = mode != nullptr ? toInt(*mode).value_or(-1) : -1;
    for (std::size_t i = 0; i < m_spec.tracking.size(); ++i) {
        if (m_spec.tracking[i].mode == wanted)
            track(static_cast<int>(i), now);
    }
}

void Sensor::produce(double now)
{
    constexpr double tolerance = 1.0e-6; // of a frame: sums of steps of the clock are not exact
    const double arisen = std::floor((now - m_anchorTime) * m_rate + tolerance);
    const auto done = static_cast<double>(m_nextFrame - m_anchorFrame);
    const std::size_t perFrame = frame().size();
    if (!(arisen > done) || perFrame == 0)
        return;
    auto due = static_cast<std::uint64_t>(std::min(arisen - done, 1.0e15));
    const auto room = static_cast<std::uint64_t>(m_spec.ringFrames);
    if (due > room) {
        // What nobody can ever see need not be computed, only counted.
        m_lost += due - room + m_ring.size() / perFrame;
        m_ring.clear();
        ++m_origin;
        m_nextFrame += due - room;
        due = room;
    }
    constexpr std::uint64_t block = 256;
    std::vector<std::int32_t> raw(static_cast<std::size_t>(std::min(due, block)) * perFrame);
    std::vector<double> scaled(raw.size());
    const double period = 1.0 / m_rate;
    while (due > 0) {
        const auto frames = static_cast<std::size_t>(std::min(due, block));
        generate(m_nextFrame, frames, raw.data(), scaled.data());
        const double timestamp = m_anchorTime + static_cast<double>(m_nextFrame - m_anchorFrame + 1) * period;
        m_lost += m_ring.append(raw.data(), scaled.data(), frames * perFrame, timestamp, {m_origin, period});
        m_nextFrame += frames;
        due -= frames;
    }
}

void Sensor::generate(std::uint64_t first, std::size_t frames, std::int32_t *raw, double *scaled) const
{
    const std::size_t perFrame = frame().size();
    const double period = m_rate > 0.0 ? 1.0 / m_rate : 0.0;
    for (std::size_t s = 0; s < perFrame; ++s) {
        for (std::size_t i = 0; i < frames; ++i) {
            const std::uint64_t number = first + i;
            const double time = m_anchorTime + static_cast<double>(number - m_anchorFrame + 1) * period;
            valueAt(s, number, time, raw[i * perFrame + s], scaled[i * perFrame + s]);
        }
    }
}

void Sensor::valueAt(std::size_t index, std::uint64_t frameNumber, double time, std::int32_t &raw,
                     double &scaled) const
{
    const Signal &signal = frame()[index];
    const std::uint64_t seed = mix(m_seed, index);
    double value = 0.0;
    std::uint64_t stream = 0;
    for (const Generator &generator : signal.generators)
        value += generator.at(time, frameNumber, mix(seed, ++stream));
    raw = rawOf(signal, std::clamp(value, signal.scaledMin, signal.scaledMax));
    scaled = scaledOf(signal, raw);
    for (const ErrorValues &errors : signal.errors) {
        if (errors.hits(frameNumber, mix(seed, ++stream))) {
            scaled = errorValueBase + errors.key;
            raw = rawOf(signal, scaled);
            return;
        }
    }
}

Outcome Sensor::available(double now, std::int32_t *count)
{
    if (!isPlugged())
        return failure(ConnectionLost, "The connection to the sensor is lost");
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_spec.standing > 0) {
        *count = m_spec.standing;
        return {};
    }
    if (!m_spec.polled)
        produce(now);
    *count = static_cast<std::int32_t>(std::min<std::size_t>(m_ring.size(), INT32_MAX));
    return {};
}

Outcome Sensor::transfer(double now, std::int32_t *raw, double *scaled, std::int32_t most, std::int32_t *read,
                         double *timestamp)
{
    if (!isPlugged())
        return failure(ConnectionLost, "The connection to the sensor is lost");
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto wanted = static_cast<std::size_t>(std::max(most, 0));
    if (m_spec.standing > 0) {
        const std::size_t count = std::min(wanted, static_cast<std::size_t>(m_spec.standing));
        if (raw != nullptr)
            std::copy_n(m_standingRaw.data(), count, raw);
        if (scaled != nullptr)
            std::copy_n(m_standingScaled.data(), count, scaled);
        if (timestamp != nullptr)
            *timestamp = now;
        *read = static_cast<std::int32_t>(count);
        return {};
    }
    if (!m_spec.polled)
        produce(now);
    if (timestamp != nullptr)
        *timestamp = now;
    *read = static_cast<std::int32_t>(m_ring.take(raw, scaled, wanted, timestamp));
    return {};
}

bool Sensor::push(double now, const std::vector<std::int32_t> &raw, const std::vector<double> &scaled,
                  double timestamp)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_open)
        return false;
    if (!m_spec.polled)
        produce(now);
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
    m_lost += m_ring.append(allRaw.data(), allScaled.data(), count, timestamp,
                            {++m_origin, m_rate > 0.0 ? 1.0 / m_rate : 0.0});
    ++m_origin; // what the generators add next does not continue this block
    return true;
}

void Sensor::trigger(double now)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_open || !waitsForTrigger() || !sendsValues() || frame().empty())
        return;
    produce(now);
    restart(now);
    m_rate = 0.0; // the frame arises now, not a period later
    std::vector<std::int32_t> raw(frame().size());
    std::vector<double> scaled(frame().size());
    generate(m_nextFrame, 1, raw.data(), scaled.data());
    m_lost += m_ring.append(raw.data(), scaled.data(), raw.size(), now, {m_origin, 0.0});
    ++m_nextFrame;
    restart(now);
}

std::uint64_t Sensor::lostFrames(double now)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_open && !m_spec.polled && m_spec.standing == 0)
        produce(now);
    return m_lost;
}

std::int32_t rawOf(const Signal &signal, double scaled)
{
    if (scaled <= errorValueBase)
        return static_cast<std::int32_t>(std::min(signal.rawMax - (scaled - errorValueBase), 2147483647.0));
    const double part = (scaled - signal.scaledMin) / (signal.scaledMax - signal.scaledMin);
    const double raw = std::nearbyint(signal.rawMin + part * (signal.rawMax - signal.rawMin));
    return static_cast<std::int32_t>(std::clamp(raw, -2147483648.0, 2147483647.0));
}

double scaledOf(const Signal &signal, std::int32_t raw)
{
    const double part = (raw - signal.rawMin) / (signal.rawMax - signal.rawMin);
    return signal.scaledMin + part * (signal.scaledMax - signal.scaledMin);
}

} // namespace sondixsim::model
