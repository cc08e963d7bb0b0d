// SPDX-License-Identifier: MIT
#include "answer.h"
#include "command.h"
#include "json.h"
#include "sensoroptions.h"
#include "texttable.h"

#include <CLI/CLI.hpp>

#include <QJsonArray>
#include <QJsonDocument>

using namespace SondixQt;

namespace {

struct Description
{
    SensorAddress address;
    QVector<QMap<QString, QVariant>> sensors;
    TransmittedDataInfo frame;
    double rateKhz = 0.0;
};

QString range(double min, double max, const QString &unit)
{
    constexpr int digits = 10;
    return QStringLiteral("%1 .. %2 %3")
        .arg(QString::number(min, 'g', digits), QString::number(max, 'g', digits), unit)
        .trimmed();
}

class InfoCommand : public Command
{
public:
    explicit InfoCommand(CLI::App &app)
    {
        m_sensor.addTo(app);
        app.add_flag("--json", m_json, "Print one JSON object");
        app.footer(app.get_footer() + "\nExample:\n  sondixqt info TX270@RS232,port=COM3");
    }

    ExitCode run(Console &console, InterruptWatcher &interrupt) override
    {
        Description description;
        description.address = m_sensor.resolve(console, interrupt);
        QString warning;
        const auto instance = openSensor(description.address, &warning);
        if (!warning.isEmpty())
            console.note(QStringLiteral("not all of it could be read: %1").arg(warning));
        describe(*instance, description);
        instance->close();
        if (m_json)
            printJson(console, description);
        else
            printText(console, description);
        return ExitCode::Done;
    }

private:
    static void describe(SensorInstance &instance, Description &description)
    {
        for (const Answer::Parameters &parameters : instance.getInfoParameters())
            description.sensors += Answer::withoutInternals(parameters);
        QString text;
        if (instance.transmittedDataInfo(description.frame, &text) != NoError)
            throw Failure{ExitCode::Refused,
                          QStringLiteral("the sensor does not describe its data: %1").arg(text)};
        if (instance.getSampleRateInKhz(&description.rateKhz, &text) != NoError)
            throw Failure{ExitCode::Refused,
                          QStringLiteral("the sensor does not report its sample rate: %1").arg(text)};
    }

    static void printJson(Console &console, const Description &description)
    {
        QJsonObject object = Json::ofModel(description.address.type);
        object.insert(QStringLiteral("address"), description.address.toString());
        object.insert(QStringLiteral("interface"), Json::ofParameters(description.address.parameters));
        QJsonArray sensors;
        for (const auto &parameters : description.sensors)
            sensors.append(Json::ofParameters(parameters));
        object.insert(QStringLiteral("info"), sensors);
        object.insert(QStringLiteral("frame"), Json::ofFrame(description.frame, description.rateKhz));
        console.write(QJsonDocument(object).toJson());
    }

    static void printText(Console &console, const Description &description)
    {
        const SensorType type = description.address.type;
        console.print(console.styled(sensorName(type), Console::Bold) + QStringLiteral("  ") +
                      description.address.toString());
        printParameters(console, QStringLiteral("Interface"), description.address.parameters);
        for (int i = 0; i < description.sensors.size(); ++i)
            printParameters(console,
                            description.sensors.size() == 1 ? QStringLiteral("Sensor")
                                                            : QStringLiteral("Sensor %1").arg(i + 1),
                            description.sensors[i]);
        printFrame(console, description);
    }

    static void printParameters(Console &console, const QString &title, const QMap<QString, QVariant> &parameters)
    {
        console.print(QString());
        console.print(console.styled(title, Console::Bold));
        Answer::print(console, parameters, 2);
    }

    static void printFrame(Console &console, const Description &description)
    {
        const TransmittedDataInfo &frame = description.frame;
        console.print(QString());
        console.print(console.styled(QStringLiteral("Data frame"), Console::Bold));
        console.print(QStringLiteral("  %1 (at most %2), sample rate %3")
                          .arg(frame.valuesPerFrame == 1 ? QStringLiteral("1 value")
                                                         : QStringLiteral("%1 values").arg(frame.valuesPerFrame))
                          .arg(frame.maxValuesPerFrame)
                          .arg(description.rateKhz > 0.0
                                   ? QStringLiteral("%1 kHz").arg(description.rateKhz, 0, 'g', 6)
                                   : QStringLiteral("not known")));
        TextTable table({QStringLiteral("#"), QStringLiteral("SIGNAL"), QStringLiteral("RANGE"),
                         QStringLiteral("RAW SIGNAL"), QStringLiteral("RAW RANGE"), QString()});
        for (const SignalInfo &info : frame.signalList())
            table.addRow({QString::number(info.index), info.scaledName,
                          range(info.scaledRangeMin, info.scaledRangeMax, info.scaledUnit), info.rawName,
                          range(info.rawRangeMin, info.rawRangeMax, info.rawUnit),
                          info.majorSignal ? QStringLiteral("main value") : QString()});
        table.print(console, 2);
    }

    SensorOptions m_sensor;
    bool m_json = false;
};

} // namespace

std::unique_ptr<Command> makeInfoCommand(CLI::App &app, CLI::App *&subcommand)
{
    subcommand = app.add_subcommand("info", "Open a sensor and print its identity and the data that it sends");
    return std::make_unique<InfoCommand>(*subcommand);
}
