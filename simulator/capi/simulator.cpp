// SPDX-License-Identifier: MIT
#include "simulator.h"

#include "model/models.h"
#include "model/platform.h"

#include <fstream>
#include <iterator>

namespace sondixsim::capi {

namespace {

std::shared_ptr<const model::Bench> read(std::string_view text, const std::string &name, const std::string &folder)
{
    try {
        return model::readBench(text, folder);
    } catch (const model::ParseError &mistake) {
        throw BenchError(name + ':' + std::to_string(mistake.line) + ": " + mistake.what(), mistake.line);
    }
}

std::shared_ptr<const model::Bench> readFile(const std::string &path)
{
    std::ifstream file(model::pathFromUtf8(path), std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file)
        throw BenchError(path + ":0: the file cannot be read", 0);
    const std::size_t slash = path.find_last_of("/\\");
    return read(text, path, slash == std::string::npos ? std::string() : path.substr(0, slash));
}

std::shared_ptr<const model::Bench> readBuiltIn()
{
    const model::EmbeddedFile &file = model::embeddedBench[0];
    return read({file.text, file.size}, file.name, {});
}

Fault sensorFault(const model::SpecFault &spec, const std::string &serialNumber)
{
    Fault fault;
    fault.function = spec.function;
    fault.command = spec.command;
    fault.parameter = spec.parameter;
    fault.sensor = serialNumber;
    fault.from = spec.from;
    fault.times = spec.times;
    fault.probability = spec.probability;
    fault.code = spec.code;
    fault.text = spec.text;
    fault.delay = spec.delay;
    return fault;
}

} // namespace

Simulator &Simulator::get()
{
    static auto *const simulator = new Simulator;
    return *simulator;
}

void Simulator::use(const std::shared_ptr<const model::Bench> &bench)
{
    if (bench->clock) {
        if (bench->clock->isVirtual)
            clock.useVirtual();
        else
            clock.useReal(bench->clock->speed);
    }
    clock.reset();
    lineSpeed.store(bench->lineSpeed);
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_bench = bench;
        m_loaded = true;
        m_loadFailure = {};
    }
    // Opening already uses the new bench: what is still open belongs to the old one.
    instances.forEach([this](Instance &instance) {
        instance.session.closeSensor(clock.now());
        instance.session.search.reset();
    });
    faults.reset(bench->seed);
    for (const auto &sensor : bench->sensors) {
        for (const model::SpecFault &fault : sensor->spec().faults)
            faults.add(sensorFault(fault, sensor->spec().serialNumber));
    }
    callLog.record(false);
    callLog.clear();
}

void Simulator::load(std::string_view text, const std::string &name, const std::string &folder)
{
    const std::lock_guard<std::mutex> lock(m_loading);
    use(read(text, name, folder));
}

void Simulator::loadFile(const std::string &path)
{
    const std::lock_guard<std::mutex> lock(m_loading);
    use(readFile(path));
}

void Simulator::loadBuiltIn()
{
    const std::lock_guard<std::mutex> lock(m_loading);
    use(readBuiltIn());
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
        use(path.empty() ? readBuiltIn() : readFile(path));
    } catch (const BenchError &error) {
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
