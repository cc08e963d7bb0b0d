// SPDX-License-Identifier: MIT
#pragma once

#include "recordings.h"

#include "shared/framewriter.h"
#include "shared/recorder.h"
#include "shared/recordingreader.h"

#include <SondixQt/errorvalue.h>

#include <QBuffer>

/// Recordings that are written in every way and read again.
namespace Recordings {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

struct Way
{
    RecordFormat format = RecordFormat::Csv;
    FormatOptions options;
    bool scaled = true;
    bool raw = false;
    bool withHead = true;
    bool number = true;
};

/// One frame as a recording should have it.
struct FlatFrame
{
    int run = 0;
    qint64 number = 0;
    double time = notANumber;
    QVector<double> scaled;
    QVector<qint32> raw;
};

/// All that a reader has delivered: frames one by one, and gaps with the number of frames before them.
struct Content
{
    QVector<FlatFrame> frames;
    QVector<std::pair<int, DataGap>> gaps;
    int largestBlock = 0;
};

inline void addItem(Content &content, const DataBlock &block)
{
    content.largestBlock = std::max(content.largestBlock, block.frameCount());
    for (int i = 0; i < block.frameCount(); ++i) {
        FlatFrame frame;
        frame.run = block.run();
        frame.number = block.firstFrame() + i;
        frame.time = block.frameTime(i).value_or(notANumber);
        for (int s = 0; s < block.valuesPerFrame(); ++s) {
            frame.scaled += block.scaled(i, s);
            frame.raw += block.raw(i, s);
        }
        content.frames += frame;
    }
}

inline void addItem(Content &content, const DataGap &gap)
{
    content.gaps += {content.frames.size(), gap};
}

inline Content contentOf(RecordingReader &reader)
{
    Content content;
    while (const auto item = reader.next())
        std::visit([&content](const auto &part) { addItem(content, part); }, *item);
    return content;
}

inline std::unique_ptr<QIODevice> bufferOf(const QByteArray &data)
{
    auto buffer = std::make_unique<QBuffer>();
    buffer->setData(data);
    buffer->open(QIODevice::ReadOnly);
    return buffer;
}

inline QString textOf(double value)
{
    return QStringLiteral("Text; of, %1").arg(errorValueKey(value));
}

inline DataBlock awkwardBlock()
{
    return DataBlock(
        0, 3, 2,
        {-0.0, 1.0e300, 5.0e-324, 0.1, -12345.678901234567, errorValue, -1.0e10 - 4.0, 7.0,
         std::numeric_limits<double>::infinity(), -9.9e9},
        {std::numeric_limits<qint32>::min(), std::numeric_limits<qint32>::max(), 0, -1, 5, 6, 7, 8, 9, 10},
        1000.25, 0.0005);
}

/// The blocks and gaps of a run with all that can happen.
inline QVector<RecordingReader::Item> eventfulRun()
{
    DataGap reported = gap(8, 4, DataGap::LibraryOverrun);
    reported.beginTime = 1000.252;
    reported.endTime = 1000.254;
    DataGap unknown = gap(112, std::nullopt, DataGap::Disconnected);
    const DataBlock irregular = DataBlock::withTimes(1, 0, 2, {1.0, 2.0, 3.0, 4.0, 5.0, 6.0}, {1, 2, 3, 4, 5, 6},
                                                     {2000.0, 2000.5, 2000.75});
    const DataBlock timeless(1, 3, 2, {1.5, 2.5, 3.5, 4.5}, {1, 2, 3, 4});
    return {block(0, 3, 1000.0),
            awkwardBlock(),
            reported,
            block(12, 100, 1000.254),
            unknown,
            irregular,
            timeless,
            block(5, 2, 2001.0, 0.001, 1)};
}

inline Content flat(const QVector<RecordingReader::Item> &items)
{
    Content content;
    for (const auto &item : items)
        std::visit([&content](const auto &part) { addItem(content, part); }, item);
    return content;
}

inline RecordColumns columnsOf(const Way &way)
{
    RecordColumns made = columns(way.scaled, way.raw, way.number);
    made.frame.signals[1].scaledName = QString::fromUtf8("Größe; \"B\", x");
    made.frame.signals[1].rawRangeMin = -5.0;
    return made;
}

inline RecordHead headOf()
{
    RecordHead head;
    head.program = "tests 1.0";
    head.address = "TX270@RS232,port=COM3";
    head.sensors = {{{"SA_Sensor", "TX270-10"}, {"SA_SerialNumber", "1018001"}},
                    {{"SA_Sensor", "Other"}, {"SA_SerialNumber", "7"}}};
    head.rate = 2000.0;
    head.start = QDateTime::fromString("2026-11-22T09:55:32.335Z", Qt::ISODateWithMs);
    return head;
}

struct Written
{
    QByteArray data;
    QByteArray notes;
};

inline Written written(const Way &way, const QVector<RecordingReader::Item> &items)
{
    QTemporaryDir folder;
    Recorder::Plan plan;
    plan.path = folder.filePath("file");
    plan.format = way.format;
    plan.options = way.options;
    plan.columns = columnsOf(way);
    plan.withHead = way.withHead;
    ErrorValues errors(textOf);
    Recorder recorder(plan, headOf(), errors);
    bool isOk = recorder.open();
    for (const auto &item : items)
        isOk = isOk && std::visit([&recorder](const auto &part) { return recorder.write(part); }, item);
    if (!isOk || !recorder.finish())
        qFatal("cannot write: %s", qPrintable(recorder.problem()));
    return {Recordings::contentOf(plan.path),
            QFile::exists(plan.path + ".jsonl") ? Recordings::contentOf(plan.path + ".jsonl") : QByteArray()};
}

inline std::unique_ptr<RecordingReader> makeReader(const Written &files)
{
    return std::make_unique<RecordingReader>(bufferOf(files.data),
                                             files.notes.isEmpty() ? nullptr : bufferOf(files.notes));
}

inline bool sameNumber(double a, double b)
{
    return (std::isnan(a) && std::isnan(b)) || (a == b && std::signbit(a) == std::signbit(b));
}

/// The first difference between the content that was written with the options \a way and what was read; empty if they
/// are equal.
inline QString difference(const Content &expected, const Content &read, const Way &way,
                          const RecordingReader &reader)
{
    const auto at = [](int i, const char *what) { return QStringLiteral("frame %1: %2").arg(i).arg(what); };
    if (expected.frames.size() != read.frames.size())
        return QStringLiteral("%1 frames").arg(read.frames.size());
    for (int i = 0; i < read.frames.size(); ++i) {
        const FlatFrame &want = expected.frames[i];
        const FlatFrame &have = read.frames[i];
        if (want.run != have.run || (way.number && want.number != have.number))
            return at(i, "number");
        if (std::isnan(want.time) != std::isnan(have.time) || std::fabs(want.time - have.time) > 1.6e-6)
            return at(i, "time");
        for (int s = 0; s < want.scaled.size(); ++s) {
            if (way.raw && want.raw[s] != have.raw[s])
                return at(i, "raw");
            const double value = have.scaled[s];
            if (!way.scaled) {
                if (value != want.raw[s])
                    return at(i, "raw as scaled");
            } else if (isErrorValue(want.scaled[s])) {
                const bool hasText = way.format != RecordFormat::Npy && way.options.errors == ErrorStyle::Text;
                if (!isErrorValue(value) || std::isnan(value) == hasText)
                    return at(i, "error");
                if (hasText && reader.errorText(value) != textOf(want.scaled[s]))
                    return at(i, "error text");
                if (hasText && way.format == RecordFormat::JsonLines && value != want.scaled[s])
                    return at(i, "error key");
            } else if (std::isinf(want.scaled[s]) && way.format == RecordFormat::JsonLines) {
                if (!std::isnan(value)) // JSON has no infinity
                    return at(i, "infinity");
            } else if (way.format == RecordFormat::JsonLines ? value != want.scaled[s]
                                                             : !sameNumber(value, want.scaled[s])) {
                // Qt reads "-0" as the integer 0.
                return at(i, "value");
            }
        }
    }
    return {};
}

/// A row of test data for each format.
inline void addFormats()
{
    QTest::addColumn<RecordFormat>("format");
    QTest::newRow("csv") << RecordFormat::Csv;
    QTest::newRow("json") << RecordFormat::JsonLines;
    QTest::newRow("npy") << RecordFormat::Npy;
}

} // namespace Recordings

Q_DECLARE_METATYPE(Recordings::Way)
Q_DECLARE_METATYPE(SondixApp::RecordFormat)
