// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sensorinstance.h>

#include <QString>
#include <QTemporaryDir>
#include <QTimer>

/// Copies the log of the sensor-access library to stderr.
///
/// Lines that the library buffers appear at the end. Threads: one object per process, on the main thread.
class LibraryLog
{
public:
    LibraryLog();
    ~LibraryLog();
    LibraryLog(const LibraryLog &) = delete;
    LibraryLog &operator=(const LibraryLog &) = delete;

    /// The log file; empty if there is no LibraryLog object.
    static QString fileName();
    /// Switches logging of \a instance on if there is a LibraryLog object.
    static void attach(SondixQt::SensorInstance &instance);
    /// Copies the lines that were written since the last call.
    static void show();

private:
    static LibraryLog *current;

    QTemporaryDir m_dir;
    QTimer m_timer;
    qint64 m_shown = 0;
};
