// SPDX-License-Identifier: MIT
#include "subcommands.h"

#include <SondixQt/namelookup.h>

#include <CLI/CLI.hpp>

#include <algorithm>

Subcommands::Subcommands(CLI::App &app, std::initializer_list<Maker> makers)
    : m_app(app)
{
    app.require_subcommand(0, 1);
    app.allow_extras(); // an unknown command gets an error message of ours, with suggestions
    for (const Maker make : makers) {
        Entry entry;
        entry.command = make(app, entry.app);
        entry.app->fallthrough();
        m_entries.push_back(std::move(entry));
    }
}

const Subcommands::Entry *Subcommands::given() const
{
    const auto parsed =
        std::find_if(m_entries.begin(), m_entries.end(), [](const Entry &entry) { return entry.app->parsed(); });
    return parsed == m_entries.end() ? nullptr : &*parsed;
}

QString Subcommands::problem(const std::vector<std::string> &extras) const
{
    const Entry *const entry = given();
    if (entry && entry->command->subcommands())
        return entry->command->subcommands()->problem(extras);
    if (entry && extras.empty())
        return {};
    QStringList names;
    for (const CLI::App *subcommand : m_app.get_subcommands(nullptr))
        names += QString::fromStdString(subcommand->get_name());
    const QString list = QStringLiteral("the commands are %1").arg(names.join(QStringLiteral(", ")));
    if (extras.empty())
        return QStringLiteral("no command is given; ") + list;
    const QString text = QString::fromStdString(extras.front());
    const bool isOption = text.startsWith(QLatin1Char('-'));
    return SondixQt::unknownNameText(isOption ? QStringLiteral("option") : QStringLiteral("command"), text,
                                     isOption ? QStringList() : names, list);
}

Command *Subcommands::chosen() const
{
    return given()->command.get();
}
