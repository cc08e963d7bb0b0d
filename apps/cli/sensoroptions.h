// SPDX-License-Identifier: MIT
#pragma once

#include "console.h"
#include "interruptwatcher.h"
#include "searchoptions.h"

#include "shared/sensoraddress.h"

#include <SondixQt/sensorinstance.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

/// The options that name one sensor: by its address, by its interface parameters or by what a search
/// for it should look for.
class SensorOptions
{
public:
    void addTo(CLI::App &app);

    /// The words of the command line that follow the sensor: \a following, preceded by the word at the address's
    /// place where options name the sensor. To be called before resolve().
    QStringList wordsAfterSensor(const std::vector<std::string> &following);

    /// The sensor that the options name; searches for it where they do not say how to reach it.
    /// Throws Failure when they name none or not exactly one.
    SondixApp::SensorAddress resolve(Console &console, InterruptWatcher &interrupt) const;

private:
    SondixApp::SensorAddress direct() const;
    SondixApp::SensorAddress search(Console &console, InterruptWatcher &interrupt) const;
    bool saysHowToReach() const;
    bool isNamedByOptions() const;

    std::string m_address;
    SearchOptions m_search;
    std::string m_serial;
    std::string m_interface;
    std::map<QString, std::string> m_values;
    std::vector<std::string> m_parameters;
};

/// Opens the sensor at \a address. Throws Failure when it cannot be opened. \a warning tells what an open
/// sensor could not be asked; it may be null.
std::unique_ptr<SondixQt::SensorInstance> openSensor(const SondixApp::SensorAddress &address,
                                                     QString *warning = nullptr);
