// SPDX-License-Identifier: MIT
#include "recordingwriter.h"

#include <SondixQt/errorvalue.h>

#include <QFileInfo>

#include <utility>

using namespace SondixQt;
using namespace SondixApp;

namespace Explorer {

RecordingWriter::RecordingWriter(const Recorder::Plan &plan, const RecordHead &head,
                                 std::shared_ptr<RecordingProgress> progress)
    : m_progress(std::move(progress))
    , m_errors([this](double value) { return m_errorTexts.value(errorValueKey(value)); })
    , m_recorder(plan, head, m_errors, &m_clock)
{
}

RecordingWriter::~RecordingWriter()
{
    finish();
}

void RecordingWriter::open()
{
    DiskThread::waitForTest();
    m_isOpen = m_recorder.open();
    // In milliseconds. The recorder sends data to the disk at most once a second.
    constexpr int flushInterval = 100;
    if (m_isOpen) {
        startTimer(flushInterval);
        Q_EMIT opened(m_recorder.place());
    } else {
        Q_EMIT finished({}, m_recorder.problem());
    }
}

// While the sensor pauses, what was recorded before must reach the disk as well.
void RecordingWriter::timerEvent(QTimerEvent * /*event*/)
{
    if (m_isOpen && !m_recorder.flush())
        fail();
}

void RecordingWriter::write(const DataBlock &block, const QHash<int, QString> &errorTexts)
{
    for (auto it = errorTexts.cbegin(); it != errorTexts.cend(); ++it)
        m_errorTexts.insert(it.key(), it.value());
    if (m_isOpen && !m_recorder.write(block))
        fail();
    m_progress->waitingValues -= block.scaledData().size();
    publish(false);
}

void RecordingWriter::write(const DataGap &gap)
{
    if (m_isOpen && !m_recorder.write(gap))
        fail();
}

void RecordingWriter::fail()
{
    const QString problem = m_recorder.problem();
    publish(true);
    m_isOpen = false;
    m_recorder.keep();
    Q_EMIT finished(m_recorder.framesWritten() > 0 ? m_recorder.place() : QString(), problem);
}

void RecordingWriter::finish()
{
    if (!m_isOpen)
        return;
    if (!m_recorder.finish()) {
        fail();
        return;
    }
    m_isOpen = false;
    publish(true);
    Q_EMIT finished(m_recorder.place(), {});
}

void RecordingWriter::publish(bool always)
{
    constexpr qint64 interval = 500; // milliseconds
    m_progress->frames = m_recorder.framesWritten();
    if (!always && m_sincePublished.isValid() && m_sincePublished.elapsed() < interval)
        return;
    m_sincePublished.start();
    m_progress->bytes = QFileInfo(m_recorder.place()).size();
}

} // namespace Explorer
