// SPDX-License-Identifier: MIT
#include "command.h"
#include "json.h"
#include "progressbar.h"
#include "searchoptions.h"

#include "shared/sensoraddress.h"

#include <CLI/CLI.hpp>

#include <QEventLoop>
#include <QTimer>

using namespace SondixQt;
using namespace SondixApp;

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
        app.add_option("--timeout", m_timeout, "Give up after this many seconds")->check(CLI::PositiveNumber);
        app.add_flag("--json", m_json, "One JSON object a line, written as soon as a sensor is found");
        app.footer("Each sensor is printed when it is found, with the address that 'info' and 'read' take.\n\n"
                   "Example:\n  sondixqt find --group Tavrin --interface RS232 --baudrates 115200,921600");
    }

    ExitCode run(Console &console, InterruptWatcher &interrupt) override
    {
        SearchRun search(m_options.plan());
        ProgressBar bar(console);
        QEventLoop loop;
        SearchRun::End end = SearchRun::Completed;
        int found = 0;
        bool timedOut = false;

        if (!m_json && console.stdoutIsTerminal())
            console.print(
                console.styled(row(QStringLiteral("INTERFACE"), QStringLiteral("PLACE"), QStringLiteral("MODEL"),
                                   QStringLiteral("SERIAL NO."), QStringLiteral("ADDRESS")),
                               Console::Bold));
        QObject::connect(&search, &SearchRun::sensorFound, &loop, [&](const SensorInfo &info) {
            ++found;
            if (!announce(console, info))
                QMetaObject::invokeMethod(&search, &SearchRun::stop, Qt::QueuedConnection);
        });
        QObject::connect(&search, &SearchRun::progressChanged, &loop,
                         [&](int percent) { bar.setPercent(percent); });
        QObject::connect(&search, &SearchRun::statusText, &loop, [&](const QString &text) { bar.setText(text); });
        QObject::connect(&search, &SearchRun::finished, &loop, [&](SearchRun::End how) {
            end = how;
            loop.quit();
        });
        QObject::connect(&interrupt, &InterruptWatcher::interrupted, &search, &SearchRun::stop);
        if (m_timeout > 0.0)
            QTimer::singleShot(static_cast<int>(m_timeout * 1000.0), &search, [&] {
                timedOut = true;
                search.stop();
            });
        QTimer::singleShot(0, &search, &SearchRun::start);
        loop.exec();
        bar.clear();
        return conclude(console, search, end, found, timedOut);
    }

private:
    bool announce(Console &console, const SensorInfo &info) const
    {
        if (m_json)
            return console.write(Json::line(Json::ofFoundSensor(info))) && console.flush();
        const QMap<QString, QVariant> parameters = info.getParameters({});
        return console.print(row(interfaceName(info.interfaceType()), placeOf(parameters),
                                 sensorName(info.sensorType(), true),
                                 parameters.value(QStringLiteral("SA_SerialNumber")).toString(),
                                 SensorAddress::of(info).toString())) &&
               console.flush();
    }

    static ExitCode conclude(Console &console, const SearchRun &search, SearchRun::End end, int found,
                             bool timedOut)
    {
        const QString count =
            found == 1 ? QStringLiteral("1 sensor found") : QStringLiteral("%1 sensors found").arg(found);
        if (end == SearchRun::Refused)
            throw Failure{ExitCode::Failed, search.problem()};
        if (InterruptWatcher::isInterrupted())
            throw Failure{ExitCode::Interrupted, QStringLiteral("interrupted, %1 until then").arg(count)};
        if (timedOut)
            throw Failure{ExitCode::TimedOut,
                          QStringLiteral("the search did not end in time, %1 until then").arg(count)};
        console.note(count);
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
