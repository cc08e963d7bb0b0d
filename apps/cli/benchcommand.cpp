// SPDX-License-Identifier: MIT
#include "benchcommand.h"

#include "subcommands.h"

#include <CLI/CLI.hpp>

namespace {

class BenchCommand : public Command
{
public:
    explicit BenchCommand(CLI::App &app)
        : m_subcommands(app,
                        {makeBenchStartCommand, makeBenchListCommand, makeBenchShowCommand, makeBenchStopCommand,
                         makeBenchUnplugCommand, makeBenchPlugCommand, makeBenchFaultCommand,
                         makeBenchClearCommand, makeBenchTriggerCommand, makeBenchSetCommand, makeBenchStepCommand,
                         makeBenchLogCommand, makeBenchCheckCommand, makeBenchRecordCommand,
                         makeBenchReplayCommand, makeBenchFromCommand, makeBenchSchemaCommand})
    {
        app.footer(app.get_footer() + "\nExample:\n  sondixqt bench show");
    }

    const Subcommands *subcommands() const override { return &m_subcommands; }

    ExitCode run(Console &console, InterruptWatcher &interrupt) override
    {
        return m_subcommands.chosen()->run(console, interrupt);
    }

private:
    Subcommands m_subcommands;
};

} // namespace

std::unique_ptr<Command> makeBenchCommand(CLI::App &app, CLI::App *&subcommand)
{
    subcommand = app.add_subcommand("bench", "Work with the simulated bench");
    return std::make_unique<BenchCommand>(*subcommand);
}
