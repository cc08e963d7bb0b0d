// SPDX-License-Identifier: MIT
#include "command.h"
#include "json.h"
#include "searchloop.h"
#include "searchoptions.h"
#include "validators.h"

#include <SondixQt/sensoraddress.h>

#include <CLI/CLI.hpp>

#include <cmath>

using namespace SondixQt;

namespace {

QString row(const QString &iface, const QString &place, const QString &type, const QString &serialNumber,
            const QString &address)
{
    return QStringLiteral("%1 %2 %3 %4 %5")
        .arg(iface, -10)
        .arg(place, -24)
        .arg(type, -14)
        .arg(serialNumber, -12)
        .arg(address);
}

class FindCommand : public Command
{
public:
    explicit FindCommand(CLI::App &app)
    {
        m_options.addModelOptions(app);
        m_options.addScanOptions(app);
        constexpr double longestTimeout = 24 * 3600;
        app.add_option("--timeout", m_timeout, "Give up after this many seconds, at most a day")
            ->check(Validators::seconds(longestTimeout));
        app.add_flag("--json", m_json, "Print one JSON object per line, as soon as a sensor is found");
        app.footer(
            "Each sensor is printed as soon as it is found, with the address that the other commands take.\n\n"
            "Example:\n  sondixqt find --group Tavrin --interface RS232 --baudrates 115200,921600");
    }

    ExitCode run(Console &console, InterruptWatcher &interrupt) override
    {
        const SearchRequest request = m_options.request();
        if (!m_json && console.stdoutIsTerminal())
            console.print(
                console.styled(row(QStringLiteral("INTERFACE"), QStringLiteral("PLACE"), QStringLiteral("MODEL"),
                                   QStringLiteral("SERIAL NO."), QStringLiteral("ADDRESS")),
                               Console::Bold));
        int found = 0;
        const auto onFound = [&](const SensorInfo &info) {
            ++found;
            return announce(console, info);
        };
        const std::chrono::milliseconds limit(static_cast<qint64>(std::ceil(m_timeout * 1000.0)));
        const SearchOutcome outcome = runSearch(request, console, interrupt, onFound, limit);
        return conclude(console, request, outcome, found);
    }

private:
    bool announce(Console &console, const SensorInfo &info) const
    {
        if (m_json)
            return console.write(Json::line(Json::ofFoundSensor(info))) && console.flush();
        const SensorAddress everything{info.sensorType(), info.getParameters({})};
        return console.print(row(interfaceName(info.interfaceType()), everything.place(),
                                 sensorName(info.sensorType(), true),
                                 info.getParameter(InterfaceParameter::SerialNumber).toString(),
                                 SensorAddress::of(info).toString())) &&
               console.flush();
    }

    static ExitCode conclude(Console &console, const SearchRequest &request, const SearchOutcome &outcome,
                             int found)
    {
        const QString count =
            found == 1 ? QStringLiteral("1 sensor found") : QStringLiteral("%1 sensors found").arg(found);
        if (outcome.end == SearchOutcome::Refused)
            throw Failure{ExitCode::Failed, outcome.problem};
        if (InterruptWatcher::isInterrupted())
            throw Failure{ExitCode::Interrupted, QStringLiteral("interrupted, %1 so far").arg(count)};
        if (outcome.end == SearchOutcome::TimedOut)
            throw Failure{ExitCode::TimedOut, QStringLiteral("%1, %2 so far").arg(outcome.problem, count)};
        if (!outcome.problem.isEmpty())
            console.note(outcome.problem);
        const bool isCombined = request.type == NoSensor && !request.thorough && !request.similar &&
                                sensorsInGroup(request.group, true).size() > 1;
        console.note(found == 0 && isCombined
                         ? count + QStringLiteral("; --thorough searches each family separately")
                         : count);
        return found > 0 ? ExitCode::Done : ExitCode::NothingFound;
    }

    SearchOptions m_options;
    double m_timeout = 0.0;
    bool m_json = false;
};

} // namespace

std::unique_ptr<Command> makeFindCommand(CLI::App &app, CLI::App *&subcommand)
{
    subcommand = app.add_subcommand("find", "Search the interfaces for sensors");
    return std::make_unique<FindCommand>(*subcommand);
}
