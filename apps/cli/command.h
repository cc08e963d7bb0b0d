// SPDX-License-Identifier: MIT
#pragma once

#include "console.h"
#include "exitcode.h"
#include "interruptwatcher.h"

#include <memory>

namespace CLI {
class App;
}

class Subcommands;

/// A subcommand. Its constructor adds its options to the parser; run() uses the parsed values.
class Command
{
public:
    Command() = default;
    virtual ~Command() = default;
    Command(const Command &) = delete;
    Command &operator=(const Command &) = delete;

    virtual ExitCode run(Console &console, InterruptWatcher &interrupt) = 0;
    /// The subcommands that it has itself; null if it has none.
    virtual const Subcommands *subcommands() const { return nullptr; }
};

/// \name The subcommands
/// Each function adds a subcommand to \a app.
/// \{
std::unique_ptr<Command> makeModelsCommand(CLI::App &app, CLI::App *&subcommand);
std::unique_ptr<Command> makeFindCommand(CLI::App &app, CLI::App *&subcommand);
std::unique_ptr<Command> makeInfoCommand(CLI::App &app, CLI::App *&subcommand);
std::unique_ptr<Command> makeReadCommand(CLI::App &app, CLI::App *&subcommand);
std::unique_ptr<Command> makeRecordCommand(CLI::App &app, CLI::App *&subcommand);
std::unique_ptr<Command> makeParamsCommand(CLI::App &app, CLI::App *&subcommand);
std::unique_ptr<Command> makeGetCommand(CLI::App &app, CLI::App *&subcommand);
std::unique_ptr<Command> makeSetCommand(CLI::App &app, CLI::App *&subcommand);
std::unique_ptr<Command> makeExecCommand(CLI::App &app, CLI::App *&subcommand);
std::unique_ptr<Command> makeModeCommand(CLI::App &app, CLI::App *&subcommand);
std::unique_ptr<Command> makeTriggerCommand(CLI::App &app, CLI::App *&subcommand);
std::unique_ptr<Command> makeSyncCommand(CLI::App &app, CLI::App *&subcommand);
std::unique_ptr<Command> makeVideoCommand(CLI::App &app, CLI::App *&subcommand);
std::unique_ptr<Command> makeTunnelCommand(CLI::App &app, CLI::App *&subcommand);
std::unique_ptr<Command> makeBenchCommand(CLI::App &app, CLI::App *&subcommand);
/// \}
