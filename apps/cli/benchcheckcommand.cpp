// SPDX-License-Identifier: MIT
#include "benchcommand.h"
#include "benchsession.h"
#include "checkreport.h"
#include "childprogram.h"
#include "validators.h"

#include "shared/outputfile.h"
#include "shared/simulatedbench.h"

#include <CLI/CLI.hpp>

#include <QElapsedTimer>
#include <QFileInfo>
#include <QJsonArray>
#include <QRegularExpression>
#include <QTimer>

#include <chrono>
#include <cmath>

using namespace SondixApp;

namespace {

/// How long a program that was asked to end may take.
constexpr std::chrono::seconds grace(2);

/// A session for one check.
class CheckSession
{
public:
    explicit CheckSession(const QString &file)
    {
        // A name for each check that runs. A former one is used again: on Windows the folder of a session stays until then.
        const QString base = QStringLiteral("check-") +
                             QFileInfo(file).completeBaseName().left(40).replace(
                                 QRegularExpression(QStringLiteral("[^A-Za-z0-9_-]")), QStringLiteral("-"));
        for (int number = 1; m_name.isEmpty(); ++number) {
            const QString name = number == 1 ? base : QStringLiteral("%1-%2").arg(base).arg(number);
            if (runningSessions().contains(name))
                continue;
            const QJsonObject answer = controlBench({{QStringLiteral("do"), QStringLiteral("start")},
                                                     {QStringLiteral("session"), name},
                                                     {QStringLiteral("file"), file}});
            const QString error = answer.value(QLatin1String("error")).toString();
            if (error.isEmpty())
                m_name = name;
            else if (!runningSessions().contains(name)) // another check was not faster
                throw Failure{ExitCode::Failed, error};
        }
    }
    ~CheckSession()
    {
        // Calls that hang return: a process that the program has left behind may be in one.
        controlBench({{QStringLiteral("do"), QStringLiteral("clear")}});
        controlBench({{QStringLiteral("do"), QStringLiteral("stop")}, {QStringLiteral("session"), m_name}});
    }
    CheckSession(const CheckSession &) = delete;
    CheckSession &operator=(const CheckSession &) = delete;

    QString address() const { return QStringLiteral("session:") + m_name; }

private:
    QString m_name;
};

/// The case of an expectation as the simulator reports it.
CheckCase caseOf(const QJsonValue &expectation, bool isUsed)
{
    CheckCase checked;
    checked.name = expectation[QLatin1String("name")].toString();
    const QString sensor = expectation[QLatin1String("sensor")].toString();
    if (!sensor.isEmpty())
        checked.name.prepend(
            QStringLiteral("%1 %2: ").arg(expectation[QLatin1String("model")].toString(), sensor));
    checked.expected = expectation[QLatin1String("expected")].toString();
    checked.found = isUsed ? expectation[QLatin1String("found")].toString()
                           : QStringLiteral("nothing: the bench was not used");
    checked.state = isUsed && expectation[QLatin1String("met")].toBool() ? CheckCase::Met : CheckCase::NotMet;
    checked.line = expectation[QLatin1String("line")].toInt();
    return checked;
}

class BenchCheckCommand : public Command
{
public:
    explicit BenchCheckCommand(CLI::App &app)
    {
        constexpr double longestTimeout = 86400.0;
        app.add_option("FILE", m_file, "Bench file")->required()->check(Validators::notEmpty())->type_name("FILE");
        app.add_option("--junit", m_junit, "Also write the report as JUnit XML")
            ->check(Validators::notEmpty())
            ->type_name("FILE");
        app.add_option("--timeout", m_timeout, "Kill the program after so many seconds; default: never")
            ->check(Validators::seconds(longestTimeout));
        ChildProgram::addOption(app, m_command);
        app.footer(
            "The exit code is that of the program if it is not 0, 8 if an expectation is not met, and 5 if the\n"
            "time was over.\n\n"
            "Example:\n  sondixqt bench check mybench.json --junit report.xml -- myprogram --port COM3");
    }

    ExitCode run(Console &console, InterruptWatcher &interrupt) override
    {
        OutputFile output(QString::fromStdString(m_junit));
        if (!m_junit.empty() && !output.open())
            throw Failure{ExitCode::Failed,
                          QStringLiteral("cannot write %1: %2").arg(output.path(), output.errorString())};
        ExitCode code = ExitCode::Done;
        try {
            code = check(console, interrupt);
        } catch (const Failure &) {
            output.discard();
            throw;
        }
        if (InterruptWatcher::isInterrupted()) {
            output.discard();
            return ExitCode::Interrupted;
        }
        tell(console);
        if (!m_junit.empty() && !(output.write(m_report.junit()) && output.commit()))
            throw Failure{ExitCode::Failed,
                          QStringLiteral("cannot write %1: %2").arg(output.path(), output.errorString())};
        return code;
    }

private:
    QString program() const { return QString::fromStdString(m_command.front()); }

    /// Runs the program and fills the report.
    ExitCode check(Console &console, InterruptWatcher &interrupt)
    {
        m_report.benchFile = QString::fromStdString(m_file);
        const CheckSession session(m_report.benchFile);
        requestBench(
            {{QStringLiteral("do"), QStringLiteral("load")}, {QStringLiteral("file"), session.address()}});
        const QJsonObject before = expectations();
        m_report.begun = QDateTime::currentDateTime();
        const ExitCode code = runProgram(console, interrupt, session);
        if (InterruptWatcher::isInterrupted())
            return ExitCode::Interrupted;
        const QJsonObject after = expectations();
        const QLatin1String users("users");
        const bool isUsed = after[users].toInt() != before[users].toInt();
        if (m_isStarted && !isUsed)
            console.error(
                QStringLiteral("'%1' did not use the bench: it made no call of the sensor-access library, or "
                               "found another one than the simulator")
                    .arg(program()));
        for (const QJsonValue expectation : after[QLatin1String("expectations")].toArray()) {
            m_report.cases += caseOf(expectation, isUsed);
            if (m_isStarted)
                continue;
            m_report.cases.last().state = CheckCase::Skipped;
            m_report.cases.last().found = QStringLiteral("nothing: the program did not run");
        }
        if (code != ExitCode::Done)
            return code;
        return m_report.count(CheckCase::NotMet) > 0 ? ExitCode::NotMet : ExitCode::Done;
    }

    static QJsonObject expectations()
    {
        return requestBench({{QStringLiteral("do"), QStringLiteral("expectations")}});
    }

    ExitCode runProgram(Console &console, InterruptWatcher &interrupt, const CheckSession &session)
    {
        ChildProgram program(m_command);
        program.setVariable(QStringLiteral("SONDIX_BENCH"), session.address());
        const auto stop = [&program] {
            program.terminate();
            program.killAfter(grace);
        };
        QTimer limit;
        bool isOver = false;
        QObject::connect(&limit, &QTimer::timeout, &limit, [&] {
            isOver = true;
            stop();
        });
        limit.setSingleShot(true);
        if (m_timeout)
            limit.start(std::chrono::milliseconds(std::llround(*m_timeout * 1000.0)));
        QObject untilEnd;
        QObject::connect(&interrupt, &InterruptWatcher::interrupted, &untilEnd, [&] {
            if (console.stderrIsTerminal()) // Ctrl-C in a terminal reaches the program by itself
                program.killAfter(grace);
            else
                stop();
        });
        QElapsedTimer time;
        time.start();
        QString problem;
        const std::optional<int> code = program.run(problem);
        if (InterruptWatcher::isInterrupted())
            return ExitCode::Interrupted;
        m_isStarted = code.has_value();
        CheckCase end;
        end.name = QStringLiteral("exit code of %1").arg(QFileInfo(this->program()).fileName());
        end.expected = QStringLiteral("0");
        end.seconds = static_cast<double>(time.elapsed()) / 1000.0;
        if (!code)
            end.found = QStringLiteral("none: it cannot be started (%1)").arg(problem);
        else if (isOver)
            end.found = QStringLiteral("none: it was still running after %1 s").arg(*m_timeout);
        else if (program.wasKilled())
            end.found = QStringLiteral("none: it ") + program.killText();
        else
            end.found = QString::number(*code);
        end.state = code == 0 && !isOver ? CheckCase::Met : CheckCase::NotMet;
        m_report.cases += end;
        if (!code)
            return ExitCode::Failed;
        return isOver ? ExitCode::TimedOut : static_cast<ExitCode>(*code);
    }

    void tell(Console &console) const
    {
        for (const CheckCase &checked : m_report.cases) {
            if (checked.state == CheckCase::Met)
                console.print(QStringLiteral("ok      ") + checked.text());
            else if (checked.state == CheckCase::Skipped)
                console.print(QStringLiteral("skipped ") + checked.text());
            else
                console.print(console.styled(QStringLiteral("FAILED"), Console::Red) + QStringLiteral("  ") +
                              (checked.line > 0
                                   ? QStringLiteral("%1:%2: ").arg(m_report.benchFile).arg(checked.line)
                                   : QString()) +
                              checked.text());
        }
        const int all = m_report.cases.size();
        console.note(QStringLiteral("%1 of %2 met%3")
                         .arg(m_report.count(CheckCase::Met))
                         .arg(all)
                         .arg(all == 1 ? QStringLiteral("; %1 has no \"expect\": only the exit code was checked")
                                             .arg(m_report.benchFile)
                                       : QString()));
    }

    std::string m_file;
    std::string m_junit;
    std::optional<double> m_timeout;
    std::vector<std::string> m_command;
    CheckReport m_report;
    bool m_isStarted = false;
};

} // namespace

std::unique_ptr<Command> makeBenchCheckCommand(CLI::App &bench, CLI::App *&subcommand)
{
    subcommand = bench.add_subcommand("check", "Run a program on a bench, and check what the bench expects of it");
    return std::make_unique<BenchCheckCommand>(*subcommand);
}
