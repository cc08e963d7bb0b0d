// SPDX-License-Identifier: MIT
#include "command.h"
#include "formatoptions.h"
#include "readsession.h"
#include "validators.h"

#include "shared/recorder.h"

#include <CLI/CLI.hpp>

#include <QFileInfo>
#include <QRegularExpression>
#include <QSet>

using namespace SondixQt;
using namespace SondixApp;

namespace {

constexpr double maxRotation = 365.0 * 24 * 3600;

struct FormatName
{
    const char *suffix;
    RecordFormat format;
};

constexpr FormatName formatNames[] = {
    {"csv", RecordFormat::Csv},          {"jsonl", RecordFormat::JsonLines}, {"json", RecordFormat::JsonLines},
    {"ndjson", RecordFormat::JsonLines}, {"npy", RecordFormat::Npy},
};

// FILE with \a part before its suffix: values.csv becomes values-part.csv.
QString withPart(const QString &file, const QString &part)
{
    const QString suffix = QLatin1Char('.') + QFileInfo(file).suffix();
    return file.left(file.size() - suffix.size()) + QLatin1Char('-') + part + suffix;
}

class RecordCommand : public Command
{
public:
    explicit RecordCommand(CLI::App &app)
    {
        m_sensor.addTo(app);
        app.add_option("MORE", m_more, "Addresses of further sensors");
        app.add_option(
               "-o,--output", m_output,
               "The file; its suffix is the format: .csv, .jsonl (JSON lines) or .npy (NumPy). For several "
               "sensors each file has the serial number before the suffix")
            ->check(Validators::notEmpty());
        m_read.addTo(app);
        m_format.addTo(app);
        app.add_flag("--no-head", m_withoutHead, "Leave out the head that describes sensor, signals and start");
        auto *append = app.add_flag("--append", m_append, "Continue an existing file, if it has the same columns");
        app.add_option("--rotate-size", m_rotateSize,
                       "Begin another file before this size is exceeded, in bytes or with k, M or G")
            ->check(Validators::size())
            ->excludes(append);
        app.add_option("--rotate-time", m_rotateSeconds, "Begin another file after this many seconds")
            ->check(Validators::seconds(maxRotation))
            ->excludes(append);
        app.add_flag("--follow", m_follow, "Show the values in the status line of the terminal");
        app.footer(
            app.get_footer() +
            "\nTimes are seconds since 1970-01-01 00:00 UTC, the same for all sensors of a recording.\n"
            "Examples (the last one runs until Ctrl-C):\n"
            "  sondixqt record TX270@RS232,port=COM3 -o values.csv --duration 2\n"
            "  sondixqt record TX270@RS232,port=COM3 CC430@TCP/IP,address=169.254.168.150 -o both.npy -n 1000\n"
            "  sondixqt record TX270@RS232,port=COM3 -o day.jsonl --rotate-size 100M --reconnect");
    }

    ExitCode run(Console &console, InterruptWatcher &interrupt) override
    {
        if (m_output.empty())
            throw Failure{ExitCode::Usage, QStringLiteral("no file is given; name it with -o")};
        Recorder::Plan plan;
        plan.path = QString::fromStdString(m_output);
        plan.format = format(plan.path);
        plan.options = m_format.options(plan.format);
        plan.columns.scaled = m_read.isScaled();
        plan.columns.raw = m_read.isRaw();
        plan.columns.number = true;
        plan.append = m_append;
        plan.withHead = !m_withoutHead;
        if (!m_rotateSize.empty())
            plan.rotateSize = Validators::sizeOf(m_rotateSize);
        plan.rotateSeconds = m_rotateSeconds;

        ReadSession session(console, interrupt, m_read);
        for (const SensorAddress &address : addresses(console, interrupt))
            session.open(address);
        QStringList names;
        for (const auto &source : session.sources())
            names += fileName(*source, plan.path, session.sources().size() > 1, names);
        for (size_t i = 0; i < session.sources().size(); ++i) {
            plan.path = names[static_cast<int>(i)];
            addRecorder(console, *session.sources()[i], plan);
        }
        return session.run(true, m_follow);
    }

private:
    static RecordFormat format(const QString &file)
    {
        const QString suffix = QFileInfo(file).suffix().toLower();
        for (const FormatName &name : formatNames)
            if (suffix == QLatin1String(name.suffix))
                return name.format;
        throw Failure{
            ExitCode::Usage,
            QStringLiteral("the suffix of '%1' is no format; the formats are .csv, .jsonl and .npy").arg(file)};
    }

    QVector<SensorAddress> addresses(Console &console, InterruptWatcher &interrupt)
    {
        QVector<SensorAddress> further;
        for (const QString &word : m_sensor.wordsAfterSensor(m_more)) {
            QString problem;
            const auto address = SensorAddress::parse(word, &problem);
            if (!address)
                throw Failure{ExitCode::Usage, problem};
            further += *address;
        }
        further.prepend(m_sensor.resolve(console, interrupt));
        return further;
    }

    static QString fileName(const ReadSource &source, const QString &file, bool isOneOfMany,
                            const QStringList &used)
    {
        if (!isOneOfMany)
            return file;
        QString part = source.serialNumber.isEmpty() ? sensorName(source.address.type, true) : source.serialNumber;
        part.replace(QRegularExpression(QStringLiteral("[^A-Za-z0-9_.]")), QStringLiteral("_"));
        QString name = withPart(file, part);
        for (int number = 2; used.contains(name); ++number)
            name = withPart(file, QStringLiteral("%1-%2").arg(part).arg(number));
        return name;
    }

    void addRecorder(Console &console, ReadSource &source, Recorder::Plan plan)
    {
        plan.columns.frame = source.frame;
        auto recorder = std::make_unique<Recorder>(plan, source.head(), *source.errors, &m_clock);
        if (!recorder->open())
            throw Failure{ExitCode::Failed, recorder->problem()};
        if (!recorder->repair().isEmpty())
            console.note(recorder->repair());
        source.sink = std::move(recorder);
    }

    SensorOptions m_sensor;
    std::vector<std::string> m_more;
    std::string m_output;
    ReadOptions m_read;
    FormatArguments m_format;
    SharedClock m_clock;
    std::string m_rotateSize;
    std::optional<double> m_rotateSeconds;
    bool m_withoutHead = false;
    bool m_append = false;
    bool m_follow = false;
};

} // namespace

std::unique_ptr<Command> makeRecordCommand(CLI::App &app, CLI::App *&subcommand)
{
    subcommand = app.add_subcommand("record", "Record sensors into files");
    return std::make_unique<RecordCommand>(*subcommand);
}
