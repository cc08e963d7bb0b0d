// SPDX-License-Identifier: MIT
#pragma once

#include "explorer/history/signalhistory.h"
#include "shared/recordingreader.h"

#include <QObject>
#include <QTimer>

namespace Explorer {

/// Reads a recording into a history, piece by piece, so that the window can be used meanwhile.
///
/// Threads: that of the window. Reading goes on by itself in the event loop.
class RecordingLoader : public QObject
{
    Q_OBJECT
public:
    explicit RecordingLoader(const QString &path, QObject *parent = nullptr);

    /// Reads the head. False with a problem() if the file is no recording; otherwise the values follow.
    bool start();
    QString problem() const { return m_reader.problem(); }

    SignalHistory &history() { return m_history; }
    const SondixApp::RecordHead &head() const { return m_reader.head(); }
    QString errorText(double value) const { return m_reader.errorText(value); }
    bool isComplete() const { return m_isComplete; }
    qint64 frames() const { return m_frames; }
    double progress() const { return m_reader.progress(); }
    /// What the user has to know about the file: a problem or a warning; empty if all is well.
    QString note() const;

Q_SIGNALS:
    void advanced();
    /// Everything that can be read has been read.
    void finished();

private:
    void readSome();

    SondixApp::RecordingReader m_reader;
    SignalHistory m_history;
    QTimer m_timer;
    qint64 m_frames = 0;
    bool m_isComplete = false;
};

} // namespace Explorer
