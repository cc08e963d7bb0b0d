// SPDX-License-Identifier: MIT
#include "command.h"
#include "librarylog.h"
#include "validators.h"

#include "shared/simulatedbench.h"

#include <SondixQt/namelookup.h>
#include <SondixQt/sensortypes.h>

#include <CLI/CLI.hpp>

#include <QCoreApplication>
#include <QLoggingCategory>

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <exception>
#include <optional>
#include <sstream>
#include <vector>

namespace {

bool verbose = false;

void onLogMessage(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (!verbose && (type == QtDebugMsg || type == QtInfoMsg))
        return;
    Console::toStderr(qFormatLogMessage(type, context, text).toUtf8() + '\n');
}

struct Subcommand
{
    CLI::App *app = nullptr;
    std::unique_ptr<Command> command;
};

using Maker = std::unique_ptr<Command> (*)(CLI::App &, CLI::App *&);

std::vector<Subcommand> addSubcommands(CLI::App &app)
{
    std::vector<Subcommand> subcommands;
    for (const Maker make :
         {makeModelsCommand, makeFindCommand, makeInfoCommand, makeReadCommand, makeRecordCommand,
          makeParamsCommand, makeGetCommand, makeSetCommand, makeExecCommand, makeModeCommand, makeTriggerCommand,
          makeSyncCommand, makeVideoCommand, makeTunnelCommand}) {
        Subcommand subcommand;
        subcommand.command = make(app, subcommand.app);
        subcommand.app->fallthrough();
        subcommands.push_back(std::move(subcommand));
    }
    return subcommands;
}

// The error message for a command line without a known subcommand.
QString missingCommand(const CLI::App &app)
{
    QStringList names;
    for (const CLI::App *subcommand : app.get_subcommands(nullptr))
        names += QString::fromStdString(subcommand->get_name());
    const QString list = QStringLiteral("the commands are %1").arg(names.join(QStringLiteral(", ")));
    const std::vector<std::string> extras = app.remaining();
    if (extras.empty())
        return QStringLiteral("no command is given; ") + list;
    const QString given = QString::fromStdString(extras.front());
    const bool isOption = given.startsWith(QLatin1Char('-'));
    return SondixQt::unknownNameText(isOption ? QStringLiteral("option") : QStringLiteral("command"), given,
                                     isOption ? QStringList() : names, list);
}

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

ExitCode run(Console &console, const std::vector<Subcommand> &subcommands)
{
    InterruptWatcher interrupt;
    const auto chosen = std::find_if(subcommands.begin(), subcommands.end(),
                                     [](const Subcommand &candidate) { return candidate.app->parsed(); });
    try {
        const ExitCode code = chosen->command->run(console, interrupt);
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

int runTool(int argc, char *argv[])
{
    qInstallMessageHandler(onLogMessage);
    const QCoreApplication application(argc, argv);
    // Numbers on the command line have a decimal point in every locale.
    std::setlocale(LC_NUMERIC, "C");
    QCoreApplication::setApplicationName(QStringLiteral("sondixqt"));
    SondixQt::setUsedByApplicationName(QStringLiteral("sondixqt"));
    Console console;

    CLI::App app("Finds, describes, configures and reads measuring sensors through the sensor-access library.",
                 "sondixqt");
    std::string bench;
    app.add_option("--bench", bench, "Bench file for the simulator, instead of SONDIX_BENCH")
        ->check(Validators::notEmpty());
    app.add_flag("-v,--verbose", verbose, "Also show the logs of the library and of the sensor-access library");
    app.set_version_flag("--version", "sondixqt " SONDIXQT_VERSION);
    app.require_subcommand(0, 1);
    app.allow_extras(); // an unknown command gets an error message of ours, with suggestions
    app.footer("To get started:\n"
               "  sondixqt find\n\n"
               "Data go to stdout, everything else goes to stderr.\n"
               "Exit codes: 0 done, 1 failed, 2 usage, 3 nothing found, 4 cannot open, 5 timed out,\n"
               "6 the sensor refused, 7 data lost, 130 interrupted (output files are complete).");
    const std::vector<Subcommand> subcommands = addSubcommands(app);

    // The parser takes its arguments in reverse order.
    std::vector<std::string> arguments;
    const QStringList given = QCoreApplication::arguments().mid(1);
    for (const QString &argument : given)
        arguments.insert(arguments.begin(), argument.toStdString());
    try {
        app.parse(arguments);
    } catch (const CLI::ParseError &error) {
        if (error.get_exit_code() == 0)
            return static_cast<int>(inform(console, app, error));
        return static_cast<int>(refuse(console, QString::fromStdString(error.what())));
    }
    if (app.get_subcommands().empty() || app.remaining_size() > 0)
        return static_cast<int>(refuse(console, missingCommand(app)));
    if (!bench.empty())
        SondixApp::useBench(QString::fromStdString(bench));
    std::optional<LibraryLog> log;
    if (verbose) {
        QLoggingCategory::setFilterRules(QStringLiteral("SondixQt.*=true"));
        log.emplace();
    }
    return static_cast<int>(run(console, subcommands));
}

} // namespace

int main(int argc, char *argv[])
{
    try {
        return runTool(argc, argv);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "sondixqt: %s\n", error.what());
    }
    return static_cast<int>(ExitCode::Failed);
}
