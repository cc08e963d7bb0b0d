// SPDX-License-Identifier: MIT
#include "switchoff.h"

#include <CLI/CLI.hpp>

using namespace SondixQt;

namespace {

class TriggerCommand : public SwitchOffCommand
{
public:
    using SwitchOffCommand::SwitchOffCommand;

protected:
    QString subject() const override { return QStringLiteral("the trigger"); }

    State state(const SensorInstance &instance) const override
    {
        const bool on = instance.isTriggerEnabled();
        return {on ? QStringLiteral("the sensor waits for an external trigger")
                   : QStringLiteral("the sensor measures without a trigger"),
                {{QStringLiteral("trigger"), on}}};
    }

    ErrorCode switchOff(SensorInstance &instance, QString *errorText) const override
    {
        return instance.disableTrigger(errorText);
    }
};

} // namespace

std::unique_ptr<Command> makeTriggerCommand(CLI::App &app, CLI::App *&subcommand)
{
    subcommand = app.add_subcommand("trigger", "Print whether a sensor waits for a trigger, or switch that off");
    return std::make_unique<TriggerCommand>(*subcommand);
}
