// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>

#include <deque>
#include <functional>

class QThread;

namespace Explorer {

/// A file that is being written as long as the object exists, see DiskThread::unfinishedWrites(). Threads: any.
class UnfinishedWrite
{
public:
    UnfinishedWrite();
    ~UnfinishedWrite();
    Q_DISABLE_COPY(UnfinishedWrite)
};

/// Reads and writes files in a thread of its own, because a disk may be slow and a network drive may hang.
///
/// Work is done in the order of run(). Threads: that of the window.
class DiskThread : public QObject
{
    Q_OBJECT
public:
    enum Purpose {
        Reading, ///< nothing is lost if the program ends meanwhile
        Writing,
    };

    explicit DiskThread(QObject *parent = nullptr);
    /// Waits for 50 ms at most. Work that was begun or waits is still done, but its end is no longer reported.
    ~DiskThread() override;

    /// Does \a work in the thread and then calls \a done, which may be empty, from the event loop of the caller. \a work
    /// must own what it uses.
    void run(Purpose purpose, const std::function<void()> &work, const std::function<void()> &done = {});

    /// How many works of all objects write and have not ended, and how many UnfinishedWrite there are: the program must
    /// not end yet.
    static int unfinishedWrites();
    /// For tests: \a wait is called in the thread before each work, in place of a disk that hangs. Empty: none.
    static void setDelay(const std::function<void()> &wait);
    /// For other threads that write: calls what was set by setDelay().
    static void waitForTest();

private:
    QThread *m_thread = nullptr; // made for the first work
    QObject *m_worker = nullptr; // lives in the thread
    std::deque<std::function<void()>> m_done;
};

/// Belongs to DiskThread.
class DiskWorker : public QObject
{
    Q_OBJECT
Q_SIGNALS:
    void ended();
};

} // namespace Explorer
