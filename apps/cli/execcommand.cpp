// SPDX-License-Identifier: MIT
#include "answer.h"
#include "command.h"
#include "json.h"
#include "sensoroptions.h"

#include <CLI/CLI.hpp>

using namespace SondixQt;

namespace {

class ExecCommand : public Command
{
public:
    explicit ExecCommand(CLI::App &app)
    {
        m_sensor.addTo(app);
        app.add_option("COMMAND", m_command, "Any command of the sensor, such as Clear_Buffers");
        app.add_option("PARAMETER=VALUE", m_words, "Parameters of the command; values are written as for 'set'");
        app.add_flag("--json", m_json, "Print one JSON object");
        app.footer(app.get_footer() +
                   "\nThe command may change the sensor; it is sent unchecked.\n"
                   "Example:\n  sondixqt exec TX270@RS232,port=COM3 Update_TriggerMode SP_TriggerMode=0");
    }

    ExitCode run(Console &console, InterruptWatcher &interrupt) override
    {
        std::vector<std::string> given{m_command};
        given.insert(given.end(), m_words.begin(), m_words.end());
        const QStringList words = m_sensor.wordsAfterSensor(given);
        if (words.isEmpty())
            throw Failure{ExitCode::Usage, QStringLiteral("no command to send is given, such as Clear_Buffers")};
        const QString command = Answer::checkedCommand(words.first());
        const Answer::Parameters parameters = Answer::checkedParameters(words.mid(1));
        const SensorAddress address = m_sensor.resolve(console, interrupt);
        const auto instance = openSensor(address);
        const Answer::Parameters answer = Answer::ask(*instance, command, parameters);
        instance->close();
        if (m_json)
            Answer::printJson(console, address,
                              {{QStringLiteral("command"), command},
                               {QStringLiteral("parameters"), Json::ofParameters(parameters)},
                               {QStringLiteral("answer"), Json::ofParameters(answer)}});
        else
            Answer::print(console, answer);
        return ExitCode::Done;
    }

private:
    SensorOptions m_sensor;
    std::string m_command;
    std::vector<std::string> m_words;
    bool m_json = false;
};

} // namespace

std::unique_ptr<Command> makeExecCommand(CLI::App &app, CLI::App *&subcommand)
{
    subcommand = app.add_subcommand("exec", "Send any command to a sensor and print its answer");
    return std::make_unique<ExecCommand>(*subcommand);
}
