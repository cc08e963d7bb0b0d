// SPDX-License-Identifier: MIT
#include "benchcommand.h"
#include "benchsession.h"

#include <CLI/CLI.hpp>

namespace {

class BenchSchemaCommand : public Command
{
public:
    explicit BenchSchemaCommand(CLI::App &app)
    {
        app.footer(
            "Editors complete and check a bench file that has the key \"$schema\" with the name of the file "
            "that this prints.\n\n"
            "Example:\n  sondixqt bench schema > bench.schema.json");
    }

    ExitCode run(Console &console, InterruptWatcher &) override
    {
        const QJsonObject answer = requestBench({{QStringLiteral("do"), QStringLiteral("schema")}});
        console.print(answer.value(QLatin1String("schema")).toString().trimmed());
        return ExitCode::Done;
    }
};

} // namespace

std::unique_ptr<Command> makeBenchSchemaCommand(CLI::App &bench, CLI::App *&subcommand)
{
    subcommand = bench.add_subcommand("schema", "Print the JSON schema of bench files, for editors");
    return std::make_unique<BenchSchemaCommand>(*subcommand);
}
