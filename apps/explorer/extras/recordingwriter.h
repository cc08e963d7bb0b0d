// SPDX-License-Identifier: MIT
#pragma once

#include "explorer/sensor/diskthread.h"
#include "shared/recorder.h"

#include <QElapsedTimer>
#include <QHash>
#include <QObject>

#include <atomic>
#include <memory>

namespace Explorer {

/// What a writer has done, read by the thread of the window.
struct RecordingProgress
{
    std::atomic<qint64> frames{0};
    std::atomic<qint64> bytes{0};
    std::atomic<qint64> waitingValues{0}; ///< handed to the writer, and not yet written
};

/// Writes a recording. It lives in a thread of its own, because a disk can take its time.
class RecordingWriter : public QObject
{
    Q_OBJECT
public:
    RecordingWriter(const SondixApp::Recorder::Plan &plan, const SondixApp::RecordHead &head,
                    std::shared_ptr<RecordingProgress> progress);
    ~RecordingWriter() override;

    void open();
    /// \a errorTexts are the texts of error values that occur for the first time, by key.
    void write(const SondixQt::DataBlock &block, const QHash<int, QString> &errorTexts);
    void write(const SondixQt::DataGap &gap);
    /// Ends the recording: the file gets its name.
    void finish();

protected:
    void timerEvent(QTimerEvent *event) override;

Q_SIGNALS:
    /// The file \a place has been begun.
    void opened(const QString &place);
    /// The recording has ended. \a problem is empty unless it has ended by itself. \a place is the file; empty: none is
    /// left.
    void finished(const QString &place, const QString &problem);

private:
    void fail();
    void publish(bool always);

    const UnfinishedWrite m_unfinished; // destroyed last: after the file is complete
    const std::shared_ptr<RecordingProgress> m_progress;
    QHash<int, QString> m_errorTexts;
    SondixApp::ErrorValues m_errors;
    SondixApp::SharedClock m_clock;
    SondixApp::Recorder m_recorder;
    QElapsedTimer m_sincePublished;
    bool m_isOpen = false;
};

} // namespace Explorer
