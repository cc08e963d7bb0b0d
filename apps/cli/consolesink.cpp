// SPDX-License-Identifier: MIT
#include "consolesink.h"

#include <utility>

using namespace SondixQt;
using namespace SondixApp;

ConsoleSink::ConsoleSink(Console &console, std::unique_ptr<FrameWriter> writer)
    : m_console(console)
    , m_writer(std::move(writer))
{
}

bool ConsoleSink::begin()
{
    m_writer->begin(m_buffer, nullptr, true);
    return put();
}

bool ConsoleSink::write(const DataBlock &block)
{
    m_writer->addFrames(m_buffer, block, 0, block.frameCount());
    if (!put())
        return false;
    m_frames += block.frameCount();
    return true;
}

bool ConsoleSink::write(const DataGap &gap)
{
    m_writer->addGap(m_buffer, gap);
    return put();
}

bool ConsoleSink::put()
{
    const bool written = m_buffer.isEmpty() || (m_console.write(m_buffer.data()) && m_console.flush());
    m_buffer.clear();
    return written;
}

QString ConsoleSink::problem() const
{
    return QStringLiteral("cannot write to standard output: %1").arg(m_console.outputProblem());
}
