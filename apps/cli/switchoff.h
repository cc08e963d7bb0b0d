// SPDX-License-Identifier: MIT
#pragma once

#include "command.h"
#include "sensoroptions.h"

#include <QJsonObject>

/// A subcommand that prints whether a function of a sensor is on, or switches it off.
class SwitchOffCommand : public Command
{
public:
    explicit SwitchOffCommand(CLI::App &app);

    ExitCode run(Console &console, InterruptWatcher &interrupt) override;

protected:
    /// The state as a sentence and as JSON.
    struct State
    {
        QString sentence;
        QJsonObject json;
    };

    /// The name of the function in messages.
    virtual QString subject() const = 0;
    virtual State state(const SondixQt::SensorInstance &instance) const = 0;
    virtual SondixQt::ErrorCode switchOff(SondixQt::SensorInstance &instance, QString *errorText) const = 0;

private:
    SensorOptions m_sensor;
    std::string m_word;
    bool m_json = false;
};
