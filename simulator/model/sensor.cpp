// SPDX-License-Identifier: MIT
#include "sensor.h"

#include "command.h"
#include "random.h"

#include <algorithm>

namespace sondixsim::model {

namespace {

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
    , m_parts(m_spec, mix(seed, std::string_view(m_spec.serialNumber)), m_members)
{
}

bool Sensor::isPlugged() const
{
    return m_plugged.load(std::memory_order_acquire) &&
           std::all_of(m_members.begin(), m_members.end(), [](const auto &member) { return member->isPlugged(); });
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
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_parts.line.open(baudrate);
    m_parts.sampler.start(now);
}

void Sensor::close()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_parts.sampler.stop();
    for (const auto &member : m_members)
        member->m_owner.store(0);
    m_owner.store(0);
}

Outcome Sensor::available(double now, std::int32_t *count)
{
    if (!isPlugged())
        return connectionLost();
    const std::lock_guard<std::mutex> lock(m_mutex);
    *count = m_parts.sampler.available(now);
    return {};
}

Outcome Sensor::transfer(double now, std::int32_t *raw, double *scaled, std::int32_t maxCount, std::int32_t *read,
                         double *timestamp)
{
    if (!isPlugged())
        return connectionLost();
    const std::lock_guard<std::mutex> lock(m_mutex);
    *read = m_parts.sampler.transfer(now, raw, scaled, maxCount, timestamp);
    return {};
}

Outcome Sensor::command(const CommandCall &call)
{
    if (!isPlugged())
        return connectionLost();
    const std::lock_guard<std::mutex> lock(m_mutex);
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
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_parts.sampler.push(now, raw, scaled, timestamp);
}

std::uint64_t Sensor::lostFrames(double now)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_parts.sampler.lostFrames(now);
}

void Sensor::trigger(double now)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
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
