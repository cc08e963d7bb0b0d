// SPDX-License-Identifier: MIT
#include "answer.h"
#include "command.h"
#include "json.h"
#include "sensoroptions.h"

#include <SondixQt/sensorfeatures.h>

#include <CLI/CLI.hpp>

#include <QJsonArray>

using namespace SondixQt;

namespace {

class ParamsCommand : public Command
{
public:
    explicit ParamsCommand(CLI::App &app)
    {
        m_sensor.addTo(app);
        app.add_flag("--json", m_json, "Print one JSON object");
        app.footer(app.get_footer() + "\nExample:\n  sondixqt params TX270@RS232,port=COM3");
    }

    ExitCode run(Console &console, InterruptWatcher &interrupt) override
    {
        const SensorAddress address = m_sensor.resolve(console, interrupt);
        const auto instance = openSensor(address);
        const bool complete = getSensorFeatures().value(instance->sensorType()).hasGetAllParameters;
        QVector<Answer::Parameters> sensors;
        if (complete)
            sensors += Answer::ask(*instance, QStringLiteral("Get_AllParameters"), {});
        else
            for (const Answer::Parameters &parameters : instance->getInfoParameters())
                sensors += Answer::withoutInternals(parameters);
        instance->close();
        if (!complete)
            console.note(QStringLiteral("%1 cannot report all its parameters at once; these are the ones that it "
                                        "reported when it was opened")
                             .arg(sensorName(address.type, true)));
        if (m_json)
            printJson(console, address, sensors, complete);
        else
            printText(console, sensors);
        return ExitCode::Done;
    }

private:
    static void printJson(Console &console, const SensorAddress &address,
                          const QVector<Answer::Parameters> &sensors, bool complete)
    {
        QJsonArray array;
        for (const Answer::Parameters &parameters : sensors)
            array.append(Json::ofParameters(parameters));
        Answer::printJson(console, address,
                          {{QStringLiteral("complete"), complete}, {QStringLiteral("parameters"), array}});
    }

    static void printText(Console &console, const QVector<Answer::Parameters> &sensors)
    {
        for (int i = 0; i < sensors.size(); ++i) {
            if (sensors.size() > 1)
                console.print(console.styled(QStringLiteral("Sensor %1").arg(i + 1), Console::Bold));
            Answer::print(console, sensors[i], sensors.size() > 1 ? 2 : 0);
        }
    }

    SensorOptions m_sensor;
    bool m_json = false;
};

} // namespace

std::unique_ptr<Command> makeParamsCommand(CLI::App &app, CLI::App *&subcommand)
{
    subcommand = app.add_subcommand("params", "Print all parameters of a sensor");
    return std::make_unique<ParamsCommand>(*subcommand);
}
