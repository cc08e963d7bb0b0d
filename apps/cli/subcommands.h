// SPDX-License-Identifier: MIT
#pragma once

#include "command.h"

#include <initializer_list>
#include <string>
#include <vector>

/// The subcommands of a parser: one of them must be given. A subcommand may have subcommands itself.
class Subcommands
{
public:
    /// Adds a subcommand and returns what runs it.
    using Maker = std::unique_ptr<Command> (*)(CLI::App &app, CLI::App *&subcommand);

    Subcommands(CLI::App &app, std::initializer_list<Maker> makers);

    /// What is wrong with the parsed command line; empty if a subcommand was chosen. \a extras are the arguments that
    /// belong to no option.
    QString problem(const std::vector<std::string> &extras) const;
    /// The subcommand that was given, if problem() is empty.
    Command *chosen() const;

private:
    struct Entry
    {
        CLI::App *app = nullptr;
        std::unique_ptr<Command> command;
    };
    const Entry *given() const;

    CLI::App &m_app;
    std::vector<Entry> m_entries;
};
