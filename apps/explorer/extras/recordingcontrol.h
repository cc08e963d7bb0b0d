// SPDX-License-Identifier: MIT
#pragma once

#include "explorer/sensor/newerrortexts.h"
#include "shared/lossaccount.h"

#include <SondixQt/datablock.h>
#include <SondixQt/transmitteddatainfo.h>

#include <QElapsedTimer>
#include <QObject>
#include <QString>

#include <memory>

class QThread;

namespace Explorer {

class RecordingWriter;
class SensorSession;
struct RecordingProgress;

/// Records what a sensor sends into a file of `sondixqt record` while it is being looked at.
///
/// The file is written by a thread of its own. If that fails or falls behind, the recording ends with a message, and
/// what was written stays; nothing else is affected. Threads: that of the window.
class RecordingControl : public QObject
{
    Q_OBJECT
public:
    /// \a session must outlive the control.
    explicit RecordingControl(SensorSession &session, QObject *parent = nullptr);
    /// Ends a recording; waits for the disk for five seconds at most.
    ~RecordingControl() override;

    /// The suffixes of files that can be recorded, without the point.
    static QStringList suffixes();
    /// A file name by sensor and date, without a suffix.
    QString proposedName() const;
    /// A path in \a folder that no file has: \a name with \a suffix, and with a number if need be. Accesses the disk, in
    /// any thread.
    static QString freePath(const QString &folder, const QString &name, const QString &suffix);

    /// Begins to record into \a path, whose suffix is the format. False and the reason in \a problem if that is not
    /// possible; a file that cannot be created is reported by ended().
    bool start(const QString &path, QString *problem);
    /// Ends the recording. ended() follows when all is written.
    void stop();

    /// Whether a file is being written, which it is until ended().
    bool isRecording() const { return m_writer != nullptr; }
    /// Whether the file is being finished: what arrives now is not written any more.
    bool isStopping() const { return m_writer != nullptr && m_isStopping; }
    /// The file that is being written; its name at present.
    QString place() const { return m_place; }
    /// The path that start() was called with last.
    QString path() const { return m_path; }
    double seconds() const;
    qint64 frames() const;
    qint64 bytes() const;
    const SondixApp::LossAccount &losses() const { return m_losses; }

Q_SIGNALS:
    void changed();
    /// A recording has ended. \a place is the file, or empty if nothing was recorded; \a problem is empty after stop().
    void ended(const QString &place, const QString &problem);

private:
    void take(const SondixQt::DataBlock &block);
    void take(const SondixQt::DataGap &gap);
    void checkFrame();
    void endBy(const QString &problem);
    void takeEnd(const QString &place, const QString &problem);

    SensorSession &m_session;
    QThread *m_thread;
    RecordingWriter *m_writer = nullptr; // lives in the thread
    std::shared_ptr<RecordingProgress> m_progress;
    SondixQt::TransmittedDataInfo m_frame;
    NewErrorTexts m_newErrors;
    SondixApp::LossAccount m_losses;
    QElapsedTimer m_sinceStart;
    QString m_path;
    QString m_place;
    QString m_problem; // why the control has ended the recording
    bool m_isStopping = false;
};

} // namespace Explorer
