// SPDX-License-Identifier: MIT
#pragma once

#include "value.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace sondixsim::model {

class Sensor;
struct Bench;
enum class ScanHardware;

/// Seconds of bench time for scanning each interface.
struct SearchTimes
{
    double tcpip = 0.35;
    double winUsb = 0.1;
    double driverXUsb = 0.05;
    double usbIo = 0.05;
    double rs232 = 0.15; ///< for each baud rate
    double xa100Usb = 0.1;
    double xa100 = 0.1;
    double xa200 = 0.1;
    double xa200Eth = 0.15;
    double bus = 0.4;      ///< in addition, when RS232 is scanned for a bus type
    double quickBus = 0.1; ///< the same with the quick scan
};

/// A running search. The sensors of an interface are found one by one, spread over the bench time of its scan.
class Search
{
public:
    /// \a staged are the parameters of the command; sensors that \a handle has open are found.
    Search(std::shared_ptr<const Bench> bench, const ParameterList &staged, std::int32_t handleType,
           std::uint32_t handle, double now);

    void update(double now);
    void abort(double now);
    double progress() const { return m_progress; } ///< 0 to 100, exactly 100 at the end
    const std::vector<std::shared_ptr<Sensor>> &found() const { return m_found; }
    const std::shared_ptr<const Bench> &bench() const { return m_bench; }

private:
    struct Hit
    {
        double time;
        std::shared_ptr<Sensor> sensor;
    };
    struct Request;
    static Request readRequest(const ParameterList &staged, std::int32_t handleType, std::uint32_t handle);
    /// Appends the sensors that the scan of one interface will find.
    void plan(ScanHardware hardware, double duration, const Request &request);
    bool isWanted(Sensor &sensor, const Request &request) const;

    std::shared_ptr<const Bench> m_bench;
    std::vector<Hit> m_hits; ///< in the order of time, from the start
    std::size_t m_next = 0;
    std::vector<std::shared_ptr<Sensor>> m_found;
    double m_start = 0.0;
    double m_duration = 0.0;
    double m_progress = 0.0;
    bool m_running = true;
};

} // namespace sondixsim::model
