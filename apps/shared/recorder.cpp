// SPDX-License-Identifier: MIT
#include "recorder.h"

#include <QFileInfo>

#include <algorithm>
#include <cstdlib>

using namespace SondixQt;

namespace SondixApp {

namespace {

// The name of the file beside the .npy file \a path.
QString notesName(const QString &path)
{
    return path + QStringLiteral(".jsonl");
}

bool isFree(const QString &path)
{
    return !QFileInfo::exists(path) && !QFileInfo::exists(path + QStringLiteral(".partial"));
}

} // namespace

/// A file with its format.
struct Recorder::Part
{
    Part(const Plan &plan, const QString &path, std::unique_ptr<FrameWriter> w)
        : file(path, plan.sendToDisk)
        , writer(std::move(w))
    {
    }

    OutputFile file;
    std::unique_ptr<FrameWriter> writer;
    TextBuffer buffer;
    bool withColumns = true;
    QByteArray lead;
    qint64 sizeInPreamble = 0;
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
    return std::make_unique<Part>(m_plan, path, makeFrameWriter(format, m_plan.columns, m_plan.options, m_errors));
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
        if (isFree(name) && (!hasNotes() || isFree(notesName(name))))
            return name;
    }
}

bool Recorder::openNext()
{
    const QString path = nextName();
    m_data = makePart(m_plan.format, path);
    m_notes.reset();
    if (hasNotes())
        m_notes = makePart(RecordFormat::JsonLines, notesName(path));
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
        part.sizeInPreamble = -1;
        return (part.file.openToAppend(resumption->end) || fail(part)) && writePreamble(part, resumption->end);
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
    m_axis = m_clock->axis;
    if (wallClock)
        m_run = block.run(); // before, the zero of this run is not known
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
        if (!put(*part) || !checkDisk(*part))
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
    return checkDisk(*m_data);
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
        if (!put(*part) || !checkDisk(*part))
            return false;
    }
    return true;
}

bool Recorder::flush()
{
    for (Part *part : {m_data.get(), m_notes.get()}) {
        if (!part)
            continue;
        part->file.flush();
        if (!checkDisk(*part))
            return false;
    }
    return true;
}

// Writes the buffer as a whole, or nothing of it.
bool Recorder::put(Part &part)
{
    return part.buffer.isEmpty() || part.file.write(part.buffer.data()) || fail(part);
}

// Fails if the disk has failed since the last call; otherwise brings the preamble up to date.
bool Recorder::checkDisk(Part &part)
{
    if (part.file.hasDiskFailed()) {
        m_problem =
            QStringLiteral("cannot write '%1' to the disk: %2").arg(part.file.path(), part.file.diskProblem());
        return false;
    }
    return writePreamble(part, part.file.sizeOnDisk());
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

// A preamble counts only data that are on the disk, so that it is true even after a power failure.
bool Recorder::writePreamble(Part &part, qint64 size)
{
    if (size == part.sizeInPreamble)
        return true;
    const QByteArray preamble = part.writer->preamble(size);
    part.sizeInPreamble = size;
    return preamble.isEmpty() || part.file.overwrite(0, preamble) || fail(part);
}

bool Recorder::finish()
{
    if (!begin(nullptr))
        return false;
    for (Part *part : {m_data.get(), m_notes.get()})
        if (part && (!writePreamble(*part, part->file.size()) || !(part->file.commit() || fail(*part))))
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
            kept = keep(*part) && kept;
    }
    return kept;
}

// A failure of the disk that was reported before is none of keeping.
bool Recorder::keep(Part &part)
{
    const bool hadFailed = part.file.hasDiskFailed();
    return writePreamble(part, part.file.size()) && (part.file.close() || hadFailed || fail(part));
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
