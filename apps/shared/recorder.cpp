// SPDX-License-Identifier: MIT
#include "recorder.h"

#include <QFileInfo>

#include <algorithm>
#include <cstdlib>

using namespace SondixQt;

namespace SondixApp {

/// A file with its format.
struct Recorder::Part
{
    Part(const QString &path, std::unique_ptr<FrameWriter> w)
        : file(path)
        , writer(std::move(w))
    {
    }

    OutputFile file;
    std::unique_ptr<FrameWriter> writer;
    TextBuffer buffer;
    bool withColumns = true;
    QByteArray lead;
    qint64 toldSize = 0; // what the preamble tells of
};

Recorder::Recorder(const Plan &plan, const RecordHead &head, ErrorValues &errors, SharedClock *clock)
    : m_plan(plan)
    , m_head(head)
    , m_errors(errors)
    , m_clock(clock)
{
    m_head.isWallClock = clock != nullptr;
}

Recorder::~Recorder() = default;

std::unique_ptr<Recorder::Part> Recorder::makePart(RecordFormat format, const QString &path) const
{
    return std::make_unique<Part>(path, makeFrameWriter(format, m_plan.columns, m_plan.options, m_errors));
}

bool Recorder::open()
{
    return openNext();
}

QString Recorder::nextName() const
{
    if (!m_plan.rotateSize && !m_plan.rotateSeconds)
        return m_plan.path;
    const QFileInfo info(m_plan.path);
    const QString suffix = info.suffix().isEmpty() ? QString() : QLatin1Char('.') + info.suffix();
    const QString stem = m_plan.path.left(m_plan.path.size() - suffix.size());
    for (int number = 1;; ++number) {
        QString name = stem + QStringLiteral("-%1").arg(number, 4, 10, QLatin1Char('0')) + suffix;
        if (!QFileInfo::exists(name) && !QFileInfo::exists(name + QStringLiteral(".partial")))
            return name;
    }
}

bool Recorder::openNext()
{
    const QString path = nextName();
    m_data = makePart(m_plan.format, path);
    m_notes.reset();
    if (m_plan.format == RecordFormat::Npy && m_plan.withHead)
        m_notes = makePart(RecordFormat::JsonLines, path + QStringLiteral(".jsonl"));
    m_begun = false;
    m_framesInFile = 0;
    m_sinceOpen.start();
    return openPart(*m_data) && (!m_notes || openPart(*m_notes));
}

bool Recorder::openPart(Part &part)
{
    if (m_plan.append && QFileInfo::exists(part.file.path()))
        return resumePart(part);
    if (!part.file.open())
        return fail(part);
    if (m_plan.format == RecordFormat::Npy && part.file.isDirect()) {
        m_problem = QStringLiteral("cannot write '%1': .npy needs a file").arg(part.file.path());
        return false;
    }
    return true;
}

bool Recorder::resumePart(Part &part)
{
    const QString path = part.file.path();
    QFile existing(path);
    QString problem;
    if (!QFileInfo(path).isFile()) {
        problem = QStringLiteral("it is no file");
    } else if (!existing.open(QIODevice::ReadOnly)) {
        problem = existing.errorString();
    } else if (const auto resumption = part.writer->resume(existing, problem)) {
        existing.close();
        part.withColumns = !resumption->hasColumns;
        part.lead = resumption->lead;
        if (!resumption->repair.isEmpty())
            m_repair = QStringLiteral("'%1': %2").arg(path, resumption->repair);
        part.toldSize = -1;
        return (part.file.openToAppend(resumption->end) || fail(part)) && tell(part, resumption->end);
    }
    m_problem = QStringLiteral("cannot append to '%1': %2").arg(path, problem);
    return false;
}

// All times of a recording have the same offset, so that their differences are exact, unless the clock of the
// sensor-access library has another zero after a sensor was opened again.
void Recorder::setAxis(const DataBlock &block)
{
    constexpr qint64 otherZero = 1'000'000; // microseconds
    if (!m_clock || !block.time() || (m_axis && block.run() == m_run))
        return;
    const qint64 time = TimeAxis().microseconds(*block.time());
    const std::optional<qint64> wallClock = block.wallClockMicroseconds();
    if (!m_clock->axis && wallClock) {
        m_clock->axis = TimeAxis{*wallClock - time};
        m_clock->uncertainty = block.wallClockUncertainty();
    }
    m_run = block.run();
    m_axis = m_clock->axis;
    if (m_axis && wallClock && std::abs(*wallClock - time - m_axis->offset) > otherZero)
        m_axis = TimeAxis{*wallClock - time};
}

// The files get their head with the first frame, whose time is then known.
bool Recorder::begin(const DataBlock *block)
{
    if (block)
        setAxis(*block);
    for (Part *part : {m_data.get(), m_notes.get()})
        if (part && m_clock)
            part->writer->timeAxis() = m_axis.value_or(TimeAxis{0, false});
    if (m_begun)
        return true;
    m_begun = true;
    m_head.start = QDateTime::currentDateTimeUtc();
    if (block && block->time() && m_axis)
        m_head.start = QDateTime::fromMSecsSinceEpoch(m_axis->microseconds(*block->time()) / 1000, Qt::UTC);
    m_head.uncertainty = m_axis ? std::optional(m_clock->uncertainty) : std::nullopt;
    for (Part *part : {m_data.get(), m_notes.get()}) {
        if (!part)
            continue;
        part->buffer.clear();
        part->buffer.add(part->lead);
        part->writer->begin(part->buffer, m_plan.withHead ? &m_head : nullptr, part->withColumns);
        if (!put(*part))
            return false;
    }
    return true;
}

bool Recorder::write(const DataBlock &block)
{
    const int slice = std::max(1, sliceSize / std::max(1, m_data->writer->frameSize()));
    if (!begin(&block))
        return false;
    for (int first = 0; first < block.frameCount(); first += slice)
        if (!writeSlice(block, first, std::min(slice, block.frameCount() - first)))
            return false;
    return true;
}

bool Recorder::writeSlice(const DataBlock &block, int first, int count)
{
    m_data->buffer.clear();
    m_data->writer->addFrames(m_data->buffer, block, first, count);
    if (isRotationDue()) {
        TextBuffer slice;
        std::swap(slice, m_data->buffer);
        const DataBlock rest = block.mid(first);
        if (!finish() || !openNext() || !begin(&rest))
            return false;
        std::swap(slice, m_data->buffer);
    }
    if (!put(*m_data)) {
        putWhatFits(*m_data);
        return false;
    }
    m_frames += count;
    m_framesInFile += count;
    return true;
}

bool Recorder::isRotationDue() const
{
    if (m_framesInFile == 0)
        return false;
    return (m_plan.rotateSize && m_data->file.size() + m_data->buffer.size() > *m_plan.rotateSize) ||
           (m_plan.rotateSeconds && static_cast<double>(m_sinceOpen.elapsed()) >= *m_plan.rotateSeconds * 1000.0);
}

bool Recorder::write(const DataGap &gap)
{
    if (!begin(nullptr))
        return false;
    for (Part *part : {m_data.get(), m_notes.get()}) {
        if (!part)
            continue;
        part->buffer.clear();
        part->writer->addGap(part->buffer, gap);
        if (!put(*part))
            return false;
    }
    return true;
}

bool Recorder::put(Part &part)
{
    if (!part.buffer.isEmpty() && !part.file.write(part.buffer.data()))
        return fail(part);
    return tell(part, part.file.sizeOnDisk());
}

// Frame by frame, until the disk is really full.
void Recorder::putWhatFits(Part &part)
{
    const QByteArray data = part.buffer.data();
    for (int begin = 0; begin < data.size();) {
        const int end = part.writer->frameEnd(data, begin);
        if (!part.file.write(data.mid(begin, end - begin)))
            return;
        begin = end;
        ++m_frames;
        ++m_framesInFile;
    }
}

// A preamble tells only of data that are on the disk, so that it is true even after a power failure.
bool Recorder::tell(Part &part, qint64 size)
{
    if (size == part.toldSize)
        return true;
    const QByteArray preamble = part.writer->preamble(size);
    part.toldSize = size;
    return preamble.isEmpty() || part.file.overwrite(0, preamble) || fail(part);
}

bool Recorder::finish()
{
    if (!begin(nullptr))
        return false;
    for (Part *part : {m_data.get(), m_notes.get()})
        if (part && (!tell(*part, part->file.size()) || !(part->file.commit() || fail(*part))))
            return false;
    m_files += m_data->file.currentName();
    return true;
}

bool Recorder::keep()
{
    bool kept = true;
    for (Part *part : {m_data.get(), m_notes.get()}) {
        if (!part)
            continue;
        if (m_framesInFile == 0)
            part->file.discard();
        else
            kept = tell(*part, part->file.size()) && (part->file.close() || fail(*part)) && kept;
    }
    return kept;
}

void Recorder::discard()
{
    for (Part *part : {m_data.get(), m_notes.get()})
        if (part)
            part->file.discard();
}

QString Recorder::place() const
{
    return m_data ? m_data->file.currentName() : QString();
}

bool Recorder::fail(const Part &part)
{
    m_problem = QStringLiteral("cannot write '%1': %2").arg(part.file.path(), part.file.errorString());
    return false;
}

} // namespace SondixApp
