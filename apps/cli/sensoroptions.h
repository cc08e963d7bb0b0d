// SPDX-License-Identifier: MIT
#pragma once

#include "console.h"
#include "interruptwatcher.h"
#include "searchoptions.h"

#include <SondixQt/sensoraddress.h>
#include <SondixQt/sensorinstance.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

/// The options that name one sensor: by its address, by its interface parameters, or by serial number, model or group
/// for a search.
class SensorOptions
{
public:
    void addTo(CLI::App &app);

    /// The words of the command line after the sensor. If options name the sensor, the parsed argument SENSOR is really
    /// the first of these words and is put before \a following. Call this before resolve().
    QStringList wordsAfterSensor(const std::vector<std::string> &following);

    /// The sensor that the options name; searches for it if there are no interface parameters.
    /// Throws Failure if the options do not lead to exactly one sensor.
    SondixQt::SensorAddress resolve(Console &console, InterruptWatcher &interrupt) const;

private:
    SondixQt::SensorAddress direct() const;
    SondixQt::SensorAddress search(Console &console, InterruptWatcher &interrupt) const;
    bool hasInterfaceOptions() const;
    bool isNamedByOptions() const;

    std::string m_address;
    SearchOptions m_search;
    std::string m_serial;
    std::string m_interface;
    std::map<QString, std::string> m_values;
    std::vector<std::string> m_parameters;
};

/// Opens the sensor at \a address. Throws Failure if it cannot be opened. \a warning, which may be null, receives the
/// text of queries that failed although the sensor is open.
std::unique_ptr<SondixQt::SensorInstance> openSensor(const SondixQt::SensorAddress &address,
                                                     QString *warning = nullptr);
