// SPDX-License-Identifier: MIT
#include "outputfile.h"

#include <QFileInfo>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>

#ifdef Q_OS_WIN
#    include <io.h>
#else
#    include <unistd.h>
#endif

namespace SondixApp {

namespace {

std::filesystem::path nativePath(const QString &path)
{
#ifdef Q_OS_WIN
    return path.toStdWString();
#else
    return QFile::encodeName(path).toStdString();
#endif
}

// Returns 0 or the error number.
int sendToDisk(int descriptor)
{
#ifdef Q_OS_WIN
    const int result = ::_commit(descriptor);
#else
    const int result = ::fsync(descriptor);
#endif
    // File systems without this function report EINVAL.
    return result == 0 || errno == EINVAL ? 0 : errno;
}

} // namespace

OutputFile::OutputFile(const QString &path)
    : m_path(path)
{
    const QFileInfo info(path);
    if (info.isSymLink() && info.exists())
        m_path = info.canonicalFilePath();
    m_currentName = m_path;
}

OutputFile::~OutputFile()
{
    close();
}

bool OutputFile::open()
{
    errno = 0;
    const QFileInfo info(m_path);
    if (info.isDir()) {
        m_error = QStringLiteral("it is a directory");
        return false;
    }
    m_isDirect = info.exists() && !info.isFile();
    if (m_isDirect) {
        m_file.setFileName(m_path);
        return m_file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) || fail();
    }
    if (info.exists() && !info.isWritable()) {
        m_error = QStringLiteral("it is write-protected");
        return false;
    }
    m_sinceSync.start();
    for (int number = 1;; ++number) {
        m_currentName = m_path + QStringLiteral(".partial") + (number == 1 ? QString() : QString::number(number));
        m_file.setFileName(m_currentName);
        if (m_file.open(QIODevice::ReadWrite | QIODevice::NewOnly | QIODevice::Unbuffered))
            return true;
        if (!QFileInfo::exists(m_currentName))
            return fail();
    }
}

bool OutputFile::openToAppend(qint64 end)
{
    errno = 0;
    m_lock = std::make_unique<QLockFile>(m_path + QStringLiteral(".lock"));
    m_lock->setStaleLockTime(0);
    if (!m_lock->tryLock(0)) {
        m_error = m_lock->error() == QLockFile::LockFailedError
                      ? QStringLiteral("another program is appending to it")
                      : QStringLiteral("its lock file '%1.lock' cannot be created").arg(m_path);
        m_lock.reset();
        return false;
    }
    m_sinceSync.start();
    m_file.setFileName(m_path);
    if (!m_file.open(QIODevice::ReadWrite | QIODevice::ExistingOnly | QIODevice::Unbuffered))
        return fail();
    m_size = end;
    return (m_file.size() == end || m_file.resize(end)) && m_file.seek(end) ? true : fail();
}

bool OutputFile::write(const QByteArray &data)
{
    errno = 0;
    if (m_file.write(data) == data.size()) {
        m_size += data.size();
        return sync();
    }
    fail();
    if (!m_isDirect && m_file.isOpen() && m_file.resize(m_size))
        m_file.seek(m_size);
    return false;
}

bool OutputFile::overwrite(qint64 position, const QByteArray &data)
{
    errno = 0;
    if (m_isDirect)
        return true;
    const bool written = m_file.seek(position) && m_file.write(data) == data.size();
    return (m_file.seek(m_size) && written) || fail();
}

// The disk may take seconds, and new values must not wait for it.
bool OutputFile::sync()
{
    constexpr int interval = 1000;
    const bool isBusy = m_sync.valid() && m_sync.wait_for(std::chrono::seconds(0)) != std::future_status::ready;
    if (m_isDirect || isBusy)
        return true;
    if (!collectSync())
        return false;
    if (m_sinceSync.elapsed() < interval)
        return true;
    m_sinceSync.start();
    m_syncing = m_size;
    m_sync = std::async(std::launch::async, sendToDisk, m_file.handle());
    return true;
}

bool OutputFile::collectSync()
{
    const int error = m_sync.valid() ? m_sync.get() : 0;
    if (error != 0) {
        errno = error;
        return fail();
    }
    m_synced = m_syncing;
    return true;
}

bool OutputFile::close()
{
    if (!m_file.isOpen())
        return true;
    bool synced = collectSync();
    if (!m_isDirect) {
        errno = sendToDisk(m_file.handle());
        synced = synced && (errno == 0 || fail());
    }
    errno = 0;
    m_file.close();
    m_lock.reset();
    return m_file.error() == QFileDevice::NoError ? synced : fail();
}

bool OutputFile::commit()
{
    if (!close())
        return false;
    if (m_currentName == m_path)
        return true;
    std::error_code error;
    std::filesystem::rename(nativePath(m_currentName), nativePath(m_path), error);
    if (!error) {
        m_currentName = m_path;
        return true;
    }
    // Windows does not replace a file that another program has open. Keep the data: it cannot be measured again.
    m_error = QStringLiteral("%1; all of it is in '%2'")
                  .arg(QString::fromLocal8Bit(error.message().c_str()), m_currentName);
    return false;
}

void OutputFile::discard()
{
    close();
    if (m_currentName != m_path)
        QFile::remove(m_currentName);
}

bool OutputFile::fail()
{
    // After a partial write QFile has no error text, but errno is set.
    m_error = errno != 0 ? QString::fromLocal8Bit(std::strerror(errno)) : m_file.errorString();
    return false;
}

} // namespace SondixApp
