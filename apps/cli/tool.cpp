// SPDX-License-Identifier: MIT
#include "tool.h"

#include "command.h"
#include "librarylog.h"
#include "subcommands.h"
#include "validators.h"

#include "shared/simulatedbench.h"

#include <CLI/CLI.hpp>

#include <QLoggingCategory>

#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace {

bool verbose = false;

ExitCode refuse(Console &console, const QString &problem)
{
    console.error(problem);
    console.note(QStringLiteral("see 'sondixqt --help' and 'sondixqt <command> --help'"));
    return ExitCode::Usage;
}

// \a code if the output could be written.
ExitCode concluded(Console &console, ExitCode code)
{
    if (console.flush())
        return code;
    console.error(QStringLiteral("cannot write to standard output: %1").arg(console.outputProblem()));
    return ExitCode::Failed;
}

ExitCode run(Console &console, const Subcommands &subcommands)
{
    InterruptWatcher interrupt;
    try {
        const ExitCode code = subcommands.chosen()->run(console, interrupt);
        LibraryLog::show();
        return concluded(console, code);
    } catch (const Failure &failure) {
        LibraryLog::show();
        console.error(failure.text);
        return failure.code;
    }
}

// Prints the requested help or version.
ExitCode inform(Console &console, const CLI::App &app, const CLI::ParseError &request)
{
    std::ostringstream text;
    app.exit(request, text, text);
    console.write(QByteArray::fromStdString(text.str()));
    return concluded(console, ExitCode::Done);
}

} // namespace

void onLogMessage(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (!verbose && (type == QtDebugMsg || type == QtInfoMsg))
        return;
    Console::toStderr(qFormatLogMessage(type, context, text).toUtf8() + '\n');
}

int runTool(const QStringList &given)
{
    verbose = false;
    Console console;

    CLI::App app("Finds, describes, configures and reads measuring sensors through the sensor-access library.",
                 "sondixqt");
    std::string bench;
    app.add_option("--bench", bench, "Bench file for the simulator, instead of SONDIX_BENCH")
        ->check(Validators::notEmpty());
    app.add_flag("-v,--verbose", verbose, "Also show the logs of the library and of the sensor-access library");
    app.set_version_flag("--version", "sondixqt " SONDIXQT_VERSION);
    app.footer("To get started:\n"
               "  sondixqt find\n\n"
               "Data go to stdout, everything else goes to stderr.\n"
               "Exit codes: 0 done, 1 failed, 2 usage, 3 nothing found, 4 cannot open, 5 timed out,\n"
               "6 the sensor refused, 7 data lost, 8 a check failed, 130 interrupted (output files are\n"
               "complete).");
    Subcommands subcommands(app, {makeModelsCommand, makeFindCommand, makeInfoCommand, makeReadCommand,
                                  makeRecordCommand, makeParamsCommand, makeGetCommand, makeSetCommand,
                                  makeExecCommand, makeModeCommand, makeTriggerCommand, makeSyncCommand,
                                  makeVideoCommand, makeTunnelCommand, makeBenchCommand});

    // The parser takes its arguments in reverse order.
    std::vector<std::string> arguments;
    for (const QString &argument : given)
        arguments.insert(arguments.begin(), argument.toStdString());
    try {
        app.parse(arguments);
    } catch (const CLI::ParseError &error) {
        if (error.get_exit_code() == 0)
            return static_cast<int>(inform(console, app, error));
        return static_cast<int>(refuse(console, QString::fromStdString(error.what())));
    }
    const QString problem = subcommands.problem(app.remaining());
    if (!problem.isEmpty())
        return static_cast<int>(refuse(console, problem));
    if (!bench.empty())
        SondixApp::useBench(QString::fromStdString(bench));
    std::optional<LibraryLog> log;
    if (verbose) {
        QLoggingCategory::setFilterRules(QStringLiteral("SondixQt.*=true"));
        log.emplace();
    }
    return static_cast<int>(run(console, subcommands));
}
