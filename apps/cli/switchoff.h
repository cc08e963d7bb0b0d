// SPDX-License-Identifier: MIT
#pragma once

#include "command.h"
#include "sensoroptions.h"

#include <QJsonObject>

/// A subcommand that tells whether something of a sensor is on and, on demand, switches it off.
class SwitchOffCommand : public Command
{
public:
    explicit SwitchOffCommand(CLI::App &app);

    ExitCode run(Console &console, InterruptWatcher &interrupt) override;

protected:
    /// What is told, as a sentence and as JSON.
    struct State
    {
        QString sentence;
        QJsonObject json;
    };

    /// What can be on, in words.
    virtual QString subject() const = 0;
    virtual State state(const SondixQt::SensorInstance &instance) const = 0;
    virtual SondixQt::ErrorCode switchOff(SondixQt::SensorInstance &instance, QString *errorText) const = 0;

private:
    SensorOptions m_sensor;
    std::string m_word;
    bool m_json = false;
};
