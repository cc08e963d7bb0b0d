// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QElapsedTimer>
#include <QFile>
#include <QLockFile>
#include <QString>

#include <functional>
#include <future>
#include <memory>

namespace SondixApp {

/// A file that grows in the open as FILE.partial and gets its name at the end.
///
/// \par What stays
/// Every write() reaches the operating system at once and is complete or not there at all: after a failed write the file
/// is cut back. So a file contains whole lines if whole lines are written, also after the process has been killed. Once a
/// second write() or flush() sends the data to the disk in another thread, for the case that the power fails. Nothing
/// deletes a file except discard().
///
/// \par Devices and pipes
/// They are written directly and have no partial file.
///
/// \par Threads
/// One.
class OutputFile
{
public:
    /// Sends what was written to the file with this descriptor to the disk. Returns 0 or the error number.
    using SendToDisk = std::function<int(int)>;

    /// \a sendToDisk replaces the function of the operating system in tests.
    explicit OutputFile(const QString &path, SendToDisk sendToDisk = nullptr);
    /// Closes the file, which keeps the name that it has.
    ~OutputFile();

    OutputFile(const OutputFile &) = delete;
    OutputFile &operator=(const OutputFile &) = delete;

    /// Creates the partial file. An existing partial file is never overwritten: the new one gets a number.
    bool open();
    /// Opens the file itself, whose data end at \a end: what follows is cut off. The file grows under its own name.
    /// Fails if another process appends to it as well.
    bool openToAppend(qint64 end);
    /// Appends \a data as a whole. It does not report that data written earlier did not reach the disk: see
    /// hasDiskFailed().
    bool write(const QByteArray &data);
    /// To be called while nothing is written: what is not on the disk yet is sent there after a second.
    void flush();
    /// Whether data could not be sent to the disk. The operating system may have discarded them, so this never changes
    /// again, and close() and commit() fail.
    bool hasDiskFailed() const { return m_diskError != 0; }
    /// The reason.
    QString diskProblem() const;
    /// Overwrites \a data.size() bytes at \a position.
    bool overwrite(qint64 position, const QByteArray &data);
    /// How much of the file is known to be on the disk.
    qint64 sizeOnDisk() const { return m_synced; }
    /// Closes the file and gives it its name, replacing an older file. If that fails, the data stay in currentName().
    bool commit();
    /// Closes the file, which keeps the name that it has.
    bool close();
    /// Removes the partial file.
    void discard();

    qint64 size() const { return m_size; }
    /// Whether it is a device or a pipe.
    bool isDirect() const { return m_isDirect; }
    /// The name that the file has in the end. Symbolic links are resolved.
    QString path() const { return m_path; }
    /// The name of the file at present: path() with the suffix ".partial" or ".partial2" until commit().
    QString currentName() const { return m_currentName; }
    /// The reason why the last operation failed.
    QString errorString() const { return m_error; }

private:
    bool fail();
    void collectSync();

    QString m_path;
    QString m_currentName;
    QString m_error;
    QFile m_file;
    SendToDisk m_sendToDisk;
    std::unique_ptr<QLockFile> m_lock;
    bool m_isDirect = false;
    qint64 m_size = 0;
    bool m_isChanged = false; // since the start of m_sync
    int m_diskError = 0;      // errno
    qint64 m_syncing = 0;     // size at the start of m_sync
    qint64 m_synced = 0;
    std::future<int> m_sync; // errno
    QElapsedTimer m_sinceSync;
};

} // namespace SondixApp
