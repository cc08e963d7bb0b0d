// SPDX-License-Identifier: MIT
#include "benchcommand.h"
#include "benchsession.h"
#include "texttable.h"

#include <CLI/CLI.hpp>

#include <QJsonArray>
#include <QJsonDocument>

namespace {

class BenchShowCommand : public Command
{
public:
    explicit BenchShowCommand(CLI::App &app)
    {
        m_session.addTo(app);
        app.add_flag("--json", m_json, "Print a JSON array");
        app.footer(
            "Without --bench and SONDIX_BENCH it is the bench of the running session, else the built-in one.\n\n"
            "Example:\n  sondixqt bench show --bench mybench.json");
    }

    ExitCode run(Console &console, InterruptWatcher &) override
    {
        m_session.attachIfAny();
        const QJsonObject answer = requestBench({{QStringLiteral("do"), QStringLiteral("sensors")}});
        const QJsonArray sensors = answer.value(QLatin1String("sensors")).toArray();
        if (m_json) {
            console.write(QJsonDocument(sensors).toJson());
            return ExitCode::Done;
        }
        TextTable table({QStringLiteral("SERIAL NO."), QStringLiteral("MODEL"), QStringLiteral("PLACE"),
                         QStringLiteral("STATE")});
        for (const QJsonValue sensor : sensors)
            table.addRow({sensor[QLatin1String("serialNumber")].toString(),
                          sensor[QLatin1String("model")].toString(), sensor[QLatin1String("place")].toString(),
                          state(sensor)});
        table.print(console);
        return ExitCode::Done;
    }

private:
    static QString state(const QJsonValue &sensor)
    {
        QStringList words;
        if (!sensor[QLatin1String("plugged")].toBool())
            words += QStringLiteral("unplugged");
        const QString program = sensor[QLatin1String("program")].toString();
        if (!program.isEmpty())
            words += QStringLiteral("open in %1").arg(program);
        else if (sensor[QLatin1String("inUse")].toBool())
            words += QStringLiteral("in use, as the bench file says");
        else if (sensor[QLatin1String("open")].toBool())
            words += QStringLiteral("open");
        if (sensor[QLatin1String("silent")].toBool())
            words += QStringLiteral("silent");
        return words.join(QStringLiteral(", "));
    }

    SessionOption m_session;
    bool m_json = false;
};

} // namespace

std::unique_ptr<Command> makeBenchShowCommand(CLI::App &bench, CLI::App *&subcommand)
{
    subcommand = bench.add_subcommand("show", "List the sensors of the bench and their state");
    return std::make_unique<BenchShowCommand>(*subcommand);
}
