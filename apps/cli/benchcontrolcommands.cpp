// SPDX-License-Identifier: MIT
#include "benchcommand.h"
#include "benchsession.h"
#include "validators.h"

#include <CLI/CLI.hpp>

#include <QFile>
#include <QJsonObject>

#include <optional>
#include <vector>

namespace {

/// A command that does something to the bench of a session.
class BenchControlCommand : public Command
{
public:
    explicit BenchControlCommand(CLI::App &app) { m_session.addTo(app); }

    ExitCode run(Console &console, InterruptWatcher &) override
    {
        m_session.attach();
        tell(console, requestBench(request()));
        return ExitCode::Done;
    }

protected:
    virtual QJsonObject request() const = 0;
    virtual void tell(Console &, const QJsonObject &) const {}

private:
    SessionOption m_session;
};

CLI::Option *addSensor(CLI::App &app, std::string &sensor)
{
    return app.add_option("sensor", sensor, "Serial number of the sensor")->check(Validators::notEmpty());
}

/// A request that names a sensor and nothing else.
class SensorControlCommand : public BenchControlCommand
{
public:
    SensorControlCommand(CLI::App &app, const QString &action)
        : BenchControlCommand(app)
        , m_action(action)
    {
        addSensor(app, m_sensor)->required();
    }

protected:
    QJsonObject request() const override
    {
        return {{QStringLiteral("do"), m_action}, {QStringLiteral("sensor"), QString::fromStdString(m_sensor)}};
    }

private:
    QString m_action;
    std::string m_sensor;
};

class BenchFaultCommand : public BenchControlCommand
{
public:
    explicit BenchFaultCommand(CLI::App &app)
        : BenchControlCommand(app)
    {
        addSensor(app, m_sensor)->required();
        app.add_option("call", m_call, "Command, such as Get_Info, or C function, such as TransferDataTS")
            ->required()
            ->check(Validators::notEmpty());
        app.add_option("--code", m_code, "Error code that the call returns, negative");
        app.add_option("--text", m_text, "Error text");
        app.add_option("--answer", m_answer, "Answer of the command, as \"key=value\" pairs");
        app.add_option("--delay", m_delay, "Seconds by which the call is delayed");
        app.add_option("--damage", m_damage, "What happens to the answer on its way")
            ->check(CLI::IsMember({"cut", "garbled", "empty"}));
        app.add_flag("--hang", m_hang, "The call returns only after 'sondixqt bench clear'");
        app.add_option("--from", m_from, "Number of the first call that is hit, from 1");
        app.add_option("--times", m_times, "How many calls are hit; default: all");
        app.add_option("--probability", m_probability, "Probability for each call, 0 to 1");
        app.footer("Example:\n  sondixqt bench fault 1018001 Set_Samplerate --code -26 --text \"value too large\" "
                   "--from 2 --times 1");
    }

protected:
    QJsonObject request() const override
    {
        QJsonObject fault{{QStringLiteral("do"), QStringLiteral("inject")},
                          {QStringLiteral("sensor"), QString::fromStdString(m_sensor)}};
        const QString call = QString::fromStdString(m_call);
        fault.insert(call.contains(QLatin1Char('_')) ? QStringLiteral("command") : QStringLiteral("function"),
                     call);
        const auto add = [&fault](const char *key, const auto &value) {
            if (value)
                fault.insert(QLatin1String(key), QJsonValue(*value));
        };
        add("code", m_code);
        add("delay", m_delay);
        add("from", m_from);
        add("times", m_times);
        add("probability", m_probability);
        if (m_hang)
            fault.insert(QStringLiteral("hang"), true);
        if (!m_damage.empty())
            fault.insert(QStringLiteral("damage"), QString::fromStdString(m_damage));
        if (!m_text.empty())
            fault.insert(QStringLiteral("text"), QString::fromStdString(m_text));
        if (m_answer)
            fault.insert(QStringLiteral("answer"), QString::fromStdString(*m_answer));
        if (!m_code && !m_answer && !m_delay && !m_hang && m_damage.empty())
            throw Failure{
                ExitCode::Usage,
                QStringLiteral("the fault has no effect; give --code, --answer, --damage, --delay or --hang")};
        return fault;
    }
    void tell(Console &console, const QJsonObject &answer) const override
    {
        console.print(QString::number(answer.value(QLatin1String("fault")).toInt()));
    }

private:
    std::string m_sensor;
    std::string m_call;
    std::optional<int> m_code;
    std::string m_text;
    std::string m_damage;
    std::optional<std::string> m_answer;
    std::optional<double> m_delay;
    std::optional<int> m_from;
    std::optional<int> m_times;
    std::optional<double> m_probability;
    bool m_hang = false;
};

class BenchClearCommand : public BenchControlCommand
{
public:
    explicit BenchClearCommand(CLI::App &app)
        : BenchControlCommand(app)
    {
        app.add_option("fault", m_fault, "Number that 'fault' has printed; without one all faults are removed");
    }

protected:
    QJsonObject request() const override
    {
        QJsonObject request{{QStringLiteral("do"), QStringLiteral("clear")}};
        if (m_fault)
            request.insert(QStringLiteral("fault"), *m_fault);
        return request;
    }

private:
    std::optional<int> m_fault;
};

class BenchSetCommand : public BenchControlCommand
{
public:
    explicit BenchSetCommand(CLI::App &app)
        : BenchControlCommand(app)
    {
        addSensor(app, m_sensor)->required();
        app.add_option("values", m_values, "Settings, as SA_Key=value")->required()->check(Validators::notEmpty());
        app.footer("Changes settings at the sensor itself, as with its keys, while programs use it.\n\n"
                   "Example:\n  sondixqt bench set 1018001 SA_Measrate=4");
    }

protected:
    QJsonObject request() const override
    {
        QStringList pairs;
        for (const std::string &pair : m_values) {
            const QString text = QString::fromStdString(pair);
            const int equals = text.indexOf(QLatin1Char('='));
            if (equals <= 0)
                throw Failure{ExitCode::Usage, QStringLiteral("'%1' is no setting: write SA_Key=value").arg(text)};
            QString value = text.mid(equals + 1);
            const QLatin1Char quote('"');
            if (value.size() > 1 && value.startsWith(quote) && value.endsWith(quote)) // as 'set' takes a text
                value = value.mid(1, value.size() - 2);
            value.replace(QLatin1Char('\\'), QLatin1String("\\\\"))
                .replace(QLatin1Char('"'), QLatin1String("\\\""));
            pairs += text.left(equals + 1) + QLatin1Char('"') + value + QLatin1Char('"');
        }
        return {{QStringLiteral("do"), QStringLiteral("set")},
                {QStringLiteral("sensor"), QString::fromStdString(m_sensor)},
                {QStringLiteral("values"), pairs.join(QLatin1Char(' '))}};
    }

private:
    std::string m_sensor;
    std::vector<std::string> m_values;
};

class BenchStepCommand : public BenchControlCommand
{
public:
    explicit BenchStepCommand(CLI::App &app)
        : BenchControlCommand(app)
    {
        app.add_option("seconds", m_seconds, "Seconds of bench time")->required()->check(CLI::NonNegativeNumber);
    }

protected:
    QJsonObject request() const override
    {
        return {{QStringLiteral("do"), QStringLiteral("step")}, {QStringLiteral("seconds"), m_seconds}};
    }
    void tell(Console &console, const QJsonObject &answer) const override
    {
        console.print(QString::number(answer.value(QLatin1String("time")).toDouble(), 'g', 15));
    }

private:
    double m_seconds = 0.0;
};

template<typename T, typename... Arguments>
std::unique_ptr<Command> make(CLI::App &bench, CLI::App *&subcommand, const char *name, const char *description,
                              Arguments &&...arguments)
{
    subcommand = bench.add_subcommand(name, description);
    return std::make_unique<T>(*subcommand, std::forward<Arguments>(arguments)...);
}

} // namespace

std::unique_ptr<Command> makeBenchUnplugCommand(CLI::App &bench, CLI::App *&subcommand)
{
    return make<SensorControlCommand>(bench, subcommand, "unplug", "Unplug a sensor", QStringLiteral("unplug"));
}

std::unique_ptr<Command> makeBenchPlugCommand(CLI::App &bench, CLI::App *&subcommand)
{
    return make<SensorControlCommand>(bench, subcommand, "plug", "Plug a sensor in", QStringLiteral("plug"));
}

std::unique_ptr<Command> makeBenchTriggerCommand(CLI::App &bench, CLI::App *&subcommand)
{
    return make<SensorControlCommand>(bench, subcommand, "trigger", "Trigger a sensor once",
                                      QStringLiteral("trigger"));
}

std::unique_ptr<Command> makeBenchFaultCommand(CLI::App &bench, CLI::App *&subcommand)
{
    return make<BenchFaultCommand>(bench, subcommand, "fault",
                                   "Let calls to a sensor fail, and print the fault's number");
}

std::unique_ptr<Command> makeBenchClearCommand(CLI::App &bench, CLI::App *&subcommand)
{
    return make<BenchClearCommand>(bench, subcommand, "clear",
                                   "Remove a fault, or all of them and end hanging calls");
}

std::unique_ptr<Command> makeBenchSetCommand(CLI::App &bench, CLI::App *&subcommand)
{
    return make<BenchSetCommand>(bench, subcommand, "set", "Change settings at the sensor itself");
}

std::unique_ptr<Command> makeBenchStepCommand(CLI::App &bench, CLI::App *&subcommand)
{
    return make<BenchStepCommand>(bench, subcommand, "step", "Step a virtual clock, and print the bench time");
}
