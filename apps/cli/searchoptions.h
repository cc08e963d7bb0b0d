// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sensortypes.h>

#include <QString>

#include <string>
#include <vector>

namespace CLI {
class App;
}

/// What to search for, and where.
struct SearchRequest
{
    SondixQt::SensorType type = SondixQt::NoSensor; ///< NoSensor: the models of group
    SondixQt::SensorGroup group = SondixQt::AllGroups;
    SondixQt::SensorInterfaces interfaces;
    QString baudrates;     ///< comma-separated list; empty: those of the sensor-access library
    bool thorough = false; ///< search each family separately
    bool similar = false;  ///< also report sensors of other models
    bool quick = true;
};

/// The options that say what to search for and where; shared by every subcommand that searches.
class SearchOptions
{
public:
    /// Adds the options that select the models.
    void addModelOptions(CLI::App &app);
    /// Adds the options that select the interfaces and the kind of search.
    void addScanOptions(CLI::App &app);

    /// The requested search. Throws Failure if an option has an unknown name.
    SearchRequest request() const;

    /// The model given with --type, or NoSensor. Throws Failure if it is unknown.
    SondixQt::SensorType type() const;
    bool hasGroup() const { return !m_group.empty(); }

private:
    std::string m_type;
    std::string m_group;
    std::vector<std::string> m_interfaces;
    std::string m_baudrates;
    bool m_similar = false;
    bool m_thorough = false;
    bool m_quick = true;
};
