// SPDX-License-Identifier: MIT
#include "answer.h"
#include "command.h"
#include "sensoroptions.h"
#include "texttable.h"

#include <SondixQt/namelookup.h>

#include <CLI/CLI.hpp>

#include <QJsonArray>

#include <optional>

using namespace SondixQt;

namespace {

using Modes = QVector<QPair<QString, int>>;

class ModeCommand : public Command
{
public:
    explicit ModeCommand(CLI::App &app)
    {
        m_sensor.addTo(app);
        app.add_option("MODE", m_words, "Switch to this measuring mode, by name or number; changes the sensor");
        app.add_flag("--json", m_json, "Print one JSON object");
        app.footer(app.get_footer() +
                   "\nExample:\n  sondixqt mode CC430@TCP/IP,address=169.254.168.150 Thickness");
    }

    ExitCode run(Console &console, InterruptWatcher &interrupt) override
    {
        const QString wanted = m_sensor.wordsAfterSensor(m_words).join(QLatin1Char(' '));
        const SensorAddress address = m_sensor.resolve(console, interrupt);
        const auto instance = openSensor(address);
        const Modes modes = instance->getAvailableMeasModi();
        if (!wanted.isEmpty())
            switchTo(*instance, numberOf(modes, wanted, address.type));
        const std::optional<int> current = modes.isEmpty() ? std::nullopt : currentMode(console, *instance);
        instance->close();
        if (modes.isEmpty() && wanted.isEmpty())
            console.note(
                QStringLiteral("%1 has no measuring modes to choose from").arg(sensorName(address.type, true)));
        if (m_json)
            printJson(console, address, modes, current);
        else
            printText(console, modes, current);
        return ExitCode::Done;
    }

private:
    // If the modes of the model are not known, any number is accepted; the sensor may refuse it.
    static int numberOf(const Modes &modes, const QString &wanted, SensorType type)
    {
        bool isNumber = false;
        const int number = wanted.toInt(&isNumber);
        QStringList names;
        for (const auto &[name, value] : modes) {
            if (name.compare(wanted, Qt::CaseInsensitive) == 0 || (isNumber && value == number))
                return value;
            names += name;
        }
        if (modes.isEmpty() && isNumber)
            return number;
        throw Failure{
            ExitCode::Usage,
            unknownNameText(QStringLiteral("measuring mode"), wanted, names,
                            names.isEmpty()
                                ? QStringLiteral("%1 has no named modes").arg(sensorName(type, true))
                                : QStringLiteral("the modes are %1").arg(names.join(QLatin1String(", "))))};
    }

    static void switchTo(SensorInstance &instance, int mode)
    {
        // Not setMeasurementMode(): for models that are stopped before each command, the stop would overwrite the
        // number.
        QString text;
        Answer::check(instance.sendCommand(QStringLiteral("Set_MeasureMode"),
                                           {{QStringLiteral("SP_MeasureMode"), mode}}, &text),
                      QStringLiteral("the measuring mode %1").arg(mode), text);
    }

    static std::optional<int> currentMode(Console &console, SensorInstance &instance)
    {
        int mode = 0;
        QString text;
        if (instance.sendCommandGetInt(QStringLiteral("Get_MeasureMode"), QStringLiteral("SA_MeasureMode"), mode,
                                       &text) == NoError)
            return mode;
        console.note(QStringLiteral("the sensor does not report its measuring mode: %1").arg(text));
        return std::nullopt;
    }

    static void printJson(Console &console, const SensorAddress &address, const Modes &modes,
                          const std::optional<int> &current)
    {
        QJsonArray array;
        for (const auto &[name, number] : modes)
            array.append(QJsonObject{{QStringLiteral("number"), number}, {QStringLiteral("name"), name}});
        Answer::printJson(
            console, address,
            {{QStringLiteral("modes"), array},
             {QStringLiteral("current"), current ? QJsonValue(*current) : QJsonValue(QJsonValue::Null)}});
    }

    static void printText(Console &console, const Modes &modes, const std::optional<int> &current)
    {
        TextTable table({});
        for (const auto &[name, number] : modes)
            table.addRow(
                {QString::number(number), name, current == number ? QStringLiteral("current") : QString()});
        table.print(console);
    }

    SensorOptions m_sensor;
    std::vector<std::string> m_words;
    bool m_json = false;
};

} // namespace

std::unique_ptr<Command> makeModeCommand(CLI::App &app, CLI::App *&subcommand)
{
    subcommand = app.add_subcommand("mode", "List the measuring modes of a sensor or switch to one");
    return std::make_unique<ModeCommand>(*subcommand);
}
