// SPDX-License-Identifier: MIT
#pragma once

#include "recordingcontrol.h"

#include <QTimer>
#include <QWidget>

class QAction;
class QLabel;

namespace Explorer {

class DiskThread;

/// A button that records a sensor, and how the recording is getting on. For the line below the plot.
class RecordingWidget : public QWidget
{
    Q_OBJECT
public:
    explicit RecordingWidget(SensorSession &session, QWidget *parent = nullptr);

    RecordingControl &control() { return m_control; }
    /// Begins and ends a recording, in the folder and the format that were used last. It is checked at once; the recording
    /// begins when a thread of its own has found a name for the file, because the folder may be slow.
    QAction *recordAction() const { return m_record; }
    /// Asks for the file and begins to record.
    QAction *recordToAction() const { return m_recordTo; }
    /// Ends a recording, or one that is about to begin.
    void stop();

Q_SIGNALS:
    /// For the log. \a isProblem: it is an error.
    void happened(const QString &text, bool isProblem);

private:
    void toggle(bool on);
    void askForFile();
    void start(const QString &path);
    void show();
    void takeEnd(const QString &place, const QString &problem);

    RecordingControl m_control;
    QAction *m_record;
    QAction *m_recordTo;
    QLabel *m_text;
    DiskThread *m_disk;
    bool m_isWanted = false; // a name for the file is being found
    QTimer m_timer;
};

} // namespace Explorer
