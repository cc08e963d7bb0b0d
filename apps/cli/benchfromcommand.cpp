// SPDX-License-Identifier: MIT
#include "benchcommand.h"
#include "madebench.h"
#include "recordfile.h"
#include "validators.h"

#include "shared/simulatedbench.h"

#include <CLI/CLI.hpp>

#include <QFile>
#include <QFileInfo>

namespace {

bool isRecordOfCalls(const QString &path)
{
    constexpr qint64 longestHead = 1 << 16;
    QFile file(path);
    return file.open(QIODevice::ReadOnly) && file.readLine(longestHead).contains("\"sondix calls\"");
}

class BenchFromCommand : public Command
{
public:
    explicit BenchFromCommand(CLI::App &app)
    {
        app.add_option("FILE", m_input, "Record of 'sondixqt bench record', or recording of 'sondixqt record'")
            ->required()
            ->check(Validators::notEmpty());
        app.add_option("-o,--output", m_output, "The bench file; values are written to files beside it")
            ->required()
            ->check(Validators::notEmpty())
            ->type_name("FILE");
        app.footer("Example:\n  sondixqt bench from session.jsonl -o bench.json\n"
                   "  SONDIX_BENCH=bench.json myprogram --port COM3");
    }

    ExitCode run(Console &console, InterruptWatcher &) override
    {
        const QString input = QString::fromStdString(m_input);
        const QString output = QString::fromStdString(m_output);
        MadeBench::Bench bench;
        if (isRecordOfCalls(input)) {
            const sondixrec::Record record = readRecordFile(input);
            if (record.isCut)
                console.note(QStringLiteral("%1 is cut off: its last line is not whole").arg(input));
            bench = MadeBench::ofRecord(record);
        } else {
            bench = MadeBench::ofRecording(input);
        }
        if (bench.sensors.empty())
            throw Failure{ExitCode::NothingFound, QStringLiteral("%1 has no sensor").arg(input)};
        MadeBench::write(bench, output, input);
        for (const QString &note : bench.notes)
            console.note(note);
        check(output);
        console.note(
            QStringLiteral("%1 %2 written to %3")
                .arg(bench.sensors.size())
                .arg(bench.sensors.size() == 1 ? QStringLiteral("sensor") : QStringLiteral("sensors"), output));
        return ExitCode::Done;
    }

private:
    /// A bench that the simulator refuses is of no use. A session is not replaced for this.
    static void check(const QString &file)
    {
        if (!SondixApp::isSimulated() ||
            qEnvironmentVariable("SONDIX_BENCH").startsWith(QLatin1String("session:")))
            return;
        const QJsonObject answer = SondixApp::controlBench({{QStringLiteral("do"), QStringLiteral("load")},
                                                            {QStringLiteral("file"), QFileInfo(file).filePath()}});
        const QString error = answer.value(QLatin1String("error")).toString();
        if (!error.isEmpty())
            throw Failure{ExitCode::Failed,
                          QStringLiteral("the bench was written, but must be corrected: %1").arg(error)};
    }

    std::string m_input;
    std::string m_output;
};

} // namespace

std::unique_ptr<Command> makeBenchFromCommand(CLI::App &bench, CLI::App *&subcommand)
{
    subcommand = bench.add_subcommand("from", "Make a bench file of a record or a recording");
    return std::make_unique<BenchFromCommand>(*subcommand);
}
