// SPDX-License-Identifier: MIT
#include "switchoff.h"

#include <CLI/CLI.hpp>

using namespace SondixQt;

namespace {

class SyncCommand : public SwitchOffCommand
{
public:
    using SwitchOffCommand::SwitchOffCommand;

protected:
    QString subject() const override { return QStringLiteral("the synchronisation"); }

    State state(const SensorInstance &instance) const override
    {
        const bool on = instance.isSyncEnabled();
        return {on ? QStringLiteral("the sensor is synchronised with others")
                   : QStringLiteral("the sensor measures on its own"),
                {{QStringLiteral("sync"), on},
                 {QStringLiteral("sharedWithTrigger"), instance.isSyncSharedWithTrigger()}}};
    }

    ErrorCode switchOff(SensorInstance &instance, QString *errorText) const override
    {
        return instance.disableSync(errorText);
    }
};

} // namespace

std::unique_ptr<Command> makeSyncCommand(CLI::App &app, CLI::App *&subcommand)
{
    subcommand =
        app.add_subcommand("sync", "Print whether a sensor is synchronised with others, or switch that off");
    return std::make_unique<SyncCommand>(*subcommand);
}
