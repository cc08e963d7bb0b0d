// SPDX-License-Identifier: MIT
#include "frameexport.h"

#include "explorer/sensor/englishtexts.h"

#include <SondixQt/errorvalue.h>

#include <algorithm>
#include <cmath>
#include <limits>

using namespace SondixApp;
using namespace SondixQt;

namespace Explorer {

namespace {

Recorder::Plan recorderPlan(const SignalHistory &history, const FrameExport::Plan &plan)
{
    Recorder::Plan result;
    result.path = plan.path;
    result.format = plan.format;
    result.columns.frame = history.frame();
    result.columns.number = true;
    return result;
}

RecordHead headOf(const SignalHistory &history, const FrameExport::Plan &plan)
{
    RecordHead head = plan.head;
    head.program = QCoreApplication::applicationName() + QLatin1Char(' ') + QCoreApplication::applicationVersion();
    if (!head.rate && history.frame().datarate > 0.0)
        head.rate = history.frame().datarate;
    return head;
}

/// \a block, which begins at the frame \a first of \a line, with positions as times.
DataBlock placed(const DataBlock &block, const TimeLine &line, qint64 first)
{
    if (!line.stretchOf(first).isSpread)
        return DataBlock(block.run(), block.firstFrame(), block.valuesPerFrame(), block.scaledData(),
                         block.rawData(), block.time() ? std::optional(line.position(first)) : std::nullopt,
                         block.frameInterval());
    QVector<double> times;
    times.reserve(block.frameCount());
    for (int frame = 0; frame < block.frameCount(); ++frame)
        times.append(block.frameTime(frame) ? line.position(first + frame)
                                            : std::numeric_limits<double>::quiet_NaN());
    return DataBlock::withTimes(block.run(), block.firstFrame(), block.valuesPerFrame(), block.scaledData(),
                                block.rawData(), times);
}

} // namespace

FrameFile::FrameFile(const Recorder::Plan &plan, const RecordHead &head, std::optional<double> clockOffset)
    : m_errors([this](double value) { return m_errorTexts.value(errorValueKey(value)); })
    , m_recorder(plan, head, m_errors, clockOffset ? &m_clock : nullptr)
{
    if (clockOffset)
        m_clock.axis = TimeAxis{std::llround(*clockOffset * 1.0e6), true};
}

FrameFile::~FrameFile()
{
    discard();
}

void FrameFile::discard()
{
    if (m_state == Running)
        m_recorder.discard();
    if (m_state != Complete)
        m_state = Failed;
}

bool FrameFile::cancel()
{
    return enter(Cancelled);
}

// Either the file is completed or it is cancelled, whichever comes first.
bool FrameFile::enter(Phase phase)
{
    Phase expected = Open;
    return m_phase.compare_exchange_strong(expected, phase);
}

bool FrameFile::write(const FramePiece &piece)
{
    if (m_state == Complete || m_state == Failed)
        return false;
    if (isCancelled()) {
        discard();
        return false;
    }
    for (auto it = piece.errorTexts.cbegin(); it != piece.errorTexts.cend(); ++it)
        m_errorTexts.insert(it.key(), it.value());
    const bool isNew = m_state == New;
    m_state = Running;
    if ((!isNew || m_recorder.open()) && writePiece(piece))
        return true;
    if (!isCancelled())
        m_problem = shownText(m_recorder.problem());
    discard();
    return false;
}

bool FrameFile::writePiece(const FramePiece &piece)
{
    if (!writeItems(piece))
        return false;
    if (!piece.isLast)
        return true;
    if (!enter(Completing) || !m_recorder.finish())
        return false;
    m_state = Complete;
    return true;
}

bool FrameFile::writeItems(const FramePiece &piece)
{
    return std::all_of(piece.items.begin(), piece.items.end(), [this](const auto &item) {
        return std::visit([this](const auto &content) { return m_recorder.write(content); }, item);
    });
}

FrameExport::FrameExport(const SignalHistory &history, const Plan &plan)
    : m_history(history)
    , m_range(plan.range)
    , m_generation(history.generation())
    , m_next(plan.range.begin)
    , m_gapsUpTo(plan.range.begin)
    , m_errorText(plan.errorText)
    , m_file(std::make_shared<FrameFile>(recorderPlan(history, plan), headOf(history, plan), plan.clockOffset))
{
}

double FrameExport::progress() const
{
    return m_range.isEmpty() ? 1.0
                             : static_cast<double>(m_next - m_range.begin) / static_cast<double>(m_range.count());
}

// The gaps before the next frame.
void FrameExport::takeGaps(FramePiece &piece)
{
    const TimeLine &line = m_history.timeLine();
    for (auto mark = line.gapAfter(m_gapsUpTo); mark != line.gaps().end() && mark->index <= m_next; ++mark) {
        DataGap gap = mark->gap;
        gap.beginTime = mark->begin;
        gap.endTime = mark->end;
        piece.items.emplace_back(gap);
    }
    m_gapsUpTo = m_next;
}

std::optional<FramePiece> FrameExport::take(int frames)
{
    if (m_isTaken || !m_problem.isEmpty())
        return std::nullopt;
    if (m_history.generation() != m_generation) {
        m_problem = tr("the values were forgotten before they were written");
        return std::nullopt;
    }
    FramePiece piece;
    const qint64 kept = std::min(m_range.end, m_history.firstFrame());
    m_dropped += std::max<qint64>(0, kept - m_next);
    m_next = std::max(m_next, kept);
    const qint64 stop = std::min(m_range.end, m_next + std::max(1, frames));
    while (m_next < stop) {
        const DataBlock block = m_history.block({m_next, stop}, frames);
        takeGaps(piece);
        if (m_errorText) {
            const QHash<int, QString> texts = m_newErrors.of(block, m_errorText);
            for (auto it = texts.cbegin(); it != texts.cend(); ++it)
                piece.errorTexts.insert(it.key(), it.value());
        }
        piece.items.emplace_back(placed(block, m_history.timeLine(), m_next));
        m_next += block.frameCount();
    }
    piece.isLast = m_isTaken = m_next >= m_range.end;
    return piece;
}

bool FrameExport::step(int frames)
{
    const std::optional<FramePiece> piece = take(frames);
    return piece && m_file->write(*piece) && !piece->isLast;
}

} // namespace Explorer
