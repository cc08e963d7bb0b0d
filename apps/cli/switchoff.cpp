// SPDX-License-Identifier: MIT
#include "switchoff.h"

#include "answer.h"

#include <CLI/CLI.hpp>

using namespace SondixQt;

SwitchOffCommand::SwitchOffCommand(CLI::App &app)
{
    m_sensor.addTo(app);
    app.add_option("off", m_word, "Switch it off, which changes the sensor; without it the state is printed");
    app.add_flag("--json", m_json, "Print one JSON object");
    app.footer(app.get_footer() + "\nExample:\n  sondixqt " + app.get_name() +
               " CC430@TCP/IP,address=169.254.168.150 off");
}

ExitCode SwitchOffCommand::run(Console &console, InterruptWatcher &interrupt)
{
    const QStringList words = m_sensor.wordsAfterSensor({m_word});
    for (const QString &word : words)
        if (word != QLatin1String("off") || words.size() > 1)
            throw Failure{ExitCode::Usage, QStringLiteral("the word after the sensor can only be 'off', not '%1'")
                                               .arg(words.join(QLatin1Char(' ')))};
    const SensorAddress address = m_sensor.resolve(console, interrupt);
    QString warning;
    const auto instance = openSensor(address, &warning);
    if (!words.isEmpty()) {
        QString text;
        Answer::check(switchOff(*instance, &text), QStringLiteral("to switch %1 off").arg(subject()), text);
    } else if (!warning.isEmpty()) {
        throw Failure{ExitCode::Refused, QStringLiteral("the sensor does not report its state: %1").arg(warning)};
    }
    const State current = state(*instance);
    instance->close();
    if (m_json)
        Answer::printJson(console, address, current.json);
    else
        console.print(current.sentence);
    return ExitCode::Done;
}
