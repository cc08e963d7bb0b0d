// SPDX-License-Identifier: MIT
#include "benchcommand.h"
#include "madebench.h"
#include "recordedprogram.h"
#include "recordfile.h"
#include "validators.h"

#include <CLI/CLI.hpp>

#include <QFileInfo>

namespace {

class BenchReplayCommand : public Command
{
public:
    explicit BenchReplayCommand(CLI::App &app)
    {
        app.add_option("RECORD", m_record, "Record of 'sondixqt bench record'")
            ->required()
            ->check(Validators::notEmpty())
            ->type_name("FILE");
        app.add_option("-o,--output", m_output, "Record the calls of this run, too")
            ->check(Validators::notEmpty())
            ->type_name("FILE");
        ChildProgram::addOption(app, m_command);
        app.footer("Each call gets the answer that it got when the program was recorded; no sensor is needed.\n"
                   "The exit code is that of the program.\n\n"
                   "Example:\n  sondixqt bench replay session.jsonl -- myprogram --port COM3");
    }

    ExitCode run(Console &console, InterruptWatcher &interrupt) override
    {
        const QString record = QString::fromStdString(m_record);
        const sondixrec::Record content = readRecordFile(record);
        if (content.isCut)
            console.note(QStringLiteral("%1 is cut off: its last line is not whole").arg(record));
        RecordedProgram program(m_command);
        program.setVariable(QStringLiteral("SONDIX_REPLAY_FILE"), QFileInfo(record).absoluteFilePath());
        if (!m_output.empty()) {
            QFile output(QString::fromStdString(m_output));
            if (MadeBench::isSameFile(output.fileName(), record))
                throw Failure{
                    ExitCode::Usage,
                    QStringLiteral("%1 would be overwritten by its own replay: choose another name").arg(record)};
            if (!output.open(QIODevice::WriteOnly | QIODevice::Truncate))
                throw Failure{ExitCode::Failed,
                              QStringLiteral("cannot write %1: %2").arg(output.fileName(), output.errorString())};
            program.setVariable(QStringLiteral("SONDIX_RECORD_FILE"), QFileInfo(output).absoluteFilePath());
        }
        QObject::connect(&interrupt, &InterruptWatcher::interrupted, &interrupt, [&] {
            if (!console.stderrIsTerminal()) // Ctrl-C in a terminal reaches the program by itself
                program.terminate();
        });
        QString problem;
        const std::optional<int> code = program.run(problem);
        if (!code)
            throw Failure{
                ExitCode::Failed,
                QStringLiteral("cannot start '%1': %2").arg(QString::fromStdString(m_command.front()), problem)};
        return static_cast<ExitCode>(*code);
    }

private:
    std::string m_record;
    std::string m_output;
    std::vector<std::string> m_command;
};

} // namespace

std::unique_ptr<Command> makeBenchReplayCommand(CLI::App &bench, CLI::App *&subcommand)
{
    subcommand = bench.add_subcommand("replay", "Run a program on the answers of a record");
    return std::make_unique<BenchReplayCommand>(*subcommand);
}
