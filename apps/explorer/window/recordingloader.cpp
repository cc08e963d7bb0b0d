// SPDX-License-Identifier: MIT
#include "recordingloader.h"

#include <QElapsedTimer>

using namespace SondixQt;

namespace Explorer {

namespace {

/// A recording is kept whole, as far as the memory of a history allows.
constexpr double keepAll = 1.0e12;
/// How long one piece of reading keeps the event loop from its other work, in milliseconds.
constexpr int longestPiece = 25;

} // namespace

RecordingLoader::RecordingLoader(const QString &path, QObject *parent)
    : QObject(parent)
    , m_reader(path)
    , m_history(keepAll)
{
    connect(&m_timer, &QTimer::timeout, this, &RecordingLoader::readSome);
}

bool RecordingLoader::start()
{
    if (!m_reader.open())
        return false;
    m_history.begin(m_reader.frame());
    m_timer.start(0);
    return true;
}

QString RecordingLoader::note() const
{
    return m_reader.problem().isEmpty() ? m_reader.warning() : m_reader.problem();
}

void RecordingLoader::readSome()
{
    QElapsedTimer elapsed;
    elapsed.start();
    while (elapsed.elapsed() < longestPiece) {
        const std::optional<SondixApp::RecordingReader::Item> item = m_reader.next();
        if (!item) {
            m_timer.stop();
            m_isComplete = true;
            Q_EMIT advanced();
            Q_EMIT finished();
            return;
        }
        if (const auto *block = std::get_if<DataBlock>(&*item)) {
            m_frames += block->frameCount();
            m_history.append(*block);
        } else {
            m_history.append(std::get<DataGap>(*item));
        }
    }
    Q_EMIT advanced();
}

} // namespace Explorer
