// SPDX-License-Identifier: MIT
#pragma once

#include "explorer/history/signalhistory.h"
#include "explorer/sensor/newerrortexts.h"
#include "shared/recordingreader.h"

#include <QHash>
#include <QObject>

#include <optional>

class QThread;

namespace Explorer {

/// The result of opening a recording.
struct RecordingStart
{
    QString problem; ///< why the file is no recording; empty if it is one
    SondixApp::RecordHead head;
    SondixQt::TransmittedDataInfo frame;
};

/// One block or gap of a recording.
struct RecordingPiece
{
    std::optional<SondixApp::RecordingReader::Item> item; ///< empty at the end
    QHash<int, QString> errorTexts;                       ///< new ones, by errorValueKey()
    double progress = 0.0;
    QString note; ///< at the end: a problem or a warning
};

/// Reads a recording in a thread of its own. For RecordingLoader.
class RecordingWorker : public QObject
{
    Q_OBJECT
public:
    explicit RecordingWorker(const QString &path);

    /// Reads the head; opened() delivers it.
    void open();
    /// Reads a piece; pieceRead() delivers it.
    void read();

Q_SIGNALS:
    void opened(const Explorer::RecordingStart &start);
    void pieceRead(const Explorer::RecordingPiece &piece);

private:
    SondixApp::RecordingReader m_reader;
    NewErrorTexts m_newErrors;
};

/// Reads a recording into a history, piece by piece, so that the window can be used meanwhile.
///
/// The constructor begins to read. opened() or refused() follows, then the values. Threads: that of the window. A thread
/// of its own accesses the file.
class RecordingLoader : public QObject
{
    Q_OBJECT
public:
    explicit RecordingLoader(const QString &path, QObject *parent = nullptr);
    /// Stops reading. A thread that waits for the disk is left alone.
    ~RecordingLoader() override;

    SignalHistory &history() { return m_history; }
    const SondixApp::RecordHead &head() const { return m_head; }
    /// The text of an error value that was read; empty if the file has none.
    QString errorText(double value) const;
    bool isComplete() const { return m_isComplete; }
    qint64 frames() const { return m_frames; }
    double progress() const { return m_progress; }
    /// What the user has to know about the file: a problem or a warning; empty if all is well.
    QString note() const { return m_note; }

Q_SIGNALS:
    /// The head was read: the history has its signals. advanced() follows.
    void opened();
    /// The file is no recording, or cannot be read. Nothing follows.
    void refused(const QString &problem);
    void advanced();
    /// Everything that can be read has been read.
    void finished();

private:
    void begin(const RecordingStart &start);
    void request();
    void take(const RecordingPiece &piece);

    SignalHistory m_history;
    SondixApp::RecordHead m_head;
    QHash<int, QString> m_errorTexts;
    QString m_note;
    qint64 m_frames = 0;
    double m_progress = 0.0;
    bool m_isComplete = false;
    QThread *m_thread;
    RecordingWorker *m_worker; // lives in the thread
};

} // namespace Explorer

Q_DECLARE_METATYPE(Explorer::RecordingStart)
Q_DECLARE_METATYPE(Explorer::RecordingPiece)
