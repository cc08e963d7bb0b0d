// SPDX-License-Identifier: MIT
#include "report.h"
#include "simulatedsensors.h"

#include "shared/recorder.h"

#include <SondixQt/SondixQt>
#include <SondixSimulator/control.h>

#include <QTemporaryDir>

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

using namespace SondixApp;
using namespace SondixQt;
using namespace std::chrono_literals;

namespace {

bool isReading(const SensorReader &reader)
{
    return reader.state() == SensorReader::Reading;
}

/// Readers of the first sensors of the bench.
class Readers
{
public:
    explicit Readers(int count, std::chrono::milliseconds interval = 50ms)
    {
        for (int i = 0; i < count; ++i) {
            m_readers.push_back(std::make_unique<SensorReader>(addressOf(i)));
            SensorReader &reader = *m_readers.back();
            reader.setDeliveryInterval(interval);
            QObject::connect(&reader, &SensorReader::blockReady, &reader,
                             [this](const DataBlock &block) { m_frames += block.frameCount(); });
            reader.start();
        }
    }
    bool areReading() const
    {
        return waitFor([this] {
            return std::all_of(m_readers.begin(), m_readers.end(),
                               [](const auto &reader) { return isReading(*reader); });
        });
    }
    SensorReader &first() { return *m_readers.front(); }
    qint64 frames() const { return m_frames; }

private:
    std::vector<std::unique_ptr<SensorReader>> m_readers;
    qint64 m_frames = 0;
};

/// The share of a core above that of a bare loop.
void cost(benchmark::State &state)
{
    loadSensors(1, 100000, 8);
    for (auto _ : state) {
        const double bare = shareOfBareLoop();
        Readers readers(1);
        if (!readers.areReading()) {
            state.SkipWithError("the reader does not read");
            return;
        }
        const double share = coreShare();
        state.counters["bare"] = 100.0 * bare;
        state.counters["reader"] = 100.0 * share;
        state.counters["above"] = 100.0 * (share - bare);
        state.counters["lost"] = static_cast<double>(lostFrames(1));
    }
}

void manyReaders(benchmark::State &state)
{
    constexpr int sensors = 64;
    loadSensors(sensors, 10000, 2);
    for (auto _ : state) {
        Readers readers(sensors);
        if (!readers.areReading()) {
            state.SkipWithError("not all readers read");
            return;
        }
        state.counters["share"] = 100.0 * coreShare();
        state.counters["lost"] = static_cast<double>(lostFrames(sensors));
    }
}

/// The time from the measurement of a value to its delivery: of the first value of each block, which waits longest.
void latency(benchmark::State &state)
{
    const std::chrono::milliseconds interval(state.range(0));
    loadSensors(1, 10000, 2);
    for (auto _ : state) {
        Readers readers(1, interval);
        std::vector<double> ages;
        QObject::connect(&readers.first(), &SensorReader::blockReady, &readers.first(),
                         [&ages](const DataBlock &block) {
                             if (block.time())
                                 ages.push_back(1000.0 * (sondixsim::now() - *block.time()));
                         });
        if (!waitFor([&] { return ages.size() > 20; })) {
            state.SkipWithError("no blocks are delivered");
            return;
        }
        std::sort(ages.begin() + 1, ages.end()); // without the one that was measured while the reader was starting
        state.counters["above"] = ages[ages.size() / 2] - static_cast<double>(interval.count());
    }
}

/// Reads and writes in the same process, as the tool does.
void recordWhileReading(benchmark::State &state, RecordFormat format)
{
    constexpr int values = 8;
    loadSensors(1, 100000, values);
    for (auto _ : state) {
        const QTemporaryDir folder;
        Readers readers(1);
        if (!readers.areReading()) {
            state.SkipWithError("the reader does not read");
            return;
        }
        SensorReader &reader = readers.first();
        if (reader.frame().datarate != 100000.0) {
            state.SkipWithError("the sensor reports another rate");
            return;
        }
        Recorder::Plan plan;
        plan.path = folder.filePath(QStringLiteral("values"));
        plan.format = format;
        plan.columns.number = true;
        plan.columns.frame = reader.frame();
        ErrorValues errors([](double) { return QString(); });
        SharedClock clock;
        Recorder recorder(plan, RecordHead(), errors, &clock);
        const qint64 before = reader.framesDelivered();
        bool written = recorder.open();
        QObject::connect(&reader, &SensorReader::blockReady, &reader,
                         [&](const DataBlock &block) { written = recorder.write(block) && written; });
        QObject::connect(&reader, &SensorReader::gapDetected, &reader,
                         [&](const DataGap &gap) { written = recorder.write(gap) && written; });
        const double share = coreShare();
        reader.stop();
        if (!waitFor([&] { return reader.state() == SensorReader::Stopped; }) || !written || !recorder.finish() ||
            recorder.framesWritten() != reader.framesDelivered() - before) {
            state.SkipWithError("not all frames were written");
            return;
        }
        const auto lost = static_cast<double>(lostFrames(1)) + static_cast<double>(reader.framesLost());
        state.counters["share"] = 100.0 * share;
        state.counters["frames"] = static_cast<double>(recorder.framesWritten());
        state.counters["lost"] = reader.hasUnknownGaps() ? std::max(lost, 1.0) : lost;
    }
}

const bool readerBenchesAreRegistered = [] {
    benchmark::RegisterBenchmark("reader, 100 kHz x 8", cost)->Iterations(1)->UseRealTime();
    report::claim("reader, 100 kHz x 8: a bare loop", "% core", {},
                  report::counter("reader, 100 kHz x 8", "bare"));
    report::claim("reader, 100 kHz x 8: above a bare loop", "% core", 2.0,
                  report::counter("reader, 100 kHz x 8", "above"));
    report::claim("reader, 100 kHz x 8: lost frames", "", 0.0, report::largest("reader, 100 kHz x 8", "lost"));
    const std::pair<const char *, RecordFormat> formats[] = {
        {"CSV", RecordFormat::Csv}, {"JSON", RecordFormat::JsonLines}, {"NPY", RecordFormat::Npy}};
    for (const auto &[word, format] : formats) {
        const std::string name = std::string("record 100 kHz x 8 as ") + word;
        benchmark::RegisterBenchmark(name.c_str(), recordWhileReading, format)->Iterations(1)->UseRealTime();
        report::claim(name + ", with the simulator", "% core", {}, report::counter(name, "share"));
        report::claim(name + ": lost frames", "", 0.0, report::largest(name, "lost"));
    }
    benchmark::RegisterBenchmark("64 readers, 10 kHz x 2", manyReaders)->Iterations(1)->UseRealTime();
    report::claim("64 readers, 10 kHz x 2, with the simulator", "% core", 50.0,
                  report::counter("64 readers, 10 kHz x 2", "share"));
    report::claim("64 readers, 10 kHz x 2: lost frames", "", 0.0,
                  report::largest("64 readers, 10 kHz x 2", "lost"));
    for (const int interval : {1, 10, 50}) {
        benchmark::RegisterBenchmark("reader, latency", latency)->Arg(interval)->Iterations(1)->UseRealTime();
        const std::string name = "reader, latency/" + std::to_string(interval);
        report::claim(name + " ms: above the interval", "ms", 5.0, report::counter(name, "above"));
    }
    return true;
}();

} // namespace
