// SPDX-License-Identifier: MIT
#include "answer.h"
#include "command.h"
#include "json.h"
#include "sensoroptions.h"

#include <CLI/CLI.hpp>

using namespace SondixQt;

namespace {

class SetCommand : public Command
{
public:
    explicit SetCommand(CLI::App &app)
    {
        m_sensor.addTo(app);
        app.add_option("COMMAND", m_command, "Writing command, such as Set_Samplerate");
        app.add_option("PARAMETER=VALUE", m_words, "Values to write, such as SP_Measrate=2.5");
        app.add_flag("--json", m_json, "Print one JSON object");
        app.footer(
            app.get_footer() +
            "\nThe command changes the sensor. Whether the change survives a power cycle depends on the sensor.\n"
            "A value that looks like an integer or a decimal number is sent as one, anything else as text. "
            "Double\n"
            "quotes, which must be protected from the shell, always make it text: 'SP_Name=\"12\"'.\n"
            "Example:\n  sondixqt set TX270@RS232,port=COM3 Set_Samplerate SP_Measrate=2.5");
    }

    ExitCode run(Console &console, InterruptWatcher &interrupt) override
    {
        std::vector<std::string> given{m_command};
        given.insert(given.end(), m_words.begin(), m_words.end());
        const QStringList words = m_sensor.wordsAfterSensor(given);
        if (words.isEmpty())
            throw Failure{ExitCode::Usage, QStringLiteral("no command to send is given, such as Set_Samplerate")};
        const QString command = Answer::checkedCommand(words.first());
        const Answer::Parameters parameters = Answer::checkedParameters(words.mid(1));
        if (parameters.isEmpty())
            throw Failure{ExitCode::Usage,
                          QStringLiteral("nothing to set is given; 'exec' sends a command without "
                                         "parameters")};
        const SensorAddress address = m_sensor.resolve(console, interrupt);
        const auto instance = openSensor(address);
        QString text;
        Answer::check(instance->sendCommand(command, parameters, &text), command, text);
        instance->close();
        if (m_json)
            Answer::printJson(console, address,
                              {{QStringLiteral("command"), command},
                               {QStringLiteral("parameters"), Json::ofParameters(parameters)}});
        return ExitCode::Done;
    }

private:
    SensorOptions m_sensor;
    std::string m_command;
    std::vector<std::string> m_words;
    bool m_json = false;
};

} // namespace

std::unique_ptr<Command> makeSetCommand(CLI::App &app, CLI::App *&subcommand)
{
    subcommand = app.add_subcommand("set", "Change settings of a sensor with a command");
    return std::make_unique<SetCommand>(*subcommand);
}
