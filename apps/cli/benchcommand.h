// SPDX-License-Identifier: MIT
#pragma once

#include "command.h"

/// \name The subcommands of "bench"
/// Each function adds a subcommand to \a bench.
/// \{
std::unique_ptr<Command> makeBenchCheckCommand(CLI::App &bench, CLI::App *&subcommand);
std::unique_ptr<Command> makeBenchFromCommand(CLI::App &bench, CLI::App *&subcommand);
std::unique_ptr<Command> makeBenchRecordCommand(CLI::App &bench, CLI::App *&subcommand);
std::unique_ptr<Command> makeBenchReplayCommand(CLI::App &bench, CLI::App *&subcommand);
std::unique_ptr<Command> makeBenchStartCommand(CLI::App &bench, CLI::App *&subcommand);
std::unique_ptr<Command> makeBenchListCommand(CLI::App &bench, CLI::App *&subcommand);
std::unique_ptr<Command> makeBenchShowCommand(CLI::App &bench, CLI::App *&subcommand);
std::unique_ptr<Command> makeBenchStopCommand(CLI::App &bench, CLI::App *&subcommand);
std::unique_ptr<Command> makeBenchUnplugCommand(CLI::App &bench, CLI::App *&subcommand);
std::unique_ptr<Command> makeBenchPlugCommand(CLI::App &bench, CLI::App *&subcommand);
std::unique_ptr<Command> makeBenchFaultCommand(CLI::App &bench, CLI::App *&subcommand);
std::unique_ptr<Command> makeBenchClearCommand(CLI::App &bench, CLI::App *&subcommand);
std::unique_ptr<Command> makeBenchTriggerCommand(CLI::App &bench, CLI::App *&subcommand);
std::unique_ptr<Command> makeBenchSetCommand(CLI::App &bench, CLI::App *&subcommand);
std::unique_ptr<Command> makeBenchStepCommand(CLI::App &bench, CLI::App *&subcommand);
std::unique_ptr<Command> makeBenchLogCommand(CLI::App &bench, CLI::App *&subcommand);
std::unique_ptr<Command> makeBenchSchemaCommand(CLI::App &bench, CLI::App *&subcommand);
/// \}
