// SPDX-License-Identifier: MIT
#include "sensor.h"

#include "command.h"
#include "random.h"

#include <algorithm>
#include <limits>

namespace sondixsim::model {

namespace {

// Not constexpr: clang-tidy takes the use of a constant infinity for a narrowing conversion.
const double never = std::numeric_limits<double>::infinity();

Outcome connectionLost()
{
    return failure(ConnectionLost, "The connection to the sensor is lost");
}

/// The settings of all groups, each as the command that would set them.
std::string settingsText(const SensorSpec &spec, const Settings &settings)
{
    std::string text;
    for (const auto &[group, keys] : spec.groups) {
        ParameterList line;
        line.set("S_Command", "Set_" + group);
        for (const std::string &key : keys)
            line.set("SP_" + key.substr(3), *settings.find(key));
        text += "\r\n" + pairsText(line, " ");
    }
    return text;
}

} // namespace

SensorParts::SensorParts(const SensorSpec &sensorSpec, std::uint64_t sensorSeed,
                         const std::vector<std::shared_ptr<Sensor>> &sensorMembers)
    : spec(sensorSpec)
    , seed(sensorSeed)
    , members(sensorMembers)
    , settings(spec)
    , line(spec.place)
    , sampler(spec, seed, settings, line)
    , pages(spec, settings, line, sampler)
{
}

void SensorParts::change(const ParameterList &changes, double now)
{
    sampler.catchUp(now);
    settings.change(changes);
    sampler.followSettings(now);
}

void SensorParts::changeBaudrate(std::int32_t baudrate, double now)
{
    sampler.catchUp(now);
    line.setBaudrate(baudrate);
    sampler.followSettings(now);
}

Sensor::Sensor(SensorSpec spec, std::uint64_t seed, std::vector<std::shared_ptr<Sensor>> members)
    : m_spec(std::move(spec))
    , m_members(std::move(members))
    , m_plugged(m_spec.answering)
    , m_nextEvent(never)
    , m_parts(m_spec, mix(seed, std::string_view(m_spec.serialNumber)), m_members)
{
}

bool Sensor::isPlugged(double now)
{
    if (now >= m_nextEvent.load(std::memory_order_acquire))
        lockAt(now);
    return m_plugged.load(std::memory_order_acquire) &&
           std::all_of(m_members.begin(), m_members.end(),
                       [now](const auto &member) { return member->isPlugged(now); });
}

void Sensor::setPlugged(bool plugged, double now)
{
    const auto lock = lockAt(now);
    connect(plugged, now);
}

void Sensor::followMembers(double now)
{
    if (m_members.empty())
        return;
    const auto lock = lockAt(now);
    connect(m_plugged.load(), now);
}

void Sensor::setSilent(bool silent, double now)
{
    const auto lock = lockAt(now);
    m_parts.sampler.setSilent(silent, now);
}

bool Sensor::isSilent(double now)
{
    const auto lock = lockAt(now);
    return m_parts.sampler.isSilent();
}

std::unique_lock<std::mutex> Sensor::lockAt(double now)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_events.empty() && m_events.begin()->first <= now) {
        const auto event = m_events.extract(m_events.begin());
        apply(event.mapped(), event.key());
    }
    m_nextEvent.store(m_events.empty() ? never : m_events.begin()->first, std::memory_order_release);
    return lock;
}

void Sensor::planEvents(double now)
{
    const std::pair<std::optional<double>, Event> events[] = {
        {m_spec.silentAfter, Event::FallSilent},
        {m_spec.unplugAfter, Event::Unplug},
        {m_spec.plugAfter, Event::Plug},
    };
    m_events.clear();
    for (const auto &[after, event] : events) {
        if (after)
            m_events.emplace(now + *after, event);
    }
    m_nextEvent.store(m_events.empty() ? never : m_events.begin()->first, std::memory_order_release);
}

void Sensor::apply(Event event, double time)
{
    if (event == Event::FallSilent)
        m_parts.sampler.setSilent(true, time);
    else
        connect(event == Event::Plug, time);
}

void Sensor::connect(bool plugged, double now)
{
    m_plugged.store(plugged, std::memory_order_release);
    const bool all = std::all_of(m_members.begin(), m_members.end(),
                                 [now](const auto &member) { return member->isPlugged(now); });
    m_parts.sampler.setConnected(plugged && all, now);
}

bool Sensor::claim(std::uint32_t handle)
{
    std::uint32_t none = 0;
    if (!m_owner.compare_exchange_strong(none, handle) && none != handle)
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

void Sensor::open(double now, std::int32_t baudrate)
{
    const auto lock = lockAt(now);
    m_parts.line.open(baudrate);
    m_parts.sampler.start(now);
    if (m_spec.silentAfter)
        m_parts.sampler.setSilent(false, now);
    planEvents(now);
}

void Sensor::close(double now)
{
    const auto lock = lockAt(now);
    m_parts.sampler.stop(now);
    for (const auto &member : m_members)
        member->m_owner.store(0);
    m_owner.store(0);
}

Outcome Sensor::available(double now, std::int32_t *count)
{
    if (!isPlugged(now))
        return connectionLost();
    const auto lock = lockAt(now);
    *count = m_parts.sampler.available(now);
    return {};
}

Outcome Sensor::transfer(double now, std::int32_t *raw, double *scaled, std::int32_t maxCount, std::int32_t *read,
                         double *timestamp)
{
    if (!isPlugged(now))
        return connectionLost();
    const auto lock = lockAt(now);
    *read = m_parts.sampler.transfer(now, raw, scaled, maxCount, timestamp);
    return {};
}

Outcome Sensor::command(const CommandCall &call)
{
    if (!isPlugged(call.now))
        return connectionLost();
    const auto lock = lockAt(call.now);
    if (!m_parts.line.isAtSensorsRate())
        return noAnswerAt(m_spec.model, m_spec.place, m_parts.line.openedBaudrate());
    const Command *const command = findSensorCommand(call.name, m_parts);
    if (command == nullptr)
        return failure(UnknownCommand, m_spec.model + " does not know the command \"" + call.name + '"');
    // These sensors either execute a command or measure.
    if (!m_spec.tracking.empty() && command->answeredBy == AnsweredBy::Sensor)
        m_parts.sampler.stopTracking(call.now);
    return command->runOnSensor(m_parts, call);
}

bool Sensor::push(double now, const std::vector<std::int32_t> &raw, const std::vector<double> &scaled,
                  double timestamp)
{
    const auto lock = lockAt(now);
    return m_parts.sampler.push(now, raw, scaled, timestamp);
}

FrameCounts Sensor::frameCounts(double now)
{
    const auto lock = lockAt(now);
    return m_parts.sampler.frameCounts(now);
}

FrameCounts Sensor::totalFrameCounts(double now)
{
    const auto lock = lockAt(now);
    return m_parts.sampler.totalFrameCounts(now);
}

void Sensor::trigger(double now)
{
    const auto lock = lockAt(now);
    m_parts.sampler.trigger(now);
}

bool Sensor::setPage(const std::string &path, HttpAnswer answer)
{
    if (!m_spec.web.present)
        return false;
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_parts.pages.set(path, std::move(answer));
    return true;
}

ParameterList Sensor::foundParameters() const
{
    ParameterList found = m_spec.place.foundParameters();
    const std::int32_t baudrate = line().baudrate();
    if (baudrate != 0)
        found.set("IP_Baudrate", baudrate);
    found.set("IP_SensorType", m_spec.reportedType());
    found.set("IP_SensorTypeName", m_spec.model);
    found.add(m_spec.identity());
    if (m_spec.listsAddresses()) {
        std::string all;
        for (const std::string &address : m_spec.place.addresses)
            all += (all.empty() ? "" : " ") + address;
        found.set("SA_CurrentIPAddresses", all);
    }
    found.set("SA_CompleteAnswer", pairsText(m_spec.identity(), "\r\n"));
    return found;
}

std::string Sensor::information() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    ParameterList info;
    info.set("S_Command", std::string("Get_Info"));
    info.set("IP_SensorType", m_spec.reportedType());
    info.add(m_spec.identity());
    info.add(m_spec.info);
    return pairsText(info, " ") + settingsText(m_spec, m_parts.settings);
}

} // namespace sondixsim::model
