// SPDX-License-Identifier: MIT
#include "command.h"
#include "consolesink.h"
#include "formatoptions.h"
#include "readsession.h"
#include "tablewriter.h"
#include "validators.h"

#include "shared/recorder.h"

#include <CLI/CLI.hpp>

using namespace SondixQt;
using namespace SondixApp;

namespace {

class ReadCommand : public Command
{
public:
    explicit ReadCommand(CLI::App &app)
    {
        m_sensor.addTo(app);
        m_read.addTo(app);
        auto *csv = app.add_option("--csv", m_csv, "Write CSV to this file, or to stdout with -")
                        ->check(Validators::notEmpty());
        app.add_flag("--json", m_json, "Print one JSON object per line, one line per frame")->excludes(csv);
        m_format.addTo(app);
        app.footer(app.get_footer() + "\n'record' writes files that describe themselves, in more formats.\n"
                                      "Examples (the second one runs until Ctrl-C):\n"
                                      "  sondixqt read TX270@RS232,port=COM3 --duration 2 --csv values.csv\n"
                                      "  sondixqt read TX270@RS232,port=COM3");
    }

    ExitCode run(Console &console, InterruptWatcher &interrupt) override
    {
        if (!m_json && m_csv.empty() && m_format.isAnyUsed())
            throw Failure{ExitCode::Usage,
                          QStringLiteral("--separator, --decimal-comma and --errors go with --csv or --json")};
        const FormatOptions format = m_format.options(m_json ? RecordFormat::JsonLines : RecordFormat::Csv);
        ReadSession session(console, interrupt, m_read);
        ReadSource &source = session.open(m_sensor.resolve(console, interrupt));
        const bool isFile = !m_csv.empty() && m_csv != "-";
        source.sink = isFile ? makeFile(source, format) : makeConsole(console, source, format);
        return session.run(isFile);
    }

private:
    RecordColumns columns(const ReadSource &source) const
    {
        RecordColumns columns;
        columns.frame = source.frame;
        columns.scaled = m_read.isScaled();
        columns.raw = m_read.isRaw();
        return columns;
    }

    std::unique_ptr<FrameSink> makeFile(ReadSource &source, const FormatOptions &format) const
    {
        Recorder::Plan plan;
        plan.path = QString::fromStdString(m_csv);
        plan.options = format;
        plan.columns = columns(source);
        plan.withHead = false;
        auto recorder = std::make_unique<Recorder>(plan, source.head(), *source.errors);
        if (!recorder->open())
            throw Failure{ExitCode::Failed, recorder->problem()};
        return recorder;
    }

    std::unique_ptr<FrameSink> makeConsole(Console &console, ReadSource &source, const FormatOptions &format) const
    {
        std::unique_ptr<FrameWriter> writer;
        if (m_json || !m_csv.empty())
            writer = makeFrameWriter(m_json ? RecordFormat::JsonLines : RecordFormat::Csv, columns(source), format,
                                     *source.errors);
        else
            writer = std::make_unique<TableWriter>(columns(source), *source.errors);
        auto sink = std::make_unique<ConsoleSink>(console, std::move(writer));
        if (!sink->begin())
            throw Failure{ExitCode::Failed, sink->problem()};
        return sink;
    }

    SensorOptions m_sensor;
    ReadOptions m_read;
    FormatArguments m_format;
    std::string m_csv;
    bool m_json = false;
};

} // namespace

std::unique_ptr<Command> makeReadCommand(CLI::App &app, CLI::App *&subcommand)
{
    subcommand = app.add_subcommand("read", "Open a sensor and read its values");
    return std::make_unique<ReadCommand>(*subcommand);
}
