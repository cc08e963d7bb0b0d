// SPDX-License-Identifier: MIT
#include "benchcommand.h"
#include "recordedprogram.h"
#include "validators.h"

#include "shared/outputfile.h"

#include <CLI/CLI.hpp>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

using namespace SondixApp;

namespace {

/// What a record contains.
struct Contents
{
    qint64 processes = 0;
    qint64 calls = 0;
};

Contents contentsOf(const QString &fileName)
{
    Contents contents;
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return contents;
    while (!file.atEnd()) {
        const QByteArray line = file.readLine();
        if (line.startsWith("{\"format\":"))
            ++contents.processes;
        else if (line.endsWith('\n'))
            ++contents.calls;
    }
    return contents;
}

class BenchRecordCommand : public Command
{
public:
    explicit BenchRecordCommand(CLI::App &app)
    {
        app.add_option("-o,--output", m_output, "The record, JSON lines")
            ->required()
            ->check(Validators::notEmpty())
            ->type_name("FILE");
        app.add_flag("--redact", m_redact,
                     "Replace serial numbers, network addresses, names of hosts and files, and log texts");
        app.add_option("--library", m_library, "Sensor-access library to record, instead of the program's own")
            ->check(Validators::notEmpty())
            ->type_name("FILE");
        ChildProgram::addOption(app, m_command);
        app.footer("The exit code is that of the program.\n\n"
                   "Example:\n  sondixqt bench record -o session.jsonl -- myprogram --port COM3");
    }

    ExitCode run(Console &console, InterruptWatcher &interrupt) override
    {
        OutputFile output(QString::fromStdString(m_output));
        if (!output.open())
            throw Failure{
                ExitCode::Failed,
                QStringLiteral("cannot write %1: %2").arg(QString::fromStdString(m_output), output.errorString())};
        QString problem;
        const std::optional<int> code = runProgram(console, interrupt, output.currentName(), problem);
        if (!code) {
            output.discard();
            throw Failure{
                ExitCode::Failed,
                QStringLiteral("cannot start '%1': %2").arg(QString::fromStdString(m_command.front()), problem)};
        }
        if (output.isDirect())
            return static_cast<ExitCode>(*code);
        const Contents contents = contentsOf(output.currentName());
        if (contents.processes == 0) {
            output.discard();
            console.error(
                QStringLiteral("nothing was recorded: '%1' did not load the sensor-access library, or finds "
                               "it in a folder of its own before all others")
                    .arg(QString::fromStdString(m_command.front())));
            return *code != 0 ? static_cast<ExitCode>(*code) : ExitCode::Failed;
        }
        if (!output.commit())
            throw Failure{
                ExitCode::Failed,
                QStringLiteral("the record stays in %1: %2").arg(output.currentName(), output.errorString())};
        console.note(QStringLiteral("%1 %2 recorded in %3%4")
                         .arg(contents.calls)
                         .arg(contents.calls == 1 ? QStringLiteral("call") : QStringLiteral("calls"),
                              QString::fromStdString(m_output),
                              contents.processes > 1 ? QStringLiteral(", of %1 processes").arg(contents.processes)
                                                     : QString()));
        return static_cast<ExitCode>(*code);
    }

private:
    /// The exit code of the program; nothing, with the reason in \a problem, if it cannot be started.
    std::optional<int> runProgram(Console &console, InterruptWatcher &interrupt, const QString &record,
                                  QString &problem) const
    {
        RecordedProgram program(m_command);
        program.setVariable(QStringLiteral("SONDIX_RECORD_FILE"), QFileInfo(record).absoluteFilePath());
        if (m_redact)
            program.setVariable(QStringLiteral("SONDIX_RECORD_REDACT"),
                                QString::number(QRandomGenerator::system()->generate64(), 16));
        if (!m_library.empty())
            program.setVariable(
                QStringLiteral("SONDIX_RECORD_LIBRARY"),
                QDir::toNativeSeparators(QFileInfo(QString::fromStdString(m_library)).absoluteFilePath()));
        // Ctrl-C in a terminal reaches the program by itself.
        QObject::connect(&interrupt, &InterruptWatcher::interrupted, &interrupt, [&] {
            if (!console.stderrIsTerminal())
                program.terminate();
        });
        return program.run(problem);
    }

    std::string m_output;
    std::string m_library;
    std::vector<std::string> m_command;
    bool m_redact = false;
};

} // namespace

std::unique_ptr<Command> makeBenchRecordCommand(CLI::App &bench, CLI::App *&subcommand)
{
    subcommand = bench.add_subcommand("record", "Run a program and record its calls of the sensor-access library");
    return std::make_unique<BenchRecordCommand>(*subcommand);
}
