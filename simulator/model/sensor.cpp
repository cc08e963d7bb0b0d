// SPDX-License-Identifier: MIT
#include "sensor.h"

#include "command.h"
#include "random.h"

#include <algorithm>
#include <limits>
#include <utility>

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
                         const std::vector<std::shared_ptr<Sensor>> &sensorMembers,
                         std::shared_ptr<LineTime> lineTime)
    : spec(sensorSpec)
    , seed(sensorSeed)
    , members(sensorMembers)
    , settings(spec)
    , line(spec.place, std::move(lineTime))
    , sampler(spec, seed, settings, line)
    , pages(spec, settings, line, sampler)
{
}

void SensorParts::change(const ParameterList &changed, double now)
{
    sampler.catchUp(now);
    settings.change(changed);
    changes.settings.add(changed);
    sampler.followSettings(now);
}

void SensorParts::changeBaudrate(std::int32_t baudrate, double now)
{
    sampler.catchUp(now);
    line.setBaudrate(baudrate);
    changes.baudrate = baudrate;
    sampler.followSettings(now);
}

Sensor::Sensor(SensorSpec spec, std::uint64_t seed, std::vector<std::shared_ptr<Sensor>> members,
               std::shared_ptr<LineTime> lineTime)
    : m_spec(std::move(spec))
    , m_members(std::move(members))
    , m_plugged(m_spec.answering)
    , m_lasting{{TimelineEvent::Kind::Unplug, {!m_spec.answering, {}}}}
    , m_timeline(m_spec.timeline, mix(seed, std::string_view(m_spec.serialNumber)))
    , m_nextEvent(m_timeline.nextTime())
    , m_parts(m_spec, mix(seed, std::string_view(m_spec.serialNumber)), m_members, std::move(lineTime))
{
    for (const auto &member : m_members) {
        m_memberLogs.push_back(std::make_shared<PlugLog>());
        m_pluggedMembers.push_back(member->m_plugged.load());
        member->m_followers.push_back(m_memberLogs.back());
    }
}

bool Sensor::knows(const std::string &command) const
{
    return findHandleCommand(command, true) != nullptr || findHandleCommand(command, false) != nullptr ||
           findSensorCommand(command, m_parts) != nullptr;
}

bool Sensor::isPlugged(double now)
{
    catchUp(now);
    return m_plugged.load(std::memory_order_acquire) &&
           std::all_of(m_members.begin(), m_members.end(),
                       [now](const auto &member) { return member->isPlugged(now); });
}

void Sensor::setPlugged(bool plugged, double now)
{
    const auto lock = lockAt(now);
    connect(!changeByHand(TimelineEvent::Kind::Unplug, !plugged), now);
}

void Sensor::followMembers(double now)
{
    if (!m_members.empty())
        lockAt(now); // applies what its members have gone through
}

void Sensor::happen(std::size_t event, double now)
{
    const auto lock = lockAt(now);
    if (event >= m_spec.timeline.size())
        return;
    m_timeline.start(event, now);
    applyEventsUpTo(now);
}

void Sensor::setSilent(bool silent, double now)
{
    const auto lock = lockAt(now);
    m_parts.sampler.setSilent(changeByHand(TimelineEvent::Kind::Silence, silent), now);
}

bool Sensor::isSilent(double now)
{
    const auto lock = lockAt(now);
    return m_parts.sampler.isSilent();
}

void Sensor::limitByLine(bool limited, double now)
{
    const auto lock = lockAt(now);
    m_parts.sampler.limitByLine(limited, now);
}

Sensor::Lock::Lock(Sensor &sensor, double now)
    : m_sensor(sensor)
    , m_lock(sensor.m_mutex)
{
    m_sensor.applyEventsUpTo(now);
}

Sensor::Lock::~Lock()
{
    if (!m_sensor.m_frameCounters.empty())
        m_sensor.passFramesOn();
}

void Sensor::passFramesOn()
{
    const FrameCounts counts = m_parts.sampler.accountedFrames();
    for (FrameCounter &counter : m_frameCounters) {
        const std::uint64_t count = counts.*counter.member;
        *counter.counter += static_cast<std::int64_t>(count - counter.passedOn);
        counter.passedOn = count;
    }
}

void Sensor::catchUp(double now)
{
    if (now >= m_nextEvent.load(std::memory_order_acquire))
        lockAt(now);
}

void Sensor::applyEventsUpTo(double now)
{
    collectMemberChanges(now);
    while (nextEvent() <= now) {
        skipEvents(now);
        if (!m_memberChanges.empty() && m_memberChanges.begin()->first <= nextEvent()) {
            applyMemberChange();
            continue;
        }
        if (m_timeline.nextTime() <= nextEvent()) {
            apply(m_timeline.take());
            continue;
        }
        const auto event = m_events.extract(m_events.begin());
        apply(event.mapped(), event.key());
    }
    m_nextEvent.store(nextEvent(), std::memory_order_release);
}

double Sensor::nextEvent() const
{
    const double own = std::min(m_timeline.nextTime(), m_events.empty() ? never : m_events.begin()->first);
    return std::min(own, m_memberChanges.empty() ? never : m_memberChanges.begin()->first);
}

void Sensor::collectMemberChanges(double now)
{
    for (std::size_t i = 0; i < m_members.size(); ++i) {
        m_members[i]->catchUp(now);
        const std::lock_guard<std::mutex> lock(m_memberLogs[i]->mutex);
        for (const auto &[time, plugged] : m_memberLogs[i]->changes)
            m_memberChanges.emplace(time, std::pair(i, plugged));
        m_memberLogs[i]->changes.clear();
    }
}

void Sensor::applyMemberChange()
{
    const auto change = m_memberChanges.extract(m_memberChanges.begin());
    m_pluggedMembers[change.mapped().first] = change.mapped().second;
    connect(m_plugged.load(), change.key());
}

/// Leaves out events whose effects are known without playing each of them: there may be millions since the last call.
void Sensor::skipEvents(double now)
{
    using Kind = TimelineEvent::Kind;
    Sampler &sampler = m_parts.sampler;
    if (!sampler.isRunning() && m_followers.empty()) {
        // The last repetitions decide on the state; only drifts add up.
        for (const Timeline::Skipped &skipped : m_timeline.skipTo(now)) {
            const TimelineEvent &event = *skipped.event;
            if (event.kind == Kind::Drift)
                sampler.addDrift(
                    {now - *event.duration, *event.duration, event.by * static_cast<double>(skipped.times)}, now);
        }
        return;
    }
    if (!sampler.isTriggeredOnly())
        return;
    const double others = std::min(m_events.empty() ? never : m_events.begin()->first,
                                   m_memberChanges.empty() ? never : m_memberChanges.begin()->first);
    const double until = std::min({now, others, m_timeline.nextTimeOfOthers(Kind::Trigger)});
    // The last ones fill the ring.
    const std::int64_t skipped =
        m_timeline.skipTo(until, Kind::Trigger, std::int64_t(m_spec.ringFrames) + 2, sampler.secondsPerFrame());
    if (skipped > 0)
        sampler.skipTriggers(static_cast<std::uint64_t>(skipped));
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
    m_nextEvent.store(nextEvent(), std::memory_order_release);
}

void Sensor::apply(Event event, double time)
{
    using Kind = TimelineEvent::Kind;
    if (event == Event::FallSilent)
        m_parts.sampler.setSilent(changeByHand(Kind::Silence, true), time);
    else
        connect(!changeByHand(Kind::Unplug, event == Event::Unplug), time);
}

/// Whether the state that the event causes holds after this moment: another event may go on, or somebody may have caused it by
/// hand.
bool Sensor::follow(const Timeline::Moment &moment)
{
    Lasting &lasting = m_lasting[moment.event->kind];
    if (moment.isEnd)
        lasting.events.erase(moment.event);
    else
        lasting.events.insert(moment.event);
    return lasting.holds();
}

/// A hand that ends the state ends it also for the events that go on.
bool Sensor::changeByHand(TimelineEvent::Kind kind, bool holds)
{
    Lasting &lasting = m_lasting[kind];
    lasting.byHand = holds;
    if (!holds)
        lasting.events.clear();
    return holds;
}

void Sensor::apply(const Timeline::Moment &moment)
{
    using Kind = TimelineEvent::Kind;
    const TimelineEvent &event = *moment.event;
    Sampler &sampler = m_parts.sampler;
    switch (event.kind) {
    case Kind::Unplug:
        return connect(!follow(moment), moment.time);
    case Kind::Silence:
        return sampler.setSilent(follow(moment), moment.time);
    case Kind::InUse:
        return m_usedElsewhere.store(follow(moment));
    case Kind::Freeze:
        return sampler.setFrozen(follow(moment), moment.time);
    case Kind::Drift:
        return sampler.addDrift({moment.time, *event.duration, event.by}, moment.time);
    case Kind::Lose:
        return sampler.loseNext(event.frames, moment.time);
    case Kind::FactorySettings:
        return changeUnpublished({m_spec.settings, {}}, moment.time);
    case Kind::Set:
        return changeUnpublished({event.settings, {}}, moment.time);
    case Kind::Trigger:
        return sampler.trigger(moment.time);
    }
}

void Sensor::connect(bool plugged, double now)
{
    m_plugged.store(plugged, std::memory_order_release);
    for (const auto &follower : m_followers) {
        const std::lock_guard<std::mutex> lock(follower->mutex);
        follower->changes.emplace_back(now, plugged);
    }
    const bool all = std::all_of(m_pluggedMembers.begin(), m_pluggedMembers.end(), [](bool is) { return is; });
    m_parts.sampler.setConnected(plugged && all, now);
}

bool Sensor::claim(std::uint32_t handle)
{
    std::uint32_t none = 0;
    if (m_spec.place.inUse || m_usedElsewhere.load()) // by another program
        return false;
    if (!m_owner.compare_exchange_strong(none, handle))
        return none == handle;
    if (m_reservation && !m_reservation->acquire()) {
        m_owner.store(0);
        return false;
    }
    for (auto member = m_members.begin(); member != m_members.end(); ++member) {
        if ((*member)->claim(handle))
            continue;
        std::for_each(m_members.begin(), member, [](const auto &claimed) { claimed->giveUp(); });
        giveUp();
        return false;
    }
    return true;
}

void Sensor::giveUp()
{
    if (m_reservation)
        m_reservation->release();
    m_owner.store(0);
}

bool Sensor::isHeldByOther(std::uint32_t handle, double now)
{
    catchUp(now);
    const std::uint32_t owner = this->owner();
    return m_spec.place.inUse || m_usedElsewhere.load() ||
           (owner != 0 ? owner != handle : m_reservation && m_reservation->isTaken());
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
        member->giveUp();
    giveUp();
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
    Sensor *const member = memberMeantBy(call);
    if (member == nullptr)
        return execute(call);
    const auto memberLock = member->lockAt(call.now);
    return member->execute(call);
}

/// The sensor of a multi-sensor that a command is for; null if it is for the multi-sensor itself.
Sensor *Sensor::memberMeantBy(const CommandCall &call) const
{
    const Value *const index = call.staged.find("IP_SensorIndex");
    if (index == nullptr || call.name == "Get_Measure") // the values are those of the multi-sensor
        return nullptr;
    const std::int32_t number = toInt(*index).value_or(0);
    const bool isMember = number >= 1 && number <= static_cast<std::int32_t>(m_members.size());
    return isMember ? m_members[static_cast<std::size_t>(number - 1)].get() : nullptr;
}

Outcome Sensor::execute(const CommandCall &call)
{
    const Command *const command = findSensorCommand(call.name, m_parts);
    if (command == nullptr)
        return failure(UnknownCommand, m_spec.model + " does not know the command \"" + call.name + '"');
    // These sensors either execute a command or measure.
    if (!m_spec.tracking.empty() && command->answeredBy == AnsweredBy::Sensor)
        m_parts.sampler.stopTracking(call.now);
    Outcome outcome = command->runOnSensor(m_parts, call);
    if (command->answeredBy == AnsweredBy::Sensor && outcome.duration == 0.0)
        outcome.duration = secondsOnBus(call, outcome);
    return outcome;
}

/// How long a command and its answer keep the line of several sensors busy. A line of its own has been given up by no
/// other, and polling is how the values of a bus arrive.
double Sensor::secondsOnBus(const CommandCall &call, const Outcome &outcome) const
{
    if (!m_parts.line.time().isShared() || call.name == "Get_Measure")
        return 0.0;
    const std::size_t answer = outcome.ok() ? pairsText(call.answers, "\r\n").size() : outcome.text.size();
    return static_cast<double>(pairsText(call.staged, " ").size() + answer) * m_parts.line.secondsPerByte(false);
}

bool Sensor::push(double now, const std::vector<std::int32_t> &raw, const std::vector<double> &scaled,
                  double timestamp)
{
    const auto lock = lockAt(now);
    return m_parts.sampler.push(now, raw, scaled, timestamp);
}

SensorChanges Sensor::takeChanges()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return std::exchange(m_parts.changes, {});
}

void Sensor::returnChanges(SensorChanges changes)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    changes.settings.add(m_parts.changes.settings);
    if (m_parts.changes.baudrate)
        changes.baudrate = m_parts.changes.baudrate;
    m_parts.changes = std::move(changes);
}

void Sensor::apply(const SensorChanges &changes, double now)
{
    const auto lock = lockAt(now);
    changeUnpublished(changes, now);
}

void Sensor::changeUnpublished(const SensorChanges &changes, double now)
{
    const SensorChanges unpublished = m_parts.changes;
    if (changes.baudrate)
        m_parts.changeBaudrate(*changes.baudrate, now);
    if (!changes.settings.empty())
        m_parts.change(changes.settings, now);
    m_parts.changes = unpublished;
}

Outcome Sensor::check(const ParameterList &wanted, SensorChanges &changes) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (const Parameter &parameter : wanted) {
        std::string key = parameter.name;
        if (key.compare(0, 3, "SP_") == 0)
            key.replace(0, 3, "SA_");
        if (m_parts.settings.find(key) == nullptr)
            return failure(UnknownParameter, m_spec.model + " has no setting \"" + parameter.name + '"');
        Value value;
        Outcome outcome = m_parts.settings.check(key, parameter.name, parameter.value, value);
        if (!outcome.ok())
            return outcome;
        changes.settings.set(key, std::move(value));
    }
    return {};
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

void Sensor::countFrames(std::uint64_t FrameCounts::*member, std::shared_ptr<std::atomic<std::int64_t>> counter)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_frameCounters.push_back({member, std::move(counter), m_parts.sampler.accountedFrames().*member});
}

Value Sensor::setting(const std::string &key, double now)
{
    const auto lock = lockAt(now);
    return *m_parts.settings.find(key);
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
