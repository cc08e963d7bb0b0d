// SPDX-License-Identifier: MIT
#include "answer.h"
#include "command.h"
#include "json.h"
#include "sensoroptions.h"

#include "shared/binaryanswers.h"

#include <SondixQt/namelookup.h>

#include <CLI/CLI.hpp>

using namespace SondixQt;
using namespace SondixApp;

namespace {

class GetCommand : public Command
{
public:
    explicit GetCommand(CLI::App &app)
    {
        m_sensor.addTo(app);
        app.add_option("COMMAND", m_command, "Reading command, such as Get_Info");
        app.add_option("ANSWER", m_answer, "Print only this value of the answer, such as SA_SerialNumber");
        app.add_flag("--json", m_json, "Print one JSON object");
        app.footer(app.get_footer() + "\nExample:\n  sondixqt get TX270@RS232,port=COM3 Get_Info SA_SerialNumber");
    }

    ExitCode run(Console &console, InterruptWatcher &interrupt) override
    {
        const QStringList words = m_sensor.wordsAfterSensor({m_command, m_answer});
        if (words.isEmpty())
            throw Failure{ExitCode::Usage, QStringLiteral("no command to send is given, such as Get_Info")};
        if (words.size() > 2)
            throw Failure{ExitCode::Usage, QStringLiteral("'%1' is one word too many").arg(words[2])};
        const QString command = Answer::checkedCommand(words[0]);
        if (!command.startsWith(QLatin1String("Get_")))
            throw Failure{ExitCode::Usage,
                          QStringLiteral("'%1' does not begin with Get_ and may change the sensor; 'set' and "
                                         "'exec' send such commands")
                              .arg(command)};
        const SensorAddress address = m_sensor.resolve(console, interrupt);
        const auto instance = openSensor(address);
        Answer::Parameters answer = Answer::ask(*instance, command, {});
        if (words.size() == 2 && !answer.contains(words[1]))
            answer.insert(askBinary(*instance, command, {}, {words[1]}));
        instance->close();
        if (words.size() == 2)
            answer = {{words[1], valueOf(answer, command, words[1])}};
        if (m_json)
            Answer::printJson(
                console, address,
                {{QStringLiteral("command"), command}, {QStringLiteral("answer"), Json::ofParameters(answer)}});
        else if (words.size() == 2)
            console.print(answer.first().type() == QVariant::ByteArray ? Answer::textOf(answer.first())
                                                                       : answer.first().toString());
        else
            Answer::print(console, answer);
        return ExitCode::Done;
    }

private:
    static QVariant valueOf(const Answer::Parameters &answer, const QString &command, const QString &name)
    {
        if (answer.contains(name))
            return answer.value(name);
        const QStringList near = similarNames(name, answer.keys());
        throw Failure{ExitCode::Refused,
                      QStringLiteral("the answer to %1 has no '%2'%3")
                          .arg(command, name,
                               near.isEmpty()
                                   ? QString()
                                   : QStringLiteral("; did you mean %1?").arg(near.join(QLatin1String(" or "))))};
    }

    SensorOptions m_sensor;
    std::string m_command;
    std::string m_answer;
    bool m_json = false;
};

} // namespace

std::unique_ptr<Command> makeGetCommand(CLI::App &app, CLI::App *&subcommand)
{
    subcommand = app.add_subcommand("get", "Send a reading command to a sensor and print its answer");
    return std::make_unique<GetCommand>(*subcommand);
}
