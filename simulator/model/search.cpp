// SPDX-License-Identifier: MIT
#include "search.h"

#include "bench.h"
#include "models.h"

#include <algorithm>
#include <cstdlib>

namespace sondixsim::model {

namespace {

bool flag(const ParameterList &staged, const char *name, bool defaultValue)
{
    const Value *const value = staged.find(name);
    return value != nullptr ? toInt(*value).value_or(0) != 0 : defaultValue;
}

std::vector<std::int32_t> numbersIn(const std::string &text)
{
    std::vector<std::int32_t> numbers;
    std::size_t position = 0;
    while ((position = text.find_first_of("0123456789", position)) != std::string::npos) {
        std::size_t end = std::min(text.find_first_not_of("0123456789", position), text.size());
        numbers.push_back(static_cast<std::int32_t>(std::strtol(text.c_str() + position, nullptr, 10)));
        position = end;
    }
    return numbers;
}

} // namespace

struct Search::Request
{
    std::int32_t type = 0;
    bool similar = false;
    bool usedChannels = false;
    bool quickBus = false;
    bool onBus = false; ///< the wanted type is a bus sensor
    std::uint32_t handle = 0;
    std::vector<std::int32_t> baudrates; ///< empty: all
};

Search::Request Search::readRequest(const ParameterList &staged, std::int32_t handleType, std::uint32_t handle)
{
    Request request;
    const Value *const type = staged.find("IP_SensorType");
    request.type = type != nullptr ? toInt(*type).value_or(0) : handleType;
    request.similar = flag(staged, "IP_FindSimilarSensors", false);
    request.usedChannels = flag(staged, "IP_ForceScanUsedChannel", false);
    request.quickBus = flag(staged, "IP_QuickScanRS485", false);
    request.handle = handle;
    if (const Value *baudrates = staged.find("IP_Baudrates"))
        request.baudrates = numbersIn(toText(*baudrates));
    const SensorSpec *const model = modelOfBaseType(request.type % 10000);
    request.onBus = model != nullptr && model->bus;
    return request;
}

Search::Search(std::shared_ptr<const Bench> bench, const ParameterList &staged, std::int32_t handleType,
               std::uint32_t handle, double now)
    : m_bench(std::move(bench))
    , m_start(now)
{
    const Request request = readRequest(staged, handleType, handle);
    const SearchTimes &times = m_bench->searchTimes;
    constexpr std::size_t defaultBaudrates = 2; // tried when the search names none
    const std::size_t baudrates = request.baudrates.empty() ? defaultBaudrates : request.baudrates.size();
    const double bus = request.quickBus ? times.quickBus : times.bus;
    const struct
    {
        ScanHardware hardware;
        const char *parameter;
        double duration;
    } scans[] = {
        {ScanHardware::Tcpip, "IP_ScanHWTCPIP", times.tcpip},
        {ScanHardware::WinUsb, "IP_ScanHWWinUSB", times.winUsb},
        {ScanHardware::DriverXUsb, "IP_ScanHWDriverX_USB", times.driverXUsb},
        {ScanHardware::UsbIo, "IP_ScanHWUSBIO", times.usbIo},
        {ScanHardware::Rs232, "IP_ScanHWRS232",
         times.rs232 * static_cast<double>(baudrates) + (request.onBus ? bus : 0.0)},
        {ScanHardware::Xa100Usb, "IP_ScanHWXA100_USB", times.xa100Usb},
        {ScanHardware::Xa100, "IP_ScanHWXA100", times.xa100},
        {ScanHardware::Xa200, "IP_ScanHWXA200", times.xa200},
        {ScanHardware::Xa200Eth, "IP_ScanHWXA200_ETH", times.xa200Eth},
    };
    for (const auto &scan : scans) {
        if (flag(staged, scan.parameter, true))
            plan(scan.hardware, scan.duration, request);
    }
    update(now);
}

void Search::plan(ScanHardware hardware, double duration, const Request &request)
{
    std::vector<std::shared_ptr<Sensor>> there;
    for (const auto &sensor : m_bench->sensors) {
        if (sensor->spec().place.interface->hardware == hardware && isWanted(*sensor, request))
            there.push_back(sensor);
    }
    const double step = duration / static_cast<double>(there.size() + 1);
    for (std::size_t i = 0; i < there.size(); ++i)
        m_hits.push_back({m_duration + step * static_cast<double>(i + 1), there[i]});
    m_duration += duration;
}

bool Search::isWanted(Sensor &sensor, const Request &request) const
{
    const SensorSpec &spec = sensor.spec();
    const std::int32_t wantedBase = request.type % 10000;
    // A search for the family of a bus or converter finds all sensors behind it.
    const bool isFamily = spec.baseType() == wantedBase;
    const bool isBusNeighbour =
        wantedBase == 43 && spec.bus && spec.place.interface->hardware == ScanHardware::Rs232;
    constexpr std::int32_t converter = 34;
    const bool isSimilar = request.similar && spec.bus == request.onBus &&
                           (spec.baseType() == converter) == (wantedBase == converter);
    if (!isFamily && !isBusNeighbour && !isSimilar)
        return false;

    const ScanHardware hardware = spec.place.interface->hardware;
    const bool heldByOther = sensor.isHeldByOther(request.handle, m_start);
    if (hardware == ScanHardware::Xa200Eth && heldByOther)
        return request.usedChannels;
    const bool foundWhileHeld = hardware == ScanHardware::Tcpip || hardware == ScanHardware::WinUsb;
    if (!foundWhileHeld && heldByOther)
        return false;
    if (hardware == ScanHardware::Rs232 && !request.baudrates.empty()) {
        const std::int32_t own = sensor.line().baudrate();
        return std::find(request.baudrates.begin(), request.baudrates.end(), own) != request.baudrates.end();
    }
    return true;
}

void Search::update(double now)
{
    if (!m_running)
        return;
    const double elapsed = now - m_start;
    for (; m_next < m_hits.size() && m_hits[m_next].time <= elapsed; ++m_next) {
        if (m_hits[m_next].sensor->isPlugged(now))
            m_found.push_back(m_hits[m_next].sensor);
    }
    m_running = elapsed < m_duration;
    m_progress = m_running ? std::clamp(100.0 * elapsed / m_duration, 0.0, 99.999) : 100.0;
}

void Search::abort(double now)
{
    update(now);
    m_running = false;
}

} // namespace sondixsim::model
