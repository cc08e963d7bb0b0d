// SPDX-License-Identifier: MIT
#include "command.h"
#include "json.h"
#include "texttable.h"
#include "validators.h"

#include <SondixQt/namelookup.h>
#include <SondixQt/sensorfeatures.h>

#include <CLI/CLI.hpp>

#include <QJsonArray>
#include <QJsonDocument>

using namespace SondixQt;

namespace {

class ModelsCommand : public Command
{
public:
    explicit ModelsCommand(CLI::App &app)
    {
        app.add_option("-g,--group", m_group, "List only the models of this group, by name or number")
            ->check(Validators::notEmpty());
        app.add_flag("-a,--all", m_all, "Also list the hidden variants");
        app.add_flag("--json", m_json, "Print a JSON array of objects");
        app.footer("Example:\n  sondixqt models --group Tavrin");
    }

    ExitCode run(Console &console, InterruptWatcher &) override
    {
        SensorGroup group = AllGroups;
        if (!m_group.empty()) {
            QString problem;
            const auto named = findSensorGroup(QString::fromStdString(m_group), &problem);
            if (!named)
                throw Failure{ExitCode::Usage, problem};
            group = *named;
        }
        const QList<SensorType> types = sensorsInGroup(group, m_all);
        if (m_json)
            printJson(console, types);
        else
            printTable(console, types);
        return types.isEmpty() ? ExitCode::NothingFound : ExitCode::Done;
    }

private:
    static void printJson(Console &console, const QList<SensorType> &types)
    {
        QJsonArray models;
        for (const SensorType type : types)
            models.append(Json::ofModel(type));
        console.write(QJsonDocument(models).toJson());
    }

    static void printTable(Console &console, const QList<SensorType> &types)
    {
        TextTable table(
            {QStringLiteral("MODEL"), QStringLiteral("NUMBER"), QStringLiteral("NAME"), QStringLiteral("GROUPS")});
        for (const SensorType type : types) {
            QStringList groups;
            for (const QJsonValue group : Json::ofModel(type).value(QStringLiteral("groups")).toArray())
                groups += group.toString();
            table.addRow({sensorName(type, true), QString::number(type), sensorName(type),
                          groups.join(QStringLiteral(", "))});
        }
        table.print(console);
    }

    std::string m_group;
    bool m_all = false;
    bool m_json = false;
};

} // namespace

std::unique_ptr<Command> makeModelsCommand(CLI::App &app, CLI::App *&subcommand)
{
    subcommand = app.add_subcommand("models", "List the models that the library knows");
    return std::make_unique<ModelsCommand>(*subcommand);
}
