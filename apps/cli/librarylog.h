// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sensorinstance.h>

#include <QString>
#include <QTemporaryDir>
#include <QTimer>

/// Shows on stderr what the sensor-access library writes into its log while one of these lives.
///
/// One object a program, on the main thread. What the library holds back in its buffers shows at the end.
class LibraryLog
{
public:
    LibraryLog();
    ~LibraryLog();
    LibraryLog(const LibraryLog &) = delete;
    LibraryLog &operator=(const LibraryLog &) = delete;

    /// Where the log is to be written; empty when none is shown.
    static QString fileName();
    /// Has the library log what it does with \a instance, when the log is shown.
    static void attach(SondixQt::SensorInstance &instance);
    /// Shows what has been written since it was last called.
    static void show();

private:
    static LibraryLog *current;

    QTemporaryDir m_dir;
    QTimer m_timer;
    qint64 m_shown = 0;
};
