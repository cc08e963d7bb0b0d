// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>

/// Emits a Qt signal for the first Ctrl-C, SIGTERM or SIGQUIT, and when the terminal is closed (SIGHUP, unless it is
/// ignored as under nohup) or the user logs off.
///
/// A second Ctrl-C, SIGTERM or SIGQUIT ends the process at once, so that a sensor that never answers cannot block it. Threads: one
/// object per process, on the main thread.
class InterruptWatcher : public QObject
{
    Q_OBJECT
public:
    explicit InterruptWatcher(QObject *parent = nullptr);
    ~InterruptWatcher() override;

    /// Whether an interrupt has been received; also true before the event loop has delivered interrupted().
    static bool isInterrupted();

Q_SIGNALS:
    void interrupted();
};
