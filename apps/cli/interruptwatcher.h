// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>

/// Turns Ctrl-C (and a request to terminate) into a signal of the event loop.
///
/// Only the first one: a second Ctrl-C ends the program the hard way, so that a sensor that never
/// answers cannot hold it. One object a program, on the main thread.
class InterruptWatcher : public QObject
{
    Q_OBJECT
public:
    explicit InterruptWatcher(QObject *parent = nullptr);
    ~InterruptWatcher() override;

    /// Whether it has happened, also while a call kept the event loop waiting.
    static bool isInterrupted();

Q_SIGNALS:
    void interrupted();
};
