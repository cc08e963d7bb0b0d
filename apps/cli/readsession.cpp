// SPDX-License-Identifier: MIT
#include "readsession.h"

#include "validators.h"

#include <SondixQt/errorvalue.h>

#include <CLI/CLI.hpp>

#include <QElapsedTimer>
#include <QEventLoop>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>

using namespace SondixQt;
using namespace SondixApp;

namespace {

constexpr long long maxFrames = 1'000'000'000'000;
constexpr double maxDuration = 365.0 * 24 * 3600;
constexpr double maxSilence = 24 * 3600;

std::chrono::milliseconds milliseconds(double seconds)
{
    return std::chrono::milliseconds(std::llround(seconds * 1000.0));
}

TransmittedDataInfo describedFrame(SensorInstance &instance)
{
    TransmittedDataInfo frame;
    QString text;
    if (instance.transmittedDataInfo(frame, &text) != NoError)
        throw Failure{ExitCode::Refused, QStringLiteral("the sensor does not describe its data: %1").arg(text)};
    if (frame.valuesPerFrame < 1 || frame.signalList().size() != frame.valuesPerFrame)
        throw Failure{ExitCode::Refused,
                      QStringLiteral("the sensor reports %1 values per frame").arg(frame.valuesPerFrame)};
    return frame;
}

QString summary(const ReadSource &source)
{
    const ReadRun &run = *source.run;
    QString text = QStringLiteral("%1 of %2 read in %3 s")
                       .arg(counted(run.framesRead(), "frame"), counted(source.frame.valuesPerFrame, "value"))
                       .arg(run.secondsRead(), 0, 'f', 1);
    qint64 total = 0;
    QStringList parts;
    const QMap<QString, qint64> errors = source.errors->counts();
    for (auto it = errors.cbegin(); it != errors.cend(); ++it) {
        total += it.value();
        parts += QStringLiteral("%1: %2").arg(it.key(), counted(it.value(), "time"));
    }
    text += QStringLiteral(", ") + counted(total, "error value");
    return parts.isEmpty() ? text : text + QStringLiteral(" (%1)").arg(parts.join(QStringLiteral(", ")));
}

// Closes what was written before an error, and returns the part of the error message that says where it is.
QString kept(FrameSink &sink)
{
    const bool isKept = sink.keep();
    if (!isKept)
        return QStringLiteral("; %1").arg(sink.problem());
    if (sink.framesWritten() == 0 || sink.place().isEmpty())
        return {};
    return QStringLiteral("; what was read before, %1, is in '%2'")
        .arg(counted(sink.framesWritten(), "frame"), sink.place());
}

QString valuesText(const ReadSource &source)
{
    const DataBlock &last = source.run->lastFrame();
    QStringList values;
    for (int i = 0; i < last.valuesPerFrame(); ++i) {
        const double value = last.scaled(0, i);
        const QString unit = source.frame.signalList().value(i).scaledUnit;
        values += isErrorValue(value)
                      ? source.instance->getErrorValueText(value).simplified()
                      : QStringLiteral("%1 %2").arg(QString::number(value, 'g', 7), unit).trimmed();
    }
    return values.join(QStringLiteral(", "));
}

} // namespace

void ReadOptions::addTo(CLI::App &app)
{
    app.add_option("-n,--frames", m_frames, "Stop after this many frames, at most 10^12")
        ->check(Validators::count(maxFrames));
    app.add_option("-d,--duration", m_seconds, "Stop after this many seconds, at most a year")
        ->check(Validators::seconds(maxDuration));
    app.add_option(
           "--silence", m_silence,
           "Give up if no frame arrives for this many seconds, at most a day (default: 5; never if the sensor "
           "waits for a trigger)")
        ->check(Validators::seconds(maxSilence));
    auto *reconnect = app.add_flag("--reconnect", m_reconnect,
                                   "Open the sensor again when it fails or is silent, until it answers");
    app.add_option("--give-up", m_giveUp, "With --reconnect: give up after this many seconds without the sensor")
        ->check(Validators::seconds(maxDuration))
        ->needs(reconnect);
    app.add_flag("--raw", m_raw, "Raw values as the sensor sends them; together with --scaled both");
    app.add_flag("--scaled", m_scaled, "Scaled values in their units (default)");
}

ReadRun::Plan ReadOptions::plan(bool isTriggered) const
{
    ReadRun::Plan plan;
    plan.frames = m_frames ? std::optional<qint64>(*m_frames) : std::nullopt;
    plan.seconds = m_seconds;
    if (!m_reconnect && (m_silence || !isTriggered))
        plan.silence = silence();
    plan.isTriggerSilence = m_silence.has_value();
    return plan;
}

std::optional<Reconnect> ReadOptions::reconnect() const
{
    if (!m_reconnect)
        return std::nullopt;
    Reconnect reconnect;
    reconnect.silence = milliseconds(silence());
    if (m_giveUp)
        reconnect.giveUpAfter = milliseconds(*m_giveUp);
    return reconnect;
}

// A thread that is still waiting in the sensor-access library uses the instance.
ReadSource::~ReadSource()
{
    run.reset();
    const bool isHanging =
        reader && reader->state() != SensorReader::Stopped && reader->state() != SensorReader::Failed;
    reader.reset();
    if (isHanging)
        (void)instance.release();
}

QString ReadSource::name() const
{
    const QString model = sensorName(address.type, true);
    return serialNumber.isEmpty() ? model : QStringLiteral("%1 %2").arg(model, serialNumber);
}

RecordHead ReadSource::head() const
{
    RecordHead head;
    head.program = QStringLiteral("sondixqt " SONDIXQT_VERSION);
    head.address = address.toString();
    head.sensors = instance->getInfoParameters();
    head.rate = rate;
    return head;
}

ReadSession::ReadSession(Console &console, InterruptWatcher &interrupt, const ReadOptions &options)
    : m_console(console)
    , m_interrupt(interrupt)
    , m_options(options)
{
}

ReadSource &ReadSession::open(const SensorAddress &address)
{
    auto source = std::make_unique<ReadSource>();
    source->address = address;
    source->instance = openSensor(address);
    SensorInstance &instance = *source->instance;
    source->serialNumber = instance.getInfoParameter(QStringLiteral("SA_SerialNumber"), 1).toString();
    source->frame = describedFrame(instance);
    double kiloHertz = 0.0;
    QString text;
    if (instance.getSampleRateInKhz(&kiloHertz, &text) != NoError)
        m_console.note(QStringLiteral("the sensor does not report its sample rate: %1").arg(text));
    for (const double hertz : {kiloHertz * 1000.0, source->frame.datarate})
        if (!source->rate && std::isfinite(hertz) && hertz > 0.0)
            source->rate = hertz;
    // Fetches all error texts, which must not happen while the thread of the reader uses the instance.
    instance.getErrorValueText(0.0);
    source->errors =
        std::make_unique<ErrorValues>([&instance](double value) { return instance.getErrorValueText(value); });
    m_sources.push_back(std::move(source));
    return *m_sources.back();
}

void ReadSession::start(ReadSource &source, QEventLoop &loop)
{
    constexpr qint64 queuedValues = 8'388'608;
    source.reader = std::make_unique<SensorReader>(*source.instance);
    source.reader->setQueueLimit(queuedValues);
    source.reader->setReconnect(m_options.reconnect());
    source.run = std::make_unique<ReadRun>(*source.reader, *source.sink, source.frame,
                                           m_options.plan(source.instance->isTriggerEnabled()));
    QObject::connect(source.run.get(), &ReadRun::finished, &loop, [this, &source, &loop] {
        if (source.run->end() == ReadRun::ReadFailed && m_running > 1)
            m_console.error(QStringLiteral("%1reading failed: %2").arg(label(source), source.run->problem()));
        if (--m_running == 0)
            loop.quit();
    });
    QObject::connect(&m_interrupt, &InterruptWatcher::interrupted, source.run.get(), &ReadRun::stop);
    ++m_running;
}

ExitCode ReadSession::run(bool withStatus, bool follow)
{
    constexpr int statusInterval = 40;
    QEventLoop loop;
    QElapsedTimer sinceStatus;
    for (const auto &source : m_sources) {
        start(*source, loop);
        QObject::connect(source->run.get(), &ReadRun::advanced, &loop, [&] {
            if (!withStatus || (sinceStatus.isValid() && sinceStatus.elapsed() < statusInterval))
                return;
            sinceStatus.start();
            m_console.status(status(follow));
        });
    }
    for (const auto &source : m_sources)
        source->run->start();
    if (InterruptWatcher::isInterrupted())
        for (const auto &source : m_sources)
            source->run->stop();
    loop.exec();
    if (withStatus)
        m_console.status(status(follow));
    m_console.status(QString());
    return conclude();
}

QString ReadSession::label(const ReadSource &source) const
{
    return m_sources.size() > 1 ? source.name() + QStringLiteral(": ") : QString();
}

QString ReadSession::status(bool follow) const
{
    QStringList parts;
    for (const auto &source : m_sources) {
        QString part = label(*source);
        if (follow && !source->run->lastFrame().isEmpty())
            part += valuesText(*source) + QStringLiteral(", ");
        part += counted(source->run->framesRead(), "frame");
        if (!source->run->losses().isEmpty())
            part += QStringLiteral(", ") + source->run->losses().brief();
        if (source->reader->state() == SensorReader::Reconnecting)
            part += QStringLiteral(", reconnecting");
        parts += part;
    }
    return parts.join(QStringLiteral(" | "));
}

ExitCode ReadSession::conclude()
{
    for (const auto &source : m_sources)
        m_console.note(label(*source) + summary(*source));
    ExitCode code = ExitCode::Done;
    QStringList losses;
    for (const auto &source : m_sources) {
        const ExitCode one = concludeOne(*source);
        if (code == ExitCode::Done || code == ExitCode::Interrupted)
            code = one != ExitCode::Done ? one : code;
        if (source->run->isHanging())
            m_problems +=
                label(*source) + QStringLiteral("the last call in the sensor-access library does not return");
        if (const QString sentence = source->run->losses().sentence(); !sentence.isEmpty())
            losses += label(*source) + sentence;
    }
    for (const auto &source : m_sources)
        if (source->reader->state() == SensorReader::Stopped)
            source->instance->close();
    if (!losses.isEmpty()) {
        if (code == ExitCode::Done)
            code = ExitCode::DataLost;
        m_problems += losses.join(QStringLiteral("; "));
    }
    if (m_problems.isEmpty())
        return code;
    const QString last = m_problems.takeLast();
    for (const QString &problem : qAsConst(m_problems))
        m_console.error(problem);
    throw Failure{code, last};
}

ExitCode ReadSession::concludeOne(ReadSource &source)
{
    FrameSink &sink = *source.sink;
    const ReadRun &run = *source.run;
    ReadRun::End end = run.end();
    QString problem = run.problem();
    if ((end == ReadRun::Reached || end == ReadRun::Stopped) && !sink.finish()) {
        m_problems += label(source) + sink.problem();
        return ExitCode::Failed;
    }
    switch (end) {
    case ReadRun::Running:
    case ReadRun::Reached:
        return ExitCode::Done;
    case ReadRun::Stopped:
        return ExitCode::Interrupted;
    case ReadRun::Silent:
        m_problems += label(source) +
                      QStringLiteral("no values arrived for %1 s%2").arg(m_options.silence()).arg(kept(sink));
        return ExitCode::TimedOut;
    case ReadRun::ReadFailed:
        m_problems += label(source) + QStringLiteral("reading failed: %1%2").arg(problem, kept(sink));
        return ExitCode::Refused;
    case ReadRun::WriteFailed:
        problem += kept(sink);
        if (const qint64 missing = run.framesRead() - sink.framesWritten(); missing > 0 && !sink.place().isEmpty())
            problem += QStringLiteral("; %1 behind them could not be written").arg(counted(missing, "frame"));
        m_problems += label(source) + problem;
        return ExitCode::Failed;
    }
    return ExitCode::Done;
}
