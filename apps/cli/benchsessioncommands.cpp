// SPDX-License-Identifier: MIT
#include "benchcommand.h"
#include "benchsession.h"
#include "texttable.h"
#include "validators.h"

#include <CLI/CLI.hpp>

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>

namespace {

class BenchStartCommand : public Command
{
public:
    explicit BenchStartCommand(CLI::App &app)
    {
        app.add_option("file", m_file, "Bench file; without one the built-in bench is used")
            ->check(Validators::notEmpty());
        app.add_option("-n,--name", m_name, "Name of the session; default: that of the file")
            ->check(Validators::notEmpty());
        app.add_flag("--log", m_log, "Log all calls but the transfers, for 'sondixqt bench log'");
        app.footer("Prints the value of SONDIX_BENCH with which programs use the session.\n\n"
                   "Example:\n  export SONDIX_BENCH=$(sondixqt bench start mybench.json)");
    }

    ExitCode run(Console &console, InterruptWatcher &) override
    {
        const QString file = QString::fromStdString(m_file);
        QString name = QString::fromStdString(m_name);
        if (name.isEmpty() && !file.isEmpty())
            name = QFileInfo(file).completeBaseName().replace(QRegularExpression(QStringLiteral("[^A-Za-z0-9_-]")),
                                                              QStringLiteral("-"));
        if (name.isEmpty())
            name = QStringLiteral("bench");
        QJsonObject request{{QStringLiteral("do"), QStringLiteral("start")},
                            {QStringLiteral("session"), name},
                            {QStringLiteral("log"), m_log}};
        if (!file.isEmpty())
            request.insert(QStringLiteral("file"), file);
        requestBench(request);
        console.print(QStringLiteral("session:") + name);
        return ExitCode::Done;
    }

private:
    std::string m_file;
    std::string m_name;
    bool m_log = false;
};

class BenchStopCommand : public Command
{
public:
    explicit BenchStopCommand(CLI::App &app)
    {
        app.add_option("session", m_name, "Name of the session")->required()->check(Validators::notEmpty());
    }

    ExitCode run(Console &, InterruptWatcher &) override
    {
        QString name = QString::fromStdString(m_name);
        if (name.startsWith(QLatin1String("session:")))
            name.remove(0, 8);
        requestBench({{QStringLiteral("do"), QStringLiteral("stop")}, {QStringLiteral("session"), name}});
        return ExitCode::Done;
    }

private:
    std::string m_name;
};

class BenchListCommand : public Command
{
public:
    explicit BenchListCommand(CLI::App &app) { app.add_flag("--json", m_json, "Print a JSON array of objects"); }

    ExitCode run(Console &console, InterruptWatcher &) override
    {
        const QJsonArray sessions = requestBench({{QStringLiteral("do"), QStringLiteral("sessions")}})
                                        .value(QLatin1String("sessions"))
                                        .toArray();
        if (m_json) {
            console.write(QJsonDocument(sessions).toJson());
            return sessions.isEmpty() ? ExitCode::NothingFound : ExitCode::Done;
        }
        if (sessions.isEmpty()) {
            console.note(QStringLiteral("no bench session is running"));
            return ExitCode::NothingFound;
        }
        TextTable table({QStringLiteral("SESSION"), QStringLiteral("AGE"), QStringLiteral("BENCH FILE")});
        for (const QJsonValue session : sessions)
            table.addRow({session[QLatin1String("session")].toString(),
                          age(session[QLatin1String("age")].toDouble()),
                          session[QLatin1String("file")].toString()});
        table.print(console);
        return ExitCode::Done;
    }

private:
    static QString age(double seconds)
    {
        const auto all = static_cast<qint64>(seconds);
        return QStringLiteral("%1:%2:%3")
            .arg(all / 3600)
            .arg(all / 60 % 60, 2, 10, QLatin1Char('0'))
            .arg(all % 60, 2, 10, QLatin1Char('0'));
    }

    bool m_json = false;
};

} // namespace

std::unique_ptr<Command> makeBenchStartCommand(CLI::App &bench, CLI::App *&subcommand)
{
    subcommand = bench.add_subcommand("start", "Start a bench that lives on, for all programs of this user");
    return std::make_unique<BenchStartCommand>(*subcommand);
}

std::unique_ptr<Command> makeBenchStopCommand(CLI::App &bench, CLI::App *&subcommand)
{
    subcommand = bench.add_subcommand("stop", "End a session: its programs find all sensors unplugged");
    return std::make_unique<BenchStopCommand>(*subcommand);
}

std::unique_ptr<Command> makeBenchListCommand(CLI::App &bench, CLI::App *&subcommand)
{
    subcommand = bench.add_subcommand("list", "List the sessions that are running");
    return std::make_unique<BenchListCommand>(*subcommand);
}
