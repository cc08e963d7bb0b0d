// SPDX-License-Identifier: MIT
#include "frameexport.h"

#include <algorithm>
#include <cmath>

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
    if (!head.rate && history.frame().datarate > 0.0)
        head.rate = history.frame().datarate;
    return head;
}

ErrorValues::Text textOrNone(const std::function<QString(double)> &text)
{
    return text ? text : [](double) { return QString(); };
}

/// A block whose times are positions.
DataBlock placed(const DataBlock &block, double position)
{
    return DataBlock(block.run(), block.firstFrame(), block.valuesPerFrame(), block.scaledData(), block.rawData(),
                     block.time() ? std::optional(position) : std::nullopt, block.frameInterval());
}

} // namespace

FrameExport::FrameExport(const SignalHistory &history, const Plan &plan)
    : m_history(history)
    , m_range(plan.range)
    , m_generation(history.generation())
    , m_next(plan.range.begin)
    , m_gapsUpTo(plan.range.begin)
    , m_errors(textOrNone(plan.errorText))
    , m_recorder(recorderPlan(history, plan), headOf(history, plan), m_errors,
                 plan.clockOffset ? &m_clock : nullptr)
{
    if (plan.clockOffset)
        m_clock.axis = TimeAxis{std::llround(*plan.clockOffset * 1.0e6), true};
}

FrameExport::~FrameExport()
{
    if (m_state == Running)
        m_recorder.discard();
}

bool FrameExport::fail(const QString &problem)
{
    m_problem = problem;
    m_recorder.discard();
    m_state = Failed;
    return false;
}

double FrameExport::progress() const
{
    return m_range.isEmpty() ? 1.0
                             : static_cast<double>(m_next - m_range.begin) / static_cast<double>(m_range.count());
}

// The gaps before the next frame.
bool FrameExport::writeGaps()
{
    for (const GapMark &mark : m_history.timeLine().gaps()) {
        if (mark.index <= m_gapsUpTo || mark.index > m_next)
            continue;
        DataGap gap = mark.gap;
        gap.beginTime = mark.begin;
        gap.endTime = mark.end;
        if (!m_recorder.write(gap))
            return false;
    }
    m_gapsUpTo = m_next;
    return true;
}

bool FrameExport::step(int frames)
{
    if (m_state == Complete || m_state == Failed)
        return false;
    if (m_state == New) {
        m_state = Running;
        if (!m_recorder.open())
            return fail(m_recorder.problem());
    }
    if (m_history.generation() != m_generation)
        return fail(tr("the values were forgotten before they were written"));
    const qint64 kept = std::min(m_range.end, m_history.firstFrame());
    m_dropped += std::max<qint64>(0, kept - m_next);
    m_next = std::max(m_next, kept);
    const qint64 stop = std::min(m_range.end, m_next + std::max(1, frames));
    while (m_next < stop) {
        const DataBlock block = m_history.block({m_next, stop}, frames);
        if (!writeGaps() || !m_recorder.write(placed(block, m_history.timeLine().position(m_next))))
            return fail(m_recorder.problem());
        m_next += block.frameCount();
    }
    if (m_next < m_range.end)
        return true;
    if (!m_recorder.finish())
        return fail(m_recorder.problem());
    m_state = Complete;
    return false;
}

} // namespace Explorer
