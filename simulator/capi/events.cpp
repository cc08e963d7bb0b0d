// SPDX-License-Identifier: MIT
#include "events.h"

#include "faultjson.h"
#include "model/text.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace sondixsim::capi {

namespace {

std::int64_t wallNanoseconds()
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

json toJson(const model::Value &value)
{
    if (const auto *number = std::get_if<std::int32_t>(&value))
        return *number;
    if (const auto *number = std::get_if<double>(&value))
        return *number;
    return model::fromWindows1250(model::toText(value));
}

model::Value fromJson(const json &value)
{
    if (value.is_number_integer())
        return value.get<std::int32_t>();
    if (value.is_number())
        return value.get<double>();
    return model::toWindows1250Lossy(value.get<std::string>());
}

void setClock(Simulator &simulator, const json &event)
{
    session::BenchSession *const session = simulator.session();
    if (session == nullptr) // another thread is loading a bench
        return;
    if (event.at("virtual").get<bool>())
        return simulator.clock.useShared(session->virtualTime(), event.value("step", 0.0));
    const auto speed = event.at("speed").get<double>();
    const auto passed = static_cast<double>(wallNanoseconds() - event.at("wall").get<std::int64_t>()) * 1e-9;
    simulator.clock.setReal(event.at("at").get<double>() + passed * speed, speed);
}

void inject(Simulator &simulator, json event)
{
    session::BenchSession *const session = simulator.session();
    if (session == nullptr) // another thread is loading a bench
        return;
    const auto number = event.at("fault").get<int>();
    for (const char *other : {"do", "fault", "seq", "t"})
        event.erase(other);
    RequestReader reader(event);
    simulator.faults.add(readFault(reader), number, counterOf(*session, number));
}

void applyToSensor(const model::Bench &bench, const json &event, const std::string &action, double time)
{
    const auto sensor = bench.find(model::toWindows1250Lossy(event.at("sensor").get<std::string>()));
    if (!sensor)
        return;
    if (action == "plug" || action == "unplug") {
        bench.setPlugged(*sensor, action == "plug", time);
    } else if (action == "silent") {
        sensor->setSilent(event.at("silent").get<bool>(), time);
    } else if (action == "trigger") {
        sensor->trigger(time);
    } else if (action == "happen") {
        sensor->happen(event.at("event").get<std::size_t>(), time);
    } else if (action == "set") {
        model::SensorChanges changes;
        for (const auto &[key, value] : event.at("values").items())
            changes.settings.set(key, fromJson(value));
        if (event.contains("baudrate"))
            changes.baudrate = event.at("baudrate").get<std::int32_t>();
        sensor->apply(changes, time);
    }
}

class SessionReservation : public model::Reservation
{
public:
    SessionReservation(session::BenchSession &session, std::size_t sensor)
        : m_session(session)
        , m_sensor(sensor)
    {
    }
    bool acquire() override { return m_session.claim(m_sensor); }
    void release() override { m_session.release(m_sensor); }
    bool isTaken() override { return m_session.isClaimedByOther(m_sensor); }

private:
    session::BenchSession &m_session;
    std::size_t m_sensor;
};

} // namespace

void applyEvent(Simulator &simulator, const json &event)
{
    const auto bench = simulator.bench();
    const auto action = event.at("do").get<std::string>();
    // Another process may be ahead by the time that its clock was read earlier.
    const double time = std::min(event.value("t", 0.0), simulator.clock.now());
    if (action == "clock") {
        setClock(simulator, event);
    } else if (action == "inject") {
        inject(simulator, event);
    } else if (action == "clear" && event.contains("fault")) {
        simulator.faults.remove(event.at("fault").get<int>());
    } else if (action == "clear") {
        simulator.faults.clear();
    } else if (action == "release") {
        simulator.faults.releaseHangs();
    } else if (action == "stop") {
        simulator.faults.clear();
        simulator.faults.releaseHangs();
        for (const auto &sensor : bench->sensors)
            bench->setPlugged(*sensor, false, time);
    } else if (event.contains("sensor")) {
        applyToSensor(*bench, event, action, time);
    }
}

json settingEvent(const model::Sensor &sensor, const model::SensorChanges &changes)
{
    json values = json::object();
    for (const model::Parameter &setting : changes.settings)
        values[setting.name] = toJson(setting.value);
    json event{{"do", "set"},
               {"sensor", model::fromWindows1250(sensor.spec().serialNumber)},
               {"values", std::move(values)}};
    if (changes.baudrate)
        event["baudrate"] = *changes.baudrate;
    return event;
}

json clockEvent(double benchTime, const model::ClockSetting &clock)
{
    return {{"do", "clock"},        {"at", benchTime},    {"virtual", clock.isVirtual},
            {"speed", clock.speed}, {"step", clock.step}, {"wall", wallNanoseconds()}};
}

void reserveSensors(const model::Bench &bench, session::BenchSession &session)
{
    for (std::size_t i = 0; i < bench.sensors.size(); ++i)
        bench.sensors[i]->share(std::make_unique<SessionReservation>(session, i));
}

} // namespace sondixsim::capi
