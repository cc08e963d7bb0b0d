// SPDX-License-Identifier: MIT
#include "simulator.h"

#include "events.h"
#include "model/inputfile.h"
#include "model/models.h"
#include "model/platform.h"

#include <algorithm>
#include <cstdio>

namespace sondixsim::capi {

namespace {

using session::BenchText;

std::shared_ptr<const model::Bench> read(const BenchText &bench)
{
    try {
        return model::readBench(bench.text, bench.folder);
    } catch (const model::ParseError &mistake) {
        throw BenchError(bench.name + ':' + std::to_string(mistake.line) + ": " + mistake.what(), mistake.line);
    }
}

BenchText textOf(const std::string &path)
{
    try {
        const std::size_t slash = path.find_last_of("/\\");
        return {path, model::readInputFile(model::pathFromUtf8(path)),
                slash == std::string::npos ? std::string() : path.substr(0, slash)};
    } catch (const model::InputError &error) {
        throw BenchError(path + ": " + error.what(), 0);
    }
}

BenchText builtInText()
{
    const model::EmbeddedFile &file = model::embeddedBench[0];
    return {file.name, {file.text, file.size}, {}};
}

/// All faults of a bench file, in the order of their numbers.
std::vector<Fault> faultsOf(const model::Bench &bench)
{
    std::vector<Fault> faults = bench.faults;
    for (const auto &sensor : bench.sensors) {
        for (const model::SpecFault &spec : sensor->spec().faults) {
            faults.push_back(spec.fault);
            faults.back().sensor = sensor->spec().serialNumber;
        }
    }
    return faults;
}

} // namespace

std::shared_ptr<model::FaultCounter> counterOf(session::BenchSession &session, int number)
{
    return {std::shared_ptr<void>(), &session.faultCounter(number)};
}

Simulator &Simulator::get()
{
    static auto *const simulator = new Simulator;
    return *simulator;
}

void Simulator::use(const std::shared_ptr<const model::Bench> &bench, session::BenchSession *session)
{
    m_session.store(nullptr, std::memory_order_release);
    if (bench->clock) {
        if (bench->clock->isVirtual)
            clock.useVirtual(bench->clock->step);
        else
            clock.useReal(bench->clock->speed);
    }
    clock.reset();
    callers.clear();
    lineSpeed.store(bench->lineSpeed);
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_bench = bench;
        m_loaded = true;
        m_loadFailure = {};
    }
    // Other threads may already have opened sensors of the new bench, or search it. What is of the old one ends.
    instances.forEach([this, &bench](Instance &instance) {
        model::Session &handle = instance.session;
        const auto &sensors = bench->sensors;
        if (std::find(sensors.begin(), sensors.end(), handle.sensor) == sensors.end())
            handle.closeSensor(clock.now());
        if (handle.search && handle.search->bench() != bench)
            handle.search.reset();
    });
    faults.reset(bench->seed);
    int number = 0;
    for (const Fault &fault : faultsOf(*bench)) {
        ++number;
        if (session != nullptr)
            faults.add(fault, number, counterOf(*session, number));
        else
            faults.add(fault);
    }
    const auto counterAfter = [session](int last) -> Expectations::CounterAt {
        return [session, last](std::size_t index) {
            return session != nullptr ? counterOf(*session, last + 1 + static_cast<int>(index))
                                      : std::make_shared<model::FaultCounter>();
        };
    };
    expectations.use(bench, counterAfter(number));
    callEvents.use(*bench, counterAfter(number + static_cast<int>(Expectations::countOf(*bench))));
    callLog.record(false);
    callLog.clear();
    m_session.store(session, std::memory_order_release);
    follow();
}

void Simulator::attach(const std::string &name)
{
    try {
        auto session = std::make_unique<session::BenchSession>(name);
        const auto bench = read(session->bench());
        reserveSensors(*bench, *session);
        m_sessions.push_back(std::move(session));
        use(bench, m_sessions.back().get());
    } catch (const BenchError &) {
        throw;
    } catch (const std::exception &error) {
        throw BenchError(error.what(), 0);
    }
}

void Simulator::startSession(const std::string &name, const std::string &path, bool isLogged)
{
    BenchText text = path.empty() ? builtInText() : textOf(path);
    const auto bench = read(text);
    if (!path.empty())
        text.folder = model::absoluteUtf8(text.folder);
    const model::ClockSetting clock = bench->clock.value_or(model::ClockSetting{});
    session::BenchSession::start(
        name, text, faultsOf(*bench).size() + Expectations::countOf(*bench) + CallEvents::countOf(*bench),
        clockEvent(0.0, clock), isLogged);
}

void Simulator::follow(session::BenchSession &session)
{
    session.follow([this](const nlohmann::json &event) { applyEvent(*this, event); });
}

void Simulator::perform(const nlohmann::json &event)
{
    if (session::BenchSession *const session = this->session())
        return session->publish(event, clock.now(),
                                [this](const nlohmann::json &other) { applyEvent(*this, other); });
    nlohmann::json now = event;
    now["t"] = clock.now();
    applyEvent(*this, now);
}

void Simulator::publishChanges(model::Sensor &sensor)
{
    if (session() == nullptr)
        return;
    for (const auto &member : sensor.members())
        publishChanges(*member);
    const model::SensorChanges changes = sensor.takeChanges();
    if (changes.empty())
        return;
    try {
        perform(settingEvent(sensor, changes));
    } catch (const std::exception &) { // such as a full disk: the next command tries again
        sensor.returnChanges(changes);
        throw;
    }
}

void Simulator::load(std::string_view text, const std::string &name, const std::string &folder)
{
    const std::lock_guard<std::mutex> lock(m_loading);
    use(read({name, std::string(text), folder}));
}

void Simulator::loadFile(const std::string &path)
{
    const std::lock_guard<std::mutex> lock(m_loading);
    useFile(path);
}

void Simulator::useFile(const std::string &path)
{
    constexpr std::string_view session = "session:";
    if (path.compare(0, session.size(), session) == 0)
        attach(path.substr(session.size()));
    else
        use(read(textOf(path)));
}

void Simulator::loadBuiltIn()
{
    const std::lock_guard<std::mutex> lock(m_loading);
    use(read(builtInText()));
}

void Simulator::loadFirst()
{
    const std::lock_guard<std::mutex> loading(m_loading);
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_loaded)
            return;
    }
    const std::string path = model::environmentVariable("SONDIX_BENCH").value_or(std::string());
    try {
        if (path.empty())
            use(read(builtInText()));
        else
            useFile(path);
    } catch (const std::exception &error) { // a BenchError, or exhausted memory
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_loaded = true;
        m_loadFailure =
            model::failure(model::BenchUnusable, std::string("The bench file cannot be used: ") + error.what());
        m_lastFailure = m_loadFailure;
    }
}

std::shared_ptr<const model::Bench> Simulator::bench()
{
    for (const bool first : {true, false}) {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            if (m_loaded) {
                if (!m_bench)
                    m_lastFailure = m_loadFailure;
                return m_bench;
            }
        }
        if (first)
            loadFirst();
    }
    return nullptr;
}

bool Simulator::stepClock(const Instance &instance, double time)
{
    if (!(clock.step() > 0.0))
        return false;
    callers.wait(instance.session.handle, time, clock);
    return true;
}

void Simulator::noteFailure(const Instance &instance, double time)
{
    stepClock(instance, time);
}

void Simulator::noteAnswer(Instance &instance, double time, bool complete)
{
    if (complete) {
        if (clock.step() > 0.0)
            callers.goOn(instance.session.handle);
        return;
    }
    if (stepClock(instance, time) || !clock.isAskedInVain())
        return;
    const std::string text =
        "the program waits, but the clock of the bench is virtual and nobody steps it: no values "
        "arise and no search goes on (\"clock\" in the bench file)";
    std::fprintf(stderr, "Sondix bench simulator: %s\n", text.c_str());
    if (instance.session.log)
        instance.session.log->write(model::LogErrors, text);
}

std::int32_t Simulator::fail(const model::Outcome &outcome)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_lastFailure = outcome;
    return outcome.code;
}

model::Outcome Simulator::lastFailure()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_lastFailure;
}

} // namespace sondixsim::capi
