// SPDX-License-Identifier: MIT
#pragma once

#include "shared/searchrun.h"

#include <string>
#include <vector>

namespace CLI {
class App;
}

/// The options that say what to search for and where; shared by every subcommand that searches.
class SearchOptions
{
public:
    /// Adds which models to search for.
    void addModelOptions(CLI::App &app);
    /// Adds where and how to search.
    void addScanOptions(CLI::App &app);

    /// The search that the options ask for. Throws Failure for a name that there is not.
    SondixApp::SearchRun::Plan plan() const;

    /// The model named with --type, NoSensor when there is none. Throws Failure as plan() does.
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
