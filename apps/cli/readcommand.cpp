// SPDX-License-Identifier: MIT
#include "command.h"
#include "json.h"
#include "sensoroptions.h"
#include "validators.h"
#include "valuewriter.h"

#include "shared/framereader.h"
#include "shared/outputfile.h"

#include <CLI/CLI.hpp>

#include <QElapsedTimer>
#include <QEventLoop>

#include <algorithm>
#include <optional>

using namespace SondixQt;
using namespace SondixApp;

namespace {

constexpr long long maxFrames = 1'000'000'000'000;
constexpr double maxDuration = 365.0 * 24 * 3600;
constexpr double maxSilence = 24 * 3600;

QString counted(qint64 number, const char *word)
{
    return QStringLiteral("%1 %2%3").arg(number).arg(QLatin1String(word),
                                                     number == 1 ? QString() : QStringLiteral("s"));
}

// The destination of the lines: stdout, or a file that gets its name when it is complete.
class Sink
{
public:
    Sink(Console &console, const QString &path)
        : m_console(console)
    {
        if (path.isEmpty() || path == QLatin1String("-"))
            return;
        m_file.emplace(path);
        if (!m_file->open())
            throw writeFailure();
    }

    bool write(const QByteArray &data)
    {
        return m_file ? m_file->write(data) : m_console.write(data) && m_console.flush();
    }
    void finish()
    {
        if (m_file && !m_file->commit())
            throw writeFailure();
    }
    // Keeps the frames that were read before an error and returns the part of the error message that says where.
    QString keepPart(qint64 frames)
    {
        if (!m_file)
            return {};
        if (frames == 0) {
            m_file->discard();
            return {};
        }
        m_file->close();
        return QStringLiteral("; what was read before, %1, is in '%2'")
            .arg(counted(frames, "frame"), m_file->currentName());
    }
    bool isFile() const { return m_file.has_value(); }

    Failure writeFailure() const
    {
        return {ExitCode::Failed,
                m_file ? QStringLiteral("cannot write '%1': %2").arg(m_file->path(), m_file->errorString())
                       : QStringLiteral("cannot write to standard output: %1").arg(m_console.outputProblem())};
    }

private:
    Console &m_console;
    std::optional<OutputFile> m_file;
};

QString summary(qint64 frames, int valuesPerFrame, double seconds, const QMap<QString, qint64> &errors)
{
    QString text = QStringLiteral("%1 of %2 read in %3 s")
                       .arg(counted(frames, "frame"), counted(valuesPerFrame, "value"))
                       .arg(seconds, 0, 'f', 1);
    qint64 total = 0;
    QStringList parts;
    for (auto it = errors.cbegin(); it != errors.cend(); ++it) {
        total += it.value();
        parts += QStringLiteral("%1: %2").arg(it.key(), counted(it.value(), "time"));
    }
    text += QStringLiteral(", ") + counted(total, "error value");
    return parts.isEmpty() ? text : text + QStringLiteral(" (%1)").arg(parts.join(QStringLiteral(", ")));
}

class ReadCommand : public Command
{
public:
    explicit ReadCommand(CLI::App &app)
    {
        m_sensor.addTo(app);
        app.add_option("-n,--frames", m_plan.frames, "Stop after this many frames, at most 10^12")
            ->check(Validators::count(maxFrames));
        app.add_option("-d,--duration", m_plan.seconds, "Stop after this many seconds, at most a year")
            ->check(Validators::seconds(maxDuration));
        app.add_option("--silence", m_plan.silence,
                       "Give up if no frame arrives for this many seconds, at most a day")
            ->check(Validators::seconds(maxSilence))
            ->capture_default_str();
        app.add_flag("--raw", m_raw, "Print raw values as the sensor sends them; together with --scaled both");
        app.add_flag("--scaled", m_scaled, "Print scaled values in their units (default)");
        auto *csv = app.add_option("--csv", m_csv, "Write CSV to this file, or to stdout with -")
                        ->check(Validators::notEmpty());
        app.add_flag("--json", m_json, "Print one JSON object per line, one line per frame")->excludes(csv);
        app.footer(app.get_footer() + "\nExamples (the second one runs until Ctrl-C):\n"
                                      "  sondixqt read TX270@RS232,port=COM3 --duration 2 --csv values.csv\n"
                                      "  sondixqt read TX270@RS232,port=COM3");
    }

    ExitCode run(Console &console, InterruptWatcher &interrupt) override
    {
        const SensorAddress address = m_sensor.resolve(console, interrupt);
        Sink sink(console, QString::fromStdString(m_csv));
        const auto instance = openSensor(address);
        ValueWriter::Columns columns;
        columns.frame = describedFrame(*instance);
        columns.raw = m_raw;
        columns.scaled = m_scaled || !m_raw;
        double rateKhz = 0.0;
        QString text;
        if (instance->getSampleRateInKhz(&rateKhz, &text) != NoError)
            console.note(QStringLiteral("the sensor does not report its sample rate: %1").arg(text));

        // The first call fetches all error texts from the sensor, which would take too long while frames arrive.
        instance->getErrorValueText(0.0);
        ValueWriter writer(format(), columns,
                           [&instance](double value) { return instance->getErrorValueText(value); });
        FrameReader reader(*instance, columns.frame.valuesPerFrame, rateKhz);
        QElapsedTimer clock;
        clock.start();
        const FrameReader::End end = readAll(console, interrupt, reader, writer, sink);
        instance->close();
        console.note(summary(reader.framesRead(), columns.frame.valuesPerFrame,
                             static_cast<double>(clock.elapsed()) / 1000.0, writer.errorCounts()));
        return conclude(end, reader, sink);
    }

private:
    ValueWriter::Format format() const
    {
        if (m_json)
            return ValueWriter::JsonLines;
        return m_csv.empty() ? ValueWriter::Table : ValueWriter::Csv;
    }

    static TransmittedDataInfo describedFrame(SensorInstance &instance)
    {
        TransmittedDataInfo frame;
        QString text;
        if (instance.transmittedDataInfo(frame, &text) != NoError)
            throw Failure{ExitCode::Refused,
                          QStringLiteral("the sensor does not describe its data: %1").arg(text)};
        if (frame.valuesPerFrame < 1 || frame.signalList().size() != frame.valuesPerFrame)
            throw Failure{ExitCode::Refused,
                          QStringLiteral("the sensor reports %1 values per frame").arg(frame.valuesPerFrame)};
        return frame;
    }

    FrameReader::End readAll(Console &console, InterruptWatcher &interrupt, FrameReader &reader,
                             ValueWriter &writer, Sink &sink)
    {
        QEventLoop loop;
        FrameReader::End result = FrameReader::Reached;
        m_written = sink.write(writer.header());
        QObject::connect(&reader, &FrameReader::framesArrived, &loop, [&](const FrameBlock &block) {
            m_written = m_written && sink.write(writer.lines(block));
            if (!m_written)
                reader.stop();
            else if (sink.isFile())
                console.status(QStringLiteral("%1 frames").arg(block.firstFrame + block.frames));
        });
        QObject::connect(&reader, &FrameReader::finished, &loop, [&](FrameReader::End end) {
            result = end;
            loop.quit();
        });
        QObject::connect(&interrupt, &InterruptWatcher::interrupted, &reader, &FrameReader::stop);
        if (m_written) {
            reader.start(m_plan);
            if (InterruptWatcher::isInterrupted())
                reader.stop();
            else
                loop.exec();
        }
        console.status(QString());
        return result;
    }

    ExitCode conclude(FrameReader::End end, const FrameReader &reader, Sink &sink) const
    {
        if (!m_written)
            throw sink.writeFailure();
        switch (end) {
        case FrameReader::Reached:
            sink.finish();
            if (reader.framesLost() > 0)
                throw Failure{ExitCode::DataLost,
                              QStringLiteral("%1 frames were lost because they were not read in time")
                                  .arg(reader.framesLost())};
            return ExitCode::Done;
        case FrameReader::Stopped:
            sink.finish();
            return ExitCode::Interrupted;
        case FrameReader::Silent:
            throw Failure{ExitCode::TimedOut, QStringLiteral("no values arrived for %1 s%2")
                                                  .arg(m_plan.silence)
                                                  .arg(sink.keepPart(reader.framesRead()))};
        case FrameReader::Failed:
            break;
        }
        throw Failure{
            ExitCode::Refused,
            QStringLiteral("reading failed: %1%2").arg(reader.problem(), sink.keepPart(reader.framesRead()))};
    }

    SensorOptions m_sensor;
    FrameReader::Plan m_plan;
    std::string m_csv;
    bool m_raw = false;
    bool m_scaled = false;
    bool m_json = false;
    bool m_written = true;
};

} // namespace

std::unique_ptr<Command> makeReadCommand(CLI::App &app, CLI::App *&subcommand)
{
    subcommand = app.add_subcommand("read", "Open a sensor and read its values");
    return std::make_unique<ReadCommand>(*subcommand);
}
