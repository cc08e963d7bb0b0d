// SPDX-License-Identifier: MIT
#include "recordingloader.h"

#include "explorer/sensor/threadend.h"

#include <SondixQt/errorvalue.h>

#include <QThread>

using namespace SondixQt;

namespace Explorer {

namespace {

/// A recording is kept whole, as far as the memory of a history allows.
constexpr double keepAll = 1.0e12;
/// Pieces that are read ahead: while one is added to the history, the next one is read.
constexpr int piecesAhead = 2;

} // namespace

RecordingWorker::RecordingWorker(const QString &path)
    : m_reader(path)
{
}

void RecordingWorker::open()
{
    RecordingStart start;
    if (m_reader.open()) {
        start.head = m_reader.head();
        start.frame = m_reader.frame();
    } else {
        start.problem = m_reader.problem();
    }
    Q_EMIT opened(start);
}

void RecordingWorker::read()
{
    RecordingPiece piece;
    piece.item = m_reader.next();
    if (!piece.item)
        piece.note = m_reader.problem().isEmpty() ? m_reader.warning() : m_reader.problem();
    else if (const auto *block = std::get_if<DataBlock>(&*piece.item))
        piece.errorTexts = m_newErrors.of(*block, [this](double value) { return m_reader.errorText(value); });
    piece.progress = m_reader.progress();
    Q_EMIT pieceRead(piece);
}

RecordingLoader::RecordingLoader(const QString &path, QObject *parent)
    : QObject(parent)
    , m_history(keepAll)
    , m_thread(new QThread)
    , m_worker(new RecordingWorker(path))
{
    qRegisterMetaType<RecordingStart>("Explorer::RecordingStart");
    qRegisterMetaType<RecordingPiece>("Explorer::RecordingPiece");
    m_worker->moveToThread(m_thread);
    connect(m_thread, &QThread::finished, m_worker, &QObject::deleteLater);
    connect(m_worker, &RecordingWorker::opened, this, &RecordingLoader::begin);
    connect(m_worker, &RecordingWorker::pieceRead, this, &RecordingLoader::take);
    m_thread->start();
    QMetaObject::invokeMethod(m_worker, &RecordingWorker::open);
}

RecordingLoader::~RecordingLoader()
{
    m_thread->quit();
    constexpr unsigned long endWaitMs = 50; // the window waits meanwhile, and nothing is lost
    finishThread(m_thread, endWaitMs);
}

void RecordingLoader::begin(const RecordingStart &start)
{
    if (!start.problem.isEmpty()) {
        Q_EMIT refused(start.problem);
        return;
    }
    m_head = start.head;
    m_history.begin(start.frame);
    for (int i = 0; i < piecesAhead; ++i)
        request();
    Q_EMIT opened();
}

void RecordingLoader::request()
{
    QMetaObject::invokeMethod(m_worker, &RecordingWorker::read);
}

QString RecordingLoader::errorText(double value) const
{
    return isErrorValue(value) ? m_errorTexts.value(errorValueKey(value)) : QString();
}

void RecordingLoader::take(const RecordingPiece &piece)
{
    if (m_isComplete)
        return; // read ahead of the end
    for (auto it = piece.errorTexts.cbegin(); it != piece.errorTexts.cend(); ++it)
        m_errorTexts.insert(it.key(), it.value());
    m_progress = piece.progress;
    if (!piece.item) {
        m_note = piece.note;
        m_isComplete = true;
        Q_EMIT advanced();
        Q_EMIT finished();
        return;
    }
    if (const auto *block = std::get_if<DataBlock>(&*piece.item)) {
        m_frames += block->frameCount();
        m_history.append(*block);
    } else {
        m_history.append(std::get<DataGap>(*piece.item));
    }
    request();
    Q_EMIT advanced();
}

} // namespace Explorer
