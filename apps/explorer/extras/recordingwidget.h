// SPDX-License-Identifier: MIT
#pragma once

#include "recordingcontrol.h"

#include <QTimer>
#include <QWidget>

class QAction;
class QLabel;

namespace Explorer {

/// A button that records a sensor, and how the recording is getting on. For the line below the plot.
class RecordingWidget : public QWidget
{
    Q_OBJECT
public:
    explicit RecordingWidget(SensorSession &session, QWidget *parent = nullptr);

    RecordingControl &control() { return m_control; }
    /// Begins and ends a recording, in the folder and the format that were used last.
    QAction *recordAction() const { return m_record; }
    /// Asks for the file and begins to record.
    QAction *recordToAction() const { return m_recordTo; }

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
    QTimer m_timer;
};

} // namespace Explorer
