// SPDX-License-Identifier: MIT
#include "paired.h"
#include "report.h"

#include "shared/recorder.h"

#include <QTemporaryDir>

#include <algorithm>
#include <array>
#include <charconv>
#include <string>

using namespace SondixApp;
using namespace SondixQt;

namespace {

constexpr int signalCount = 8;
constexpr int frameCount = 5000; // what 100 kHz bring in 50 ms
constexpr double interval = 1.0e-5;

/// A block of values with as many digits as a sensor of 16 bits has, and a recorder for it.
struct Recording
{
    explicit Recording(RecordFormat format)
    {
        QVector<double> scaled;
        QVector<qint32> raw;
        plan.format = format;
        plan.path = folder.filePath(QStringLiteral("values"));
        plan.withHead = false;
        plan.columns.number = true;
        plan.columns.frame.valuesPerFrame = signalCount;
        for (int i = 0; i < signalCount; ++i) {
            SignalInfo info;
            info.scaledName = QStringLiteral("Distance %1").arg(i);
            info.scaledUnit = QStringLiteral("mm");
            plan.columns.frame.signals += info;
        }
        for (int i = 0; i < frameCount * signalCount; ++i) {
            raw += (i * 7919) % 65536;
            scaled += 10.0 * raw.last() / 65535.0;
        }
        block = DataBlock(0, 0, signalCount, scaled, raw, 1234.5, interval);
        clock.axis = TimeAxis{1'700'000'000'000'000};
        recorder = std::make_unique<Recorder>(plan, RecordHead(), errors, &clock);
    }

    QTemporaryDir folder;
    Recorder::Plan plan;
    SharedClock clock;
    ErrorValues errors{[](double) { return QString(); }};
    DataBlock block;
    std::unique_ptr<Recorder> recorder;
};

/// Converts all numbers of the block with std::to_chars.
int convertAll(const DataBlock &block)
{
    static std::array<char, 64> text;
    int sum = 0;
    const auto convert = [&sum](auto number) {
        sum += static_cast<int>(std::to_chars(text.data(), text.data() + text.size(), number).ptr - text.data());
        benchmark::DoNotOptimize(text);
    };
    const double *value = block.scaledData().constData();
    for (int frame = 0; frame < frameCount; ++frame) {
        convert(block.firstFrame() + frame);
        convert(1.7e9 + 1234.5 + frame * interval);
        for (int i = 0; i < signalCount; ++i)
            convert(*value++);
    }
    return sum;
}

void writeText(benchmark::State &state, RecordFormat format)
{
    Recording recording(format);
    if (!recording.recorder->open())
        return state.SkipWithError("cannot create the file");
    runPaired(
        state, [&] { return convertAll(recording.block); },
        [&] { return recording.recorder->write(recording.block); });
}

void writeArray(benchmark::State &state)
{
    Recording recording(RecordFormat::Npy);
    OutputFile file(recording.folder.filePath(QStringLiteral("bytes")));
    if (!recording.recorder->open() || !file.open())
        return state.SkipWithError("cannot create the files");
    // The same bytes, in pieces of the same size.
    RecordColumns &columns = recording.plan.columns;
    const auto writer = makeFrameWriter(RecordFormat::Npy, columns, {}, recording.errors);
    TextBuffer bytes;
    writer->addFrames(bytes, recording.block, 0, frameCount);
    const int piece = Recorder::sliceSize / writer->frameSize() * writer->frameSize();
    const auto direct = [&] {
        bool written = true;
        for (int begin = 0; begin < bytes.data().size(); begin += piece)
            written = file.write(QByteArray::fromRawData(bytes.data().constData() + begin,
                                                         std::min(piece, bytes.data().size() - begin))) &&
                      written;
        return written;
    };
    runPaired(state, direct, [&] { return recording.recorder->write(recording.block); });
}

const bool recordBenchesAreRegistered = [] {
    benchmark::RegisterBenchmark("record CSV",
                                 [](benchmark::State &state) { writeText(state, RecordFormat::Csv); });
    benchmark::RegisterBenchmark("record JSON",
                                 [](benchmark::State &state) { writeText(state, RecordFormat::JsonLines); });
    benchmark::RegisterBenchmark("record NPY", writeArray);
    report::claim("CSV file: to std::to_chars of the same numbers", "", 1.5,
                  report::counter("record CSV", "ratio"));
    report::claim("JSON file: to std::to_chars of the same numbers", "", 1.5,
                  report::counter("record JSON", "ratio"));
    report::claim("NPY file: to writing the same bytes", "", 1.2, report::counter("record NPY", "ratio"));
    report::claim("CSV file, a core at 100 kHz x 8", "%", std::nullopt, [](const report::Results &results) {
        const auto time = report::counter("record CSV", "library")(results);
        return time ? std::optional(*time / (frameCount * interval * 1.0e9) * 100.0) : std::nullopt;
    });
    return true;
}();

} // namespace
