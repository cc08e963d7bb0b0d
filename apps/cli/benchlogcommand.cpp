// SPDX-License-Identifier: MIT
#include "benchcommand.h"
#include "benchsession.h"
#include "logfollower.h"

#include <CLI/CLI.hpp>

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QThread>

namespace {

class BenchLogCommand : public Command
{
public:
    explicit BenchLogCommand(CLI::App &app)
    {
        m_session.addTo(app);
        app.add_flag("-f,--follow", m_follow,
                     "Print the calls as they come, transfers too, until Ctrl-C or the end of the session");
        app.footer(
            "Each line: bench time and duration in milliseconds, process and thread, handle, call, result.\n"
            "Calls are logged while somebody follows them, and all but the transfers in a session that was\n"
            "started with --log. Of a long log the last 16 to 32 MB are kept.");
    }

    ExitCode run(Console &console, InterruptWatcher &interrupt) override
    {
        m_session.attach();
        const QJsonObject request{{QStringLiteral("do"), QStringLiteral("log")},
                                  {QStringLiteral("follow"), m_follow}};
        const QJsonObject answer = requestBench(request);
        const QFileInfo file(answer.value(QLatin1String("file")).toString());
        LogFollower follower(file.filePath(), file.dir().filePath(QStringLiteral("calls.old.log")),
                             m_follow ? LogFollower::Begin::AtEnd : LogFollower::Begin::AtStart);
        if (!m_follow) {
            if (!answer.value(QLatin1String("logged")).toBool() && !file.exists())
                console.note(
                    QStringLiteral("no calls are logged: start the session with --log, or follow with -f"));
            print(console, follower);
            return ExitCode::Done;
        }
        constexpr int renewalMs = 1000;
        constexpr int pauseMs = 50;
        QElapsedTimer renewal;
        renewal.start();
        while (!interrupt.isInterrupted()) {
            if (!print(console, follower))
                break;
            if (renewal.hasExpired(renewalMs)) {
                requestBench(request);
                renewal.restart();
            }
            QThread::msleep(pauseMs);
        }
        return ExitCode::Interrupted;
    }

private:
    static bool print(Console &console, LogFollower &follower)
    {
        if (!follower.readNew([&console](const QByteArray &bytes) { return console.write(bytes); }) ||
            !console.flush())
            return false;
        if (follower.takeMissed())
            console.note(QStringLiteral("calls are missing here: they came too fast"));
        return true;
    }

    SessionOption m_session;
    bool m_follow = false;
};

} // namespace

std::unique_ptr<Command> makeBenchLogCommand(CLI::App &bench, CLI::App *&subcommand)
{
    subcommand = bench.add_subcommand("log", "Print the calls that programs make");
    return std::make_unique<BenchLogCommand>(*subcommand);
}
